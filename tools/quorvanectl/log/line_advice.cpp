#include "quorvanectl/log/line_advice.h"

#include "quorvanectl/log/text_match.h"

namespace ctl {
namespace {

constexpr int longestQuote = 120; // characters of a filled in text that an advice repeats
constexpr int mostReasons = 20;

// What a cell says of a place, with a short text in it; a long one is told by the line itself.
QString quoted(const QString &cell, QStringList filled) {
    for (QString &text : filled) {
        if (text.size() > longestQuote || text.isEmpty() || text.contains(QLatin1Char('\n')))
            text = QString();
    }
    return filledIn(cell, filled);
}

Advice adviceOn(const KnownText &known, const QString &text, Language language) {
    const KnownLine &line = *known.line;
    const bool english = language == Language::English;
    const auto cell = [&](const char *ofPage) {
        return quoted(QString::fromUtf8(ofPage), known.filled);
    };
    const bool otherLanguage = *line.english != '\0' && known.isEnglish != english;
    return {otherLanguage
                ? filledIn(QString::fromUtf8(english ? line.english : line.text), known.filled)
                : text,
            cell(english ? line.cause : line.chineseCause),
            cell(english ? line.remedy : line.chineseRemedy)};
}

// Each line of what is filled in may be a reason, with further reasons in it.
void addReasons(const KnownText &known, Language language, QVector<Advice> *reasons) {
    for (const QString &filled : known.filled) {
        for (const QString &text : filled.split(QLatin1Char('\n'))) {
            const KnownText inner = knownReason(text);
            if (inner.line == nullptr || reasons->size() >= mostReasons)
                continue;
            reasons->append(adviceOn(inner, text, language));
            addReasons(inner, language, reasons);
        }
    }
}

// They stay in the language of the log.
QString furtherLines(const QString &text) {
    const int feed = text.indexOf(QLatin1Char('\n'));
    return feed < 0 ? QString() : text.mid(feed);
}

} // namespace

// Each place at once: what is filled in may hold per cent signs.
QString filledIn(const QString &text, const QStringList &filled) {
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        const int number = text.at(i) == QLatin1Char('%') ? text.mid(i + 1, 1).toInt() : 0;
        const QString value = filled.value(number - 1);
        if (value.isNull())
            result += text.at(i);
        else
            result += value;
        i += value.isNull() ? 0 : 1;
    }
    return result;
}

LineAdvice adviceOn(const LogEntry &entry, Language language) {
    LineAdvice advice;
    const QString text = QString::fromUtf8(entry.text);
    const KnownText known = knownMessage(text, entry.isCut);
    advice.line.told = text;
    if (known.line == nullptr)
        return advice;
    advice.isKnown = true;
    advice.isLogLine = known.table == TableKind::LogLines;
    advice.line = adviceOn(known, text, language);
    if (entry.isCut)
        advice.line.told = text;
    else if (known.line->kind == LineKind::Offer || known.line->kind == LineKind::UpdateDone)
        advice.line.told = advice.line.told.section(QLatin1Char('\n'), 0, 0) + furtherLines(text);
    addReasons(known, language, &advice.reasons);
    return advice;
}

} // namespace ctl
