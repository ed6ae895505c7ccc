// The vocabulary of the script language, read from FunctionLib.ini.
//
// The file says which words are keywords, which words fall into which highlight class, and which
// functions exist with which arguments. The script lexer asks `tokenKindOf` about every word, so
// the function library is loaded before any script is read.
//
// Thread: `load` runs once, on the main thread, before any worker exists. From then on everything
// is read-only, and readers on any thread take no lock.
#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <utility>

// One argument of a function, from a descriptor such as "exposure#S#auto#manual".
struct FunctionArgument {
    // The part before the first '#'.
    QString text;
    // From the letter after the first '#': C is 0, O is 1, S is 2, I is 3; -1 for no known letter.
    qint32 kind = -1;
    // For kind 2 only: all parts after the letter.
    QStringList options;
    // Stays empty.
    QString extra;
};

// One function line: id,name,argument count,argument...,help.
struct FunctionRecord {
    quint32 id = 0;
    // Not trimmed.
    QString name;
    quint32 argumentCount = 0;
    // Empty where the line has too few fields for `argumentCount`.
    QVector<FunctionArgument> arguments;
    // The last field of the line, whatever it is; not trimmed.
    QString lastField;
};

// Whether a line of FunctionLibrary::rawLines has an entry in `callTemplates`: it has a field for each
// of its arguments.
[[nodiscard]] bool hasCallTemplate(const QString &functionLine);

class FunctionLibrary {
public:
    static FunctionLibrary &instance();

    FunctionLibrary(const FunctionLibrary &) = delete;
    FunctionLibrary &operator=(const FunctionLibrary &) = delete;

    // Reads the library file. False if it cannot be read: `error` then holds the reason, the word
    // lists hold the built-in words, and the sets and the keyword map keep what they held (on a
    // first load nothing, so that every word of a script is an identifier). Everything else that
    // may be wrong in the file costs no more than its own line.
    bool load(const QString &path, QString *error = nullptr);

    // {true, token kind} of a registered keyword, {false, 0} of any other word. Exact, with case.
    [[nodiscard]] std::pair<bool, qint32> tokenKindOf(const QString &word) const;

    // The path given to the last `load`.
    QString filePath;

    // The function lines, in the order of the file. `callTemplates` has no entry for a line with
    // too few fields and does not run parallel to the others then; hasCallTemplate() tells which.
    QVector<FunctionRecord> functions;
    QStringList rawLines;
    QStringList functionNames;
    QStringList functionIds;
    QStringList callTemplates;

    // The six word lists; an assignment in the file replaces a whole list.
    QStringList keywords;
    QStringList snippetOnly;
    QStringList typeWords;
    QStringList otherWords;
    QStringList libraryWords;
    QStringList pluginFunctions;

    // Lower-case function name to its index in `functionNames`; the last of equal names wins.
    QHash<QString, qint32> functionIndexByName;

    QSet<QString> keywordSet;
    QSet<QString> typeSet;
    QSet<QString> otherSet;
    QSet<QString> librarySet;
    QSet<QString> snippetOnlySet;

    QHash<QString, qint32> tokenKindByWord;

private:
    FunctionLibrary() = default;

    // function_library.cpp: the file.
    void readSections(const QStringList &lines);
    void readFunctions(const QStringList &lines);
    void addFunction(const QString &line, const QStringList &fields);
    void buildSets();

    // keyword_table.cpp: the built-in words and the keywords.
    void fillBuiltInWords();
    void buildKeywordMap();
};
