#include "quorvanectl/entry/command_line.h"

#include "quorvanectl/commands/commands.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>

namespace ctl {
namespace {

const QLatin1String programName("quorvanectl");

bool asksForHelp(const QString &argument) {
    return argument == QLatin1String("--help") || argument == QLatin1String("-h");
}

QString withArguments(const Command &command) {
    return QStringLiteral("%1 %2").arg(titleOf(command), command.arguments).trimmed();
}

// --- help ---------------------------------------------------------------------------------------

// The commands of a family, or of all if it is empty.
void printCommands(const Console &console, const QString &family) {
    for (const Command &command : allCommands()) {
        if (!family.isEmpty() && command.family != family)
            continue;
        printLine(console);
        printLine(console, inked(console, Ink::Heading, withArguments(command)));
        printLine(console, QStringLiteral("    %1").arg(command.summary));
        printLine(console, QStringLiteral("    $ %1").arg(command.example));
    }
}

void printClosing(const Console &console) {
    printLine(console);
    printLine(console,
              QStringLiteral("`%1 FAMILY COMMAND --help` tells the options of a command.\n"
                             "Exit status: 0 clean or warnings, 1 errors, 2 wrong usage or a file "
                             "that cannot be used.")
                  .arg(programName));
}

int programHelp(const Console &console) {
    printLine(console, QStringLiteral("Usage: %1 FAMILY COMMAND [options] ARGUMENTS\n\n"
                                      "Checks projects and scripts, makes and explains updates, "
                                      "helps where something went wrong.")
                           .arg(programName));
    printCommands(console, QString());
    printClosing(console);
    return Clean;
}

int familyHelp(const QString &family, const Console &console) {
    printLine(console,
              QStringLiteral("Usage: %1 %2 COMMAND [options] ARGUMENTS").arg(programName, family));
    printCommands(console, family);
    printClosing(console);
    return Clean;
}

// The parser's own list of options; its first lines name the program by its path.
QString optionsText(const QCommandLineParser &parser) {
    const QString help = parser.helpText();
    return help.mid(qMax(0, help.indexOf(QLatin1String("Options:"))));
}

int commandHelp(const Command &command, const QCommandLineParser &parser, const Console &console) {
    printLine(console, QStringLiteral("Usage: %1 %2 [options] %3")
                           .arg(programName, titleOf(command), command.arguments)
                           .trimmed());
    printLine(console);
    printLine(console, command.summary);
    printLine(console);
    print(console, optionsText(parser));
    printLine(console, QStringLiteral("\nExample:\n  $ %1").arg(command.example));
    return Clean;
}

// --- running ------------------------------------------------------------------------------------

int refuseUsage(const Console &console, const QString &reason, const QString &helpOf = QString()) {
    const QString help =
        QStringList{programName, helpOf, QStringLiteral("--help")}.join(QLatin1Char(' '));
    return refuse(console, QStringLiteral("%1; see %2").arg(reason, help.simplified()));
}

// A word that is no family, or a family and a word that is no command of it.
int refuseCommand(const Console &console, const QString &title, const QString &helpOf = QString()) {
    return refuseUsage(console, QStringLiteral("no command '%1'").arg(title), helpOf);
}

// Behind a mistake with options: what a dash does to a word, if that may be what went wrong.
QString hintAtDashes(const QStringList &arguments, const QStringList &unknown) {
    for (const QString &argument : arguments) {
        if (argument == QLatin1String("--"))
            break;
        const bool oneDash =
            argument.startsWith(QLatin1Char('-')) && !argument.startsWith(QLatin1String("--"));
        if ((oneDash && unknown.contains(argument.mid(1, 1))) ||
            (unknown.contains(argument.mid(2)) && QFileInfo::exists(argument)))
            return QStringLiteral(": an option has two dashes, and a name that begins with a dash "
                                  "goes behind --");
    }
    return QString();
}

QString optionMistake(const QCommandLineParser &parser, const QStringList &arguments) {
    QString text = parser.errorText();
    if (text.endsWith(QLatin1Char('.'))) // a whole sentence
        text.chop(1);
    return text + hintAtDashes(arguments, parser.unknownOptionNames());
}

// An option that is given an empty value, as of a variable that is not set; empty if there is none.
QString emptyOption(const QCommandLineParser &parser) {
    const QStringList names = parser.optionNames();
    const auto empty = std::find_if(names.begin(), names.end(), [&](const QString &name) {
        return parser.values(name).contains(QString());
    });
    return empty == names.end() ? QString() : *empty;
}

void declareOptions(const Command &command, QCommandLineParser &parser) {
    command.declare(parser);
    parser.addOption(
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help.")});
}

// A word that the command takes for one of its options, or for the end of them.
bool isOption(const Command &command, const QString &word) {
    if (!word.startsWith(QLatin1Char('-')) || word.size() == 1)
        return false;
    QCommandLineParser parser;
    declareOptions(command, parser);
    (void)parser.parse({programName, word}); // its value is missing, if it has one
    return parser.unknownOptionNames().isEmpty();
}

// The option whose value was forgotten; empty if there is none. Qt takes the next word, whatever it is, and
// `--out --force` would make a file of that name. One that is called so is named in one word, `--out=--force`.
QString optionWithoutValue(const Command &command, const QCommandLineParser &parser,
                           const QStringList &arguments) {
    const QStringList given = parser.optionNames();
    for (int i = 0; i + 1 < arguments.size() && arguments.at(i) != QLatin1String("--"); ++i) {
        const QString name = arguments.at(i).mid(2);
        const QString &next = arguments.at(i + 1);
        if (arguments.at(i).startsWith(QLatin1String("--")) && given.contains(name) &&
            parser.values(name).contains(next) && isOption(command, next))
            return name;
    }
    return QString();
}

bool hasRightCount(const Command &command, int given) {
    const QStringList words = command.arguments.split(QLatin1Char(' '));
    int least = 0;
    int most = 0;
    for (const QString &word : words) {
        most += word.isEmpty() ? 0 : 1;
        least += word.isEmpty() || word.startsWith(QLatin1Char('[')) ? 0 : 1;
        if (word.contains(QLatin1String("...")))
            return given >= least;
    }
    return given >= least && given <= most;
}

int runCommand(const Command &command, const QStringList &arguments, Console &console) {
    QCommandLineParser parser;
    declareOptions(command, parser);
    if (!parser.parse(QStringList(programName) + arguments))
        return refuseUsage(console, optionMistake(parser, arguments), titleOf(command));
    const QString unfinished = optionWithoutValue(command, parser, arguments);
    if (!unfinished.isEmpty())
        return refuseUsage(console, QStringLiteral("Missing value after '--%1'").arg(unfinished),
                           titleOf(command));
    if (parser.isSet(QStringLiteral("help")))
        return commandHelp(command, parser, console);
    const QString empty = emptyOption(parser);
    if (!empty.isEmpty())
        return refuseUsage(console, QStringLiteral("--%1 is given an empty value").arg(empty),
                           titleOf(command));
    if (!hasRightCount(command, parser.positionalArguments().size())) {
        const QString wanted =
            command.arguments.isEmpty() ? QStringLiteral("no arguments") : command.arguments;
        return refuseUsage(console, QStringLiteral("%1 takes %2").arg(titleOf(command), wanted),
                           titleOf(command));
    }
    return command.run(parser, console);
}

int runFamily(const QString &family, const QStringList &arguments, Console &console) {
    const auto &commands = allCommands();
    const auto alone = std::find_if(commands.begin(), commands.end(), [&](const Command &it) {
        return it.family == family && it.name.isEmpty();
    });
    if (alone != commands.end())
        return runCommand(*alone, arguments, console);
    if (arguments.isEmpty())
        return refuseUsage(console, QStringLiteral("no command of '%1' given").arg(family), family);
    if (asksForHelp(arguments.first()))
        return familyHelp(family, console);
    const auto command = std::find_if(commands.begin(), commands.end(), [&](const Command &it) {
        return it.family == family && it.name == arguments.first();
    });
    if (command == commands.end()) {
        return refuseCommand(console, QStringLiteral("%1 %2").arg(family, arguments.first()),
                             family);
    }
    return runCommand(*command, arguments.mid(1), console);
}

} // namespace

int runCommandLine(const QStringList &arguments, Console &console) {
    if (arguments.isEmpty())
        return refuseUsage(console, QStringLiteral("no command given"));
    const QString &first = arguments.first();
    if (asksForHelp(first))
        return programHelp(console);
    if (first == QLatin1String("--version")) {
        printLine(console,
                  QStringLiteral("%1 %2").arg(programName, QCoreApplication::applicationVersion()));
        return Clean;
    }
    const auto &commands = allCommands();
    if (std::none_of(commands.begin(), commands.end(),
                     [&](const Command &it) { return it.family == first; }))
        return refuseCommand(console, first);
    return runFamily(first, arguments.mid(1), console);
}

} // namespace ctl
