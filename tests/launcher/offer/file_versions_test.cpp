// Versions that stand in executables, which only Windows can read: the launcher's rules about them,
// with a reader of its own in the place of the library's.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "support/staged_main.h"
#include "update/files/file_version.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

QMap<QString, QString> versions; // by file name

} // namespace

QString fileVersionText(const QString &path) {
    return versions.value(QFileInfo(path).fileName());
}

class FileVersionsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theProgramsVersionComesThird_data();
    void theProgramsVersionComesThird();
    void aPlaceholderIsNoVersionAndTheUpdateIsOffered();
    void plugins_data();
    void plugins();
};

void FileVersionsTest::init() {
    installation::reset();
    versions.clear();
}

void FileVersionsTest::theProgramsVersionComesThird_data() {
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("file");
    QTest::newRow("runtime") << "runtime"
                             << "LineRunner.exe";
    QTest::newRow("launcher") << "launcher"
                              << QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    QTest::newRow("editor") << "editor"
                            << "LineStudio.exe";
}

void FileVersionsTest::theProgramsVersionComesThird() {
    QFETCH(QString, key);
    QFETCH(QString, file);
    const auto current = [&key] { return UpdateContext::currentComponentVersion(key); };
    QCOMPARE(current(), QString());
    versions[file] = "1.2.3.4";
    QCOMPARE(current(), QString("1.2.3.4"));
    QVERIFY(installation::write(installation::appPath("config/release_version.json"),
                                "{\"" + key + "MinVersion\": \"1.0\"}"));
    QCOMPARE(current(), QString("1.0"));
}

void FileVersionsTest::aPlaceholderIsNoVersionAndTheUpdateIsOffered() {
    versions["LineRunner.exe"] = "0.0.0.0";
    QCOMPARE(UpdateContext::currentComponentVersion("runtime"), QString());
    const QJsonObject record{
        {"version", "0.0.1"}, {"setupUrl", "setup.exe"}, {"minVersion", "9.0"}};
    QString reason;
    QVERIFY(UpdateContext::isComponentEligible("runtime", "Runtime", record, false, "/b", &reason));
    QCOMPARE(reason, QString("可从 未知版本 更新到 0.0.1。"));
}

void FileVersionsTest::plugins_data() {
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("minimum");
    QTest::addColumn<QStringList>("warnings");
    QTest::newRow("older") << "1.1.9.0"
                           << "1.2"
                           << QStringList("插件 camera 版本 1.1.9.0 低于 manifest 要求 1.2"
                                          "（仅警告，不拦截）。");
    QTest::newRow("equal") << "1.2.0.0"
                           << "1.2" << QStringList();
    QTest::newRow("newer") << "1.10"
                           << "1.9" << QStringList();
    QTest::newRow("without a minimum") << "0.0.0.1"
                                       << "" << QStringList();
    QTest::newRow("without a version") << ""
                                       << "1.2" << QStringList();
    QTest::newRow("zeros are a version here")
        << "0.0.0.0"
        << "1.2"
        << QStringList("插件 camera 版本 0.0.0.0 低于 manifest 要求 1.2（仅警告，不拦截）。");
}

void FileVersionsTest::plugins() {
    QFETCH(QString, version);
    QFETCH(QString, minimum);
    QFETCH(QStringList, warnings);
    QVERIFY(installation::write(installation::appPath("plugins/camera.dll"), ""));
    versions["camera.dll"] = version;
    const QJsonObject plugin{
        {"id", "camera"}, {"path", "plugins/camera.dll"}, {"minVersion", minimum}};
    QCOMPARE(UpdateContext::collectPluginWarnings(QJsonArray{plugin}), warnings);
}

QUORVANE_TEST_MAIN(QCoreApplication, FileVersionsTest)
#include "file_versions_test.moc"
