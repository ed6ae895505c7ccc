// The update check on its own context: where a manifest comes from, whether it is believed, and
// what it offers.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "launcher/offer/stick_search.h"
#include "support/manifest_maker.h"
#include "support/platform.h"
#include "support/scripted_server.h"
#include "support/search_path.h"
#include "support/staged_main.h"
#include "update/default_manifest_url.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>

namespace {

QString onlineUrl; // of this test's server

const support::KeyPair &publisher() {
    static const support::KeyPair key = support::KeyPair::rsa(2048);
    return key;
}

QString stickFolder() {
    return support::stageRoot() + "/stick/QuorvanerUpdate";
}

QString stickManifest() {
    return stickFolder() + "/manifest.json";
}

QJsonObject component(const QString &version, const QString &minVersion = QString()) {
    return {{"version", version}, {"minVersion", minVersion}, {"setupUrl", "setup.exe"}};
}

QJsonObject project(const QString &name, const QString &version) {
    return {{"name", name}, {"version", version}, {"zipUrl", "a.zip"}, {"zipSha256", "00"}};
}

QString signedRuntime() {
    return support::signedManifest({{"runtime", component("1.2.0")}}, publisher());
}

// One signed value differs from what was signed.
QString tampered() {
    QJsonObject manifest = QJsonDocument::fromJson(signedRuntime().toUtf8()).object();
    manifest.insert("publishedAt", "later");
    return support::jsonText(manifest);
}

QString refusalLines() {
    return "Runtime：Runtime 未提供 setupUrl。\nLauncher：Launcher 未提供 setupUrl。\n"
           "Editor：Editor 未提供 setupUrl。\nPython 工具：Python 工具 未提供 setupUrl。";
}

QString found(const QString &source, bool fromUsb, const QString &items) {
    return "已验证的更新可用（来源：" + source + "）。\n可更新项：" + items + '\n' +
           (fromUsb ? "检测到离线更新包，可在主界面选择「立即更新」或继续启动。"
                    : "发现在线更新，可在主界面选择「立即更新」「稍后提醒」或「跳过此版本」。");
}

} // namespace

QString defaultManifestUrl() {
    return onlineUrl;
}

class UpdateCheckTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void evaluateManifest_data();
    void evaluateManifest();
    void aProjectWithoutANameGoesByItsFolder_data();
    void aProjectWithoutANameGoesByItsFolder();
    void evaluateManifestKeepsTheRecords();
    void resolveManifestUrl_data();
    void resolveManifestUrl();
    void aStickWinsOverTheNetwork();
    void aStickWhoseHashCannotBeComputedIsTaken();
    void aStickThatCannotBeReadLeadsToTheNetwork_data();
    void aStickThatCannotBeReadLeadsToTheNetwork();
    void aStickThatProvesFalseDoesNotLeadToTheNetwork();
    void theNetworkServesWithoutAStick();
    void theManifestIsFetchedOverEightRedirects();
    void aSilentServerIsWaitedForThreeSeconds();
    void theClientIsGivenThreeSeconds();
    void volumesThatDoNotAnswerLeadToTheNetwork();
    void theNetworkFails_data();
    void theNetworkFails();
    void anOnlineManifestIsRefused_data();
    void anOnlineManifestIsRefused();
    void aByteOrderMarkAloneIsNoManifest();
    void aManifestThatOffersNothingFillsTheSnapshot();
    void aCancelledCheckAsksNobody();

private:
    static QString appPath(const QString &name);
    static void serve(support::ScriptedServer &server, const QString &body, int status = 200);
};

void UpdateCheckTest::init() {
    installation::reset();
    QDir(support::stageRoot() + "/stick").removeRecursively();
    QVERIFY(installation::write(appPath("config/update.pub"), publisher().publicPem()));
    (void)installation::takeLog();
    onlineUrl = "http://127.0.0.1:1/Quorvaner/Update/manifest.json";
}

