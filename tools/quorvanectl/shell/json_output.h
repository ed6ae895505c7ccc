// The option --format, and JSON for programs: one document on standard output, keys in the order of
// the alphabet.
#pragma once

#include "quorvanectl/shell/console.h"

#include <QStringList>

class QCommandLineParser;
class QJsonDocument;

namespace ctl {

// The forms of most commands.
[[nodiscard]] QStringList textOrJson();

// Adds --format; the first of `formats` is the one without it.
void declareFormat(QCommandLineParser &parser, const QStringList &formats);

// The chosen format. Empty, with a line in `error`, if it is none of these.
[[nodiscard]] QString chosenFormat(const QCommandLineParser &parser, const QStringList &formats,
                                   QString *error);

void printJson(const Console &console, const QJsonDocument &document);

// What printJson() prints.
[[nodiscard]] QString jsonText(const QJsonDocument &document);

} // namespace ctl
