// What follows a published manifest: which of its records go on, what of them is believed, and when it is
// published.
#include "quorvanectl/manifest/manifest_build.h"

#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

using ctl::ManifestWish;

namespace {

const QString later = "2026-11-20T06:00:00Z";

QJsonObject objectOf(const QByteArray &json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        qFatal("no object: %s", json.constData());
    return document.object();
}

QString textOf(const QJsonObject &object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// Of the times that text has, those of the time of publication are told from now.
QString secondsFromNow(int seconds) {
    return QDateTime::currentDateTimeUtc().addSecs(seconds).toString(Qt::ISODate);
}

} // namespace

class ManifestCarryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatGoesOn_data();
    void whatGoesOn();
    void plugInsTakeTheirPlaces_data();
    void plugInsTakeTheirPlaces();
    void anInstallerOfAnOlderManifest_data();
    void anInstallerOfAnOlderManifest();
    void timesBehindThePreviousOne_data();
    void timesBehindThePreviousOne();
    void withoutATimeItIsNow_data();
    void withoutATimeItIsNow();
    void publishedAgain_data();
    void publishedAgain();
};

void ManifestCarryTest::whatGoesOn_data() {
    QTest::addColumn<QByteArray>("previous");
    QTest::addColumn<QByteArray>("manifest"); // without its time
    QTest::newRow("nothing") << QByteArray("{}") << QByteArray(R"({"schemaVersion":1})");
    QTest::newRow("no signature, which held for the other one")
        << QByteArray(R"({"schemaVersion":1,"signature":"AAEC"})")
        << QByteArray(R"({"schemaVersion":1})");
    QTest::newRow("a format that is newer")
        << QByteArray(R"({"schemaVersion":7})") << QByteArray(R"({"schemaVersion":7})");
    QTest::newRow("a component without a version in its address, as it is")
        << QByteArray(R"({"schemaVersion":1,"editor":{"setupUrl":"e.exe","version":"1.0.0"}})")
        << QByteArray(R"({"schemaVersion":1,"editor":{"setupUrl":"e.exe","version":"1.0.0"}})");
    QTest::newRow("of a component's version what its address says")
        << QByteArray(
               R"({"schemaVersion":1,"editor":{"setupUrl":"e-1.2.0.exe","version":"9.9.9"}})")
        << QByteArray(
               R"({"schemaVersion":1,"editor":{"setupUrl":"e-1.2.0.exe","version":"1.2.0"}})");
    QTest::newRow("a component that is none, as it is")
        << QByteArray(R"({"schemaVersion":1,"editor":"e-1.2.0.exe"})")
        << QByteArray(R"({"schemaVersion":1,"editor":"e-1.2.0.exe"})");
    QTest::newRow("of a project's version what it says, which is signed")
        << QByteArray(R"({"schemaVersion":1,"projects":[{"zipUrl":"p-1.2.0.zip","version":"3"}]})")
        << QByteArray(R"({"schemaVersion":1,"projects":[{"zipUrl":"p-1.2.0.zip","version":"3"}]})");
    QTest::newRow("records of which nobody knows the form")
        << QByteArray(R"({"schemaVersion":1,"projects":[7,"a",{}]})")
        << QByteArray(R"({"schemaVersion":1,"projects":[7,"a",{}]})");
}

void ManifestCarryTest::whatGoesOn() {
    QFETCH(QByteArray, previous);
    QFETCH(QByteArray, manifest);
    ManifestWish wish;
    wish.publishedAt = later;
    wish.previous = objectOf(previous);
    QString error;
    QJsonObject expected = objectOf(manifest);
    expected["publishedAt"] = later;
    QCOMPARE(textOf(ctl::buildManifest(wish, &error)), textOf(expected));
    QCOMPARE(error, QString());
}

void ManifestCarryTest::plugInsTakeTheirPlaces_data() {
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<QStringList>("after");
    QTest::newRow("a new one comes behind")
        << QStringList{"a,1,a.dll", "b,1,b.dll"} << QStringList{"c,1,c.dll"}
        << QStringList{"a,1,a.dll", "b,1,b.dll", "c,1,c.dll"};
    QTest::newRow("one that was there keeps its place")
        << QStringList{"a,1,a.dll", "b,1,b.dll"} << QStringList{"a,2,x.dll"}
        << QStringList{"a,2,x.dll", "b,1,b.dll"};
    QTest::newRow("in other letters")
        << QStringList{"Camera,1,a.dll"} << QStringList{"camera,2,a.dll"}
        << QStringList{"camera,2,a.dll"};
    QTest::newRow("of two that were there each new one takes one")
        << QStringList{"a,1,a.dll", "a,2,b.dll"} << QStringList{"a,3,c.dll"}
        << QStringList{"a,3,c.dll", "a,2,b.dll"};
    QTest::newRow("two of a name that are given anew both stay")
        << QStringList{"a,1,a.dll"} << QStringList{"a,2,b.dll", "a,3,c.dll"}
        << QStringList{"a,2,b.dll", "a,3,c.dll"};
    QTest::newRow("in the order in which they are given")
        << QStringList() << QStringList{"b,1,b.dll", "a,1,a.dll"}
        << QStringList{"b,1,b.dll", "a,1,a.dll"};
    QTest::newRow("none given, none there") << QStringList() << QStringList() << QStringList();
}