void UpdateCheckTest::evaluateManifest_data() {
    QTest::addColumn<QJsonObject>("manifest");
    QTest::addColumn<QString>("folder"); // of the project; empty: no project
    QTest::addColumn<bool>("expected");
    QTest::addColumn<QString>("summary"); // %p: the project file
    QTest::addColumn<QString>("entry");   // the version of the project record that is kept
    const QString nothing = "未检测到高于当前版本的可用更新。\n项目：";
    const QString notFound = "未找到与当前项目匹配的项目记录（%1）。\n";
    const QString head = "已验证的更新可用（来源：src）。\n";
    const QString installed = "当前项目版本：1.1（%p）\n";
    const QString tail = "\n发现在线更新，可在主界面选择「立即更新」「稍后提醒」或「跳过此版本」。";
    QTest::newRow("an empty manifest without a project")
        << QJsonObject() << "" << false << nothing + notFound.arg("") + refusalLines() << "";
    QTest::newRow("without a project no record matches, demo included")
        << QJsonObject{{"projects", QJsonArray{project("demo", "2.0.0")}}} << "" << false
        << nothing + notFound.arg("") + refusalLines() << "";
    QTest::newRow("a project by its name")
        << QJsonObject{{"projects", QJsonArray{project("x", "9"), project("LINE", "2.0.0")}}}
        << "folder" << true << head + installed + "可更新项：Project -> 2.0.0" + tail << "2.0.0";
    QTest::newRow("a project by its folder")
        << QJsonObject{{"projects", QJsonArray{project("Folder", "2.0.0")}}} << "folder" << true
        << head + installed + "可更新项：Project -> 2.0.0" + tail << "2.0.0";
    QTest::newRow("a project without a version on offer")
        << QJsonObject{{"projects", QJsonArray{project("line", "")}}} << "folder" << true
        << head + installed + "可更新项：Project -> 新版本" + tail << "";
    QTest::newRow("the version on offer is shown as it stands")
        << QJsonObject{{"projects", QJsonArray{project("line", " v2.5 ")}}} << "folder" << true
        << head + installed + "可更新项：Project ->  v2.5 " + tail << " v2.5 ";
    QTest::newRow("only the first record that matches is looked at")
        << QJsonObject{{"projects", QJsonArray{project("line", "1.0"), project("line", "9.0")}}}
        << "folder" << false
        << nothing + "当前项目版本 1.1 已不低于更新版本 1.0。\n" + refusalLines() << "";
    QTest::newRow("demo serves a copy of it")
        << QJsonObject{{"projects", QJsonArray{project("demo", "2.0.0")}}} << "demo_line3" << true
        << head + installed + "可更新项：Project -> 2.0.0" + tail << "2.0.0";
    QTest::newRow("projects of the wrong type match nothing")
        << QJsonObject{{"projects", project("line", "9.0")}} << "folder" << false
        << nothing + notFound.arg("line") + refusalLines() << "";
    QTest::newRow("all wrong types")
        << QJsonObject{{"projects", 5},
                       {"runtime", "x"},
                       {"editor", QJsonArray()},
                       {"plugins", QJsonObject()}}
        << "folder" << false << nothing + notFound.arg("line") + refusalLines() << "";
    QTest::newRow("components in their order")
        << QJsonObject{{"pythonTools", component("1.4.0")},
                       {"editor", component("1.3.0")},
                       {"launcher", component("1.2.0")},
                       {"runtime", component("1.1.1")}}
        << "" << true
        << head +
               "可更新项：Runtime -> 1.1.1, Launcher -> 1.2.0, Editor -> 1.3.0, "
               "Python 工具 -> 1.4.0" +
               tail
        << "";
    QTest::newRow("a runtime of the lowest version is not warned of")
        << QJsonObject{{"runtime", component("1.1.1", "1.0.0")}} << "" << true
        << head + "可更新项：Runtime -> 1.1.1" + tail << "";
    QTest::newRow("warnings stand before the last line of an offer")
        << QJsonObject{{"launcher", component("1.2.0")},
                       {"runtime", component("1.1.1", "1.0.5")},
                       {"plugins", QJsonArray{QJsonObject{{"id", "c"}, {"path", "/no.dll"}}}}}
        << "" << true
        << head +
               "可更新项：Launcher -> 1.2.0\n"
               "Runtime 版本 1.0 低于 manifest 要求 1.0.5（仅警告，不拦截）。\n"
               "插件 c 缺失：/no.dll（仅警告，不拦截）。" +
               tail
        << "";
    QTest::newRow("warnings stand at the end without an offer")
        << QJsonObject{{"plugins", QJsonArray{QJsonObject{{"id", "c"}, {"path", "/no.dll"}}}}} << ""
        << false
        << nothing + notFound.arg("") + refusalLines() +
               "\n插件 c 缺失：/no.dll（仅警告，不拦截）。"
        << "";
}

