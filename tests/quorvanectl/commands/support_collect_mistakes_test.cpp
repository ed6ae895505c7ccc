// support collect in the hands of whoever is asked for it: the wrong folder, an archive that is there,
// and a data folder that is damaged, which is when it is asked for.
#include "desk.h"
#include "support/staged_main.h"
#include "update/files/zip_extract.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;
using support::Desk;
using support::FileTree;
using support::refusal;

namespace {

const QString command = "quorvanectl support collect";
const QString seeHelp = "; see quorvanectl support collect --help";

FileTree engineersFiles() {
    return {{"pc/bin/config/FunctionLib.ini", ""},
            {"pc/bin/Quorvaner", "program"},
            {"data/launcher.log", "log\n"},
            {"old.zip", "mine"},
            {"out/", ""}};
}

FileTree archive(const Desk &desk, const QString &name) {
    const QTemporaryDir place;
    QString error;
    if (!extractZip(desk.path(name), place.filePath("s"), &error))
        qWarning("%s", qPrintable(error));
    return support::readTree(place.filePath("s"));
}

} // namespace

class SupportCollectCommandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatCannotBeCollected_data();
    void whatCannotBeCollected();
    void wrongWords_data();
    void wrongWords();
    void whereTheArchiveLies_data();
    void whereTheArchiveLies();
    void aDamagedDataFolderIsCollectedAllTheSame_data();
    void aDamagedDataFolderIsCollectedAllTheSame();
    void theSizesToldAreThoseOfTheFiles();
};

void SupportCollectCommandTest::whatCannotBeCollected_data() {
    support::addRefusals();
    const QString from = " --install pc --data data";
    refusal("no name for the archive", "", "@" + from, "--out must name the archive to write");
    refusal("an empty name for it", "", "@ --out ''" + from,
            "--out is given an empty value" + seeHelp);
    refusal("a folder for it", "", "@ --out out" + from, "out: is a folder");
    refusal("a folder for it, not even by force", "", "@ --out out --force" + from,
            "out: is a folder");
    refusal("a file that is there", "", "@ --out old.zip" + from,
            "old.zip: exists; --force overwrites it");
    refusal("the log for it", "", "@ --out data/launcher.log" + from,
            "data/launcher.log: is read by this command and not overwritten");
    refusal("the log for it, not even by force", "", "@ --out data/launcher.log --force" + from,
            "data/launcher.log: is read by this command and not overwritten");
    refusal("the settings for it", "echo >data/Quorvane.db",
            "@ --out data/Quorvane.db --force" + from,
            "data/Quorvane.db: is read by this command and not overwritten");
    refusal("the log for it, by another name", "ln data/launcher.log log.zip",
            "@ --out log.zip --force" + from,
            "log.zip: is read by this command and not overwritten");
    refusal("a pipe for it", "mkfifo pipe", "@ --out pipe --force" + from,
            "pipe: is no plain file");
    refusal("a link to nowhere for it", "ln -s nowhere link", "@ --out link" + from,
            "link: exists; --force overwrites it");
    refusal("a folder that is missing", "", "@ --out none/s.zip" + from,
            "none/s.zip: No such file or directory");
    refusal("a folder of somebody else's", "chmod 755 . out", "$user @ --out out/s.zip" + from,
            "out/s.zip: Permission denied");
    refusal("no installation, and an old archive stays, by force too", "",
            "@ --out old.zip --force --install none --data data",
            "none: no installation is there: it has no folder bin/config or config");
    refusal("a file for the installation", "", "@ --out s.zip --install old.zip --data data",
            "old.zip: no installation is there: it has no folder bin/config or config");
    refusal("the folder of its settings for the installation", "",
            "@ --out s.zip --install pc/bin/config --data data",
            "pc/bin/config: no installation is there: it has no folder bin/config or config");
    refusal("a data folder that is missing", "", "@ --out s.zip --install pc --data none",
            "@here/none: no such folder");
    refusal("a file for the data folder", "", "@ --out s.zip --install pc --data old.zip",
            "@here/old.zip: no such folder");
    refusal("of two data folders the last, which is missing", "",
            "@ --out s.zip" + from + " --data none", "@here/none: no such folder");
}

void SupportCollectCommandTest::whatCannotBeCollected() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void SupportCollectCommandTest::wrongWords_data() {
    support::addRefusals();
    refusal("the archive without its option", "", "@ s.zip",
            "support collect takes no arguments" + seeHelp);
    refusal("no value behind --out", "", "@ --out", "Missing value after '--out'" + seeHelp);
    refusal("a format, which it has none of", "", "@ --out s.zip --format json",
            "Unknown option 'format'" + seeHelp);
    refusal("a project, all of which are listed", "", "@ --out s.zip --project line3.yslib",
            "Unknown option 'project'" + seeHelp);
}

