// Runs command lines of quorvanectl one after the other in this process: each line of standard input is a JSON
// array with the words of one, and is answered by a line with its status, output and errors. For thousands of them,
// where a start for each would take ten times as long.
#include "run_tool.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

QByteArray answerTo(const QByteArray &line) {
    QStringList words;
    for (const QJsonValue word : QJsonDocument::fromJson(line).array())
        words.append(word.toString());
    const support::Answer answer = support::runTool(words);
    const QJsonObject told{{"status", answer.status}, {"out", answer.out}, {"err", answer.err}};
    return QJsonDocument(told).toJson(QJsonDocument::Compact);
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    QFile lines;
    if (!lines.open(stdin, QIODevice::ReadOnly))
        return EXIT_FAILURE;
    for (QByteArray line = lines.readLine(); !line.isEmpty(); line = lines.readLine())
        std::puts(answerTo(line).constData());
    return std::fflush(stdout);
}
