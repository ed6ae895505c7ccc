#include "quorvanectl/analysis/script_summary.h"

#include "quorvanectl/analysis/inner_statements.h"
#include "quorvanectl/project/script_report.h"
#include "quorvanectl/project/script_warnings.h"
#include "script/token_scan.h"
#include "update/files/memory_guard.h"
#include "update/files/project_path.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace ctl {
namespace {

ast::ScriptDiagnostic wholeText(const QString &message) {
    ast::ScriptDiagnostic finding;
    finding.endColumn = 2;
    finding.code = QLatin1String(unreadScript);
    finding.message = message;
    return finding;
}

using Tokens = std::vector<ast::Token>;

// The token that begins at this place, which is that of a statement.
Tokens::const_iterator tokenAt(const Tokens &tokens, const ast::Stmt &statement) {
    return std::lower_bound(tokens.begin(), tokens.end(),
                            std::make_pair(statement.line, statement.column),
                            [](const ast::Token &token, const auto &place) {
                                return std::make_pair(token.line, token.column) < place;
                            });
}

TextRange rangeOf(Tokens::const_iterator token, const Tokens &tokens) {
    return token < tokens.end() ? onLine(token->line, token->column, token->text.size())
                                : onLine(1, 1, 1);
}

// The line of the last statement whose place is kept; 0 if there is none.
int lastPlace(const ast::Program &program) {
    int line = 0;
    for (const std::shared_ptr<ast::Stmt> &statement : program.statements) {
        const auto *const declaration = dynamic_cast<const ast::VarDeclStmt *>(statement.get());
        const bool isGlobal = declaration != nullptr && declaration->isGlobal;
        if (isGlobal || dynamic_cast<const ast::ImportStmt *>(statement.get()) != nullptr)
            line = qMax(line, int(statement->line));
    }
    return line;
}

// Those of this line and of the lines before it, and some behind: mostly it is one of the first of many.
Tokens tokensToLine(const QString &text, int line) {
    constexpr std::size_t stretch = 1000;
    Tokens tokens;
    ast::TokenScan scan(text);
    bool goesOn = line > 0;
    while (goesOn)
        goesOn = scan.read(tokens, stretch) && tokens.back().kind != ast::Eof &&
                 tokens.back().line <= line;
    return tokens;
}

// The statement's own position is that of its type, behind which the name stands, or of the path that it
// imports.
void takePlaces(const QString &filePath, const QString &text, const ast::Program &program,
                ScriptSummary *summary) {
    const Tokens tokens = tokensToLine(text, lastPlace(program));
    summary->facts = ast::factsOf(filePath, program);
    int import = 0;
    for (const std::shared_ptr<ast::Stmt> &statement : program.statements) {
        const auto *const declaration = dynamic_cast<const ast::VarDeclStmt *>(statement.get());
        if (declaration != nullptr && declaration->isGlobal) {
            summary->globals.append(rangeOf(tokenAt(tokens, *declaration) + 1, tokens));
            summary->globalTypes.append(declaration->typeName);
        }
        const auto *const other = dynamic_cast<const ast::ImportStmt *>(statement.get());
        if (other != nullptr && !ast::isRootedPath(other->path))
            summary->imports.append(
                {summary->facts.imports.value(import++), rangeOf(tokenAt(tokens, *other), tokens)});
    }
}

// Of all statements, those in functions and in braces among them.
QStringList allImports(const QString &filePath, const ast::Program &program) {
    std::vector<const ast::Stmt *> waiting;
    std::vector<const ast::ImportStmt *> found;
    addInner(program, &waiting);
    while (!waiting.empty()) {
        const ast::Stmt *const statement = waiting.back();
        waiting.pop_back();
        addInner(*statement, &waiting);
        const auto *const import = dynamic_cast<const ast::ImportStmt *>(statement);
        if (import != nullptr && !ast::isRootedPath(import->path))
            found.push_back(import);
    }
    std::sort(found.begin(), found.end(), [](const auto *one, const auto *other) {
        return std::make_pair(one->line, one->column) < std::make_pair(other->line, other->column);
    });
    QStringList paths;
    for (const ast::ImportStmt *const import : found)
        paths.append(importedPath(filePath, *import));
    return paths;
}

void takeExports(const QString &filePath, const QString &text, const ast::Program &program,
                 ScriptSummary *summary) {
    ScriptExports &exports = summary->exports;
    for (const auto &function : program.functions)
        exports.functions.append({function->name, parametersOf(*function), int(function->line)});
    // Hardly a script has others than the direct ones, for which the tree is not gone through.
    const bool areDirect = text.count(QStringLiteral("import")) == summary->facts.imports.size();
    exports.imports = areDirect ? summary->facts.imports : allImports(filePath, program);
}

// The names come in the order of the text, so it is walked once.
void takeBadNames(const QString &text, ScriptSummary *summary) {
    summary->scanned = badlyNamedGlobals(text);
    int line = 1;
    int start = 0;
    for (const BadName &global : qAsConst(summary->scanned)) {
        for (int feed = text.indexOf(QLatin1Char('\n'), start); feed >= 0 && feed < global.at;
             feed = text.indexOf(QLatin1Char('\n'), start)) {
            start = feed + 1;
            ++line;
        }
        summary->badNames.append(
            {global.name, onLine(line, global.at - start + 1, global.name.size())});
    }
}

ScriptSummary summarised(const QString &filePath, const QString &text,
                         std::shared_ptr<ast::Program> *program) {
    ScriptSummary summary;
    ast::ScriptCheckContext context = ast::makeCheckContext(text);
    QString leftBehind;
    if (ast::checkScript(context, program, &leftBehind)) {
        takePlaces(filePath, text, **program, &summary);
        takeExports(filePath, text, **program, &summary);
    }
    summary.findings = context.result.diagnostics;
    for (ast::ScriptDiagnostic &finding : summary.findings)
        finding.message = wordsOf(finding);
    const std::vector<ast::ScriptDiagnostic> warnings = scriptWarnings(text, leftBehind);
    summary.findings.insert(summary.findings.end(), warnings.begin(), warnings.end());
    takeBadNames(text, &summary);
    return summary;
}

} // namespace

