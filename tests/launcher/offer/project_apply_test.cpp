// The apply of a project update, step by step: what each step says when it fails, where a cancel
// takes effect, and what lies on disk afterwards.
#include "launcher/offer/project_apply.h"

#include "file_events.h"
#include "project/project_validator.h"
#include "support/file_kinds.h"
#include "support/platform.h"
#include "support/scripted_server.h"
#include "support/unpacking.h"
#include "support/zip_maker.h"
#include "update/manifest_signature.h"
#include "update_offer.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QLockFile>
#include <QProcess>
#include <QRegularExpression>

#include <cerrno>
#include <thread>

using support::FileTree;
using update_offer::install;
using update_offer::Offer;
using update_offer::projectFolder;

namespace {

FileTree oldProject() {
    FileTree tree = update_offer::project("1.0");
    tree.insert("old.ys", "");
    tree.insert("logs/run.log", "old run");
    tree.insert("logs/2026/一月.log", "old month");
    tree.insert(".quorvane-installed-version", "1.0\n");
    return tree;
}

FileTree newProject() {
    FileTree tree = update_offer::project("1.9");
    tree.insert("new/页.ys", "");
    tree.insert("logs/run.log", "from the package");
    tree.insert("logs/readme.txt", "package");
    return tree;
}

// What newProject() must look like in the place of oldProject(): the old logs win.
FileTree replacedProject(const QString &version = "2.0.0") {
    FileTree tree = newProject();
    tree.insert("logs/run.log", "old run");
    tree.insert("logs/2026/一月.log", "old month");
    tree.insert(".quorvane-installed-version", support::textLines(version.toUtf8() + '\n'));
    tree.remove("demo.yslib"); // compared by itself: stamping lays it out anew
    return tree;
}

FileTree withoutProjectFile(FileTree tree) {
    tree.remove("demo.yslib");
    return tree;
}

QStringList entriesOf(const QString &folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

QStringList leftovers() {
    return entriesOf(AppPaths::updateTempPath("")) + entriesOf(AppPaths::updateBackupDirectory());
}

// Without waiting for another launcher.
ApplyResult apply(const Offer &offer, const QString &project, CancelFlag *flag = nullptr) {
    return applyProjectUpdateWithin(offer.snapshot, project, flag, {0, 1});
}

// The text without the parts that time decides.
QString timeless(QString message) {
    message.replace(QRegularExpression("in \\d+ ms"), "in N ms");
    return message.replace(QRegularExpression("_\\d{8}_\\d{6}"), "_TIME");
}

QString successText(const QString &version) {
    return "Project updated to " + version +
           " in N ms. Backup: " + AppPaths::updateBackupDirectory() + "/line_TIME";
}

// Lets something happen, once, when a file whose path ends so is about to be used.
file_events::Listener atFirst(file_events::Kind kind, const QString &end,
                              const std::function<void()> &happens) {
    return [kind, end, happens, done = false](file_events::Kind seen, const QString &path) mutable {
        if (!done && seen == kind && path.endsWith(end)) {
            done = true;
            happens();
        }
        return 0;
    };
}

// Lets something happen just before the backup is gone, which is the end of a swap.
file_events::Listener atTheEndOfTheSwap(const std::function<void()> &happens) {
    return [happens](file_events::Kind seen, const QString &path) {
        static const QRegularExpression backup("/line_\\d{8}_\\d{6}$");
        if (seen == file_events::Kind::Remove && path.contains(backup))
            happens();
        return 0;
    };
}

QString unseen() {
    return "no test sees the file operations of a program here";
}

// Where a stick's package is copied to, and its name there.
bool isCopy(const QString &path) {
    static const QRegularExpression copy("/update/temp/package_[0-9a-f]+/line\\.zip$");
    return path.contains(copy);
}

// Another package that would be applied too.
QByteArray exchanged() {
    FileTree tree = newProject();
    tree.insert("main.ys", "// exchanged");
    return support::zipOf(tree);
}

enum class Exchange { InPlace, ByAnotherFile };

void exchangePackage(const Offer &offer, Exchange how) {
    if (how == Exchange::ByAnotherFile)
        QVERIFY(QFile::remove(offer.zipPath()));
    support::writeTree(offer.place.path(), {{"包/line.zip", exchanged()}});
}

QLockFile &otherLauncher() {
    static QLockFile lock(AppPaths::updateTempPath("apply.lock"));
    return lock;
}

QByteArray oneEntry(const QByteArray &name) {
    return support::makeZip({{name, "content"}});
}

} // namespace

Q_DECLARE_METATYPE(Exchange)
Q_DECLARE_METATYPE(file_events::Kind)
Q_DECLARE_METATYPE(std::function<void(Offer &)>)

class ProjectApplyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void theWholeFolderIsReplacedApartFromTheLogs();
    void theTimeIsMeasuredFromTheEntry();
    void theFoldersAreNamedAfterTheTime();
    void whatLiesInAStagingFolderOfThisSecondIsNotTakenAlong();
    void aVersionThatCannotBeStampedIsStillAnUpdate();
    void theVersionIsStampedAsItStands_data();
    void theVersionIsStampedAsItStands();
    void aProjectInASubFolderMovesOneLevelDown();
    void aProjectFileOfAnotherNameTakesEffect();
    void warningsDoNotCount();
    void aMissingProjectFolderIsMade();
    void aPathBelowAnotherInstallationIsMapped();
    void aFolderOfAnOddNameIsReplaced_data();
    void aFolderOfAnOddNameIsReplaced();
    void aFolderThatIsALinkIsReplacedAndWhatItLedToStays();
    void aProjectFileHeldOpenByAnotherProcessIsReplaced();
    void onWindowsAFileHeldOpenKeepsTheProjectFromBeingReplaced();
    void hiddenFilesOfTheOldProjectGo();
    void aStepFails_data();
    void aStepFails();
    void somethingThatIsNoZipIsRefused();
    void allErrorsOfTheProjectAreToldAndNoWarning();
    void withoutAManifest();
    void theManifestIsProvedAgain();
    void theKeyIsGone();
    void ofTwoFaultsTheEarlierStepIsTold_data();
    void ofTwoFaultsTheEarlierStepIsTold();
    void anotherLauncherIsAtIt();
    void anotherLauncherIsWaitedForFor120Seconds();
    void anApplyGoesOnWhenTheOtherLauncherIsDone();
    void aCancelEndsTheWaitForAnotherLauncher();
    void whatAKilledLauncherLeftDoesNotStopTheNext_data();
    void whatAKilledLauncherLeftDoesNotStopTheNext();
    void aPackageThatIsExchangedIsNotApplied_data();
    void aPackageThatIsExchangedIsNotApplied();
    void aStickIsReadOnceAndItsPackageLiesInPrivateMeanwhile();
    void aPackageThatCannotBeCopied_data();
    void aPackageThatCannotBeCopied();
    void aDamagedPackageIsToldByTheSticksPath();
    void aCopyThatAKilledLauncherLeftIsRemoved_data();
    void aCopyThatAKilledLauncherLeftIsRemoved();
    void aCancelWhileThePackageIsCopied_data();
    void aCancelWhileThePackageIsCopied();
    void aCancel_data();
    void aCancel();
    void aCancelBeforeTheStart();
    void aCancelAfterTheLastPointIsNotSeen();
    void aCancelDuringTheDownload();
    void thePackageIsDownloaded_data();
    void thePackageIsDownloaded();
    void aPackageWithoutAFileOfItsOwnIsMissing_data();
    void aPackageWithoutAFileOfItsOwnIsMissing();
    void aPackageThatIsNamedAsAFolderIsNotFetched();
    void theServerHasNoPackage();
    void aDownloadWithAnotherHashStaysInTheCache();
    void theBackupCannotBegin();
    void aPartialBackupReplacesTheProject();
    void theProjectFileIsGoneAfterTheSwap();
    void withoutAProjectPathNothingIsReplaced();
    void aLogsThatIsAFileFails();
    void findProjectFile_data();
    void findProjectFile();
    void resolveUpdateZipNeedsNoPlaceForTheError();
};

