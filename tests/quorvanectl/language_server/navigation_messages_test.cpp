// Where names lead and what a script is made of, in the words of the protocol: each request, each refusal,
// and what depends on the editor.
#include "conversation.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QUrl>

using namespace conversation;
using support::ProjectFolder;

namespace {

const QString script = "file:///nowhere/a.ys";
const QString text = "global int x_y = 1\nfunction f(int n) {\n    x_y = f(n)\n}\n";

QString answer(const QString &result) {
    return R"({"id":1,"jsonrpc":"2.0","result":)" + result + "}";
}

QString refusal(int code, const QString &reason) {
    return QString(R"({"error":{"code":%1,"message":"%2"},"id":1,"jsonrpc":"2.0"})")
        .arg(QString::number(code), reason);
}

QString range(int line, int from, int to) {
    return QString(R"({"end":{"character":%3,"line":%1},"start":{"character":%2,"line":%1}})")
        .arg(line)
        .arg(from)
        .arg(to);
}

QString location(int line, int from, int to, const QString &uri = script) {
    return QString(R"({"range":%1,"uri":"%2"})").arg(range(line, from, to), uri);
}

QString highlighted(int kind, int line, int from, int to) {
    return QString(R"({"kind":%1,"range":%2})").arg(QString::number(kind), range(line, from, to));
}

QString list(const QStringList &items) {
    return answer('[' + items.join(',') + ']');
}

// With a place, and what else a request has.
QByteArray request(const QString &method, int line, int column, QJsonObject params = {}) {
    params.insert("textDocument", QJsonObject{{"uri", script}});
    params.insert("position", position(line, column));
    return asked(("textDocument/" + method).toLatin1(), params);
}

} // namespace

class NavigationMessagesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void refusals_data();
    void refusals();
    void answers_data();
    void answers();
    void whatDependsOnTheEditor_data();
    void whatDependsOnTheEditor();
    void anImportLeadsToTheStartOfTheScript();
    void whatStandsInAProjectsFile_data();
    void whatStandsInAProjectsFile();
    void renameAcrossFiles();
    void placesAreThoseOfTheLastText();
    void anEditorThatAsksBeforeARename();
};

void NavigationMessagesTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void NavigationMessagesTest::refusals_data() {
    QTest::addColumn<QString>("method");
    QTest::addColumn<bool>("hasPlace");
    for (const char *method :
         {"definition", "references", "documentHighlight", "prepareRename", "rename"})
        QTest::newRow(method) << QString(method) << true;
    for (const char *method : {"documentSymbol", "foldingRange", "semanticTokens/full"})
        QTest::newRow(method) << QString(method) << false;
}

void NavigationMessagesTest::refusals() {
    QFETCH(QString, method);
    QFETCH(bool, hasPlace);
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.say({request(method, 0, 0, {{"newName", "a_b"}})}),
             QStringList(refusal(-32602, "the text is not open: /nowhere/a.ys")));
    QCOMPARE(conversation.say({opened(script, text)}), QStringList());
    const QByteArray noPlace =
        asked(("textDocument/" + method).toLatin1(),
              {{"textDocument", QJsonObject{{"uri", script}}}, {"newName", "a_b"}});
    if (hasPlace)
        QCOMPARE(conversation.say({noPlace}),
                 QStringList(refusal(-32602, "position is no place in a text")));
}

