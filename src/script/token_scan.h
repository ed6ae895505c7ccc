// Reads the tokens of a text a stretch at a time, so that who reads on can let go of those it has seen.
#pragma once

#include "script/spelling_table.h"
#include "script/token.h"

#include <QString>

#include <cstddef>
#include <vector>

namespace ast {

// Used once. Any thread; FunctionLibrary must have been loaded. lexer.h says what the tokens are.
class TokenScan {
public:
    explicit TokenScan(const QString &text);
    TokenScan(const TokenScan &) = delete;
    TokenScan &operator=(const TokenScan &) = delete;

    // Appends the next `most` tokens, or the rest with Eof at its end; not called again after that. False
    // at an unknown character: behind the tokens before it nothing is appended, and it is the next one.
    [[nodiscard]] bool read(std::vector<Token> &tokens, std::size_t most);

    // The place of the next character, and the message on it if it is unknown.
    [[nodiscard]] qint32 position() const;
    [[nodiscard]] qint32 line() const { return lineNumber; }
    [[nodiscard]] qint32 column() const { return qint32(at - lineStart) + 1; }
    [[nodiscard]] QString unknownCharacter() const;

private:
    char16_t second() const;
    void append(qint32 kind, const QString &text);
    void readLineFeed();
    void skipComment();
    void consume();
    Spelling &spelling(const QChar *start);
    Spelling &spelling(const QChar *start, quint32 hash);
    void readWord();
    void readNumber();
    void readString();
    void readCharacter();
    bool readOperator();

    const QString source;
    const QChar *textEnd;
    const QChar *at;
    const QChar *lineStart;
    const QString *fixed;
    qint32 lineNumber = 1;
    qint32 tokenLine = 1;
    qint32 tokenColumn = 1;
    std::vector<Token> *result = nullptr;
    SpellingTable spellings;
};

} // namespace ast
