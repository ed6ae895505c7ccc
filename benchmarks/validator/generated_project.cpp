#include "generated_project.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

// Twenty lines of the kind that line scripts are made of. %1 makes names differ.
constexpr char scriptFunction[] = R"(function measure_%1(int first, int second) {
    int total = 0;
    float scale = 1.5;
    for (int i = 0; i < 100; i = i + 1) {
        if (first > second && i != 3) {
            total = total + i * 2;
        } else if (second == 0) {
            total = total - lookup(first, second, i);
        } else {
            total = -total;
        }
    }
    while (total > 1000) {
        data[total % 8] = total;
        total = total / 2;
    }
    // keep the last value for the report
    print("total of station %1", total, scale);
    return total;
}
)";

constexpr char luaFunction[] = R"(function measure_%1(first, second)
    local total = 0;
    local scale = 1.5;
    for i = 0, 100 - 1, 1 do
        if first > second and i ~= 3 then
            total = total + i * 2;
        elseif second == 0 then
            total = total - lookup(first, second, i);
        else
            total = -total;
        end
    end
    while total > 1000 do
        data[total % 8] = total;
        total = total / 2;
    end
    -- keep the last value for the report
    print("total of station %1", total, scale);
    return total;
end
)";

constexpr int linesOfFunction = 20;

QString nameOf(int number) {
    return QString::number(number).rightJustified(6, QLatin1Char('0'));
}

void write(const QString &path, const QString &text) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(path));
}

QString functions(const char *function, int lines) {
    QString text;
    for (int i = 0; i < lines / linesOfFunction; ++i)
        text += QString::fromUtf8(function).arg(nameOf(i));
    return text;
}

} // namespace

QString writeProject(const QString &folder, int count, int lines) {
    const QString body = functions(scriptFunction, lines);
    QJsonArray scripts;
    for (int i = 0; i < count; ++i) {
        const QString path = nameOf(i) + QStringLiteral(".ys");
        const QString head = QStringLiteral("import \"%1.ys\";\nglobal int cam%2_total = 0;\n")
                                 .arg(nameOf(i + 1), nameOf(i));
        write(QDir(folder).filePath(path), head + body);
        scripts.append(QJsonObject{{QStringLiteral("id"), nameOf(i)},
                                   {QStringLiteral("path"), path},
                                   {QStringLiteral("role"), QStringLiteral("module")}});
    }
    const QString text = QStringLiteral("line");
    const QJsonObject task{{QStringLiteral("entryScriptId"), nameOf(0)}};
    const QJsonObject root{
        {QStringLiteral("schemaVersion"), 1},
        {QStringLiteral("project"), QJsonObject{{QStringLiteral("name"), text},
                                                {QStringLiteral("displayName"), text},
                                                {QStringLiteral("createdAt"), text}}},
        {QStringLiteral("scripts"), scripts},
        {QStringLiteral("tasks"), QJsonObject{{QStringLiteral("main"), task}}}};
    const QString project = QDir(folder).filePath(QStringLiteral("line.yslib"));
    write(project, QString::fromUtf8(QJsonDocument(root).toJson()));
    return project;
}

void writeLuaFiles(const QString &folder, int count, int lines) {
    const QString body = functions(luaFunction, lines);
    for (int i = 0; i < count; ++i) {
        const QString head =
            QStringLiteral("require \"%1\";\ncam%2_total = 0;\n").arg(nameOf(i + 1), nameOf(i));
        write(QDir(folder).filePath(nameOf(i) + QStringLiteral(".lua")), head + body);
    }
}
