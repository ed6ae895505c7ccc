// What a manifest names, read from objects of any shape, and which addresses mean which file.
#include "quorvanectl/manifest/manifest_format.h"

#include "support/manifest_maker.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

using ctl::PackageRecord;

class ManifestFormatTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void records_data();
    void records();
    void everyListedKeyIsInAFullManifest();
    void keysOfAPackage();
    void versions_data();
    void versions();
    void identities_data();
    void identities();
    void addresses_data();
    void addresses();
    void localPackages_data();
    void localPackages();
};

void ManifestFormatTest::records_data() {
    QTest::addColumn<QByteArray>("manifest");
    QTest::addColumn<QStringList>("where");
    QTest::newRow("nothing") << QByteArray("{}") << QStringList();
    QTest::newRow("components in the order of the format")
        << QByteArray(R"({"pythonTools": {}, "editor": {}, "launcher": {}, "runtime": {}})")
        << QStringList{"runtime", "launcher", "editor", "pythonTools"};
    QTest::newRow("projects behind them, in their own order")
        << QByteArray(R"({"projects": [{"name": "b"}, {"name": "a"}], "editor": {}})")
        << QStringList{"editor", "projects[0]", "projects[1]"};
    QTest::newRow("a record without a package is one too")
        << QByteArray(R"({"runtime": {}, "projects": [{}]})")
        << QStringList{"runtime", "projects[0]"};
    QTest::newRow("what is no object is none, and the others keep their numbers")
        << QByteArray(R"({"runtime": "1.2.0", "editor": [], "launcher": null,
                          "projects": [7, {"name": "a"}, "x", [], {}]})")
        << QStringList{"projects[1]", "projects[4]"};
    QTest::newRow("projects that are no list")
        << QByteArray(R"({"projects": {"name": "a"}})") << QStringList();
    QTest::newRow("a component with another case")
        << QByteArray(R"({"Runtime": {}, "pythontools": {}})") << QStringList();
    QTest::newRow("plug-ins are no packages")
        << QByteArray(R"({"plugins": [{"id": "camera", "path": "a.dll"}]})") << QStringList();
}

void ManifestFormatTest::records() {
    QFETCH(QByteArray, manifest);
    const QJsonDocument document = QJsonDocument::fromJson(manifest);
    QVERIFY(document.isObject());
    QStringList where;
    for (const PackageRecord &record : ctl::packageRecords(document.object())) {
        where.append(record.where);
        QCOMPARE(record.isProject, record.where.startsWith("projects["));
    }
    QTEST(where, "where");
}

void ManifestFormatTest::everyListedKeyIsInAFullManifest() {
    const QJsonObject full = support::fullManifest();
    const auto sorted = [](QStringList keys) {
        keys.removeAll("signature"); // that one is unsigned
        keys.sort();
        return keys;
    };
    QCOMPARE(sorted(ctl::rootKeys()), sorted(full.keys()));
    for (const QString &component : ctl::componentKeys())
        QCOMPARE(sorted(full[component].toObject().keys()), sorted(ctl::componentRecordKeys()));
    QCOMPARE(sorted(full["plugins"].toArray().first().toObject().keys()),
             sorted(ctl::pluginRecordKeys()));
    QCOMPARE(sorted(full["projects"].toArray().first().toObject().keys()),
             sorted(ctl::projectRecordKeys()));
}

void ManifestFormatTest::keysOfAPackage() {
    const QJsonObject record{
        {"setupUrl", " a "}, {"setupSha256", "\tb\n"}, {"zipUrl", "c"}, {"zipSha256", 7}};
    const PackageRecord component{"runtime", false, record};
    QCOMPARE(component.url(), QString("a"));
    QCOMPARE(component.hash(), QString("b"));
    const PackageRecord project{"projects[0]", true, record};
    QCOMPARE(project.url(), QString("c"));
    QCOMPARE(project.hash(), QString()); // a number is read as nothing
}

void ManifestFormatTest::versions_data() {
    QTest::addColumn<bool>("isProject");
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QString>("version");
    QTest::newRow("a component's own")
        << false << QByteArray(R"({"version": "1.2.0", "setupUrl": "setup-1.3.0.exe"})") << "1.2.0";
    QTest::newRow("a component's from its installer's name")
        << false << QByteArray(R"({"setupUrl": "setup-1.3.0.exe"})") << "1.3.0";
    QTest::newRow("of two numbers in an address the first")
        << false << QByteArray(R"({"setupUrl": "1.4.0/setup-1.3.0.exe"})") << "1.4.0";
    QTest::newRow("a component without any")
        << false << QByteArray(R"({"setupUrl": "setup.exe"})") << "";
    QTest::newRow("a project's own") << true << QByteArray(R"({"version": " v1.2.0 "})") << "1.2.0";
    QTest::newRow("a project's package says nothing of it")
        << true << QByteArray(R"({"zipUrl": "a-1.3.0.zip"})") << "";
    QTest::newRow("a project's that is a number") << true << QByteArray(R"({"version": 2})") << "";
}

