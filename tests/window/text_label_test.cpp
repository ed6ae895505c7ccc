// The label for text from outside.
#include "support/staged_main.h"
#include "window/shown_part.h"
#include "window/text_label.h"

#include <QAccessible>
#include <QApplication>
#include <QSignalSpy>
#include <QToolTip>

class TextLabelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aLongWordWidensNothing();
    void aWrappedLabelTakesTheHeightOfItsLines_data();
    void aWrappedLabelTakesTheHeightOfItsLines();
    void aLabelOfNoLinesTakesNoHeightAndIsElided();
    void theNumberOfLinesIsLimited();
    void aLabelTooLowForItsTextIsElided();
    void oneLineIsElidedWhereItIsTooLong();
    void oneLineWouldLikeTheWidthOfItsText();
    void theTextIsAlwaysTheWholeText();
    void ofATextBeyondAllMeasureOneLineMeasuresAndPaintsAPart_data();
    void ofATextBeyondAllMeasureOneLineMeasuresAndPaintsAPart();
    void ofATextBeyondAllMeasureAWrappedLabelMeasuresAndPaintsAPart();
    void aTextBeyondAllMeasureIsToldWhole();
    void theToolTipOfAnElidedLabelHoldsAllOfIt();
    void richTextInAToolTipIsShownLetterByLetter();
    void theLastLineIsPainted();
    void aWrappedTextIsPaintedLineByLine();
};

namespace {

int heightOfLines(const TextLabel &label, int lines) {
    QString text = "x";
    for (int i = 1; i < lines; ++i)
        text += "\nx";
    TextLabel sample(nullptr);
    sample.setWordWrap(true);
    sample.setFont(label.font());
    sample.setText(text);
    return sample.heightForWidth(500);
}

bool hasInk(const QImage &image, const QRect &area) {
    const QRgb ground = image.pixel(image.width() - 1, image.height() - 1);
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (image.pixel(x, y) != ground)
                return true;
    return false;
}

} // namespace

void TextLabelTest::aLongWordWidensNothing() {
    TextLabel label(nullptr);
    label.setWordWrap(true);
    const int least = label.minimumSizeHint().width();
    label.setText(QString("w").repeated(300));
    QCOMPARE(label.minimumSizeHint().width(), least);
    QVERIFY(label.sizeHint().width() < 400);
    label.setWordWrap(false);
    QCOMPARE(label.minimumSizeHint().width(), least);
}

void TextLabelTest::aWrappedLabelTakesTheHeightOfItsLines_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("lines");
    QTest::newRow("no text takes no room") << "" << 0;
    QTest::newRow("one word") << "word" << 1;
    QTest::newRow("two paragraphs") << "one\ntwo" << 2;
    QTest::newRow("a line feed at the end is a line") << "one\n" << 2;
    QTest::newRow("empty lines count") << "one\n\ntwo" << 3;
}

void TextLabelTest::aWrappedLabelTakesTheHeightOfItsLines() {
    QFETCH(QString, text);
    QFETCH(int, lines);
    TextLabel label(nullptr);
    label.setWordWrap(true);
    label.setText(text);
    QCOMPARE(label.heightForWidth(500), lines == 0 ? 0 : heightOfLines(label, lines));
    label.setText(QString("word ").repeated(60));
    QVERIFY(label.heightForWidth(200) > label.heightForWidth(600));
}

void TextLabelTest::aLabelOfNoLinesTakesNoHeightAndIsElided() {
    TextLabel label(nullptr);
    for (const bool wrapped : {false, true}) {
        label.setWordWrap(wrapped);
        label.setText("whole for a screen reader");
        label.setMaximumLines(0);
        QCOMPARE(label.minimumSizeHint().height(), 0);
        QCOMPARE(label.sizeHint().height(), 0);
        QVERIFY(label.isElided());
        label.setText(QString());
        QVERIFY(!label.isElided());
    }
}

void TextLabelTest::theNumberOfLinesIsLimited() {
    TextLabel label(nullptr);
    label.setWordWrap(true);
    label.setText(QString("finding\n").repeated(30));
    label.setMaximumLines(4);
    QCOMPARE(label.heightForWidth(500), heightOfLines(label, 4));
    label.resize(500, heightOfLines(label, 4));
    QVERIFY(label.isElided());
}

void TextLabelTest::aLabelTooLowForItsTextIsElided() {
    TextLabel label(nullptr);
    label.setWordWrap(true);
    label.setText("one\ntwo\nthree");
    label.resize(500, heightOfLines(label, 3));
    QVERIFY(!label.isElided());
    label.resize(500, heightOfLines(label, 2));
    QVERIFY(label.isElided());
}

void TextLabelTest::oneLineIsElidedWhereItIsTooLong() {
    TextLabel label(nullptr);
    label.setText("a/short/path");
    label.resize(400, 30);
    QVERIFY(!label.isElided());
    label.setText(QString("a/").repeated(150));
    QVERIFY(label.isElided());
}

void TextLabelTest::oneLineWouldLikeTheWidthOfItsText() {
    TextLabel label(nullptr);
    label.setText("Versions: Launcher 1.0 / Runtime 2.0 / Editor 3.0");
    label.resize(label.sizeHint());
    QVERIFY(!label.isElided());
    label.resize(label.sizeHint() - QSize(20, 0));
    QVERIFY(label.isElided());
    QCOMPARE(label.heightForWidth(20), -1); // whatever its width
}

