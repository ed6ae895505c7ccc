// How much of a text is handed to a layout.
#include "support/staged_main.h"
#include "window/shown_part.h"

#include <QCoreApplication>

class ShownPartTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aTextOfUsualLengthStays_data();
    void aTextOfUsualLengthStays();
    void whatIsBeyondGivesWayToAnEllipsis();
    void theMiddleGivesWayWhereBothEndsCount();
    void noCharacterIsSplit_data();
    void noCharacterIsSplit();
    void aPaneTakesAParagraphInParts_data();
    void aPaneTakesAParagraphInParts();
};

namespace {

const QString face = QString::fromUtf8("\xF0\x9F\x98\x80"); // two units

} // namespace

void ShownPartTest::aTextOfUsualLengthStays_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("no text") << "";
    QTest::newRow("a word") << "word";
    QTest::newRow("as long as can be") << QString(mostShown, 'x');
}

void ShownPartTest::aTextOfUsualLengthStays() {
    QFETCH(QString, text);
    QCOMPARE(shownPart(text), text);
    QCOMPARE(shownPart(text, Qt::ElideMiddle), text);
}

void ShownPartTest::whatIsBeyondGivesWayToAnEllipsis() {
    QCOMPARE(shownPart(QString(mostShown, 'x') + 'y'), QString(mostShown, 'x') + ellipsis);
    QCOMPARE(shownPart(QString(300000, 'x')).size(), mostShown + 1);
}

void ShownPartTest::theMiddleGivesWayWhereBothEndsCount() {
    const QString half(mostShown / 2, 'x');
    QCOMPARE(shownPart(half + QString(300000, 'y') + half, Qt::ElideMiddle),
             half + ellipsis + half);
}

void ShownPartTest::noCharacterIsSplit_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("part");
    const QString almost(mostShown - 1, 'x');
    QTest::newRow("at the end") << almost + face + face << QString(almost + ellipsis);
    QTest::newRow("not yet at the end") << almost + 'x' + face << almost + 'x' + ellipsis;
}

void ShownPartTest::noCharacterIsSplit() {
    QFETCH(QString, text);
    QTEST(shownPart(text), "part");
    const QString faces = face.repeated(mostShown);
    for (const QString &cut : {'x' + faces, faces + 'x'}) { // in front of the middle, and behind it
        const QString middle = shownPart(cut, Qt::ElideMiddle);
        QVERIFY(!middle.contains(QChar::ReplacementCharacter));
        QCOMPARE(QString::fromUtf8(middle.toUtf8()),
                 middle); // half a character would not come back
        QCOMPARE(middle.size(), mostShown);
    }
}

void ShownPartTest::aPaneTakesAParagraphInParts_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("parts");
    const QString full(mostShown, 'x');
    const QString almost(mostShown - 1, 'x');
    QTest::newRow("no text") << ""
                             << "";
    QTest::newRow("short lines") << "one\ntwo\n"
                                 << "one\ntwo\n";
    QTest::newRow("as long as can be") << full << full;
    QTest::newRow("and its line ends there") << full + "\ny" << full + "\ny";
    QTest::newRow("one character more") << full + "y" << full + "\ny";
    QTest::newRow("three parts") << full + full + "y" << full + '\n' + full + "\ny";
    QTest::newRow("counted anew in each line") << almost + '\n' + almost << almost + '\n' + almost;
    QTest::newRow("no half character") << almost + face << QString(almost + '\n' + face);
    QTest::newRow("a character that just fits")
        << full.mid(2) + face + 'y' << QString(full.mid(2) + face + "\ny");
}

void ShownPartTest::aPaneTakesAParagraphInParts() {
    QFETCH(QString, text);
    QTEST(inShownParts(text), "parts");
}

QUORVANE_TEST_MAIN(QCoreApplication, ShownPartTest)
#include "shown_part_test.moc"
