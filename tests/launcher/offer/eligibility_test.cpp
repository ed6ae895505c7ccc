// Which versions are installed, and what a manifest offers beyond them.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "launcher/offer/update_component.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>

namespace {

using installation::appPath;

bool writeRelease(const QString &text) {
    return installation::write(appPath("config/release_version.json"), text);
}

bool writeRelease(const QJsonObject &versions) {
    return writeRelease(QString::fromUtf8(QJsonDocument(versions).toJson()));
}

QString pythonManifest() {
    return AppPaths::installRoot() + "/python/.quorvane_python_manifest.json";
}

// A folder that stands in for a stick.
QString stick() {
    return support::stageRoot() + "/stick";
}

QJsonObject component(const QString &version, const QString &setupUrl = "pkg/setup.exe",
                      const QString &minVersion = QString()) {
    QJsonObject record{{"setupUrl", setupUrl}};
    if (!version.isEmpty())
        record.insert("version", version);
    if (!minVersion.isEmpty())
        record.insert("minVersion", minVersion);
    return record;
}

QJsonObject projectRecord(const QString &version) {
    return {{"name", "line"}, {"version", version}, {"zipUrl", "line.zip"}, {"zipSha256", "00"}};
}

QJsonObject without(QJsonObject record, const char *key) {
    record.remove(key);
    return record;
}

QJsonObject with(QJsonObject record, const char *key, const QJsonValue &value) {
    record.insert(key, value);
    return record;
}

} // namespace

class VersionCandidatesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void releaseVersionValue_data();
    void releaseVersionValue();
    void currentComponentVersion_data();
    void currentComponentVersion();
    void aFinishedInstallerIsNoticedAtOnce();
    void versionSummary();
    void targetComponentVersion_data();
    void targetComponentVersion();
    void isComponentEligible_data();
    void isComponentEligible();
    void isProjectEligible_data();
    void isProjectEligible();
    void aProjectVersionThatIsANumberHasOneLargePart();
    void projectRecordMatches_data();
    void projectRecordMatches();
    void collectPluginWarnings_data();
    void collectPluginWarnings();
    void updateChoicesWithoutAnUpdate();
    void updateChoices();
    void theFingerprintIsSortedAndTheItemsAreNot();
    void anItemThatIsInstalledDropsOutOfTheFingerprint();
    void theComponentsKeepTheirOrder();
};

void VersionCandidatesTest::init() {
    installation::reset();
    QDir(stick()).removeRecursively();
    QDir(AppPaths::installRoot() + "/python").removeRecursively();
}

void VersionCandidatesTest::releaseVersionValue_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a string") << R"({"k": "1.2"})"
                              << "1.2";
    QTest::newRow("a text with a mark")
        << QChar(QChar::ByteOrderMark) + QString(R"({"k": "1.2"})") << "1.2";
    QTest::newRow("another key") << R"({"K": "1.2"})"
                                 << "";
    QTest::newRow("a number is no string") << R"({"k": 1.2})"
                                           << "";
    QTest::newRow("an array is no object") << R"(["k"])"
                                           << "";
    QTest::newRow("no JSON") << "k = 1.2"
                             << "";
    QTest::newRow("an empty file") << ""
                                   << "";
}

void VersionCandidatesTest::releaseVersionValue() {
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(UpdateContext::releaseVersionValue("k"), QString());
    QVERIFY(writeRelease(text));
    QCOMPARE(UpdateContext::releaseVersionValue("k"), expected);
}