void TextLabelTest::theTextIsAlwaysTheWholeText() {
    const QString findings = QString("finding <b>x</b>\n").repeated(30);
    TextLabel label(nullptr);
    label.setWordWrap(true);
    label.setMaximumLines(2);
    label.setText(findings);
    QCOMPARE(label.text(), findings);
    QCOMPARE(label.textFormat(), Qt::PlainText);
}

namespace {

// In words, so that a label which lays out all of it takes long but ends.
QString beyondAllMeasure() {
    return "a " + QString("word ").repeated(mostShown);
}

QImage painted(TextLabel &label, const QSize &size) {
    label.resize(size);
    return label.grab().toImage();
}

} // namespace

void TextLabelTest::ofATextBeyondAllMeasureOneLineMeasuresAndPaintsAPart_data() {
    QTest::addColumn<Qt::TextElideMode>("mode");
    QTest::newRow("its beginning") << Qt::ElideRight;
    QTest::newRow("both its ends") << Qt::ElideMiddle;
}

void TextLabelTest::ofATextBeyondAllMeasureOneLineMeasuresAndPaintsAPart() {
    QFETCH(Qt::TextElideMode, mode);
    TextLabel whole(nullptr);
    TextLabel part(nullptr);
    whole.setText(beyondAllMeasure());
    part.setText(shownPart(beyondAllMeasure(), mode));
    for (TextLabel *label : {&whole, &part})
        label->setElideMode(mode);
    QCOMPARE(whole.sizeHint(), part.sizeHint());
    const QSize ample = part.sizeHint() + QSize(500, 0); // where more would be seen
    QCOMPARE(painted(whole, ample), painted(part, ample));
    QVERIFY(!part.isElided());
    QVERIFY(whole.isElided());
}

void TextLabelTest::ofATextBeyondAllMeasureAWrappedLabelMeasuresAndPaintsAPart() {
    TextLabel whole(nullptr);
    TextLabel part(nullptr);
    whole.setText(beyondAllMeasure());
    part.setText(shownPart(beyondAllMeasure()));
    for (TextLabel *label : {&whole, &part})
        label->setWordWrap(true);
    QCOMPARE(whole.heightForWidth(500), part.heightForWidth(500));
    const QSize ample(500, part.heightForWidth(500) + 100);
    QCOMPARE(painted(whole, ample), painted(part, ample));
    QVERIFY(!part.isElided());
    QVERIFY(whole.isElided());
}

void TextLabelTest::aTextBeyondAllMeasureIsToldWhole() {
    TextLabel label(nullptr);
    label.setWordWrap(true);
    label.setText(beyondAllMeasure());
    QCOMPARE(label.text(), beyondAllMeasure());
    QCOMPARE(QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name),
             beyondAllMeasure());
    label.resize(500, 100);
    label.show();
    QHelpEvent ask(QEvent::ToolTip, QPoint(5, 5), label.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&label, &ask);
    QCOMPARE(QToolTip::text(), shownPart(beyondAllMeasure())); // it is laid out too
    QToolTip::hideText();
}

void TextLabelTest::theToolTipOfAnElidedLabelHoldsAllOfIt() {
    TextLabel label(nullptr);
    label.resize(60, 30);
    label.setText("a text that finds no room in sixty pixels");
    label.show();
    QHelpEvent ask(QEvent::ToolTip, QPoint(5, 5), label.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&label, &ask);
    QCOMPARE(QToolTip::text(), label.text());
    label.setText("x");
    QApplication::sendEvent(&label, &ask);
    QTRY_VERIFY(!QToolTip::isVisible() || QToolTip::text() != label.text());
    label.setText("another text that finds no room in sixty pixels");
    label.setToolTip("a tip of its own");
    QApplication::sendEvent(&label, &ask);
    QCOMPARE(QToolTip::text(), QString("a tip of its own"));
    QToolTip::hideText();
}

void TextLabelTest::richTextInAToolTipIsShownLetterByLetter() {
    QCOMPARE(plainToolTip("C:/plain/path"), QString("C:/plain/path"));
    const QString tip = plainToolTip("<b>bold</b>");
    QVERIFY(!tip.contains("<b>"));
    QVERIFY(tip.contains("&lt;b&gt;bold&lt;/b&gt;"));
}

void TextLabelTest::theLastLineIsPainted() {
    TextLabel label(nullptr);
    label.setWordWrap(true);
    label.setText("wwww\nwwww\nwwww");
    label.resize(300, label.heightForWidth(300));
    const QImage image = label.grab().toImage();
    const int line = label.height() / 3;
    for (int i = 0; i < 3; ++i)
        QVERIFY2(hasInk(image, QRect(0, i * line, 60, line)), qPrintable(QString::number(i)));
    QVERIFY(!hasInk(image, QRect(200, 0, 100, label.height())));
}

void TextLabelTest::aWrappedTextIsPaintedLineByLine() {
    TextLabel wrapped(nullptr);
    TextLabel broken(nullptr);
    wrapped.setText("first second third");
    broken.setText("first\nsecond\nthird");
    for (TextLabel *label : {&wrapped, &broken})
        label->setWordWrap(true);
    const int width = wrapped.fontMetrics().horizontalAdvance("second ");
    const QSize size(width, heightOfLines(wrapped, 3));
    QCOMPARE(wrapped.heightForWidth(width), size.height());
    QCOMPARE(painted(wrapped, size), painted(broken, size));
}

QUORVANE_TEST_MAIN(QApplication, TextLabelTest)
#include "text_label_test.moc"
