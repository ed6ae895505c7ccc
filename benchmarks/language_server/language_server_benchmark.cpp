// What an editor waits for while one types, each message by itself.
//
//   script    a script of 10,000 lines: findings within 100 ms of an edit, completion within 50 ms of it,
//             each at the 95th percentile
//   project   1,000 scripts: the first findings within 2 s of the first script that opens, and those across
//             scripts within 200 ms of an edit at the 95th percentile
//   memory    10,000 edits of a script of 100 lines after 1,000 others: at most 1 MiB above them
//
//   benchmark_language_server LIBRARY [script|project|memory [LINES [ROUNDS]]]
//
// LINES are those of each script. Elapsed time decides, as it does for who types; on a machine that does
// other work as well, that of the processor beside it tells more.

#include "../validator/generated_project.h"
#include "library/function_library.h"
#include "measured_editor.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int scriptLines = 10000;
constexpr int projectScripts = 1000;
constexpr int projectLines = 100;
constexpr int memoryLines = 100;
constexpr int warmUp = 1000;

struct Figures {
    std::vector<double> wall;
    std::vector<double> processor;

    void take(const Answered &answered) {
        wall.push_back(answered.milliseconds);
        processor.push_back(answered.processorMilliseconds);
    }

    void print(const char *what, double reach) const {
        std::printf("%s: %.1f ms, processor %.1f ms at the 95th percentile of %zu; reach %.0f ms\n",
                    what, percentile95(wall), percentile95(processor), wall.size(), reach);
    }
};

// A project of so many scripts, and the path of the script in its middle, which an editor opens.
struct Generated {
    Generated(int scripts, int lines) {
        (void)writeProject(folder.path(), scripts, lines);
        const QString number = QString::number(scripts / 2).rightJustified(6, QLatin1Char('0'));
        script = QDir(folder.path()).filePath(number + QStringLiteral(".ys"));
    }

    QTemporaryDir folder;
    QString script;
};

// Takes turns between a line and one that is not finished, in which a word begins.
QString typed(int round) {
    return round % 2 == 0 ? QStringLiteral("    total = total + 1;\n")
                          : QStringLiteral("    total = tot\n");
}

void measureScript(int lines, int rounds) {
    const Generated project(1, lines);
    MeasuredEditor editor;
    (void)editor.open(project.script);
    Figures edits;
    Figures completions;
    qint64 bytes = 0;
    for (int i = 0; i < rounds; ++i) {
        const int line = 3 + (i * 20) % qMax(20, lines - 20);
        edits.take(editor.edit(project.script, line, typed(i)));
        const Answered answered = editor.complete(project.script, line, 10);
        completions.take(answered);
        bytes = qMax(bytes, answered.bytes);
    }
    edits.print("an edit's findings", 100);
    completions.print("completion", 50);
    std::printf("a completion has %lld bytes\n", static_cast<long long>(bytes));
}

void measureProject(int lines, int rounds) {
    const Generated project(projectScripts, lines);
    MeasuredEditor editor;
    const Answered first = editor.open(project.script);
    std::printf("the first findings: %.0f ms, processor %.0f ms; reach 2000 ms\n",
                first.milliseconds, first.processorMilliseconds);
    Figures edits;
    Figures completions;
    for (int i = 0; i < rounds; ++i) {
        // The global of another script, and not: a finding comes and goes in both.
        const Answered answered =
            editor.edit(project.script, 1,
                        i % 2 == 0 ? QStringLiteral("global int cam000001_total = 0;\n")
                                   : QStringLiteral("global int cam000500_total = 0;\n"));
        if (answered.sent != 2)
            qFatal("%d messages instead of 2", answered.sent);
        edits.take(answered);
        completions.take(editor.complete(project.script, 2, 0));
    }
    edits.print("an edit's findings across scripts", 200);
    completions.print("completion", 50);
}

void measureMemory(int lines, int rounds) {
    const Generated project(1, lines);
    MeasuredEditor editor;
    (void)editor.open(project.script);
    double before = 0;
    for (int i = 0; i < warmUp + rounds; ++i) {
        if (i == warmUp)
            before = residentMebibytes();
        (void)editor.edit(project.script, 3 + i % 17, typed(i));
        (void)editor.complete(project.script, 3 + i % 17, 10);
    }
    std::printf("resident memory: %.2f MiB after %d edits, %.2f MiB after %d more\n", before,
                warmUp, residentMebibytes(), rounds);
}

int number(const QStringList &arguments, int at, int otherwise) {
    const int given = arguments.value(at).toInt();
    return given > 0 ? given : otherwise;
}

} // namespace

int main(int argc, char *argv[]) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QString error;
    if (!FunctionLibrary::instance().load(arguments.value(1), &error)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(arguments.value(1)), qPrintable(error));
        return 2;
    }
    const QString only = arguments.value(2);
    if (only.isEmpty() || only == QLatin1String("script"))
        measureScript(number(arguments, 3, scriptLines), number(arguments, 4, 200));
    if (only.isEmpty() || only == QLatin1String("project"))
        measureProject(number(arguments, 3, projectLines), number(arguments, 4, 200));
    if (only.isEmpty() || only == QLatin1String("memory"))
        measureMemory(number(arguments, 3, memoryLines), number(arguments, 4, 10000));
    return 0;
}
