// project recover, state by state: what an update can have left, and what becomes of it. The states
// themselves are proved in tests/fault, by killing an update everywhere.
#include "run_tool.h"
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>
#include <QTemporaryDir>

using support::Answer;
using support::FileTree;

namespace {

constexpr char backupName[] = "data/update/backup/line_20261120_164501";
constexpr char stagingName[] = "data/update/temp/apply_20261120_164430";

QByteArray projectFile(const QByteArray &version, const QByteArray &script = "main.ys") {
    return R"({"schemaVersion": 1,
"project": {"name": "line", "displayName": "产线", "createdAt": "2026-01-01", "version": ")" +
           version + R"("},
"scripts": [{"id": "main", "path": ")" +
           script + R"(", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";
}

FileTree oldProject() {
    return {{"line.yslib", projectFile("1.0")}, {"main.ys", "// old\n"}, {"数据/配方.csv", "old"},
            {"数据/only_old.csv", "o"},         {"logs/run.log", "log"}, {".hidden", "h"}};
}

FileTree newProject() {
    return {{"line.yslib", projectFile("2.0")},
            {"main.ys", "// new\n"},
            {"数据/配方.csv", "new"},
            {"数据/new.csv", "n"},
            {"logs/run.log", "log"},
            {"zz.csv", "z"}};
}

FileTree visible(FileTree tree) {
    tree.remove(".hidden");
    return tree;
}

FileTree some(const FileTree &tree, const QStringList &names) {
    FileTree part;
    for (const QString &name : names)
        part.insert(name, tree.value(name));
    return part;
}

FileTree laid(FileTree tree, const QString &name, const QByteArray &content) {
    tree.insert(name, content);
    return tree;
}

FileTree lacking(FileTree tree, const QString &name) {
    tree.remove(name);
    return tree;
}

// The folder of a project, the data folder beside it, and the tool at work on them.
struct Place {
    QTemporaryDir dir;

    QString path(const QString &name) const { return dir.filePath(name); }
    void lay(const QString &name, const FileTree &tree) const {
        if (!tree.isEmpty())
            support::writeTree(path(name), tree);
    }
    FileTree project() const { return support::readTree(path("line")); }

    Answer recover(const QStringList &more = {}) const {
        const QString library = QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini";
        return support::runTool(QStringList{"project", "recover", path("line/line.yslib"), "--data",
                                            path("data"), "--library", library} +
                                more);
    }

    // All contents, wherever they lie.
    QSet<QByteArray> contents() const {
        const FileTree all = support::readTree(dir.path());
        return QSet<QByteArray>(all.begin(), all.end());
    }

    QStringList listing() const {
        QStringList entries;
        QDirIterator all(dir.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            entries.append(all.next() + ' ' +
                           QString::number(all.fileInfo().lastModified().toMSecsSinceEpoch()));
        }
        entries.sort();
        return entries;
    }
};

} // namespace

class ProjectRecoverTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void states_data();
    void states();
    void leftOversGetOtherNames();
    void stagingOfAnotherUpdateIsNotAskedFor_data();
    void stagingOfAnotherUpdateIsNotAskedFor();
    void whatCannotBeKnownChangesNothing();
    void theNewestBackupCounts();
    void damagedProjectFileComesFromThePackage_data();
    void damagedProjectFileComesFromThePackage();
    void damagedProjectFileOnAFullDisk();
    void packageThatIsNoArchiveIsNoHelp();
    void copyOfABrokenOffRecoveryIsDropped();
    void refusals_data();
    void refusals();
    void folderThatCannotBeListedIsRefused();
    void runningProgramIsWaitedFor_data();
    void runningProgramIsWaitedFor();
    void twoRecoveriesDoNotMeet();
    void aLockThatIsLeftOfAKilledRecoveryDoesNotStopTheNext_data();
    void aLockThatIsLeftOfAKilledRecoveryDoesNotStopTheNext();
};

void ProjectRecoverTest::states_data() {
    QTest::addColumn<FileTree>("project");
    QTest::addColumn<FileTree>("backup");
    QTest::addColumn<FileTree>("staging");
    QTest::addColumn<QString>("found");
    QTest::addColumn<FileTree>("after"); // empty: as before
    const FileTree none;
    const FileTree old = oldProject();
    const FileTree neu = newProject();
    const QString whole = "The project is whole.";
    const QString useBackup = "The backup belongs in the project's place";
    const QString useStaging = "The unpacked package belongs in the project's place";
    const QString lost = "No whole copy was found.";

    QTest::newRow("no update was broken off")
        << old << none << none << "No swap had begun. " + whole << none;
    QTest::newRow("while the package was unpacked")
        << old << none << some(neu, {"main.ys"}) << "No swap had begun. " + whole << none;
    QTest::newRow("while the backup was made")
        << old << some(old, {"line.yslib", "main.ys"}) << neu
        << "The old project had not been touched yet. " + whole << none;
    QTest::newRow("while a file was copied to the backup")
        << old << laid(visible(old), "数据/配方.csv", "o") << neu
        << "The old project had not been touched yet. " + whole << none;
    QTest::newRow("when the backup was whole")
        << old << visible(old) << neu << "The old project had not been touched yet. " + whole
        << none;
    QTest::newRow("while the old project was removed")
        << some(old, {"数据/配方.csv", ".hidden"}) << visible(old) << neu
        << "The old project was being removed. " + useBackup << visible(old);
    QTest::newRow("a data file was all that had been removed")
        << lacking(old, "数据/only_old.csv") << visible(old) << neu
        << "The old project was being removed. " + useBackup << visible(old);
    QTest::newRow("the old project was gone")
        << none << visible(old) << neu << "The old project was being removed. " + useBackup
        << visible(old);
    QTest::newRow("while the new project was copied in")
        << some(neu, {"line.yslib", "main.ys"}) << visible(old) << neu
        << "The new project was being copied in. " + useStaging << neu;
    QTest::newRow("a cut file of the new project")
        << laid(lacking(neu, "zz.csv"), "数据/new.csv", "") << visible(old) << neu
        << "The new project was being copied in. " + useStaging << neu;
    QTest::newRow("a file of zeros in the new project")
        << laid(lacking(neu, "zz.csv"), "数据/new.csv", QByteArray(1, '\0')) << visible(old) << neu
        << "The new project was being copied in. " + useStaging << neu;
    QTest::newRow("while the backup was removed")
        << neu << some(old, {"line.yslib", "main.ys"}) << none
        << "The new project was in place already. " + whole << none;
    QTest::newRow("while the copied package was removed")
        << neu << visible(old) << some(neu, {"数据/new.csv"})
        << "The new project was in place already. " + whole << none;
    QTest::newRow("the backup fails the validator and the package passes")
        << none << visible(laid(old, "line.yslib", projectFile("1.0", "no.ys"))) << neu
        << "The old project was being removed. " + useStaging << neu;
    QTest::newRow("neither passes") << none << laid(visible(old), "line.yslib", "{}")
                                    << laid(neu, "line.yslib", "{}") << lost << none;
    QTest::newRow("someone has worked on the project since")
        << laid(laid(old, "main.ys", "// mine\n"), "mine.ys", "//") << visible(old) << neu
        << "The new project was in place already. " + whole << none;
    QTest::newRow("logs were written since")
        << laid(some(old, {"数据/配方.csv"}), "logs/run.log", "log and more") << visible(old) << neu
        << "The old project was being removed. " + useBackup << visible(old);
    QTest::newRow("a damaged project file and no package")
        << laid(neu, "line.yslib", "") << none << none << lost << none;
    QTest::newRow("a project that never ran stays if it holds all that the backup does")
        << laid(old, "double.yslib", "") << some(old, {"line.yslib"}) << none
        << "The old project had not been touched yet. " + whole << none;
    QTest::newRow("a backup without the project file is of another project")
        << some(old, {"main.ys", "line.yslib"}) << laid(none, "other.yslib", projectFile("9"))
        << neu << "No swap had begun. " + whole << none;
}

void ProjectRecoverTest::states() {
    QFETCH(FileTree, project);
    QFETCH(FileTree, backup);
    QFETCH(FileTree, staging);
    QFETCH(QString, found);
    QFETCH(FileTree, after);
    const Place place;
    place.lay("line", project);
    place.lay(backupName, backup);
    place.lay(stagingName, staging);
    place.lay("data/update", {{"cache/", ""}});
    const bool lost = found.startsWith("No whole");
    const bool whole = found.endsWith("is whole.");
    const QStringList before = place.listing();
    const auto contents = place.contents();

    const Answer looked = place.recover();
    QCOMPARE(place.listing(), before); // looking changes nothing, not even a time
    QVERIFY2(looked.out.contains("Found:     " + found), qPrintable(looked.out + looked.err));
    QCOMPARE(looked.status, whole ? 0 : 1);
    QCOMPARE(looked.err, QString());

    const Answer applied = place.recover({"--apply"});
    QCOMPARE(applied.status, lost ? 1 : 0);
    QCOMPARE(place.project(), after.isEmpty() ? project : after);
    const auto kept = place.contents();
    QVERIFY(kept.contains(contents)); // whatever lay anywhere still does

    const Answer again = place.recover({"--apply"});
    QCOMPARE(again.status, lost ? 1 : 0);
    QCOMPARE(place.project(), after.isEmpty() ? project : after);
    QVERIFY(lost || again.out.contains("No swap had begun. The project is whole."));
}

void ProjectRecoverTest::leftOversGetOtherNames() {
    const Place place;
    place.lay("line", some(oldProject(), {"main.ys"}));
    place.lay(backupName, visible(oldProject()));
    place.lay(stagingName, newProject());
    const Answer answer = place.recover({"--apply"});
    QCOMPARE(answer.status, 0);
    QVERIFY(!QFileInfo::exists(place.path(backupName))); // it was renamed to the project
    QVERIFY(!QFileInfo::exists(place.path(stagingName)));
    QCOMPARE(support::readTree(place.path(QString(stagingName) + ".recovered")), newProject());
    const QStringList aside = QDir(place.dir.path()).entryList({"line.set_aside_*"});
    QCOMPARE(aside.size(), 1);
    QCOMPARE(support::readTree(place.path(aside.first())), some(oldProject(), {"main.ys"}));
    QVERIFY(
        answer.out.contains("Kept:      what lay in its place, as " + place.path(aside.first())));
    QVERIFY(answer.out.contains(place.path("line/line.yslib") + " passes the validator."));
}

void ProjectRecoverTest::stagingOfAnotherUpdateIsNotAskedFor_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("an hour before the backup and more") << "apply_20261120_154430";
    QTest::newRow("later than the backup") << "apply_20261120_164502";
    QTest::newRow("no time in its name") << "apply_20261320_164502";
}

