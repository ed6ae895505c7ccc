// What the server offers while one types and tells of names, in the words of the protocol: each request,
// each refusal, and what depends on the editor.
#include "conversation.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using namespace conversation;

namespace {

const QString script = "file:///nowhere/a.ys";

QByteArray request(const char *method, const QString &uri, const QJsonObject &at) {
    return asked(method, {{"textDocument", QJsonObject{{"uri", uri}}}, {"position", at}});
}

QString answer(const QString &result) {
    return R"({"id":1,"jsonrpc":"2.0","result":)" + result + "}";
}

QString refusal(const QString &reason) {
    return QString(R"({"error":{"code":-32602,"message":"%1"},"id":1,"jsonrpc":"2.0"})")
        .arg(reason);
}

QString range(int line, int from, int to) {
    return QString(R"({"end":{"character":%3,"line":%1},"start":{"character":%2,"line":%1}})")
        .arg(line)
        .arg(from)
        .arg(to);
}

} // namespace

class AssistMessagesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void refusals_data();
    void refusals();
    void completion_data();
    void completion();
    void hover_data();
    void hover();
    void signatureHelp_data();
    void signatureHelp();
};

// So few words that an answer can be read.
void AssistMessagesTest::initTestCase() {
    QVERIFY(support::loadLibraryText("[ControlFlow]\nkeywords=\n[Completion]\nsnippet_only=\n"
                                     "[Highlight]\ntype=\nother=import\nlibrary=\n"
                                     "[Plugin]\nfunctions=\n"
                                     "1,测mode,2,相机#I,模式_a#S#auto#manual,设置*模式\n"));
}

void AssistMessagesTest::refusals_data() {
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QJsonObject>("at");
    QTest::addColumn<QString>("expected");
    const QString noPlace = refusal("position is no place in a text");
    QTest::newRow("a text that is not open") << "file:///nowhere/b.ys" << position(0, 0)
                                             << refusal("the text is not open: /nowhere/b.ys");
    QTest::newRow("no text") << "" << position(0, 0) << refusal("the text is not open: ");
    QTest::newRow("no position") << script << QJsonObject() << noPlace;
    QTest::newRow("half a position") << script << QJsonObject{{"line", 0}} << noPlace;
    QTest::newRow("a negative line") << script << position(-1, 0) << noPlace;
}

void AssistMessagesTest::refusals() {
    QFETCH(QString, uri);
    QFETCH(QJsonObject, at);
    QFETCH(QString, expected);
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.say({opened(script, "")}), QStringList());
    for (const char *method :
         {"textDocument/completion", "textDocument/hover", "textDocument/signatureHelp"})
        QCOMPARE(conversation.say({request(method, uri, at)}), QStringList(expected));
}

void AssistMessagesTest::completion_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QJsonObject>("at");
    QTest::addColumn<QString>("expected");
    const auto list = [](const QStringList &items) {
        return answer(R"({"isIncomplete":false,"items":[)" + items.join(',') + "]}");
    };
    const auto function = [](const QString &text, const QString &format, const QString &at) {
        return QString(R"({"detail":"测mode( 相机 , 模式_a  );","documentation":"设置*模式",%1)"
                       R"("kind":3,"label":"测mode","sortText":"f测mode",)"
                       R"("textEdit":{"newText":"%2","range":%3}})")
            .arg(format, text, at);
    };
    const auto word = [](const QString &at) {
        return QString(R"({"detail":"declaration","kind":14,"label":"import","sortText":"gimport",)"
                       R"("textEdit":{"newText":"import","range":%1}})")
            .arg(at);
    };
    const QByteArray snippets =
        R"({"textDocument":{"completion":{"completionItem":{"snippetSupport":true}}}})";
    const QByteArray utf8 = R"({"general":{"positionEncodings":["utf-8"]}})";
    const QString plain = "测mode( 相机 , 模式_a  );";
    const QString format = R"("insertTextFormat":2,)";
    QTest::newRow("plain for an editor that has no snippets")
        << QByteArray("{}") << script << "\nx = 测m" << position(1, 6)
        << list({function(plain, "", range(1, 4, 6)), word(range(1, 4, 6))});
    QTest::newRow("a snippet for one that has")
        << snippets << script << "测" << position(0, 1)
        << list({function("测mode( ${1:相机} , ${2:模式_a}  );", format, range(0, 0, 1)),
                 word(range(0, 0, 1))});
    QTest::newRow("in the columns that the editor asks for")
        << utf8 << script << "测m" << position(0, 4)
        << list({function(plain, "", range(0, 0, 4)), word(range(0, 0, 4))});
    QTest::newRow("a choice") << QByteArray("{}") << script << "测mode(1, " << position(0, 9)
                              << list({R"({"detail":"模式_a","kind":20,"label":"\"auto\"",)"
                                       R"("sortText":"a\"auto\"","textEdit":{"newText":)"
                                       R"("\"auto\"","range":)" +
                                           range(0, 9, 9) + "}}",
                                       R"({"detail":"模式_a","kind":20,"label":"\"manual\"",)"
                                       R"("sortText":"a\"manual\"","textEdit":{"newText":)"
                                       R"("\"manual\"","range":)" +
                                           range(0, 9, 9) + "}}",
                                       function(plain, "", range(0, 9, 9)), word(range(0, 9, 9))});
    QTest::newRow("nothing in a comment")
        << QByteArray("{}") << script << "// m" << position(0, 4) << list({});
    const QString role = "What the script is for.";
    const auto about = [&](const QString &name, const QString &rest) {
        return QString(R"({%1"documentation":"%2","filterText":"\"%3",%4})")
            .arg(name == "role" ? R"("detail":"required",)" : "", role, name, rest);
    };
    QTest::newRow("a key of a project's file")
        << QByteArray("{}") << "file:///nowhere/line.yslib"
        << R"({"scripts": [{"id": "a", "path": "b.ys","": 1}]})" << position(0, 41)
        << list({about("role", R"("kind":10,"label":"role","sortText":"jrole",)"
                               R"("textEdit":{"newText":"\"role\"","range":)" +
                                   range(0, 40, 42) + "}")});
    QStringList roles;
    for (const char *name : {"main", "sub", "module"})
        roles.append(about(name, QString(R"("kind":20,"label":"%1","sortText":"k%1",)"
                                         R"("textEdit":{"newText":"\"%1\"","range":%2})")
                                     .arg(name, range(0, 23, 26))));
    QTest::newRow("the roles") << QByteArray("{}") << "file:///nowhere/line.yslib"
                               << R"({"scripts": [{"role":  "m"}]})" << position(0, 25)
                               << list(roles);
}

