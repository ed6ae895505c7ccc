#include "quorvanectl/log/start_json.h"

#include <QJsonArray>

namespace ctl {
namespace {

// By the enumerators, in their order.
const char *const levelNames[] = {"note", "warning", "failure"};
const char *const endingNames[] = {"exited",        "running",          "never-ended",
                                   "cannot-run",    "not-started",      "update-broken-off",
                                   "update-failed", "update-cancelled", "search-broken-off",
                                   "closed"};
const char *const answerNames[] = {"none",    "updated",      "installers",
                                   "skipped", "started-only", "unknown"};
const char *const partNames[] = {"search", "update", "setup", "target"};
const char *const gapNames[] = {"silence", "silence-before", "clock-back", "zeros", "left-out"};

QJsonObject toJson(const Advice &advice) {
    return {{QStringLiteral("text"), advice.told},
            {QStringLiteral("cause"), advice.cause},
            {QStringLiteral("remedy"), advice.remedy}};
}

QJsonObject toJson(const LogEntry &entry, Language language) {
    const LineAdvice advice = adviceOn(entry, language);
    QJsonArray reasons;
    for (const Advice &reason : advice.reasons)
        reasons.append(toJson(reason));
    QJsonObject object = toJson(advice.line);
    object.insert(QStringLiteral("time"), timeText(entry.time));
    object.insert(QStringLiteral("known"), advice.isKnown);
    object.insert(QStringLiteral("level"), QLatin1String(levelNames[int(levelOf(entry))]));
    object.insert(QStringLiteral("reasons"), reasons);
    return object;
}

QJsonObject toJson(const StartPart &part) {
    return {{QStringLiteral("part"), QLatin1String(partNames[part.kind])},
            {QStringLiteral("begin"), timeText(part.begin)},
            {QStringLiteral("seconds"),
             part.end ? QJsonValue(*part.end - part.begin) : QJsonValue(QJsonValue::Null)}};
}

QJsonObject toJson(const LogGap &gap) {
    return {{QStringLiteral("kind"), QLatin1String(gapNames[gap.kind])},
            {QStringLiteral("from"), timeText(gap.from)},
            {QStringLiteral("to"), timeText(gap.to)},
            {QStringLiteral("count"), gap.count}};
}

template<typename Items>
QJsonArray listOf(const Items &items) {
    QJsonArray list;
    for (const auto &item : items)
        list.append(toJson(item));
    return list;
}

} // namespace

QJsonObject toJson(const LogStart &start, const StartVerdict &verdict, Language language) {
    QJsonArray lines;
    for (const LogEntry &entry : start.entries)
        lines.append(toJson(entry, language));
    return {{QStringLiteral("begin"), timeText(verdict.begin)},
            {QStringLiteral("end"), timeText(verdict.end)},
            {QStringLiteral("project"), verdict.project},
            {QStringLiteral("installed"), verdict.installed},
            {QStringLiteral("onOffer"), verdict.onOffer},
            {QStringLiteral("source"), verdict.source},
            {QStringLiteral("offered"), QJsonArray::fromStringList(verdict.offered)},
            {QStringLiteral("installers"), QJsonArray::fromStringList(verdict.installers)},
            {QStringLiteral("answer"), QLatin1String(answerNames[int(verdict.answer)])},
            {QStringLiteral("parts"), listOf(verdict.parts)},
            {QStringLiteral("gaps"), listOf(verdict.gaps)},
            {QStringLiteral("ending"), QLatin1String(endingNames[int(verdict.ending)])},
            {QStringLiteral("exitCode"), verdict.exitCode},
            {QStringLiteral("crashed"), verdict.crashed},
            {QStringLiteral("failed"), verdict.isFailure},
            {QStringLiteral("lines"), lines}};
}

} // namespace ctl