void ManifestFormatTest::versions() {
    QFETCH(bool, isProject);
    QFETCH(QByteArray, record);
    const PackageRecord package{"x", isProject, QJsonDocument::fromJson(record).object()};
    QTEST(package.version(), "version");
}

void ManifestFormatTest::identities_data() {
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("same");
    QTest::newRow("the same name") << "line3"
                                   << "line3" << true;
    QTest::newRow("in other letters") << "Line3"
                                      << "LINE3" << true;
    QTest::newRow("in other Greek letters")
        << QStringLiteral("Σίγμα") << QStringLiteral("ΣΊΓΜΑ") << true;
    QTest::newRow("with a blank behind") << "line3"
                                         << "line3 " << false;
    QTest::newRow("two Chinese names")
        << QStringLiteral("产线三") << QStringLiteral("产线四") << false;
    QTest::newRow("a project called as a component") << "runtime"
                                                     << "runtime" << true;
}

void ManifestFormatTest::identities() {
    QFETCH(QString, one);
    QFETCH(QString, other);
    const PackageRecord first{"projects[0]", true, {{"name", one}}};
    const PackageRecord second{"projects[1]", true, {{"name", other}}};
    QTEST(first.identity() == second.identity(), "same");
    const PackageRecord component{"runtime", false, {{"name", one}}};
    QCOMPARE(component.identity(), QString("runtime"));
    QVERIFY(first.identity() != component.identity());
}

void ManifestFormatTest::addresses_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("isUrl");
    QTest::addColumn<QString>("fileName");
    QTest::newRow("https") << "https://cdn.example/a/setup.exe" << true << "setup.exe";
    QTest::newRow("any other scheme") << "ftp://cdn.example/setup.exe" << true << "setup.exe";
    QTest::newRow("a file's") << "file:///a/setup.exe" << true << "setup.exe";
    QTest::newRow("a drive is no scheme") << "C:/out/setup.exe" << false << "setup.exe";
    QTest::newRow("a relative path") << "packages/setup.exe" << false << "setup.exe";
    QTest::newRow("a path from the root") << "/packages/setup.exe" << false << "setup.exe";
    QTest::newRow("without a scheme") << "//cdn.example/setup.exe" << false << "setup.exe";
    QTest::newRow("a server alone") << "https://cdn.example" << true << "cdn.example";
    QTest::newRow("a folder") << "https://cdn.example/a/" << true << "";
    QTest::newRow("a query stays in the name")
        << "https://cdn.example/setup.exe?a=1" << true << "setup.exe?a=1";
    QTest::newRow("a slash in a query divides")
        << "https://cdn.example/setup.exe?a=b/c" << true << "c";
    QTest::newRow("nothing") << "" << false << "";
    QTest::newRow("Chinese") << QStringLiteral("包/产线三.zip") << false
                             << QStringLiteral("产线三.zip");
}

void ManifestFormatTest::addresses() {
    QFETCH(QString, address);
    QTEST(isUrl(address), "isUrl");
    QTEST(packageFileName(address), "fileName");
}

void ManifestFormatTest::localPackages_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("path");
    const QString base = "https://cdn.example/q";
    QTest::newRow("beside the manifest") << "a.zip"
                                         << ""
                                         << "site/a.zip";
    QTest::newRow("below it") << "packages/a.zip" << base << "site/packages/a.zip";
    QTest::newRow("below the base") << base + "/p/a.zip" << base << "site/p/a.zip";
    QTest::newRow("below a base with a slash") << base + "/p/a.zip" << base + "/"
                                               << "site/p/a.zip";
    QTest::newRow("on another server") << "https://other.example/q/a.zip" << base << "";
    QTest::newRow("in a folder whose name is longer") << base + "2/a.zip" << base << "";
    QTest::newRow("in other letters") << "https://CDN.example/q/a.zip" << base << "";
    QTest::newRow("the base itself") << base << base << "";
    QTest::newRow("the base itself with its slash") << base + "/" << base << "";
    QTest::newRow("a URL without a base") << base + "/a.zip"
                                          << ""
                                          << "";
    QTest::newRow("no address") << "" << base << "";
}

void ManifestFormatTest::localPackages() {
    QFETCH(QString, address);
    QFETCH(QString, base);
    QTEST(ctl::localPackage(address, "site", base), "path");
}

QUORVANE_TEST_MAIN(QCoreApplication, ManifestFormatTest)
#include "manifest_format_test.moc"
