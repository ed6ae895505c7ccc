// The names of what an apply leaves: a prefix and a time, and nothing that only looks like it.
#include "launcher/offer/apply_places.h"

#include "support/staged_main.h"

class ApplyPlacesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void namesEndInATime_data();
    void namesEndInATime();
    void aStampOfNowIsRead();
    void backupsBearTheFoldersName();
};

void ApplyPlacesTest::namesEndInATime_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("stamped");
    QTest::newRow("prefix and time") << "apply_20261122_020304" << true;
    QTest::newRow("no time") << "apply_" << false;
    QTest::newRow("no such day") << "apply_20261322_020304" << false;
    QTest::newRow("something behind it") << "apply_20261122_020304_2" << false;
    QTest::newRow("something between") << "apply_x20261122_020304" << false;
    QTest::newRow("another prefix") << "apple_20261122_020304" << false;
}

void ApplyPlacesTest::namesEndInATime() {
    QFETCH(QString, name);
    QTEST(apply_places::isStamped(name, "apply_"), "stamped");
}

void ApplyPlacesTest::aStampOfNowIsRead() {
    const QString stamp = apply_places::stamp();
    QCOMPARE(apply_places::stampOf("line_" + stamp).toString("yyyyMMdd_HHmmss"), stamp);
    QVERIFY(apply_places::isStamped(apply_places::stagingPrefix() + stamp, "apply_"));
}

void ApplyPlacesTest::backupsBearTheFoldersName() {
    QCOMPARE(apply_places::backupPrefix("/USER/projects/line 3"), QString("line 3_"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ApplyPlacesTest)
#include "apply_places_test.moc"
