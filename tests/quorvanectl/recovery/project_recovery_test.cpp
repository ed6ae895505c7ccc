// Putting a project back: what lies where afterwards, also where it does not succeed.
#include "quorvanectl/recovery/project_recovery.h"

#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using ctl::Recovery;
using ctl::RecoveryResult;
using ctl::UpdateRemains;
using support::FileTree;

namespace {

const QByteArray yslib = R"({"schemaVersion": 1, "project": {"name": "line", "displayName": "a",
"createdAt": "2026-01-01", "version": "1.0"}, "scripts": [{"id": "main", "path": "main.ys",
"role": "main"}], "tasks": {"main": {"entryScriptId": "main"}}})";

const FileTree wholeProject{{"line.yslib", yslib}, {"main.ys", "// old\n"}, {"data/a.csv", "1"}};

} // namespace

class ProjectRecoveryTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;
    UpdateRemains remainsOf(Recovery recovery) const;
    QStringList names() const;

private Q_SLOTS:
    void initTestCase();

    void init();
    void aWholeProjectStays();
    void theBackupTakesThePlace_data();
    void theBackupTakesThePlace();
    void theBackupOfAnotherVolumeIsCopied();
    void aProjectsPlaceThatIsAFile();
    void aPlaceThatIsGone();
    void aBackupThatHasGoneMeanwhile();
    void whatCannotBeRecoveredStays();
    void namesOfLeftOversThatAreTaken();
    void packagesWithoutTheProjectFile_data();
    void packagesWithoutTheProjectFile();
};

QString ProjectRecoveryTest::path(const QString &name) const {
    return folder->filePath(name);
}

// With a whole backup, and whatever the row has laid.
UpdateRemains ProjectRecoveryTest::remainsOf(Recovery recovery) const {
    UpdateRemains remains;
    remains.recovery = recovery;
    remains.project.folder = path("line");
    remains.project.projectFile = path("line/line.yslib");
    remains.backup.folder = path("backup");
    remains.backup.projectFile = path("backup/line.yslib");
    QString error;
    if (!ctl::readContent(path("backup"), &remains.backup.content, &error))
        qFatal("%s", qPrintable(error));
    return remains;
}

QStringList ProjectRecoveryTest::names() const {
    return QDir(folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
}

void ProjectRecoveryTest::init() {
    folder.reset(new QTemporaryDir);
}

void ProjectRecoveryTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ProjectRecoveryTest::aWholeProjectStays() {
    support::writeTree(path("line"), wholeProject);
    support::writeTree(path("backup"), {{"line.yslib", yslib}});
    support::writeTree(path("line.recovering"), {{"half", ""}});
    const RecoveryResult result = ctl::recoverProject(remainsOf(Recovery::None));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.keptAs, QString());
    QCOMPARE(result.done, QStringList(path("backup.recovered")));
    QCOMPARE(support::readTree(path("line")), wholeProject);
    QCOMPARE(names(), QStringList({"backup.recovered", "line"})); // half a copy is dropped
}

void ProjectRecoveryTest::theBackupTakesThePlace_data() {
    QTest::addColumn<FileTree>("before");
    QTest::newRow("of nothing") << FileTree();
    QTest::newRow("of an empty folder") << FileTree{{"line/", ""}};
    QTest::newRow("of half a project") << FileTree{{"line/main.ys", "// old\n"}};
    QTest::newRow("of somebody's work") << FileTree{{"line/mine.ys", "x"}, {"line/.git/a", "x"}};
}

void ProjectRecoveryTest::theBackupTakesThePlace() {
    QFETCH(FileTree, before);
    support::writeTree(folder->path(), before);
    support::writeTree(path("backup"), wholeProject);
    const RecoveryResult result = ctl::recoverProject(remainsOf(Recovery::Backup));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(support::readTree(path("line")), wholeProject);
    QVERIFY(!QFileInfo::exists(path("backup")));
    QCOMPARE(result.done, QStringList());
    QCOMPARE(result.keptAs.isEmpty(), before.isEmpty());
    if (!before.isEmpty()) {
        QVERIFY(result.keptAs.startsWith(path("line.set_aside_")));
        QCOMPARE(support::readTree(result.keptAs), support::below(before, "line"));
    }
}

