// Runs a command line of quorvanectl and keeps what it answers.
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace support {

struct Answer {
    int status = -1;
    QString out;
    QString err;
};

// In this process, without colours.
[[nodiscard]] Answer runTool(const QStringList &arguments);

// As a process of its own in `folder`, with no display.
[[nodiscard]] Answer runProgram(const QStringList &arguments, const QString &folder);

// A line as one types it, starting with "quorvanectl", run by a shell in `folder`. `more` goes into its
// environment. On Windows there is no shell: the line may hold nothing but the command and its words.
[[nodiscard]] Answer runLine(const QString &line, const QString &folder,
                             const QMap<QString, QString> &more = {});

// Whether a command line may mount a file system that only it sees: `privately` before it.
[[nodiscard]] bool canMountPrivately();
extern const char *const privately;

} // namespace support
