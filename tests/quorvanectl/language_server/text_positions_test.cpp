// Places as an editor counts them, from and to those of the script language.
#include "quorvanectl/language_server/text_positions.h"

#include "support/staged_main.h"

#include <QCoreApplication>

using ctl::ColumnUnit;
using ctl::TextPositions;

namespace {

QString placeText(const QJsonObject &position) {
    return QString("%1:%2").arg(QString::number(position.value("line").toInt(-1)),
                                QString::number(position.value("character").toInt(-1)));
}

QJsonObject position(const QJsonValue &line, const QJsonValue &character) {
    return {{"line", line}, {"character", character}};
}

} // namespace

class TextPositionsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void places_data();
    void places();
    void anIndexOutsideOfTheText();
    void anIndexWithinALinesEnd();
    void linesAndColumns();
    void placesBehindTheirLine_data();
    void placesBehindTheirLine();
    void ranges_data();
    void ranges();
    void placesOfTheLanguage_data();
    void placesOfTheLanguage();
};

// Of a pair the second half has no place of its own in UTF-8.
void TextPositionsTest::places_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("utf16");
    QTest::addColumn<QString>("utf8");
    QTest::newRow("the start") << "" << 0 << "0:0"
                               << "0:0";
    QTest::newRow("ASCII") << "abc\nde" << 5 << "1:1"
                           << "1:1";
    QTest::newRow("the end of a line") << "abc\nde" << 3 << "0:3"
                                       << "0:3";
    QTest::newRow("the end") << "abc\nde" << 6 << "1:2"
                             << "1:2";
    QTest::newRow("the end behind a line feed") << "abc\n"
                                                << 4 << "1:0"
                                                << "1:0";
    QTest::newRow("behind a letter of two bytes") << QString("é=") << 1 << "0:1"
                                                  << "0:2";
    QTest::newRow("behind a sign of three bytes") << QString("高=") << 1 << "0:1"
                                                  << "0:3";
    QTest::newRow("behind a pair") << QString("\U0001F600=") << 2 << "0:2"
                                   << "0:4";
    QTest::newRow("behind half a pair") << QString(QChar(0xd83d)) + "=" << 1 << "0:1"
                                        << "0:3";
    QTest::newRow("behind half a pair at the end") << QString(QChar(0xd83d)) << 1 << "0:1"
                                                   << "0:3";
    QTest::newRow("behind a return with a feed") << "a\r\nb" << 3 << "1:0"
                                                 << "1:0";
    QTest::newRow("behind a return alone") << "a\rb\r" << 3 << "1:1"
                                           << "1:1";
    QTest::newRow("behind two returns") << "\r\r\n\n"
                                        << 4 << "3:0"
                                        << "3:0";
}

void TextPositionsTest::places() {
    QFETCH(QString, text);
    QFETCH(int, index);
    for (const ColumnUnit unit : {ColumnUnit::Utf16, ColumnUnit::Utf8}) {
        const TextPositions positions(text, unit);
        const QJsonObject at = positions.positionOf(index);
        QTEST(placeText(at), unit == ColumnUnit::Utf16 ? "utf16" : "utf8");
        QCOMPARE(positions.indexAt(at.value("line").toInt(), at.value("character").toInt()), index);
    }
}

// A file may have changed since its places were found.
void TextPositionsTest::anIndexOutsideOfTheText() {
    for (const ColumnUnit unit : {ColumnUnit::Utf16, ColumnUnit::Utf8}) {
        const TextPositions positions("ab\nc", unit);
        QCOMPARE(placeText(positions.positionOf(9)), QString("1:1"));
        QCOMPARE(placeText(positions.positionOf(-1)), QString("0:0"));
    }
}

// What was typed may have ended there before a feed came behind it; the protocol has no such place.
void TextPositionsTest::anIndexWithinALinesEnd() {
    for (const ColumnUnit unit : {ColumnUnit::Utf16, ColumnUnit::Utf8}) {
        const TextPositions positions("ab\r\nc", unit);
        QCOMPARE(placeText(positions.positionOf(2)), QString("0:2"));
        QCOMPARE(placeText(positions.positionOf(3)), QString("0:2"));
        QCOMPARE(placeText(positions.positionOf(4)), QString("1:0"));
    }
}

