// Logs for the tests of this room, and what the tool makes of them.
#pragma once

#include "quorvanectl/log/start_json.h"

#include <QBuffer>
#include <QByteArray>
#include <QJsonObject>
#include <QStringList>
#include <QVector>

#include <utility>

namespace support {

// A log of these lines, a second apart. "+N " before a line lets N seconds more pass.
inline QByteArray logOf(const QStringList &lines) {
    ctl::LogTime time = 0;
    if (!ctl::readTime("2026-11-20 06:00:00", &time))
        qFatal("no time");
    QByteArray log;
    for (QString line : lines) {
        if (line.startsWith('+')) {
            time += line.section(' ', 0, 0).mid(1).toInt();
            line = line.section(' ', 1);
        }
        log += (ctl::timeText(time++) + ' ' + line + '\n').toUtf8();
    }
    return log;
}

inline QVector<ctl::LogEntry> entriesOf(QByteArray log) {
    QBuffer buffer(&log);
    if (!buffer.open(QIODevice::ReadOnly))
        qFatal("no buffer");
    QVector<ctl::LogEntry> entries;
    ctl::LogReader reader(buffer);
    ctl::LogEntry entry;
    while (reader.next(&entry))
        entries.append(std::exchange(entry, {}));
    return entries;
}

inline QVector<ctl::LogStart> startsIn(const QByteArray &log) {
    QVector<ctl::LogStart> starts;
    ctl::StartSplitter splitter([&](ctl::LogStart *start) { starts.append(std::move(*start)); });
    for (ctl::LogEntry &entry : entriesOf(log))
        splitter.add(&entry);
    splitter.end();
    return starts;
}

inline QVector<QJsonObject> startsOf(const QByteArray &log) {
    QVector<QJsonObject> starts;
    for (const ctl::LogStart &start : startsIn(log))
        starts.append(ctl::toJson(start, ctl::judge(start), ctl::Language::English));
    return starts;
}

} // namespace support