void VersionCandidatesTest::currentComponentVersion_data() {
    QTest::addColumn<QJsonObject>("release");
    QTest::addColumn<QString>("python");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");
    for (const QString &key : QStringList{"runtime", "launcher", "editor", "pythonTools"}) {
        const QJsonObject both{{key + "PackageVersion", "v2"}, {key + "MinVersion", "1"}};
        const auto row = [&key](const char *what) -> QTestData & {
            return QTest::addRow("%s: %s", qPrintable(key), what);
        };
        row("the package's version first, as it stands") << both << "" << key << "v2";
        row("the lowest version second")
            << without(both, qPrintable(key + "PackageVersion")) << "" << key << "1";
        row("an empty package version is none")
            << with(both, qPrintable(key + "PackageVersion"), "") << "" << key << "1";
        row("nothing known") << QJsonObject() << "" << key << "";
        row("the key in another case") << both << "" << key.toUpper() << "v2";
    }
    const QString python = R"({"bundledPythonVersion": "3.11"})";
    QTest::newRow("pythonTools: the bundled version third")
        << QJsonObject() << python << "pythonTools"
        << "3.11";
    QTest::newRow("pythonTools: zeros count as a version there")
        << QJsonObject() << R"({"bundledPythonVersion": "0.0.0.0"})"
        << "pythonTools"
        << "0.0.0.0";
    QTest::newRow("pythonTools: a manifest that is no object") << QJsonObject() << "[]"
                                                               << "pythonTools"
                                                               << "";
    QTest::newRow("runtime: the bundled Python is not asked")
        << QJsonObject() << python << "runtime"
        << "";
    QTest::newRow("an unknown key") << QJsonObject{{"xPackageVersion", "1"}} << python << "x"
                                    << "";
    QTest::newRow("an empty key") << QJsonObject{{"PackageVersion", "1"}} << python << ""
                                  << "";
}

void VersionCandidatesTest::currentComponentVersion() {
    QFETCH(QJsonObject, release);
    QFETCH(QString, python);
    QFETCH(QString, key);
    QFETCH(QString, expected);
    QVERIFY(writeRelease(release));
    if (!python.isEmpty())
        QVERIFY(installation::write(pythonManifest(), python));
    QCOMPARE(UpdateContext::currentComponentVersion(key), expected);
}

void VersionCandidatesTest::aFinishedInstallerIsNoticedAtOnce() {
    QVERIFY(writeRelease(QJsonObject{{"launcherPackageVersion", "1.0"}}));
    QCOMPARE(UpdateContext::currentLauncherVersion(), QString("1.0"));
    QVERIFY(writeRelease(QJsonObject{{"launcherPackageVersion", "1.1"}}));
    QCOMPARE(UpdateContext::currentLauncherVersion(), QString("1.1"));
}

void VersionCandidatesTest::versionSummary() {
    QCOMPARE(UpdateContext::versionSummary(),
             QString("版本：Launcher 未知 / Runtime 未知 / Editor 未知"));
    QVERIFY(writeRelease(QJsonObject{{"launcherPackageVersion", "%2"},
                                     {"runtimeMinVersion", "2"},
                                     {"editorPackageVersion", "3"}}));
    QCOMPARE(UpdateContext::versionSummary(), QString("版本：Launcher %2 / Runtime 2 / Editor 3"));
}

void VersionCandidatesTest::targetComponentVersion_data() {
    QTest::addColumn<QJsonObject>("record");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the version") << component("1.2.3") << "1.2.3";
    QTest::newRow("a version in free text") << component(" release 1.2.3.4 ok") << "1.2.3.4";
    QTest::newRow("two numbers are none") << component("1.2", "pkg/setup_1.3.0.exe") << "1.3.0";
    QTest::newRow("the package's name") << component("", "pkg/setup_1.2.0.exe") << "1.2.0";
    QTest::newRow("neither") << component("", "pkg/setup.exe") << "";
    QTest::newRow("a version that is a number") << with(component(""), "version", 1.25) << "";
}

void VersionCandidatesTest::targetComponentVersion() {
    QFETCH(QJsonObject, record);
    QTEST(UpdateContext::targetComponentVersion(record), "expected");
}

