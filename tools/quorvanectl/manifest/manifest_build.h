// An unsigned manifest made from the packages that it is to name.
#pragma once

#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>

namespace ctl {

struct ManifestWish {
    QString folder; // where the manifest will lie; packages lie in it or below it
    QString base; // put before each package's path to make a URL of it; empty: paths stay relative
    QString publishedAt;
    QStringList projects;               // project packages
    QMap<QString, QString> installers;  // by the component's key
    QMap<QString, QString> minVersions; // of installers; without one, that of `previous` goes on
    QStringList plugins;                // "id,minVersion,path"
    // A manifest that was published: what of it is not given anew is carried over as it stands there,
    // and no package of it has to be at hand. Empty: there is none.
    QJsonObject previous;
};

// The manifest, all hashes computed. The names and versions of projects are read from their
// packages, those of components from their installers' names. Empty, with one line in `error` that
// names the file, if a package cannot be used. The function library must be loaded.
[[nodiscard]] QJsonObject buildManifest(const ManifestWish &wish, QString *error);

// The time of publication of what follows `previous`: now, or a second after that where this clock is behind
// it, since a later manifest says a later time.
[[nodiscard]] QString timeBehind(const QJsonObject &previous);

// What a manifest offered, published once more behind `published`. It is not signed.
[[nodiscard]] QJsonObject publishedAgain(const QJsonObject &manifest, const QJsonObject &published);

// Indented JSON that ends in a line feed.
[[nodiscard]] QByteArray manifestBytes(const QJsonObject &manifest);

} // namespace ctl
