// What an installation holds after a package was put in place, over whatever was there: whose files stay,
// what is laid beside, what is told, what a refusal leaves alone, and what a removal takes.
#include "placer/placing.h"

#include "package.h"
#include "placer/journal.h"
#include "placer/plan.h"
#include "placer/report_text.h"
#include "support/staged_main.h"

#include <QLockFile>
#include <QTemporaryDir>

using placer::Outcome;
using placer::Places;
using placer::Report;
using support::FileTree;

Q_DECLARE_METATYPE(support::FileTree)

namespace {

const FileTree firstPackage{{"bin/Quorvaner.exe", "launcher 1.0.0"},
                            {"bin/Qt5Core.dll", "library"},
                            {"bin/gone.dll", "only in 1.0.0"},
                            {"bin/config/FunctionLib.ini", "functions 1.0.0"},
                            {"bin/config/launcher_notice.txt", "notice 1.0.0"},
                            {"bin/config/update.pub", "key"},
                            {"share/schemas/a.json", "schema"}};

const FileTree secondPackage{{"bin/Quorvaner.exe", "launcher 1.1.0"},
                             {"bin/Qt5Core.dll", "library"},
                             {"bin/platforms/qwindows.dll", "only in 1.1.0"},
                             {"bin/config/FunctionLib.ini", "functions 1.1.0"},
                             {"bin/config/launcher_notice.txt", "notice 1.1.0"},
                             {"bin/config/update.pub", "key"},
                             {"share/schemas/a.json", "schema 2"},
                             {"README.md", "read me"}};

QByteArray versionFile(const QByteArray &version) {
    return "{\n    \"launcherPackageVersion\": \"" + version + "\"\n}\n";
}

FileTree installed(FileTree package, const QByteArray &version) {
    package.insert("bin/config/release_version.json", versionFile(version));
    package.insert("USER/", "");
    return package;
}

FileTree without(FileTree tree, const QString &path) {
    tree.remove(path);
    return tree;
}

Report placeRun(const QString &root, const QString &run, const FileTree &files,
                const QString &version, bool replacesKey = false) {
    const Places places{root, run};
    placer::PackageList list = support::packageOf(files, version);
    list.replacesKey = replacesKey;
    support::unpackRun(places, files, list);
    return placer::place(places);
}

// The first package, installed.
class Installation {
public:
    Installation() {
        if (placeRun(root(), "1", firstPackage, "1.0.0").outcome != Outcome::Done)
            qFatal("the first installation failed");
        placer::tidy({root(), "1"});
    }
    [[nodiscard]] QString root() const { return folder.filePath("产线 3"); }

private:
    QTemporaryDir folder;
};

} // namespace

class PlacingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void launcherIsExchangedLast();
    void firstInstallation();
    void nextVersion_data();
    void nextVersion();
    void anotherKeyIsPlacedOnlyOnPurpose_data();
    void anotherKeyIsPlacedOnlyOnPurpose();
    void unpackedPackageKeepsItsChangedConfiguration();
    void refusals_data();
    void refusals();
    void folderWithTheNameOfAFileIsRefused();
    void stepThatFailsTakesEverythingBack();
    void brokenOffExchangeIsFinished_data();
    void brokenOffExchangeIsFinished();
    void journalThatCannotBeReadIsPutAside();
    void nothingToFinishIsDone();
    void tidyKeepsTheToolOfItsRun();
    void removalLeavesWhatTheSiteHas_data();
    void removalLeavesWhatTheSiteHas();
    void removalTwiceSaysSo();
    void removalAfterABrokenOffExchangeIsRefused();
    void reportHasALineForEachFact();
};

void PlacingTest::launcherIsExchangedLast() {
    const Installation installation;
    const Places places{installation.root(), "2"};
    support::unpackRun(places, secondPackage, QString("1.1.0"));
    placer::Plan plan;
    QVERIFY(planFor(places, support::packageOf(secondPackage, "1.1.0"), &plan, nullptr));
    QStringList order;
    for (const placer::Step &step : plan.journal.steps)
        order.append(step.path);
    QCOMPARE(order, (QStringList{"README.md", "bin/config/FunctionLib.ini",
                                 "bin/config/launcher_notice.txt", "bin/platforms/qwindows.dll",
                                 "share/schemas/a.json", "bin/gone.dll", "setup/installed.json",
                                 "bin/Quorvaner.exe"}));
}