void ProjectApplyTest::initTestCase() {
    support::provideUnpacking();
}

void ProjectApplyTest::init() {
    installation::reset();
    for (const QString &folder : {AppPaths::updateTempPath(""), AppPaths::updateBackupDirectory(),
                                  AppPaths::updateCacheDirectory()}) {
        QVERIFY(QDir(folder).removeRecursively());
        QVERIFY(QDir().mkpath(folder));
    }
    QVERIFY(update_offer::trust());
}

// --- Success ------------------------------------------------------------------------------

void ProjectApplyTest::theWholeFolderIsReplacedApartFromTheLogs() {
    const QString project = install(oldProject());
    const Offer offer(newProject());
    const ApplyResult result = apply(offer, project);
    QCOMPARE(timeless(result.message), successText("2.0.0"));
    QVERIFY(result.success);
    QCOMPARE(result.errorClass, QString());
    QCOMPARE(result.projectPath, project);
    QCOMPARE(withoutProjectFile(support::readTree(projectFolder())), replacedProject());
    QVERIFY(readTextFile(project).contains("\"version\": \"2.0.0\""));
    QVERIFY(readTextFile(project).contains("产线"));
    QCOMPARE(leftovers(), QStringList()); // the backup that the text names is gone
    QVERIFY(QFileInfo::exists(offer.zipPath()));
    QCOMPARE(installation::takeLog(), QStringList()); // the flow logs the end, not the apply
}

// What it reads first takes until the clock shows it.
void ProjectApplyTest::theTimeIsMeasuredFromTheEntry() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const Offer offer(newProject());
    const file_events::Watch slow(atFirst(file_events::Kind::Read, "/update.pub", [] {
        QElapsedTimer clock;
        clock.start();
        while (!clock.hasExpired(60))
            std::this_thread::yield();
    }));
    const ApplyResult result = apply(offer, install(oldProject()));
    const QRegularExpression time("in (\\d+) ms");
    QVERIFY(time.match(result.message).captured(1).toInt() >= 60);
}

// Both names bear the time in UTC, wherever the line is. An update that cannot be unpacked tells
// where to.
void ProjectApplyTest::theFoldersAreNamedAfterTheTime() {
    const QString project = install(oldProject());
    const QByteArray zone = qgetenv("TZ");
    qputenv("TZ", "Asia/Shanghai");
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const ApplyResult result = apply(Offer(newProject()), project);
    const QString temp = QDir::cleanPath(AppPaths::updateTempPath(""));
    QVERIFY(QDir(temp).removeRecursively());
    QVERIFY(installation::write(temp, "in the way"));
    const ApplyResult failed = apply(Offer(newProject()), project);
    const QDateTime after = QDateTime::currentDateTimeUtc();
    QVERIFY(QFile::remove(temp));
    zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
    const auto isNow = [&](const QString &stamp) {
        const QString form = "yyyyMMdd_HHmmss";
        return before.toString(form) <= stamp && stamp <= after.toString(form);
    };
    const QString begin =
        "Extract failed: unable to create destination directory: " + temp + "/apply_";
    QVERIFY2(failed.message.startsWith(begin) && isNow(failed.message.mid(begin.size())),
             qPrintable(failed.message));
    const QString backup = result.message.section(". Backup: ", 1);
    const QString start = AppPaths::updateBackupDirectory() + "/line_";
    QVERIFY2(backup.startsWith(start) && isNow(backup.mid(start.size())), qPrintable(backup));
}

void ProjectApplyTest::whatLiesInAStagingFolderOfThisSecondIsNotTakenAlong() {
    const QString project = install(oldProject());
    for (int second = 0; second < 60; ++second) {
        const QString name =
            QDateTime::currentDateTimeUtc().addSecs(second).toString("'apply_'yyyyMMdd_HHmmss");
        support::writeTree(AppPaths::updateTempPath(name), {{"left.over", "x"}});
    }
    const ApplyResult result = apply(Offer(newProject()), project);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(withoutProjectFile(support::readTree(projectFolder())), replacedProject());
}

void ProjectApplyTest::aVersionThatCannotBeStampedIsStillAnUpdate() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    const file_events::Watch spoil(atTheEndOfTheSwap([&project] {
        QVERIFY(installation::write(project, "{"));
        support::writeTree(projectFolder(), {{".quorvane-installed-version/x", ""}});
    }));
    const ApplyResult result = apply(Offer(newProject()), project);
    QVERIFY(result.success);
    QCOMPARE(timeless(result.message), successText("2.0.0"));
    QCOMPARE(readTextFile(project), QString("{"));
}

void ProjectApplyTest::theVersionIsStampedAsItStands_data() {
    QTest::addColumn<QJsonValue>("version");
    QTest::addColumn<QString>("told");
    QTest::addColumn<QString>("sidecar");
    QTest::addColumn<QString>("inFile");
    QTest::newRow("a plain one") << QJsonValue("3.1") << "3.1"
                                 << "3.1\n"
                                 << "3.1";
    QTest::newRow("with a letter and blanks") << QJsonValue(" v3.1 ") << " v3.1 "
                                              << " v3.1 \n"
                                              << " v3.1 ";
    QTest::newRow("an empty one is not stamped") << QJsonValue("") << "" << QString() << "1.9";
    QTest::newRow("a number reads as none") << QJsonValue(3) << "" << QString() << "1.9";
    QTest::newRow("one with a place mark") << QJsonValue("%2 %3") << "%2 %3"
                                           << "%2 %3\n"
                                           << "%2 %3";
}

