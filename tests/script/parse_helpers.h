// Parsing of whole scripts for tests.
#pragma once

#include "script/lexer.h"
#include "script/parser.h"
#include "script/printed_form.h"

#include <QtTest>

struct Parsed {
    std::shared_ptr<ast::Program> program;
    QString error;
};

inline Parsed parseScript(const QString &source) {
    Parsed parsed;
    std::vector<ast::Token> tokens = ast::Lexer(source).tokenize(&parsed.error);
    if (parsed.error.isEmpty()) {
        ast::Parser parser(std::move(tokens));
        parsed.program = parser.parseProgram(&parsed.error);
    }
    return parsed;
}

// The text form of the program, its lines joined by " | "; "no program" if there is none.
inline QString treeOf(const QString &source) {
    const Parsed parsed = parseScript(source);
    return parsed.program ? ast::programToText(*parsed.program).trimmed().replace("\n", " | ")
                          : QString("no program");
}

// The script gives no program, and this message at this place.
inline void expectError(const QString &source, const QString &message, int line, int column) {
    const Parsed parsed = parseScript(source);
    QVERIFY(!parsed.program);
    QCOMPARE(parsed.error,
             QString("%1 (at %2:%3)").arg(message, QString::number(line), QString::number(column)));
}

// The script gives this program, and leaves this message behind (none at line 0).
inline void expectLeftError(const QString &source, const QString &tree, const QString &message,
                            int line, int column) {
    QCOMPARE(treeOf(source), tree);
    QCOMPARE(parseScript(source).error,
             line == 0 ? QString()
                       : QString("%1 (at %2:%3)")
                             .arg(message, QString::number(line), QString::number(column)));
}

// The statement as its class.
template<typename Statement>
const Statement &as(const std::shared_ptr<ast::Stmt> &statement) {
    return dynamic_cast<const Statement &>(*statement);
}

// "line:column" of any record that has a position.
template<typename Record>
QString at(const Record &record) {
    return QString("%1:%2").arg(record.line).arg(record.column);
}
