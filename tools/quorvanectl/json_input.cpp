#include "quorvanectl/json_input.h"

#include <QJsonDocument>

namespace ctl {
namespace {

TextPlace placeAtEnd(const QString &text) {
    return {text.count(QLatin1Char('\n')) + 1, text.size() - text.lastIndexOf(QLatin1Char('\n'))};
}

} // namespace

bool isJsonObject(const QString &path, const QString &text, QString *error) {
    const QByteArray bytes = text.toUtf8();
    QJsonParseError fault = {};
    if (QJsonDocument::fromJson(bytes, &fault).isObject())
        return true;
    *error = QStringLiteral("%1: is no JSON object").arg(path);
    if (fault.error != QJsonParseError::NoError) {
        const TextPlace place = placeAtEnd(QString::fromUtf8(bytes.left(fault.offset)));
        *error = QStringLiteral("%1: is no JSON: line %2, column %3: %4")
                     .arg(path, QString::number(place.line), QString::number(place.column),
                          fault.errorString());
    }
    return false;
}

} // namespace ctl
