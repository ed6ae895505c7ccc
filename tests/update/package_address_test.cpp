// Which addresses of a package are URLs, and the file's name at the end of each.
#include "update/package_address.h"

#include "support/staged_main.h"

class PackageAddressTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void addresses_data();
    void addresses();
};

void PackageAddressTest::addresses_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("url");
    QTest::addColumn<QString>("fileName");
    QTest::newRow("nothing") << QString() << false << QString();
    QTest::newRow("https") << "https://host/a/b-1.2.0.zip" << true << "b-1.2.0.zip";
    QTest::newRow("a scheme of two letters") << "ab:c/d.zip" << true << "d.zip";
    QTest::newRow("a drive is no scheme") << "C:/a/b.zip" << false << "b.zip";
    QTest::newRow("a relative path") << "packages/b.zip" << false << "b.zip";
    QTest::newRow("a query stays in the name") << "https://host/b.zip?x=1" << true << "b.zip?x=1";
    QTest::newRow("a slash at the end leaves no name") << "https://host/a/" << true << QString("");
}

void PackageAddressTest::addresses() {
    QFETCH(QString, address);
    QTEST(isUrl(address), "url");
    QTEST(packageFileName(address), "fileName");
}

QUORVANE_TEST_MAIN(QCoreApplication, PackageAddressTest)
#include "package_address_test.moc"
