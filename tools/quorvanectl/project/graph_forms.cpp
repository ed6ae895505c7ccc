#include "quorvanectl/project/graph_forms.h"

#include "frame/steering_characters.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryFile>

namespace ctl {
namespace {

constexpr int longestDrawing = 60000; // ms

QString counted(int count, const char *what) {
    return QStringLiteral("%1 %2%3").arg(QString::number(count), QLatin1String(what),
                                         QLatin1String(count == 1 ? "" : "s"));
}

// "sub; has a syntax error": what stands behind a script's path; may be empty.
QString describe(const GraphScript &script) {
    QStringList parts = script.remarks;
    if (!script.role.isEmpty())
        parts.prepend(script.role);
    return parts.join(QStringLiteral("; "));
}

QString titleOf(const GraphScript &script) {
    const QString about = describe(script);
    return about.isEmpty() ? script.path : QStringLiteral("%1 (%2)").arg(script.path, about);
}

QString globalLine(const ProjectGraph &graph, int script, const ast::GlobalDeclaration &global) {
    const QStringList others = graph.otherDefinitions(script, global.name);
    const QString line =
        QStringLiteral("global %1, line %2").arg(global.name, QString::number(global.line));
    return others.isEmpty()
               ? line
               : QStringLiteral("%1, also in %2").arg(line, others.join(QStringLiteral(", ")));
}

// The title, and a line for each global.
QStringList labelOf(const ProjectGraph &graph, int script) {
    const GraphScript &it = graph.scripts[size_t(script)];
    QStringList lines{titleOf(it)};
    for (const ast::GlobalDeclaration &global : it.globals)
        lines.append(globalLine(graph, script, global));
    return lines;
}

QStringList circleMembers(const ProjectGraph &graph, int circle) {
    QStringList members;
    for (size_t i = 0; i < graph.scripts.size(); ++i) {
        if (graph.circles.at(int(i)) == circle)
            members.append(graph.scripts[i].path);
    }
    return members;
}

// A name may hold what ends a line or steers a terminal; neither belongs in a drawing.
QString drawable(QString text) {
    for (QChar &unit : text) {
        if (steersDisplay(unit))
            unit = QChar::ReplacementCharacter;
    }
    return text;
}

QString dotText(const QString &text) {
    return drawable(text)
        .replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('"'), QLatin1String("\\\""));
}

// The signs that end a label or begin a tag or an entity.
QString mermaidText(const QString &text) {
    return drawable(text)
        .replace(QLatin1Char('#'), QLatin1String("#35;"))
        .replace(QLatin1Char('"'), QLatin1String("#quot;"))
        .replace(QLatin1Char('<'), QLatin1String("#lt;"))
        .replace(QLatin1Char('>'), QLatin1String("#gt;"));
}

QString dotNode(const ProjectGraph &graph, int script) {
    QString label;
    for (const QString &line : labelOf(graph, script))
        label += dotText(line) + QLatin1String("\\l"); // flush left
    const bool isProblem = !graph.scripts[size_t(script)].remarks.isEmpty();
    return QStringLiteral("    s%1 [label=\"%2\"%3];\n")
        .arg(QString::number(script), label,
             isProblem ? QStringLiteral(", style=dashed") : QString());
}

QString mermaidNode(const ProjectGraph &graph, int script) {
    QStringList lines;
    for (const QString &line : labelOf(graph, script))
        lines.append(mermaidText(line));
    return QStringLiteral("    s%1[\"%2\"]\n")
        .arg(QString::number(script), lines.join(QStringLiteral("<br/>")));
}

// The edges, each in the form that belongs to it.
QString edges(const ProjectGraph &graph, const QString &plain, const QString &inCircle) {
    QString text;
    for (int from = 0; from < int(graph.scripts.size()); ++from) {
        for (const int to : graph.scripts[size_t(from)].imports)
            text += (graph.isInCircle(from, to) ? inCircle : plain)
                        .arg(QString::number(from), QString::number(to));
    }
    return text;
}

} // namespace

