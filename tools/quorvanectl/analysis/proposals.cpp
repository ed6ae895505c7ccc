#include "quorvanectl/analysis/proposals.h"

#include "quorvanectl/analysis/library_records.h"
#include "quorvanectl/analysis/project_schema.h"

#include "library/function_library.h"

#include <QJsonArray>
#include <QSet>

namespace ctl {
namespace {

// Each label once: what comes first hides the others of its name, as it does for the script.
class CodeProposals {
public:
    explicit CodeProposals(const ScriptCursor &of)
        : cursor(of) {
        result.from = cursor.from;
        result.to = cursor.to;
    }

    Proposals all(const QVector<Proposal> &names) {
        takeChoices();
        for (const Proposal &name : names)
            take(name);
        const QVector<LibraryRecord> records = libraryRecords();
        for (const LibraryRecord &record : records)
            takeFunction(record);
        takeLists();
        return result;
    }

private:
    void take(Proposal proposal) {
        if (offered.contains(proposal.label))
            return;
        offered.insert(proposal.label);
        if (cursor.isCalled) { // its arguments stand there already
            proposal.text = proposal.label;
            proposal.snippet.clear();
        }
        result.list.append(proposal);
    }

    // Scripts write them as texts.
    void takeChoices() {
        const std::optional<LibraryRecord> callee = libraryRecord(cursor.callee);
        if (!callee)
            return;
        for (const QString &option : callee->options.value(cursor.argument)) {
            const QString text = QLatin1Char('"') + option + QLatin1Char('"');
            take({Proposal::Kind::Choice,
                  text,
                  text,
                  {},
                  callee->arguments.value(cursor.argument),
                  {}});
        }
    }

    void takeFunction(const LibraryRecord &record) {
        const bool hasTemplate = !record.callTemplate.isNull();
        take({Proposal::Kind::LibraryFunction, record.name,
              hasTemplate ? record.callTemplate : record.name,
              record.arguments.isEmpty() ? QString() : snippetOf(record), record.callTemplate,
              record.description});
    }

    void takeLists() {
        const FunctionLibrary &library = FunctionLibrary::instance();
        takeWords(library.keywords, QStringLiteral("control flow"));
        takeWords(library.typeWords, QStringLiteral("type"));
        takeWords(library.otherWords, QStringLiteral("declaration"));
        takeWords(library.snippetOnly, QStringLiteral("control flow"));
        takeWords(library.libraryWords, QStringLiteral("library"));
        takeWords(library.pluginFunctions, QStringLiteral("plug-in"));
    }

    // A word of a list that the language does not know is no keyword.
    void takeWords(const QStringList &words, const QString &list) {
        for (const QString &word : words) {
            const bool isKeyword = FunctionLibrary::instance().tokenKindOf(word).first;
            take({isKeyword ? Proposal::Kind::Keyword : Proposal::Kind::Word,
                  word,
                  word,
                  {},
                  list,
                  {}});
        }
    }

    const ScriptCursor &cursor;
    QSet<QString> offered;
    Proposals result;
};

QString quoted(const QString &word) {
    return QLatin1Char('"') + word + QLatin1Char('"');
}

void takeKeys(const JsonCursor &cursor, const QJsonObject &schema, Proposals *proposals) {
    const QJsonObject keys = schema.value(QLatin1String("properties")).toObject();
    const QJsonArray required = schema.value(QLatin1String("required")).toArray();
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        const QJsonObject about = key.value().toObject();
        if (cursor.keysBefore.contains(key.key()) ||
            about.value(QLatin1String("deprecated")).toBool())
            continue;
        const QString behind = cursor.hasColon ? QString() : QStringLiteral(": ");
        proposals->list.append(
            {Proposal::Kind::Key,
             key.key(),
             quoted(key.key()) + behind,
             {},
             required.contains(key.key()) ? QStringLiteral("required") : QString(),
             about.value(QLatin1String("description")).toString()});
    }
}

void takeValues(const QJsonObject &schema, Proposals *proposals) {
    const QJsonArray values = schema.value(QLatin1String("enum")).toArray();
    for (const QJsonValue &value : values)
        proposals->list.append({Proposal::Kind::Role,
                                value.toString(),
                                quoted(value.toString()),
                                {},
                                {},
                                schema.value(QLatin1String("description")).toString()});
}

} // namespace

Proposals codeProposals(const ScriptCursor &cursor, const QVector<Proposal> &names) {
    return CodeProposals(cursor).all(names);
}

Proposals importProposals(const ScriptCursor &cursor, const QStringList &paths) {
    Proposals proposals{cursor.from, cursor.to, {}};
    for (const QString &path : paths)
        proposals.list.append({Proposal::Kind::Script, path, path, {}, {}, {}});
    return proposals;
}

Proposals projectProposals(const QString &json, int index) {
    const JsonCursor cursor = cursorInJson(json, index);
    Proposals proposals{cursor.from, cursor.to, {}};
    const QJsonObject schema = projectSchemaAt(cursor.path);
    if (cursor.isKey)
        takeKeys(cursor, schema, &proposals);
    else if (cursor.isValue)
        takeValues(schema, &proposals);
    return proposals;
}

} // namespace ctl
