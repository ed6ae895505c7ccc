// What an editor sees while a project is read for the first time, if it wants to.
#include "conversation.h"
#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::ProjectFolder;
using namespace conversation;

namespace {

constexpr char showsProgress[] = R"({"window":{"workDoneProgress":true}})";

QString creation(int number) {
    const QString form = R"({"id":"reading-%1","jsonrpc":"2.0","method":)"
                         R"("window/workDoneProgress/create","params":{"token":"reading-%1"}})";
    return form.arg(number);
}

QByteArray granted(int number) {
    return json(
        {{"jsonrpc", "2.0"}, {"id", QString("reading-%1").arg(number)}, {"result", QJsonValue()}});
}

QString progressTold(int number, const QString &value) {
    const QString form = R"({"jsonrpc":"2.0","method":"$/progress","params":)"
                         R"({"token":"reading-%1","value":%2}})";
    return form.arg(QString::number(number), value);
}

// A project of so many scripts, of which none is there.
QString document(int scripts) {
    QJsonArray list;
    for (int i = 0; i < scripts; ++i)
        list.append(QJsonObject{{"path", QString("%1.ys").arg(i)}});
    return QString::fromUtf8(json({{"scripts", list}}));
}

// Of what was sent, what is no finding.
QStringList withoutFindings(QStringList sent) {
    const QStringList findings = sent.filter("publishDiagnostics");
    for (const QString &message : findings)
        sent.removeAll(message);
    return sent;
}

} // namespace

class ProgressMessagesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theFirstReadOfAProject();
    void reports_data();
    void reports();
    void whatIsNotReadTakesNoGrant_data();
    void whatIsNotReadTakesNoGrant();
    void aGrantThatComesTwice();
    void whoDoesNotGrantItSeesNothing_data();
    void whoDoesNotGrantItSeesNothing();
    void anotherProjectNeedsAnotherGrant();
};

void ProgressMessagesTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// A report for each tenth, whatever the number of scripts.
void ProgressMessagesTest::theFirstReadOfAProject() {
    const ProjectFolder folder;
    const QString uri = uriOf(folder.path("line.yslib"));
    Conversation conversation;
    (void)conversation.say({initialize(showsProgress)});
    QCOMPARE(conversation.say({told("initialized", {})}), QStringList(creation(1)));
    QCOMPARE(conversation.say({granted(1)}), QStringList());
    QStringList expected{
        progressTold(1, R"({"kind":"begin","percentage":0,"title":"Reading line.yslib"})")};
    for (int tenth = 1; tenth < 10; ++tenth)
        expected.append(progressTold(1, QString(R"({"kind":"report","message":"%1/40 scripts",)"
                                                R"("percentage":%2})")
                                            .arg(4 * tenth)
                                            .arg(10 * tenth)));
    expected += QStringList{progressTold(1, R"({"kind":"end"})"), creation(2)};
    QCOMPARE(withoutFindings(conversation.say({opened(uri, document(40))})), expected);
    // Once for each project, though the editor has granted more.
    QCOMPARE(conversation.say({granted(2)}), QStringList());
    QCOMPARE(withoutFindings(conversation.say({about("textDocument/didClose", uri)})),
             QStringList());
    QCOMPARE(withoutFindings(conversation.say({opened(uri, document(40))})), QStringList());
}

// Ten per cent behind the last one at least, so that a large project sends no more than a small one.
void ProgressMessagesTest::reports_data() {
    QTest::addColumn<int>("scripts");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one script") << 1 << "begin end";
    QTest::newRow("three scripts") << 3 << "begin 1/3=33 2/3=66 end";
    QTest::newRow("steps below a tenth")
        << 12 << "begin 2/12=16 4/12=33 6/12=50 8/12=66 10/12=83 end";
    QTest::newRow("many scripts")
        << 1000
        << "begin 100/1000=10 200/1000=20 300/1000=30 400/1000=40 500/1000=50 600/1000=60 "
           "700/1000=70 800/1000=80 900/1000=90 end";
}

void ProgressMessagesTest::reports() {
    QFETCH(int, scripts);
    const ProjectFolder folder;
    Conversation conversation;
    conversation.begin(showsProgress);
    const QStringList sent =
        conversation.say({granted(1), opened(uriOf(folder.path("line.yslib")), document(scripts))});
    QStringList words;
    for (const QString &message : sent) {
        const QJsonObject value = QJsonDocument::fromJson(message.toUtf8())
                                      .object()
                                      .value("params")
                                      .toObject()
                                      .value("value")
                                      .toObject();
        const QString kind = value.value("kind").toString();
        if (kind == "report")
            words.append(QString("%1=%2").arg(value.value("message").toString().remove(" scripts"),
                                              QString::number(value.value("percentage").toInt())));
        else if (!kind.isEmpty())
            words.append(kind);
    }
    QTEST(words.join(' '), "expected");
}

