#include "measured_editor.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>

#include <algorithm>
#include <ctime>
#include <unistd.h>

namespace {

QString uriOf(const QString &path) {
    return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
}

QString contentOf(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return QString::fromUtf8(file.readAll());
}

QJsonObject place(int line, int column) {
    return {{QStringLiteral("line"), line}, {QStringLiteral("character"), column}};
}

} // namespace

MeasuredEditor::MeasuredEditor()
    : server([this](const QJsonObject &message) {
        ++measured.sent;
        measured.bytes += QJsonDocument(message).toJson(QJsonDocument::Compact).size();
    }) {
    (void)say("initialize", {{QStringLiteral("capabilities"), QJsonObject()}}, true);
}

Answered MeasuredEditor::open(const QString &path) {
    return say("textDocument/didOpen", {{QStringLiteral("textDocument"),
                                         QJsonObject{{QStringLiteral("uri"), uriOf(path)},
                                                     {QStringLiteral("version"), version},
                                                     {QStringLiteral("text"), contentOf(path)}}}});
}

Answered MeasuredEditor::edit(const QString &path, int line, const QString &text) {
    const QJsonObject range{{QStringLiteral("start"), place(line, 0)},
                            {QStringLiteral("end"), place(line + 1, 0)}};
    const QJsonObject change{{QStringLiteral("range"), range}, {QStringLiteral("text"), text}};
    return say("textDocument/didChange", {{QStringLiteral("textDocument"),
                                           QJsonObject{{QStringLiteral("uri"), uriOf(path)},
                                                       {QStringLiteral("version"), ++version}}},
                                          {QStringLiteral("contentChanges"), QJsonArray{change}}});
}

Answered MeasuredEditor::complete(const QString &path, int line, int column) {
    return say("textDocument/completion",
               {{QStringLiteral("textDocument"), QJsonObject{{QStringLiteral("uri"), uriOf(path)}}},
                {QStringLiteral("position"), place(line, column)}},
               true);
}

Answered MeasuredEditor::say(const char *method, const QJsonObject &params, bool isRequest) {
    QJsonObject message{{QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
                        {QStringLiteral("method"), QLatin1String(method)},
                        {QStringLiteral("params"), params}};
    if (isRequest)
        message.insert(QStringLiteral("id"), ++id);
    const QByteArray body = QJsonDocument(message).toJson(QJsonDocument::Compact);
    measured = {};
    QElapsedTimer wall;
    wall.start();
    const std::clock_t begin = std::clock();
    server.take({body});
    measured.processorMilliseconds = double(std::clock() - begin) * 1000 / CLOCKS_PER_SEC;
    measured.milliseconds = double(wall.nsecsElapsed()) / 1e6;
    return measured;
}

double percentile95(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() * 95 / 100);
}

double residentMebibytes() {
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/statm");
    const qint64 pages = file.readAll().split(' ').value(1).toLongLong();
    return double(pages) * double(::sysconf(_SC_PAGESIZE)) / 1048576;
}
