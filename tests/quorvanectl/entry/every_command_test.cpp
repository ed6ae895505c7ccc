// What holds for every command: its example runs, nothing is overwritten, a full disk leaves nothing half.
#include "example_folder.h"
#include "quorvanectl/commands/commands.h"
#include "run_tool.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using support::Answer;
using support::ProjectFolder;
using support::examples::contentsOf;
using support::examples::layOut;

namespace {

// All keys, at whatever depth. Keywords are data: they stand in `tokenKinds`.
QStringList keysOf(const QJsonValue &value) {
    QStringList keys;
    const QJsonArray array = value.toArray();
    for (const QJsonValue &element : array)
        keys.append(keysOf(element));
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        keys.append(member.key());
        if (member.key() != "tokenKinds")
            keys.append(keysOf(member.value()));
    }
    return keys;
}

} // namespace

class EveryCommandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theExampleRuns_data();
    void theExampleRuns();
    void theManPageNamesEveryKeyOfTheJson_data();
    void theManPageNamesEveryKeyOfTheJson();
    void nothingIsOverwritten_data();
    void nothingIsOverwritten();
    void aFullDiskLeavesNothingHalf_data();
    void aFullDiskLeavesNothingHalf();
    void hasAFileNamedAfterIt_data();
    void hasAFileNamedAfterIt();

private:
    void addCommands();
};

void EveryCommandTest::theExampleRuns_data() {
    addCommands();
}

void EveryCommandTest::theExampleRuns() {
    QFETCH(QString, example);
    QFETCH(QString, title);
    const ProjectFolder folder;
    layOut(folder);
    const Answer answer = support::runLine(example, folder.path(""));
    QVERIFY2(answer.status == ctl::Clean || answer.status == ctl::Findings, qPrintable(answer.err));
    // An editor that says nothing is told nothing.
    QCOMPARE(answer.out.isEmpty(), title == "language-server");
}

void EveryCommandTest::theManPageNamesEveryKeyOfTheJson_data() {
    addCommands();
}

void EveryCommandTest::theManPageNamesEveryKeyOfTheJson() {
    QFETCH(QString, example);
    const ProjectFolder folder;
    layOut(folder);
    const Answer answer = support::runLine(example + " --format json", folder.path(""));
    if (answer.err.contains("Unknown option 'format'") || answer.err.contains("no format 'json'") ||
        example.contains(" script t"))
        return; // a tree has the fields of its nodes, tokens have none
    const QJsonDocument json = QJsonDocument::fromJson(answer.out.toUtf8());
    QVERIFY2(json.isObject(), qPrintable(answer.out + answer.err));
    QFile man(QUORVANE_SOURCE_TREE "/tools/quorvanectl/quorvanectl.1");
    QVERIFY(man.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(man.readAll());
    for (const QString &key : keysOf(json.object()))
        QVERIFY2(page.contains('"' + key + '"'), qPrintable(key));
}

void EveryCommandTest::nothingIsOverwritten_data() {
    addCommands();
}

// A command that wrote files refuses to write them again, and does it with --force.
void EveryCommandTest::nothingIsOverwritten() {
    QFETCH(QString, example);
    const ProjectFolder folder;
    layOut(folder);
    const auto before = contentsOf(folder);
    (void)support::runLine(example, folder.path(""));
    const auto after = contentsOf(folder);
    for (auto file = before.begin(); file != before.end(); ++file)
        QCOMPARE(after.value(file.key()), file.value());
    if (after == before)
        return;
    const Answer again = support::runLine(example, folder.path(""));
    QCOMPARE(again.status, int(ctl::Refused));
    QStringList told = again.err.split('\n', Qt::SkipEmptyParts);
    // QFile gives no file of the example's to its owner alone on Windows.
    told.removeAll("quorvanectl: private.pem: others can read this private key");
    QCOMPARE(told.size(), 1);
    QCOMPARE(contentsOf(folder), after);
    const Answer forced = support::runLine(example + " --force", folder.path(""));
    if (!forced.err.contains("Unknown option 'force'"))
        QVERIFY2(forced.status != ctl::Refused, qPrintable(forced.err));
    else
        QCOMPARE(contentsOf(folder), after);
}

void EveryCommandTest::aFullDiskLeavesNothingHalf_data() {
    addCommands();
}

// A command that writes files says which one it could not write, and leaves none behind.
void EveryCommandTest::aFullDiskLeavesNothingHalf() {
    if (!support::canMountPrivately())
        QSKIP("no private mounts on this system");
    QFETCH(QString, example);
    const ProjectFolder folder;
    layOut(folder);
    const auto before = contentsOf(folder);
    const ProjectFolder other;
    layOut(other);
    (void)support::runLine(example, other.path(""));
    if (contentsOf(other).keys() == before.keys())
        return;
    folder.write("on_full_disk.sh",
                 "mount -t tmpfs -o size=8M none disk && cp -a [!d]* demo* disk\n"
                 "cd disk && cat /dev/zero 2>/dev/null >full\n"
                 "find . -type f >../before\n" +
                     example.toUtf8() +
                     "\n"
                     "status=$?\nfind . -type f >../after\nexit $status\n");
    QVERIFY(QDir(folder.path("")).mkdir("disk"));
    const Answer answer =
        support::runLine(QLatin1String(support::privately) + "sh on_full_disk.sh", folder.path(""));
    QCOMPARE(answer.status, int(ctl::Refused));
    QCOMPARE(answer.out, QString());
    const QString said = answer.err.section('\n', -2, -2); // progress may come before it
    QVERIFY2(said.startsWith("quorvanectl: "), qPrintable(answer.err));
    QVERIFY2(said.contains("No space left on device") || said.contains("cannot write"),
             qPrintable(said));
    QCOMPARE(folder.read("after"), folder.read("before"));
}

void EveryCommandTest::hasAFileNamedAfterIt_data() {
    addCommands();
}

void EveryCommandTest::hasAFileNamedAfterIt() {
    QFETCH(QString, title);
    const QString name = QString(title).replace(QRegularExpression("[ -]"), "_");
    QFile file(QString(QUORVANE_SOURCE_TREE "/tools/quorvanectl/commands/%1.cpp").arg(name));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    QVERIFY(file.readAll().startsWith("// quorvanectl " + title.toUtf8()));
}

void EveryCommandTest::addCommands() {
    QTest::addColumn<QString>("example");
    QTest::addColumn<QString>("title");
    for (const ctl::Command &command : ctl::allCommands())
        QTest::newRow(qPrintable(ctl::titleOf(command)))
            << command.example << ctl::titleOf(command);
}

QUORVANE_TEST_MAIN(QCoreApplication, EveryCommandTest)
#include "every_command_test.moc"
