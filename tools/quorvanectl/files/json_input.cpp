#include "quorvanectl/files/json_input.h"

#include "quorvanectl/files/file_access.h"

#include <QJsonDocument>

namespace ctl {
namespace {

TextPlace placeAtEnd(const QString &text) {
    return {text.count(QLatin1Char('\n')) + 1, text.size() - text.lastIndexOf(QLatin1Char('\n'))};
}

QJsonParseError faultIn(const QByteArray &json) {
    QJsonParseError fault = {};
    (void)QJsonDocument::fromJson(json, &fault);
    return fault;
}

// Of these faults the parser tells a place behind the character that it cannot take, and behind the
// blanks that follow; of any other the character itself.
bool isToldFromBehind(QJsonParseError::ParseError error) {
    switch (error) {
    case QJsonParseError::UnterminatedObject:
    case QJsonParseError::UnterminatedArray:
    case QJsonParseError::MissingNameSeparator:
    case QJsonParseError::MissingValueSeparator:
    case QJsonParseError::MissingObject:
    case QJsonParseError::IllegalValue:
    case QJsonParseError::DeepNesting:
        return true;
    default:
        return false;
    }
}

// Where the text ends too early there is no such character: one more would be it. A letter is one where a
// comma belongs, a digit where a value does.
bool isCutOff(const QByteArray &json, const QJsonParseError &fault) {
    return fault.offset == json.size() &&
           (faultIn(json + 'x').offset > fault.offset || faultIn(json + '1').offset > fault.offset);
}

bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

// The number of the byte at which the text ceases to be JSON.
int offsetOfFault(const QByteArray &json, const QJsonParseError &fault) {
    int offset = fault.offset;
    if (!isToldFromBehind(fault.error) || isCutOff(json, fault))
        return offset;
    while (offset > 0 && isBlank(json.at(offset - 1)))
        --offset;
    return qMax(0, offset - 1);
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

std::optional<TextPlace> jsonFault(const QString &text) {
    const QByteArray bytes = text.toUtf8();
    const QJsonParseError fault = faultIn(bytes);
    if (fault.error == QJsonParseError::NoError)
        return std::nullopt;
    return placeAtEnd(QString::fromUtf8(bytes.left(offsetOfFault(bytes, fault))));
}

QString placeOfJsonFault(const QString &text) {
    const std::optional<TextPlace> place = jsonFault(text);
    if (!place)
        return QString();
    return QStringLiteral("line %1, column %2")
        .arg(QString::number(place->line), QString::number(place->column));
}

} // namespace ctl