void UpdateCheckTest::evaluateManifest() {
    QFETCH(QJsonObject, manifest);
    QFETCH(QString, folder);
    QFETCH(bool, expected);
    QFETCH(QString, summary);
    QFETCH(QString, entry);
    QVERIFY(installation::write(appPath("config/release_version.json"),
                                R"({"runtimePackageVersion": "1.0"})"));
    UpdateContext context;
    if (!folder.isEmpty())
        context.projectPath = installation::addRunnableProject(folder, "1.1");
    context.snapshot.source = "src";
    context.snapshot.projectEntry = project("left over", "0");
    context.selection.runtime = false; // changes nothing
    QString given;
    QCOMPARE(context.evaluateManifest(manifest, &given), expected);
    QCOMPARE(given, summary.replace("%p", context.projectPath));
    QCOMPARE(context.snapshot.projectEntry.value("version").toString(), entry);
    QStringList logged = installation::takeLog();
    const QStringList tail = logged.mid(logged.size() - summary.count('\n') - 1);
    QCOMPARE(tail == given.split('\n'), expected);
}

void UpdateCheckTest::aProjectWithoutANameGoesByItsFolder_data() {
    QTest::addColumn<QString>("text"); // of the project file
    QTest::newRow("no name") << R"({"project": {"version": "1.1"}})";
    QTest::newRow("an empty name") << R"({"project": {"name": ""}})";
    QTest::newRow("a name that is a number") << R"({"project": {"name": 5}})";
    QTest::newRow("no project in it") << "{}";
    QTest::newRow("no JSON") << "name = line";
    QTest::newRow("an empty file") << "";
}

void UpdateCheckTest::aProjectWithoutANameGoesByItsFolder() {
    QFETCH(QString, text);
    UpdateContext context;
    context.projectPath = installation::addProject("产线 3", text);
    QString summary;
    QVERIFY(!context.evaluateManifest({{"projects", QJsonArray{project("x", "2.0")}}}, &summary));
    QCOMPARE(summary.section('\n', 1, 1),
             QString("项目：未找到与当前项目匹配的项目记录（产线 3）。"));
}

void UpdateCheckTest::evaluateManifestKeepsTheRecords() {
    const QJsonObject manifest{{"runtime", component("1")},
                               {"launcher", component("2")},
                               {"editor", component("3")},
                               {"pythonTools", component("4")},
                               {"plugins", QJsonArray{5, 6}}};
    UpdateContext context;
    QString summary;
    QVERIFY(!context.evaluateManifest(manifest, &summary));
    QCOMPARE(context.snapshot.runtimeEntry, component("1"));
    QCOMPARE(context.snapshot.launcherEntry, component("2"));
    QCOMPARE(context.snapshot.editorEntry, component("3"));
    QCOMPARE(context.snapshot.pythonToolsEntry, component("4"));
    QCOMPARE(context.snapshot.plugins, (QJsonArray{5, 6}));
}

void UpdateCheckTest::resolveManifestUrl_data() {
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    const QString url = "https://h/d/m.json";
    QTest::newRow("an empty value") << "/b" << url << ""
                                    << "";
    QTest::newRow("a URL stands") << "/b" << url << "https://x/a%20b.zip?c=%1"
                                  << "https://x/a%20b.zip?c=%1";
    QTest::newRow("any scheme stands") << "/b" << url << "ftp://x/a"
                                       << "ftp://x/a";
    QTest::newRow("a path is joined to a folder") << "/b"
                                                  << ""
                                                  << "p/a.zip"
                                                  << "/b/p/a.zip";
    QTest::newRow("an absolute path stands by itself") << "/b"
                                                       << ""
                                                       << "/p/a.zip"
                                                       << "/p/a.zip";
    QTest::newRow("a drive letter is no scheme")
        << "/b"
        << ""
        << "C:\\p\\a.exe" << QString(support::onWindows ? "" : "/b/") + "C:\\p\\a.exe";
    QTest::newRow("a path is joined to a URL as to a folder") << "https://h/d/" << url << "p/a.zip"
                                                              << "https://h/d/p/a.zip";
    QTest::newRow("a way up is not followed in a URL") << "https://h/d/" << url << "../a.zip"
                                                       << "https://h/d/../a.zip";
    QTest::newRow("without a base the source counts") << "" << url << "p/a.zip"
                                                      << "https://h/d/p/a.zip";
    QTest::newRow("the source follows a way up") << "" << url << "../a.zip"
                                                 << "https://h/a.zip";
    QTest::newRow("a source that is a path counts not") << ""
                                                        << "/m/m.json"
                                                        << "a.zip"
                                                        << "a.zip";
    QTest::newRow("nothing to join with") << ""
                                          << ""
                                          << "a.zip"
                                          << "a.zip";
}

