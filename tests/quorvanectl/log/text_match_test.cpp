// Which row of the tables a text is known by: every row by its own text, and texts that are almost one.
#include "quorvanectl/log/text_match.h"

#include "support/staged_main.h"

#include <QCoreApplication>
#include <QMetaType>

using ctl::KnownLine;
using ctl::KnownTable;
using ctl::KnownText;
using ctl::TableKind;

namespace {

bool isOfMessages(const KnownTable &table) {
    return table.kind == TableKind::LogLines || table.kind == TableKind::LoggedTexts;
}

// A row's text as the log has it: each place holds a word of its own, one before a place a number.
QString written(const char *text, QStringList *filled) {
    QString result = QString::fromUtf8(text);
    const int places = result.count('%');
    for (int place = 1; place <= places; ++place) {
        const QString sign = '%' + QString::number(place);
        const bool isNumber = result.contains(sign + '%');
        filled->append(isNumber ? QString("-7") : QString("字.") + QChar('a' + place));
        result.replace(sign, filled->last());
    }
    return result;
}

const char *textOf(const KnownText &known) {
    return known.line == nullptr ? "(unknown)" : known.line->text;
}

} // namespace

Q_DECLARE_METATYPE(const ctl::KnownLine *)

class TextMatchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyRowByItsOwnText_data();
    void everyRowByItsOwnText();
    void everyMessageIsAReasonUnlessItIsALineOfTheLog();
    void messages_data();
    void messages();
    void cutMessages_data();
    void cutMessages();
    void reasons_data();
    void reasons();
};

void TextMatchTest::everyRowByItsOwnText_data() {
    QTest::addColumn<const KnownLine *>("line");
    QTest::addColumn<bool>("isMessage");
    QTest::addColumn<bool>("isEnglish");
    for (const KnownTable &table : ctl::knownTables()) {
        for (const KnownLine &line : table) {
            if (line.kind == ctl::LineKind::Described)
                continue;
            QTest::newRow(line.text) << &line << isOfMessages(table) << false;
            if (*line.english != '\0')
                QTest::newRow(line.english) << &line << isOfMessages(table) << true;
        }
    }
}

// No row stands before another that its text fits too.
void TextMatchTest::everyRowByItsOwnText() {
    QFETCH(const KnownLine *, line);
    QFETCH(bool, isMessage);
    QFETCH(bool, isEnglish);
    QStringList filled;
    const QString text = written(isEnglish ? line->english : line->text, &filled);
    const KnownText known = isMessage ? ctl::knownMessage(text) : ctl::knownReason(text);
    QCOMPARE(textOf(known), line->text);
    QCOMPARE(known.isEnglish, isEnglish);
    QCOMPARE(known.filled, filled);
    const QByteArray bytes = text.toUtf8();
    const KnownLine *const kind =
        ctl::kindOfMessage({bytes.constData(), size_t(bytes.size())}, false);
    QCOMPARE(kind, isMessage ? line : nullptr);
}

void TextMatchTest::everyMessageIsAReasonUnlessItIsALineOfTheLog() {
    for (const KnownTable &table : ctl::knownTables()) {
        for (const KnownLine &line : table) {
            if (line.kind == ctl::LineKind::Described || !isOfMessages(table))
                continue;
            QStringList filled;
            const QString text = written(line.text, &filled);
            const bool isReason = ctl::knownReason(text).line != nullptr;
            QVERIFY2(isReason == (table.kind == TableKind::LoggedTexts), line.text);
        }
    }
}

