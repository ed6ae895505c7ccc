// The launcher held to the vectors of tests/data/update that tell what a manifest offers, which
// another implementation wrote. What they tell of the signature, update/conformance checks.
#include "installation.h"
#include "launcher/launcher_service.h"
#include "launcher/offer/update_component.h"
#include "support/staged_main.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using installation::appPath;

namespace {

// The places of one vector's installation, and what stands for them in its texts.
struct Places {
    QString app = QCoreApplication::applicationDirPath();
    QString above = QFileInfo(app).absolutePath();
    QString stick = support::stageRoot() + "/stick";
    QString project;

    [[nodiscard]] QString filled(const QJsonValue &text) const {
        return text.toString()
            .replace("{app}", app)
            .replace("{above}", above)
            .replace("{stick}", stick)
            .replace("{project}", project);
    }
};

// A null in the vector: there is no such file.
bool writeIfGiven(const QString &path, const QJsonValue &text) {
    return text.isNull() || installation::write(path, text.toString());
}

bool layOut(const QJsonObject &wanted, Places *places) {
    bool done = writeIfGiven(appPath("config/release_version.json"), wanted["release_version"]) &&
                writeIfGiven(AppPaths::installRoot() + "/python/.quorvane_python_manifest.json",
                             wanted["python_manifest"]);
    const QJsonArray files = wanted["files"].toArray();
    for (const QJsonValue &file : files)
        done = done && installation::write(places->filled(file), "");
    const QJsonObject project = wanted["project"].toObject();
    if (project.isEmpty())
        return done;
    const QString folder = AppPaths::projectsDirectory() + '/' + project["folder"].toString() + '/';
    places->project = folder + project["file"].toString();
    return done && installation::write(places->project, project["text"].toString()) &&
           writeIfGiven(folder + ".quorvane-installed-version", project["sidecar"]);
}

QString jsonText(const QJsonValue &value) {
    return QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact));
}

// All that the launcher has to say about an offer, in the form of the vectors.
QJsonObject evaluationBy(LauncherService &service, const QJsonObject &manifest) {
    const auto told = [](const UpdateChoice &choice) {
        return QJsonObject{{"available", choice.available}, {"reason", choice.reason}};
    };
    QString summary;
    service.updateAvailable = service.evaluateManifest(manifest, &summary);
    const UpdateChoices choices = service.updateChoices();
    QJsonObject choicesTold{{"project", told(choices.project)}};
    QJsonObject current;
    QJsonObject target;
    for (const UpdateComponent *component : updateComponents) {
        const QString key = component->keyText();
        choicesTold.insert(key, told(choices.*(component->choice)));
        current.insert(key, UpdateContext::currentComponentVersion(key));
        target.insert(key,
                      UpdateContext::targetComponentVersion(service.snapshot.*(component->record)));
    }
    return {{"found", service.updateAvailable},
            {"summary", summary},
            {"choices", choicesTold},
            {"project_record", service.snapshot.projectEntry},
            {"fingerprint", service.onlineUpdateFingerprint()},
            {"items", service.onlineUpdateItems()},
            {"current", current},
            {"target", target},
            {"versions", UpdateContext::versionSummary()}};
}

} // namespace

class ConformanceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void evaluations_data();
    void evaluations();
};

void ConformanceTest::evaluations_data() {
    QTest::addColumn<QJsonObject>("vector");
    QFile file(QStringLiteral(UPDATE_DATA "/vectors.json"));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    int number = 0;
    const QJsonArray vectors = QJsonDocument::fromJson(file.readAll())["vectors"].toArray();
    for (const QJsonValue &vector : vectors) {
        if (!vector["evaluation"].isObject())
            continue;
        QTest::newRow(qPrintable(vector["name"].toString())) << vector.toObject();
        ++number;
    }
    QVERIFY(number >= 40);
}

void ConformanceTest::evaluations() {
    QFETCH(QJsonObject, vector);
    Places places;
    installation::reset();
    QDir(places.stick).removeRecursively();
    for (const QString &folder : {places.app + "/bin", places.app + "/BIN", places.above + "/bin",
                                  AppPaths::installRoot() + "/python"})
        QDir(folder).removeRecursively();
    const QJsonObject wanted = vector["installation"].toObject();
    QVERIFY(layOut(wanted, &places));

    LauncherService service;
    service.projectPath = places.project;
    service.snapshot.fromUsb = wanted["usb"].toBool();
    const QString online = "https://updates.example/Quorvaner/Update/";
    service.snapshot.baseLocation = service.snapshot.fromUsb ? places.stick : online;
    service.snapshot.source =
        service.snapshot.fromUsb ? places.stick + "/manifest.json" : online + "manifest.json";
    const QJsonObject manifest =
        QJsonDocument::fromJson(vector["manifest"].toString().toUtf8()).object();
    const QJsonObject given = evaluationBy(service, manifest);

    const QJsonObject expected =
        QJsonDocument::fromJson(
            places
                .filled(QString::fromUtf8(QJsonDocument(vector["evaluation"].toObject()).toJson()))
                .toUtf8())
            .object();
    QCOMPARE(given.keys(), expected.keys());
    for (const QString &key : expected.keys())
        QCOMPARE(key + jsonText(given[key]), key + jsonText(expected[key]));
}

QUORVANE_TEST_MAIN(QCoreApplication, ConformanceTest)
#include "conformance_test.moc"
