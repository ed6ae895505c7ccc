// update explain against the launcher's own check on the same installation.
#include "quorvanectl/manifest/manifest_verify.h"
#include "run_tool.h"
#include "support/file_tree.h"
#include "support/manifest_maker.h"
#include "support/open_counter.h"
#include "support/staged_main.h"

#include "frame/app_paths.h"
#include "frame/launch_log.h"
#include "launcher/launcher_service.h"
#include "update/files/text_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTranslator>

#ifdef Q_OS_UNIX
#include "terminal.h"
#endif

using support::Answer;

namespace {

constexpr int patience = 30000; // ms

const support::KeyPair &publisher() {
    static const support::KeyPair key = support::KeyPair::rsa(2048);
    return key;
}

QString app(const QString &name = QString()) {
    return support::stageRoot() + "/app" + name;
}

// A stick, or what came from one.
QString stick(const QString &name = QString()) {
    return support::stageRoot() + "/stick" + name;
}

QString projectFile() {
    return support::stageRoot() + "/USER/projects/line3/line3.yslib";
}

QJsonObject project(const QString &version, const QString &name = "line3") {
    return {{"projects", QJsonArray{QJsonObject{{"name", name},
                                                {"version", version},
                                                {"zipUrl", "line3.zip"},
                                                {"zipSha256", QString(64, 'a')}}}}};
}

QJsonObject runtime(const QString &version, const QString &minimum = QString()) {
    return {{"runtime", QJsonObject{{"setupUrl", "pkg/runtime.exe"},
                                    {"version", version},
                                    {"minVersion", minimum}}}};
}

QJsonObject both(QJsonObject one, const QJsonObject &other) {
    for (auto entry = other.begin(); entry != other.end(); ++entry)
        one.insert(entry.key(), entry.value());
    return one;
}

QStringList listing(const QString &folder) {
    QStringList entries;
    QDirIterator all(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                     QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString entry = all.next();
        entries.append(entry + ' ' +
                       QString::number(all.fileInfo().lastModified().toMSecsSinceEpoch()));
    }
    entries.sort();
    return entries << QString::number(QFileInfo(folder).lastModified().toMSecsSinceEpoch());
}

// What the launcher makes of the manifest.
struct Launcher {
    bool found = false;
    QString summary;
    QStringList log;
    UpdateContext context;

    explicit Launcher(const QString &url = QString()) {
        context.projectPath = projectFile();
        redirectLaunchLog([this](const QString &line) { log << line; });
        const QString manifest = stick("/manifest.json");
        found =
            url.isEmpty()
                ? context.runUpdateCheck(manifest, &summary)
                : context.weighOnlineManifest(QUrl(url), readTextFile(manifest).toUtf8(), &summary);
        redirectLaunchLog(nullptr);
    }
};

QStringList arguments(const QStringList &more = {}) {
    return QStringList{"update",    "explain",    stick("/manifest.json"), "--install", app(),
                       "--project", projectFile()} +
           more;
}

} // namespace

class UpdateExplainTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void saysWhatTheLauncherSays_data();
    void saysWhatTheLauncherSays();
#ifdef Q_OS_UNIX // where the kernel counts
    void readsTheProjectTwice_data();
    void readsTheProjectTwice();
#endif
    void refusedManifestIsAFinding();
#ifdef Q_OS_UNIX // where a test can be a terminal
    void theVerdictOnTheSignatureHasItsColour();
#endif
    void speaksTheLaunchersLanguage();
    void installationIsFoundByItsFolderToo();
    void refusals_data();
    void refusals();
};

