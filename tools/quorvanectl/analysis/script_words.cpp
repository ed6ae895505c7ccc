#include "quorvanectl/analysis/script_words.h"

#include "quorvanectl/analysis/token_places.h"

#include <algorithm>
#include <optional>

namespace ctl {
namespace {

std::optional<ScriptWord::Kind> kindOfName(const TokenPlaces &tokens, int number) {
    if (tokens.kindOf(number - 1) == ast::Dot)
        return ScriptWord::Kind::Property;
    return tokens.kindOf(number + 1) == ast::LParen ? ScriptWord::Kind::Function
                                                    : ScriptWord::Kind::Variable;
}

std::optional<ScriptWord::Kind> kindOfToken(const TokenPlaces &tokens, int number) {
    const qint32 kind = tokens.kindOf(number);
    if (kind == ast::Identifier)
        return kindOfName(tokens, number);
    if (kind == ast::IntLiteral || kind == ast::FloatLiteral)
        return ScriptWord::Kind::Number;
    if (kind == ast::StringLiteral || kind == ast::CharLiteral)
        return ScriptWord::Kind::Text;
    if (kind >= ast::KwInt && kind <= ast::KwChar)
        return ScriptWord::Kind::Type;
    if ((kind >= ast::KwIf && kind <= ast::KwReturn) || kind == ast::Hash)
        return ScriptWord::Kind::Keyword;
    if (kind >= ast::Plus && kind <= ast::MinusMinus)
        return ScriptWord::Kind::Operator;
    return std::nullopt;
}

// Stretches of one kind that stand in lines of their own, one below the other.
class Rows {
public:
    Rows(const QString &of, Fold::Kind rowKind, QVector<Fold> *into)
        : text(of)
        , kind(rowKind)
        , folds(into) {}

    void take(const Stretch &row) {
        if (!folds->isEmpty() && isOpen && follows(row.from))
            folds->last().at.to = row.to;
        else
            folds->append({kind, row});
        isOpen = true;
    }

private:
    // Whether nothing but one line's end stands between.
    bool follows(int from) const {
        const int end = folds->last().at.to;
        const QStringRef between = text.midRef(end, from - end);
        return between.trimmed().isEmpty() && between.count(QLatin1Char('\n')) == 1;
    }

    const QString &text;
    const Fold::Kind kind;
    QVector<Fold> *const folds;
    bool isOpen = false;
};

bool beginsItsLine(const QString &text, int from) {
    const int feed = from == 0 ? -1 : text.lastIndexOf(QLatin1Char('\n'), from - 1);
    return text.midRef(feed + 1, from - feed - 1).trimmed().isEmpty();
}

QVector<Fold> foldsOfComments(const QString &text, const TokenPlaces &tokens) {
    QVector<Fold> folds;
    Rows rows(text, Fold::Kind::Comments, &folds);
    for (const Stretch &comment : tokens.commentsIn(text)) {
        if (beginsItsLine(text, comment.from))
            rows.take(comment);
    }
    return folds;
}

// Each to the end of its line.
QVector<Fold> foldsOfImports(const QString &text, const TokenPlaces &tokens) {
    QVector<Fold> folds;
    Rows rows(text, Fold::Kind::Imports, &folds);
    for (int number = 0; number < tokens.count(); ++number) {
        const qint32 kind = tokens.kindOf(number);
        const bool begins = kind == ast::KwImport || kind == ast::Hash;
        if (!begins || !beginsItsLine(text, tokens.stretchOf(number).from))
            continue;
        const int first = number;
        while (tokens.kindOf(number + 1) != ast::Newline && tokens.kindOf(number + 1) != ast::Eof)
            ++number;
        rows.take({tokens.stretchOf(first).from, tokens.stretchOf(number).to});
    }
    return folds;
}

} // namespace

QVector<ScriptWord> wordsIn(const QString &text) {
    const TokenPlaces tokens(text);
    QVector<ScriptWord> words;
    for (int number = 0; number < tokens.count(); ++number) {
        const std::optional<ScriptWord::Kind> kind = kindOfToken(tokens, number);
        if (kind)
            words.append({*kind, tokens.stretchOf(number)});
    }
    const int tokenWords = words.size();
    for (const Stretch &comment : tokens.commentsIn(text))
        words.append({ScriptWord::Kind::Comment, comment});
    std::inplace_merge(
        words.begin(), words.begin() + tokenWords, words.end(),
        [](const ScriptWord &one, const ScriptWord &other) { return one.at.from < other.at.from; });
    return words;
}

QVector<Fold> foldsIn(const QString &text) {
    const TokenPlaces tokens(text);
    QVector<Fold> folds = foldsOfComments(text, tokens) + foldsOfImports(text, tokens);
    for (int number = 0; number < tokens.count(); ++number) {
        if (tokens.kindOf(number) != ast::LBrace)
            continue;
        const int closing = tokens.closingBrace(number);
        if (tokens.kindOf(closing) == ast::RBrace)
            folds.append({Fold::Kind::Braces,
                          {tokens.stretchOf(number).from, tokens.stretchOf(closing).to}});
    }
    std::stable_sort(folds.begin(), folds.end(), [](const Fold &one, const Fold &other) {
        return one.at.from < other.at.from;
    });
    return folds;
}

} // namespace ctl
