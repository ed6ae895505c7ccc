// A project that comes back from its publisher's package: which record of a manifest is its, what may not be
// replaced, and what lies where if it does not succeed.
#include "quorvanectl/recovery/package_recovery.h"

#include "frame/app_paths.h"
#include "launcher/offer/apply_places.h"
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/key_maker.h"
#include "support/library_file.h"
#include "support/manifest_maker.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

using ctl::RecoveryResult;
using ctl::UpdateRemains;
using support::FileTree;

namespace {

QByteArray projectFile(const QByteArray &name, const QByteArray &script = "main.ys") {
    return R"({"schemaVersion": 1, "project": {"name": ")" + name +
           R"(", "displayName": "a", "createdAt": "2026-01-01", "version": "1.0"},
"scripts": [{"id": "main", "path": ")" +
           script + R"(", "role": "main"}], "tasks": {"main": {"entryScriptId": "main"}}})";
}

const FileTree newProject{
    {"line.yslib", projectFile("line")}, {"main.ys", "// new\n"}, {"logs/a.log", "of the package"}};

const support::KeyPair &publisher() {
    static const support::KeyPair key = support::KeyPair::rsa(2048);
    return key;
}

QString hashOf(const QByteArray &bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

} // namespace

class PackageRecoveryTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const { return folder->filePath(name); }
    DataFolder data() const { return {path("data")}; }
    FileTree all() const { return support::readTree(folder->path()); }
    FileTree asides() const;
    void publish(const FileTree &content, const QJsonValue &records) const;
    UpdateRemains remains() const;
    bool prove(ctl::ProvedPackage *package, QString *error) const;
    RecoveryResult recover() const;

private Q_SLOTS:
    void initTestCase();
    void init();
    void theRecordOfThisProject_data();
    void theRecordOfThisProject();
    void recordsOfNobody_data();
    void recordsOfNobody();
    void whatHoldsMoreThanAProject_data();
    void whatHoldsMoreThanAProject();
    void theLauncherStays();
    void foldersThatAreMissingAreMade();
    void aFileInTheProjectsPlaceIsKept();
    void logsFromEverywhere_data();
    void logsFromEverywhere();
    void aPackageThatIsGone();
    void placesThatCannotBeHad_data();
    void placesThatCannotBeHad();
    void aPackageThatFitsNotThisFolder();
};

void PackageRecoveryTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void PackageRecoveryTest::init() {
    folder.reset(new QTemporaryDir);
    support::writeTree(folder->path(),
                       {{"update.pub", publisher().publicPem().toUtf8()}, {"pc/", ""}});
}

// What was set aside among the backups, without the time in its name.
FileTree PackageRecoveryTest::asides() const {
    FileTree found;
    const FileTree backups = support::readTree(data().updateBackup());
    for (auto file = backups.begin(); file != backups.end(); ++file) {
        const QString name = file.key().section('/', 0, 0);
        if (name.endsWith(".set_aside"))
            found.insert(file.key().section('/', 1), file.value());
    }
    return found;
}

// "#" in a record stands for the package's hash.
void PackageRecoveryTest::publish(const FileTree &content, const QJsonValue &records) const {
    const QByteArray zip = support::zipOf(content);
    QByteArray text = QJsonDocument(QJsonObject{{"projects", records}}).toJson();
    text.replace("#", hashOf(zip).toUtf8());
    const QString manifest =
        support::signedManifest(QJsonDocument::fromJson(text).object(), publisher());
    support::writeTree(folder->path(), {{"p.zip", zip}, {"manifest.json", manifest.toUtf8()}});
}

UpdateRemains PackageRecoveryTest::remains() const {
    UpdateRemains found;
    QString error;
    if (!ctl::lookAtRemains({path("pc/line/line.yslib"), data(), {}}, &found, &error))
        qFatal("%s", qPrintable(error));
    return found;
}

bool PackageRecoveryTest::prove(ctl::ProvedPackage *package, QString *error) const {
    return package->prove({path("p.zip"), path("manifest.json"), path("update.pub")}, remains(),
                          error);
}

RecoveryResult PackageRecoveryTest::recover() const {
    ctl::ProvedPackage package;
    RecoveryResult failed;
    return prove(&package, &failed.error) ? ctl::recoverFromPackage(package, remains(), data())
                                          : failed;
}