// A program that has just ended may hold what it used for a moment more.
void UpdateExplainTest::init() {
    for (const QString &folder : {app("/config"), app("/translations"), stick(),
                                  support::stageRoot() + "/USER", support::stageRoot() + "/data"})
        QTRY_VERIFY_WITH_TIMEOUT(QDir(folder).removeRecursively(), patience);
    support::writeTree(app(),
                       {{"config/update.pub", publisher().publicPem().toUtf8()},
                        {"config/FunctionLib.ini", ""},
                        {"config/release_version.json", R"({"runtimePackageVersion": "1.0.0"})"}});
    support::writeTree(stick(), {{"line3.zip", "zip"}, {"pkg/runtime.exe", "exe"}});
    support::writeTree(QFileInfo(projectFile()).path(),
                       {{"line3.yslib", R"({"project": {"name": "line3", "version": "1.5"}})"}});
}

void UpdateExplainTest::saysWhatTheLauncherSays_data() {
    QTest::addColumn<QJsonObject>("manifest");
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QString>("fingerprint");
    QTest::addColumn<QString>("items");
    QTest::addColumn<QString>("projectReason");
    QTest::addColumn<QString>("runtimeReason");
    const QString none;
    const QString noRuntime = "Runtime 未提供 setupUrl。";
    QTest::newRow("a newer project") << project("2.0") << none << true << "project:line3:2.0"
                                     << "project:2.0"
                                     << "可更新到 2.0。" << noRuntime;
    QTest::newRow("the project that is installed")
        << project("1.5") << none << false << none << none
        << "当前项目版本 1.5 已不低于更新版本 1.5。" << noRuntime;
    QTest::newRow("a project without a version") << project("") << none << true << "project:line3:"
                                                 << "project:"
                                                 << "可更新到 新版本。" << noRuntime;
    QTest::newRow("another project") << project("2.0", "line4") << none << false << none << none
                                     << "未找到与当前项目匹配的项目记录（line3）。" << noRuntime;
    QTest::newRow("a newer runtime and an old project")
        << both(project("1.0"), runtime("1.2.0")) << none << true << "runtime:1.2.0"
        << "runtime:1.2.0"
        << "当前项目版本 1.5 已不低于更新版本 1.0。"
        << "可从 1.0.0 更新到 1.2.0。";
    QTest::newRow("a runtime that demands more")
        << runtime("1.2.0", "1.1.0") << none << false << none << none
        << "未找到与当前项目匹配的项目记录（line3）。"
        << "当前版本 1.0.0 低于该更新包最小可更新版本 1.1.0。";
    QTest::newRow("plug-ins that are missing")
        << both(project("2.0"),
                {{"plugins", QJsonArray{QJsonObject{{"id", "core"}, {"path", "bin/x.dll"}}}}})
        << none << true << "project:line3:2.0"
        << "project:2.0"
        << "可更新到 2.0。" << noRuntime;
    QTest::newRow("an online offer")
        << both(project("2.0"), runtime("1.2.0")) << "https://updates.invalid/a/manifest.json"
        << true << "project:line3:2.0|runtime:1.2.0"
        << "project:2.0, runtime:1.2.0"
        << "可更新到 2.0。"
        << "可从 1.0.0 更新到 1.2.0。";
    QTest::newRow("an empty manifest") << QJsonObject() << none << false << none << none
                                       << "未找到与当前项目匹配的项目记录（line3）。" << noRuntime;
}

