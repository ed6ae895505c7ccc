// The rows of the tool and the tables of the page for support are the same, in both languages.
#include "quorvanectl/log/known_lines.h"

#include "support/staged_main.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>

namespace {

using Row = QStringList; // its cells

// The rows below the n-th heading that has a table beginning with one of these words.
QVector<QVector<Row>> tablesOf(const QString &page, const QStringList &firstHeads) {
    QFile file(QUORVANE_SOURCE_TREE "/docs/" + page);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no page");
    QVector<QVector<Row>> tables;
    bool inTable = false;
    for (const QString &line : QString::fromUtf8(file.readAll()).split('\n')) {
        if (!line.startsWith("| ")) {
            inTable = inTable && line.startsWith("|--");
            continue;
        }
        const Row cells = line.mid(2, line.size() - 4).split(" | ");
        if (inTable)
            tables.last().append(cells);
        else if (firstHeads.contains(cells.first()))
            tables.append(QVector<Row>());
        inTable = inTable || firstHeads.contains(cells.first());
    }
    return tables;
}

QString written(const char *text) {
    return QString::fromUtf8(text).replace('\n', "<br>");
}

Row rowOf(const ctl::KnownLine &line, bool english) {
    const bool described =
        line.kind == ctl::LineKind::Described; // in each language in its own words
    QString text = written(described && !english ? line.english : line.text);
    if (*line.english != '\0' && !described)
        text += "<br>" + written(line.english);
    return english ? Row{text, written(line.cause), written(line.remedy)}
                   : Row{text, written(line.chineseCause), written(line.chineseRemedy)};
}

} // namespace

class KnownLinesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void thePageHasTheSameRows_data();
    void thePageHasTheSameRows();
    void theHeadingsAreOnThePage();
};

void KnownLinesTest::thePageHasTheSameRows_data() {
    QTest::addColumn<QString>("page");
    QTest::addColumn<QStringList>("heads");
    QTest::addColumn<bool>("english");
    QTest::newRow("English") << "support.md" << QStringList{"Line", "Text"} << true;
    QTest::newRow("Chinese") << "zh/support.md" << QStringList{"日志行", "文字"} << false;
}

// But those of the settings and of the syntax: the launch log never holds them.
void KnownLinesTest::thePageHasTheSameRows() {
    QFETCH(QString, page);
    QFETCH(QStringList, heads);
    QFETCH(bool, english);
    QVector<QVector<Row>> tables = tablesOf(page, heads);
    QCOMPARE(tables.size(), int(ctl::knownTables().size()) + 2);
    tables.removeAt(6);
    tables.removeLast();
    int number = 0;
    for (const ctl::KnownTable &table : ctl::knownTables()) {
        const QVector<Row> &rows = tables[number++];
        QCOMPARE(table.count, rows.size());
        for (int i = 0; i < rows.size(); ++i)
            QCOMPARE(rowOf(table.rows[i], english), rows[i]);
    }
}

void KnownLinesTest::theHeadingsAreOnThePage() {
    QFile file(QUORVANE_SOURCE_TREE "/docs/support.md");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll());
    int at = 0;
    for (const ctl::KnownTable &table : ctl::knownTables()) {
        at = page.indexOf(QString("## %1\n").arg(table.heading), at + 1);
        QVERIFY2(at > 0, table.heading);
    }
}

QUORVANE_TEST_MAIN(QCoreApplication, KnownLinesTest)
#include "known_lines_test.moc"