void VersionCandidatesTest::isComponentEligible_data() {
    QTest::addColumn<QJsonObject>("record");
    QTest::addColumn<QString>("current");
    QTest::addColumn<bool>("fromUsb");
    QTest::addColumn<bool>("expected");
    QTest::addColumn<QString>("reason"); // %s: the stick
    const auto refused = [](const char *row, const QJsonObject &record, const QString &current,
                            bool usb, const QString &reason) {
        QTest::newRow(row) << record << current << usb << false << reason;
    };
    const auto offered = [](const char *row, const QJsonObject &record, const QString &current,
                            bool usb, const QString &reason) {
        QTest::newRow(row) << record << current << usb << true << reason;
    };
    refused("no record", {}, "", false, "Label 未提供 setupUrl。");
    refused("a blank address", component("1.2.0", "  "), "", false, "Label 未提供 setupUrl。");
    refused("an address of another type", with(component("1.2.0"), "setupUrl", 5), "", false,
            "Label 未提供 setupUrl。");
    refused("a package missing on the stick", component("1.2.0", "pkg/none.exe"), "", true,
            "Label 安装包缺失：%s/pkg/none.exe");
    refused("a package that is a folder", component("1.2.0", "pkg"), "", true,
            "Label 安装包缺失：%s/pkg");
    refused("a package that is the stick itself", component("1.2.0", "."), "", true,
            "Label 安装包缺失：%s/.");
    refused("the package is missed before the version", component("", "pkg/none.exe"), "", true,
            "Label 安装包缺失：%s/pkg/none.exe");
    offered("online no package is looked up", component("1.2.0", "pkg/none.exe"), "", false,
            "可从 未知版本 更新到 1.2.0。");
    refused("no version to be found", component(""), "", true,
            "Label 缺少可识别的目标版本（manifest 未提供 version 且 setupUrl 无版本号）。");
    refused("the same version", component("1.2.0"), "v1.2", true,
            "目标版本 1.2.0 不高于当前版本 v1.2。");
    refused("a newer version is installed", component("1.2.0"), "1.10", true,
            "目标版本 1.2.0 不高于当前版本 1.10。");
    refused("the installed version is too old", component("1.2.0", "pkg/setup.exe", "1.1"), "1.0.9",
            true, "当前版本 1.0.9 低于该更新包最小可更新版本 1.1。");
    offered("the installed version is just new enough", component("1.2.0", "pkg/setup.exe", "1.1"),
            "1.1.0", true, "可从 1.1.0 更新到 1.2.0。");
    offered("a blank lowest version is none", component("1.2.0", "pkg/setup.exe", "  "), "0.1",
            true, "可从 0.1 更新到 1.2.0。");
    offered("an unknown installed version is offered anything",
            component("1.2.0", "pkg/setup.exe", "1.1"), "", true, "可从 未知版本 更新到 1.2.0。");
    offered("a version in the package's name", component("", "pkg/setup_1.3.0.exe"), "1.2.0", true,
            "可从 1.2.0 更新到 1.3.0。");
    offered("a name with blanks around it is taken as it stands", component("1.2.0", " setup.exe "),
            "", true, "可从 未知版本 更新到 1.2.0。");
}

void VersionCandidatesTest::isComponentEligible() {
    QFETCH(QJsonObject, record);
    QFETCH(QString, current);
    QFETCH(bool, fromUsb);
    QFETCH(QString, reason);
    for (const char *name : {"/pkg/setup.exe", "/pkg/setup_1.3.0.exe", "/ setup.exe "})
        QVERIFY(installation::write(stick() + name, ""));
    QVERIFY(writeRelease(QJsonObject{{"editorPackageVersion", current}}));
    const QString base = fromUsb ? stick() : "https://host/a%20b/";
    QString given = "untouched";
    QTEST(UpdateContext::isComponentEligible("editor", "Label", record, fromUsb, base, &given),
          "expected");
    QCOMPARE(given, reason.replace("%s", stick()));
    QTEST(UpdateContext::isComponentEligible("editor", "Label", record, fromUsb, base), "expected");
}

