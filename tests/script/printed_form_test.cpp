// Tokens and trees as text and JSON: every field in its order, null where nothing is, and JSON that
// can be read back whatever script a generator makes.
#include "script/printed_form.h"

#include "parse_helpers.h"
#include "script/expression_parser.h"
#include "support/library_file.h"
#include "support/script_generator.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonObject jsonOf(const QString &source) {
    const QString json = ast::programToJson(*parseScript(source).program);
    return QJsonDocument::fromJson(json.toUtf8()).object();
}

QJsonObject firstStatement(const QString &source) {
    return jsonOf(source).value("statements").toArray().at(0).toObject();
}

// The names in the order in which the JSON has them.
QString keysOf(const QString &json) {
    QStringList keys;
    int depth = 0;
    for (int i = 0; i < json.size(); ++i) {
        depth += int(json[i] == '{' || json[i] == '[') - int(json[i] == '}' || json[i] == ']');
        if (depth != 1 || json[i] != '"' || (json[i - 1] != ',' && json[i - 1] != '{'))
            continue;
        keys.append(json.mid(i + 1, json.indexOf('"', i + 1) - i - 1));
    }
    return keys.join(' ');
}

} // namespace

class PrintedFormTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void tokens();
    void everyFieldOfEveryRecord_data();
    void everyFieldOfEveryRecord();
    void everyFieldOfAFunctionAndItsProgram();
    void partsInsideAStatement();
    void null();
    void quoting();
    void theJsonIsJson();
};

void PrintedFormTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void PrintedFormTest::tokens() {
    const auto tokens = ast::Lexer("if \"a\\n\"\n").tokenize();
    QCOMPARE(ast::tokensToJson(tokens),
             QString("[[7,\"if\",1,1],[5,\"\\\"a\\\\n\\\"\",1,4],[1,\"\\n\",1,9],[0,\"\",2,1]]"));
    QCOMPARE(ast::tokensToText(tokens),
             QString("1:1 KwIf \"if\"\n1:4 StringLiteral \"\\\"a\\\\n\\\"\"\n"
                     "1:9 Newline \"\\n\"\n2:1 Eof \"\"\n"));
    QCOMPARE(ast::tokensToJson({}), QString("[]"));
    QCOMPARE(ast::tokenKindName(54), QString("Hash"));
    QCOMPARE(ast::tokenKindName(26), QString("KwReturn"));
    QCOMPARE(ast::tokenKindName(55), QString("55"));
    QCOMPARE(ast::tokenKindName(-1), QString("-1"));
}

void PrintedFormTest::everyFieldOfEveryRecord_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("keys");
    QTest::newRow("VarDeclStmt") << "int a"
                                 << "type line column typeName isStatic isGlobal name "
                                    "arraySize isArray hasInit init";
    QTest::newRow("AssignStmt") << "a = 1"
                                << "type line column target value";
    QTest::newRow("IncDecStmt") << "a++"
                                << "type line column name isIncrement isPrefix";
    QTest::newRow("ExprStmt") << "a"
                              << "type line column expr";
    QTest::newRow("IfStmt") << "if (a) b"
                            << "type line column condition thenBlock elseIfs elseBlock";
    QTest::newRow("ForStmt") << "for (a; b; c) d"
                             << "type line column init condition update body";
    QTest::newRow("WhileStmt") << "while (a) b"
                               << "type line column condition body";
    QTest::newRow("SwitchStmt") << "switch (a) { }"
                                << "type line column value cases";
    QTest::newRow("BreakStmt") << "break"
                               << "type line column";
    QTest::newRow("ContinueStmt") << "continue"
                                  << "type line column";
    QTest::newRow("ReturnStmt") << "return a"
                                << "type line column hasValue value";
    QTest::newRow("ImportStmt") << "import \"a\";"
                                << "type line column path";
    QTest::newRow("IncludeStmt") << "#include \"a\""
                                 << "type line column path";
}

void PrintedFormTest::everyFieldOfEveryRecord() {
    QFETCH(QString, source);
    const auto program = parseScript(source).program;
    const QString json = ast::statementToJson(program->statements[0].get());
    QTEST(keysOf(json), "keys");
    QVERIFY(json.startsWith(QString("{\"type\":\"%1\"").arg(QTest::currentDataTag())));
}

void PrintedFormTest::everyFieldOfAFunctionAndItsProgram() {
    const auto program = parseScript("function f(a) { }").program;
    QCOMPARE(keysOf(ast::statementToJson(program->functions[0].get())),
             QString("type line column name paramTypes paramNames body"));
    QCOMPARE(ast::programToJson(*program),
             QString("{\"type\":\"Program\",\"functions\":[{\"type\":\"FunctionDeclStmt\","
                     "\"line\":1,\"column\":1,\"name\":\"f\",\"paramTypes\":[\"int\"],"
                     "\"paramNames\":[\"a\"],\"body\":{\"type\":\"Block\",\"statements\":[],"
                     "\"line\":1,\"column\":15}}],\"statements\":[],\"sourcePath\":\"\"}"));
}

void PrintedFormTest::partsInsideAStatement() {
    const QJsonObject choice = firstStatement("if (a) { b } else if (c) d");
    const QJsonObject clause = choice.value("elseIfs").toArray().at(0).toObject();
    QCOMPARE(clause.value("type").toString(), QString("ElseIfClause"));
    QCOMPARE(clause.value("condition").toObject().value("text").toString(), QString("c"));
    QVERIFY(choice.value("elseBlock").isNull());
    const QJsonObject arm =
        firstStatement("switch (a) { default: b }").value("cases").toArray().at(0).toObject();
    QCOMPARE(arm.value("type").toString(), QString("SwitchCase"));
    QVERIFY(arm.value("isDefault").toBool());
    QVERIFY(arm.value("value").toObject().value("root").isNull());
    const QJsonObject root =
        firstStatement("f(a, )").value("expr").toObject().value("root").toObject();
    QCOMPARE(root.value("kind").toString(), QString("Call"));
    QVERIFY(root.value("args").toArray().at(1).isNull());
}

void PrintedFormTest::null() {
    QCOMPARE(ast::expressionToJson(nullptr), QString("null"));
    QCOMPARE(ast::expressionToText(nullptr), QString("null"));
    QCOMPARE(ast::statementToJson(nullptr), QString("null"));
    QCOMPARE(ast::statementToText(nullptr), QString("null"));
    QCOMPARE(ast::programToText(*parseScript("").program), QString());
    QVERIFY(firstStatement("if (a) { b").value("thenBlock").isNull());
}

void PrintedFormTest::quoting() {
    QCOMPARE(ast::quotedJson(QString("a\"\\\n\t相") + QChar(0xd800)),
             QString("\"a\\\"\\\\\\n\\u0009相\\ud800\""));
    // What would steer a terminal, in one character of two bytes or by turning the line around.
    QCOMPARE(ast::quotedJson(QString("a") + QChar(0x9b) + QChar(0x202e)),
             QString("\"a\\u009b\\u202e\""));
}

// Whatever the script, the JSON can be read back.
void PrintedFormTest::theJsonIsJson() {
    support::ScriptGenerator generator(21);
    for (int i = 0; i < 500; ++i) {
        const auto program = parseScript(generator.script()).program;
        QJsonParseError error;
        const auto document =
            QJsonDocument::fromJson(ast::programToJson(*program).toUtf8(), &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(document.object().value("statements").toArray().size(),
                 int(program->statements.size()));
    }
}

QUORVANE_TEST_MAIN(QCoreApplication, PrintedFormTest)
#include "printed_form_test.moc"
