// Names that Windows has not, in whatever letters, and names that only look like them.
#include "quorvanectl/files/windows_names.h"

#include "support/staged_main.h"

#include <QCoreApplication>
#include <QtTest>

class WindowsNamesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void names_data();
    void names();
};

void WindowsNamesTest::names_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("fault");
    const auto rows = [](const QString &fault, const QStringList &names) {
        for (const QString &name : names)
            QTest::newRow(qPrintable(name)) << name << fault;
    };
    rows("Windows keeps this name for a device",
         {"con", "CON", "Prn", "aux", "nul", "com1", "COM9", "lpt1", "lpt9", "com¹", "com²", "LPT³",
          "con.txt", "NUL.tar.gz", "aux .ys", "com1  .json", "nul..x"});
    rows("", {"",     "con1", "icon",   "console", "com",   "com0",  "com10",        "lpt",
              "lptx", "com⁴", "nul_",   "a con",   "con-1", "a.con", "auxiliary.ys", " nul",
              "产线", ".con", "a b.ys", "a..b"});
    rows("Windows allows none of < > : \" | ? * \\ in a name",
         {"a<b", "a>b", "a:b", "a\"b", "a|b", "a?b", "a*b", "a\\b", ":", "nul:", "a?."});
    rows("Windows drops a point or blank at a name's end",
         {"a.", "a ", "a..", "a. ", ".", " ", "nul.", "con "});
}

void WindowsNamesTest::names() {
    QFETCH(QString, name);
    QTEST(ctl::windowsNameFault(name), "fault");
}

QUORVANE_TEST_MAIN(QCoreApplication, WindowsNamesTest)
#include "windows_names_test.moc"
