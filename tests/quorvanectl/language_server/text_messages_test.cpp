// Texts under every kind of address, opened twice, edited at places that are none, saved, and changed behind
// the editor's back: which of them a finding is told of, under which address, and with what beside it.
#include "conversation.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QFile>

using namespace conversation;
using support::ProjectFolder;

namespace {

// A clean project of two scripts; nothing is said of it.
constexpr char project[] = R"({"schemaVersion": 1, "project": {"name": "n", "displayName": "d",
"createdAt": "c"}, "scripts": [{"id": "a", "path": "a.ys", "role": "main"},
{"id": "b", "path": "b.ys", "role": "sub"}], "tasks": {"main": {"entryScriptId": "a"}}})";

QByteArray filesChanged(const QStringList &uris) {
    QJsonArray changes;
    for (const QString &uri : uris)
        changes.append(QJsonObject{{"uri", uri}, {"type", 2}});
    return told("workspace/didChangeWatchedFiles", {{"changes", changes}});
}

// The address with "here" for that of the folder.
QStringList fromHere(const ProjectFolder &folder, QStringList lines) {
    for (QString &line : lines)
        line.replace(uriOf(folder.path("")), "here");
    return lines;
}

} // namespace

class TextMessagesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void addresses_data();
    void addresses();
    void aTextThatIsOpenedTwice();
    void twoAddressesOfOneText();
    void edits_data();
    void edits();
    void versions_data();
    void versions();
    void changesOnTheDisk_data();
    void changesOnTheDisk();
    void aFileThatIsNotOpenGoesByAnEscapedAddress();
    void anEditorThatShowsNoOtherPlaces();
    void aFindingMovesWithTheTextOfAnotherFile();
};

void TextMessagesTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// The editor hears its own spelling again. All but the last are one file.
void TextMessagesTest::addresses_data() {
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("again");
    QTest::addColumn<bool>("isOne");
    const auto row = [](const char *name, const char *uri, const char *again, bool isOne) {
        QTest::newRow(name) << QString(uri) << QString(again) << isOne;
    };
    row("as it stands", "file:///no/a b.ys", "file:///no/a b.ys", true);
    row("with a blank as an escape", "file:///no/a%20b.ys", "file:///no/a b.ys", true);
    row("with a letter as an escape", "file:///no/%61.ys", "file:///no/a.ys", true);
    row("with escapes in small letters", "file:///no/%e9%ab%98.ys", "file:///no/%E9%AB%98.ys",
        true);
    row("with a scheme in capitals", "FILE:///no/a.ys", "file:///no/a.ys", true);
    row("by a way there and back", "file:///no/sub/../a.ys", "file:///no/a.ys", true);
    row("with a divider too many", "file:///no//a.ys", "file:///no/a.ys", true);
    row("with a question that no file has", "file:///no/a.ys?v=2", "file:///no/a.ys", true);
    row("in another case", "file:///no/A.ys", "file:///no/a.ys", false);
    row("of a text without a file", "untitled:a.ys", "untitled:A.ys", false);
    row("of another scheme", "git:/no/a.ys", "file:///no/a.ys", false);
    row("without a scheme", "/no/a.ys", "file:///no/a.ys", true);
}

void TextMessagesTest::addresses() {
    QFETCH(QString, uri);
    QFETCH(QString, again);
    QFETCH(bool, isOne);
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.findingsAfter({opened(uri, "$")}),
             QStringList(uri + "@1 0:0-0:1 1 YS100"));
    const QString closed = uri + "@0";
    QCOMPARE(conversation.findingsAfter({about("textDocument/didClose", again)}),
             isOne ? QStringList(closed) : QStringList());
}

// As an editor does that has begun anew.
void TextMessagesTest::aTextThatIsOpenedTwice() {
    const QString uri = "file:///no/a.ys";
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, "$", 7)});
    QCOMPARE(conversation.findingsAfter({opened(uri, "\n$", 1)}),
             QStringList(uri + "@1 1:0-1:1 1 YS100"));
    QCOMPARE(conversation.findingsAfter({about("textDocument/didClose", uri)}),
             QStringList(uri + "@0"));
    QCOMPARE(conversation.say({about("textDocument/didClose", uri)}), QStringList());
}