void UpdateCheckTest::resolveManifestUrl() {
    QFETCH(QString, base);
    QFETCH(QString, source);
    QFETCH(QString, value);
    UpdateSnapshot snapshot;
    snapshot.baseLocation = base;
    snapshot.source = source;
    QTEST(UpdateContext::resolveManifestUrl(snapshot, value), "expected");
}

void UpdateCheckTest::aStickWinsOverTheNetwork() {
    support::ScriptedServer server;
    serve(server, signedRuntime());
    QVERIFY(installation::write(stickManifest(), signedRuntime()));
    QVERIFY(installation::write(stickFolder() + "/setup.exe", ""));
    UpdateContext context;
    QString summary;
    QVERIFY(context.runUpdateCheck(stickManifest(), &summary));
    QCOMPARE(summary, found(stickManifest(), true, "Runtime -> 1.2.0"));
    QVERIFY(server.requests().isEmpty());
    QVERIFY(context.snapshot.fromUsb);
    QCOMPARE(context.snapshot.source, stickManifest());
    QCOMPARE(context.snapshot.baseLocation, stickFolder());
    QCOMPARE(context.snapshot.manifestText, signedRuntime());
    QCOMPARE(installation::takeLog(),
             QStringList("已读取 U 盘 manifest：" + stickManifest() +
                         "（file_sha256=" + fileSha256Hex(stickManifest()) + "）") +
                 summary.split('\n'));
}

// Pulled out between the two readings: what was read is proved by its signature.
void UpdateCheckTest::aStickWhoseHashCannotBeComputedIsTaken() {
    support::ScriptedServer server;
    serve(server, signedRuntime());
    QVERIFY(installation::write(stickFolder() + "/setup.exe", ""));
    StickManifest read;
    read.path = stickManifest();
    read.text = signedRuntime();
    read.error = "no %1";
    UpdateContext context;
    QString summary;
    QVERIFY(context.runUpdateCheck(StickSearch{read, false}, &summary));
    QCOMPARE(summary, found(stickManifest(), true, "Runtime -> 1.2.0"));
    QVERIFY(server.requests().isEmpty());
    QCOMPARE(installation::takeLog(), QStringList("已读取 U 盘 manifest：" + stickManifest() +
                                                  "（文件 SHA256 计算失败：no %1）") +
                                          summary.split('\n'));
}

void UpdateCheckTest::aStickThatCannotBeReadLeadsToTheNetwork_data() {
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QString>("error");
    QTest::newRow("pulled out") << false
                                << support::systemText("No such file or directory",
                                                       "Path not found.");
    QTest::newRow("an empty manifest") << true << "";
}

void UpdateCheckTest::aStickThatCannotBeReadLeadsToTheNetwork() {
    QFETCH(bool, exists);
    QFETCH(QString, error);
    support::ScriptedServer server;
    serve(server, signedRuntime());
    if (exists)
        QVERIFY(installation::write(stickManifest(), ""));
    UpdateContext context;
    QString summary;
    QVERIFY(context.runUpdateCheck(stickManifest(), &summary));
    QCOMPARE(summary, found(onlineUrl, false, "Runtime -> 1.2.0"));
    QVERIFY(!context.snapshot.fromUsb);
    QCOMPARE(installation::takeLog().mid(0, 2),
             QStringList(
                 {"U 盘 manifest 无法读取，尝试在线更新：" + stickManifest() + " (" + error + ")",
                  "已读取在线 manifest：" + onlineUrl}));
}

void UpdateCheckTest::aStickThatProvesFalseDoesNotLeadToTheNetwork() {
    support::ScriptedServer server;
    serve(server, signedRuntime());
    QVERIFY(installation::write(stickManifest(), tampered()));
    UpdateContext context;
    QString summary;
    QVERIFY(!context.runUpdateCheck(stickManifest(), &summary));
    QVERIFY2(summary.startsWith("更新被拒绝：") &&
                 summary.endsWith("（source=" + stickManifest() + "）。将继续使用当前版本。"),
             qPrintable(summary));
    QCOMPARE(installation::takeLog().last(), summary);
    QVERIFY(server.requests().isEmpty());
    QCOMPARE(context.snapshot.manifestText, QString());
    QVERIFY(context.snapshot.fromUsb); // filled as far as the check got
}

