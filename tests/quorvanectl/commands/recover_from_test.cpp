// project recover --from: a project that no whole copy is left of comes back from its publisher's package,
// and from nothing else.
#include "project/project_file.h"
#include "run_tool.h"
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/key_maker.h"
#include "support/manifest_maker.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QTemporaryDir>

using support::Answer;
using support::FileTree;

namespace {

QByteArray projectFile(const QByteArray &version, const QByteArray &name = "line") {
    return R"({"schemaVersion": 1,
"project": {"name": ")" +
           name + R"(", "displayName": "产线", "createdAt": "2026-01-01", "version": ")" + version +
           R"("},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";
}

FileTree oldProject() {
    return {{"line.yslib", projectFile("1.0")},
            {"main.ys", "// old\n"},
            {"数据/only_old.csv", "o"},
            {"logs/run.log", "log of the line"},
            {".hidden", "h"}};
}

// Its project file tells another version than its record.
FileTree newProject() {
    return {{"line.yslib", projectFile("1.9")},
            {"main.ys", "// new\n"},
            {"数据/new.csv", "n"},
            {"logs/readme.txt", "log of the package"},
            {".of_package", "p"}};
}

FileTree lacking(FileTree tree, const QString &name) {
    tree.remove(name);
    return tree;
}

const support::KeyPair &publisher() {
    static const support::KeyPair key = support::KeyPair::rsa(2048);
    return key;
}

QByteArray hashOf(const QByteArray &bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

QString manifestOf(const QByteArray &zip, const QString &name = "line",
                   const support::KeyPair &key = publisher()) {
    const QJsonObject other{
        {"name", "other"}, {"version", "7"}, {"zipUrl", "o.zip"}, {"zipSha256", "00"}};
    const QJsonObject record{{"name", name},
                             {"version", "2.0.0"},
                             {"zipUrl", "p.zip"},
                             {"zipSha256", QString(' ' + hashOf(zip).toUpper())}};
    return support::signedManifest({{"projects", QJsonArray{other, record}}}, key);
}

// A line PC and a stick, and the tool at work on them.
struct Place {
    QTemporaryDir dir;

    Place() {
        const QByteArray zip = support::zipOf(newProject());
        lay("", {{"stick/p.zip", zip},
                 {"stick/manifest.json", manifestOf(zip).toUtf8()},
                 {"pc/bin/config/update.pub", publisher().publicPem().toUtf8()},
                 {"data/", ""}});
    }

    QString path(const QString &name) const { return dir.filePath(name); }
    void lay(const QString &name, const FileTree &tree) const {
        support::writeTree(path(name), tree);
    }
    FileTree read(const QString &name) const { return support::readTree(path(name)); }
    FileTree all() const { return support::readTree(dir.path()); }

    Answer recover(const QStringList &more = {}) const {
        const QString library = QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini";
        return support::runTool(QStringList{"project", "recover", path("line/line.yslib"), "--data",
                                            path("data"), "--library", library, "--install",
                                            path("pc"), "--from", path("stick/p.zip"), "--manifest",
                                            path("stick/manifest.json")} +
                                more);
    }

    // What lies in the data folder's backups and is no backup.
    QStringList setAside() const {
        return QDir(path("data/update/backup")).entryList({"line_*.set_aside*"}, QDir::Dirs);
    }
};

} // namespace

class RecoverFromTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void thePackageTakesTheProjectsPlace_data();
    void thePackageTakesTheProjectsPlace();
    void logsOfABackupAreKeptToo();
    void aRecoveryKilledBetweenItsRenamingsGoesOn();
    void aWholeCopyThatIsLeftIsTold();
    void whatIsInPlaceIsLeftAlone_data();
    void whatIsInPlaceIsLeftAlone();
    void whatIsNotBelieved_data();
    void whatIsNotBelieved();
    void anotherKeyCanBeNamed();
    void whatHoldsMoreThanAProjectIsNotReplaced();
    void aLinkToAProjectFileStandsInNoProject();
    void aProjectFileInTheFolderOfAllProjects();
    void wrongUsage_data();
    void wrongUsage();
};