void TextPositionsTest::linesAndColumns() {
    const QString text = "a\r\n高b\rc";
    const TextPositions positions(text, ColumnUnit::Utf8);
    QCOMPARE(positions.lineAt(2), 0);
    QCOMPARE(positions.lineAt(3), 1);
    QCOMPARE(positions.lineAt(text.size()), 2);
    QCOMPARE(positions.rangeOfLine(0).to, 1);
    QCOMPARE(positions.rangeOfLine(1).from, 3);
    QCOMPARE(positions.rangeOfLine(1).to, 5);
    QCOMPARE(positions.rangeOfLine(2).to, 7);
    QCOMPARE(positions.columns(3, 5), 4);
    QCOMPARE(TextPositions(text, ColumnUnit::Utf16).columns(3, 5), 2);
}

void TextPositionsTest::placesBehindTheirLine_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("index");
    const int most = std::numeric_limits<int>::max();
    QTest::newRow("behind a line") << "ab\ncd" << 0 << 9 << 2;
    QTest::newRow("far behind a line") << "ab\ncd" << 1 << most << 5;
    QTest::newRow("behind a line with a return") << "ab\r\ncd" << 0 << 3 << 2;
    QTest::newRow("behind the text") << "ab\ncd" << 2 << 0 << 5;
    QTest::newRow("far behind the text") << "ab\n" << most << 7 << 3;
}

void TextPositionsTest::placesBehindTheirLine() {
    QFETCH(QString, text);
    QFETCH(int, line);
    QFETCH(int, column);
    QFETCH(int, index);
    QCOMPARE(TextPositions(text, ColumnUnit::Utf16).indexAt(line, column), index);
    QCOMPARE(TextPositions(text, ColumnUnit::Utf8).indexAt(line, column), index);
}

void TextPositionsTest::ranges_data() {
    QTest::addColumn<QJsonValue>("range");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QJsonValue &start, const QJsonValue &end,
                        const QString &expected) {
        QTest::newRow(name) << QJsonValue(QJsonObject{{"start", start}, {"end", end}}) << expected;
    };
    row("a stretch", position(0, 1), position(1, 1), "1-4");
    row("a place", position(1, 0), position(1, 0), "3-3");
    row("an end before its start", position(1, 1), position(0, 2), "none");
    row("an end before its start, on a line", position(0, 2), position(0, 1), "none");
    row("both behind the text", position(7, 0), position(8, 0), "5-5");
    row("a line that is no number", position("0", 0), position(1, 1), "none");
    row("a negative column", position(0, -1), position(1, 1), "none");
    row("half a line", position(0.5, 0), position(1, 1), "none");
    row("no end", position(0, 0), QJsonValue(), "none");
    QTest::newRow("no object") << QJsonValue("0:1") << "none";
}

void TextPositionsTest::ranges() {
    QFETCH(QJsonValue, range);
    const auto at = TextPositions("ab\ncd", ColumnUnit::Utf16).indexRange(range);
    const QString found = at ? QString("%1-%2").arg(at->from).arg(at->to) : QString("none");
    QTEST(found, "expected");
}

// The language ends a line at a line feed alone; places outside of the text are drawn into it.
void TextPositionsTest::placesOfTheLanguage_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the first") << "ab\ncd" << 1 << 1 << "0:0";
    QTest::newRow("on a later line") << "ab\ncd" << 2 << 2 << "1:1";
    QTest::newRow("behind a return alone") << "a\rb\ncd" << 1 << 3 << "1:0";
    QTest::newRow("on a line behind one") << "a\rb\ncd" << 2 << 1 << "2:0";
    QTest::newRow("behind its line") << "ab\ncd" << 1 << 9 << "0:2";
    QTest::newRow("behind the text") << "ab\ncd" << 3 << 1 << "1:2";
    QTest::newRow("no place") << "ab\ncd" << 0 << 0 << "0:0";
}

void TextPositionsTest::placesOfTheLanguage() {
    QFETCH(QString, text);
    QFETCH(int, line);
    QFETCH(int, column);
    const QJsonObject range =
        TextPositions(text, ColumnUnit::Utf16).rangeOf({{1, 1}, {line, column}});
    QCOMPARE(placeText(range.value("start").toObject()), QString("0:0"));
    QTEST(placeText(range.value("end").toObject()), "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, TextPositionsTest)

#include "text_positions_test.moc"