void ManifestCarryTest::plugInsTakeTheirPlaces() {
    QFETCH(QStringList, before);
    QFETCH(QStringList, given);
    QFETCH(QStringList, after);
    QString error;
    ManifestWish wish;
    wish.publishedAt = later;
    wish.plugins = before;
    wish.previous = ctl::buildManifest(wish, &error);
    wish.plugins = given;
    const QJsonObject manifest = ctl::buildManifest(wish, &error);
    QStringList found;
    const QJsonArray plugins = manifest["plugins"].toArray();
    for (const QJsonValue &plugin : plugins)
        found.append(plugin["id"].toString() + ',' + plugin["minVersion"].toString() + ',' +
                     plugin["path"].toString());
    QCOMPARE(found, after);
    QCOMPARE(manifest.contains("plugins"), !after.isEmpty());
}

void ManifestCarryTest::anInstallerOfAnOlderManifest_data() {
    QTest::addColumn<QByteArray>("runtime"); // of the previous manifest
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("least");
    QTest::newRow("it said none") << QByteArray("{}") << ""
                                  << "";
    QTest::newRow("it said one") << QByteArray(R"({"minVersion": "1.0.0"})") << ""
                                 << "1.0.0";
    QTest::newRow("with blanks around it") << QByteArray(R"({"minVersion": " 1.0.0 "})") << ""
                                           << "1.0.0";
    QTest::newRow("another is given") << QByteArray(R"({"minVersion": "1.0.0"})") << "1.1.0"
                                      << "1.1.0";
    QTest::newRow("a number, which a launcher reads as none")
        << QByteArray(R"({"minVersion": 1})") << ""
        << "";
    QTest::newRow("the component was no record") << QByteArray("\"1.0.0\"") << ""
                                                 << "";
}

void ManifestCarryTest::anInstallerOfAnOlderManifest() {
    QFETCH(QByteArray, runtime);
    QFETCH(QString, given);
    QFETCH(QString, least);
    const QTemporaryDir folder;
    support::writeTree(folder.path(), {{"r-1.3.0.exe", "x"}});
    ManifestWish wish;
    wish.folder = folder.path();
    wish.previous = objectOf("{\"runtime\": " + runtime + '}');
    wish.installers = {{"runtime", folder.filePath("r-1.3.0.exe")}};
    if (!given.isEmpty())
        wish.minVersions = {{"runtime", given}};
    QString error;
    const QJsonObject made = ctl::buildManifest(wish, &error)["runtime"].toObject();
    QCOMPARE(error, QString());
    QCOMPARE(made["minVersion"].toString(), least);
    QCOMPARE(made.contains("minVersion"), !least.isEmpty());
    QCOMPARE(made["setupUrl"].toString(), QString("r-1.3.0.exe"));
}

// Each of a clock that is behind: a second later than what is published.
void ManifestCarryTest::timesBehindThePreviousOne_data() {
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("time");
    QTest::newRow("in universal time") << "2126-01-01T06:00:00Z"
                                       << "2126-01-01T06:00:01Z";
    QTest::newRow("in the time of a place") << "2126-01-01T08:00:00+02:00"
                                            << "2126-01-01T06:00:01Z";
    QTest::newRow("at the end of a year") << "2126-12-31T23:59:59Z"
                                          << "2127-01-01T00:00:00Z";
    QTest::newRow("with parts of a second") << "2126-01-01T06:00:00.700Z"
                                            << "2126-01-01T06:00:01Z";
}

void ManifestCarryTest::timesBehindThePreviousOne() {
    QFETCH(QString, before);
    QTEST(ctl::timeBehind({{"publishedAt", before}}), "time");
}

void ManifestCarryTest::withoutATimeItIsNow_data() {
    QTest::addColumn<QJsonObject>("previous");
    QTest::newRow("none is published") << QJsonObject();
    QTest::newRow("long ago") << QJsonObject{{"publishedAt", "2020-01-01T00:00:00Z"}};
    QTest::newRow("a word") << QJsonObject{{"publishedAt", "yesterday"}};
    QTest::newRow("a number") << QJsonObject{{"publishedAt", 4102444800.0}};
    QTest::newRow("a day that no month has")
        << QJsonObject{{"publishedAt", "2126-02-30T00:00:00Z"}};
}

void ManifestCarryTest::withoutATimeItIsNow() {
    QFETCH(QJsonObject, previous);
    const QString earliest = secondsFromNow(0);
    const QString time = ctl::timeBehind(previous);
    QVERIFY2(earliest <= time && time <= secondsFromNow(0), qPrintable(time));
}

void ManifestCarryTest::publishedAgain_data() {
    QTest::addColumn<QByteArray>("manifest");
    QTest::addColumn<QByteArray>("again"); // without its time
    QTest::newRow("all of it, its signature aside")
        << QByteArray(
               R"({"schemaVersion":2,"signature":"AA","note":"a","projects":[{"name":"x"}]})")
        << QByteArray(R"({"schemaVersion":2,"note":"a","projects":[{"name":"x"}]})");
    QTest::newRow("without a version of its format it gets none")
        << QByteArray(R"({"plugins":[]})") << QByteArray(R"({"plugins":[]})");
    QTest::newRow("of a component's version what is signed")
        << QByteArray(R"({"runtime":{"setupUrl":"v2.0.0/r-1.0.0.exe","version":"3.0.0"}})")
        << QByteArray(R"({"runtime":{"setupUrl":"v2.0.0/r-1.0.0.exe","version":"2.0.0"}})");
}

void ManifestCarryTest::publishedAgain() {
    QFETCH(QByteArray, manifest);
    QFETCH(QByteArray, again);
    QJsonObject expected = objectOf(again);
    expected["publishedAt"] = "2126-01-01T06:00:01Z";
    QCOMPARE(
        textOf(ctl::publishedAgain(objectOf(manifest), {{"publishedAt", "2126-01-01T06:00:00Z"}})),
        textOf(expected));
}

QUORVANE_TEST_MAIN(QCoreApplication, ManifestCarryTest)
#include "manifest_carry_test.moc"