void RecoverFromTest::thePackageTakesTheProjectsPlace_data() {
    QTest::addColumn<FileTree>("project");
    QTest::addColumn<QString>("state"); // as it is told
    const FileTree old = oldProject();
    QTest::newRow("gone") << FileTree() << "0 files, is gone";
    QTest::newRow("half of the old one, which cannot run")
        << lacking(old, "main.ys") << "3 files, fails the validator";
    QTest::newRow("half of the old one, which runs")
        << lacking(old, "数据/only_old.csv") << "3 files, passes the validator";
    QTest::newRow("without a project file")
        << lacking(old, "line.yslib") << "3 files, no project file";
    QTest::newRow("with a damaged project file")
        << support::laidOver(old, {{"line.yslib", "{"}}) << "4 files, fails the validator";
    QTest::newRow("whole, on purpose") << old << "4 files, passes the validator";
    QTest::newRow("without logs") << lacking(old, "logs/run.log")
                                  << "3 files, passes the validator";
}

void RecoverFromTest::thePackageTakesTheProjectsPlace() {
    QFETCH(FileTree, project);
    QFETCH(QString, state);
    const Place place;
    if (!project.isEmpty())
        place.lay("line", project);
    const FileTree before = place.all();

    const Answer looked = place.recover();
    QCOMPARE(looked.err, QString());
    QCOMPARE(place.all(), before);
    QVERIFY2(looked.out.startsWith("Project:   " + place.path("line") + ": " + state + '\n'),
             qPrintable(looked.out));
    QVERIFY2(looked.out.endsWith(
                 "Package:   " + place.path("stick/p.zip") +
                 ": line 2.0.0, 4 files, passes the validator\n"
                 "Found:     The package is its publisher's, and belongs in the project's place: "
                 "the new project, whole.\n"
                 "To do:     the same command with --apply.\n"),
             qPrintable(looked.out));
    QCOMPARE(looked.status, 1);

    const Answer applied = place.recover({"--apply"});
    QCOMPARE(applied.err, QString());
    QCOMPARE(applied.status, 0);
    QVERIFY(applied.out.endsWith("Now:       " + place.path("line/line.yslib") +
                                 " passes the validator.\n"));
    FileTree wanted = newProject();
    if (project.contains("logs/run.log"))
        wanted.insert("logs/run.log", project.value("logs/run.log"));
    FileTree there = place.read("line");
    QCOMPARE(readProjectVersion(place.path("line/line.yslib")), QString("2.0.0"));
    for (FileTree *tree : {&wanted, &there}) {
        tree->remove("line.yslib"); // the version is written into it
        tree->remove(".quorvane-installed-version");
    }
    QCOMPARE(there, wanted);

    const QStringList aside = place.setAside();
    QCOMPARE(aside.size(), project.isEmpty() ? 0 : 1);
    if (!aside.isEmpty()) {
        QCOMPARE(place.read("data/update/backup/" + aside.first()), project);
        QVERIFY(applied.out.contains("\nKept:      what lay in its place, as " +
                                     place.path("data/update/backup/" + aside.first()) + '\n'));
    }
    const FileTree after = place.all();
    const Answer again = place.recover({"--apply"});
    QCOMPARE(again.status, 0);
    QVERIFY(
        again.out.endsWith("Found:     The package is wholly in place. The project is whole.\n"));
    QCOMPARE(place.all(), after);
}

void RecoverFromTest::logsOfABackupAreKeptToo() {
    const Place place;
    const QString backup = "data/update/backup/line_20261120_164501";
    place.lay(backup, {{"line.yslib", "{}"}, {"logs/a.log", "old a"}, {"logs/b.log", "b"}});
    place.lay("line", {{"logs/a.log", "new a"}});
    const Answer answer = place.recover({"--apply"});
    QCOMPARE(answer.status, 0);
    const FileTree project = place.read("line");
    QCOMPARE(project.value("logs/a.log"), QByteArray("new a"));
    QCOMPARE(project.value("logs/b.log"), QByteArray("b"));
    QVERIFY(
        answer.out.contains("Kept:      a left-over, as " + place.path(backup) + ".recovered\n"));
    QCOMPARE(place.read(backup + ".recovered").size(), 3);
}