void VersionCandidatesTest::isProjectEligible_data() {
    QTest::addColumn<QJsonObject>("record");
    QTest::addColumn<QString>("local");
    QTest::addColumn<bool>("fromUsb");
    QTest::addColumn<bool>("expected");
    QTest::addColumn<QString>("reason"); // %s: the stick
    QTest::addColumn<QString>("logged"); // %p: the project
    const QJsonObject good = projectRecord("1.2.0");
    const QString compared = "Project version check: local=1.1 remote=1.2.0 compare=-1 path=%p";
    const QString unreadable = "Project version check: local version unreadable, path=%p";
    QTest::newRow("no record") << QJsonObject() << "1.1" << false << false
                               << "manifest 未提供可更新的项目记录。"
                               << "";
    QTest::newRow("a newer project")
        << good << "1.1" << true << true << "可更新到 1.2.0。" << compared;
    QTest::newRow("the same version, both normalised")
        << projectRecord(" v1.2 ") << "V1.2.0" << true << false
        << "当前项目版本 1.2.0 已不低于更新版本 1.2。"
        << "Project version check: local=1.2.0 remote=1.2 compare=0 path=%p";
    QTest::newRow("an older project")
        << good << "1.3" << true << false << "当前项目版本 1.3 已不低于更新版本 1.2.0。"
        << "Project version check: local=1.3 remote=1.2.0 compare=1 path=%p";
    QTest::newRow("a local version that cannot be read")
        << good << "" << true << true << "可更新到 1.2.0。" << unreadable;
    QTest::newRow("no version on offer")
        << projectRecord("") << "1.1" << true << true << "可更新到 新版本。"
        << "";
    QTest::newRow("no version on either side")
        << projectRecord(" v ") << "" << true << true << "可更新到 新版本。"
        << "";
    QTest::newRow("no package") << without(good, "zipUrl") << "1.1" << true << false
                                << "项目记录缺少 zipUrl。" << compared;
    QTest::newRow("a blank package") << with(good, "zipUrl", " ") << "1.1" << true << false
                                     << "项目记录缺少 zipUrl。" << compared;
    QTest::newRow("no hash") << with(good, "zipSha256", " \t") << "1.1" << true << false
                             << "项目记录缺少 zipSha256。" << compared;
    QTest::newRow("a package missing on the stick")
        << with(good, "zipUrl", "none.zip") << "1.1" << true << false
        << "项目更新包缺失：%s/none.zip" << compared;
    QTest::newRow("a package that is a folder") << with(good, "zipUrl", "..") << "1.1" << true
                                                << false << "项目更新包缺失：%s/.." << compared;
    QTest::newRow("online no package is looked up")
        << with(good, "zipUrl", "none.zip") << "1.1" << false << true << "可更新到 1.2.0。"
        << compared;
}

void VersionCandidatesTest::isProjectEligible() {
    QFETCH(QJsonObject, record);
    QFETCH(QString, local);
    QFETCH(bool, fromUsb);
    QFETCH(QString, reason);
    QFETCH(QString, logged);
    QVERIFY(installation::write(stick() + "/line.zip", ""));
    UpdateContext context;
    context.projectPath = installation::addProject(
        "line", local.isEmpty() ? "{}" : "{\"project\":{\"version\":\"" + local + "\"}}");
    context.snapshot.projectEntry = record;
    context.snapshot.fromUsb = fromUsb;
    context.snapshot.baseLocation = fromUsb ? stick() : "https://host/";
    QString given = "untouched";
    QTEST(context.isProjectEligible(&given), "expected");
    QCOMPARE(given, reason.replace("%s", stick()));
    logged.replace("%p", context.projectPath);
    QCOMPARE(installation::takeLog(), logged.isEmpty() ? QStringList() : QStringList(logged));
    QTEST(context.isProjectEligible(), "expected");
}

void VersionCandidatesTest::aProjectVersionThatIsANumberHasOneLargePart() {
    UpdateContext context;
    context.projectPath = installation::addProject("line", R"({"project":{"version":1.5}})");
    context.snapshot.projectEntry = projectRecord("1.6.0");
    QString reason;
    QVERIFY(!context.isProjectEligible(&reason));
    QCOMPARE(reason, QString("当前项目版本 1.50000000 已不低于更新版本 1.6.0。"));
}

