// The one version rule: versions are text, two to four numbers separated by points in practice, and
// compared number by number. Pure functions for any thread.
#pragma once

#include <QString>

// Without white space at the ends and without a leading "v" or "V".
[[nodiscard]] QString normalizeVersion(const QString &text);

// -1, 0 or 1. A part that is missing or no number counts as 0: 1.2 equals 1.2.0, and 1.2-beta
// compares as 1.0.
[[nodiscard]] int compareVersions(const QString &a, const QString &b);

// The first version of three or four numbers anywhere in the text, else empty.
[[nodiscard]] QString extractVersion(const QString &text);

// Whether the text says no version: empty, or every part counts as 0.
[[nodiscard]] bool isPlaceholderVersion(const QString &text);
