// A folder is found in a text however it is written there.
#include "quorvanectl/support/path_spellings.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtTest>

class PathSpellingsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void spellings_data();
    void spellings();
    void namesThatWindowsGivesItself();
    void lettersOfAnotherCase();
};

void PathSpellingsTest::spellings_data() {
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *folder, const char *text,
                        const char *expected) {
        QTest::newRow(name) << QString(folder) << QString(text) << QString(expected);
    };
    row("as it is", "D:/people/max", "at D:/people/max/p", "at ~/p");
    row("with backslashes", "D:/people/max", R"(at D:\people\max\p)", R"(at ~\p)");
    row("with both", "D:/people/max", R"(at D:\people/max\p)", R"(at ~\p)");
    row("in JSON", "D:/people/max", R"("D:\\people\\max\\p")", R"("~\\p")");
    row("on a server", "//server/people/max", R"(\\server\people\max\p)", R"(~\p)");
    row("without a drive", "/srv/max", "file:///srv/max/p", "file://~/p");
    row("with separators twice", "/srv/people/max", "/srv//people//max//p", "~//p");
    row("a longer name is another's", "D:/people/max", R"(D:\people\maxim)", R"(D:\people\maxim)");
    row("so is another drive", "D:/people/max", "E:/people/max", "E:/people/max");
    row("signs that mean something in a search", "/srv/a.b(c)", "/srv/a.b(c) /srv/axb(c)",
        "~ /srv/axb(c)");
}

void PathSpellingsTest::spellings() {
    QFETCH(QString, folder);
    QFETCH(QString, text);
    QTEST(text.replace(ctl::everySpellingOf(folder), "~"), "expected");
}

// A name of more than eight letters has a short one beside it, and each step may be written by either.
void PathSpellingsTest::namesThatWindowsGivesItself() {
    const QTemporaryDir place;
    const QString folder = place.filePath("Maximilian Mustermann/documents of his");
    QVERIFY(QDir().mkpath(folder));
    const QStringList others = ctl::otherSpellings(folder);
    QCOMPARE(others.isEmpty(), !support::onWindows);
    for (const QString &other : others) {
        const QString mixed = other.section('/', 0, -2) + '/' + folder.section('/', -1);
        for (const QString &text : {other, mixed, QDir::toNativeSeparators(other)})
            QCOMPARE(QString(text).replace(ctl::everySpellingOf(folder), "~"), QString("~"));
    }
    QCOMPARE(others.filter("~1").isEmpty() && others.filter("~").isEmpty(), !support::onWindows);
}

void PathSpellingsTest::lettersOfAnotherCase() {
    const QString found =
        QString("at D:/PEOPLE/Max").replace(ctl::everySpellingOf("D:/people/max"), "~");
    QCOMPARE(found, QString(support::onWindows ? "at ~" : "at D:/PEOPLE/Max"));
}

QUORVANE_TEST_MAIN(QCoreApplication, PathSpellingsTest)
#include "path_spellings_test.moc"
