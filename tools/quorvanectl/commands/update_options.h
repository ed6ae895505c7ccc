// Options that several commands of the family `update` have.
#pragma once

#include "quorvanectl/shell/console.h"

#include <QStringList>

class QCommandLineParser;

namespace ctl {

// Where a command writes what it has made of a manifest.
enum class Place {
    Out,          // to the file that --out names
    OutOrInPlace, // there, or with --in-place over the manifest that is its first argument
};

// Adds --out and --force, and --in-place where the command has that; `otherwise` ends the help of --out.
void declareOut(QCommandLineParser &parser, const QString &otherwise = QString(),
                Place place = Place::Out);

// The file that is written; empty: none, but standard output.
[[nodiscard]] QString placeOf(const QCommandLineParser &parser, Place place);

// Whether deliver() may write, to be asked before what takes long. The `inputs` are files that the
// command reads and that nothing is written over, not even by force; the empty name is none.
[[nodiscard]] bool mayDeliver(const QCommandLineParser &parser, const QStringList &inputs,
                              QString *error, Place place = Place::Out);

// Writes to the file that was asked for, else to standard output. Returns the exit status. `done` is what is
// said of a file that is written.
[[nodiscard]] int deliver(const QByteArray &bytes, const QCommandLineParser &parser,
                          const Console &console, const QStringList &inputs = {},
                          Place place = Place::Out,
                          const QString &done = QStringLiteral("written"));

// Adds --key, a public one; `purpose` is its help.
void declarePublicKey(QCommandLineParser &parser, const QString &purpose);

// The line that says which key that is, as `keys new` says it of a new one.
void printPublicKey(const Console &console, const QString &path);

// Adds --base.
void declareBase(QCommandLineParser &parser);

// Whether a launcher could fetch from there. A drive is no scheme, and a file's URL names no server.
[[nodiscard]] bool isServerAddress(const QString &text);

// How a text is refused that is none.
[[nodiscard]] QString notAnAddress(const QString &text);

} // namespace ctl
