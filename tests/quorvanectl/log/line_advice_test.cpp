// What is said of a line: in either language, with what was filled in, and with the reasons in it.
#include "quorvanectl/log/line_advice.h"

#include "quorvanectl/log/start_text.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using ctl::Advice;
using ctl::Language;
using ctl::LineAdvice;

namespace {

LineAdvice adviceOn(const QString &text, Language language = Language::English,
                    bool isCut = false) {
    ctl::LogEntry entry;
    entry.text = text.toUtf8();
    entry.isCut = isCut;
    return ctl::adviceOn(entry, language);
}

QStringList toldReasons(const LineAdvice &advice) {
    QStringList told;
    for (const Advice &reason : advice.reasons)
        told.append(reason.told);
    return told;
}

const QString offline = "Online updates are not available (%1). You can update from a USB stick "
                        "instead: QuorvanerUpdate/manifest.json.";

} // namespace

class LineAdviceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fillingIn_data();
    void fillingIn();
    void theLanguageAskedFor_data();
    void theLanguageAskedFor();
    void whatAnAdviceRepeats_data();
    void whatAnAdviceRepeats();
    void anUnknownLineStandsAsItIs();
    void aCutLineStandsAsItIs();
    void linesAndTextsHaveTheirOwnLabels();
    void reasonsOfSeveralDepths();
    void atMostTwentyReasons();
};

void LineAdviceTest::fillingIn_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("filled");
    QTest::addColumn<QString>("result");
    const auto row = [](const char *name, const QString &text, const QStringList &filled,
                        const QString &result) { QTest::newRow(name) << text << filled << result; };
    row("in another order", "%2 of %1", {"a", "b"}, "b of a");
    row("twice", "%1 %1", {"a"}, "a a");
    row("a place in what is filled in", "%1 %2", {"%2", "b"}, "%2 b");
    row("too little", "%1 %2", {"a"}, "a %2");
    row("null stays, empty goes", "%1%2", {QString(), ""}, "%1");
    row("a sign alone", "100 % of %1 %", {"a"}, "100 % of a %");
    row("a zero", "%0 %1", {"a"}, "%0 a");
    row("nothing to fill in", "", {"a"}, "");
}

void LineAdviceTest::fillingIn() {
    QFETCH(QString, text);
    QFETCH(QStringList, filled);
    QTEST(ctl::filledIn(text, filled), "result");
}

void LineAdviceTest::theLanguageAskedFor_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("chinese");
    const auto row = [](const char *name, const QString &text, const QString &english,
                        const QString &chinese) {
        QTest::newRow(name) << text << english << chinese;
    };
    row("Chinese in both", "已读取在线 manifest：http://a/100%1",
        "Read the update list from the server: http://a/100%1",
        "已读取在线 manifest：http://a/100%1");
    row("English in both", "Read the update list from the server: b",
        "Read the update list from the server: b", "已读取在线 manifest：b");
    row("a text in one language", "Precheck passed for a", "Precheck passed for a",
        "Precheck passed for a");
    row("an offer, whose further lines stay", "已验证的更新可用（来源：a）。\n可更新项：b\n c",
        "A genuine update is available (from a).\n可更新项：b\n c",
        "已验证的更新可用（来源：a）。\n可更新项：b\n c");
    row("an update's end", "The project was left as it is.\nRuntime: x",
        "The project was left as it is.\nRuntime: x", "已跳过项目更新。\nRuntime: x");
    row("one whose lines are all its own", "项目预检失败：\na\n日志：b",
        "The project has errors and cannot run. Choose another, or give this text to its "
        "engineer:\na\nLog: b",
        "项目预检失败：\na\n日志：b");
    row("an order of its own", "更新被拒绝：a（source=b）。将继续使用当前版本。",
        "The update was refused: a (from b). Do not use it; what is installed stays in use.",
        "更新被拒绝：a（source=b）。将继续使用当前版本。");
}

void LineAdviceTest::theLanguageAskedFor() {
    QFETCH(QString, text);
    QTEST(adviceOn(text, Language::English).line.told, "english");
    QTEST(adviceOn(text, Language::Chinese).line.told, "chinese");
}

