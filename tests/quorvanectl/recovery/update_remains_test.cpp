// What is made of the folders that an update has left: which of them count, and the verdict.
#include "quorvanectl/recovery/update_remains.h"

#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using ctl::Recovery;
using ctl::UpdateRemains;
using support::FileTree;
Q_DECLARE_METATYPE(Recovery)

namespace {

QByteArray projectFile(const QByteArray &version) {
    return R"({"schemaVersion": 1, "project": {"name": "line", "displayName": "a",
"createdAt": "2026-01-01", "version": ")" +
           version + R"("}, "scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";
}

// A folder with a whole project of that version, below `place`.
FileTree whole(const QString &place, const QByteArray &version) {
    return {{place + "/line.yslib", projectFile(version)},
            {place + "/main.ys", "// " + version + "\n"}};
}

FileTree together(const QVector<FileTree> &trees) {
    FileTree all;
    for (const FileTree &tree : trees)
        all = support::laidOver(all, tree);
    return all;
}

const QString backups = "data/update/backup/";
const QString temps = "data/update/temp/";

} // namespace

class UpdateRemainsTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;
    UpdateRemains look(const QString &package = QString()) const;

private Q_SLOTS:
    void initTestCase();

    void init();
    void verdicts_data();
    void verdicts();
    void backupsThatCount_data();
    void backupsThatCount();
    void unpackedPackagesThatCount_data();
    void unpackedPackagesThatCount();
    void whatIsProvedWithoutTheClock_data();
    void whatIsProvedWithoutTheClock();
    void theUpdatesPackageProvesTheNewProject();
    void aPackageUnderAnotherNameIsFound();
    void packagesInTheCacheTheNewestFirst();
    void theCopyOfASticksPackageCountsAfterThoseInTheCache();
    void aGivenPackageIsTheOnlyOneAsked();
    void earlierRemainsAreForgotten();
    void errorsOfTheValidator_data();
    void errorsOfTheValidator();
};

QString UpdateRemainsTest::path(const QString &name) const {
    return folder->filePath(name);
}

UpdateRemains UpdateRemainsTest::look(const QString &package) const {
    UpdateRemains remains;
    QString error;
    if (!ctl::lookAtRemains({path("line/line.yslib"), path("data"), package}, &remains, &error))
        qWarning("%s", qPrintable(error));
    return remains;
}

void UpdateRemainsTest::init() {
    folder.reset(new QTemporaryDir);
}

void UpdateRemainsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void UpdateRemainsTest::verdicts_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<Recovery>("recovery");
    QTest::addColumn<QString>("source"); // relative; empty: none
    QTest::addColumn<QString>("reason");
    const QString backup = backups + "line_20261120_164501";
    const QString staging = temps + "apply_20261120_164430";
    const FileTree none;
    QTest::newRow("nothing at all") << none << Recovery::Impossible << ""
                                    << "";
    QTest::newRow("a whole project and nothing else")
        << whole("line", "1.0") << Recovery::None << ""
        << "No swap had begun.";
    QTest::newRow("a project that cannot run and nothing else")
        << FileTree{{"line/line.yslib", "{}"}} << Recovery::Impossible << ""
        << "";
    QTest::newRow("no project, and a whole backup without a package")
        << whole(backup, "1.0") << Recovery::Backup << backup
        << "What lies in the project's folder cannot run.";
    QTest::newRow("no project, a whole backup and a whole package")
        << together({whole(backup, "1.0"), whole(staging, "2.0")}) << Recovery::Backup << backup
        << "The old project was being removed.";
    QTest::newRow("no project, and a whole package without a backup, which no update leaves")
        << whole(staging, "2.0") << Recovery::Impossible << ""
        << "";
    QTest::newRow("no project, a backup that cannot run and a whole package")
        << together({whole(backup, "1.0"), {{backup + "/line.yslib", "{}"}}, whole(staging, "2.0")})
        << Recovery::Staging << staging << "The old project was being removed.";
    QTest::newRow("no project, and two that cannot run")
        << together({{{backup + "/line.yslib", "{}"}}, {{staging + "/line.yslib", "{}"}}})
        << Recovery::Impossible << ""
        << "";
    QTest::newRow("the old project whole, and half a backup")
        << together({whole("line", "1.0"), {{backup + "/line.yslib", projectFile("1.0")}}})
        << Recovery::None << ""
        << "The old project had not been touched yet.";
    QTest::newRow("half of the old project")
        << together({{{"line/main.ys", "// 1.0\n"}}, whole(backup, "1.0"), whole(staging, "2.0")})
        << Recovery::Backup << backup << "The old project was being removed.";
    QTest::newRow("half of the new project")
        << together({{{"line/main.ys", "// 2.0\n"}}, whole(backup, "1.0"), whole(staging, "2.0")})
        << Recovery::Staging << staging << "The new project was being copied in.";
    QTest::newRow("half of the new project, whose package cannot run")
        << together({{{"line/main.ys", "// 2.0\n"}},
                     whole(backup, "1.0"),
                     {{staging + "/main.ys", "// 2.0\n"}, {staging + "/line.yslib", "{}"}}})
        << Recovery::Backup << backup << "The new project was being copied in.";
    QTest::newRow("the new project whole, and the backup not yet removed")
        << together({whole("line", "2.0"), whole(backup, "1.0")}) << Recovery::None << ""
        << "The new project was in place already.";
    QTest::newRow("another project, which runs, is left alone")
        << together({whole("line", "3.0"), whole(backup, "1.0"), whole(staging, "2.0")})
        << Recovery::None << ""
        << "The new project was in place already.";
    QTest::newRow("another project, which cannot run")
        << together({{{"line/line.yslib", "{}"}, {"line/mine.ys", ""}}, whole(backup, "1.0")})
        << Recovery::Backup << backup << "What lies in the project's folder cannot run.";
}

void UpdateRemainsTest::verdicts() {
    QFETCH(FileTree, tree);
    QFETCH(QString, source);
    support::writeTree(folder->path(), tree);
    const UpdateRemains remains = look();
    QTEST(remains.recovery, "recovery");
    QCOMPARE(remains.source, source.isEmpty() ? QString() : path(source));
    QTEST(remains.reason, "reason");
    QCOMPARE(support::readTree(folder->path()), tree);
}

void UpdateRemainsTest::backupsThatCount_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("backup"); // its name; empty: none
    const auto with = [](const QStringList &names) {
        FileTree all;
        for (const QString &name : names)
            all = support::laidOver(all, whole(backups + name, "1.0"));
        return all;
    };
    QTest::newRow("none") << FileTree() << "";
    QTest::newRow("one") << with({"line_20261120_164501"}) << "line_20261120_164501";
    QTest::newRow("of two the newer")
        << with({"line_20261120_164501", "line_20261121_000000"}) << "line_20261121_000000";
    QTest::newRow("of two years the newer")
        << with({"line_20261231_235959", "line_20270101_000000"}) << "line_20270101_000000";
    QTest::newRow("one of a project whose name begins so")
        << with({"line_b_20261120_164501", "lines_20261120_164501"}) << "";
    QTest::newRow("one of a project whose name ends so") << with({"my_line_20261120_164501"}) << "";
    QTest::newRow("one of a day that no month has") << with({"line_20260230_164501"}) << "";
    QTest::newRow("one of an hour that no day has") << with({"line_20261120_250000"}) << "";
    QTest::newRow("one without a time") << with({"line", "line_", "line_copy"}) << "";
    QTest::newRow("one that was recovered already")
        << with({"line_20261120_164501.recovered"}) << "";
    QTest::newRow("one with more behind its time") << with({"line_20261120_164501_2"}) << "";
    QTest::newRow("a file of that name") << FileTree{{backups + "line_20261120_164501", "x"}} << "";
    QTest::newRow("an empty one") << FileTree{{backups + "line_20261120_164501/", ""}} << "";
    QTest::newRow("the newer is of another project, the older is ours")
        << support::laidOver(whole(backups + "line_20261120_164501", "1.0"),
                             {{backups + "line_20261121_164501/other.yslib", projectFile("1.0")}})
        << "line_20261120_164501";
    QTest::newRow("one whose project file lies deeper down")
        << whole(backups + "line_20261120_164501/inner", "1.0") << "";
}