void PlacingTest::firstInstallation() {
    QTemporaryDir folder;
    const Report report = placeRun(folder.path(), "1", firstPackage, "1.0.0");
    QCOMPARE(report.outcome, Outcome::Done);
    QCOMPARE(report.version, QString("1.0.0"));
    QCOMPARE(support::programOf(folder.path()), installed(firstPackage, "1.0.0"));
    QVERIFY(!QFile::exists(Places{folder.path(), "1"}.journal()));
}

void PlacingTest::nextVersion_data() {
    QTest::addColumn<FileTree>("site"); // what the site has changed since
    QTest::addColumn<FileTree>("expected");
    QTest::addColumn<QStringList>("laidBeside");
    QTest::addColumn<QString>("setAside");

    const FileTree next = installed(secondPackage, "1.1.0");
    QTest::newRow("nothing is changed: all is new, what is unknown now is gone")
        << FileTree{} << next << QStringList{} << QString();
    QTest::newRow("a changed file of config stays, the new one lies beside")
        << FileTree{{"bin/config/FunctionLib.ini", "ours"}}
        << support::laidOver(next, {{"bin/config/FunctionLib.ini", "ours"},
                                    {"bin/config/FunctionLib.ini.new", "functions 1.1.0"}})
        << QStringList{"FunctionLib.ini"} << QString();
    QTest::newRow("what lay beside before is replaced")
        << FileTree{{"bin/config/launcher_notice.txt", "ours"},
                    {"bin/config/launcher_notice.txt.new", "notice 0.9.0"}}
        << support::laidOver(next, {{"bin/config/launcher_notice.txt", "ours"},
                                    {"bin/config/launcher_notice.txt.new", "notice 1.1.0"}})
        << QStringList{"launcher_notice.txt"} << QString();
    QTest::newRow("a site that has the new text already has nothing to be told")
        << FileTree{{"bin/config/FunctionLib.ini", "functions 1.1.0"}} << next << QStringList{}
        << QString();
    QTest::newRow("versions of other components stay")
        << FileTree{{"bin/config/release_version.json",
                     R"({"runtimePackageVersion": "3.1.4", "launcherPackageVersion": "1.0.0"})"}}
        << support::laidOver(next, {{"bin/config/release_version.json",
                                     "{\n    \"launcherPackageVersion\": \"1.1.0\",\n"
                                     "    \"runtimePackageVersion\": \"3.1.4\"\n}\n"}})
        << QStringList{} << QString();
    QTest::newRow("a version file that is none is kept aside")
        << FileTree{{"bin/config/release_version.json", "1.0.0"}}
        << support::laidOver(next, {{"bin/config/release_version.json.bad", "1.0.0"}})
        << QStringList{} << "release_version.json.bad";
    QTest::newRow("a changed program is replaced, and one that is gone comes back")
        << FileTree{{"bin/Quorvaner.exe", "broken"}, {"bin/Qt5Core.dll", ""}} << next
        << QStringList{} << QString();
    QTest::newRow("a changed file that the new package does not know stays")
        << FileTree{{"bin/gone.dll", "of the site"}}
        << support::laidOver(next, {{"bin/gone.dll", "of the site"}}) << QStringList{} << QString();
    QTest::newRow("what the site and the runtime have put there stays")
        << FileTree{{"bin/LineRunner.exe", "runtime"},
                    {"bin/config/site.ini", "ours"},
                    {"USER/projects/line/a.ys", "project"}}
        << without(support::laidOver(next, {{"bin/LineRunner.exe", "runtime"},
                                            {"bin/config/site.ini", "ours"},
                                            {"USER/projects/line/a.ys", "project"}}),
                   "USER/")
        << QStringList{} << QString();
}

void PlacingTest::nextVersion() {
    QFETCH(const FileTree, site);
    QFETCH(const QStringList, laidBeside);
    QFETCH(const QString, setAside);
    const Installation installation;
    support::writeTree(installation.root(), site);
    const Report report = placeRun(installation.root(), "2", secondPackage, "1.1.0");
    QCOMPARE(report.outcome, Outcome::Done);
    QCOMPARE(report.version, QString("1.1.0"));
    QCOMPARE(report.laidBeside, laidBeside);
    QCOMPARE(report.setAside, setAside);
    QTEST(support::programOf(installation.root()), "expected");
    // The next time it is known what was brought, whatever the site made of it.
    QCOMPARE(placer::installedList({installation.root(), "2"}).run, QString("2"));
}

