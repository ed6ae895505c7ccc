// The man page says of every command what its help says.
#include "quorvanectl/commands/commands.h"
#include "run_tool.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>

namespace {

// The page as one reads it, without the requests for fonts and layout.
QString readPage() {
    QFile file(QUORVANE_SOURCE_TREE "/tools/quorvanectl/quorvanectl.1");
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no man page");
    QString page = QString::fromUtf8(file.readAll());
    page.remove(QRegularExpression("^\\.(TP|B|I|IP|RS|RE|EX|EE|SS|SH|PP)\\b ?",
                                   QRegularExpression::MultilineOption));
    page.remove("\\fI").remove("\\fR");
    return page.replace("\\-", "-").replace("\\(ti", "~").replace("\\e", "\\").simplified();
}

} // namespace

class ManPageTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyCommandIsThere_data();
    void everyCommandIsThere();
    void noOtherCommandIsThere();
};

void ManPageTest::everyCommandIsThere_data() {
    QTest::addColumn<QString>("title");
    for (const ctl::Command &command : ctl::allCommands())
        QTest::newRow(qPrintable(ctl::titleOf(command))) << ctl::titleOf(command);
}

// Title, summary, each option with its text, and the example stand in this order.
void ManPageTest::everyCommandIsThere() {
    QFETCH(QString, title);
    const QString help =
        support::runTool(title.split(' ') + QStringList("--help")).out.simplified();
    static const QRegularExpression form(
        "^Usage: quorvanectl (\\S+(?: \\S+)?) \\[options\\] ?(.*) Options: (.*) "
        "-h, --help Shows this help. Example: (.*)$");
    const QRegularExpressionMatch match = form.match(help);
    QVERIFY2(match.hasMatch(), qPrintable(help));
    QString told =
        QStringList{match.captured(1), match.captured(2), match.captured(3), match.captured(4)}
            .join(' ');
    told.replace(QRegularExpression("(--[a-z-]+) <([^>]+)>"), "\\1 \\2");
    QVERIFY2(readPage().contains(told.simplified()), qPrintable(told));
}

void ManPageTest::noOtherCommandIsThere() {
    QCOMPARE(readPage().count("$ quorvanectl "), int(ctl::allCommands().size()));
}

QUORVANE_TEST_MAIN(QCoreApplication, ManPageTest)
#include "man_page_test.moc"