void SupportCollectCommandTest::wrongWords() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void SupportCollectCommandTest::whereTheArchiveLies_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("told");
    QTest::addColumn<QString>("changed");
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &told, const QString &changed) {
        QTest::newRow(name) << arrangement << line << told << changed;
    };
    const QString from = " --install pc --data data";
    row("a new file", "", "@ --out s.zip" + from, "s.zip", "+s.zip");
    row("of two names the last", "", "@ --out a.zip --out s.zip" + from, "s.zip", "+s.zip");
    row("over an older one, by force", "", "@ --out old.zip --force" + from, "old.zip", "~old.zip");
    row("the program's folder for the installation", "",
        "@ --out s.zip --install pc/bin --data data", "s.zip", "+s.zip");
    row("in the data folder itself", "", "@ --out data/s.zip" + from, "data/s.zip", "+data/s.zip");
    row("from another folder", "", "cd out && @ --out ../s.zip --install ../pc --data ../data",
        "../s.zip", "+s.zip");
    row("names with a blank and Chinese", "mv data '数 据'",
        "@ --out '支 持.zip' --install pc --data '数 据'", "支 持.zip", "+支 持.zip");
    row("a name that begins with a dash", "", "@ --out -s.zip" + from, "-s.zip", "+-s.zip");
    row("a name without an ending", "", "@ --out support" + from, "support", "+support");
}

void SupportCollectCommandTest::whereTheArchiveLies() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, told);
    QFETCH(QString, changed);
    const Desk desk(command, engineersFiles());
    desk.arrange(arrangement);
    const FileTree before = desk.tree();
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    QVERIFY2(answer.out.startsWith(told + ": 8 files\n"), qPrintable(answer.out));
    QCOMPARE(answer.out.count('\n'), 9);
    QCOMPARE(answer.status, 0);
    QCOMPARE(support::changes(before, desk.tree()), QStringList(changed));
    QCOMPARE(archive(desk, changed.mid(1)).value("launcher.log"), QByteArray("log\n"));
}

// What is damaged says so in its place in the archive.
void SupportCollectCommandTest::aDamagedDataFolderIsCollectedAllTheSame_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("content"); // a part of it
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &entry, const QString &content) {
        if (!line.contains("$user") || support::hasOrdinaryUser())
            QTest::newRow(name) << arrangement << line << entry << content;
    };
    const QString collect = "@ --out out/s.zip --install pc --data data";
    row("the log is missing", "rm data/launcher.log", collect, "launcher.log",
        "(No such file or directory)\n");
    row("the log is a folder", "rm data/launcher.log; mkdir data/launcher.log", collect,
        "launcher.log", "(file to open is a directory)\n");
    row("the log is somebody else's",
        "chmod 755 . pc pc/bin pc/bin/config data; chmod 777 out; chmod 000 data/launcher.log",
        "$user " + collect, "launcher.log", "(Permission denied)\n");
    row("the log holds bytes of no encoding", R"(printf 'a\377\n' >data/launcher.log)", collect,
        "launcher.log", QString("a%1\n").arg(QChar(QChar::ReplacementCharacter)));
    row("the settings are text", "echo 'no database' >data/Quorvane.db", collect, "settings.json",
        "\"recent_projects\": [\n    ]");
    row("the settings are a folder", "mkdir data/Quorvane.db", collect, "settings.json",
        "\"error\": ");
    row("a pipe among the files, which is not waited for", "mkfifo data/pipe", collect, "data.txt",
        "  launcher.log\n");
    row("a link to a file elsewhere, which is not followed", "ln -s \"$PWD/old.zip\" data/link",
        collect, "data.txt", "link to ");
    row("a link to its own folder, which is not followed", "ln -s . data/link", collect, "data.txt",
        "  launcher.log\n");
    row("a file of somebody else's",
        "chmod 755 . pc pc/bin pc/bin/config data; chmod 777 out; echo >data/x; chmod 000 data/x",
        "$user " + collect, "data.txt", "(");
    row("a name with a line feed", "cd data; echo >'a\nb'", collect, "data.txt", "a\nb\n");
}

void SupportCollectCommandTest::aDamagedDataFolderIsCollectedAllTheSame() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, entry);
    QFETCH(QString, content);
    const Desk desk(command, engineersFiles());
    desk.arrange(arrangement);
    const FileTree before = desk.tree();
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);
    QCOMPARE(support::changes(before, desk.tree()), QStringList("+out/s.zip"));
    const FileTree files = archive(desk, "out/s.zip");
    QCOMPARE(files.size(), 8);
    QVERIFY2(QString::fromUtf8(files.value(entry)).contains(content), files.value(entry));
}

void SupportCollectCommandTest::theSizesToldAreThoseOfTheFiles() {
    const Desk desk(command, engineersFiles());
    QString told = desk.type("@ --out s.zip --install pc --data data").out;
    QString expected = "s.zip: 8 files\n";
    const FileTree files = archive(desk, "s.zip");
    for (const char *const name : {"launcher.log", "versions.json", "machine.json", "settings.json",
                                   "installation.txt", "projects.txt", "data.txt", "findings.txt"})
        expected +=
            QString("  %1 %2 bytes\n")
                .arg(QString(name).leftJustified(18), QString::number(files.value(name).size()));
    QCOMPARE(told, expected);
}

QUORVANE_TEST_MAIN(QCoreApplication, SupportCollectCommandTest)
#include "support_collect_mistakes_test.moc"
