#include "support/manifest_maker.h"

#include "update/canonical_manifest.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace support {
namespace {

QJsonObject component(const QString &name) {
    return {{"version", "1.2.0"},
            {"minVersion", "1.0.0"},
            {"setupUrl", "packages/" + name + "-setup-1.2.0.exe"},
            {"setupSha256", QString(64, QLatin1Char('a'))}};
}

QJsonObject project(const QString &name) {
    return {{"name", name},
            {"version", "1.2.0"},
            {"zipUrl", "projects/" + name + ".zip"},
            {"zipSha256", QString(64, QLatin1Char('b'))}};
}

} // namespace

QJsonObject fullManifest() {
    return {
        {"schemaVersion", 1},
        {"publishedAt", "2026-01-02T03:04:05Z"},
        {"runtime", component("runtime")},
        {"launcher", component("launcher")},
        {"editor", component("editor")},
        {"pythonTools", component("python")},
        {"plugins", QJsonArray{QJsonObject{
                        {"id", "camera"}, {"minVersion", "1.1.0"}, {"path", "bin/camera.dll"}}}},
        {"projects", QJsonArray{project(QStringLiteral("产线三")), project("demo")}}};
}

QJsonObject manifestOfProjects(int count) {
    QJsonArray projects;
    for (int i = 0; i < count; ++i)
        projects.append(project(QStringLiteral("line_%1").arg(i)));
    return {{"schemaVersion", 1}, {"projects", projects}};
}

QString jsonText(const QJsonObject &object) {
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QString signedManifest(QJsonObject manifest, const KeyPair &key) {
    const QByteArray data = canonicalManifestText(jsonText(manifest)).toUtf8();
    manifest.insert("signature", QString::fromLatin1(key.sign(data).toBase64()));
    return jsonText(manifest);
}

} // namespace support
