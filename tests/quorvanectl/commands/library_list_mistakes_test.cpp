// library list in the hands of an engineer who edits the file by hand. What is wrong in a line leaves
// the line out; what is wrong with the file is told.
#include "desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;
using support::Desk;
using support::refusal;

namespace {

const QString command = "quorvanectl library list";
const QString seeHelp = "; see quorvanectl library list --help";

support::FileTree engineersFiles() {
    return {{"l.ini", "1,foo,0,\n"}, {"line/", ""}};
}

// The lines between two headings of the text form.
QString functionsIn(const QString &text) {
    const QString heading = "functions\n";
    const int end = text.indexOf("keywords\n");
    return text.startsWith(heading) ? text.mid(heading.size(), end - heading.size()) : text;
}

} // namespace

class LibraryListTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileThatCannotBeUsed_data();
    void aFileThatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void whatALineIsTakenFor_data();
    void whatALineIsTakenFor();
    void aControlCharacterIsSpelledOutInTextAlone();
    void aWordThatIsTakenOutIsNoKeyword();
};

void LibraryListTest::aFileThatCannotBeUsed_data() {
    support::addRefusals();
    refusal("a folder", "", "@ line", "line: is a folder");
    refusal("a file that is missing", "", "@ none.ini", "none.ini: no such file");
    refusal("a pipe is not waited for", "mkfifo p.ini", "@ p.ini", "p.ini: is no plain file");
    refusal("a link that leads nowhere", "ln -s nowhere k.ini", "@ k.ini", "k.ini: no such file");
    refusal("an empty name", "", "@ ''", ": no such file");
    refusal("somebody else's", "chmod 755 .; chmod 000 l.ini", "$user @ l.ini",
            "l.ini: Permission denied");
    refusal("no half list for programs", "", "@ line --format json", "line: is a folder");
}

void LibraryListTest::aFileThatCannotBeUsed() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void LibraryListTest::wrongWords_data() {
    support::addRefusals();
    refusal("two libraries", "", "@ l.ini l.ini", "library list takes [FunctionLib.ini]" + seeHelp);
    refusal("the library as an option", "", "@ --library l.ini",
            "Unknown option 'library'" + seeHelp);
    refusal("a format of another command", "", "@ l.ini --format sarif",
            "no format 'sarif'; there are: text, json");
    refusal("a name that begins with a dash", "cp l.ini ./-l.ini", "@ -l.ini",
            "Unknown options: l, ., i, n, i" + support::behindDashes + seeHelp);
}

void LibraryListTest::wrongWords() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void LibraryListTest::whatALineIsTakenFor_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("functions");
    const auto row = [](const char *name, const QString &arrangement, const QString &words,
                        const QString &functions) {
        QTest::newRow(name) << arrangement << words << functions;
    };
    row("behind a byte-order mark", R"(printf '\357\273\2771,foo,0,\n' >l.ini)", "l.ini",
        "    1  foo\n");
    row("in the encoding of an old editor", R"(printf '1,\262\372,0,\n' >l.ini)", "l.ini",
        "    1  产\n");
    row("with the line ends of Windows", R"(printf '1,foo,0,\r\n2,bar,1,a\r\n' >l.ini)", "l.ini",
        "    1  foo\n    2  bar( a  );\n");
    row("without a line end", "printf '1,foo,0,' >l.ini", "l.ini", "    1  foo\n");
    row("twice the same", R"(printf '1,foo,0,\n1,foo,0,\n' >l.ini)", "l.ini",
        "    1  foo\n    1  foo\n");
    row("a word for its number", R"(printf 'x,foo,0,\n2,bar,0,\n' >l.ini)", "l.ini",
        "    2  bar\n");
    row("fewer arguments than none", R"(printf '1,foo,-1,\n' >l.ini)", "l.ini", "    1  foo\n");
    row("an empty file", ": >l.ini", "l.ini", "");
    row("a file of another kind", "echo '{\"a\": 1}' >l.ini", "l.ini", "");
    row("in UTF-16, which nobody reads", "iconv -t UTF-16 l.ini >u.ini", "u.ini", "");
    row("a name with a blank and Chinese", "cp l.ini '函 数.ini'", "'函 数.ini'", "    1  foo\n");
    row("a name that begins with a dash, behind two dashes", "cp l.ini ./-l.ini", "-- -l.ini",
        "    1  foo\n");
    row("of two formats the last counts", "", "l.ini --format json --format text", "    1  foo\n");
}

void LibraryListTest::whatALineIsTakenFor() {
    QFETCH(QString, arrangement);
    QFETCH(QString, words);
    const Desk desk(command, engineersFiles());
    desk.arrange(arrangement);
    const support::FileTree before = desk.tree();
    const Answer answer = desk.type("@ " + words);
    QCOMPARE(answer.err, QString());
    QTEST(functionsIn(answer.out), "functions");
    QVERIFY(answer.out.contains("\n    7  if  KwIf\n")); // the words of its own stay
    QCOMPARE(answer.status, 0);
    QCOMPARE(support::changes(before, desk.tree()), QStringList());
}

void LibraryListTest::aControlCharacterIsSpelledOutInTextAlone() {
    const Desk desk(command, {{"l.ini", "1,f\x1b[31m,0,\n[ControlFlow]\nkeywords=if\x1b[0m\n"}});
    const QString text = desk.type("@ l.ini").out;
    QVERIFY2(text.startsWith("functions\n    1  f\\x1b[31m\nkeywords\n    if\\x1b[0m\n"),
             qPrintable(text));
    const QString json = desk.type("@ l.ini --format json").out;
    QVERIFY(!json.contains(QChar(0x1b)));
    const QJsonObject told = QJsonDocument::fromJson(json.toUtf8()).object();
    QCOMPARE(told["functions"].toArray().at(0).toObject()["name"].toString(), QString("f\x1b[31m"));
    QCOMPARE(told["lists"].toObject()["keywords"].toArray(), QJsonArray{"if\x1b[0m"});
}

void LibraryListTest::aWordThatIsTakenOutIsNoKeyword() {
    const Desk desk(command, {{"l.ini", "[ControlFlow]\nkeywords=if\n"}});
    const QString text = desk.type("@ l.ini").out;
    QVERIFY(text.contains("\n    7  if  KwIf\n"));
    QVERIFY(!text.contains("KwElse"));
    QVERIFY(text.contains("\n    16  int  KwInt\n")); // of a list that is not named
}

QUORVANE_TEST_MAIN(QCoreApplication, LibraryListTest)
#include "library_list_mistakes_test.moc"