void ProjectRecoverTest::stagingOfAnotherUpdateIsNotAskedFor() {
    QFETCH(QString, name);
    const Place place;
    place.lay("line", newProject());
    place.lay(backupName, some(oldProject(), {"line.yslib", "main.ys"}));
    const QByteArray other = projectFile("2.0").replace("\"line\"", "\"other\"");
    place.lay("data/update/temp/" + name, laid(newProject(), "line.yslib", other));
    const Answer answer = place.recover();
    QVERIFY2(answer.out.contains("The new project was in place already."), qPrintable(answer.out));
    QVERIFY(answer.out.contains("Unpacked:  none"));
}

void ProjectRecoverTest::whatCannotBeKnownChangesNothing() {
    const Place place;
    place.lay("line", lacking(visible(oldProject()), "数据/only_old.csv"));
    place.lay(backupName, visible(oldProject()));
    place.lay("data/update", {{"cache/", ""}});
    const QString found =
        "Found:     The project runs with the backup's project file and lacks other files of the "
        "backup. Whether it is whole cannot be known: compare it with the backup, or name the "
        "update's package with --package. Nothing is changed.\n";
    for (const QStringList &more : {QStringList(), QStringList{"--apply"}}) {
        const Answer answer = place.recover(more);
        QVERIFY2(answer.out.endsWith(found), qPrintable(answer.out));
        QCOMPARE(answer.err, QString());
        QCOMPARE(answer.status, 1);
        QCOMPARE(support::readTree(place.path(backupName)), visible(oldProject()));
        QCOMPARE(place.project(), lacking(visible(oldProject()), "数据/only_old.csv"));
    }
}

