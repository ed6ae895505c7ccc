// A signed offer of one project package, on a stick or online, and the project that it replaces.
#pragma once

#include "installation.h"
#include "launcher/offer/update_context.h"
#include "support/file_tree.h"
#include "support/manifest_maker.h"
#include "support/staged_main.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QTemporaryDir>

namespace update_offer {

inline const support::KeyPair &publisher() {
    static const support::KeyPair key = support::KeyPair::rsa(2048);
    return key;
}

// Lets the installation trust the publisher.
inline bool trust() {
    return installation::write(installation::appPath("config/update.pub"), publisher().publicPem());
}

inline QString sha256(const QByteArray &bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

// A project file without findings; `more` stands in front of its other keys.
inline QByteArray projectText(const QByteArray &version, const QByteArray &more = QByteArray()) {
    return "{" + more + R"("schemaVersion": 1,
"project": {"name": "line", "displayName": "产线", "createdAt": "2026-01-01", "version": ")" +
           version + R"("},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";
}

inline support::FileTree project(const QByteArray &version) {
    return {{"demo.yslib", projectText(version)}, {"main.ys", ""}, {"数据/配方.txt", version}};
}

// The folder of the project whose file addProject() of installation.h writes.
inline QString projectFolder() {
    return AppPaths::projectsDirectory() + "/line";
}

// The project with this content, as it lies before an update; returns the project file.
inline QString install(const support::FileTree &tree) {
    support::writeTree(projectFolder(), tree);
    return projectFolder() + "/demo.yslib";
}

struct Offer {
    QTemporaryDir place; // the stick
    UpdateSnapshot snapshot;

    explicit Offer(const support::FileTree &content, const QString &version = "2.0.0")
        : Offer(support::zipOf(content), version) {}

    explicit Offer(const QByteArray &zip, const QString &version = "2.0.0") {
        support::writeTree(place.path(), {{"包/line.zip", zip}});
        snapshot.source = place.filePath("manifest.json");
        snapshot.baseLocation = place.path();
        snapshot.fromUsb = true;
        snapshot.projectEntry = {{"name", "line"},
                                 {"version", version},
                                 {"zipUrl", "包/line.zip"},
                                 {"zipSha256", sha256(zip)}};
        sign();
    }

    [[nodiscard]] QString zipPath() const { return place.filePath("包/line.zip"); }

    // Changes one key of the project record.
    Offer &with(const QString &key, const QJsonValue &value) {
        snapshot.projectEntry[key] = value;
        sign();
        return *this;
    }

    void sign() {
        snapshot.manifestText =
            support::signedManifest({{"projects", QJsonArray{snapshot.projectEntry}}}, publisher());
    }

    // The same offer from a web address, where `name` is the package.
    void putOnline(const QString &baseUrl, const QString &name) {
        snapshot.fromUsb = false;
        snapshot.source = baseUrl + "manifest.json";
        snapshot.baseLocation = baseUrl;
        with("zipUrl", name);
    }
};

} // namespace update_offer