void UpdateRemainsTest::backupsThatCount() {
    QFETCH(FileTree, tree);
    QFETCH(QString, backup);
    support::writeTree(folder->path(), support::laidOver(whole("line", "1.0"), tree));
    QCOMPARE(look().backup.folder, backup.isEmpty() ? QString() : path(backups + backup));
}

void UpdateRemainsTest::unpackedPackagesThatCount_data() {
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("staging");
    QTest::newRow("none") << QStringList() << "";
    QTest::newRow("one of the same second")
        << QStringList{"apply_20261120_164501"} << "apply_20261120_164501";
    QTest::newRow("one of an hour before")
        << QStringList{"apply_20261120_154501"} << "apply_20261120_154501";
    QTest::newRow("one of a second more, as the clock may have been set")
        << QStringList{"apply_20261120_154500"} << "apply_20261120_154500";
    QTest::newRow("one that came after the backup, as the clock may have been set")
        << QStringList{"apply_20261120_164502"} << "apply_20261120_164502";
    QTest::newRow("of two of other times the later")
        << QStringList{"apply_20261120_120000", "apply_20261120_180000"} << "apply_20261120_180000";
    QTest::newRow("of two before the backup the later")
        << QStringList{"apply_20261120_164400", "apply_20261120_164430"} << "apply_20261120_164430";
    QTest::newRow("of one before and one after the one before")
        << QStringList{"apply_20261120_164430", "apply_20261120_170000"} << "apply_20261120_164430";
    QTest::newRow("one of another kind") << QStringList{"check_20261120_164430"} << "";
    QTest::newRow("one that was recovered already")
        << QStringList{"apply_20261120_164430.recovered"} << "";
}

void UpdateRemainsTest::unpackedPackagesThatCount() {
    QFETCH(QStringList, names);
    QFETCH(QString, staging);
    support::writeTree(folder->path(), whole(backups + "line_20261120_164501", "1.0"));
    for (const QString &name : names)
        support::writeTree(folder->path(), whole(temps + name, "2.0"));
    QCOMPARE(look().staging.folder, staging.isEmpty() ? QString() : path(temps + staging));
}

