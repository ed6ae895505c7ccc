#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/shell/command.h"
#include "quorvanectl/shell/force_option.h"
#include "update/files/failure.h"

#include <QUrl>

namespace ctl {
namespace {

const QLatin1String inPlaceOption("in-place");

} // namespace

void declareOut(QCommandLineParser &parser, const QString &otherwise, Place place) {
    parser.addOption({QStringLiteral("out"),
                      QStringLiteral("Writes to this file%1.").arg(otherwise),
                      QStringLiteral("file")});
    if (place == Place::OutOrInPlace) {
        parser.addOption(
            {inPlaceOption, QStringLiteral("Writes over the manifest itself, in one step.")});
    }
    declareForce(parser);
}

QString placeOf(const QCommandLineParser &parser, Place place) {
    return place == Place::OutOrInPlace && parser.isSet(inPlaceOption)
               ? firstArgument(parser)
               : parser.value(QStringLiteral("out"));
}

bool mayDeliver(const QCommandLineParser &parser, const QStringList &inputs, QString *error,
                Place place) {
    const bool isInPlace = place == Place::OutOrInPlace && parser.isSet(inPlaceOption);
    if (isInPlace && parser.isSet(QStringLiteral("out")))
        return fail(QStringLiteral("--in-place and --out name two places; give one"), error);
    const QString path = placeOf(parser, place);
    return path.isEmpty() || mayWrite(path, isInPlace || isForced(parser), error, inputs);
}

int deliver(const QByteArray &bytes, const QCommandLineParser &parser, const Console &console,
            const QStringList &inputs, Place place, const QString &done) {
    const QString path = placeOf(parser, place);
    QString error;
    if (!mayDeliver(parser, inputs, &error, place))
        return refuse(console, error);
    if (path.isEmpty()) {
        print(console, QString::fromUtf8(bytes));
        return Clean;
    }
    if (!writeFile(path, bytes, true, &error)) // that it may be was asked above
        return refuse(console, error);
    printLine(console, QStringLiteral("%1: %2").arg(spelledOut(path), done));
    return Clean;
}

void declarePublicKey(QCommandLineParser &parser, const QString &purpose) {
    parser.addOption({QStringLiteral("key"), purpose, QStringLiteral("update.pub")});
}

void printPublicKey(const Console &console, const QString &path) {
    printLine(
        console,
        QStringLiteral("  %1: public, SHA-256 %2").arg(spelledOut(path), fingerprintIn(path)));
}

void declareBase(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("base"),
                      QStringLiteral("The URL of the manifest's folder, where the packages have "
                                     "absolute addresses."),
                      QStringLiteral("URL")});
}

bool isServerAddress(const QString &text) {
    const QUrl url(text);
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
}

QString notAnAddress(const QString &text) {
    return QStringLiteral("%1: not an address that begins with http:// or https://").arg(text);
}

} // namespace ctl