void RecoverFromTest::aRecoveryKilledBetweenItsRenamingsGoesOn() {
    const Place place;
    place.lay("data/update/backup/line_20261120_164501.set_aside", oldProject());
    place.lay("line.recovering", {{"main.ys", "half"}});
    QCOMPARE(place.recover({"--apply"}).status, 0);
    QCOMPARE(place.read("line").value("logs/run.log"), QByteArray("log of the line"));
    QCOMPARE(place.read("line").value("main.ys"), QByteArray("// new\n"));
    QVERIFY(!QFileInfo::exists(place.path("line.recovering")));
}

void RecoverFromTest::aWholeCopyThatIsLeftIsTold() {
    const Place place;
    place.lay("data/update/backup/line_20261120_164501", lacking(oldProject(), ".hidden"));
    const Answer answer = place.recover();
    QVERIFY2(answer.out.contains("\n           Without --from: What lies in the project's folder "
                                 "cannot run. The backup belongs in the project's place: the old "
                                 "project, whole.\n"),
             qPrintable(answer.out));
}

void RecoverFromTest::whatIsInPlaceIsLeftAlone_data() {
    QTest::addColumn<FileTree>("project");
    QTest::addColumn<bool>("inPlace");
    const FileTree neu = newProject();
    const auto with = [&](const QString &name, const QByteArray &content) {
        return support::laidOver(neu, {{name, content}});
    };
    QTest::newRow("the package") << neu << true;
    QTest::newRow("with another version in its project file")
        << with("line.yslib", projectFile("2.0.0")) << true;
    QTest::newRow("with other logs") << with("logs/readme.txt", "x") << true;
    QTest::newRow("with files of the line's own") << with("mine.csv", "m") << true;
    QTest::newRow("with another project file")
        << with("line.yslib", projectFile("1.9").replace("产线", "other")) << false;
    QTest::newRow("with a file that was cut off") << with("数据/new.csv", "") << false;
    QTest::newRow("with a file that is longer") << with("数据/new.csv", "nn") << false;
    QTest::newRow("with a file less") << lacking(neu, "数据/new.csv") << false;
}

void RecoverFromTest::whatIsInPlaceIsLeftAlone() {
    QFETCH(FileTree, project);
    QFETCH(bool, inPlace);
    const Place place;
    place.lay("line", project);
    const Answer answer = place.recover();
    QCOMPARE(answer.status, inPlace ? 0 : 1);
    QCOMPARE(answer.out.contains("The package is wholly in place."), inPlace);
}

void RecoverFromTest::whatIsNotBelieved_data() {
    QTest::addColumn<FileTree>("stick");
    QTest::addColumn<QString>("error"); // behind the program's name; @ stands for the stick
    const QByteArray zip = support::zipOf(newProject());
    const auto row = [&](const char *name, const QByteArray &package, const QString &manifest,
                         const QString &error) {
        QTest::newRow(name) << FileTree{{"p.zip", package}, {"manifest.json", manifest.toUtf8()}}
                            << error;
    };
    row("a manifest without a signature", zip, "{}", "@/manifest.json: signature is empty");
    row("a manifest of another publisher", zip,
        manifestOf(zip, "line", support::KeyPair::rsa(2048)),
        "@/manifest.json: RSA signature verification failed");
    row("a manifest that was changed", zip, manifestOf(zip).replace("2.0.0", "2.0.1"),
        "@/manifest.json: RSA signature verification failed");
    row("a manifest that is no JSON", zip, "no", "@/manifest.json: manifest JSON is invalid");
    row("a package that was changed", zip + ' ', manifestOf(zip),
        "@/p.zip: no project record of @/manifest.json has its hash, " + hashOf(zip + ' '));
    row("a package of another project", zip, manifestOf(zip, "line2"),
        "@/p.zip: is of the project \"line2\", and this one is \"line\"");
    row("a package that is no archive", "no", manifestOf("no"), "@/p.zip: Not a zip archive");
    const QByteArray empty = support::zipOf({{"main.ys", ""}});
    row("a package without a project", empty, manifestOf(empty), "@/p.zip: holds no project file");
    const QByteArray broken = support::zipOf(lacking(newProject(), "main.ys"));
    row("a package that cannot run", broken, manifestOf(broken),
        "@/p.zip: cannot run: [Error] scripts[0].path: 引用的文件不存在：main.ys");
}