// Of times that the clock's setting has torn apart.
void UpdateRemainsTest::whatIsProvedWithoutTheClock_data() {
    QTest::addColumn<FileTree>("project");
    QTest::addColumn<QVector<FileTree>>("others"); // with their places
    QTest::addColumn<Recovery>("recovery");
    QTest::addColumn<QString>("source"); // relative; empty: none
    QTest::addColumn<QString>("reason");
    const auto with = [](FileTree tree, const QByteArray &name, const QByteArray &content) {
        tree.insert("line/" + name, content);
        return tree;
    };
    const auto at = [](const QString &place, const FileTree &project) {
        FileTree moved;
        for (auto file = project.begin(); file != project.end(); ++file)
            moved.insert(place + file.key().mid(4), file.value());
        return moved;
    };
    const FileTree runs = whole("line", "1.0");
    const FileTree old = with(runs, "a.csv", "old");
    const FileTree newRuns = whole("line", "2.0");
    const FileTree neu = with(newRuns, "b.csv", "new");
    const QString backup = backups + "line_20261120_164501";
    const QString later = temps + "apply_20261120_184501";
    const QString fitting = temps + "apply_20261120_164430";
    const QString removed = "The old project was being removed.";
    const QString copied = "The new project was being copied in.";
    const QString inPlace = "The new project was in place already.";
    const QString unknown =
        "The project runs with the backup's project file and lacks other files of the backup.";
    const FileTree foreign = support::laidOver(
        neu, {{"line/line.yslib", QByteArray(projectFile("2.0")).replace("\"line\"", "\"x\"")}});

    QTest::newRow("half of the old project, which runs")
        << runs << QVector<FileTree>{at(backup, old), at(later, neu)} << Recovery::Backup << backup
        << removed;
    QTest::newRow("half of the old project, and no package")
        << runs << QVector<FileTree>{at(backup, old)} << Recovery::Unknown << "" << unknown;
    QTest::newRow("half of the old project, and a package of another one")
        << runs << QVector<FileTree>{at(backup, old), at(later, foreign)} << Recovery::Unknown << ""
        << unknown;
    QTest::newRow("half of the old project, and a package that cannot run")
        << runs << QVector<FileTree>{at(backup, old), {{later + "/main.ys", "// 2.0\n"}}}
        << Recovery::Unknown << "" << unknown;
    QTest::newRow("half of the old project, in which a program has written")
        << with(runs, "c.csv", "mine") << QVector<FileTree>{at(backup, old)} << Recovery::Unknown
        << "" << unknown;
    QTest::newRow("the old project with all its names, one of them written since")
        << with(runs, "a.csv", "mine") << QVector<FileTree>{at(backup, old)} << Recovery::None << ""
        << inPlace;
    QTest::newRow("half of the new project, which runs")
        << newRuns << QVector<FileTree>{at(backup, old), at(later, neu)} << Recovery::Staging
        << later << copied;
    QTest::newRow("half of the new project, and a fitting time on the package of a killed attempt")
        << newRuns
        << QVector<FileTree>{at(backup, old), at(later, neu), at(fitting, with(runs, "x", ""))}
        << Recovery::Staging << later << copied;
    QTest::newRow("the new project, and no package")
        << neu << QVector<FileTree>{at(backup, old)} << Recovery::None << "" << inPlace;
    QTest::newRow("the new project, all of which the old one had")
        << runs << QVector<FileTree>{at(backup, old), at(later, runs)} << Recovery::None << ""
        << inPlace;
}

void UpdateRemainsTest::whatIsProvedWithoutTheClock() {
    QFETCH(FileTree, project);
    QFETCH(QVector<FileTree>, others);
    QFETCH(QString, source);
    const FileTree tree = support::laidOver(project, together(others));
    support::writeTree(folder->path(), tree);
    const UpdateRemains remains = look();
    QTEST(remains.recovery, "recovery");
    QCOMPARE(remains.source, source.isEmpty() ? QString() : path(source));
    QTEST(remains.reason, "reason");
    QCOMPARE(support::readTree(folder->path()), tree);
}

// That of the cache does not: the old project may have come from it.
void UpdateRemainsTest::theUpdatesPackageProvesTheNewProject() {
    const FileTree project = whole("line", "1.0");
    const QString backup = backups + "line_20261120_164501";
    support::writeTree(folder->path(),
                       together({project, whole(backup, "1.0"), {{backup + "/a.csv", "old"}}}));
    const QByteArray fitting = support::zipOf(support::below(project, "line"));
    support::writeTree(path("data/update/cache"), {{"p.zip", fitting}});
    QCOMPARE(look().recovery, Recovery::Unknown);
    QCOMPARE(look(path("data/update/cache/p.zip")).recovery, Recovery::None);
}

void UpdateRemainsTest::aPackageUnderAnotherNameIsFound() {
    support::writeTree(folder->path(),
                       {{"line/renamed.yslib", projectFile("2.0")}, {"line/main.ys", ""}});
    const UpdateRemains remains = look();
    QCOMPARE(remains.project.projectFile, path("line/renamed.yslib"));
    QCOMPARE(remains.recovery, Recovery::None);
}