// The grant is there for the next one.
void ProgressMessagesTest::whatIsNotReadTakesNoGrant_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("no scripts") << document(0);
    QTest::newRow("no JSON") << "{\"scripts\": [{\"path\": \"a.ys\"},]}";
    QTest::newRow("no object") << "[]";
    QTest::newRow("no list") << "{\"scripts\": {\"path\": \"a.ys\"}}";
    QTest::newRow("entries that are none") << "{\"scripts\": [1, null, {\"path\": 2}, \"a.ys\"]}";
    QTest::newRow("nothing") << "";
}

void ProgressMessagesTest::whatIsNotReadTakesNoGrant() {
    QFETCH(QString, text);
    const ProjectFolder folder;
    Conversation conversation;
    conversation.begin(showsProgress);
    const QString uri = uriOf(folder.path("line.yslib"));
    QCOMPARE(withoutFindings(conversation.say({granted(1), opened(uri, text)})), QStringList());
    const QString other = uriOf(folder.path("sub/other.yslib"));
    QCOMPARE(withoutFindings(conversation.say({opened(other, document(1))})),
             QStringList({progressTold(1, R"({"kind":"begin","percentage":0,"title":)"
                                          R"("Reading other.yslib"})"),
                          progressTold(1, R"({"kind":"end"})"), creation(2)}));
}

// Or behind its refusal: the last answer counts.
void ProgressMessagesTest::aGrantThatComesTwice() {
    const QByteArray refused =
        R"({"jsonrpc":"2.0","id":"reading-1","error":{"code":1,"message":""}})";
    const ProjectFolder folder;
    const QByteArray open = opened(uriOf(folder.path("line.yslib")), document(1));
    Conversation conversation;
    conversation.begin(showsProgress);
    QCOMPARE(withoutFindings(conversation.say({granted(1), granted(1), refused, open})),
             QStringList());
    Conversation another;
    another.begin(showsProgress);
    QCOMPARE(withoutFindings(another.say({refused, granted(1), open})).size(), 3);
}

void ProgressMessagesTest::whoDoesNotGrantItSeesNothing_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QStringList>("asked");
    QTest::newRow("an editor that shows no progress")
        << QByteArray("{}") << granted(1) << QStringList();
    QTest::newRow("one that refuses")
        << QByteArray(showsProgress)
        << QByteArray(R"({"jsonrpc":"2.0","id":"reading-1","error":{"code":1,"message":""}})")
        << QStringList(creation(1));
    QTest::newRow("one that has not answered yet")
        << QByteArray(showsProgress) << QByteArray(R"({"jsonrpc":"2.0","id":1,"result":null})")
        << QStringList(creation(1));
    QTest::newRow("one that answers to something else")
        << QByteArray(showsProgress) << granted(2) << QStringList(creation(1));
}

void ProgressMessagesTest::whoDoesNotGrantItSeesNothing() {
    QFETCH(QByteArray, capabilities);
    QFETCH(QByteArray, answer);
    const ProjectFolder folder;
    Conversation conversation;
    (void)conversation.say({initialize(capabilities)});
    QTEST(conversation.say({told("initialized", {})}), "asked");
    QCOMPARE(conversation.say({answer}), QStringList());
    QCOMPARE(
        withoutFindings(conversation.say({opened(uriOf(folder.path("line.yslib")), document(40))})),
        QStringList());
}

// Two projects in one go: the second is read silently, since nothing can be granted meanwhile.
void ProgressMessagesTest::anotherProjectNeedsAnotherGrant() {
    const ProjectFolder folder;
    Conversation conversation;
    conversation.begin(showsProgress);
    const auto begun = [](const QString &name, int number) {
        return progressTold(number,
                            R"({"kind":"begin","percentage":0,"title":"Reading )" + name + "\"}");
    };
    QCOMPARE(withoutFindings(
                 conversation.say({granted(1), opened(uriOf(folder.path("a.yslib")), document(1)),
                                   opened(uriOf(folder.path("b.yslib")), document(1))})),
             QStringList({begun("a.yslib", 1), progressTold(1, R"({"kind":"end"})"), creation(2)}));
    QCOMPARE(withoutFindings(conversation.say(
                 {granted(2), opened(uriOf(folder.path("c.yslib")), document(1))})),
             QStringList({begun("c.yslib", 2), progressTold(2, R"({"kind":"end"})"), creation(3)}));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProgressMessagesTest)

#include "progress_messages_test.moc"