// It is renamed where that can be done at once, and never moved file by file.
void ProjectRecoveryTest::theBackupOfAnotherVolumeIsCopied() {
    const QTemporaryDir memory("/dev/shm/project_recovery_XXXXXX");
    if (support::onWindows || !memory.isValid())
        return; // one volume is all there is
    const QString backup = memory.filePath("backup");
    support::writeTree(path("line"), {{"main.ys", "// mine\n"}});
    support::writeTree(path("backup"), wholeProject);
    support::writeTree(backup, wholeProject);
    UpdateRemains remains = remainsOf(Recovery::Backup);
    remains.backup.folder = backup;
    remains.backup.projectFile = backup + "/line.yslib";
    const RecoveryResult result = ctl::recoverProject(remains);
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(support::readTree(path("line")), wholeProject);
    QCOMPARE(support::readTree(result.keptAs), (FileTree{{"main.ys", "// mine\n"}}));
    QVERIFY(!names().contains("line.recovering"));
}

// Somebody's file is no less worth than somebody's folder.
void ProjectRecoveryTest::aProjectsPlaceThatIsAFile() {
    support::writeTree(folder->path(), {{"line", "mine"}});
    support::writeTree(path("backup"), wholeProject);
    const RecoveryResult result = ctl::recoverProject(remainsOf(Recovery::Backup));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(support::readTree(path("line")), wholeProject);
    QFile kept(result.keptAs);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("mine"));
}

void ProjectRecoveryTest::aPlaceThatIsGone() {
    support::writeTree(path("backup"), wholeProject);
    UpdateRemains remains = remainsOf(Recovery::Backup);
    support::writeTree(folder->path(), {{"wall", "a file"}});
    remains.project.folder = path("wall/line");
    const RecoveryResult result = ctl::recoverProject(remains);
    QVERIFY(!result.ok);
    QVERIFY(!result.error.isEmpty());
    QCOMPARE(result.keptAs, QString());
    QCOMPARE(result.done, QStringList());
    QCOMPARE(support::readTree(path("backup")), wholeProject);
    QCOMPARE(names(), QStringList({"backup", "wall"}));
}

void ProjectRecoveryTest::aBackupThatHasGoneMeanwhile() {
    support::writeTree(path("line"), {{"main.ys", "half"}});
    support::writeTree(path("backup"), wholeProject);
    const UpdateRemains remains = remainsOf(Recovery::Backup);
    QVERIFY(QDir(path("backup")).removeRecursively());
    const RecoveryResult result = ctl::recoverProject(remains);
    QVERIFY(!result.ok);
    QVERIFY(!result.error.isEmpty());
    QCOMPARE(support::readTree(path("line")), FileTree({{"main.ys", "half"}}));
}

void ProjectRecoveryTest::whatCannotBeRecoveredStays() {
    const FileTree before{
        {"line/main.ys", "half"}, {"backup/line.yslib", "{}"}, {"line.recovering/a", "x"}};
    support::writeTree(folder->path(), before);
    const RecoveryResult result = ctl::recoverProject(remainsOf(Recovery::Impossible));
    QVERIFY(!result.ok);
    QCOMPARE(result.error, "there is no whole copy of " + path("line"));
    QCOMPARE(support::readTree(folder->path()), before);
}

void ProjectRecoveryTest::namesOfLeftOversThatAreTaken() {
    support::writeTree(path("line"), wholeProject);
    support::writeTree(path("backup"), {{"line.yslib", yslib}});
    support::writeTree(path("backup.recovered"), {{"earlier", ""}});
    support::writeTree(path("backup.recovered_2"), {{"earlier", ""}});
    const RecoveryResult result = ctl::recoverProject(remainsOf(Recovery::None));
    QCOMPARE(result.done, QStringList(path("backup.recovered_3")));
    QCOMPARE(support::readTree(path("backup.recovered")), FileTree({{"earlier", ""}}));
}

void ProjectRecoveryTest::packagesWithoutTheProjectFile_data() {
    QTest::addColumn<QByteArray>("package");
    QTest::newRow("no archive") << QByteArray("no archive");
    QTest::newRow("an archive without it") << support::zipOf({{"other.yslib", yslib}});
}

void ProjectRecoveryTest::packagesWithoutTheProjectFile() {
    QFETCH(QByteArray, package);
    support::writeTree(folder->path(), {{"line/line.yslib", "{cut"}, {"a.zip", package}});
    UpdateRemains remains = remainsOf(Recovery::ProjectFile);
    remains.backup = ctl::ProjectCopy();
    remains.source = path("a.zip");
    const RecoveryResult result = ctl::recoverProject(remains);
    QVERIFY(!result.ok);
    QVERIFY(!result.error.isEmpty());
    QCOMPARE(support::readTree(path("line")).value("line.yslib"), QByteArray("{cut"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectRecoveryTest)
#include "project_recovery_test.moc"