QStringList graphLines(const ProjectGraph &graph) {
    QStringList lines{QStringLiteral("%1: %2, %3, %4")
                          .arg(graph.projectPath, counted(int(graph.scripts.size()), "script"),
                               counted(graph.importCount(), "import"),
                               counted(graph.globalCount(), "global"))};
    for (int i = 0; i < int(graph.scripts.size()); ++i) {
        const GraphScript &script = graph.scripts[size_t(i)];
        lines << QString() << titleOf(script);
        for (const int to : script.imports)
            lines << QStringLiteral("    imports %1%2")
                         .arg(graph.scripts[size_t(to)].path, graph.isInCircle(i, to)
                                                                  ? QStringLiteral(", in a circle")
                                                                  : QString());
        for (const ast::GlobalDeclaration &global : script.globals)
            lines << QStringLiteral("    ") + globalLine(graph, i, global);
    }
    if (graph.circleCount() > 0)
        lines << QString();
    for (int circle = 0; circle < graph.circleCount(); ++circle)
        lines << QStringLiteral("circle of imports: %1")
                     .arg(circleMembers(graph, circle).join(QStringLiteral(", ")));
    return lines;
}

QString graphDot(const ProjectGraph &graph) {
    QString text = QStringLiteral("digraph \"%1\" {\n"
                                  "    rankdir=LR;\n"
                                  "    node [shape=box, fontname=\"sans-serif\"];\n")
                       .arg(dotText(QFileInfo(graph.projectPath).completeBaseName()));
    for (int i = 0; i < int(graph.scripts.size()); ++i)
        text += dotNode(graph, i);
    text += edges(graph, QStringLiteral("    s%1 -> s%2;\n"),
                  QStringLiteral("    s%1 -> s%2 [color=red, label=\"circle\"];\n"));
    return text + QLatin1String("}\n");
}

QString graphMermaid(const ProjectGraph &graph) {
    QString text = QStringLiteral("flowchart LR\n");
    for (int i = 0; i < int(graph.scripts.size()); ++i)
        text += mermaidNode(graph, i);
    return text + edges(graph, QStringLiteral("    s%1 --> s%2\n"),
                        QStringLiteral("    s%1 -- circle --> s%2\n"));
}

QString graphSvg(const ProjectGraph &graph, QString *error) {
    const QString program = QStandardPaths::findExecutable(QStringLiteral("dot"));
    if (program.isEmpty()) {
        *error = QStringLiteral("Graphviz draws the SVG, and its program dot is not installed; "
                                "--format mermaid and --format dot need nothing");
        return QString();
    }
    // A file, since a program that does not read its input must not hold up ours.
    QTemporaryFile input;
    if (!input.open() || input.write(graphDot(graph).toUtf8()) < 0 || !input.flush()) {
        *error = QStringLiteral("%1: %2").arg(input.fileName(), input.errorString());
        return QString();
    }
    QProcess dot;
    dot.setStandardInputFile(input.fileName());
    dot.start(program, {QStringLiteral("-Tsvg")});
    const bool hasEnded = dot.waitForFinished(longestDrawing);
    const QString svg = QString::fromUtf8(dot.readAllStandardOutput());
    if (hasEnded && dot.exitStatus() == QProcess::NormalExit && dot.exitCode() == 0 &&
        !svg.isEmpty())
        return svg;
    QString reason = QString::fromUtf8(dot.readAllStandardError()).section(QLatin1Char('\n'), 0, 0);
    if (reason.isEmpty())
        reason = hasEnded ? QStringLiteral("it gives no reason") : dot.errorString();
    *error = QStringLiteral("%1 has drawn nothing: %2").arg(program, reason);
    dot.kill();
    (void)dot.waitForFinished();
    return QString();
}

} // namespace ctl
