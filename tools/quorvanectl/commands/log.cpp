// quorvanectl log: what the launcher did, start by start, out of its log.
#include "frame/app_paths.h"
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/log_printing.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/unpack.h"
#include "quorvanectl/files/work_folder.h"
#include "quorvanectl/log/start_json.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <deque>
#include <limits>

namespace ctl {
namespace {

const QLatin1String lastOption("last");
const QLatin1String sinceOption("since");
const QLatin1String failuresOption("failures");
const QLatin1String linesOption("lines");
const QLatin1String localeOption("locale");
const QLatin1String allStarts("all");

constexpr int toldByDefault = 20; // starts
constexpr int mostLent = 1000;    // starts: memory that serves again is larger than it need be

void declare(QCommandLineParser &parser) {
    parser.addOption(
        {lastOption,
         QStringLiteral(
             "Tells the last ones of the starts, or \"all\" (default: %1, and all of them "
             "with --since).")
             .arg(toldByDefault),
         QStringLiteral("number")});
    parser.addOption(
        {sinceOption,
         QStringLiteral("Tells starts that were not over at this time of the log, such "
                        "as 2026-11-20 or \"2026-11-20 06:00:00\"."),
         QStringLiteral("time")});
    parser.addOption(
        {failuresOption, QStringLiteral("Tells starts alone in which something failed.")});
    parser.addOption(
        {linesOption, QStringLiteral("Tells every line of a start, not those alone that "
                                     "warn or tell a failure.")});
    parser.addOption({localeOption, QStringLiteral("The language of the output: en or zh_CN."),
                      QStringLiteral("language"), QStringLiteral("en")});
    declareFormat(parser, textOrJson());
}

struct Wanted {
    QString path; // as it is told
    qint64 last = std::numeric_limits<qint64>::max();
    std::optional<LogTime> since;
    bool failuresAlone = false;
    bool json = false;
    LogPrinting how;
};

bool readLast(const QCommandLineParser &parser, Wanted *wanted, QString *error) {
    if (!parser.isSet(lastOption)) {
        if (!parser.isSet(sinceOption))
            wanted->last = toldByDefault;
        return true;
    }
    const QString value = parser.value(lastOption);
    bool isNumber = false;
    const qlonglong number = value.toLongLong(&isNumber);
    if (isNumber && number > 0)
        wanted->last = number;
    else if (value != allStarts)
        *error = QStringLiteral("%1: is neither a number above 0 nor \"all\"").arg(value);
    return error->isEmpty();
}

bool readSince(const QCommandLineParser &parser, Wanted *wanted, QString *error) {
    LogTime time = 0;
    const QString value = parser.value(sinceOption);
    if (value.isEmpty())
        return true;
    if (!readTime(value, &time))
        *error = QStringLiteral("%1: is no time such as 2026-11-20 or \"2026-11-20 06:00:00\"")
                     .arg(value);
    wanted->since = time;
    return error->isEmpty();
}

bool readLanguage(const QCommandLineParser &parser, Wanted *wanted, QString *error) {
    const QString locale = parser.value(localeOption);
    if (locale == QLatin1String("zh_CN"))
        wanted->how.language = Language::Chinese;
    else if (locale != QLatin1String("en"))
        *error = QStringLiteral("%1: the languages are en and zh_CN").arg(locale);
    return error->isEmpty();
}

bool readOptions(const QCommandLineParser &parser, Wanted *wanted, QString *error) {
    const QString format = chosenFormat(parser, textOrJson(), error);
    wanted->json = format == QLatin1String("json");
    wanted->failuresAlone = parser.isSet(failuresOption);
    wanted->how.allLines = parser.isSet(linesOption);
    return !format.isEmpty() && readLast(parser, wanted, error) &&
           readSince(parser, wanted, error) && readLanguage(parser, wanted, error);
}

// The log itself, or that of an archive for support, which is unpacked.
bool openLog(const QString &path, const WorkFolder &place, QFile *log, QString *error) {
    QString found = path;
    if (!isUsableFile(path, error, std::numeric_limits<qint64>::max()))
        return false;
    if (path.endsWith(QLatin1String(".zip"), Qt::CaseInsensitive)) {
        QString reason;
        found = place.filePath(QStringLiteral("archive/launcher.log"));
        if (!unpack(path, place.filePath(QStringLiteral("archive")), &reason)) {
            *error = QStringLiteral("%1: %2").arg(path, reason);
            return false;
        }
        if (!isUsableFile(found, &reason, std::numeric_limits<qint64>::max())) {
            *error = QStringLiteral("%1: holds no launcher.log").arg(path);
            return false;
        }
    }
    log->setFileName(found);
    if (log->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return true;
    *error = QStringLiteral("%1: %2").arg(path, log->errorString());
    return false;
}

// Tells starts as they come, or the last ones once all have come.
class Teller {
public:
    Teller(const Console &shownOn, const Wanted &what)
        : console(shownOn)
        , wanted(what) {}

    void take(LogStart *start) {
        ++count.all;
        if ((wanted.since && start->entries.last().time < *wanted.since) ||
            (wanted.failuresAlone && !isFailure(*start)))
            return;
        if (wanted.last == std::numeric_limits<qint64>::max())
            return tellStart(*start);
        kept.push_back(std::move(*start));
        if (qint64(kept.size()) > wanted.last) {
            if (wanted.last <= mostLent)
                *start = std::move(kept.front()); // its memory serves the next one
            kept.pop_front();
        }
    }

    void end(bool lacksBeginning) {
        for (const LogStart &start : kept)
            tellStart(start);
        if (!wanted.json)
            return printCount(console, count, lacksBeginning, wanted.how.language);
        printHead();
        print(console,
              QStringLiteral("\n    ],\n    \"startsFailed\": %1,\n    \"startsInLog\": %2,"
                             "\n    \"startsTold\": %3\n}\n")
                  .arg(QString::number(count.failed), QString::number(count.all),
                       QString::number(count.told)));
    }

    [[nodiscard]] bool toldFailure() const { return count.failed > 0; }

private:
    void tellStart(const LogStart &start) {
        const StartVerdict verdict = judge(start);
        if (!wanted.json) {
            printStart(console, start, verdict, wanted.how);
        } else {
            printHead();
            print(console, count.told == 0 ? QStringLiteral("\n") : QStringLiteral(",\n"));
            const QJsonDocument document(toJson(start, verdict, wanted.how.language));
            print(console, jsonText(document).trimmed());
        }
        ++count.told;
        count.failed += verdict.isFailure ? 1 : 0;
    }

    // One document, however many starts there are: they are printed one by one.
    void printHead() {
        if (!std::exchange(hasHead, true))
            print(console,
                  QStringLiteral("{\n    \"log\": %1,\n    \"starts\": [").arg(jsonPath()));
    }

    [[nodiscard]] QString jsonPath() const {
        const QString list =
            jsonText(QJsonDocument(QJsonArray{wanted.path})).trimmed(); // [ "path" ]
        return list.mid(1, list.size() - 2).trimmed();
    }

    const Console console;
    const Wanted wanted;
    std::deque<LogStart> kept;
    LogCount count;
    bool hasHead = false;
};

// False if it is no log or cannot be read to its end.
bool tellLog(QFile &log, Teller *teller, const QString &path, QString *error) {
    LogReader reader(log);
    StartSplitter splitter([&](LogStart *start) { teller->take(start); });
    LogEntry entry;
    while (reader.next(&entry))
        splitter.add(&entry);
    if (!reader.error().isEmpty())
        *error = QStringLiteral("%1: %2").arg(path, reader.error());
    else if (!reader.isLog() && log.size() > 0)
        *error = QStringLiteral("%1: is no launch log").arg(path);
    if (!error->isEmpty())
        return false;
    splitter.end();
    teller->end(reader.lacksBeginning());
    return true;
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    Wanted wanted;
    const WorkFolder place;
    QFile log;
    if (!readOptions(parser, &wanted, &error))
        return refuse(console, error);
    AppPaths::inspect(AppPaths::applicationDirectory());
    wanted.path = parser.positionalArguments().value(0, AppPaths::launchLogPath());
    if (!openLog(wanted.path, place, &log, &error))
        return refuse(console, error);
    Teller teller(console, wanted);
    if (!whileTelling(console, QStringLiteral("reading %1").arg(wanted.path),
                      [&] { return tellLog(log, &teller, wanted.path, &error); }))
        return refuse(console, error);
    return teller.toldFailure() ? Findings : Clean;
}

} // namespace

Command logCommand() {
    return {QStringLiteral("log"),
            QString(),
            QStringLiteral("[FILE]"),
            QStringLiteral("Tells what the launcher did, start by start, out of its log."),
            QStringLiteral("quorvanectl log --last 3 launcher.log"),
            declare,
            run};
}

} // namespace ctl
