// Where a command writes: results to `out`, everything else to `err`, both in UTF-8.
#pragma once

#include <QIODevice>
#include <QString>

#include <memory>

namespace ctl {

struct Console {
    QIODevice *out = nullptr;
    QIODevice *err = nullptr;
    bool colour = false;           // whether `out` is a terminal that shows colours
    bool errorsOnTerminal = false; // whether `err` is a terminal
};

// The console of the running program. The devices live as long as the program.
[[nodiscard]] Console standardConsole();

// Gives each standard stream that the caller has closed a place where nothing can be written. Else the
// first file that is opened would get its number, and what is meant for the stream would land in it.
void occupyStandardStreams();

// Makes the standard streams take bytes as they are, since a signature counts each of them, and a console
// take escape sequences.
void prepareStreams();

// The standard stream of this number (1 output, 2 errors), open for writing in UTF-8: a QFile, or on Windows
// the screen of a console, which shows the text whatever its code page is. Unbuffered if it is not output.
[[nodiscard]] std::unique_ptr<QIODevice> openStream(int stream);

// Whether the standard stream of this number (0 input, 1 output, 2 errors) is a terminal, which follows escape sequences.
[[nodiscard]] bool isTerminal(int stream);

void print(const Console &console, const QString &text);
void printLine(const Console &console, const QString &line = QString());

// The line that says of a file that nothing is wrong with it.
void printClean(const Console &console, const QString &path);

// One line on `err`, behind the program's name.
void tell(const Console &console, const QString &line);

// Tells why and returns ExitStatus::Refused.
[[nodiscard]] int refuse(const Console &console, const QString &reason);

enum class Ink { Error, Warning, Good, Heading, Caret };

// The text in its colour; as it is where no colours are shown.
[[nodiscard]] QString inked(const Console &console, Ink ink, const QString &text);

// The text with its control characters and direction marks spelled out: a foreign file's name must
// neither end a line nor steer a terminal, nor show as another name.
[[nodiscard]] QString spelledOut(const QString &text);

// The text with a sign in place of each control character but line feeds and tabs, and of each
// direction mark: for a foreign text that keeps its lines and columns.
[[nodiscard]] QString harmless(const QString &text);

} // namespace ctl
