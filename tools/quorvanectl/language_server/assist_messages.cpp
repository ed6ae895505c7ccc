// What is offered while one types, and what is told of the names in a text.
#include "quorvanectl/language_server/language_server.h"

namespace ctl {
namespace {

// The protocol's numbers.
int itemKind(Proposal::Kind kind) {
    switch (kind) {
    case Proposal::Kind::Choice:
    case Proposal::Kind::Role:
        return 20; // a member of an enumeration
    case Proposal::Kind::Variable:
    case Proposal::Kind::Global:
        return 6;
    case Proposal::Kind::Function:
    case Proposal::Kind::ImportedFunction:
    case Proposal::Kind::LibraryFunction:
        return 3;
    case Proposal::Kind::Keyword:
        return 14;
    case Proposal::Kind::Word:
        return 1; // text
    case Proposal::Kind::Script:
        return 17; // a file
    case Proposal::Kind::Key:
        return 10; // a property
    }
    return 1;
}

// Editors sort by this as text: by kind, then by name.
QString orderOf(const Proposal &proposal) {
    return QChar('a' + int(proposal.kind)) + proposal.label;
}

void insertText(const char *key, const QString &text, QJsonObject *json) {
    if (!text.isEmpty())
        json->insert(QLatin1String(key), text);
}

// Signs that would mean something to Markdown mean nothing.
QString inMarkdown(const QString &text) {
    QString escaped;
    for (const QChar unit : text) {
        if (QStringLiteral("\\`*_{}[]()#+-.!|<>~&").contains(unit))
            escaped += QLatin1Char('\\');
        escaped += unit;
    }
    return escaped;
}

QString parameterLine(const Parameter &parameter) {
    return parameter.about.isEmpty()
               ? parameter.name
               : QStringLiteral("%1: %2").arg(parameter.name, parameter.about);
}

// A paragraph each.
QStringList paragraphsOf(const NameRecord &record) {
    QStringList paragraphs;
    if (!record.description.isEmpty())
        paragraphs.append(record.description);
    // What a script declares shows its parameters in its declaration.
    if (!record.place.isEmpty())
        return paragraphs << record.place;
    for (const Parameter &parameter : record.parameters)
        paragraphs.append(parameterLine(parameter));
    return paragraphs;
}

QJsonObject contentOf(const NameRecord &record, bool isMarkdown) {
    QStringList paragraphs = paragraphsOf(record);
    QString text = record.signature;
    if (isMarkdown) {
        text = QStringLiteral("```ys\n%1\n```").arg(record.signature);
        for (QString &paragraph : paragraphs)
            paragraph = inMarkdown(paragraph);
    }
    paragraphs.prepend(text);
    return {{QStringLiteral("kind"),
             isMarkdown ? QStringLiteral("markdown") : QStringLiteral("plaintext")},
            {QStringLiteral("value"), paragraphs.join(QLatin1String(isMarkdown ? "\n\n" : "\n"))}};
}

// Each behind the one before it: a name may stand in the signature more than once.
QJsonArray parametersOf(const NameRecord &function, bool asOffsets) {
    QJsonArray parameters;
    int from = function.signature.indexOf(QLatin1Char('('));
    for (const Parameter &parameter : function.parameters) {
        from = function.signature.indexOf(parameter.name, from);
        const int to = from + parameter.name.size();
        QJsonObject json{{QStringLiteral("label"),
                          asOffsets ? QJsonValue(QJsonArray{from, to}) : parameter.name}};
        insertText("documentation", parameter.about, &json);
        parameters.append(json);
        from = to;
    }
    return parameters;
}

} // namespace

// Nothing, with the reason in `refusal`, of a text that is not open.
std::optional<LanguageServer::AskedPlace> LanguageServer::askedPlace(const QJsonObject &params) {
    const QString path = pathIn(params.value(QLatin1String("textDocument")).toObject());
    const QJsonValue position = params.value(QLatin1String("position"));
    const QJsonObject range{{QStringLiteral("start"), position}, {QStringLiteral("end"), position}};
    const TextPositions places(workspace.textOf(path), abilities.unit);
    const std::optional<IndexRange> at = places.indexRange(range);
    if (!documents.contains(path))
        refusal = QStringLiteral("the text is not open: %1").arg(path);
    else if (!at)
        refusal = QStringLiteral("position is no place in a text");
    else
        return AskedPlace{path, places, at->from};
    return std::nullopt;
}

QJsonValue LanguageServer::complete(const QJsonObject &params) {
    const std::optional<AskedPlace> asked = askedPlace(params);
    if (!asked)
        return {};
    const Proposals proposals = workspace.proposalsAt(asked->path, asked->index);
    const QJsonObject range = asked->places.rangeBetween(proposals.from, proposals.to);
    const bool isQuoted =
        workspace.textOf(asked->path).midRef(proposals.from, 1) == QLatin1String("\"");
    QJsonArray items;
    for (const Proposal &proposal : proposals.list) {
        QJsonObject item = itemOf(proposal, range);
        // What stands in the range decides what an editor keeps.
        if (isQuoted)
            item.insert(QStringLiteral("filterText"), QLatin1Char('"') + proposal.label);
        items.append(item);
    }
    return QJsonObject{{QStringLiteral("isIncomplete"), false}, {QStringLiteral("items"), items}};
}

QJsonObject LanguageServer::itemOf(const Proposal &proposal, const QJsonObject &range) const {
    const bool isSnippet = abilities.fillsSnippets && !proposal.snippet.isEmpty();
    const QJsonObject edit{
        {QStringLiteral("range"), range},
        {QStringLiteral("newText"), isSnippet ? proposal.snippet : proposal.text}};
    QJsonObject item{{QStringLiteral("label"), proposal.label},
                     {QStringLiteral("kind"), itemKind(proposal.kind)},
                     {QStringLiteral("sortText"), orderOf(proposal)},
                     {QStringLiteral("textEdit"), edit}};
    if (isSnippet)
        item.insert(QStringLiteral("insertTextFormat"), 2);
    insertText("detail", proposal.detail, &item);
    insertText("documentation", proposal.description, &item);
    return item;
}

QJsonValue LanguageServer::hover(const QJsonObject &params) {
    const std::optional<AskedPlace> asked = askedPlace(params);
    const std::optional<NameRecord> record =
        asked ? workspace.recordAt(asked->path, asked->index) : std::nullopt;
    if (!record)
        return {};
    return QJsonObject{
        {QStringLiteral("contents"), contentOf(*record, abilities.readsMarkdown)},
        {QStringLiteral("range"), asked->places.rangeBetween(record->from, record->to)}};
}

QJsonValue LanguageServer::helpWithSignature(const QJsonObject &params) {
    const std::optional<AskedPlace> asked = askedPlace(params);
    const std::optional<CallRecord> call =
        asked ? workspace.callAt(asked->path, asked->index) : std::nullopt;
    if (!call)
        return {};
    QJsonObject signature{
        {QStringLiteral("label"), call->function.signature},
        {QStringLiteral("parameters"), parametersOf(call->function, abilities.takesOffsets)}};
    insertText("documentation", call->function.description, &signature);
    return QJsonObject{{QStringLiteral("signatures"), QJsonArray{signature}},
                       {QStringLiteral("activeSignature"), 0},
                       {QStringLiteral("activeParameter"), call->argument}};
}

} // namespace ctl
