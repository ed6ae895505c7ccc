// A line of the log for people: what it says, its cause and remedy, and those of the reasons in it.
#pragma once

#include "quorvanectl/log/log_reader.h"

#include <QStringList>
#include <QVector>

namespace ctl {

enum class Language { English, Chinese };

struct Advice {
    QString told; // in the language asked for, where the text is known in both
    QString cause;
    QString remedy;
};

struct LineAdvice {
    bool isKnown = false;
    bool isLogLine = true; // its cause is when it comes, its remedy what it tells
    Advice line;
    QVector<Advice> reasons; // the outermost first
};

// A text with others in its places %1 and so on; a place whose text is null stays.
[[nodiscard]] QString filledIn(const QString &text, const QStringList &filled);

[[nodiscard]] LineAdvice adviceOn(const LogEntry &entry, Language language);

} // namespace ctl