void VersionCandidatesTest::projectRecordMatches_data() {
    QTest::addColumn<QString>("record");
    QTest::addColumn<QString>("project");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("expected");
    QTest::newRow("an empty name never matches") << ""
                                                 << ""
                                                 << "" << false;
    QTest::newRow("the project's name") << "Line3"
                                        << "lINE3"
                                        << "x" << true;
    QTest::newRow("the folder's name") << "产线"
                                       << "x"
                                       << "产线" << true;
    QTest::newRow("neither") << "line"
                             << "line2"
                             << "2line" << false;
    QTest::newRow("demo serves a folder that begins so") << "DEMO"
                                                         << "x"
                                                         << "Demo_line3" << true;
    QTest::newRow("demo does not serve a project that is only named so") << "demo"
                                                                         << "demo_line3"
                                                                         << "x" << false;
    QTest::newRow("demo is the project's whole name") << "demo"
                                                      << "Demo"
                                                      << "x" << true;
    QTest::newRow("demo without a folder") << "demo"
                                           << ""
                                           << "" << false;
    QTest::newRow("a folder that begins with another name") << "line"
                                                            << ""
                                                            << "line3" << false;
}

void VersionCandidatesTest::projectRecordMatches() {
    QFETCH(QString, record);
    QFETCH(QString, project);
    QFETCH(QString, folder);
    QTEST(UpdateContext::projectRecordMatches(record, project, folder), "expected");
}

void VersionCandidatesTest::collectPluginWarnings_data() {
    QTest::addColumn<QJsonArray>("plugins");
    QTest::addColumn<QStringList>("expected"); // %a: the program's folder, %u: the one above
    const auto plugin = [](const QString &path) {
        return QJsonObject{{"id", "cam%2"}, {"minVersion", "9.0"}, {"path", path}};
    };
    const auto missing = [](const QString &path) {
        return QStringList("插件 cam%2 缺失：" + path + "（仅警告，不拦截）。");
    };
    QTest::newRow("no plug-ins") << QJsonArray() << QStringList();
    QTest::newRow("no path and a blank one are skipped")
        << QJsonArray{QJsonObject{{"id", "x"}}, plugin(" \t"), 5} << QStringList();
    QTest::newRow("one that is there without a version of its own")
        << QJsonArray{plugin("plugins/a.dll")} << QStringList();
    QTest::newRow("leading dots are dropped, however many")
        << QJsonArray{plugin(" ././plugins/a.dll ")} << QStringList();
    QTest::newRow("none of the leading dots is left in the place of a missing one")
        << QJsonArray{plugin("./././plugins/none.dll"), plugin(".\\./bin/none.dll")}
        << missing("%a/plugins/none.dll") + missing("%u/bin/none.dll");
    QTest::newRow("a backslash separates on every system")
        << QJsonArray{plugin(".\\.\\plugins\\a.dll"), plugin("BIN\\above.dll"),
                      plugin("plugins\\none.dll")}
        << missing("%a/plugins/none.dll");
    QTest::newRow("one that is missing")
        << QJsonArray{plugin("plugins/none.dll")} << missing("%a/plugins/none.dll");
    QTest::newRow("bin is looked for beside the program's folder first")
        << QJsonArray{plugin("BIN/above.dll")} << QStringList();
    QTest::newRow("bin is looked for in the program's folder then")
        << QJsonArray{plugin("bin/inside.dll")} << QStringList();
    QTest::newRow("a missing one in bin names the first place")
        << QJsonArray{plugin("./bin/none.dll")} << missing("%u/bin/none.dll");
    QTest::newRow("an absolute path that is there")
        << QJsonArray{plugin("%a/plugins/../plugins/a.dll")} << QStringList();
    QTest::newRow("an absolute path that is missing is cleaned")
        << QJsonArray{plugin("/no/./where/../a.dll")} << missing("/no/a.dll");
    QTest::newRow("each in its order")
        << QJsonArray{plugin("b.dll"), plugin("plugins/a.dll"), plugin("a.dll")}
        << missing("%a/b.dll") + missing("%a/a.dll");
}

void VersionCandidatesTest::collectPluginWarnings() {
    QFETCH(QJsonArray, plugins);
    QFETCH(QStringList, expected);
    const QString program = QCoreApplication::applicationDirPath();
    const QString above = support::stageRoot();
    for (const QString &name :
         {program + "/plugins/a.dll", above + "/BIN/above.dll", program + "/bin/inside.dll"})
        QVERIFY(installation::write(name, ""));
    for (int i = 0; i < plugins.size(); ++i) {
        QJsonObject plugin = plugins[i].toObject();
        if (plugin.contains("path"))
            plugin.insert("path", plugin.value("path").toString().replace("%a", program));
        plugins[i] = plugin;
    }
    expected.replaceInStrings("%a", program).replaceInStrings("%u", above);
    QCOMPARE(UpdateContext::collectPluginWarnings(plugins), expected);
    QDir(program + "/bin").removeRecursively();
}

