// Scripts for tests: written from the grammar, and mutations of them. The same seed gives the same
// scripts on every machine.
#pragma once

#include <QString>
#include <QStringList>

#include <random>

namespace support {

class ScriptGenerator {
public:
    explicit ScriptGenerator(quint32 seed)
        : dice(seed) {}

    // A script that the parser accepts without a message, of a few dozen statements at most.
    QString script();

    // An expression that the parser reads whole.
    QString expression(int depth = 3);

    // `script` with a few tokens or characters dropped, doubled, swapped or put in. May be anything.
    QString mutation(const QString &script);

    // Words, operators and quotes in no order.
    QString noise(int words);

    // A number from 0 to `limit` - 1.
    int below(int limit) { return int(dice() % quint32(limit)); }

private:
    bool chance(int percent) { return below(100) < percent; }
    QString oneOf(const QStringList &list) { return list.at(below(list.size())); }
    QString name();
    QString type();
    QString literal();
    QString arguments(int depth);
    QString gap();
    QString lineEnd();
    QString block(int depth);
    QString body(int depth);
    QString statement(int depth);
    QString simple();
    QString declaration();
    QString ifStatement(int depth);
    QString forStatement(int depth);
    QString switchStatement(int depth);
    QString function(int depth);

    std::mt19937 dice;
};

} // namespace support