void ProjectApplyTest::theVersionIsStampedAsItStands() {
    QFETCH(QJsonValue, version);
    QFETCH(QString, told);
    QFETCH(QString, sidecar);
    QFETCH(QString, inFile);
    Offer offer(newProject());
    const QString project = install(oldProject());
    const ApplyResult result = apply(offer.with("version", version), project);
    QCOMPARE(timeless(result.message), successText(told));
    QCOMPARE(support::linesOf(support::readTree(projectFolder())[".quorvane-installed-version"]),
             sidecar.toUtf8());
    QVERIFY(readTextFile(project).contains("\"version\": \"" + inFile + '"'));
}

void ProjectApplyTest::aProjectInASubFolderMovesOneLevelDown() {
    const QString project = install(oldProject());
    FileTree package;
    const FileTree content = newProject();
    for (auto file = content.begin(); file != content.end(); ++file)
        package.insert("内层/" + file.key(), file.value());
    const ApplyResult result = apply(Offer(package), project);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(result.projectPath, projectFolder() + "/内层/demo.yslib");
    QVERIFY(!QFileInfo::exists(project));
    QVERIFY(QFileInfo::exists(projectFolder() + "/logs/run.log")); // stays where it was
    QCOMPARE(readTextFile(projectFolder() + "/内层/logs/run.log"), QString("from the package"));
}

void ProjectApplyTest::aProjectFileOfAnotherNameTakesEffect() {
    FileTree package = newProject();
    package.insert("其他.yslib", package.take("demo.yslib"));
    const ApplyResult result = apply(Offer(package), install(oldProject()));
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(result.projectPath, projectFolder() + "/其他.yslib");
}

void ProjectApplyTest::warningsDoNotCount() {
    FileTree package = newProject();
    package["demo.yslib"].replace(
        R"("tasks": {)",
        R"("tasks": {"subs": [{"entryScriptId": "main", "writesGlobals": ["bad"]}], )");
    support::writeTree(projectFolder(), package);
    const QVector<ProjectIssue> issues = validateProjectFile(projectFolder() + "/demo.yslib");
    QVERIFY(!issues.isEmpty());
    for (const ProjectIssue &issue : issues)
        QCOMPARE(issue.severity, 1);
    const ApplyResult result = apply(Offer(package), install(oldProject()));
    QVERIFY2(result.success, qPrintable(result.message));
}

void ProjectApplyTest::aMissingProjectFolderIsMade() {
    const QString project = projectFolder() + "/demo.yslib";
    const ApplyResult result = apply(Offer(newProject()), project);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(result.projectPath, project);
}

void ProjectApplyTest::aPathBelowAnotherInstallationIsMapped() {
    const QString project = install(oldProject());
    const ApplyResult result = apply(Offer(newProject()), "/gone/USER/projects/line/demo.yslib");
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(result.projectPath, project);
}

void ProjectApplyTest::aFolderOfAnOddNameIsReplaced_data() {
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"产线 三", "it's", "-rf", "100%1 %2", "a;b$c`d & e", "line.apply_backup", "logs"})
        QTest::newRow(name) << QString(name);
    if (!support::onWindows) // no name there
        QTest::newRow("in quotes") << QString("\"<north>\"");
}

