// Names that every PC can unpack, and those that Windows cannot.
#include "quorvanectl/package/package_names.h"
#include "support/staged_main.h"

class PackageNamesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void names_data();
    void names();
    void equalButForCase();
};

void PackageNamesTest::names_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("fault");
    const QString out = "it leads out of the package";
    const QString letters = "Windows allows none of < > : \" | ? * \\ in a name";
    const QString end = "Windows drops a point or blank at a name's end";
    const QString device = "Windows keeps this name for a device";
    const QString control = "it holds a control character";
    QTest::newRow("a plain name") << "a/b.ys"
                                  << "";
    QTest::newRow("Chinese and blanks") << "相机/设置 1.json"
                                        << "";
    QTest::newRow("two points in a name") << "a..b/c"
                                          << "";
    QTest::newRow("a hidden file") << ".quorvane-installed-version"
                                   << "";
    QTest::newRow("a name that begins as a device") << "console/com10.ys"
                                                    << "";
    QTest::newRow("a quote in an entry") << "it's"
                                         << "";
    QTest::newRow("nothing") << "" << out;
    QTest::newRow("the folder above") << "../x" << out;
    QTest::newRow("the folder above, deeper") << "a/../b" << out;
    QTest::newRow("from the root") << "/x" << out;
    QTest::newRow("a drive") << "C:/x" << out;
    QTest::newRow("a colon") << "cam:1" << letters;
    QTest::newRow("a question mark") << "a?" << letters;
    QTest::newRow("a backslash") << "a\\b" << letters;
    QTest::newRow("a point at the end") << "a./b" << end;
    QTest::newRow("a blank at the end") << "b " << end;
    QTest::newRow("a device") << "a/NUL" << device;
    QTest::newRow("a device with a suffix") << "com1.json" << device;
    QTest::newRow("a line feed") << "a\nb" << control;
    QTest::newRow("a delete") << "a\x7f" << control;
    QTest::newRow("undecodable") << QString(QChar::ReplacementCharacter)
                                 << "it is not readable as text";
}

void PackageNamesTest::names() {
    QFETCH(QString, name);
    QFETCH(QString, fault);
    QCOMPARE(ctl::nameFault(name), fault);
}

void PackageNamesTest::equalButForCase() {
    QCOMPARE(ctl::sameNameFaults({"A/b", "a/B", "c", "a/b"}),
             QStringList({"a/B: Windows takes it for A/b", "a/b: Windows takes it for A/b"}));
    QCOMPARE(ctl::sameNameFaults({"a", "b"}), QStringList());
}

QUORVANE_TEST_MAIN(QCoreApplication, PackageNamesTest)
#include "package_names_test.moc"