void ProjectRecoverTest::theNewestBackupCounts() {
    const Place place;
    place.lay("data/update/backup/line_20261119_235959", newProject());
    place.lay(backupName, visible(oldProject()));
    place.lay("data/update/backup/line_2_20261121_000000", newProject()); // of a folder line_2
    QCOMPARE(place.recover({"--apply"}).status, 0);
    QCOMPARE(place.project(), visible(oldProject()));
}

void ProjectRecoverTest::damagedProjectFileComesFromThePackage_data() {
    QTest::addColumn<FileTree>("package");
    QTest::addColumn<bool>("inCache");
    QTest::addColumn<bool>("taken");
    QTest::newRow("in the cache") << newProject() << true << true;
    QTest::newRow("given") << newProject() << false << true;
    QTest::newRow("with other logs") << laid(newProject(), "logs/run.log", "x") << true << true;
    QTest::newRow("another package") << oldProject() << true << false;
    QTest::newRow("one that holds more") << laid(newProject(), "a", "b") << true << false;
    QTest::newRow("one that fails the validator")
        << laid(newProject(), "line.yslib", "{}") << true << false;
}

void ProjectRecoverTest::damagedProjectFileComesFromThePackage() {
    QFETCH(FileTree, package);
    QFETCH(bool, inCache);
    QFETCH(bool, taken);
    const Place place;
    const QByteArray cut = projectFile("2.0").left(40);
    place.lay("line", laid(newProject(), "line.yslib", cut));
    const QString zip = inCache ? "data/update/cache/p.zip" : "stick/p.zip";
    place.lay("", {{zip, support::zipOf(package)}});
    const QStringList more = inCache ? QStringList() : QStringList{"--package", place.path(zip)};
    QCOMPARE(place.recover(more).status, 1);
    const Answer answer = place.recover(QStringList(more) << "--apply");
    QCOMPARE(answer.status, taken ? 0 : 1);
    QCOMPARE(place.project().value("line.yslib"), taken ? projectFile("2.0") : cut);
    QVERIFY(place.contents().contains(cut));
}