void UpdateExplainTest::saysWhatTheLauncherSays() {
    QFETCH(QJsonObject, manifest);
    QFETCH(QString, url);
    QFETCH(bool, found);
    support::writeTree(
        stick(), {{"manifest.json", support::signedManifest(manifest, publisher()).toUtf8()}});
    const Launcher launcher(url);
    QCOMPARE(launcher.found, found);
    const QStringList before = listing(support::stageRoot());
    QStringList more{"--format", "json"};
    if (!url.isEmpty())
        more.append({"--url", url});
    const Answer answer = support::runProgram(arguments(more), "/");
    QCOMPARE(listing(support::stageRoot()), before);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);

    const QJsonObject told = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    QCOMPARE(told.keys(), (QStringList{"choices", "fingerprint", "found", "items", "log", "summary",
                                       "verify", "versions"}));
    QCOMPARE(told["found"].toBool(), found);
    QCOMPARE(told["summary"].toString(), launcher.summary);
    QCOMPARE(told["log"].toArray(), QJsonArray::fromStringList(launcher.log));
    QTEST(told["fingerprint"].toString(), "fingerprint");
    QTEST(told["items"].toString(), "items");
    QCOMPARE(told["fingerprint"].toString(), launcher.context.onlineUpdateFingerprint());
    const QJsonObject choices = told["choices"].toObject();
    QCOMPARE(choices.keys(),
             (QStringList{"editor", "launcher", "project", "pythonTools", "runtime"}));
    QTEST(choices["project"].toObject()["reason"].toString(), "projectReason");
    QTEST(choices["runtime"].toObject()["reason"].toString(), "runtimeReason");
    QCOMPARE(choices["project"].toObject()["available"].toBool(),
             launcher.context.choices().project.available);
    QCOMPARE(told["versions"].toObject(), (QJsonObject{{"runtime", "1.0.0"},
                                                       {"launcher", ""},
                                                       {"editor", ""},
                                                       {"pythonTools", ""},
                                                       {"project", "1.5"}}));
    QCOMPARE(told["verify"].toObject()["details"].toString(),
             QString("BCryptVerifySignature direct"));

    // The text form ends with the summary.
    const QStringList text = url.isEmpty() ? QStringList() : QStringList{"--url", url};
    QVERIFY(support::runProgram(arguments(text), "/")
                .out.endsWith("What the launcher says\n" + launcher.summary + '\n'));
}

#ifdef Q_OS_UNIX // where the kernel counts
void UpdateExplainTest::readsTheProjectTwice_data() {
    QTest::addColumn<QJsonObject>("manifest");
    QTest::newRow("an offer") << both(project("2.0"), runtime("1.2.0"));
    QTest::newRow("no offer") << project("1.0");
}

// Once to see that it is a project, once to weigh it.
void UpdateExplainTest::readsTheProjectTwice() {
    QFETCH(QJsonObject, manifest);
    support::writeTree(
        stick(), {{"manifest.json", support::signedManifest(manifest, publisher()).toUtf8()}});
    support::OpenCounter counter({QFileInfo(projectFile()).path(), app("/config")});
    for (const char *format : {"text", "json"}) {
        QCOMPARE(support::runTool(arguments({"--format", format})).status, 0);
        const support::Opens opens = counter.take();
        QCOMPARE(opens.value(projectFile()), 2);
        QCOMPARE(opens.value(app("/config/release_version.json")), 1);
    }
}

#endif
void UpdateExplainTest::refusedManifestIsAFinding() {
    QString manifest = support::signedManifest(project("2.0"), publisher());
    support::writeTree(stick(), {{"manifest.json", manifest.replace("2.0", "2.1").toUtf8()}});
    const Launcher launcher;
    const Answer answer = support::runProgram(arguments({"--format", "json"}), "/");
    QCOMPARE(answer.status, 1);
    const QJsonObject told = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    QCOMPARE(told["summary"].toString(), launcher.summary);
    QVERIFY(launcher.summary.startsWith("更新被拒绝：RSA signature verification failed ("));
    QCOMPARE(told["log"].toArray(), QJsonArray::fromStringList(launcher.log));
    QCOMPARE(told["verify"].toObject()["ok"].toBool(), false);
    QCOMPARE(told["verify"].toObject()["sig_bytes"].toInt(), 256);
    QVERIFY(told["verify"].toObject()["details"].toString().contains("CryptVerifySignature"));
    const QString text = support::runProgram(arguments(), "/").out;
    QVERIFY(!text.contains("Items"));
    QVERIFY(text.endsWith("What the launcher says\n" + launcher.summary + '\n'));
}