// The later address is the one that the editor shows.
void TextMessagesTest::twoAddressesOfOneText() {
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened("file:///no/a.ys", "$")});
    QCOMPARE(conversation.findingsAfter({opened("file:///no/%61.ys", " $")}),
             QStringList("file:///no/%61.ys@1 0:1-0:2 1 YS100"));
    const QByteArray edit =
        changed("file:///no/a.ys", 2, {change(position(0, 0), position(0, 0), " ")});
    QCOMPARE(conversation.findingsAfter({edit}),
             QStringList("file:///no/%61.ys@2 0:2-0:3 1 YS100"));
}

// Of "a高\r\n$\n" what becomes of the finding, which counts from the text that is there.
void TextMessagesTest::edits_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QJsonObject>("edit");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QJsonObject &edit, const char *expected,
                        const QByteArray &capabilities = "{}") {
        QTest::newRow(name) << capabilities << edit << QString(expected);
    };
    const QByteArray utf8 = R"({"general":{"positionEncodings":["utf-8"]}})";
    row("behind a line is its end", change(position(0, 9), position(0, 99), "\n"),
        "2:0-2:1 1 YS100");
    row("behind the text is its end", change(position(7, 0), position(9, 9), "$"), "");
    row("a line's end goes as one", change(position(0, 2), position(1, 0), ""), "0:2-0:3 1 YS100");
    row("within a sign is before it", change(position(0, 2), position(1, 0), ""), "0:1-0:2 1 YS100",
        utf8);
    row("behind a sign of three bytes", change(position(0, 4), position(1, 0), ""),
        "0:4-0:5 1 YS100", utf8);
    row("all of it", change(position(0, 0), position(99, 0), " $"), "0:1-0:2 1 YS100");
    row("a range of the first line to the first line", change(position(0, 0), position(0, 0), "\r"),
        "2:0-2:1 1 YS100");
}

void TextMessagesTest::edits() {
    QFETCH(QByteArray, capabilities);
    QFETCH(QJsonObject, edit);
    QFETCH(QString, expected);
    const QString uri = "file:///no/a.ys";
    Conversation conversation;
    conversation.begin(capabilities);
    QCOMPARE(conversation.findingsAfter({opened(uri, "a高\r\n$\n")}),
             QStringList(uri + "@1 1:0-1:1 1 YS100"));
    const QString told = uri + "@2 " + expected;
    QCOMPARE(conversation.findingsAfter({changed(uri, 2, {edit})}),
             expected.isEmpty() ? QStringList() : QStringList(told));
}

void TextMessagesTest::versions_data() {
    QTest::addColumn<QJsonValue>("version");
    QTest::addColumn<int>("expected");
    QTest::newRow("one that goes back") << QJsonValue(-4) << -4;
    QTest::newRow("null, as the protocol allows") << QJsonValue() << 0;
    QTest::newRow("a text") << QJsonValue("3") << 0;
    QTest::newRow("half a number") << QJsonValue(2.5) << 0;
}

void TextMessagesTest::versions() {
    QFETCH(QJsonValue, version);
    QFETCH(int, expected);
    const QString uri = "file:///no/a.ys";
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, "")});
    const QByteArray edit = told("textDocument/didChange",
                                 {{"textDocument", QJsonObject{{"uri", uri}, {"version", version}}},
                                  {"contentChanges", QJsonArray{QJsonObject{{"text", "$"}}}}});
    const QString told = QString("%1@%2 0:0-0:1 1 YS100").arg(uri).arg(expected);
    QCOMPARE(conversation.findingsAfter({edit}), QStringList(told));
}

