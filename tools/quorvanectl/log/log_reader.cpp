#include "quorvanectl/log/log_reader.h"

#include "quorvanectl/log/text_match.h"

#include <QDateTime>
#include <QIODevice>

#include <algorithm>
#include <cstring>
#include <utility>

namespace ctl {
namespace {

constexpr size_t bufferSize = 1048576; // bytes, which a very long line alone fills
constexpr size_t blockSize = 131072;   // that are read at once: a processor's cache holds them
constexpr size_t timeLength = 19;      // yyyy-MM-dd HH:mm:ss

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

constexpr int noNumber = 100; // more than any two digits

int twoDigits(const char *at) {
    return isDigit(at[0]) && isDigit(at[1]) ? (at[0] - '0') * 10 + (at[1] - '0') : noNumber;
}

// Days since 1970 in the calendar that everybody uses. QDate is ten times slower, and the days of
// a log's lines may take turns.
qint64 daysUntil(int year, int month, int day) {
    const int y = month <= 2 ? year - 1 : year;
    const int era = y / 400;
    const int yearOfEra = y - era * 400;
    const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097LL + dayOfEra - 719468;
}

int daysOf(int year, int month) {
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeapYear = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return days[month - 1] + (month == 2 && isLeapYear ? 1 : 0);
}

// The first second of a day, "yyyy-MM-dd ".
bool readDay(const char *at, LogTime *time) {
    const int century = twoDigits(at);
    const int yearOfIt = twoDigits(at + 2);
    const int month = twoDigits(at + 5);
    const int day = twoDigits(at + 8);
    if (century == noNumber || yearOfIt == noNumber || month < 1 || month > 12 || at[4] != '-' ||
        at[7] != '-' || at[10] != ' ')
        return false;
    const int year = century * 100 + yearOfIt;
    if (day < 1 || day > daysOf(year, month))
        return false;
    *time = daysUntil(year, month, day) * 24 * 3600;
    return true;
}

// The seconds of a day, "HH:mm:ss ".
bool readClock(const char *at, LogTime *time) {
    const int hour = twoDigits(at);
    const int minute = twoDigits(at + 3);
    const int second = twoDigits(at + 6);
    *time = (hour * 60 + minute) * 60 + second;
    return hour < 24 && minute < 60 && second < 60 && at[2] == ':' && at[5] == ':' && at[8] == ' ';
}

// Keeps the first `kept` bytes of the entry's text, and puts others behind them.
void write(LogEntry *entry, int kept, std::string_view text) {
    const int taken = int(std::min(size_t(LogReader::longestText - kept), text.size()));
    entry->isCut = entry->isCut || size_t(taken) < text.size();
    entry->text.resize(kept + taken);
    std::memcpy(entry->text.data() + kept, text.data(), size_t(taken));
}

void append(LogEntry *entry, std::string_view text) {
    if (!entry->isCut) // then there is no room
        write(entry, entry->text.size(), text);
}

} // namespace

QString timeText(LogTime time) {
    return QDateTime::fromSecsSinceEpoch(time, Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

// Without the zone of this PC: where its clock was put forward, that of the log's PC need not have been.
bool readTime(const QString &text, LogTime *time) {
    const QString whole = text.size() == 10 ? text + QStringLiteral(" 00:00:00") : text;
    const QDate day = QDate::fromString(whole.left(10), QStringLiteral("yyyy-MM-dd"));
    const QTime hour = QTime::fromString(whole.mid(10), QStringLiteral(" HH:mm:ss"));
    if (!day.isValid() || !hour.isValid())
        return false;
    *time = QDateTime(day, hour, Qt::UTC).toSecsSinceEpoch();
    return true;
}

LogReader::LogReader(QIODevice &log)
    : device(log)
    , buffer(bufferSize) {}

// More bytes behind those that are left of a line.
bool LogReader::fill() {
    if (begin > 0)
        std::memmove(buffer.data(), buffer.data() + begin, end - begin);
    end -= begin;
    begin = 0;
    const qint64 count =
        device.read(buffer.data() + end, qint64(std::min(buffer.size() - end, blockSize)));
    if (count < 0)
        readError = device.errorString();
    end += size_t(std::max(count, qint64(0)));
    return count > 0;
}

// Without its line feed. Of a line that is longer than the buffer only its beginning comes.
bool LogReader::nextLine(std::string_view *line) {
    size_t searched = 0; // bytes from `begin` on that hold no line feed
    for (;;) {
        const size_t size = end - begin;
        const char *const start = buffer.data() + begin;
        const void *const feed =
            size == searched ? nullptr : std::memchr(start + searched, '\n', size - searched);
        searched = size;
        if (feed != nullptr) {
            *line = {start, size_t(static_cast<const char *>(feed) - start)};
            begin += line->size() + 1;
            if (!std::exchange(skipsLine, false))
                return true;
            searched = 0;
        } else if (size == buffer.size()) {
            begin = end;
            *line = {start, size};
            if (!std::exchange(skipsLine, true))
                return true;
            searched = 0;
        } else if (!fill()) {
            *line = {buffer.data() + begin, end - begin};
            begin = end;
            return !line->empty() && !std::exchange(skipsLine, false);
        }
    }
}

// Most lines were written on the same day as the one before.
bool LogReader::readTimeOf(std::string_view line, LogTime *time) {
    LogTime clock = 0;
    if (line.size() <= timeLength || !readClock(line.data() + lastDay.size(), &clock))
        return false;
    if (std::memcmp(line.data(), lastDay.data(), lastDay.size()) != 0) {
        if (!readDay(line.data(), &lastDayTime))
            return false;
        std::memcpy(lastDay.data(), line.data(), lastDay.size());
    }
    *time = lastDayTime + clock;
    return true;
}

bool LogReader::readLine(Line *read) {
    *read = {};
    std::string_view line;
    if (!nextLine(&line))
        return false;
    const std::string_view mark = "\xEF\xBB\xBF"; // of an editor that the log was saved with
    if (bytesPassed == 0 && line.substr(0, mark.size()) == mark)
        line.remove_prefix(mark.size());
    bytesPassed += qint64(line.size()) + 1;
    const size_t zeros = std::min(line.find_first_not_of('\0'), line.size());
    line.remove_prefix(zeros);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    read->hasTime = readTimeOf(line, &read->time);
    read->zeros = qint64(zeros);
    read->text = line.substr(read->hasTime ? timeLength + 1 : 0);
    return true;
}

// Lines before the first one with a time belong to no entry.
void LogReader::findFirst() {
    const std::string_view cut = "(the last ";
    while (readLine(&pending) && !pending.hasTime) {
        beginningLacks = beginningLacks || pending.text.substr(0, cut.size()) == cut;
        if (bytesPassed >= qint64(bufferSize))
            return;
    }
}

// Memory that was asked for stays with the entry's text, so that it serves the next one too.
void LogReader::beginEntry(LogEntry *entry) const {
    entry->time = pending.time;
    entry->zeros = pending.zeros;
    entry->isCut = false;
    if (entry->text.capacity() == 0)
        entry->text.reserve(int(std::min(pending.text.size(), size_t(longestText))));
    write(entry, 0, pending.text);
}

// The entry is whole once the next one begins.
bool LogReader::next(LogEntry *entry) {
    if (!isLog())
        findFirst();
    if (!pending.hasTime)
        return false;
    hasTold = true;
    beginEntry(entry);
    while (readLine(&pending) && !pending.hasTime) {
        append(entry, "\n");
        append(entry, pending.text);
    }
    entry->line =
        kindOfMessage({entry->text.constData(), size_t(entry->text.size())}, entry->isCut);
    return true;
}

} // namespace ctl
