// A start of the launch log in words.
#pragma once

#include "quorvanectl/log/line_advice.h"
#include "quorvanectl/log/start_verdict.h"

namespace ctl {

// A line of the report: what it is about, and what it says.
struct Labelled {
    QString label;
    QString text;
};

// One of two texts, by the language.
[[nodiscard]] QString inLanguage(Language language, const char *english, const char *chinese);

// How a start went, a line for each subject of which the log tells something.
[[nodiscard]] QVector<Labelled> linesOf(const StartVerdict &verdict, Language language);

// Cause and remedy of a line or of a reason in it, as far as there are any.
[[nodiscard]] QVector<Labelled> linesOf(const Advice &advice, bool isLogLine, Language language);

} // namespace ctl
