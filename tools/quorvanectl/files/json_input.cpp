#include "quorvanectl/files/json_input.h"

#include "quorvanectl/files/file_access.h"

#include <QJsonDocument>

namespace ctl {
namespace {

TextPlace placeAtEnd(const QString &text) {
    return {text.count(QLatin1Char('\n')) + 1, text.size() - text.lastIndexOf(QLatin1Char('\n'))};
}

} // namespace

bool isJsonObject(const QString &path, const QString &text, QString *error) {
    QJsonParseError fault = {};
    if (QJsonDocument::fromJson(text.toUtf8(), &fault).isObject())
        return true;
    const QString place = placeOfJsonFault(text);
    *error = place.isNull()
                 ? QStringLiteral("%1: is no JSON object").arg(path)
                 : QStringLiteral("%1: is no JSON: %2: %3").arg(path, place, fault.errorString());
    return false;
}

QString readJsonObject(const QString &path, QString *error) {
    const QString text = readText(path, error);
    return text.isNull() || isJsonObject(path, text, error) ? text : QString();
}

QString placeOfJsonFault(const QString &text) {
    const QByteArray bytes = text.toUtf8();
    QJsonParseError fault = {};
    (void)QJsonDocument::fromJson(bytes, &fault);
    if (fault.error == QJsonParseError::NoError)
        return QString();
    const TextPlace place = placeAtEnd(QString::fromUtf8(bytes.left(fault.offset)));
    return QStringLiteral("line %1, column %2")
        .arg(QString::number(place.line), QString::number(place.column));
}

} // namespace ctl
