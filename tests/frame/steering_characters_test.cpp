// Which characters are not shown but steer what shows them.
#include "frame/steering_characters.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QSet>

class SteeringCharactersTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyUnitIsEitherShownOrSteers();
    void spelling_data();
    void spelling();
};

// Asked of all there are, so that none is missing and none too many.
void SteeringCharactersTest::everyUnitIsEitherShownOrSteers() {
    QSet<int> steering{0x061C, 0x200E, 0x200F, 0x202A, 0x202B, 0x202C,
                       0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069};
    for (int code = 0; code < 0x20; ++code)
        steering.insert(code);
    for (int code = 0x7F; code < 0xA0; ++code)
        steering.insert(code);
    for (int code = 0; code <= 0xFFFF; ++code)
        QVERIFY2(steersDisplay(QChar(code)) == steering.contains(code),
                 qPrintable(QString::number(code, 16)));
}

void SteeringCharactersTest::spelling_data() {
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("spelled");
    QTest::newRow("a small one is filled up") << 0x1b << "\\u001b";
    QTest::newRow("a large one, in small letters") << 0x202e << "\\u202e";
}

void SteeringCharactersTest::spelling() {
    QFETCH(int, code);
    QTEST(unicodeEscape(QChar(code)), "spelled");
}

QUORVANE_TEST_MAIN(QCoreApplication, SteeringCharactersTest)
#include "steering_characters_test.moc"
