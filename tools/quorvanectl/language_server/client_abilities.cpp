#include "quorvanectl/language_server/client_abilities.h"

#include <QJsonArray>

namespace ctl {
namespace {

// The value at the end of these keys.
QJsonValue at(const QJsonObject &object, std::initializer_list<const char *> keys) {
    QJsonValue value = object;
    for (const char *key : keys)
        value = value.toObject().value(QLatin1String(key));
    return value;
}

// The first of its encodings that is known here; they stand in the order in which it prefers them.
ColumnUnit chosenUnit(const QJsonObject &client) {
    const QJsonArray offered = at(client, {"general", "positionEncodings"}).toArray();
    for (const QJsonValue &encoding : offered) {
        if (encoding == QLatin1String("utf-8"))
            return ColumnUnit::Utf8;
        if (encoding == QLatin1String("utf-16"))
            break;
    }
    return ColumnUnit::Utf16;
}

} // namespace

ClientAbilities abilitiesIn(const QJsonObject &params) {
    const QJsonObject client = params.value(QLatin1String("capabilities")).toObject();
    const auto can = [&](std::initializer_list<const char *> keys) {
        return at(client, keys).toBool();
    };
    ClientAbilities abilities;
    abilities.unit = chosenUnit(client);
    abilities.showsRelated = can({"textDocument", "publishDiagnostics", "relatedInformation"});
    abilities.registersWatchers =
        can({"workspace", "didChangeWatchedFiles", "dynamicRegistration"});
    abilities.showsProgress = can({"window", "workDoneProgress"});
    abilities.fillsSnippets =
        can({"textDocument", "completion", "completionItem", "snippetSupport"});
    abilities.readsMarkdown = at(client, {"textDocument", "hover", "contentFormat"})
                                  .toArray()
                                  .contains(QLatin1String("markdown"));
    abilities.nestsSymbols =
        can({"textDocument", "documentSymbol", "hierarchicalDocumentSymbolSupport"});
    abilities.asksBeforeRename = can({"textDocument", "rename", "prepareSupport"});
    abilities.takesOffsets = can({"textDocument", "signatureHelp", "signatureInformation",
                                  "parameterInformation", "labelOffsetSupport"});
    return abilities;
}

} // namespace ctl