void PlacingTest::anotherKeyIsPlacedOnlyOnPurpose_data() {
    QTest::addColumn<bool>("replacesKey");
    QTest::addColumn<QByteArray>("inForce");
    QTest::newRow("an installation goes on to trust its key") << false << QByteArray("key");
    QTest::newRow("on purpose, the new key takes its place") << true << QByteArray("other key");
}

void PlacingTest::anotherKeyIsPlacedOnlyOnPurpose() {
    QFETCH(const bool, replacesKey);
    const Installation installation;
    const FileTree package =
        support::laidOver(secondPackage, {{"bin/config/update.pub", "other key"}});
    const Report report = placeRun(installation.root(), "2", package, "1.1.0", replacesKey);
    QCOMPARE(report.outcome, Outcome::Done);
    QCOMPARE(report.keepsOtherKey, !replacesKey);
    QTEST(support::readTree(installation.root()).value("bin/config/update.pub"), "inForce");
}

// A portable package that was unpacked has no list of what it brought.
void PlacingTest::unpackedPackageKeepsItsChangedConfiguration() {
    QTemporaryDir folder;
    support::writeTree(folder.path(), installed(firstPackage, "1.0.0"));
    const Report report = placeRun(folder.path(), "1", secondPackage, "1.1.0");
    QCOMPARE(report.outcome, Outcome::Done);
    QCOMPARE(report.laidBeside, (QStringList{"FunctionLib.ini", "launcher_notice.txt"}));
    const FileTree tree = support::programOf(folder.path());
    QCOMPARE(tree.value("bin/config/FunctionLib.ini"), QByteArray("functions 1.0.0"));
    QCOMPARE(tree.value("bin/config/FunctionLib.ini.new"), QByteArray("functions 1.1.0"));
    QCOMPARE(tree.value("bin/gone.dll"), QByteArray("only in 1.0.0"));
}

