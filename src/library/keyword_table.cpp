// The built-in vocabulary and the map from word to token kind.
#include "library/function_library.h"

#include <QLatin1String>

namespace {

struct KeywordRow {
    const char *word;
    // A value of ast::TokenKind. It stands here as a number since the script front end builds on
    // this library and not the other way round; a test of the lexer compares the two.
    qint32 kind;
};

const KeywordRow controlFlowRows[] = {
    {"if", 7},    {"else", 8},     {"for", 9},    {"while", 10},    {"switch", 11},
    {"case", 12}, {"default", 13}, {"break", 14}, {"continue", 15}, {"return", 26},
};
const KeywordRow typeRows[] = {
    {"int", 16},  {"bool", 17},   {"float", 18},  {"string", 19},
    {"char", 20}, {"static", 21}, {"global", 22},
};
const KeywordRow otherRows[] = {{"function", 25}, {"include", 23}, {"import", 24}};

QStringList listOf(const char *words) {
    return QString::fromLatin1(words).split(QLatin1Char(' '));
}

} // namespace

void FunctionLibrary::fillBuiltInWords() {
    keywords = listOf("if else for while switch case default break continue return "
                      "end_if end_for end_switch");
    snippetOnly = listOf("end_if end_for end_switch");
    typeWords = listOf("int bool float string char static global");
    // "import" has a row in the table and is on purpose not among the built-in words: a library
    // file switches it on.
    otherWords = listOf("function include");
    libraryWords = listOf("ioDrive ModbusTCP Halcon OpenCV");
    pluginFunctions = listOf("print Print SendMessage QdebugFunction Return new_object");
}

void FunctionLibrary::buildKeywordMap() {
    tokenKindByWord.clear();
    for (const KeywordRow &row : controlFlowRows) {
        const QString word = QLatin1String(row.word);
        if (keywordSet.contains(word) && !snippetOnlySet.contains(word))
            tokenKindByWord.insert(word, row.kind);
    }
    for (const KeywordRow &row : typeRows) {
        if (typeSet.contains(QLatin1String(row.word)))
            tokenKindByWord.insert(QLatin1String(row.word), row.kind);
    }
    for (const KeywordRow &row : otherRows) {
        if (otherSet.contains(QLatin1String(row.word)))
            tokenKindByWord.insert(QLatin1String(row.word), row.kind);
    }
}

std::pair<bool, qint32> FunctionLibrary::tokenKindOf(const QString &word) const {
    const auto found = tokenKindByWord.constFind(word);
    return found == tokenKindByWord.constEnd() ? std::make_pair(false, 0)
                                               : std::make_pair(true, found.value());
}
