// A publisher's desk before a release: a project, a key pair, and the site that comes of them.
#pragma once

#include "publisher_desk.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace support {

const QString release = "@ site line3 --key private.pem --version ";
const QString zip12 = "site/packages/产线三-1.2.0.zip";

[[nodiscard]] inline FileTree releasesFiles() {
    FileTree tree{{"private.pem", publisher::privatePem()}, {"update.pub", publisher::publicPem()}};
    const FileTree project = smallProject();
    for (auto file = project.begin(); file != project.end(); ++file)
        tree.insert("line3/" + file.key(), file.value());
    return tree;
}

// A project and a key; with `isPublished` a site that offers an installer, too.
class ReleaseDesk : public Desk {
public:
    explicit ReleaseDesk(bool isPublished = false)
        : Desk("quorvanectl update release", releasesFiles()) {
        arrange("chmod 600 private.pem");
        if (isPublished) {
            arrange("mkdir -p site/packages && echo runtime >site/packages/setup-1.3.0.exe && "
                    "quorvanectl update manifest --runtime site/packages/setup-1.3.0.exe "
                    "--plugin camera,1.1.0,plugins/camera.dll --published-at 2026-01-01T06:00:00Z "
                    "--out site/plain.json && "
                    "quorvanectl update sign site/plain.json --key private.pem "
                    "--out site/manifest.json && rm site/plain.json");
        }
    }

    [[nodiscard]] QJsonObject manifest() const {
        return QJsonDocument::fromJson(read("site/manifest.json")).object();
    }
    [[nodiscard]] QString sumOf(const QString &name) const {
        return QCryptographicHash::hash(read(name), QCryptographicHash::Sha256).toHex();
    }
};

// What is told at the end.
[[nodiscard]] inline QString signedLine(const QString &would = {}) {
    return "site/manifest.json: " + would +
           "signed with a key of 3072 bits, verified and put in place\n";
}

} // namespace support
