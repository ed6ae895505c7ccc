// quorvanectl project graph: which script imports which, and where globals are defined.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/project/graph_forms.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

namespace ctl {
namespace {

QStringList formats() {
    return {QStringLiteral("text"), QStringLiteral("dot"), QStringLiteral("mermaid"),
            QStringLiteral("svg")};
}

void declare(QCommandLineParser &parser) {
    declareFormat(parser, formats());
    declareLibrary(parser);
}

// Null, with a line in `error`, if it cannot be had.
QString formed(const ProjectGraph &graph, const QString &format, QString *error) {
    if (format == QLatin1String("dot"))
        return graphDot(graph);
    if (format == QLatin1String("mermaid"))
        return graphMermaid(graph);
    if (format == QLatin1String("svg"))
        return graphSvg(graph, error);
    QString text;
    for (const QString &line : graphLines(graph))
        text += spelledOut(line) + QLatin1Char('\n');
    return text;
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString format = chosenFormat(parser, formats(), &error);
    if (format.isEmpty() || !loadLibrary(parser, console, &error))
        return refuse(console, error);
    const QString path = firstArgument(parser);
    const QString what = QStringLiteral("reading the scripts of %1").arg(path);
    const QString text = whileTelling(console, what, [&] {
        ProjectGraph graph;
        return readGraph(path, &graph, &error) ? formed(graph, format, &error) : QString();
    });
    if (text.isNull())
        return refuse(console, error);
    print(console, text);
    return Clean;
}

} // namespace

Command projectGraph() {
    return {QStringLiteral("project"),
            QStringLiteral("graph"),
            QStringLiteral("FILE.yslib"),
            QStringLiteral("Shows which script imports which, where globals are defined, and which "
                           "imports run in a circle."),
            QStringLiteral("quorvanectl project graph demo/demo.yslib --format mermaid"),
            declare,
            run};
}

} // namespace ctl
