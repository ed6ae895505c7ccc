#include "quorvanectl/shell/console.h"

#include "frame/steering_characters.h"
#include "quorvanectl/shell/command.h"

namespace ctl {
namespace {

const char *colourOf(Ink ink) {
    switch (ink) {
    case Ink::Error:
        return "31";
    case Ink::Warning:
        return "33";
    case Ink::Good:
        return "32";
    case Ink::Heading:
        return "1";
    case Ink::Caret:
        break;
    }
    return "36";
}

bool showsColours() {
    const QByteArray terminal = qgetenv("TERM");
    return isTerminal(1) && !terminal.isEmpty() && terminal != "dumb" &&
           qEnvironmentVariableIsEmpty("NO_COLOR");
}

void write(QIODevice *device, const QString &text) {
    // A result that cannot be written shows at the end, when main closes the device.
    (void)device->write(text.toUtf8());
}

} // namespace

Console standardConsole() {
    static std::unique_ptr<QIODevice> out;
    static std::unique_ptr<QIODevice> err;
    if (!out) {
        prepareStreams();
        out = openStream(1);
        err = openStream(2);
    }
    return {out.get(), err.get(), showsColours(), isTerminal(2)};
}

void print(const Console &console, const QString &text) {
    write(console.out, text);
}

void printLine(const Console &console, const QString &line) {
    write(console.out, line + QLatin1Char('\n'));
}

void printClean(const Console &console, const QString &path) {
    printLine(console, QStringLiteral("%1: %2").arg(
                           spelledOut(path), inked(console, Ink::Good, QStringLiteral("clean"))));
}

void tell(const Console &console, const QString &line) {
    write(console.err, QStringLiteral("quorvanectl: %1\n").arg(spelledOut(line)));
}

int refuse(const Console &console, const QString &reason) {
    tell(console, reason);
    return Refused;
}

QString inked(const Console &console, Ink ink, const QString &text) {
    if (!console.colour)
        return text;
    return QStringLiteral("\x1b[%1m%2\x1b[0m").arg(QLatin1String(colourOf(ink)), text);
}

QString spelledOut(const QString &text) {
    QString result;
    for (const QChar unit : text) {
        if (unit == QLatin1Char('\n'))
            result += QLatin1String("\\n");
        else if (unit.category() == QChar::Other_Control)
            result += QStringLiteral("\\x%1").arg(unit.unicode(), 2, 16, QLatin1Char('0'));
        else if (steersDisplay(unit))
            result += unicodeEscape(unit);
        else
            result += unit;
    }
    return result;
}

QString harmless(const QString &text) {
    QString result = text;
    for (QChar &unit : result) {
        if (steersDisplay(unit) && unit != QLatin1Char('\n') && unit != QLatin1Char('\t'))
            unit = QChar::ReplacementCharacter;
    }
    return result;
}

} // namespace ctl
