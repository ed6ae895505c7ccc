// A publisher's folder with a clean, unsigned manifest and its packages, to be spoilt by a test.
#pragma once

#include "quorvanectl/manifest/manifest_build.h"

#include "openssl_program.h"
#include "publisher.h"
#include "small_project.h"

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>

namespace support {

class PublishedUpdate {
public:
    PublishedUpdate() {
        writeTree(path("line3"), smallProject());
        publisher::packSmallProject(path("line3"), path("site/packages"));
        writeTree(path("site"), {{"packages/runtime-setup-1.3.0.exe", "runtime 1.3.0"},
                                 {"packages/launcher-setup-1.4.0.exe", "launcher 1.4.0"}});
        ctl::ManifestWish wish;
        wish.folder = path("site");
        wish.publishedAt = "2026-11-20T06:00:00Z";
        wish.projects = QStringList{path("site/packages/产线三-1.2.0.zip")};
        wish.installers = {{"runtime", path("site/packages/runtime-setup-1.3.0.exe")},
                           {"launcher", path("site/packages/launcher-setup-1.4.0.exe")}};
        wish.minVersions = {{"runtime", "1.0.0"}};
        wish.plugins = QStringList{"camera,1.1.0,plugins/camera.dll"};
        QString error;
        manifest = ctl::buildManifest(wish, &error);
        if (manifest.isEmpty())
            qFatal("%s", qPrintable(error));
    }

    [[nodiscard]] QString path(const QString &name) const { return folder.filePath(name); }
    [[nodiscard]] QString site() const { return path("site"); }

    // Writes the manifest as it is now and returns its path.
    QString writeManifest(const QString &name = "manifest.json") const {
        const QString file = path("site/" + name);
        writeBytes(file, ctl::manifestBytes(manifest));
        return file;
    }

    QJsonObject manifest;

private:
    QTemporaryDir folder;
};

} // namespace support
