#include "quorvanectl/support/machine_facts.h"

#include "frame/app_paths.h"
#include "quorvanectl/support/secrets.h"
#include "quorvanectl/support/system_facts.h"
#include "update/default_manifest_url.h"
#include "update/files/text_file.h"
#include "update/manifest_signature.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QNetworkProxyFactory>
#include <QStorageInfo>
#include <QTimeZone>
#include <QUrl>

namespace ctl {
namespace {

// What changes how the launcher finds its places, its language, its size and the network.
constexpr const char *variables[] = {"QUORVANE_DEV",
                                     "LANG",
                                     "LC_ALL",
                                     "LC_MESSAGES",
                                     "TZ",
                                     "XDG_DATA_HOME",
                                     "DISPLAY",
                                     "WAYLAND_DISPLAY",
                                     "QT_QPA_PLATFORM",
                                     "QT_SCALE_FACTOR",
                                     "QT_FONT_DPI",
                                     "QT_SCREEN_SCALE_FACTORS",
                                     "GDK_SCALE",
                                     "QT_AUTO_SCREEN_SCALE_FACTOR",
                                     "http_proxy",
                                     "HTTP_PROXY",
                                     "https_proxy",
                                     "HTTPS_PROXY",
                                     "all_proxy",
                                     "ALL_PROXY",
                                     "no_proxy",
                                     "NO_PROXY"};

// A proxy may be named without a scheme, and with any sign in its password.
QString withoutUser(const QString &value) {
    const int at = value.lastIndexOf(QLatin1Char('@'));
    const int scheme = value.indexOf(QLatin1String("://"));
    const int begin = scheme < 0 ? 0 : scheme + 3;
    return withoutSecrets(
        at < begin ? value : value.left(begin) + QStringLiteral("(left out)") + value.mid(at));
}

QJsonObject environment() {
    QJsonObject told;
    for (const char *const name : variables) {
        const QString key = QLatin1String(name);
        if (qEnvironmentVariableIsSet(name))
            told.insert(key, key.endsWith(QLatin1String("proxy"), Qt::CaseInsensitive)
                                 ? withoutUser(qEnvironmentVariable(name))
                                 : qEnvironmentVariable(name));
    }
    return told;
}

// Of a folder that is not there, that of the nearest one that is.
QJsonObject placeFacts(const QString &path) {
    QString there = path;
    while (!QFileInfo::exists(there) && QFileInfo(there).path() != there)
        there = QFileInfo(there).path();
    const QStorageInfo volume(there);
    return {{QStringLiteral("path"), path},
            {QStringLiteral("exists"), QFileInfo::exists(path)},
            {QStringLiteral("writable"), QFileInfo(path).isWritable()},
            {QStringLiteral("volume"), volume.rootPath()},
            {QStringLiteral("fileSystem"), QString::fromLatin1(volume.fileSystemType())},
            {QStringLiteral("readOnly"), volume.isReadOnly()},
            {QStringLiteral("freeBytes"), volume.bytesAvailable()},
            {QStringLiteral("totalBytes"), volume.bytesTotal()}};
}

QJsonObject placesFacts(const DataFolder &data, const QString &projectFile) {
    QJsonObject told{{QStringLiteral("data"), placeFacts(data.path)},
                     {QStringLiteral("projects"), placeFacts(AppPaths::projectsDirectory())},
                     {QStringLiteral("temporary"), placeFacts(QDir::tempPath())}};
    if (!projectFile.isEmpty())
        told.insert(QStringLiteral("selectedProject"),
                    placeFacts(QFileInfo(projectFile).absolutePath()));
    return told;
}

QJsonObject timeFacts() {
    const QDateTime now = QDateTime::currentDateTime();
    return {{QStringLiteral("local"), now.toString(Qt::ISODate)},
            {QStringLiteral("zone"), QString::fromLatin1(QTimeZone::systemTimeZoneId())},
            {QStringLiteral("secondsFromUtc"), now.offsetFromUtc()}};
}

QJsonArray screenFacts() {
    QJsonArray told;
    for (const Screen &screen : screensOfThisPc())
        told.append(QJsonObject{{QStringLiteral("name"), screen.name},
                                {QStringLiteral("size"), screen.size},
                                {QStringLiteral("dotsPerInch"), screen.dotsPerInch}});
    return told;
}

// As it is told where a key is made; empty if there is none.
QString keyFingerprint() {
    const QByteArray der = decodePemBody(readTextFile(AppPaths::updatePublicKeyPath()));
    return der.isEmpty() ? QString()
                         : QString::fromLatin1(
                               QCryptographicHash::hash(der, QCryptographicHash::Sha256).toHex());
}

QJsonArray proxiesFor(const QUrl &address) {
    QJsonArray told;
    for (const QNetworkProxy &proxy :
         QNetworkProxyFactory::systemProxyForQuery(QNetworkProxyQuery(address))) {
        told.append(
            proxy.type() == QNetworkProxy::NoProxy
                ? QStringLiteral("none")
                : QStringLiteral("%1:%2").arg(proxy.hostName(), QString::number(proxy.port())));
    }
    return told;
}

QJsonObject updateFacts() {
    const QString address = defaultManifestUrl();
    return {{QStringLiteral("address"), address},
            {QStringLiteral("keyFingerprint"), keyFingerprint()},
            {QStringLiteral("proxies"), proxiesFor(QUrl(address))}};
}

} // namespace

QJsonObject machineFacts(const DataFolder &data, const QString &projectFile) {
    const Memory memory = memoryOfThisPc();
    return {{QStringLiteral("environment"), environment()},
            {QStringLiteral("memory"),
             QJsonObject{{QStringLiteral("totalBytes"), memory.total},
                         {QStringLiteral("availableBytes"), memory.available}}},
            {QStringLiteral("places"), placesFacts(data, projectFile)},
            {QStringLiteral("screens"), screenFacts()},
            {QStringLiteral("time"), timeFacts()},
            {QStringLiteral("update"), updateFacts()}};
}

} // namespace ctl