void UpdateRemainsTest::packagesInTheCacheTheNewestFirst() {
    support::writeTree(path("data/update/cache"), {{"old.zip", ""},
                                                   {"new.zip", ""},
                                                   {"a.zip.part", ""},
                                                   {"setup.exe", ""},
                                                   {"folder.zip/a", ""}});
    const auto setTime = [this](const QString &name, qint64 seconds) {
        QFile file(path("data/update/cache/" + name));
        return file.open(QIODevice::ReadWrite) &&
               file.setFileTime(QDateTime::fromSecsSinceEpoch(seconds),
                                QFileDevice::FileModificationTime);
    };
    QVERIFY(setTime("old.zip", 1700000000) && setTime("new.zip", 1700000100));
    QCOMPARE(look().packages,
             QStringList({path("data/update/cache/new.zip"), path("data/update/cache/old.zip")}));
}

// Whatever its name; half a copy is passed over like any package that cannot be unpacked.
void UpdateRemainsTest::theCopyOfASticksPackageCountsAfterThoseInTheCache() {
    const QByteArray fitting = support::zipOf(support::below(whole("line", "2.0"), "line"));
    support::writeTree(folder->path(), {{"line/line.yslib", ""},
                                        {"line/main.ys", "// 2.0\n"},
                                        {"data/update/cache/old.zip", "of another update"},
                                        {temps + "package_0a/half.zip", fitting.left(40)},
                                        {temps + "package_0a.lock", ""},
                                        {temps + "package_1b/产线.package", fitting},
                                        {temps + "package_mine/line.zip", fitting}});
    const UpdateRemains remains = look();
    QCOMPARE(remains.packages,
             QStringList({path("data/update/cache/old.zip"), path(temps + "package_0a/half.zip"),
                          path(temps + "package_1b/产线.package")}));
    QCOMPARE(remains.recovery, Recovery::ProjectFile);
    QCOMPARE(remains.source, path(temps + "package_1b/产线.package"));
}

void UpdateRemainsTest::aGivenPackageIsTheOnlyOneAsked() {
    const QByteArray fitting = support::zipOf(support::below(whole("line", "2.0"), "line"));
    support::writeTree(folder->path(), {{"line/line.yslib", ""},
                                        {"line/main.ys", "// 2.0\n"},
                                        {"data/update/cache/good.zip", fitting},
                                        {"bad.zip", "no archive"}});
    QCOMPARE(look().recovery, Recovery::ProjectFile);
    QCOMPARE(look().source, path("data/update/cache/good.zip"));
    QCOMPARE(look(path("bad.zip")).recovery, Recovery::Impossible);
    QCOMPARE(look(path("none.zip")).recovery, Recovery::Impossible);
}

void UpdateRemainsTest::earlierRemainsAreForgotten() {
    support::writeTree(folder->path(), whole("line", "1.0"));
    UpdateRemains remains = look();
    QString error;
    QVERIFY(ctl::lookAtRemains({path("none/line.yslib"), path("data"), {}}, &remains, &error));
    QCOMPARE(remains.recovery, Recovery::Impossible);
    QCOMPARE(remains.reason, QString());
    QCOMPARE(remains.project.projectFile, QString());
}

void UpdateRemainsTest::errorsOfTheValidator_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("errors");
    QTest::newRow("a whole project") << whole("line", "1.0") << "";
    QTest::newRow("warnings do not count")
        << support::laidOver(whole("line", "1.0"), {{"line/more.ys", ""}}) << "";
    QTest::newRow("nor do syntax errors")
        << support::laidOver(whole("line", "1.0"), {{"line/main.ys", "}"}}) << "";
    QTest::newRow("a script that is missing")
        << FileTree{{"line/line.yslib", projectFile("1.0")}}
        << QStringLiteral("[Error] scripts[0].path: 引用的文件不存在：main.ys");
    QTest::newRow("an empty file") << FileTree{{"line/line.yslib", ""}}
                                   << QStringLiteral("[Error] yslib: JSON 无效：illegal value");
}

void UpdateRemainsTest::errorsOfTheValidator() {
    QFETCH(FileTree, tree);
    support::writeTree(folder->path(), tree);
    QTEST(ctl::validatorErrors(path("line/line.yslib")), "errors");
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateRemainsTest)
#include "update_remains_test.moc"