void ProjectApplyTest::aFolderOfAnOddNameIsReplaced() {
    QFETCH(QString, name);
    const QString folder = AppPaths::projectsDirectory() + '/' + name;
    support::writeTree(folder, oldProject());
    const ApplyResult result = apply(Offer(newProject()), folder + "/demo.yslib");
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(result.projectPath, folder + "/demo.yslib");
    QVERIFY2(result.message.contains(". Backup: " + AppPaths::updateBackupDirectory() + '/' + name +
                                     '_'),
             qPrintable(result.message));
    QCOMPARE(withoutProjectFile(support::readTree(folder)), replacedProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::aFolderThatIsALinkIsReplacedAndWhatItLedToStays() {
    QTemporaryDir elsewhere;
    support::writeTree(elsewhere.path(), oldProject());
    if (!support::makeLink(elsewhere.path(), projectFolder()))
        QSKIP("no links here: Wine makes none");
    const ApplyResult result = apply(Offer(newProject()), projectFolder() + "/demo.yslib");
    QVERIFY2(result.success, qPrintable(result.message));
    QVERIFY(!QFileInfo(projectFolder()).isSymLink());
    QCOMPARE(withoutProjectFile(support::readTree(projectFolder())), replacedProject());
    QCOMPARE(support::readTree(elsewhere.path()), oldProject());
}

// As an editor or the runtime would: it keeps what it opened, and the project is replaced.
void ProjectApplyTest::aProjectFileHeldOpenByAnotherProcessIsReplaced() {
    if (support::onWindows)
        QSKIP("Windows lets nobody remove a file that is open: see the next test");
    const QString project = install(oldProject());
    const QByteArray before = oldProject().value("demo.yslib");
    QProcess holder;
    holder.start("/bin/sh", {"-c", R"(exec 3<"$1"; echo open; read go; cat <&3)", "sh", project});
    QVERIFY(holder.waitForReadyRead());
    QCOMPARE(holder.readAll(), QByteArray("open\n"));
    const ApplyResult result = apply(Offer(newProject()), project);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(withoutProjectFile(support::readTree(projectFolder())), replacedProject());
    holder.write("go\n");
    QVERIFY(holder.waitForFinished());
    QCOMPARE(holder.readAll(), before);
}

void ProjectApplyTest::onWindowsAFileHeldOpenKeepsTheProjectFromBeingReplaced() {
    if (!support::onWindows)
        QSKIP("a file that is open can be removed here");
    QFile held(install(oldProject()));
    QVERIFY(held.open(QIODevice::ReadOnly));
    const ApplyResult result = apply(Offer(newProject()), held.fileName());
    QCOMPARE(result.message,
             "Replace failed, rolled back: unable to remove directory: " + projectFolder());
    QCOMPARE(result.errorClass, QString());
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::hiddenFilesOfTheOldProjectGo() {
    FileTree old = oldProject();
    old.insert(".hidden", "x");
    const QString project = install(old);
    support::hide(projectFolder() + "/.hidden");
    const ApplyResult result = apply(Offer(newProject()), project);
    QVERIFY2(result.success, qPrintable(result.message));
    QVERIFY(!QFileInfo::exists(projectFolder() + "/.hidden"));
}

// --- Failure before the swap: the project is untouched --------------------------------------

void ProjectApplyTest::aStepFails_data() {
    QTest::addColumn<QByteArray>("zip");
    QTest::addColumn<QJsonObject>("record"); // laid over the right one
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("errorClass");
    const QByteArray good = support::zipOf(newProject());
    QTest::newRow("without a package name")
        << good << QJsonObject{{"zipUrl", ""}} << "Unable to resolve update zip: zipUrl is empty"
        << "network";
    QTest::newRow("with a package name that is no text")
        << good << QJsonObject{{"zipUrl", 7}} << "Unable to resolve update zip: zipUrl is empty"
        << "network";
    QTest::newRow("the package is not on the stick")
        << good << QJsonObject{{"zipUrl", "no.zip"}}
        << "Unable to resolve update zip: update zip not found: STICK/no.zip"
        << "network";
    QTest::newRow("the package is a folder of the stick")
        << good << QJsonObject{{"zipUrl", "包"}}
        << "Unable to resolve update zip: update zip not found: STICK/包"
        << "network";
    QTest::newRow("a package name that holds the word cancelled counts as a cancel")
        << good << QJsonObject{{"zipUrl", "Cancelled.zip"}}
        << "Unable to resolve update zip: update zip not found: STICK/Cancelled.zip"
        << "cancelled";
    QTest::newRow("without a hash")
        << good << QJsonObject{{"zipSha256", ""}} << "zipSha256 is required in manifest."
        << "verify";
    QTest::newRow("with a blank hash")
        << good << QJsonObject{{"zipSha256", " \t"}} << "zipSha256 is required in manifest."
        << "verify";
    QTest::newRow("with another hash: nothing is unpacked")
        << good << QJsonObject{{"zipSha256", " 00 "}}
        << QString("Update zip hash failed: SHA256 mismatch for STICK/包/line.zip "
                   "(expected 00, got %1)")
               .arg(update_offer::sha256(good))
        << "hash";
    QTest::newRow("an entry leads out of the folder")
        << oneEntry("../x") << QJsonObject() << "Extract failed: unsafe zip entry: ../x"
        << "";
    QTest::newRow("no project file in the package")
        << oneEntry("x/readme.txt") << QJsonObject() << "No yslib found in extracted package."
        << "";
    QTest::newRow("the project is broken")
        << oneEntry("demo.yslib") << QJsonObject()
        << "Apply validator failed:\n[Error] yslib: JSON 无效：illegal value"
        << "";
}

void ProjectApplyTest::aStepFails() {
    QFETCH(QByteArray, zip);
    QFETCH(QJsonObject, record);
    QFETCH(QString, message);
    QFETCH(QString, errorClass);
    const QString project = install(oldProject());
    Offer offer(zip);
    for (const QString &key : record.keys())
        offer.with(key, record.value(key));
    const ApplyResult result = apply(offer, project);
    QVERIFY(!result.success);
    QCOMPARE(result.message, message.replace("STICK", offer.place.path()));
    QCOMPARE(result.errorClass, errorClass);
    QCOMPARE(result.projectPath, QString());
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::somethingThatIsNoZipIsRefused() {
    const QString project = install(oldProject());
    const ApplyResult result = apply(Offer(QByteArray("no zip at all")), project);
    QVERIFY2(result.message.startsWith("Extract failed: "), qPrintable(result.message));
    QVERIFY(result.message.size() > int(qstrlen("Extract failed: ")));
    QCOMPARE(result.errorClass, QString());
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::allErrorsOfTheProjectAreToldAndNoWarning() {
    FileTree package = newProject();
    package.insert("demo.yslib",
                   R"({"schemaVersion": 1, "project": {"name": "", "createdAt": ""},
                           "scripts": [{"id": "main", "path": "no.ys", "role": "main"}],
                           "tasks": {"main": {"entryScriptId": "gone"}}})");
    const ApplyResult result = apply(Offer(package), install(oldProject()));
    const QStringList lines = result.message.split('\n');
    QCOMPARE(lines.first(), QString("Apply validator failed:"));
    QVERIFY2(lines.size() > 2, qPrintable(result.message));
    for (const QString &line : lines.mid(1))
        QVERIFY2(line.startsWith("[Error] "), qPrintable(line));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
}

void ProjectApplyTest::withoutAManifest() {
    Offer offer(newProject());
    offer.snapshot.manifestText.clear();
    const ApplyResult result = apply(offer, install(oldProject()));
    QCOMPARE(result.message, QString("No cached manifest for apply."));
    QCOMPARE(result.errorClass, QString("verify"));
}

void ProjectApplyTest::theManifestIsProvedAgain() {
    Offer offer(newProject());
    offer.snapshot.manifestText.replace("line.zip", "evil.zip");
    const QString why = verifyManifest(offer.snapshot.manifestText).message;
    const ApplyResult result = apply(offer, install(oldProject()));
    QVERIFY(why.startsWith("RSA signature verification failed ("));
    QCOMPARE(result.message, "Apply pre-check signature failed: " + why);
    QCOMPARE(result.errorClass, QString("verify"));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
}

void ProjectApplyTest::theKeyIsGone() {
    const Offer offer(newProject());
    QVERIFY(QFile::remove(AppPaths::updatePublicKeyPath()));
    const ApplyResult result = apply(offer, install(oldProject()));
    QVERIFY(result.message.startsWith(
        "Apply pre-check signature failed: update public key not found: "));
    QCOMPARE(result.errorClass, QString("verify"));
}

void ProjectApplyTest::ofTwoFaultsTheEarlierStepIsTold_data() {
    using Fault = std::function<void(Offer &)>;
    QTest::addColumn<QList<Fault>>("faults");
    QTest::addColumn<QString>("message"); // begins so
    const Fault noManifest = [](Offer &offer) { offer.snapshot.manifestText.clear(); };
    const Fault badSignature = [](Offer &offer) {
        offer.snapshot.manifestText.replace("line", "evil");
    };
    const Fault noPackage = [](Offer &offer) { QFile::remove(offer.zipPath()); };
    const Fault noHash = [](Offer &offer) { offer.with("zipSha256", ""); };
    const Fault wrongHash = [](Offer &offer) { offer.with("zipSha256", "00"); };
    const Fault notOurTurn = [](Offer &) { QVERIFY(otherLauncher().lock()); };
    const Fault nowhereToUnpack = [](Offer &) {
        const QString temp = QDir::cleanPath(AppPaths::updateTempPath(""));
        QVERIFY(QDir(temp).removeRecursively() && installation::write(temp, "in the way"));
    };
    const auto package = [](const QByteArray &zip) -> Fault {
        return [zip](Offer &offer) {
            QVERIFY(QFile::remove(offer.zipPath()));
            support::writeTree(offer.place.path(), {{"包/line.zip", zip}});
            offer.with("zipSha256", update_offer::sha256(zip));
        };
    };
    const Fault unsafe = package(support::makeZip({{"demo.yslib", ""}, {"../x", ""}}));
    const Fault noProject = package(oneEntry("x/readme.txt"));
    const Fault broken = package(oneEntry("demo.yslib"));
    const Fault noBackup = [](Offer &) {
        QVERIFY(QDir().rmdir(AppPaths::updateBackupDirectory()) &&
                installation::write(AppPaths::updateBackupDirectory(), "in the way"));
    };
    const auto row = [](const char *name, const QList<Fault> &faults, const char *message) {
        QTest::newRow(name) << faults << QString(message);
    };
    row("no manifest, and no package", {noManifest, noPackage}, "No cached manifest");
    row("a wrong signature, and no package", {noPackage, badSignature}, "Apply pre-check");
    row("no package, and no hash", {noHash, noPackage}, "Unable to resolve update zip: ");
    row("no hash, and another launcher", {noHash, notOurTurn}, "zipSha256 is required");
    row("a wrong hash, and another launcher", {wrongHash, notOurTurn}, "Update zip hash");
    row("a wrong hash, and nowhere to unpack", {wrongHash, nowhereToUnpack}, "Update zip hash");
    row("another launcher, and an unsafe package", {unsafe, notOurTurn}, "another launcher");
    row("nowhere to unpack, and an unsafe package", {unsafe, nowhereToUnpack},
        "Extract failed: unable to create destination directory: ");
    row("an unsafe package of a broken project", {unsafe}, "Extract failed: unsafe zip entry");
    row("no project, and no place for the backup", {noProject, noBackup}, "No yslib found");
    row("a broken project, and no place for the backup", {broken, noBackup}, "Apply validator");
}

void ProjectApplyTest::ofTwoFaultsTheEarlierStepIsTold() {
    QFETCH(QList<std::function<void(Offer &)>>, faults);
    QFETCH(QString, message);
    const QString project = install(oldProject());
    Offer offer(newProject());
    for (const auto &fault : faults)
        fault(offer);
    const ApplyResult result = apply(offer, project);
    otherLauncher().unlock();
    for (const QString &folder :
         {QDir::cleanPath(AppPaths::updateTempPath("")), AppPaths::updateBackupDirectory()}) {
        if (QFileInfo(folder).isFile())
            QVERIFY(QFile::remove(folder));
    }
    QVERIFY2(result.message.startsWith(message), qPrintable(result.message));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
}

// --- Two launchers on one data folder -------------------------------------------------------

// Its folders, of the same second perhaps, and the project are left to it.
void ProjectApplyTest::anotherLauncherIsAtIt() {
    const QString project = install(oldProject());
    support::writeTree(AppPaths::updateTempPath("apply_other"), {{"demo.yslib", "{}"}});
    QLockFile other(AppPaths::updateTempPath("apply.lock"));
    QVERIFY(other.lock());
    const ApplyResult result = apply(Offer(newProject()), project);
    QVERIFY(!result.success);
    QCOMPARE(result.message, QString("another launcher is applying an update"));
    QCOMPARE(result.errorClass, QString());
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList({"apply.lock", "apply_other"}));
    other.unlock();
    QVERIFY(apply(Offer(newProject()), project).success);
}

void ProjectApplyTest::anotherLauncherIsWaitedForFor120Seconds() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    QVERIFY(otherLauncher().lock());
    QHash<QString, int> waits; // milliseconds -> how often
    const file_events::Watch clock([&waits](file_events::Kind kind, const QString &time) {
        return kind == file_events::Kind::Wait ? ++waits[time] : 0;
    });
    const ApplyResult result = applyProjectUpdate(Offer(newProject()).snapshot, project, nullptr);
    otherLauncher().unlock();
    QCOMPARE(result.message, QString("another launcher is applying an update"));
    QCOMPARE(result.errorClass, QString());
    QCOMPARE(waits, (QHash<QString, int>{{"100", 1200}}));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::anApplyGoesOnWhenTheOtherLauncherIsDone() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    QVERIFY(otherLauncher().lock());
    int waits = 0;
    const file_events::Watch clock([&waits](file_events::Kind kind, const QString &) {
        if (kind == file_events::Kind::Wait && ++waits == 1200)
            otherLauncher().unlock();
        return kind == file_events::Kind::Wait ? 1 : 0;
    });
    const ApplyResult result = applyProjectUpdate(Offer(newProject()).snapshot, project, nullptr);
    QCOMPARE(timeless(result.message), successText("2.0.0"));
    QCOMPARE(waits, 1200);
    QCOMPARE(withoutProjectFile(support::readTree(projectFolder())), replacedProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::aCancelEndsTheWaitForAnotherLauncher() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    QVERIFY(otherLauncher().lock());
    CancelFlag flag{0};
    int waits = 0;
    const file_events::Watch user([&](file_events::Kind kind, const QString &) {
        if (kind == file_events::Kind::Wait && ++waits == 3)
            flag = 1;
        return kind == file_events::Kind::Wait ? 1 : 0;
    });
    const ApplyResult result = applyProjectUpdate(Offer(newProject()).snapshot, project, &flag);
    otherLauncher().unlock();
    QCOMPARE(result.message, QString("cancelled"));
    QCOMPARE(result.errorClass, QString("cancelled"));
    QCOMPARE(waits, 3);
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::whatAKilledLauncherLeftDoesNotStopTheNext_data() {
    QTest::addColumn<bool>("locks");
    QTest::newRow("where the file system knows locks") << true;
    if (file_events::areSeen())
        QTest::newRow("where it knows none") << false;
}

void ProjectApplyTest::whatAKilledLauncherLeftDoesNotStopTheNext() {
    QFETCH(bool, locks);
    const QString project = install(oldProject());
    QVERIFY(installation::write(AppPaths::updateTempPath("apply.lock"), ""));
    const file_events::Watch fileSystem([locks](file_events::Kind kind, const QString &) {
        const bool isWait = kind == file_events::Kind::Wait;
        return isWait || (!locks && kind == file_events::Kind::Lock) ? ENOLCK : 0;
    });
    const ApplyResult result = applyProjectUpdate(Offer(newProject()).snapshot, project, nullptr);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(leftovers(), QStringList());
}

// --- The package of a stick -------------------------------------------------------------------

void ProjectApplyTest::aPackageThatIsExchangedIsNotApplied_data() {
    using file_events::Kind;
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("file"); // on the stick, of the copy or what is unpacked
    QTest::addColumn<int>("time");     // of such an operation on such a file
    QTest::addColumn<Exchange>("how");
    QTest::addColumn<bool>("isTold");
    const auto rows = [](const char *when, Kind kind, const char *file, int time,
                         bool inPlaceIsTold, bool anotherIsTold) {
        QTest::addRow("%s, in place", when)
            << kind << QString(file) << time << Exchange::InPlace << inPlaceIsTold;
        QTest::addRow("%s, by another file", when)
            << kind << QString(file) << time << Exchange::ByAnotherFile << anotherIsTold;
    };
    rows("before it is copied", Kind::Read, "/line.zip", 1, true, true);
    rows("while it is copied", Kind::Write, "/line.zip", 1, true, false);
    rows("before its hash", Kind::Read, "/line.zip", 2, false, false);
    rows("before it is unpacked", Kind::Read, "/line.zip", 3, false, false);
    rows("while it is unpacked", Kind::Write, "/main.ys", 1, false, false);
}

void ProjectApplyTest::aPackageThatIsExchangedIsNotApplied() {
    QFETCH(file_events::Kind, kind);
    QFETCH(QString, file);
    QFETCH(int, time);
    QFETCH(Exchange, how);
    QFETCH(bool, isTold);
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    const Offer offer(newProject());
    int times = 0;
    const file_events::Watch thief([&](file_events::Kind seen, const QString &path) {
        if (seen == kind && path.endsWith(file) && ++times == time)
            exchangePackage(offer, how);
        return 0;
    });
    const ApplyResult result = apply(offer, project);
    QVERIFY(times >= time);
    const QString mismatch =
        QString("Update zip hash failed: SHA256 mismatch for %1 (expected %2, "
                "got %3)")
            .arg(offer.zipPath(), offer.snapshot.projectEntry["zipSha256"].toString(),
                 update_offer::sha256(exchanged()));
    QCOMPARE(timeless(result.message), isTold ? mismatch : successText("2.0.0"));
    QCOMPARE(result.errorClass, QString(isTold ? "hash" : ""));
    QCOMPARE(withoutProjectFile(support::readTree(projectFolder())),
             isTold ? withoutProjectFile(oldProject()) : replacedProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::aStickIsReadOnceAndItsPackageLiesInPrivateMeanwhile() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    const Offer offer(newProject());
    int onStick = 0;
    QVector<int> rights; // to the copy's folder, at each reading of the copy
    const file_events::Watch reader([&](file_events::Kind kind, const QString &path) {
        if (kind != file_events::Kind::Read || !path.endsWith("/line.zip"))
            return 0;
        onStick += path == offer.zipPath();
        if (isCopy(path))
            rights.append(int(QFile::permissions(QFileInfo(path).path())));
        return 0;
    });
    const ApplyResult result = apply(offer, project);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(onStick, 1);
    QVERIFY(rights.size() >= 2); // for its hash, and to be unpacked
    for (const int of : rights)
        QCOMPARE(of & 0x7077, int(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(update_offer::sha256(support::readTree(offer.place.path())["包/line.zip"]),
             offer.snapshot.projectEntry["zipSha256"].toString());
}

void ProjectApplyTest::aPackageThatCannotBeCopied_data() {
    QTest::addColumn<QRegularExpression>("write"); // the path that nothing can be written to
    QTest::addColumn<QString>("hash");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("errorClass");
    const QRegularExpression copy("/package_[0-9a-f]+/line\\.zip$");
    const QRegularExpression lock("/package_[0-9a-f]+\\.lock$");
    const QString good = update_offer::sha256(support::zipOf(newProject()));
    const QString untold = "Extract failed: unable to copy file: STICK";
    QTest::newRow("the disk is full") << copy << good << untold << "";
    QTest::newRow("no lock can be written") << lock << good << untold << "";
    QTest::newRow("the disk is full, and the hash is wrong")
        << copy << "00"
        << "Update zip hash failed: SHA256 mismatch for STICK (expected 00, got " + good + ")"
        << "hash";
}

void ProjectApplyTest::aPackageThatCannotBeCopied() {
    QFETCH(QRegularExpression, write);
    QFETCH(QString, hash);
    QFETCH(QString, message);
    QFETCH(QString, errorClass);
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    Offer offer(newProject());
    offer.with("zipSha256", hash);
    const file_events::Watch fullDisk([&write](file_events::Kind kind, const QString &path) {
        return kind == file_events::Kind::Write && path.contains(write) ? ENOSPC : 0;
    });
    const ApplyResult result = apply(offer, project);
    QCOMPARE(result.message, message.replace("STICK", offer.zipPath()));
    QCOMPARE(result.errorClass, errorClass);
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::aDamagedPackageIsToldByTheSticksPath() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    const Offer offer(newProject());
    int reads = 0;
    const file_events::Watch thief([&](file_events::Kind kind, const QString &path) {
        if (kind == file_events::Kind::Read && isCopy(path) && ++reads == 1)
            return 0; // the hash
        return kind == file_events::Kind::Read && isCopy(path) ? EIO : 0;
    });
    const ApplyResult result = apply(offer, project);
    QVERIFY2(result.message.startsWith("Extract failed: "), qPrintable(result.message));
    QVERIFY2(!result.message.contains("package_"), qPrintable(result.message));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::aCopyThatAKilledLauncherLeftIsRemoved_data() {
    QTest::addColumn<bool>("online");
    QTest::newRow("by an update from a stick") << false;
    QTest::newRow("by one from the network") << true;
}

void ProjectApplyTest::aCopyThatAKilledLauncherLeftIsRemoved() {
    QFETCH(bool, online);
    const QString project = install(oldProject());
    support::writeTree(AppPaths::updateTempPath(""),
                       {{"package_1f/line.zip", "left"},
                        {"package_1f.lock", ""},
                        {"package_2e/line.zip", "left without a lock"},
                        {"package_3d.lock", ""},
                        {"package_4c/line.zip", "of one at work"},
                        {"package_mine/notes.txt", "of somebody"}});
    QLockFile atWork(AppPaths::updateTempPath("package_4c.lock"));
    QVERIFY(atWork.lock());
    support::ScriptedServer server;
    server.on("/p/line.zip", support::answer(200, support::zipOf(newProject())));
    Offer offer(newProject());
    if (online)
        offer.putOnline(server.url("/p/").toString(), "line.zip");
    const ApplyResult result = apply(offer, project);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(leftovers(), QStringList({"package_4c", "package_4c.lock", "package_mine"}));
    QCOMPARE(support::readTree(AppPaths::updateTempPath("package_4c")),
             FileTree({{"line.zip", "of one at work"}}));
}

void ProjectApplyTest::aCancelWhileThePackageIsCopied_data() {
    QTest::addColumn<QString>("hash");
    QTest::newRow("of a package that fits") << update_offer::sha256(support::zipOf(newProject()));
    QTest::newRow("whose hash is not told any more") << "00";
}

void ProjectApplyTest::aCancelWhileThePackageIsCopied() {
    QFETCH(QString, hash);
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    Offer offer(newProject());
    offer.with("zipSha256", hash);
    CancelFlag flag{0};
    QStringList readAfterwards;
    const file_events::Watch user([&](file_events::Kind kind, const QString &path) {
        if (kind == file_events::Kind::Write && isCopy(path))
            flag = 1;
        else if (kind == file_events::Kind::Read && flag != 0 && path.endsWith("/line.zip"))
            readAfterwards.append(path);
        return 0;
    });
    const ApplyResult result = apply(offer, project, &flag);
    QCOMPARE(flag.load(), 1);
    QCOMPARE(result.message, QString("cancelled"));
    QCOMPARE(result.errorClass, QString("cancelled"));
    QCOMPARE(readAfterwards, QStringList());
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

// --- Cancel ---------------------------------------------------------------------------------

// Each at a file that the step uses, of a package that the next step would refuse.
void ProjectApplyTest::aCancel_data() {
    using file_events::Kind;
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("zip");
    QTest::addColumn<QString>("message");
    const QByteArray good = support::zipOf(newProject());
    QTest::newRow("while the signature is checked")
        << Kind::Read << "/config/update.pub" << good << "Unable to resolve update zip: cancelled";
    QTest::newRow("while the hash is checked")
        << Kind::Read << "/line.zip" << QByteArray("no zip at all") << "cancelled";
    QTest::newRow("while it unpacks")
        << Kind::Write << "/readme.txt" << oneEntry("readme.txt") << "cancelled";
    QTest::newRow("while the project is validated")
        << Kind::Read << "/demo.yslib" << good << "cancelled";
    QTest::newRow("at the last point, before the swap")
        << Kind::Look << "/line/demo.yslib" << good << "cancelled";
}

void ProjectApplyTest::aCancel() {
    QFETCH(file_events::Kind, kind);
    QFETCH(QString, file);
    QFETCH(QByteArray, zip);
    QFETCH(QString, message);
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    const Offer offer(zip);
    CancelFlag flag{0};
    const file_events::Watch user(atFirst(kind, file, [&flag] { flag = 1; }));
    const ApplyResult result = apply(offer, project, &flag);
    QVERIFY(!result.success);
    QCOMPARE(result.message, message);
    QCOMPARE(result.errorClass, QString("cancelled"));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

// Not even the manifest is asked for.
void ProjectApplyTest::aCancelBeforeTheStart() {
    const QString project = install(oldProject());
    Offer offer(newProject());
    offer.snapshot.manifestText.clear();
    CancelFlag flag{1};
    const ApplyResult result = apply(offer, project, &flag);
    QCOMPARE(result.message, QString("cancelled"));
    QCOMPARE(result.errorClass, QString("cancelled"));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::aCancelAfterTheLastPointIsNotSeen() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    CancelFlag flag{0};
    const QString project = install(oldProject());
    const file_events::Watch user([&flag](file_events::Kind kind, const QString &path) {
        if (kind == file_events::Kind::Write && path.startsWith(AppPaths::updateBackupDirectory()))
            flag = 1;
        return 0;
    });
    const ApplyResult result = apply(Offer(newProject()), project, &flag);
    QCOMPARE(flag.load(), 1);
    QVERIFY(result.success);
    QCOMPARE(withoutProjectFile(support::readTree(projectFolder())), replacedProject());
}

void ProjectApplyTest::aCancelDuringTheDownload() {
    const QString project = install(oldProject());
    support::ScriptedServer server;
    server.on("/p/line.zip", {support::stall()});
    Offer offer(newProject());
    offer.putOnline(server.url("/p/").toString(), "line.zip");
    CancelFlag flag{0};
    std::thread user([&] {
        while (server.paths().isEmpty())
            std::this_thread::yield();
        flag = 1;
    });
    const ApplyResult result = apply(offer, project, &flag);
    user.join();
    QCOMPARE(result.message, QString("Unable to resolve update zip: cancelled"));
    QCOMPARE(result.errorClass, QString("cancelled"));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
}

// --- Online ---------------------------------------------------------------------------------

void ProjectApplyTest::thePackageIsDownloaded_data() {
    QTest::addColumn<QString>("zipUrl");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QString>("inCache");
    QTest::newRow("a name") << "line.zip" << QByteArray("/p/line.zip") << "line.zip";
    QTest::newRow("a path") << "a/b/line.zip" << QByteArray("/p/a/b/line.zip") << "line.zip";
    QTest::newRow("a whole address")
        << "BASE/other/line.zip" << QByteArray("/other/line.zip") << "line.zip";
    QTest::newRow("with a query, which is part of the cached name")
        << "line.zip?v=2" << QByteArray("/p/line.zip?v=2") << "line.zip?v=2";
}

void ProjectApplyTest::thePackageIsDownloaded() {
    QFETCH(QString, zipUrl);
    QFETCH(QByteArray, request);
    QFETCH(QString, inCache);
    const QString project = install(oldProject());
    const QByteArray zip = support::zipOf(newProject());
    support::ScriptedServer server;
    server.on(request, support::answer(200, zip));
    const QString cached = AppPaths::updateCacheDirectory() + '/' + inCache;
    // What lies there is overwritten, never reused.
    const bool canBe = installation::write(cached, "stale");
    Offer offer(zip);
    zipUrl.replace("BASE", server.url("").toString());
    offer.putOnline(server.url("/p/").toString(), zipUrl);
    const ApplyResult result = apply(offer, project);
    if (support::onWindows && !canBe) { // no file has a question mark in its name there
        QVERIFY(inCache.contains('?'));
        QVERIFY2(result.message.startsWith("Unable to resolve update zip: "),
                 qPrintable(result.message));
        QCOMPARE(result.errorClass, QString("network"));
        return;
    }
    QVERIFY(canBe);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(server.paths(), QStringList(QString::fromLatin1(request)));
    QCOMPARE(update_offer::sha256(support::readTree(AppPaths::updateCacheDirectory())[inCache]),
             update_offer::sha256(zip));
}

void ProjectApplyTest::aPackageWithoutAFileOfItsOwnIsMissing_data() {
    QTest::addColumn<QString>("zipUrl");
    QTest::addColumn<QString>("path");
    QTest::newRow("an address that ends in a slash") << "pkg/"
                                                     << "";
    QTest::newRow("this folder") << "pkg/."
                                 << "/.";
    QTest::newRow("the folder above") << "https://h/pkg/.."
                                      << "/..";
    QTest::newRow("a folder in the cache") << "pkg/folder"
                                           << "/folder";
}

void ProjectApplyTest::aPackageWithoutAFileOfItsOwnIsMissing() {
    QFETCH(QString, zipUrl);
    QFETCH(QString, path);
    QVERIFY(QDir(AppPaths::updateCacheDirectory()).mkpath("folder"));
    const support::ScriptedServer server;
    Offer offer(newProject());
    offer.putOnline(server.url("/p/").toString(), zipUrl);
    const ApplyResult result = apply(offer, install(oldProject()));
    QCOMPARE(result.message, "Unable to resolve update zip: update zip not found: " +
                                 AppPaths::updateCacheDirectory() + path);
    QCOMPARE(result.errorClass, QString("network"));
    QCOMPARE(server.paths(), QStringList());
    QCOMPARE(support::readTree(projectFolder()), oldProject());
}

// By its name, whether there is a cache yet or not.
void ProjectApplyTest::aPackageThatIsNamedAsAFolderIsNotFetched() {
    const support::ScriptedServer server;
    for (const QString &name : QStringList{"/.", "/.."}) {
        QVERIFY(QDir(AppPaths::updateCacheDirectory()).removeRecursively());
        Offer offer(newProject());
        offer.putOnline(server.url("/p/").toString(), "pkg" + name);
        const ApplyResult result = apply(offer, install(oldProject()));
        QCOMPARE(result.message, "Unable to resolve update zip: update zip not found: " +
                                     AppPaths::updateCacheDirectory() + name);
    }
    QCOMPARE(server.paths(), QStringList());
}

void ProjectApplyTest::theServerHasNoPackage() {
    const QString project = install(oldProject());
    const support::ScriptedServer server;
    Offer offer(newProject());
    offer.putOnline(server.url("/p/").toString(), "line.zip");
    const ApplyResult result = apply(offer, project);
    QVERIFY2(result.message.startsWith("Unable to resolve update zip: ") &&
                 result.message.contains(" (HTTP 404) URL: "),
             qPrintable(result.message));
    QCOMPARE(result.errorClass, QString("network"));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(entriesOf(AppPaths::updateCacheDirectory()), QStringList());
}

void ProjectApplyTest::aDownloadWithAnotherHashStaysInTheCache() {
    const QString project = install(oldProject());
    support::ScriptedServer server;
    server.on("/p/line.zip", support::answer(200, "damaged"));
    Offer offer(newProject());
    offer.putOnline(server.url("/p/").toString(), "line.zip");
    const ApplyResult result = apply(offer, project);
    QVERIFY(result.message.startsWith("Update zip hash failed: SHA256 mismatch for "));
    QCOMPARE(result.errorClass, QString("hash"));
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(entriesOf(AppPaths::updateCacheDirectory()), QStringList("line.zip"));
}

// --- Failure of the swap ----------------------------------------------------------------------

void ProjectApplyTest::theBackupCannotBegin() {
    const QString project = install(oldProject());
    QVERIFY(QDir().rmdir(AppPaths::updateBackupDirectory()));
    QVERIFY(installation::write(AppPaths::updateBackupDirectory(), "in the way"));
    const ApplyResult result = apply(Offer(newProject()), project);
    QFile::remove(AppPaths::updateBackupDirectory());
    QCOMPARE(timeless(result.message),
             "Replace failed, rolled back: unable to create destination directory: " +
                 AppPaths::updateBackupDirectory() + "/line_TIME");
    QCOMPARE(result.errorClass, QString());
    QCOMPARE(support::readTree(projectFolder()), oldProject());
    QCOMPARE(entriesOf(AppPaths::updateTempPath("")), QStringList());
}

// The disk is full during the backup: what was copied takes the project's place. It is told so
// in the support page, and must not change unnoticed.
void ProjectApplyTest::aPartialBackupReplacesTheProject() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const FileTree old{{"demo.yslib", update_offer::projectText("1.0")}, {"main.ys", ""}};
    const QString project = install(old);
    QStringList names; // in the order of the copies
    const file_events::Watch fullDisk([&names](file_events::Kind kind, const QString &path) {
        if (kind != file_events::Kind::Write || !path.startsWith(AppPaths::updateBackupDirectory()))
            return 0;
        names.append(QFileInfo(path).fileName());
        return names.size() == 1 ? 0 : ENOSPC;
    });
    const ApplyResult result = apply(Offer(newProject()), project);
    QCOMPARE(result.message, "Replace failed, rolled back: unable to copy file: " +
                                 projectFolder() + '/' + names.value(1));
    QCOMPARE(result.errorClass, QString());
    QCOMPARE(support::readTree(projectFolder()),
             FileTree({{names.first(), old.value(names.first())}}));
    QCOMPARE(leftovers(), QStringList());
}

// Says that it rolled back although nothing remains to roll back to.
void ProjectApplyTest::theProjectFileIsGoneAfterTheSwap() {
    if (!file_events::areSeen())
        QSKIP(qPrintable(unseen()));
    const QString project = install(oldProject());
    const file_events::Watch thief(atTheEndOfTheSwap([&project] { QFile::remove(project); }));
    const ApplyResult result = apply(Offer(newProject()), project);
    QVERIFY(!result.success);
    QCOMPARE(result.message, QString("No yslib after replace, rolled back."));
    QCOMPARE(result.errorClass, QString());
    QVERIFY(QFileInfo::exists(projectFolder() + "/new/页.ys"));
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::withoutAProjectPathNothingIsReplaced() {
    const QString before = QDir::currentPath();
    QTemporaryDir here;
    support::writeTree(here.path(), {{"kept", "kept"}});
    QVERIFY(QDir::setCurrent(here.path()));
    const ApplyResult result = apply(Offer(newProject()), QString());
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(result.message, QString("Replace failed, rolled back: unable to remove directory: "));
    QCOMPARE(support::readTree(here.path()), FileTree({{"kept", "kept"}}));
    QCOMPARE(leftovers(), QStringList());
}

void ProjectApplyTest::aLogsThatIsAFileFails() {
    FileTree old = update_offer::project("1.0");
    old.insert("logs", "a file");
    const ApplyResult result = apply(Offer(newProject()), install(old));
    QCOMPARE(result.message, "Replace failed, rolled back: source directory not found: " +
                                 projectFolder() + "/logs");
    QCOMPARE(support::readTree(projectFolder()), old);
    QCOMPARE(leftovers(), QStringList());
}

// --- The parts --------------------------------------------------------------------------------

void ProjectApplyTest::findProjectFile_data() {
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("found");
    QTest::newRow("none") << QStringList{"a.txt", "b/yslib"} << "";
    QTest::newRow("an empty folder") << QStringList() << "";
    QTest::newRow("the one that bears the folder's name")
        << QStringList{"a.yslib", "folder.yslib", "z.yslib"} << "folder.yslib";
    QTest::newRow("another name") << QStringList{"a.txt", "b.yslib"} << "b.yslib";
    QTest::newRow("deeper") << QStringList{"a.txt", "b/c/d.yslib"} << "b/c/d.yslib";
    QTest::newRow("the folder's name deeper does not count first") << QStringList{"x.yslib/"
                                                                                  "y.txt",
                                                                                  "b/folder.yslib"}
                                                                   << "b/folder.yslib";
    QTest::newRow("a folder that bears the folder's name is taken for it")
        << QStringList{"folder.yslib/x.txt", "b.yslib"} << "folder.yslib";
    QTest::newRow("a folder of another name is not")
        << QStringList{"a.yslib/x.txt", "c/b.yslib"} << "c/b.yslib";
}

void ProjectApplyTest::findProjectFile() {
    QFETCH(QStringList, files);
    QFETCH(QString, found);
    QTemporaryDir place;
    const QString folder = place.filePath("folder");
    QVERIFY(QDir().mkpath(folder));
    for (const QString &file : files)
        support::writeTree(folder, {{file, "x"}});
    for (const QString &spelled : {folder, folder + '/'}) {
        const QString path = ::findProjectFile(spelled);
        QCOMPARE(path.isEmpty() ? path : QDir(folder).relativeFilePath(path), found);
    }
}

void ProjectApplyTest::resolveUpdateZipNeedsNoPlaceForTheError() {
    Offer offer(newProject());
    QString zip;
    QVERIFY(resolveUpdateZip(offer.snapshot, &zip));
    QCOMPARE(zip, offer.zipPath());
    QVERIFY(!resolveUpdateZip(offer.with("zipUrl", "no.zip").snapshot, &zip));
    QVERIFY(!resolveUpdateZip(offer.with("zipUrl", "").snapshot, &zip));
    const CancelFlag raised{1};
    QString error;
    QVERIFY(!resolveUpdateZip(offer.snapshot, &zip, &error, &raised));
    QCOMPARE(error, QString("cancelled"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectApplyTest)
#include "project_apply_test.moc"