void NavigationMessagesTest::answers_data() {
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("expected");
    const QJsonObject all{{"context", QJsonObject{{"includeDeclaration", true}}}};
    const QJsonObject others{{"context", QJsonObject{{"includeDeclaration", false}}}};
    const QString alone = refusal(-32803, "only a global can be renamed");

    QTest::newRow("the definition of a global")
        << request("definition", 2, 5) << list({location(0, 11, 14)});
    QTest::newRow("the definition of a parameter")
        << request("definition", 2, 13) << list({location(1, 15, 16)});
    QTest::newRow("no definition") << request("definition", 3, 1) << list({});
    QTest::newRow("references with the declaration")
        << request("references", 1, 9, all) << list({location(1, 9, 10), location(2, 10, 11)});
    QTest::newRow("references without it")
        << request("references", 1, 9, others) << list({location(2, 10, 11)});
    QTest::newRow("references of an editor that does not say")
        << request("references", 1, 9) << list({location(2, 10, 11)});
    QTest::newRow("no references") << request("references", 3, 0, all) << list({});
    QTest::newRow("highlights tell of writing and reading")
        << request("documentHighlight", 2, 4)
        << list({highlighted(3, 0, 11, 14), highlighted(3, 2, 4, 7)});
    QTest::newRow("highlights of a function")
        << request("documentHighlight", 2, 10)
        << list({highlighted(3, 1, 9, 10), highlighted(2, 2, 10, 11)});
    QTest::newRow("no highlights") << request("documentHighlight", 3, 0) << list({});
    QTest::newRow("a global may be renamed")
        << request("prepareRename", 2, 7)
        << answer(R"({"placeholder":"x_y","range":)" + range(2, 4, 7) + "}");
    QTest::newRow("a function may not") << request("prepareRename", 1, 9) << alone;
    QTest::newRow("what is no name may not") << request("prepareRename", 3, 0) << alone;
    QTest::newRow("a rename") << request("rename", 2, 7, {{"newName", "x_z"}})
                              << answer(QString(R"({"changes":{"%1":[{"newText":"x_z","range":%2},)"
                                                R"({"newText":"x_z","range":%3}]}})")
                                            .arg(script, range(0, 11, 14), range(2, 4, 7)));
    QTest::newRow("a rename to the same name")
        << request("rename", 2, 7, {{"newName", "x_y"}}) << answer(R"({"changes":{}})");
    QTest::newRow("a rename of what is no global")
        << request("rename", 1, 9, {{"newName", "x_z"}}) << alone;
    QTest::newRow("a rename against the naming rule")
        << request("rename", 2, 7, {{"newName", "width"}})
        << refusal(-32803, "'width' breaks the naming rule {camId}_{metric}");
    QTest::newRow("a rename without a name")
        << request("rename", 2, 7) << refusal(-32602, "newName is no text");
    QTest::newRow("a rename to a number")
        << request("rename", 2, 7, {{"newName", 3}}) << refusal(-32602, "newName is no text");
    QTest::newRow("symbols of an editor that does not nest them")
        << request("documentSymbol", 0, 0)
        << list({R"({"kind":13,"location":)" + location(0, 11, 14) + R"(,"name":"x_y"})",
                 QString(R"({"kind":12,"location":{"range":{"end":{"character":1,"line":3},)"
                         R"("start":{"character":0,"line":1}},"uri":"%1"},"name":"f"})")
                     .arg(script)});
    QTest::newRow("what can be folded, but for the line of the closing brace")
        << request("foldingRange", 0, 0) << list({R"({"endLine":2,"startLine":1})"});
    QTest::newRow("the words, each told from the one before it")
        << request("semanticTokens/full", 0, 0)
        << answer(R"({"data":[0,0,6,0,0,0,7,3,1,0,0,4,3,3,0,0,4,1,7,0,0,2,1,5,0,)"
                  R"(1,0,8,0,0,0,9,1,2,0,0,2,3,1,0,0,4,1,3,0,)"
                  R"(1,4,3,3,0,0,4,1,7,0,0,2,1,2,0,0,2,1,3,0]})");
}

void NavigationMessagesTest::answers() {
    QFETCH(QByteArray, message);
    QFETCH(QString, expected);
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.say({opened(script, text)}), QStringList());
    QCOMPARE(conversation.say({message}), QStringList(expected));
}

void NavigationMessagesTest::whatDependsOnTheEditor_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QString>("content");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("expected");
    const QByteArray utf8 = R"({"general":{"positionEncodings":["utf-8"]}})";
    const QByteArray nested =
        R"({"textDocument":{"documentSymbol":{"hierarchicalDocumentSymbolSupport":true}}})";
    const QString chinese = "s = \"高\r\n度\" // 高";
    QTest::newRow("words over two lines, in UTF-16")
        << QByteArray("{}") << chinese << request("semanticTokens/full", 0, 0)
        << answer(R"({"data":[0,0,1,3,0,0,2,1,7,0,0,2,2,6,0,1,0,2,6,0,0,3,4,8,0]})");
    QTest::newRow("words over two lines, in UTF-8")
        << utf8 << chinese << request("semanticTokens/full", 0, 0)
        << answer(R"({"data":[0,0,1,3,0,0,2,1,7,0,0,2,4,6,0,1,0,4,6,0,0,5,6,8,0]})");
    QTest::newRow("a definition in UTF-8")
        << utf8 << "s = \"高\"; int n; n" << request("definition", 0, 19)
        << list({location(0, 15, 16)});
    const QString symbol =
        R"({"detail":"%1","kind":%2,"name":"%3","range":%4,"selectionRange":%5})";
    QTest::newRow("symbols that are nested")
        << nested << "static int n; global bool a_b;\nfunction f(a, bool b) { int c; }"
        << request("documentSymbol", 0, 0)
        << list({symbol.arg("int", "13", "n", range(0, 11, 12), range(0, 11, 12)),
                 symbol.arg("global bool", "13", "a_b", range(0, 26, 29), range(0, 26, 29)),
                 symbol.arg("(int a, bool b)", "12", "f", range(1, 0, 32), range(1, 9, 10))});
    QTest::newRow("folds of comments and imports")
        << QByteArray("{}") << "// a\n// b\nimport \"c\";\nimport \"d\";\n{ }"
        << request("foldingRange", 0, 0)
        << list({R"({"endLine":1,"kind":"comment","startLine":0})",
                 R"({"endLine":3,"kind":"imports","startLine":2})"});
}

