// An editor that sends one message after the other to a server in its own process, and measures each.
#pragma once

#include "quorvanectl/language_server/language_server.h"

#include <QJsonObject>
#include <QString>

#include <vector>

// Of one message, or of messages that came together.
struct Answered {
    double milliseconds = 0;          // until all is sent that follows from it
    double processorMilliseconds = 0; // of them, those that this process was at work
    int sent = 0;                     // messages
    qint64 bytes = 0;                 // of them
};

class MeasuredEditor {
public:
    MeasuredEditor();

    Answered open(const QString &path);
    // Puts a line in at this line's beginning.
    Answered edit(const QString &path, int line, const QString &text);
    Answered complete(const QString &path, int line, int column);

private:
    Answered say(const char *method, const QJsonObject &params, bool isRequest = false);

    Answered measured;
    int version = 1;
    int id = 0;
    ctl::LanguageServer server;
};

// What lies above all but 5 of 100.
[[nodiscard]] double percentile95(std::vector<double> values);

// Of this process.
[[nodiscard]] double residentMebibytes();
