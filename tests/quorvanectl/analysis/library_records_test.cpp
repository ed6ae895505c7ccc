// The functions that are offered and told of, as the function library's file has them.
#include "quorvanectl/analysis/library_records.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

class LibraryRecordsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void records_data();
    void records();
    void ofEqualNamesTheLast();
    void aNameThatIsNotThere();
};

// "template | arguments with their choices | description | snippet" of one line.
void LibraryRecordsTest::records_data() {
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QByteArray &line, const char *expected) {
        QTest::newRow(name) << line << QString(expected);
    };
    row("two arguments", "1,f,2,a#C,b#I,help",
        "f( a , b  ); | a, b | help | f( ${1:a} , ${2:b}  );");
    row("one with choices", "1,f,1,mode#S#auto#manual,help",
        "f( mode  ); | mode=auto/manual | help | f( ${1:mode}  );");
    row("no argument is the bare name", "1,f,0,help", "f |  | help | f");
    row("a line that ends with its last argument has no description", "1,f,1,a#S#x",
        "f( a  ); | a |  | f( ${1:a}  );");
    row("one that ends with its count has none either", "1,f,0", "f |  |  | f");
    row("too few fields", "1,f,3,a#C,help", "null |  |  | ");
    row("blanks around the fields", "1, f ,1, a #C, help ", "f( a  ); | a | help | f( ${1:a}  );");
    row("a name without a text", "1,f,1,#C,help", "f(   ); |  | help | f( ${1:}  );");
    row("signs that mean something to a snippet", "1,f,1,a$}\\#C,help",
        R"(f( a$}\  ); | a$}\ | help | f( ${1:a\$\}\\}  );)");
}

void LibraryRecordsTest::records() {
    QFETCH(QByteArray, line);
    QVERIFY(support::loadLibraryText(line + "\n"));
    const QVector<ctl::LibraryRecord> records = ctl::libraryRecords();
    QCOMPARE(records.size(), 1);
    const ctl::LibraryRecord &record = records.first();
    QCOMPARE(record.name, QString("f"));
    QStringList arguments;
    for (int i = 0; i < record.arguments.size(); ++i) {
        const QString choices = record.options.at(i).join('/');
        arguments.append(record.arguments.at(i) + (choices.isEmpty() ? "" : "=" + choices));
    }
    const QString shown = record.callTemplate.isNull() ? QString("null") : record.callTemplate;
    QTEST(
        (QStringList{shown, arguments.join(", "), record.description, ctl::snippetOf(record)}.join(
            " | ")),
        "expected");
}

void LibraryRecordsTest::ofEqualNamesTheLast() {
    QVERIFY(support::loadLibraryText("1,f,1,a#C,first\n2,g,3,a\n3,h,0,third\n4,f,0,last\n"));
    QStringList all;
    for (const ctl::LibraryRecord &record : ctl::libraryRecords())
        all.append(record.name + ' ' + record.callTemplate + ' ' + record.description);
    QCOMPARE(all, QStringList({"g  ", "h h third", "f f last"}));
    QCOMPARE(ctl::libraryRecord("f")->description, QString("last"));
}

// Scripts tell small letters from capital ones.
void LibraryRecordsTest::aNameThatIsNotThere() {
    QVERIFY(support::loadLibraryText("1,f,0,help\n"));
    QVERIFY(!ctl::libraryRecord("F"));
    QVERIFY(!ctl::libraryRecord(""));
}

QUORVANE_TEST_MAIN(QCoreApplication, LibraryRecordsTest)

#include "library_records_test.moc"