void TextMatchTest::messages_data() {
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("filled"); // "-" for a text that is not known
    const auto row = [](const char *message, const char *filled) {
        QTest::newRow(message) << QString::fromUtf8(message) << QString::fromUtf8(filled);
    };
    row("", "-");
    row("x", "-");
    row("[network] Update zip hash failed: x", "x");
    row("[hash] Update zip hash failed: x", "x");
    row("[verify] Update zip hash failed: x", "x");
    row("[cancelled] cancelled", "");
    row("[verify] ", "-");
    row("[other] Update zip hash failed: x", "-");
    row("[hash] [hash] Update zip hash failed: x", "-");
    row("[hash]Update zip hash failed: x", "-");
    row(" cancelled", "-");
    row("cancelled.", "-");
    row("Cancelled", "-");
    row("更新任务已取消。", "");
    row("更新任务已取消。\n", "-");
    row("更新任务已取消。 ", "-");
    row("已跳过项目更新。\nRuntime：x", "");
    row("已验证的更新可用（来源：a）。\n可更新项：b）。c", "a");
    row("已验证的更新可用（来源：a）。b\nc", "-");
    row("Precheck warnings:\na\nb", "a\nb");
    row("Precheck warnings: a", "-");
    row("Target exited with code 0. Log: /l", "0||/l");
    row("Target exited with code -5（进程崩溃）. Log: /l", "-5|（进程崩溃）|/l");
    row("Target exited with code . Log: /l", "||/l");
    row("Target exited with code 0. Log: /a. Log: /b", "0||/a. Log: /b");
    row("Target exited with code 0", "-");
    row("Precheck passed for ", "");
    row("[task ] started kind=", "|");
    row("[task a started kind=check", "-");
    row("Settings are not available: a is held by another program", "-");
    row("项目预检失败：\na\n日志：b\n日志：c", "a|b\n日志：c");
}

void TextMatchTest::messages() {
    QFETCH(QString, message);
    const KnownText known = ctl::knownMessage(message);
    QTEST(known.line == nullptr ? QString("-") : known.filled.join('|'), "filled");
}

// What is there decides; a place that the text does not reach is empty.
void TextMatchTest::cutMessages_data() {
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("filled");
    const auto row = [](const char *message, const char *filled) {
        QTest::newRow(message) << QString::fromUtf8(message) << QString::fromUtf8(filled);
    };
    row("Precheck warnings:\na", "a");
    row("Launching /q/Line", "/q/Line|");
    row("Launching /q/LineRunner.exe --par", "/q/LineRunner.exe|--par");
    row("项目预检失败：\n[Error] a", "[Error] a|");
    row("[hash] Update zip hash failed: x", "x");
    row("已验证的更新可用（来源：a", "a");
    row("Launchi", "-");
    row("更新任务已取", "-");
    row("Runtime 安装包已就绪：/a", "-"); // it begins with a place: anything would fit
}

void TextMatchTest::cutMessages() {
    QFETCH(QString, message);
    const KnownText known = ctl::knownMessage(message, true);
    QTEST(known.line == nullptr ? QString("-") : known.filled.join('|'), "filled");
    const QByteArray bytes = message.toUtf8();
    QCOMPARE(ctl::kindOfMessage({bytes.constData(), size_t(bytes.size())}, true), known.line);
}

void TextMatchTest::reasons_data() {
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("row"); // the row's text
    const auto row = [](const char *reason, const char *text) {
        QTest::newRow(reason) << QString::fromUtf8(reason) << QString::fromUtf8(text);
    };
    row("", "(unknown)");
    row("缺少 tasks 对象", "缺少 tasks 对象");
    row("[Error] 缺少 tasks 对象", "缺少 tasks 对象");
    row("[Warning] tasks: 缺少 tasks 对象", "缺少 tasks 对象");
    row("[Error] a: b: 缺少 tasks 对象", "(unknown)");
    row("[Fatal] 缺少 tasks 对象", "(unknown)");
    row("[Error] ", "(unknown)");
    row("[Error] JSON 无效：a: b", "JSON 无效：%1");
    row("tasks: 缺少 tasks 对象", "(unknown)");
    row("Precheck passed for a", "(unknown)");
    row("SHA256 mismatch for a (expected b, got c", "(unknown)");
    row("a/b.txt: CRC error", "%1: CRC error");
    row("empty response body (HTTP 200) from http://a", "empty response body (HTTP %1) from %2");
    row("empty response body (HTTP 200)", "(unknown)");
}

void TextMatchTest::reasons() {
    QFETCH(QString, reason);
    QTEST(QString::fromUtf8(textOf(ctl::knownReason(reason))), "row");
}

QUORVANE_TEST_MAIN(QCoreApplication, TextMatchTest)
#include "text_match_test.moc"