// A disk with no room for the project file: what lay there still does.
void ProjectRecoverTest::damagedProjectFileOnAFullDisk() {
    if (!support::canMountPrivately())
        QSKIP("no private mounts on this system");
    const Place place;
    place.lay("lying", laid(newProject(), "line.yslib", ""));
    place.lay("", {{"p.zip", support::zipOf(newProject())}});
    place.lay("data/update", {{"cache/", ""}});
    QVERIFY(QDir(place.dir.path()).mkdir("line"));
    const QByteArray recover =
        "quorvanectl project recover --apply line/line.yslib --data data --package p.zip "
        "--library " QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini";
    place.lay("", {{"run.sh", "mount -t tmpfs -o size=1M none line && cp -a lying/. line\n"
                              "cat /dev/zero 2>/dev/null >line/.full\n" +
                                  recover +
                                  "; echo status $?\n"
                                  "test -f line/line.yslib && test ! -s line/line.yslib || exit 9\n"
                                  "find line -name '*.yslib?*' | wc -l\n"
                                  "rm line/.full\n" +
                                  recover + "\n"}});
    const Answer answer =
        support::runLine(QLatin1String(support::privately) + "sh run.sh", place.dir.path());
    QCOMPARE(answer.err, "quorvanectl: cannot write " + place.path("line/line.yslib") + "\n");
    QVERIFY2(answer.out.contains("status 1\n1\n"), qPrintable(answer.out)); // the one set aside
    QVERIFY2(answer.out.endsWith("line/line.yslib passes the validator.\n"),
             qPrintable(answer.out));
    QCOMPARE(answer.status, 0);
}

void ProjectRecoverTest::packageThatIsNoArchiveIsNoHelp() {
    const Place place;
    place.lay("line", laid(newProject(), "line.yslib", ""));
    place.lay("data/update/cache", {{"p.zip", "no archive"}});
    const Answer answer = place.recover({"--apply"});
    QCOMPARE(answer.status, 1);
    QVERIFY(answer.out.contains("No whole copy was found."));
    QVERIFY(answer.out.contains("Package:   " + place.path("data/update/cache/p.zip")));
}

void ProjectRecoverTest::copyOfABrokenOffRecoveryIsDropped() {
    const Place place;
    place.lay("line.recovering", some(oldProject(), {"main.ys"}));
    place.lay(backupName, visible(oldProject()));
    QCOMPARE(place.recover({"--apply"}).status, 0);
    QCOMPARE(place.project(), visible(oldProject()));
    QVERIFY(!QFileInfo::exists(place.path("line.recovering")));
}

void ProjectRecoverTest::refusals_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");
    QTest::newRow("no project and no backup")
        << QStringList{"no/no.yslib"} << "neither the project nor a backup of it is there";
    QTest::newRow("no project file") << QStringList{"main.ys"} << "is no project file";
    QTest::newRow("no package") << QStringList{"line/line.yslib", "--package", "none.zip"}
                                << "none.zip";
}