void PackageRecoveryTest::theRecordOfThisProject_data() {
    QTest::addColumn<FileTree>("there"); // of the line PC
    QTest::addColumn<QJsonArray>("records");
    QTest::addColumn<QString>("version");
    const FileTree ours{{"pc/line/line.yslib", projectFile("weld")}};
    const QString backup = "data/update/backup/line_20261120_164501/line.yslib";
    const auto record = [](const QString &name, const QString &version) {
        return QJsonObject{{"name", name}, {"version", version}, {"zipSha256", "#"}};
    };
    const QJsonObject other{{"name", "weld"}, {"version", "9"}, {"zipSha256", "00"}};
    QTest::newRow("by the name in its project file")
        << ours << QJsonArray{record("weld", "2.0.0")} << "2.0.0";
    QTest::newRow("in other letters") << ours << QJsonArray{record("Weld", "2.0.0")} << "2.0.0";
    QTest::newRow("by the name of its folder, as the launcher takes it")
        << ours << QJsonArray{record("LINE", "2.0.0")} << "2.0.0";
    QTest::newRow("the hash counts, and not the first of that name")
        << ours << QJsonArray{other, record("weld", "2.0.0")} << "2.0.0";
    QTest::newRow("of two with the same package the one of this project")
        << ours << QJsonArray{record("cut", "3.0.0"), record("weld", "2.0.0")} << "2.0.0";
    QTest::newRow("of two of this project the first")
        << ours << QJsonArray{record("weld", "2.0.0"), record("weld", "3.0.0")} << "2.0.0";
    QTest::newRow("behind what is no record")
        << ours << QJsonArray{7, "weld", record("weld", "2.0.0")} << "2.0.0";
    QTest::newRow("by the name in its backup")
        << FileTree{{"pc/line/line.yslib", "{"}, {backup, projectFile("weld")}}
        << QJsonArray{record("cut", "3.0.0"), record("weld", "2.0.0")} << "2.0.0";
    QTest::newRow("any, where nothing tells its name any more")
        << FileTree{{"pc/line/line.yslib", "{"}} << QJsonArray{record("cut", "3.0.0")} << "3.0.0";
}

void PackageRecoveryTest::theRecordOfThisProject() {
    QFETCH(FileTree, there);
    QFETCH(QJsonArray, records);
    support::writeTree(folder->path(), there);
    publish(newProject, records);
    ctl::ProvedPackage package;
    QString error;
    QVERIFY2(prove(&package, &error), qPrintable(error));
    QTEST(package.version(), "version");
    QCOMPARE(package.files(), 3);
}

void PackageRecoveryTest::recordsOfNobody_data() {
    QTest::addColumn<QJsonValue>("records");
    QTest::addColumn<QString>("error"); // "@" stands for the folder
    const QString none = "@/p.zip: no project record of @/manifest.json has its hash, #";
    const auto with = [](const QString &name, const QString &hash) {
        return QJsonValue(QJsonArray{QJsonObject{{"name", name}, {"zipSha256", hash}}});
    };
    QTest::newRow("no records") << QJsonValue(QJsonValue::Null) << none;
    QTest::newRow("a record that stands alone")
        << QJsonValue(QJsonObject{{"name", "line"}, {"zipSha256", "#"}}) << none;
    QTest::newRow("without a hash") << with("line", "") << none;
    QTest::newRow("with half a hash") << with("line", "0123") << none;
    QTest::newRow("of another project")
        << with("cut", "#") << "@/p.zip: is of the project \"cut\", and this one is \"line\"";
    QTest::newRow("of a project whose name begins so")
        << with("line2", "#") << "@/p.zip: is of the project \"line2\", and this one is \"line\"";
}

void PackageRecoveryTest::recordsOfNobody() {
    QFETCH(QJsonValue, records);
    QFETCH(QString, error);
    support::writeTree(folder->path(), {{"pc/line/line.yslib", projectFile("line")}});
    publish(newProject, records);
    ctl::ProvedPackage package;
    QString reason;
    QVERIFY(!prove(&package, &reason));
    error.replace("@", folder->path());
    QCOMPARE(reason, error.replace("#", hashOf(support::zipOf(newProject))));
}

