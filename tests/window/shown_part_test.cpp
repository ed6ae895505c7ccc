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
    const QString middle = shownPart('x' + face.repeated(mostShown), Qt::ElideMiddle);
    QVERIFY(!middle.contains(QChar::ReplacementCharacter));
    QCOMPARE(QString::fromUtf8(middle.toUtf8()), middle); // half a character would not come back
}

QUORVANE_TEST_MAIN(QCoreApplication, ShownPartTest)
#include "shown_part_test.moc"
