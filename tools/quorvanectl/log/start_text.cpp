#include "quorvanectl/log/start_text.h"

namespace ctl {
namespace {

struct Words {
    const char *english;
    const char *chinese;
};

QString said(Language language, const Words &words) {
    return inLanguage(language, words.english, words.chinese);
}

// By the enumerators, in their order.
const Words endingTexts[] = {
    {"the line ended", "产线程序已结束"},
    {"the line was started; the log tells no end, so it is running or was cut off",
     "产线程序已启动；日志中没有它的结束，它正在运行或被突然中断"},
    {"the line was started and its end was never logged: the power failed, or the launcher was "
     "ended by force",
     "产线程序已启动，但日志中没有它的结束：断电，或者启动器被强制结束"},
    {"the project cannot run", "项目无法运行"},
    {"the line could not be started", "产线程序无法启动"},
    {"in the middle of an update: it was broken off, or is still running. Look at the project with "
     "quorvanectl project recover",
     "更新进行到一半：被中断，或者仍在进行。请用 quorvanectl project recover 检查项目"},
    {"the update failed, and the line was not started", "更新失败，产线程序没有启动"},
    {"the update was cancelled, and the line was not started", "更新已取消，产线程序没有启动"},
    {"while updates were looked for; the line was not started",
     "在查找更新时结束，产线程序没有启动"},
    {"before the line was started", "在启动产线程序之前结束"},
};

const Words answerTexts[] = {
    {"", ""},
    {"updated", "已更新"},
    {"installers alone", "只运行安装程序"},
    {"this version is skipped", "跳过此版本"},
    {"the line was started without it", "未更新，直接启动"},
    {"no answer in the log", "日志中没有回答"},
};

const Words partTexts[] = {
    {"search", "查找更新"}, {"update", "更新"}, {"installers", "安装程序"}, {"line", "产线程序"}};

const Words gapTexts[] = {
    {"nothing was logged from %1 to %2 (%3)", "从 %1 到 %2 没有任何记录（%3）"},
    {"nothing was logged before it since %1 (%3)", "此前自 %1 起没有任何记录（%3）"},
    {"the clock went back from %1 to %2 (%3)", "时钟从 %1 倒退到 %2（%3）"},
    {"%4 zero bytes before %1: the power failed while the log was written",
     "%1 之前有 %4 个零字节：写入日志时断电"},
    {"%4 lines between %1 and %2 are left out here", "此处省略了 %1 与 %2 之间的 %4 行"},
};

QString length(LogTime seconds, Language language) {
    const auto amount = [&](LogTime count, const Words &unit) {
        return QStringLiteral("%1 %2").arg(QString::number(count), said(language, unit));
    };
    const Words days{"d", "天"};
    const Words hours{"h", "小时"};
    const Words minutes{"min", "分"};
    const Words units{"s", "秒"};
    const QLatin1Char blank(' ');
    if (seconds >= 86400)
        return amount(seconds / 86400, days) + blank + amount(seconds % 86400 / 3600, hours);
    if (seconds >= 3600)
        return amount(seconds / 3600, hours) + blank + amount(seconds % 3600 / 60, minutes);
    if (seconds >= 60)
        return amount(seconds / 60, minutes) + blank + amount(seconds % 60, units);
    return amount(seconds, units);
}

QString gapText(const LogGap &gap, Language language) {
    const LogTime between = gap.to < gap.from ? gap.from - gap.to : gap.to - gap.from;
    return filledIn(said(language, gapTexts[gap.kind]),
                    {timeText(gap.from), timeText(gap.to), length(between, language),
                     QString::number(gap.count)});
}

QString partsText(const StartVerdict &verdict, Language language) {
    QStringList told;
    for (const StartPart &part : verdict.parts)
        told.append(QStringLiteral("%1 %2").arg(
            said(language, partTexts[part.kind]),
            part.end ? length(*part.end - part.begin, language)
                     : inLanguage(language, "without an end", "没有结束")));
    return told.join(QStringLiteral(", "));
}

QString versionsText(const StartVerdict &verdict, Language language) {
    if (verdict.installed.isEmpty())
        return verdict.onOffer;
    return inLanguage(language, "project %1, on offer %2", "项目 %1，可用 %2")
        .arg(verdict.installed, verdict.onOffer);
}

QString offerText(const StartVerdict &verdict, Language language) {
    if (verdict.offered.isEmpty())
        return {};
    return inLanguage(language, "%1 (from %2)", "%1（来源：%2）")
        .arg(verdict.offered.join(QStringLiteral(", ")), verdict.source);
}

QString endingText(const StartVerdict &verdict, Language language) {
    QString text = said(language, endingTexts[int(verdict.ending)]);
    if (verdict.ending != Ending::Exited)
        return text;
    text += inLanguage(language, ", code %1", "，代码 %1").arg(verdict.exitCode);
    return verdict.crashed ? text + inLanguage(language, ": it crashed", "：进程崩溃") : text;
}

} // namespace

QString inLanguage(Language language, const char *english, const char *chinese) {
    return QString::fromUtf8(language == Language::English ? english : chinese);
}

QVector<Labelled> linesOf(const StartVerdict &verdict, Language language) {
    QVector<Labelled> lines;
    const auto add = [&](const char *english, const char *chinese, const QString &text) {
        if (!text.isEmpty())
            lines.append({inLanguage(language, english, chinese), text});
    };
    add("Project", "项目", verdict.project);
    add("Versions", "版本", versionsText(verdict, language));
    add("Offered", "可更新", offerText(verdict, language));
    add("Answered", "回答", said(language, answerTexts[int(verdict.answer)]));
    add("Installers", "安装程序", verdict.installers.join(QStringLiteral(", ")));
    add("Took", "用时", partsText(verdict, language));
    for (const LogGap &gap : verdict.gaps)
        add("Gap", "空缺", gapText(gap, language));
    add("Ended", "结束", endingText(verdict, language));
    return lines;
}

QVector<Labelled> linesOf(const Advice &advice, bool isLogLine, Language language) {
    QVector<Labelled> lines;
    if (!advice.cause.isEmpty())
        lines.append({isLogLine ? inLanguage(language, "When", "何时")
                                : inLanguage(language, "Cause", "原因"),
                      advice.cause});
    if (!advice.remedy.isEmpty())
        lines.append({isLogLine ? inLanguage(language, "Tells", "说明")
                                : inLanguage(language, "Remedy", "处理"),
                      advice.remedy});
    return lines;
}

} // namespace ctl