void RecoverFromTest::whatIsNotBelieved() {
    QFETCH(FileTree, stick);
    QFETCH(QString, error);
    const Place place;
    place.lay("line", oldProject());
    place.lay("stick", stick);
    const FileTree before = place.all();
    const Answer answer = place.recover({"--apply"});
    QVERIFY2(answer.err.startsWith("quorvanectl: " + error.replace('@', place.path("stick"))),
             qPrintable(answer.err));
    QCOMPARE(answer.err.count('\n'), 1);
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 1);
    QCOMPARE(place.all(), before);
}

void RecoverFromTest::anotherKeyCanBeNamed() {
    const Place place;
    const support::KeyPair other = support::KeyPair::rsa(2048);
    const QByteArray zip = support::zipOf(newProject());
    place.lay("", {{"stick/manifest.json", manifestOf(zip, "line", other).toUtf8()},
                   {"other.pub", other.publicPem().toUtf8()}});
    QCOMPARE(place.recover({"--apply", "--key", place.path("other.pub")}).status, 0);
}

void RecoverFromTest::whatHoldsMoreThanAProjectIsNotReplaced() {
    const Place place;
    place.lay("line", oldProject());
    place.lay("line/data", {{"launcher.log", ""}});
    const FileTree before = place.all();
    const Answer answer = place.recover({"--apply", "--data", place.path("line/data")});
    QCOMPARE(answer.err, "quorvanectl: " + place.path("line") +
                             ": may not be replaced: the data folder lies in it\n");
    QCOMPARE(answer.status, 2);
    QCOMPARE(place.all(), before);
}

void RecoverFromTest::aLinkToAProjectFileStandsInNoProject() {
    const Place place;
    place.lay("far", oldProject());
    place.lay("line", {{"letter.txt", "mine"}}); // somebody's desktop
    if (!support::makeLink(place.path("far/line.yslib"), place.path("line/line.yslib")))
        QSKIP("no links on this system");
    const FileTree before = place.all();
    const Answer answer = place.recover({"--apply"});
    QCOMPARE(answer.err, "quorvanectl: " + place.path("line/line.yslib") +
                             ": is a link; name the project file that it leads to\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
    QCOMPARE(place.all(), before);
}

// One folder too high: all projects of the line would make way for one.
void RecoverFromTest::aProjectFileInTheFolderOfAllProjects() {
    const Place place;
    place.lay("line/weld", {{"line.yslib", projectFile("1.0")}, {"main.ys", ""}});
    place.lay("line/cut", {{"line.yslib", projectFile("1.0")}, {"main.ys", ""}});
    const FileTree before = place.all();
    const Answer answer = place.recover({"--apply"});
    QCOMPARE(answer.err, "quorvanectl: " + place.path("line") +
                             ": may not be replaced: several projects lie in it\n");
    QCOMPARE(answer.status, 2);
    QCOMPARE(place.all(), before);
}

void RecoverFromTest::wrongUsage_data() {
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("error");
    QTest::newRow("no manifest") << QStringList{"a.yslib", "--from", "p.zip"}
                                 << "--from and --manifest belong together";
    QTest::newRow("no package") << QStringList{"a.yslib", "--manifest", "m.json"}
                                << "--from and --manifest belong together";
    QTest::newRow("a key for nothing")
        << QStringList{"a.yslib", "--key", "update.pub"} << "--key belongs to --from";
    QTest::newRow("both packages")
        << QStringList{"a.yslib", "--from", "p.zip", "--manifest", "m.json", "--package", "p.zip"}
        << "either --from or --package";
    const QString all = "without FILE.yslib it looks at every project, and changes nothing";
    QTest::newRow("no project to change") << QStringList{"--apply"} << all;
    QTest::newRow("no project for the package") << QStringList{"--package", "p.zip"} << all;
}

void RecoverFromTest::wrongUsage() {
    QFETCH(QStringList, words);
    QFETCH(QString, error);
    const Answer answer = support::runTool(QStringList{"project", "recover"} + words);
    QCOMPARE(answer.err, "quorvanectl: " + error + '\n');
    QCOMPARE(answer.status, 2);
}

QUORVANE_TEST_MAIN(QCoreApplication, RecoverFromTest)
#include "recover_from_test.moc"
