// Versions as people write them: their normal form, their order, where one hides in a file's name,
// and which stand for none.
#include "update/files/version_text.h"

#include "support/staged_main.h"

class VersionTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void normalizes_data();
    void normalizes();
    void compares_data();
    void compares();
    void extracts_data();
    void extracts();
    void knowsPlaceholders_data();
    void knowsPlaceholders();
};

void VersionTextTest::normalizes_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a plain version stays") << "1.2.3"
                                           << "1.2.3";
    QTest::newRow("white space at the ends goes") << " \t1.2\n"
                                                  << "1.2";
    QTest::newRow("a small v goes") << "v1.2"
                                    << "1.2";
    QTest::newRow("a capital v goes") << "V1.2"
                                      << "1.2";
    QTest::newRow("white space behind the v goes") << " V 1.2 "
                                                   << "1.2";
    QTest::newRow("only one v goes") << "vv1.2"
                                     << "v1.2";
    QTest::newRow("an inner v stays") << "1.v2"
                                      << "1.v2";
    QTest::newRow("a v alone leaves nothing") << "v"
                                              << "";
    QTest::newRow("nothing stays nothing") << ""
                                           << "";
}

void VersionTextTest::normalizes() {
    QFETCH(QString, text);
    QTEST(normalizeVersion(text), "expected");
}

void VersionTextTest::compares_data() {
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<int>("expected");
    QTest::newRow("equal texts are equal") << "1.2.3"
                                           << "1.2.3" << 0;
    QTest::newRow("a missing part counts as 0") << "1.2"
                                                << "1.2.0" << 0;
    QTest::newRow("a v makes no difference") << "v1.2"
                                             << "1.2.0" << 0;
    QTest::newRow("a v with a blank makes no difference") << "V 1.2"
                                                          << "1.2.0" << 0;
    QTest::newRow("parts are numbers and not texts") << "1.10"
                                                     << "1.9" << 1;
    QTest::newRow("a suffix makes its part 0") << "1.2-beta"
                                               << "1.0" << 0;
    QTest::newRow("a suffix makes its part lower") << "1.2-beta"
                                                   << "1.2" << -1;
    QTest::newRow("the first difference decides") << "1.2.9"
                                                  << "1.3.0" << -1;
    QTest::newRow("a longer version is higher when its rest is not 0") << "1.2.0.1"
                                                                       << "1.2" << 1;
    QTest::newRow("nothing is 0") << ""
                                  << "0.0" << 0;
    QTest::newRow("an empty part counts as 0") << "1..2"
                                               << "1.0.2" << 0;
    QTest::newRow("a trailing point changes nothing") << "1.2."
                                                      << "1.2" << 0;
    QTest::newRow("leading zeros change nothing") << "1.02"
                                                  << "1.2" << 0;
    QTest::newRow("blanks around a number do not matter") << "1. 2"
                                                          << "1.2" << 0;
    QTest::newRow("a part beyond an int counts as 0") << "1.99999999999"
                                                      << "1.1" << -1;
    QTest::newRow("a negative part is below 0") << "1.-1"
                                                << "1" << -1;
    QTest::newRow("words are 0") << "latest"
                                 << "0" << 0;
}

void VersionTextTest::compares() {
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(int, expected);
    QCOMPARE(compareVersions(a, b), expected);
    QCOMPARE(compareVersions(b, a), -expected);
}

void VersionTextTest::extracts_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("from a file name") << "pkg/setup_1.2.0.exe"
                                      << "1.2.0";
    QTest::newRow("from an address") << "https://h/p/setup-1.2.0.exe?x=1"
                                     << "1.2.0";
    QTest::newRow("four numbers") << "v1.2.3.4"
                                  << "1.2.3.4";
    QTest::newRow("the first four of five") << "1.2.3.4.5"
                                            << "1.2.3.4";
    QTest::newRow("the first of two versions") << "1.2.3 then 4.5.6"
                                               << "1.2.3";
    QTest::newRow("two numbers are no version") << "1.2"
                                                << "";
    QTest::newRow("text without numbers") << "setup.exe"
                                          << "";
    QTest::newRow("nothing") << ""
                             << "";
    QTest::newRow("other digits than ours are none") << QString::fromUtf8("١.٢.٣") << "";
}

void VersionTextTest::extracts() {
    QFETCH(QString, text);
    QTEST(extractVersion(text), "expected");
}

void VersionTextTest::knowsPlaceholders_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");
    QTest::newRow("an empty text is one") << "" << true;
    QTest::newRow("white space is one") << " \t" << true;
    QTest::newRow("four zeros are one") << "0.0.0.0" << true;
    QTest::newRow("a single zero is one") << "0" << true;
    QTest::newRow("points alone are one") << "..." << true;
    QTest::newRow("parts that are no numbers count as 0") << "v0.beta" << true;
    QTest::newRow("a last part above 0 is none") << "0.0.1" << false;
    QTest::newRow("a usual version is none") << " 1.2.3 " << false;
}

void VersionTextTest::knowsPlaceholders() {
    QFETCH(QString, text);
    QTEST(isPlaceholderVersion(text), "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, VersionTextTest)
#include "version_text_test.moc"