void PackageRecoveryTest::whatHoldsMoreThanAProject_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("data");
    QTest::addColumn<QString>("reason"); // empty: it may be replaced
    const QString holdsData = "the data folder lies in it";
    const QString several = "several projects lie in it";
    const FileTree line{{"pc/line/line.yslib", ""}};
    const auto with = [&](const FileTree &more) { return support::laidOver(line, more); };
    QTest::newRow("a project") << line << "data"
                               << "";
    QTest::newRow("the data folder is the project's") << line << "pc/line" << holdsData;
    QTest::newRow("the data folder below it")
        << with({{"pc/line/a/data/", ""}}) << "pc/line/a/data" << holdsData;
    QTest::newRow("a data folder beside it whose name begins so")
        << with({{"pc/line2/data/", ""}}) << "pc/line2/data"
        << "";
    QTest::newRow("a data folder that is not there") << line << "pc/line/none"
                                                     << "";
    QTest::newRow("a project that is gone") << FileTree() << "data"
                                            << "";
    QTest::newRow("two projects, each in its folder")
        << FileTree{{"pc/line/a/a.yslib", ""}, {"pc/line/b/b.yslib", ""}} << "data" << several;
    QTest::newRow("a project whose file lies deeper down")
        << FileTree{{"pc/line/sub/line.yslib", ""}, {"pc/line/more/a.ys", ""}} << "data"
        << "";
    QTest::newRow("a project with copies of others in it")
        << with({{"pc/line/a/a.yslib", ""}, {"pc/line/b/b.yslib", ""}}) << "data"
        << "";
}

void PackageRecoveryTest::whatHoldsMoreThanAProject() {
    QFETCH(FileTree, tree);
    QFETCH(QString, data);
    QFETCH(QString, reason);
    support::writeTree(folder->path(), tree);
    const QString why = ctl::whyNotReplaced(path("pc/line"), {path(data)});
    QCOMPARE(why,
             reason.isEmpty() ? QString() : path("pc/line") + ": may not be replaced: " + reason);
}

void PackageRecoveryTest::theLauncherStays() {
    const QString program = AppPaths::applicationDirectory();
    QCOMPARE(ctl::whyNotReplaced(program, data()),
             program + ": may not be replaced: the launcher lies in it");
    const QString above = QFileInfo(program).path();
    QCOMPARE(ctl::whyNotReplaced(above, data()),
             above + ": may not be replaced: the launcher lies in it");
    const QString root = support::rooted("/");
    QCOMPARE(ctl::whyNotReplaced(root, data()),
             root + ": may not be replaced: it is the root of a volume");
    const QString link = path("link");
    if (support::makeLink(program, link))
        QCOMPARE(ctl::whyNotReplaced(link, data()),
                 link + ": may not be replaced: the launcher lies in it");
}

const QJsonArray ofLine{QJsonObject{{"name", "line"}, {"version", "2.0.0"}, {"zipSha256", "#"}}};

void PackageRecoveryTest::foldersThatAreMissingAreMade() {
    QVERIFY(QDir(path("pc")).removeRecursively());
    publish(newProject, ofLine);
    const RecoveryResult result = recover();
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.keptAs, QString());
    QCOMPARE(result.done, QStringList());
    QCOMPARE(support::readTree(path("pc/line")).value("main.ys"), QByteArray("// new\n"));
    QCOMPARE(QDir(path("pc")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList("line"));
}

void PackageRecoveryTest::aFileInTheProjectsPlaceIsKept() {
    support::writeTree(path("pc"), {{"line", "mine"}});
    publish(newProject, ofLine);
    const RecoveryResult result = recover();
    QVERIFY2(result.ok, qPrintable(result.error));
    QFile kept(result.keptAs);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("mine"));
    QCOMPARE(QFileInfo(result.keptAs).path(), data().updateBackup());
}

