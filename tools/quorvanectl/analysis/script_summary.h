// What one text of a script says: its own findings, what it declares and imports, and where.
//
// Kept in place of the text, so that the scripts of a project are read once for any number of edits of
// one of them.
#pragma once

#include "project/project_validator.h"
#include "quorvanectl/analysis/script_symbols.h"
#include "quorvanectl/analysis/text_range.h"
#include "script/script_diagnostics.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

// Above any script that a person writes: a larger one is not looked into.
inline constexpr qint64 largestScript = 16777216; // bytes of UTF-8, 16 MiB

// The code of the finding that says that a script was not looked into.
inline constexpr char unreadScript[] = "script-unread";

struct NamedRange {
    QString name;
    TextRange at;
};

struct DeclaredFunction {
    QString name;
    QStringList parameters; // such as "int image"
    int line;
};

// What a script gives to those that import it, in the order of the text.
struct ScriptExports {
    QVector<DeclaredFunction> functions;
    // Cleaned absolute paths, of those within braces too; rooted ones are left out.
    QStringList imports;
};

struct ScriptSummary {
    // Of the check of a script: its syntax error, and what it leaves open. One that says that the script
    // is too large, where it is.
    std::vector<ast::ScriptDiagnostic> findings;
    ast::ScriptFacts facts;
    QVector<TextRange> globals;  // the names, of each of `facts.globals`
    QStringList globalTypes;     // and their types
    QVector<NamedRange> imports; // of each of `facts.imports`: its cleaned path, and the text
    ScriptExports exports;
    QVector<NamedRange> badNames; // of the naming rule's scan, in its order
    QVector<BadName> scanned;     // the same as the validator knows them
};

// Of a text as it would lie in the file. `filePath` is where its imports count from. The function
// library must be loaded.
[[nodiscard]] ScriptSummary summaryOf(const QString &filePath, const QString &text);
// The same, and the tree of a text that has one, for who asks more of it.
[[nodiscard]] ScriptSummary summaryOf(const QString &filePath, const QString &text,
                                      std::shared_ptr<ast::Program> *program);

// Of an open script by its names, which stand longer than its tree does.
[[nodiscard]] ScriptExports exportsOf(const ScriptSymbols &symbols, const QString &text);

// Of a script that is larger than that.
[[nodiscard]] ScriptSummary tooLarge();

// The stretch that a finding marks: at least one unit.
[[nodiscard]] TextRange rangeOf(const ast::ScriptDiagnostic &finding);

} // namespace ctl
