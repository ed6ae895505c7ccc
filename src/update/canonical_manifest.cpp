#include "update/canonical_manifest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <cmath>
#include <initializer_list>

namespace {

// Written by the JSON library itself: its escaping is the format's escaping.
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
QString canonicalRecord(const QJsonValue &value, std::initializer_list<QLatin1String> keys) {
    const QJsonObject record = value.toObject();
    QStringList members;
    for (const QLatin1String key : keys) {
        if (record.contains(key))
            members += member(key, jsonQuote(record.value(key).toString()));
    }
    return object(members);
}

// `version` stays outside the signed form: a settled property of the format
// (theVersionOfAComponentNeverChangesIt).
QString canonicalComponent(const QJsonValue &value) {
    return canonicalRecord(value, {QLatin1String("minVersion"), QLatin1String("setupUrl"),
                                   QLatin1String("setupSha256")});
}

QString canonicalRecords(const QJsonValue &value, std::initializer_list<QLatin1String> keys) {
    QStringList records;
    const QJsonArray array = value.toArray();
    for (const QJsonValue &element : array)
        records += canonicalRecord(element, keys);
    return QLatin1Char('[') + records.join(QLatin1Char(',')) + QLatin1Char(']');
}

QString canonicalPlugins(const QJsonValue &value) {
    return canonicalRecords(
        value, {QLatin1String("id"), QLatin1String("minVersion"), QLatin1String("path")});
}

QString canonicalProjects(const QJsonValue &value) {
    return canonicalRecords(value, {QLatin1String("name"), QLatin1String("version"),
                                    QLatin1String("zipUrl"), QLatin1String("zipSha256")});
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

QString canonicalText(const QJsonValue &value) {
    return jsonQuote(value.toString());
}

struct RootKey {
    QLatin1String key;
    QString (*write)(const QJsonValue &value);
};

// The order is this list, neither the alphabet's nor the file's.
const RootKey rootKeys[] = {
    {QLatin1String("schemaVersion"), canonicalScalar},
    {QLatin1String("publishedAt"), canonicalText},
    {QLatin1String("runtime"), canonicalComponent},
    {QLatin1String("launcher"), canonicalComponent},
    {QLatin1String("editor"), canonicalComponent},
    {QLatin1String("pythonTools"), canonicalComponent},
    {QLatin1String("plugins"), canonicalPlugins},
    {QLatin1String("projects"), canonicalProjects},
};

} // namespace

std::optional<QJsonObject> parseManifest(const QString &manifestText) {
    const QJsonDocument document = QJsonDocument::fromJson(manifestText.toUtf8());
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

QString canonicalManifest(const QJsonObject &root) {
    QStringList members; // `signature` is dropped by never being listed
    for (const RootKey &entry : rootKeys) {
        if (root.contains(entry.key))
            members += member(entry.key, entry.write(root.value(entry.key)));
    }
    return object(members);
}

QString canonicalManifestText(const QString &manifestText) {
    const std::optional<QJsonObject> root = parseManifest(manifestText);
    return root ? canonicalManifest(*root) : QString();
}
