// Where names are declared and used, and how a global gets another one.
#include "quorvanectl/language_server/language_server.h"

namespace ctl {
namespace {

// The protocol's numbers.
constexpr int isRead = 2;
constexpr int isWritten = 3;

} // namespace

QJsonObject LanguageServer::locationOf(const NamePlace &place) {
    return {{QStringLiteral("uri"), uriOf(place.file)},
            {QStringLiteral("range"),
             positionsIn(place.file).rangeBetween(place.at.from, place.at.to)}};
}

QJsonValue LanguageServer::findDefinition(const QJsonObject &params) {
    const std::optional<AskedPlace> asked = askedPlace(params);
    if (!asked)
        return {};
    QJsonArray locations;
    for (const NamePlace &place : workspace.definitionsAt(asked->path, asked->index))
        locations.append(locationOf(place));
    return locations;
}

QJsonValue LanguageServer::findReferences(const QJsonObject &params) {
    const std::optional<AskedPlace> asked = askedPlace(params);
    if (!asked)
        return {};
    const bool withDeclarations = params.value(QLatin1String("context"))
                                      .toObject()
                                      .value(QLatin1String("includeDeclaration"))
                                      .toBool();
    QJsonArray locations;
    for (const NamePlace &place : workspace.referencesAt(asked->path, asked->index)) {
        if (withDeclarations || !place.declares)
            locations.append(locationOf(place));
    }
    return locations;
}

QJsonValue LanguageServer::highlight(const QJsonObject &params) {
    const std::optional<AskedPlace> asked = askedPlace(params);
    if (!asked)
        return {};
    QJsonArray highlights;
    for (const NamePlace &place : workspace.highlightsAt(asked->path, asked->index))
        highlights.append(QJsonObject{
            {QStringLiteral("range"), asked->places.rangeBetween(place.at.from, place.at.to)},
            {QStringLiteral("kind"), place.writes ? isWritten : isRead}});
    return highlights;
}

QJsonValue LanguageServer::prepareRename(const QJsonObject &params) {
    const std::optional<AskedPlace> asked = askedPlace(params);
    if (!asked)
        return {};
    const std::optional<NameMeaning> global = workspace.globalAt(asked->path, asked->index);
    if (!global) {
        refuse(RpcError::RequestFailed, QLatin1String(renamesGlobalsAlone));
        return {};
    }
    return QJsonObject{
        {QStringLiteral("range"), asked->places.rangeBetween(global->at.from, global->at.to)},
        {QStringLiteral("placeholder"), global->name}};
}

QJsonValue LanguageServer::rename(const QJsonObject &params) {
    const std::optional<AskedPlace> asked = askedPlace(params);
    const QJsonValue newName = params.value(QLatin1String("newName"));
    if (!newName.isString() && asked)
        refuse(RpcError::InvalidParams, QStringLiteral("newName is no text"));
    if (!newName.isString() || !asked)
        return {};
    const GlobalRename renamed = workspace.renameAt(asked->path, asked->index, newName.toString());
    if (!renamed.refusal.isEmpty()) {
        refuse(RpcError::RequestFailed, renamed.refusal);
        return {};
    }
    QJsonObject changes;
    for (const NamePlace &place : renamed.places) {
        const QString uri = uriOf(place.file);
        QJsonArray edits = changes.value(uri).toArray();
        edits.append(
            QJsonObject{{QStringLiteral("range"), locationOf(place).value(QLatin1String("range"))},
                        {QStringLiteral("newText"), newName}});
        changes.insert(uri, edits);
    }
    return QJsonObject{{QStringLiteral("changes"), changes}};
}

} // namespace ctl