void ProjectRecoverTest::refusals() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);
    const Place place;
    place.lay("line", oldProject());
    arguments[0] = place.path(arguments[0]);
    const Answer answer =
        support::runTool(QStringList{"project", "recover"} + arguments +
                         QStringList{"--data", place.path("data"), "--library",
                                     QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini"});
    QCOMPARE(answer.status, 2);
    QVERIFY2(answer.err.contains(error), qPrintable(answer.err));
    QCOMPARE(answer.err.count('\n'), 1);
    QCOMPARE(answer.out, QString());
}

void ProjectRecoverTest::folderThatCannotBeListedIsRefused() {
    if (!support::permissionsKeepOut())
        QSKIP("root lists every folder, and on Windows no permission closes one");
    const Place place;
    place.lay("line", oldProject());
    place.lay(backupName, visible(oldProject()));
    QFile::setPermissions(place.path("line/数据"), QFile::Permissions());
    const Answer answer = place.recover({"--apply"});
    QFile::setPermissions(place.path("line/数据"),
                          QFile::ReadUser | QFile::WriteUser | QFile::ExeUser);
    QCOMPARE(answer.status, 2);
    QVERIFY(answer.err.contains("cannot list the folder " + place.path("line/数据")));
}

void ProjectRecoverTest::runningProgramIsWaitedFor_data() {
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("dataHome");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<bool>("refused");
    QTest::newRow("a launcher on this data folder") << "Quorvaner"
                                                    << "share"
                                                    << "no" << true;
    QTest::newRow("a launcher on another one") << "Quorvaner"
                                               << "other"
                                               << "no" << false;
    QTest::newRow("a launcher whose data folder is gone") << "Quorvaner"
                                                          << "gone"
                                                          << "no" << false;
    QTest::newRow("a runtime on this project") << "LineRunner.exe"
                                               << "other"
                                               << "line" << true;
    QTest::newRow("a runtime on another one") << "LineRunner.exe"
                                              << "other"
                                              << "no" << false;
    QTest::newRow("any other program") << "Quorvanity"
                                       << "share"
                                       << "line" << false;
}

void ProjectRecoverTest::runningProgramIsWaitedFor() {
    QFETCH(QString, program);
    QFETCH(QString, dataHome);
    QFETCH(QString, argument);
    QFETCH(bool, refused);
    const Place place;
    place.lay("line", oldProject());
    if (dataHome != "gone")
        place.lay("share/Quorvane/update", {{"cache/", ""}});
    if (support::onWindows) { // each launcher and each runtime counts there
        program = QFileInfo(program).completeBaseName() + ".exe";
        refused = program != "Quorvanity.exe";
    }
    QVERIFY(QFile::copy(WAITING_PROGRAM, place.path(program)));
    place.lay("", {{"LineRunner.plan", "print 1 wait"}}); // where it is the stand-in runtime
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_DATA_HOME", place.path(dataHome));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(place.path(program),
                  {"-c", "echo; read line", "--project=" + place.path(argument + "/line.yslib")});
    QVERIFY(process.waitForReadyRead(30000));
    const QStringList data{"--data", place.path("share/Quorvane")};
    const Answer looked = place.recover(data);
    const Answer applied = place.recover(QStringList(data) << "--apply");
    place.lay("", {{"LineRunner.go", ""}});
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(30000));
    QCOMPARE(looked.status, 0); // looking does no harm
    QCOMPARE(applied.status, refused ? 2 : 0);
    QCOMPARE(applied.err.startsWith("quorvanectl: close this first: " + program + " (process"),
             refused);
}

void ProjectRecoverTest::twoRecoveriesDoNotMeet() {
    const Place place;
    place.lay(backupName, oldProject());
    QLockFile lock(place.path("data/update/recovery.lock"));
    QVERIFY(lock.lock());
    const Answer answer = place.recover({"--apply"});
    QCOMPARE(answer.status, 2);
    QVERIFY(answer.err.contains("another recovery is at work"));
    QVERIFY(place.project().isEmpty());
}

void ProjectRecoverTest::aLockThatIsLeftOfAKilledRecoveryDoesNotStopTheNext_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("killed before its text was written") << QByteArray();
    // A program that lives, and is not at work here: this one.
    QTest::newRow("its number is another process's by now")
        << QByteArray::number(QCoreApplication::applicationPid()) + '\n' +
               QFileInfo(QCoreApplication::applicationFilePath()).fileName().toUtf8() + '\n' +
               QSysInfo::machineHostName().toUtf8() + '\n';
}

void ProjectRecoverTest::aLockThatIsLeftOfAKilledRecoveryDoesNotStopTheNext() {
    QFETCH(QByteArray, text);
    const Place place;
    place.lay(backupName, oldProject());
    QFile lock(place.path("data/update/recovery.lock"));
    QVERIFY(lock.open(QIODevice::WriteOnly));
    QCOMPARE(lock.write(text), qint64(text.size()));
    lock.close();
    const Answer answer = place.recover({"--apply"});
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);
    QVERIFY(!place.project().isEmpty());
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectRecoverTest)
#include "project_recover_test.moc"