// What is written to the disk, "-" for a file that is removed, and what the editor tells of it. a.ys is open
// and has one global.
void TextMessagesTest::changesOnTheDisk_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *title, const char *name, const QByteArray &content,
                        const QStringList &expected) {
        QTest::newRow(title) << QString(name) << content << expected;
    };
    const QString at = "here/a.ys@1 0:11-0:14 1 YS408";
    row("a script that is of no matter", "b.ys", "int x_y;\n", {});
    row("one with the same global", "b.ys", "\nglobal int x_y;\n",
        {at, "here/b.ys@0 1:11-1:14 1 YS408"});
    row("one that does not parse is told of when it is opened", "b.ys", "$", {});
    row("one that is gone", "b.ys", "-", {"here/line.yslib@0 2:20-2:26 1"});
    row("a new one, under a name that has to be escaped", QString("高 1%.ys").toUtf8(), "",
        {"here/line.yslib@0 1:30-1:31 2"});
    row("the project, which is no JSON now", "line.yslib", "{,}", {"here/line.yslib@0 0:1-0:2 1"});
    row("the project, which is empty now", "line.yslib", "", {"here/line.yslib@0 0:0-0:0 1"});
    row("the project, which is gone", "line.yslib", "-", {});
    row("the script that is open: the editor's text counts", "a.ys", "$", {});
}

void TextMessagesTest::changesOnTheDisk() {
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QStringList, expected);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"line.yslib", project}, {"a.ys", ""}, {"b.ys", ""}});
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.say({opened(uriOf(folder.path("a.ys")), "global int x_y;")}),
             QStringList());
    if (content == "-")
        QVERIFY(QFile::remove(folder.path(name)));
    else
        (void)folder.write(name, content);
    const QByteArray event = filesChanged({uriOf(folder.path(name))});
    QCOMPARE(fromHere(folder, conversation.findingsAfter({event})), expected);
    // As it was before.
    support::writeTree(folder.path(""), {{"line.yslib", project}, {"a.ys", ""}, {"b.ys", ""}});
    if (!QStringList{"line.yslib", "a.ys", "b.ys"}.contains(name))
        QVERIFY(QFile::remove(folder.path(name)));
    for (QString &line : expected)
        line = line.section(' ', 0, 0);
    QCOMPARE(fromHere(folder, conversation.findingsAfter({event})), expected);
}

void TextMessagesTest::aFileThatIsNotOpenGoesByAnEscapedAddress() {
    const ProjectFolder folder;
    const QByteArray document = QByteArray(project).replace("b.ys", QString("高 1%.ys").toUtf8());
    support::writeTree(
        folder.path(""),
        {{"line.yslib", document}, {"a.ys", ""}, {QString("高 1%.ys"), "global int w;"}});
    Conversation conversation;
    conversation.begin();
    QCOMPARE(fromHere(folder, conversation.findingsAfter({opened(uriOf(folder.path("a.ys")), "")})),
             QStringList("here/%E9%AB%98%201%25.ys@0 0:11-0:12 2"));
}

void TextMessagesTest::anEditorThatShowsNoOtherPlaces() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""),
                       {{"line.yslib", project}, {"a.ys", ""}, {"b.ys", "global int x_y;"}});
    Conversation conversation;
    conversation.begin();
    const QStringList sent =
        conversation.say({opened(uriOf(folder.path("a.ys")), "global int x_y;")});
    QCOMPARE(sent.size(), 2);
    QVERIFY(sent.first().contains("YS408"));
    QVERIFY(sent.filter("relatedInformation").isEmpty());
}

// The other place of b.ys's finding has another column then, and is told anew.
void TextMessagesTest::aFindingMovesWithTheTextOfAnotherFile() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""),
                       {{"line.yslib", project}, {"a.ys", ""}, {"b.ys", "global int x_y;"}});
    const QString a = uriOf(folder.path("a.ys"));
    const QByteArray capabilities =
        R"({"textDocument":{"publishDiagnostics":{"relatedInformation":true}},)"
        R"("general":{"positionEncodings":["utf-8"]}})";
    Conversation conversation;
    conversation.begin(capabilities);
    (void)conversation.say({opened(a, "/* a */ global int x_y;")});
    (void)conversation.say({changed(a, 2, {QJsonObject{{"text", "s = \"ab\"; global int x_y;"}}})});
    // The same units, in more bytes.
    const QByteArray edit = changed(a, 3, {change(position(0, 5), position(0, 7), "高度")});
    QCOMPARE(fromHere(folder, conversation.findingsAfter({edit})),
             QStringList({"here/a.ys@3 0:25-0:28 1 YS408", "here/b.ys@0 0:11-0:14 1 YS408"}));
}

QUORVANE_TEST_MAIN(QCoreApplication, TextMessagesTest)

#include "text_messages_test.moc"