void PackageRecoveryTest::logsFromEverywhere_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<FileTree>("logs");
    const QString backup = "data/update/backup/line_20261120_164501";
    const FileTree half{{"pc/line/logs/a.log", "of the line"}, {"pc/line/logs/x/b.log", "b"}};
    QTest::newRow("none but the package's") << FileTree() << FileTree{{"a.log", "of the package"}};
    QTest::newRow("the line's over the package's")
        << half << FileTree{{"a.log", "of the line"}, {"x/b.log", "b"}};
    QTest::newRow("a file called as the folder is none")
        << FileTree{{"pc/line/logs", "a file"}} << FileTree{{"a.log", "of the package"}};
    QTest::newRow("the line's over those of a backup")
        << support::laidOver(half, {{backup + "/line.yslib", ""},
                                    {backup + "/logs/a.log", "old"},
                                    {backup + "/logs/c.log", "c"}})
        << FileTree{{"a.log", "of the line"}, {"c.log", "c"}, {"x/b.log", "b"}};
    QTest::newRow("of what a recovery that was killed set aside, the newest over all")
        << FileTree{{backup + ".set_aside/logs/a.log", "older"},
                    {backup + ".set_aside/logs/d.log", "d"},
                    {"data/update/backup/line_20261121_080000.set_aside/logs/a.log", "newer"}}
        << FileTree{{"a.log", "newer"}, {"d.log", "d"}};
    QTest::newRow("set aside beside the project, as on another volume")
        << FileTree{{backup + ".set_aside/logs/a.log", "among the backups"},
                    {"pc/line.set_aside_20261120_164501/logs/a.log", "beside"}}
        << FileTree{{"a.log", "beside"}};
    QTest::newRow("of another project none")
        << FileTree{{"data/update/backup/line2_20261120_164501.set_aside/logs/a.log", "x"},
                    {"pc/line2.set_aside_20261120_164501/logs/a.log", "x"}}
        << FileTree{{"a.log", "of the package"}};
}

void PackageRecoveryTest::logsFromEverywhere() {
    QFETCH(FileTree, tree);
    QFETCH(FileTree, logs);
    support::writeTree(folder->path(), tree);
    publish(newProject, ofLine);
    const RecoveryResult result = recover();
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(support::below(support::readTree(path("pc/line")), "logs"), logs);
    if (tree.contains("pc/line/logs"))
        QCOMPARE(asides(), (FileTree{{"logs", "a file"}}));
}

void PackageRecoveryTest::aPackageThatIsGone() {
    support::writeTree(folder->path(), {{"pc/line/line.yslib", projectFile("line")}});
    publish(newProject, ofLine);
    QVERIFY(QFile::remove(path("p.zip")));
    const FileTree before = all();
    const RecoveryResult result = recover();
    QVERIFY(!result.ok);
    QVERIFY2(result.error.startsWith(path("p.zip") + ": cannot be copied to ") &&
                 result.error.endsWith("/package.zip"),
             qPrintable(result.error));
    QCOMPARE(all(), before);
}

void PackageRecoveryTest::placesThatCannotBeHad_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("error"); // "@" stands for the folder
    const FileTree half{{"pc/line/line.yslib", projectFile("line")}};
    QTest::newRow("a file in the place of the data folder")
        << support::laidOver(half, {{"data", "mine"}}) << "cannot make a folder for @/pc/line";
    QTest::newRow("a file in the place of the backups")
        << support::laidOver(half, {{"data/update/backup", "mine"}})
        << "cannot make a folder for @/pc/line";
}

void PackageRecoveryTest::placesThatCannotBeHad() {
    QFETCH(FileTree, tree);
    QFETCH(QString, error);
    support::writeTree(folder->path(), tree);
    publish(newProject, ofLine);
    const FileTree before = all();
    const RecoveryResult result = recover();
    QVERIFY(!result.ok);
    QCOMPARE(result.error, error.replace("@", folder->path()));
    QCOMPARE(result.keptAs, QString());
    QCOMPARE(all(), before);
}

// Of two project files the one counts that is called as its folder: unpacked elsewhere it was the other.
void PackageRecoveryTest::aPackageThatFitsNotThisFolder() {
    const FileTree project{{"unpacked.yslib", projectFile("line")},
                           {"line.yslib", projectFile("line", "none.ys")},
                           {"main.ys", ""}};
    support::writeTree(path("pc/line"), {{"line.yslib", projectFile("line")}});
    publish(project, ofLine);
    const FileTree before = support::readTree(path("pc"));
    const RecoveryResult result = recover();
    QVERIFY(!result.ok);
    QCOMPARE(result.error, path("pc/line") + ".recovering: what was unpacked cannot run");
    QCOMPARE(support::readTree(path("pc")), before);
}

QUORVANE_TEST_MAIN(QCoreApplication, PackageRecoveryTest)
#include "package_recovery_test.moc"
