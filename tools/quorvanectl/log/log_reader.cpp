#include "quorvanectl/log/log_reader.h"

#include "quorvanectl/log/text_match.h"

#include <QDateTime>
#include <QIODevice>

#include <algorithm>
#include <cstring>
#include <utility>

namespace ctl {
namespace {

constexpr size_t bufferSize = 1048576; // bytes
constexpr size_t timeLength = 19;      // yyyy-MM-dd HH:mm:ss

int number(const char *digits, int count) {
    int value = 0;
    for (int i = 0; i < count; ++i)
        value = value * 10 + (digits[i] - '0');
    return value;
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool hasFormOfTime(std::string_view line) {
    const char *const form = "0000-00-00 00:00:00 ";
    if (line.size() <= timeLength)
        return false;
    for (size_t i = 0; i <= timeLength; ++i) {
        if (form[i] == '0' ? !isDigit(line[i]) : line[i] != form[i])
            return false;
    }
    return true;
}

// Days since 1970 in the calendar that everybody uses. QDate is ten times slower, and there is one for
// each line.
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

bool readWholeTime(std::string_view line, LogTime *time) {
    if (!hasFormOfTime(line))
        return false;
    const char *const at = line.data();
    const int year = number(at, 4);
    const int month = number(at + 5, 2);
    const int day = number(at + 8, 2);
    const int hour = number(at + 11, 2);
    const int minute = number(at + 14, 2);
    const int second = number(at + 17, 2);
    if (month < 1 || month > 12 || day < 1 || day > daysOf(year, month) || hour > 23 ||
        minute > 59 || second > 59)
        return false;
    const qint64 days = daysUntil(year, month, day);
    *time = ((days * 24 + hour) * 60 + minute) * 60 + second;
    return true;
}

void append(LogEntry *entry, std::string_view text) {
    const int room = std::max(0, LogReader::longestText - entry->text.size());
    const int taken = std::min(room, int(text.size()));
    entry->isCut = entry->isCut || size_t(taken) < text.size();
    if (entry->text.isNull())
        entry->text = QByteArray(text.data(), taken); // in one allocation
    else
        entry->text.append(text.data(), taken);
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
    std::memmove(buffer.data(), buffer.data() + begin, end - begin);
    end -= begin;
    begin = 0;
    const qint64 count = device.read(buffer.data() + end, qint64(buffer.size() - end));
    if (count < 0)
        readError = device.errorString();
    end += size_t(std::max(count, qint64(0)));
    return count > 0;
}

// Without its line feed. Of a line that is longer than the buffer only its beginning comes.
bool LogReader::nextLine(std::string_view *line) {
    for (;;) {
        const size_t size = end - begin;
        const char *const start = buffer.data() + begin;
        const void *const feed = size == 0 ? nullptr : std::memchr(start, '\n', size);
        if (feed != nullptr) {
            *line = {start, size_t(static_cast<const char *>(feed) - start)};
            begin += line->size() + 1;
            if (!std::exchange(skipsLine, false))
                return true;
        } else if (size == buffer.size()) {
            begin = end;
            *line = {start, size};
            if (!std::exchange(skipsLine, true))
                return true;
        } else if (!fill()) {
            *line = {buffer.data() + begin, end - begin};
            begin = end;
            return !line->empty() && !std::exchange(skipsLine, false);
        }
    }
}

// Most lines were written in the same minute as the one before.
bool LogReader::readTimeOf(std::string_view line, LogTime *time) {
    constexpr size_t seconds = 17; // where they stand
    if (line.size() > timeLength && line[timeLength] == ' ' &&
        line.compare(0, seconds, {lastMinute.data(), seconds}) == 0 && isDigit(line[seconds]) &&
        line[seconds] < '6' && isDigit(line[seconds + 1])) {
        *time = lastMinuteTime + number(line.data() + seconds, 2);
        return true;
    }
    if (!readWholeTime(line, time))
        return false;
    std::memcpy(lastMinute.data(), line.data(), seconds);
    lastMinuteTime = *time - number(line.data() + seconds, 2);
    return true;
}

// A further line of the text before it.
void LogReader::takeUntimed(std::string_view line) {
    if (!hasPending) {
        const std::string_view cut = "(the last ";
        beginningLacks = beginningLacks || line.substr(0, cut.size()) == cut;
        return;
    }
    append(&pending, "\n");
    append(&pending, line);
}

// The entry is whole once the next one begins.
bool LogReader::next(LogEntry *entry) {
    std::string_view line;
    while (nextLine(&line)) {
        LogEntry read;
        if (!readEntry(line, &read)) {
            if (!isLog() && bytesPassed >= qint64(bufferSize))
                return false;
            continue;
        }
        const bool isWhole = std::exchange(hasPending, true);
        if (isWhole)
            give(entry);
        pending = std::move(read);
        if (isWhole)
            return true;
    }
    if (!std::exchange(hasPending, false))
        return false;
    give(entry);
    return true;
}

bool LogReader::readEntry(std::string_view line, LogEntry *read) {
    const std::string_view mark = "\xEF\xBB\xBF"; // of an editor that the log was saved with
    if (bytesPassed == 0 && line.substr(0, mark.size()) == mark)
        line.remove_prefix(mark.size());
    bytesPassed += qint64(line.size()) + 1;
    const size_t zeros = std::min(line.find_first_not_of('\0'), line.size());
    line.remove_prefix(zeros);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    if (!readTimeOf(line, &read->time)) {
        takeUntimed(line);
        return false;
    }
    read->zeros = qint64(zeros);
    append(read, line.substr(timeLength + 1));
    return true;
}

void LogReader::give(LogEntry *entry) {
    hasTold = true;
    *entry = std::move(pending);
    entry->line =
        kindOfMessage({entry->text.constData(), size_t(entry->text.size())}, entry->isCut);
}

} // namespace ctl
