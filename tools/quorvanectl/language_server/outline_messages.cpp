// What a script is made of: its functions and variables, what can be folded, and what each word is.
#include "quorvanectl/language_server/language_server.h"

namespace ctl {
namespace {

// The protocol's numbers.
constexpr int functionKind = 12;
constexpr int variableKind = 13;

// In the order of ScriptWord::Kind, in the words of the protocol.
const char *const wordKinds[] = {"keyword", "type",   "function", "variable", "property",
                                 "number",  "string", "operator", "comment"};

bool isOfOutline(const ScriptName &name) {
    return name.kind != ScriptName::Kind::Parameter && name.kind != ScriptName::Kind::Local;
}

QString detailOf(const ScriptName &name) {
    if (name.kind == ScriptName::Kind::Function)
        return QLatin1Char('(') + name.parameters.join(QStringLiteral(", ")) + QLatin1Char(')');
    return name.kind == ScriptName::Kind::Global ? QStringLiteral("global ") + name.type
                                                 : name.type;
}

// Words as five numbers each, the place of every one told from the one before it.
class WordNumbers {
public:
    explicit WordNumbers(const TextPositions &positions)
        : places(positions) {}

    // One that goes over several lines is one for each of them.
    void take(const ScriptWord &word) {
        for (int line = places.lineAt(word.at.from); line <= places.lineAt(word.at.to); ++line) {
            const IndexRange whole = places.rangeOfLine(line);
            const int from = qMax(word.at.from, whole.from);
            const int to = qMin(word.at.to, whole.to);
            if (from < to)
                takePiece(line, from, to, int(word.kind));
        }
    }

    QJsonArray data;

private:
    void takePiece(int line, int from, int to, int kind) {
        const int start = line == lastLine ? lastFrom : places.rangeOfLine(line).from;
        data.append(line - lastLine);
        data.append(places.columns(start, from));
        data.append(places.columns(from, to));
        data.append(kind);
        data.append(0); // no modifiers
        lastLine = line;
        lastFrom = from;
    }

    const TextPositions &places;
    int lastLine = 0;
    int lastFrom = 0;
};

} // namespace

// Nothing, with the reason in `refusal`, of a text that is not open.
std::optional<QString> LanguageServer::askedText(const QJsonObject &params) {
    const QString path = pathIn(params.value(QLatin1String("textDocument")).toObject());
    if (documents.contains(path))
        return path;
    refuse(RpcError::InvalidParams, QStringLiteral("the text is not open: %1").arg(path));
    return std::nullopt;
}

QJsonValue LanguageServer::listSymbols(const QJsonObject &params) {
    const std::optional<QString> path = askedText(params);
    QJsonArray symbols;
    if (!path || isProjectFile(*path))
        return path ? QJsonValue(symbols) : QJsonValue();
    const std::shared_ptr<const ScriptSymbols> known = workspace.symbolsOf(*path);
    for (const ScriptName &name : known->names) {
        if (isOfOutline(name))
            symbols.append(symbolJson(*path, name));
    }
    return symbols;
}

QJsonObject LanguageServer::symbolJson(const QString &path, const ScriptName &name) {
    const bool isFunction = name.kind == ScriptName::Kind::Function;
    const TextPositions &places = positionsIn(path);
    const QJsonObject whole = places.rangeBetween(name.whole.from, name.whole.to);
    QJsonObject json{{QStringLiteral("name"), name.name},
                     {QStringLiteral("kind"), isFunction ? functionKind : variableKind}};
    if (!abilities.nestsSymbols) {
        json.insert(QStringLiteral("location"), QJsonObject{{QStringLiteral("uri"), uriOf(path)},
                                                            {QStringLiteral("range"), whole}});
        return json;
    }
    json.insert(QStringLiteral("detail"), detailOf(name));
    json.insert(QStringLiteral("range"), whole);
    json.insert(QStringLiteral("selectionRange"), places.rangeBetween(name.at.from, name.at.to));
    return json;
}

// The line of a closing brace stays to be seen.
QJsonValue LanguageServer::listFolds(const QJsonObject &params) {
    const std::optional<QString> path = askedText(params);
    if (!path)
        return {};
    const TextPositions &places = positionsIn(*path);
    QJsonArray folds;
    for (const Fold &fold : workspace.foldsOf(*path)) {
        const bool isBraces = fold.kind == Fold::Kind::Braces;
        const int first = places.lineAt(fold.at.from);
        const int last = places.lineAt(fold.at.to) - int(isBraces);
        if (last <= first)
            continue;
        QJsonObject json{{QStringLiteral("startLine"), first}, {QStringLiteral("endLine"), last}};
        if (!isBraces)
            json.insert(QStringLiteral("kind"),
                        QLatin1String(fold.kind == Fold::Kind::Imports ? "imports" : "comment"));
        folds.append(json);
    }
    return folds;
}

QJsonValue LanguageServer::listWords(const QJsonObject &params) {
    const std::optional<QString> path = askedText(params);
    if (!path)
        return {};
    WordNumbers numbers(positionsIn(*path));
    for (const ScriptWord &word : workspace.wordsOf(*path))
        numbers.take(word);
    return QJsonObject{{QStringLiteral("data"), numbers.data}};
}

void LanguageServer::addNavigation(QJsonObject *capabilities) const {
    for (const char *provider :
         {"definitionProvider", "referencesProvider", "documentHighlightProvider",
          "documentSymbolProvider", "foldingRangeProvider"})
        capabilities->insert(QLatin1String(provider), true);
    const QJsonObject prepares{{QStringLiteral("prepareProvider"), true}};
    capabilities->insert(QStringLiteral("renameProvider"),
                         abilities.asksBeforeRename ? QJsonValue(prepares) : QJsonValue(true));
    QJsonArray kinds;
    for (const char *kind : wordKinds)
        kinds.append(QLatin1String(kind));
    const QJsonObject legend{{QStringLiteral("tokenTypes"), kinds},
                             {QStringLiteral("tokenModifiers"), QJsonArray()}};
    capabilities->insert(
        QStringLiteral("semanticTokensProvider"),
        QJsonObject{{QStringLiteral("legend"), legend}, {QStringLiteral("full"), true}});
}

} // namespace ctl