ScriptSummary tooLarge() {
    ScriptSummary summary;
    summary.findings.push_back(
        wholeText(QStringLiteral("the script is larger than %1 MiB and is not looked into")
                      .arg(largestScript / 1048576)));
    return summary;
}

ScriptSummary summaryOf(const QString &filePath, const QString &text) {
    std::shared_ptr<ast::Program> program;
    return summaryOf(filePath, text, &program);
}

ScriptSummary summaryOf(const QString &filePath, const QString &text,
                        std::shared_ptr<ast::Program> *program) {
    // A unit of text takes three bytes at most; only near the limit they are counted.
    if (text.size() > largestScript / 3 && text.toUtf8().size() > largestScript)
        return tooLarge();
    ScriptSummary full;
    full.findings.push_back(
        wholeText(QStringLiteral("memory does not suffice to look into the script")));
    return unlessOutOfMemory([&] { return summarised(filePath, text, program); }, full);
}

ScriptExports exportsOf(const ScriptSymbols &symbols, const QString &text) {
    ScriptExports exports;
    int line = 1;
    int counted = 0; // up to there; the names come in the order of the text
    for (const ScriptName &name : symbols.names) {
        if (name.kind != ScriptName::Kind::Function)
            continue;
        line += text.midRef(counted, name.at.from - counted).count(QLatin1Char('\n'));
        counted = name.at.from;
        exports.functions.append({name.name, name.parameters, line});
    }
    for (const NamedImport &import : symbols.imports) {
        if (!import.path.isEmpty())
            exports.imports.append(import.path);
    }
    return exports;
}

TextRange rangeOf(const ast::ScriptDiagnostic &finding) {
    const int units = qMax(1, finding.endColumn - finding.column);
    return onLine(finding.line, finding.column, units);
}

} // namespace ctl
