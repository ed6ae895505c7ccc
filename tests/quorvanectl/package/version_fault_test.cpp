// Versions that a publisher means otherwise than a launcher reads them, and those that are fine.
#include "quorvanectl/package/version_fault.h"

#include "support/staged_main.h"

#include <QCoreApplication>

class VersionFaultTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void versions_data();
    void versions();
};

void VersionFaultTest::versions_data() {
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("fault"); // behind the version in quotes
    const QString shape = " is not three or four numbers; the rest counts for nothing";
    const QString size = " holds a number above 2147483647, which counts as 0";

    QTest::newRow("three numbers") << "1.2.0"
                                   << "";
    QTest::newRow("four numbers") << "1.2.0.44"
                                  << "";
    QTest::newRow("no version at all") << ""
                                       << "";
    QTest::newRow("blanks alone") << " \t"
                                  << "";
    QTest::newRow("a v alone") << "v"
                               << "";
    QTest::newRow("a v in front, which is dropped") << "v1.2.0"
                                                    << "";
    QTest::newRow("a large v and a blank") << " V 1.2.0 "
                                           << "";
    QTest::newRow("zeros in front of a number") << "01.002.0003"
                                                << "";
    QTest::newRow("zeros alone") << "0.0.0"
                                 << "";
    QTest::newRow("the largest number that counts") << "1.2.2147483647"
                                                    << "";
    QTest::newRow("a date that fits") << "2026.11.20"
                                      << "";

    QTest::newRow("one number") << "7" << shape;
    QTest::newRow("two numbers") << "1.2" << shape;
    QTest::newRow("five numbers") << "1.2.3.4.5" << shape;
    QTest::newRow("a point at the end") << "1.2.3." << shape;
    QTest::newRow("a point in front") << ".1.2.3" << shape;
    QTest::newRow("two points together") << "1..2.3" << shape;
    QTest::newRow("a word behind") << "1.2.0-beta" << shape;
    QTest::newRow("a word in front") << "release 1.2.0" << shape;
    QTest::newRow("a build number behind a plus") << "1.2.0+7" << shape;
    QTest::newRow("a blank within") << "1.2. 0" << shape;
    QTest::newRow("a sign") << "1.-2.0" << shape;
    QTest::newRow("commas") << "1,2,0" << shape;
    QTest::newRow("a word alone") << "latest" << shape;
    QTest::newRow("two v's") << "vv1.2.0" << shape;
    QTest::newRow("a line feed within") << "1.2.0\n1.3.0" << shape;

    QTest::newRow("one above the largest number") << "1.2.2147483648" << size;
    QTest::newRow("a time in a number") << "1.2.20261121000" << size;
    QTest::newRow("a first number that is too large") << "99999999999.0.0" << size;
    QTest::newRow("a fourth number that is too large") << "1.2.3.99999999999999999999" << size;
    QTest::newRow("a v in front of one that is too large") << "v1.2.2147483648" << size;
}

void VersionFaultTest::versions() {
    QFETCH(QString, version);
    QFETCH(QString, fault);
    QCOMPARE(ctl::versionFault(version), fault.isEmpty() ? QString() : "'" + version + "'" + fault);
}

QUORVANE_TEST_MAIN(QCoreApplication, VersionFaultTest)
#include "version_fault_test.moc"
