#include "measured_project.h"

#include "../support/measured_process.h"
#include "frame/app_paths.h"
#include "launcher/offer/project_apply.h"
#include "library/function_library.h"
#include "support/manifest_maker.h"
#include "update/files/text_file.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>

namespace {

constexpr char projectText[] = R"({"schemaVersion": 1,
"project": {"name": "line3", "displayName": "Line 3", "createdAt": "2026-01-01", "version": "1.0"},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";

constexpr int largestPiece = 1 << 17; // bytes

void append(QFile &file, const QByteArray &content) {
    if (file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

void open(QFile &file) {
    if (!ensureParentDir(file.fileName()) || !file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

void write(const QString &path, const QByteArray &content) {
    QFile file(path);
    open(file);
    append(file, content);
}

// Half of each piece can be packed, half not.
QByteArray pieceOf(quint32 *state, int size) {
    QByteArray content(size, '\0');
    for (int i = 0; i < size / 2; ++i) {
        *state = *state * 1664525U + 1013904223U;
        content[i] = char(*state >> 24);
    }
    return content;
}

void writeData(const QString &path, int number, qint64 size) {
    QFile file(path);
    open(file);
    quint32 state = quint32(number) * 2654435761U + 1;
    for (qint64 left = size; left > 0; left -= largestPiece)
        append(file, pieceOf(&state, int(qMin<qint64>(left, largestPiece))));
}

void makeManifest(const Place &place) {
    const support::KeyPair publisher = support::KeyPair::rsa(2048);
    const QJsonObject record{{"name", "line3"},
                             {"version", "2.0.0"},
                             {"zipUrl", "line3.zip"},
                             {"zipSha256", fileSha256Hex(place.at("line3.zip"))}};
    const QJsonObject manifest{{"projects", QJsonArray{record}}};
    write(place.at("manifest.json"), support::signedManifest(manifest, publisher).toUtf8());
    write(place.at("app/config/update.pub"), publisher.publicPem().toUtf8());
}

} // namespace

QByteArray Place::bytes(const char *name) const {
    return QFile::encodeName(at(name));
}

void makePackage(const Place &place, int mebibytes, int files) {
    const qint64 size = (qint64(mebibytes) << 20) / files;
    write(place.at("old/line3.yslib"), projectText);
    write(place.at("old/main.ys"), "");
    for (int i = 0; i < files; ++i)
        writeData(place.root + QStringLiteral("/old/data/%1/%2.bin").arg(i / 200).arg(i), i, size);
    (void)runProcess(
        {"sh", "-c", "cd \"$1\" && zip -q -1 -r ../line3.zip .", "sh", place.bytes("old")});
    write(place.at("old/logs/run.log"), "old");
    makeManifest(place);
}

int applyPackage(const Place &place, bool idle) {
    AppPaths::initialize();
    UpdateSnapshot snapshot;
    snapshot.manifestText = readTextFile(place.at("manifest.json"));
    snapshot.source = place.at("manifest.json");
    snapshot.baseLocation = place.root;
    snapshot.fromUsb = true;
    const QJsonObject manifest = QJsonDocument::fromJson(snapshot.manifestText.toUtf8()).object();
    snapshot.projectEntry = manifest.value("projects").toArray().first().toObject();
    if (idle)
        return 0;
    const ApplyResult result =
        applyProjectUpdate(snapshot, place.at("project/line3.yslib"), nullptr);
    if (!result.success)
        std::fprintf(stderr, "%s\n", qPrintable(result.message));
    return result.success ? 0 : 1;
}
