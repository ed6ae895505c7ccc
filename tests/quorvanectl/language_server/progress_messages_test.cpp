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