void NavigationMessagesTest::whatDependsOnTheEditor() {
    QFETCH(QByteArray, capabilities);
    QFETCH(QString, content);
    QFETCH(QByteArray, message);
    QFETCH(QString, expected);
    Conversation conversation;
    conversation.begin(capabilities);
    QCOMPARE(conversation.say({opened(script, content), message}), QStringList(expected));
}

// The path of what is imported has a drive, where there are drives.
void NavigationMessagesTest::anImportLeadsToTheStartOfTheScript() {
    const QString uri = QUrl::fromLocalFile(support::rooted("/nowhere/a.ys")).toString();
    const QByteArray message = asked("textDocument/definition",
                                     {{"textDocument", QJsonObject{{"uri", uri}}},
                                      {"position", QJsonObject{{"line", 0}, {"character", 9}}}});
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.say({opened(uri, "import \"a.ys\";"), message}),
             QStringList(list({location(0, 0, 0, uri)})));
}

// The schema and the editor's own JSON tell of those.
void NavigationMessagesTest::whatStandsInAProjectsFile_data() {
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("expected");
    for (const char *method :
         {"definition", "references", "documentHighlight", "documentSymbol", "foldingRange"})
        QTest::newRow(method) << QString(method) << list({});
    QTest::newRow("words") << "semanticTokens/full" << answer(R"({"data":[]})");
    QTest::newRow("rename") << "prepareRename" << refusal(-32803, "only a global can be renamed");
}

void NavigationMessagesTest::whatStandsInAProjectsFile() {
    QFETCH(QString, method);
    QFETCH(QString, expected);
    const QJsonObject params{{"textDocument", QJsonObject{{"uri", "file:///nowhere/l.yslib"}}},
                             {"position", position(0, 3)}};
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened("file:///nowhere/l.yslib", "{\"a\": {\n}}")});
    QCOMPARE(conversation.say({asked(("textDocument/" + method).toLatin1(), params)}),
             QStringList(expected));
}

void NavigationMessagesTest::renameAcrossFiles() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""),
                       {{"line.yslib", R"({"scripts": [{"path": "b.ys"}], "tasks": {"subs": [
{"writesGlobals": ["x_y"]}]}})"},
                        {"b.ys", "\xEF\xBB\xBFglobal int x_y;\n"}});
    const QString uri = uriOf(folder.path("a.ys"));
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, "x_y = 1")});
    const QByteArray message =
        asked("textDocument/rename", {{"textDocument", QJsonObject{{"uri", uri}}},
                                      {"position", position(0, 0)},
                                      {"newName", "x_z"}});
    const QString edit = R"("%1":[{"newText":"x_z","range":%2}])";
    QCOMPARE(conversation.say({message}),
             QStringList(answer(R"({"changes":{)" +
                                QStringList{edit.arg(uri, range(0, 0, 3)),
                                            edit.arg(uriOf(folder.path("b.ys")), range(0, 11, 14)),
                                            edit.arg(uriOf(folder.path()), range(1, 20, 23))}
                                    .join(',') +
                                "}}")));
}

// A change between two requests that come at once counts for the second.
void NavigationMessagesTest::placesAreThoseOfTheLastText() {
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(script, "int n; n")});
    QCOMPARE(
        conversation.say({request("definition", 0, 7),
                          changed(script, 2, {change(position(0, 0), position(0, 0), "\n高;")}),
                          request("definition", 1, 9)}),
        QStringList({list({location(0, 4, 5)}), list({location(1, 6, 7)})}));
}

void NavigationMessagesTest::anEditorThatAsksBeforeARename() {
    Conversation conversation;
    const QString sent =
        conversation.say({initialize(R"({"textDocument":{"rename":{"prepareSupport":true}}})")})
            .value(0);
    QVERIFY2(sent.contains(R"("renameProvider":{"prepareProvider":true},)"), qPrintable(sent));
}

QUORVANE_TEST_MAIN(QCoreApplication, NavigationMessagesTest)

#include "navigation_messages_test.moc"