void UpdateCheckTest::theNetworkServesWithoutAStick() {
    support::ScriptedServer server;
    serve(server, signedRuntime());
    UpdateContext context;
    QString summary;
    QVERIFY(context.runUpdateCheck(QString(), &summary));
    QCOMPARE(summary, found(onlineUrl, false, "Runtime -> 1.2.0"));
    QCOMPARE(server.paths(), QStringList("/Quorvaner/Update/manifest.json"));
    QCOMPARE(context.snapshot.source, onlineUrl);
    QCOMPARE(context.snapshot.baseLocation, server.url("/Quorvaner/Update/").toString());
    QCOMPARE(installation::takeLog(),
             QStringList("已读取在线 manifest：" + onlineUrl) + summary.split('\n'));
}

void UpdateCheckTest::theManifestIsFetchedOverEightRedirects() {
    support::ScriptedServer server;
    for (int hop = 0; hop < 9; ++hop)
        server.on("/" + QByteArray::number(hop),
                  support::redirect(302, "/" + QByteArray::number(hop + 1)));
    server.on("/9", support::answer(200, signedRuntime().toUtf8()));
    UpdateContext context;
    QString summary;
    onlineUrl = server.url("/1").toString();
    QVERIFY(context.runUpdateCheck(QString(), &summary));
    QCOMPARE(summary, found(onlineUrl, false, "Runtime -> 1.2.0"));
    QCOMPARE(server.paths().size(), 9);

    onlineUrl = server.url("/0").toString();
    QVERIFY(!context.runUpdateCheck(QString(), &summary));
    QCOMPARE(summary, "在线更新不可用（empty response body (HTTP 302) from " +
                          server.url("/8").toString() +
                          "）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。");
    QCOMPARE(server.paths().size(), 18);
}

// A timer of Qt's may ring a twentieth early, and late on a busy machine; the server would answer in the end.
void UpdateCheckTest::aSilentServerIsWaitedForThreeSeconds() {
    support::ScriptedServer server;
    support::ServerScript script{support::pause(20000)};
    script += support::answer(200, signedRuntime().toUtf8());
    server.on("/Quorvaner/Update/manifest.json", script);
    onlineUrl = server.url("/Quorvaner/Update/manifest.json").toString();
    UpdateContext context;
    QString summary;
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!context.runUpdateCheck(QString(), &summary));
    QVERIFY2(clock.elapsed() >= 2850, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(summary, "在线更新不可用（Operation canceled URL: " + onlineUrl +
                          "）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。");
}

void UpdateCheckTest::theClientIsGivenThreeSeconds() {
    if (support::onWindows)
        QSKIP("another client runs there");
    support::SearchPath path(false);
    path.addScript("curl", "echo \"$*\" > \"$here/log\"\nexit 7\n");
    onlineUrl = "https://127.0.0.1:1/Quorvaner/Update/manifest.json"; // nobody listens
    UpdateContext context;
    QString summary;
    QVERIFY(!context.runUpdateCheck(QString(), &summary));
    QVERIFY2(path.read("log").contains(" --max-time 3 "), path.read("log"));
}

// As if there were no stick, with the one line that says why.
void UpdateCheckTest::volumesThatDoNotAnswerLeadToTheNetwork() {
    support::ScriptedServer server;
    serve(server, signedRuntime());
    UpdateContext context;
    QString summary;
    QVERIFY(context.runUpdateCheck(StickSearch{StickManifest(), true}, &summary));
    QCOMPARE(summary, found(onlineUrl, false, "Runtime -> 1.2.0"));
    QCOMPARE(installation::takeLog(),
             QStringList({"No answer from the mounted volumes within 5000 ms: the check goes on "
                          "without a stick",
                          "已读取在线 manifest：" + onlineUrl}) +
                 summary.split('\n'));
}

