// What the examples of all commands read: files in a folder of their own.
#pragma once

#include "publisher.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "small_project.h"
#include "support/manifest_maker.h"
#include "support/project_folder.h"
#include "update/canonical_manifest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonObject>
#include <QMap>
#include <QTest>

namespace support {
namespace examples {

// An update as a publisher's folder holds it, the key that it is signed with, and a line PC that
// trusts that key.
inline void layOutUpdate(const ProjectFolder &folder) {
    folder.write("private.pem", publisher::privatePem());
    folder.write("update.pub", publisher::publicPem());
    folder.write("line_pc/bin/config/update.pub", publisher::publicPem());
    QVERIFY(
        QFile::setPermissions(folder.path("private.pem"), QFile::ReadOwner | QFile::WriteOwner));

    folder.write("demo-1.2.0.zip", zipOf(smallProject()));

    const QString manifest =
        jsonText({{"schemaVersion", 1},
                  {"runtime", QJsonObject{{"setupUrl", "setup-1.2.0.exe"}, {"version", "1.2.0"}}}});
    const QByteArray signature = publisher::sign(canonicalManifestText(manifest).toUtf8());
    const QByteArray complete = ctl::withSignature(manifest, signature).toUtf8();
    folder.write("manifest.json", complete);
    folder.write("manifest.sig", signature);
    folder.write("site/manifest.json", complete);
    folder.write("site/setup-1.2.0.exe", "an installer");
    QVERIFY(QDir(folder.path("")).mkpath("stick"));
}

// Lays out the files that the examples name. Each example runs in a folder of its own.
inline void layOut(const ProjectFolder &folder) {
    folder.write("main.ys", "int a = 1;\n");
    folder.write("FunctionLib.ini", "1,foo,0,\n");
    folder.write("launcher.log",
                 "2026-11-20 06:00:00 [task check_1] started kind=check\n"
                 "2026-11-20 06:00:03 Online updates are not available (network request timed "
                 "out). You can update from a USB stick instead: QuorvanerUpdate/manifest.json.\n"
                 "2026-11-20 07:00:00 Target exited with code 1. Log: launcher.log\n");
    folder.write("demo/main.ys", "int a = 1;\n");
    folder.write("demo/demo.yslib", R"({"schemaVersion": 1,
"project": {"name": "demo", "displayName": "Demo", "createdAt": "2026-01-01"},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})");
    layOutUpdate(folder);
}

// The bytes of all files below it, by their paths.
inline QMap<QString, QByteArray> contentsOf(const ProjectFolder &folder) {
    QMap<QString, QByteArray> contents;
    QDirIterator entry(folder.path(""), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entry.hasNext()) {
        const QString name = QDir(folder.path("")).relativeFilePath(entry.next());
        contents.insert(name, folder.read(name));
    }
    return contents;
}

} // namespace examples
} // namespace support