#ifdef Q_OS_UNIX
void UpdateExplainTest::theVerdictOnTheSignatureHasItsColour() {
    qputenv("TERM", "xterm");
    qunsetenv("NO_COLOR");
    QString manifest = support::signedManifest(project("2.0"), publisher());
    for (const bool isSound : {true, false}) {
        if (!isSound)
            manifest.replace("2.0", "2.1");
        support::writeTree(stick(), {{"manifest.json", manifest.toUtf8()}});
        support::Terminal shown(QUORVANE_TOOL, arguments());
        (void)shown.wait();
        const QByteArray screen = shown.screen();
        const QByteArray heading = "Signature\x1b[0m\r\n  ";
        const QByteArray colour = isSound ? "\x1b[32m" : "\x1b[31m";
        QVERIFY2(screen.contains(heading + colour), screen.constData());
    }
}
#endif

void UpdateExplainTest::speaksTheLaunchersLanguage() {
    support::writeTree(stick(), {{"manifest.json",
                                  support::signedManifest(project("2.0"), publisher()).toUtf8()}});
    QVERIFY(QDir().mkpath(app("/translations")));
    QVERIFY(QFile::copy(QUORVANE_TRANSLATION, app("/translations/quorvane_en.qm")));
    const QString chinese = Launcher().summary;
    QTranslator english;
    QVERIFY(english.load(QStringLiteral(QUORVANE_TRANSLATION)));
    QCoreApplication::installTranslator(&english);
    const QString translated = Launcher().summary;
    QCoreApplication::removeTranslator(&english);
    QVERIFY(chinese != translated);
    QVERIFY(support::runProgram(arguments(), "/").out.endsWith('\n' + translated + '\n'));
    QVERIFY(support::runProgram(arguments({"--locale", "zh_CN"}), "/")
                .out.endsWith('\n' + chinese + '\n'));
}

void UpdateExplainTest::installationIsFoundByItsFolderToo() {
    support::writeTree(stick(), {{"manifest.json",
                                  support::signedManifest(project("2.0"), publisher()).toUtf8()}});
    const QString pc = support::stageRoot() + "/pc";
    support::writeTree(pc + "/bin", {{"config/update.pub", publisher().publicPem().toUtf8()},
                                     {"config/FunctionLib.ini", ""}});
    const Answer answer =
        support::runProgram({"update", "explain", stick("/manifest.json"), "--install", pc}, "/");
    QTRY_VERIFY_WITH_TIMEOUT(QDir(pc).removeRecursively(), patience);
    QCOMPARE(answer.status, 0);
    QVERIFY(answer.out.contains(pc + "/bin/config/update.pub"));
}

void UpdateExplainTest::refusals_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");
    QTest::newRow("no installation")
        << QStringList{"--install", "/proc"} << "/proc: no installation is there";
    QTest::newRow("a project that is no JSON")
        << QStringList{"--project", "line3.zip"}
        << "line3.zip: is no JSON: line 1, column 1: illegal value";
    QTest::newRow("no project") << QStringList{"--project", "none.yslib"} << "none.yslib";
    QTest::newRow("no address") << QStringList{"--url", "nowhere"}
                                << "nowhere: not an address that begins with http:// or https://";
    QTest::newRow("no language") << QStringList{"--locale", "de"} << "de: the launcher speaks";
}

void UpdateExplainTest::refusals() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);
    support::writeTree(stick(), {{"manifest.json",
                                  support::signedManifest(project("2.0"), publisher()).toUtf8()}});
    const Answer answer = support::runProgram(
        QStringList{"update", "explain", "manifest.json", "--install", app()} + arguments, stick());
    QCOMPARE(answer.status, 2);
    QVERIFY2(answer.err.contains(error), qPrintable(answer.err));
    QCOMPARE(answer.err.count('\n'), 1);
    QCOMPARE(answer.out, QString());
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateExplainTest)
#include "update_explain_test.moc"