void UpdateCheckTest::theNetworkFails_data() {
    QTest::addColumn<int>("status"); // 0: nobody listens
    QTest::addColumn<QString>("body");
    QTest::addColumn<QString>("error");
    QTest::newRow("nobody listens") << 0 << ""
                                    << "Connection refused";
    QTest::newRow("no manifest there") << 404 << "gone"
                                       << "(HTTP 404)";
    QTest::newRow("an empty body") << 200 << ""
                                   << "empty response body (HTTP 200)";
}

void UpdateCheckTest::theNetworkFails() {
    QFETCH(int, status);
    QFETCH(QString, body);
    QFETCH(QString, error);
    support::ScriptedServer server;
    if (status)
        serve(server, body, status);
    UpdateContext context;
    context.snapshot.manifestText = "left over";
    QString summary;
    QVERIFY(!context.runUpdateCheck(QString(), &summary));
    QVERIFY2(summary.startsWith("在线更新不可用（") && summary.contains(error) &&
                 summary.endsWith("）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。"),
             qPrintable(summary));
    QCOMPARE(installation::takeLog(), QStringList(summary));
    QCOMPARE(context.snapshot.manifestText, QString());
}

void UpdateCheckTest::anOnlineManifestIsRefused_data() {
    QTest::addColumn<QString>("body");
    QTest::addColumn<QString>("message");
    QTest::newRow("no JSON") << "<html>"
                             << "manifest JSON is invalid";
    QTest::newRow("an array") << "[]"
                              << "manifest JSON is invalid";
    QTest::newRow("no signature") << "{}"
                                  << "signature is empty";
    QTest::newRow("changed after signing") << tampered() << "";
    QTest::newRow("signed by another key")
        << support::signedManifest({}, support::KeyPair::rsa(2048)) << "";
}

void UpdateCheckTest::anOnlineManifestIsRefused() {
    QFETCH(QString, body);
    QFETCH(QString, message);
    support::ScriptedServer server;
    serve(server, body);
    UpdateContext context;
    QString summary;
    QVERIFY(!context.runUpdateCheck(QString(), &summary));
    QVERIFY2(summary.startsWith("更新被拒绝：" + message) &&
                 summary.endsWith("（source=" + onlineUrl + "）。将继续使用当前版本。"),
             qPrintable(summary));
    QCOMPARE(installation::takeLog().mid(1), QStringList(summary));
}

// A body that is not empty, with no text in it.
void UpdateCheckTest::aByteOrderMarkAloneIsNoManifest() {
    support::ScriptedServer server;
    serve(server, QChar(QChar::ByteOrderMark));
    UpdateContext context;
    QString summary;
    QVERIFY(!context.runUpdateCheck(QString(), &summary));
    QCOMPARE(server.paths(), QStringList("/Quorvaner/Update/manifest.json"));
    QCOMPARE(summary, QString("未找到更新 manifest，将继续使用当前版本。"));
    QCOMPARE(installation::takeLog(), QStringList("已读取在线 manifest：" + onlineUrl));
}

void UpdateCheckTest::aManifestThatOffersNothingFillsTheSnapshot() {
    support::ScriptedServer server;
    const QString manifest = support::signedManifest({}, publisher());
    serve(server, manifest);
    UpdateContext context;
    QString summary;
    QVERIFY(!context.runUpdateCheck(QString(), &summary));
    QVERIFY(summary.startsWith("未检测到高于当前版本的可用更新。\n"));
    QCOMPARE(context.snapshot.manifestText, manifest);
    QCOMPARE(installation::takeLog(), QStringList("已读取在线 manifest：" + onlineUrl));
}

void UpdateCheckTest::aCancelledCheckAsksNobody() {
    support::ScriptedServer server;
    serve(server, signedRuntime());
    const CancelFlag cancelled{1};
    UpdateContext context;
    context.cancelRef = &cancelled;
    QString summary;
    QVERIFY(!context.runUpdateCheck(QString(), &summary));
    QCOMPARE(
        summary,
        QString("在线更新不可用（cancelled）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。"));
    QVERIFY(server.requests().isEmpty());
}

QString UpdateCheckTest::appPath(const QString &name) {
    return installation::appPath(name);
}

void UpdateCheckTest::serve(support::ScriptedServer &server, const QString &body, int status) {
    server.on("/Quorvaner/Update/manifest.json", support::answer(status, body.toUtf8()));
    onlineUrl = server.url("/Quorvaner/Update/manifest.json").toString();
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateCheckTest)
#include "update_check_test.moc"