// Long ones, ones of several lines and empty ones are told by the line itself.
void LineAdviceTest::whatAnAdviceRepeats_data() {
    QTest::addColumn<QString>("filled");
    QTest::addColumn<QString>("remedy");
    const QString behind = "` is one of the texts under \"The network\" below.";
    const auto row = [&](const char *name, const QString &filled, const QString &repeated) {
        QTest::newRow(name) << filled << '`' + repeated + behind;
    };
    row("a short one", "x", "x");
    row("the longest", QString(120, 'x'), QString(120, 'x'));
    row("one that is too long", QString(121, 'x'), "%1");
    row("several lines", "x\ny", "%1");
    row("an empty one", "", "%1");
}

void LineAdviceTest::whatAnAdviceRepeats() {
    QFETCH(QString, filled);
    const LineAdvice advice = adviceOn(QString(offline).replace("%1", filled));
    QVERIFY(advice.isKnown);
    QTEST(advice.line.remedy, "remedy");
    QCOMPARE(advice.line.cause, QString("The server did not answer as it should."));
}

void LineAdviceTest::anUnknownLineStandsAsItIs() {
    const LineAdvice advice = adviceOn("SHA256 verified\nmore");
    QVERIFY(!advice.isKnown);
    QCOMPARE(advice.line.told, QString("SHA256 verified\nmore"));
    QCOMPARE(advice.line.cause + advice.line.remedy, QString());
    QCOMPARE(advice.reasons.size(), 0);
}

// Its row would show an end that the log does not have.
void LineAdviceTest::aCutLineStandsAsItIs() {
    const QString text = "更新被拒绝：signature is em";
    const LineAdvice advice = adviceOn(text, Language::English, true);
    QCOMPARE(advice.line.told, text);
    QCOMPARE(advice.line.cause, QString("A manifest failed its verification."));
    QVERIFY(!adviceOn(text).isKnown);
}

void LineAdviceTest::linesAndTextsHaveTheirOwnLabels() {
    const auto labels = [](const QString &text, Language language) {
        const LineAdvice advice = adviceOn(text, language);
        QStringList told;
        for (const ctl::Labelled &line : ctl::linesOf(advice.line, advice.isLogLine, language))
            told.append(line.label + ": " + line.text);
        return told;
    };
    QCOMPARE(labels("更新任务已取消。", Language::English),
             (QStringList{"When: A project update was cancelled.",
                          "Tells: If the swap had begun, the new project is in place all the "
                          "same."}));
    QCOMPARE(
        labels("更新任务已取消。", Language::Chinese),
        (QStringList{"何时: 项目更新被取消。", "说明: 如果替换已经开始，新项目仍会替换到位。"}));
    QCOMPARE(labels("[hash] zipUrl is empty", Language::English),
             (QStringList{"Cause: The record names no package.", "Remedy: Tell the publisher."}));
    QCOMPARE(labels("[hash] zipUrl is empty", Language::Chinese),
             (QStringList{"原因: 清单没有写出更新包。", "处理: 告知发布方。"}));
    QCOMPARE(labels("x", Language::English), QStringList());
}

// The outermost first; what stands between known texts is passed over.
void LineAdviceTest::reasonsOfSeveralDepths() {
    const LineAdvice advice =
        adviceOn("[network] Unable to resolve update zip: SHA256 mismatch for network request "
                 "timed out (expected signature is empty, got x)");
    QCOMPARE(toldReasons(advice),
             (QStringList{"SHA256 mismatch for network request timed out (expected signature is "
                          "empty, got x)",
                          "network request timed out", "signature is empty"}));
    QCOMPARE(toldReasons(adviceOn("Apply validator failed:\n[Error] a: 缺少 tasks 对象\nx\n"
                                  "[Warning] b.ys: 检测到 import 循环依赖")),
             (QStringList{"[Error] a: 缺少 tasks 对象", "[Warning] b.ys: 检测到 import 循环依赖"}));
}

void LineAdviceTest::atMostTwentyReasons() {
    const auto warnings = [](int count) {
        return "Precheck warnings:" + QString("\n[Warning] 缺少 path").repeated(count);
    };
    QCOMPARE(adviceOn(warnings(20)).reasons.size(), 20);
    QCOMPARE(adviceOn(warnings(21)).reasons.size(), 20);
    QCOMPARE(adviceOn(warnings(21)).line.told, warnings(21));
}

QUORVANE_TEST_MAIN(QCoreApplication, LineAdviceTest)
#include "line_advice_test.moc"