void AssistMessagesTest::completion() {
    QFETCH(QByteArray, capabilities);
    QFETCH(QString, uri);
    QFETCH(QString, text);
    QFETCH(QJsonObject, at);
    Conversation conversation;
    conversation.begin(capabilities);
    (void)conversation.say({opened(uri, text)});
    const QStringList sent = conversation.say({request("textDocument/completion", uri, at)});
    QTEST(sent.join('\n'), "expected");
}

void AssistMessagesTest::hover_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QJsonObject>("at");
    QTest::addColumn<QString>("expected");
    const QByteArray markdown =
        R"({"textDocument":{"hover":{"contentFormat":["markdown","plaintext"]}}})";
    QTest::newRow("a function of the library")
        << QByteArray("{}") << script << "x = 测mode" << position(0, 6)
        << answer(R"({"contents":{"kind":"plaintext","value":"测mode( 相机 , 模式_a  );\n)"
                  R"(设置*模式\n相机\n模式_a: auto, manual"},"range":)" +
                  range(0, 4, 9) + "}");
    QTest::newRow("in Markdown no sign of it means anything")
        << markdown << script << "测mode" << position(0, 0)
        << answer(R"({"contents":{"kind":"markdown","value":"```ys\n测mode( 相机 , 模式_a  );\n```)"
                  R"(\n\n设置\\*模式\n\n相机\n\n模式\\_a: auto, manual"},"range":)" +
                  range(0, 0, 5) + "}");
    QTest::newRow("a key of a project's file")
        << QByteArray("{}") << "file:///nowhere/line.yslib"
        << R"({"scripts": 1})" << position(0, 3)
        << answer(R"({"contents":{"kind":"plaintext","value":"scripts\nAll scripts of the )"
                  R"(project."},"range":)" +
                  range(0, 1, 10) + "}");
    QTest::newRow("nothing that is known")
        << QByteArray("{}") << script << "x" << position(0, 0) << answer("null");
}

void AssistMessagesTest::hover() {
    QFETCH(QByteArray, capabilities);
    QFETCH(QString, uri);
    QFETCH(QString, text);
    QFETCH(QJsonObject, at);
    Conversation conversation;
    conversation.begin(capabilities);
    (void)conversation.say({opened(uri, text)});
    QTEST(conversation.say({request("textDocument/hover", uri, at)}).join('\n'), "expected");
}

void AssistMessagesTest::signatureHelp_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto help = [](const char *first, const char *second, int argument) {
        return answer(QString(R"({"activeParameter":%3,"activeSignature":0,"signatures":[)"
                              R"({"documentation":"设置*模式","label":)"
                              R"("测mode( 相机 , 模式_a  );","parameters":[{"label":%1},)"
                              R"({"documentation":"auto, manual","label":%2}]}]})")
                          .arg(first, second)
                          .arg(argument));
    };
    const QByteArray offsets = R"({"textDocument":{"signatureHelp":{"signatureInformation":)"
                               R"({"parameterInformation":{"labelOffsetSupport":true}}}}})";
    QTest::newRow("the first argument")
        << QByteArray("{}") << "测mode(" << help("\"相机\"", "\"模式_a\"", 0);
    QTest::newRow("the second, by its place in the signature")
        << offsets << "测mode(1, " << help("[7,9]", "[12,16]", 1);
    QTest::newRow("no call") << QByteArray("{}") << "测mode" << answer("null");
}

void AssistMessagesTest::signatureHelp() {
    QFETCH(QByteArray, capabilities);
    QFETCH(QString, text);
    Conversation conversation;
    conversation.begin(capabilities);
    (void)conversation.say({opened(script, text)});
    QTEST(conversation.say({request("textDocument/signatureHelp", script, position(0, 99))})
              .join('\n'),
          "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, AssistMessagesTest)

#include "assist_messages_test.moc"