void VersionCandidatesTest::updateChoicesWithoutAnUpdate() {
    const UpdateChoices choices = LauncherService().updateChoices();
    for (const UpdateChoice &choice : {choices.project, choices.runtime, choices.launcher,
                                       choices.editor, choices.pythonTools}) {
        QVERIFY(!choice.available);
        QCOMPARE(choice.reason, QString("当前没有可应用的已验证更新。"));
    }
}

void VersionCandidatesTest::updateChoices() {
    LauncherService service;
    service.updateAvailable = true;
    service.snapshot.projectEntry = projectRecord("");
    service.snapshot.runtimeEntry = component("1.0.0");
    service.snapshot.editorEntry = component("1.1.0");
    service.snapshot.pythonToolsEntry = component("");
    QVERIFY(writeRelease(QJsonObject{{"editorPackageVersion", "1.1.0"}}));
    const UpdateChoices choices = service.updateChoices();
    QVERIFY(choices.project.available && choices.runtime.available);
    QVERIFY(!choices.launcher.available && !choices.editor.available);
    QVERIFY(!choices.pythonTools.available);
    QCOMPARE(choices.project.reason, QString("可更新到 新版本。"));
    QCOMPARE(choices.runtime.reason, QString("可从 未知版本 更新到 1.0.0。"));
    QCOMPARE(choices.launcher.reason, QString("Launcher 未提供 setupUrl。"));
    QCOMPARE(choices.editor.reason, QString("目标版本 1.1.0 不高于当前版本 1.1.0。"));
    QCOMPARE(choices.pythonTools.reason,
             QString("Python 工具 缺少可识别的目标版本（manifest 未提供 version 且 setupUrl "
                     "无版本号）。"));
}

void VersionCandidatesTest::theFingerprintIsSortedAndTheItemsAreNot() {
    UpdateContext context;
    QCOMPARE(context.onlineUpdateFingerprint(), QString());
    QCOMPARE(context.onlineUpdateItems(), QString());
    context.snapshot.projectEntry = with(projectRecord("v2.0"), "name", "Line|3");
    context.snapshot.runtimeEntry = component("1.1.0");
    context.snapshot.launcherEntry = component("1.2.0");
    context.snapshot.editorEntry = component("1.3.0");
    context.snapshot.pythonToolsEntry = component("1.4.0");
    QCOMPARE(context.onlineUpdateFingerprint(),
             QString("editor:1.3.0|launcher:1.2.0|project:Line|3:v2.0|pythonTools:1.4.0|"
                     "runtime:1.1.0"));
    QCOMPARE(context.onlineUpdateItems(),
             QString("project:v2.0, runtime:1.1.0, editor:1.3.0, launcher:1.2.0, "
                     "pythonTools:1.4.0"));
}

void VersionCandidatesTest::anItemThatIsInstalledDropsOutOfTheFingerprint() {
    UpdateContext context;
    context.snapshot.runtimeEntry = component("1.2.0");
    context.snapshot.launcherEntry = component("1.2.0");
    QCOMPARE(context.onlineUpdateFingerprint(), QString("launcher:1.2.0|runtime:1.2.0"));
    QVERIFY(writeRelease(QJsonObject{{"launcherPackageVersion", "1.2.0"}}));
    QCOMPARE(context.onlineUpdateFingerprint(), QString("runtime:1.2.0"));
}

void VersionCandidatesTest::theComponentsKeepTheirOrder() {
    QStringList keys;
    for (const UpdateComponent *component : updateComponents)
        keys.append(component->keyText() + ' ' + component->labelText());
    QCOMPARE(keys, QStringList({"runtime Runtime", "launcher Launcher", "editor Editor",
                                "pythonTools Python 工具"}));
}

QUORVANE_TEST_MAIN(QCoreApplication, VersionCandidatesTest)
#include "eligibility_test.moc"
