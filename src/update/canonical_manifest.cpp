#include "update/canonical_manifest.h"
#include "update/manifest_keys.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <cmath>

namespace {

// Written by Qt's JSON itself: its escaping is the format's escaping.
QString jsonQuote(const QString &text) {
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    if (array.size() < 2)
        return QStringLiteral("\"\"");
    return QString::fromUtf8(array.constData() + 1, array.size() - 2);
}

QString member(QLatin1String key, const QString &value) {
    return QLatin1Char('"') + key + QLatin1String("\":") + value;
}

QString object(const QStringList &members) {
    return QLatin1Char('{') + members.join(QLatin1Char(',')) + QLatin1Char('}');
}

// The listed keys that the object holds, in list order. A value of another type is written as an
// empty string: the signature covers what a reader would see.
template<typename Keys>
QString canonicalRecord(const QJsonValue &value, const Keys &keys) {
    const QJsonObject record = value.toObject();
    QStringList members;
    for (const QLatin1String key : keys) {
        if (record.contains(key))
            members.append(member(key, jsonQuote(record.value(key).toString())));
    }
    return object(members);
}

template<typename Keys>
QString canonicalRecords(const QJsonValue &value, const Keys &keys) {
    QStringList records;
    const QJsonArray array = value.toArray();
    for (const QJsonValue &element : array)
        records.append(canonicalRecord(element, keys));
    return QLatin1Char('[') + records.join(QLatin1Char(',')) + QLatin1Char(']');
}

// A whole number is never cast to an integer type: it may lie beyond all of them.
QString canonicalNumber(double number) {
    const double whole = std::trunc(number);
    if (std::fabs(number - whole) >= 1e-9)
        return QString::number(number, 'g', 15);
    return whole == 0.0 ? QStringLiteral("0") : QString::number(whole, 'f', 0);
}

QString canonicalScalar(const QJsonValue &value) {
    if (value.isDouble())
        return canonicalNumber(value.toDouble());
    if (value.isBool())
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    return jsonQuote(value.toString());
}

QString canonicalValue(const QJsonValue &value, manifest_keys::RootValue kind) {
    switch (kind) {
    case manifest_keys::RootValue::Scalar:
        return canonicalScalar(value);
    case manifest_keys::RootValue::Text:
        break;
    case manifest_keys::RootValue::Component:
        return canonicalRecord(value, manifest_keys::signedOfComponent);
    case manifest_keys::RootValue::Plugins:
        return canonicalRecords(value, manifest_keys::ofPlugin);
    case manifest_keys::RootValue::Projects:
        return canonicalRecords(value, manifest_keys::ofProject);
    }
    return jsonQuote(value.toString());
}

} // namespace

std::optional<QJsonObject> parseManifest(const QString &manifestText) {
    const QJsonDocument document = QJsonDocument::fromJson(manifestText.toUtf8());
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

QString canonicalManifest(const QJsonObject &root) {
    QStringList members; // `signature` is dropped by never being listed
    for (const manifest_keys::RootKey &entry : manifest_keys::root) {
        if (root.contains(entry.key))
            members.append(member(entry.key, canonicalValue(root.value(entry.key), entry.holds)));
    }
    return object(members);
}

QString canonicalManifestText(const QString &manifestText) {
    const std::optional<QJsonObject> root = parseManifest(manifestText);
    return root ? canonicalManifest(*root) : QString();
}
