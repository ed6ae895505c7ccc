#include "frame/settings_stand_in.h"

#include "frame/settings_schema.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace settings_stand_in {
namespace {

const QLatin1Char quoted('"');

// The words of a statement in capitals, with a sign before those that stood in quotes of whatever kind:
// they are names alone. Blanks, comments and all other signs are left out.
QStringList wordsOf(const QString &statement) {
    static const QRegularExpression word(
        QStringLiteral(
            R"(--[^\n]*+|/\*.*?(?:\*/|$)|(["`'])((?:(?!\1).)*+)\1|\[([^\]]*+)\]|([\w$]++))"),
        QRegularExpression::DotMatchesEverythingOption |
            QRegularExpression::UseUnicodePropertiesOption);
    QStringList words;
    for (auto match = word.globalMatch(statement); match.hasNext();) {
        const QRegularExpressionMatch next = match.next();
        const QString name = next.captured(2) + next.captured(3);
        if (!name.isEmpty())
            words.append(quoted + name.toUpper());
        else if (!next.captured(4).isEmpty())
            words.append(next.captured(4).toUpper());
    }
    return words;
}

bool isSettingsTable(const QString &word) {
    const QString name = word.startsWith(quoted) ? word.mid(1) : word;
    return std::any_of(
        std::begin(settings_schema::tables), std::end(settings_schema::tables),
        [&name](const char *table) { return name == QString::fromLatin1(table).toUpper(); });
}

// The table that the trigger `name` hangs on.
bool hangsOnSettings(const QStringList &words, int name) {
    const int on = words.indexOf(QStringLiteral("ON"), name + 1);
    return on >= 0 && isSettingsTable(words.value(on + 1));
}

} // namespace

bool isOne(const QString &statement) {
    if (statement.startsWith(QLatin1String("CREATE TABLE "))) // nearly all of them
        return false;
    const QStringList words = wordsOf(statement);
    const QStringList others{QStringLiteral("TEMP"), QStringLiteral("TEMPORARY"),
                             QStringLiteral("UNIQUE"), QStringLiteral("VIRTUAL")};
    int kind = 1;
    while (others.contains(words.value(kind)))
        ++kind;
    const bool isVirtual = words.value(kind - 1) == QLatin1String("VIRTUAL");
    const bool ifMissing = words.value(kind + 1) == QLatin1String("IF");
    const int name = kind + (ifMissing ? 4 : 1); // behind "IF NOT EXISTS"
    if (words.value(kind) == QLatin1String("TRIGGER"))
        return hangsOnSettings(words, name);
    // The name may stand behind that of its database.
    return (isVirtual || words.value(kind) == QLatin1String("VIEW")) &&
           (isSettingsTable(words.value(name)) || isSettingsTable(words.value(name + 1)));
}

} // namespace settings_stand_in
