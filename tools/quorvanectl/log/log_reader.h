// Reads a launch log from its start to its end, in little memory however long it is.
#pragma once

#include "quorvanectl/log/known_lines.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <string_view>
#include <vector>

class QIODevice;

namespace ctl {

// A moment of a log: seconds of its own local time since 1970.
using LogTime = qint64;

// As the log writes it, "yyyy-MM-dd HH:mm:ss".
[[nodiscard]] QString timeText(LogTime time);

// The moment that a text of this form names; a day alone names its first second. False for others.
[[nodiscard]] bool readTime(const QString &text, LogTime *time);

// One text, with the further lines of it.
struct LogEntry {
    LogTime time = 0;
    const KnownLine *line = nullptr; // null for a text that is not known
    QByteArray text;                 // at most `longestText` bytes of it
    bool isCut = false;              // it was longer
    qint64 zeros = 0;                // zero bytes before it, as a power cut leaves them

    [[nodiscard]] LineKind kind() const { return line == nullptr ? LineKind::Tells : line->kind; }
};

class LogReader {
public:
    static constexpr int longestText = 8192; // bytes

    // The device is open, and lives as long as the reader.
    explicit LogReader(QIODevice &log);

    // The next entry. False at the end, when the log cannot be read on, and for a file whose first
    // MiB holds no line with a time: it is no log. An entry that was used before lends its memory.
    [[nodiscard]] bool next(LogEntry *entry);

    // Whether the first line says that the beginning was left out, as in an archive for support.
    [[nodiscard]] bool lacksBeginning() const { return beginningLacks; }

    // Whether any line had a time.
    [[nodiscard]] bool isLog() const { return pending.hasTime || hasTold; }

    // Why it cannot be read on; empty at the end.
    [[nodiscard]] QString error() const { return readError; }

private:
    // In the buffer, until the next one is read.
    struct Line {
        bool hasTime = false;
        LogTime time = 0;
        qint64 zeros = 0;      // before it
        std::string_view text; // behind the time
    };

    [[nodiscard]] bool nextLine(std::string_view *line);
    [[nodiscard]] bool fill();
    [[nodiscard]] bool readTimeOf(std::string_view line, LogTime *time);
    [[nodiscard]] bool readLine(Line *read);
    void findFirst();
    void beginEntry(LogEntry *entry) const;

    QIODevice &device;
    std::vector<char> buffer;
    size_t begin = 0;
    size_t end = 0;
    bool skipsLine = false;
    qint64 bytesPassed = 0;
    std::array<char, 11> lastDay{}; // "yyyy-MM-dd " of the last line that had a time
    LogTime lastDayTime = 0;        // of its first second
    Line pending;                   // the first one of the next entry, if it has a time
    bool hasTold = false;
    bool beginningLacks = false;
    QString readError;
};

} // namespace ctl

Q_DECLARE_TYPEINFO(ctl::LogEntry, Q_MOVABLE_TYPE);