void PlacingTest::refusals_data() {
    QTest::addColumn<FileTree>("damage"); // to what was unpacked; a path without content is removed
    QTest::addColumn<QString>("reason");
    QTest::newRow("a new file is not as it was packed")
        << FileTree{{"new/bin/Quorvaner.exe", "half"}}
        << "%1/new/bin/Quorvaner.exe: is not as it was packed";
    QTest::newRow("a new file is missing")
        << FileTree{{"new/share/schemas/a.json", ""}}
        << "%1/new/share/schemas/a.json: " + QString(qt_error_string(ENOENT));
    QTest::newRow("there is no list")
        << FileTree{{"package.json", ""}} << "%1/package.json: " + QString(qt_error_string(ENOENT));
    QTest::newRow("the list is none")
        << FileTree{{"package.json", "[]"}} << "%1/package.json: no list of a package";
    for (const char *const path :
         {"USER/a", "user/a", "USER./a", "USER", "bin/../USER/a", "..", "../a", "./a", "/bin/a",
          "bin//a", "bin/", "setup/1/a", "Setup", "bin/a:b", "C:/bin/a", "bin/a "})
        QTest::addRow("the list names %s", path)
            << FileTree{{"package.json",
                         QByteArray(R"({"version": "1", "files": {")") + path + R"(": "00"}})"}}
            << "%1/package.json: no path of a package: " + QString(path);
}

void PlacingTest::refusals() {
    QFETCH(const FileTree, damage);
    QFETCH(const QString, reason);
    const Installation installation;
    const Places places{installation.root(), "2"};
    const FileTree before = support::programOf(places.root);
    support::unpackRun(places, secondPackage, QString("1.1.0"));
    for (auto file = damage.begin(); file != damage.end(); ++file) {
        if (file.value().isEmpty())
            QVERIFY(QFile::remove(places.ofRun(file.key())));
        else
            support::writeTree(places.ofRun(""), {{file.key(), file.value()}});
    }
    const Report report = placer::place(places);
    QCOMPARE(report.outcome, Outcome::Refused);
    QCOMPARE(report.reason, reason.arg(places.setup() + "/2"));
    QCOMPARE(support::programOf(places.root), before);
    QVERIFY(!QFile::exists(places.journal()));
}

void PlacingTest::folderWithTheNameOfAFileIsRefused() {
    const Installation installation;
    support::writeTree(installation.root(), {{"bin/platforms/qwindows.dll/a", "of the site"}});
    const FileTree before = support::programOf(installation.root());
    const Report report = placeRun(installation.root(), "2", secondPackage, "1.1.0");
    QCOMPARE(report.outcome, Outcome::Refused);
    QCOMPARE(report.reason, installation.root() + "/bin/platforms/qwindows.dll: is a folder");
    QCOMPARE(support::programOf(installation.root()), before);
}

// What was exchanged before a step that fails is taken back: here somebody has put a file where none was.
void PlacingTest::stepThatFailsTakesEverythingBack() {
    const Installation installation;
    const Places places{installation.root(), "2"};
    support::unpackRun(places, secondPackage, QString("1.1.0"));
    QVERIFY(QDir().mkpath(places.old("bin")));
    const FileTree before = support::programOf(places.root);
    QVERIFY(placer::writeJournal(places,
                                 {"2",
                                  "1.1.0",
                                  {{"bin/Quorvaner.exe", true, true},
                                   {"bin/gone.dll", true, false},
                                   {"share/schemas/a.json", false, true}}},
                                 nullptr));
    const Report report = placer::finish(places);
    QCOMPARE(report.outcome, Outcome::TakenBack);
    QCOMPARE(report.version, QString("1.0.0"));
    QVERIFY(!report.reason.isEmpty());
    QCOMPARE(support::programOf(places.root), before);
    QVERIFY(!QFile::exists(places.journal()));
}

void PlacingTest::brokenOffExchangeIsFinished_data() {
    QTest::addColumn<FileTree>("done"); // moved in already
    QTest::addColumn<QStringList>("aside");
    QTest::newRow("before the first rename") << FileTree{} << QStringList{};
    QTest::newRow("after the old launcher was moved away")
        << FileTree{} << QStringList{"bin/Quorvaner.exe"};
    QTest::newRow("after the new launcher came")
        << FileTree{{"bin/Quorvaner.exe", "launcher 1.1.0"}} << QStringList{"bin/Quorvaner.exe"};
}

void PlacingTest::brokenOffExchangeIsFinished() {
    QFETCH(const FileTree, done);
    QFETCH(const QStringList, aside);
    const Installation installation;
    const Places places{installation.root(), "2"};
    support::unpackRun(places, {{"bin/Quorvaner.exe", "launcher 1.1.0"}}, QString("1.1.0"));
    QVERIFY(
        placer::writeJournal(places, {"2", "1.1.0", {{"bin/Quorvaner.exe", true, true}}}, nullptr));
    QVERIFY(QDir().mkpath(places.old("bin")));
    for (const QString &path : aside)
        QVERIFY(QFile::rename(places.at(path), places.old(path)));
    for (auto file = done.begin(); file != done.end(); ++file)
        QVERIFY(QFile::rename(places.fresh(file.key()), places.at(file.key())));
    const Report report = placer::finish({places.root, "7"});
    QCOMPARE(report.outcome, Outcome::Done);
    const FileTree tree = support::programOf(places.root);
    QCOMPARE(tree.value("bin/Quorvaner.exe"), QByteArray("launcher 1.1.0"));
    QCOMPARE(tree.value("bin/config/release_version.json"), versionFile("1.1.0"));
    QVERIFY(!QFile::exists(places.journal()));
}

void PlacingTest::journalThatCannotBeReadIsPutAside() {
    const Installation installation;
    support::writeTree(installation.root(), {{"setup/journal.json", "{"}});
    const Report finished = placer::finish({installation.root(), "1"});
    QCOMPARE(finished.outcome, Outcome::Refused);
    QCOMPARE(finished.reason,
             installation.root() + "/setup/journal.json cannot be read; install again");
    QCOMPARE(placeRun(installation.root(), "2", secondPackage, "1.1.0").outcome, Outcome::Done);
    QCOMPARE(support::programOf(installation.root()), installed(secondPackage, "1.1.0"));
    QCOMPARE(support::readTree(installation.root()).value("setup/journal.json.bad"),
             QByteArray("{"));
}

void PlacingTest::nothingToFinishIsDone() {
    const Installation installation;
    const FileTree before = support::readTree(installation.root());
    const Report report = placer::finish({installation.root(), "1"});
    QCOMPARE(report.outcome, Outcome::Done);
    QCOMPARE(report.version, QString("1.0.0"));
    QCOMPARE(support::readTree(installation.root()), before);
}

void PlacingTest::tidyKeepsTheToolOfItsRun() {
    const Installation installation;
    support::writeTree(installation.root(), {{"setup/1/tool/uninstall.exe", "1"},
                                             {"setup/2/tool/uninstall.exe", "2"},
                                             {"setup/of the site/a", "a"}});
    QCOMPARE(placeRun(installation.root(), "2", secondPackage, "1.1.0").outcome, Outcome::Done);
    placer::tidy({installation.root(), "2"});
    FileTree setup = support::below(support::readTree(installation.root()), "setup");
    setup.remove("installed.json");
    QCOMPARE(setup.keys(),
             (QStringList{"2/package.json", "2/tool/uninstall.exe", "of the site/a"}));
}

void PlacingTest::removalLeavesWhatTheSiteHas_data() {
    QTest::addColumn<FileTree>("site");
    QTest::addColumn<QStringList>("leftBehind");
    QTest::newRow("nothing but the user's folder is left")
        << FileTree{{"USER/", ""}} << QStringList{};
    QTest::newRow("the user's files")
        << FileTree{{"USER/projects/line/a.ys", "a"}} << QStringList{};
    QTest::newRow("a file of config that was changed")
        << FileTree{{"USER/", ""}, {"bin/config/FunctionLib.ini", "ours"}}
        << QStringList{"bin/config/FunctionLib.ini"};
    QTest::newRow("a program that is not the one installed")
        << FileTree{{"USER/", ""}, {"bin/Quorvaner.exe", "another"}}
        << QStringList{"bin/Quorvaner.exe"};
    QTest::newRow("other components and their versions")
        << FileTree{{"USER/", ""},
                    {"bin/LineRunner.exe", "runtime"},
                    {"bin/config/release_version.json",
                     "{\n    \"runtimePackageVersion\": \"3.1.4\"\n}\n"}}
        << QStringList{};
}

void PlacingTest::removalLeavesWhatTheSiteHas() {
    QFETCH(const FileTree, site);
    const Installation installation;
    FileTree changes = site;
    changes.remove("USER/");
    support::writeTree(installation.root(), changes);
    QVERIFY(QDir().mkpath(installation.root() + "/bin/plugins"));
    const Report report = placer::removeInstallation({installation.root(), "1"});
    QCOMPARE(report.outcome, Outcome::Done);
    QTEST(report.leftBehind, "leftBehind");
    QCOMPARE(support::readTree(installation.root()), site);
}

void PlacingTest::removalTwiceSaysSo() {
    const Installation installation;
    QCOMPARE(placer::removeInstallation({installation.root(), "1"}).outcome, Outcome::Done);
    const Report report = placer::removeInstallation({installation.root(), "1"});
    QCOMPARE(report.outcome, Outcome::Refused);
    QCOMPARE(report.reason, "nothing is installed here: " + installation.root());
}

void PlacingTest::removalAfterABrokenOffExchangeIsRefused() {
    const Installation installation;
    const Places places{installation.root(), "2"};
    QVERIFY(
        placer::writeJournal(places, {"2", "1.1.0", {{"bin/Quorvaner.exe", true, true}}}, nullptr));
    const FileTree before = support::programOf(places.root);
    const Report report = placer::removeInstallation(places);
    QCOMPARE(report.outcome, Outcome::Refused);
    QCOMPARE(report.reason, QString("an installation was broken off here; install again first"));
    QCOMPARE(support::programOf(places.root), before);
}

void PlacingTest::reportHasALineForEachFact() {
    Report report;
    report.version = "1.1.0";
    report.run = "12";
    report.laidBeside = QStringList{"FunctionLib.ini"};
    report.setAside = "release_version.json.bad";
    report.keepsOtherKey = true;
    report.leftBehind = QStringList{"bin/config/产线.ini"};
    report.reason = "why";
    const QByteArray bytes = placer::reportText(report);
    QVERIFY(bytes.startsWith("\xFF\xFE"));
    QCOMPARE(
        QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), bytes.size() / 2),
        QString("V 1.1.0\r\nU 12\r\nN FunctionLib.ini\r\nA release_version.json.bad\r\nK \r\n"
                "L bin/config/产线.ini\r\nR why\r\n"));
}

QUORVANE_TEST_MAIN(QCoreApplication, PlacingTest)
#include "placing_test.moc"
