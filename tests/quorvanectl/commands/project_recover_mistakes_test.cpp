// project recover in the hands of a support engineer: the wrong file, the wrong data folder, and a line
// PC on which nothing is broken. The states of a broken-off update are proved in recovery_test.cpp.
#include "desk.h"
#include "small_project.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Answer;
using support::Desk;
using support::FileTree;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl project recover";
const QString seeHelp = "; see quorvanectl project recover --help";
const QString backup = "data/update/backup/line3_20261120_164501";

FileTree engineersFiles() {
    FileTree files{{"data/launcher.log", "log\n"}, {"package.txt", "no package"}};
    const FileTree project = support::smallProject();
    for (auto file = project.begin(); file != project.end(); ++file)
        files.insert("line3/" + file.key(), file.value());
    return files;
}

// As the command describes a project that no update has touched.
QString whole(const QString &folder, int files = 4) {
    return QString("Project:   @here/%1: %2 files, passes the validator\n"
                   "Backup:    none\nUnpacked:  none\n"
                   "Found:     No swap had begun. The project is whole.\n")
        .arg(folder, QString::number(files));
}

QString damaged(const QString &fault) {
    return "Project:   @here/line3: 4 files, fails the validator\n           [Error] yslib: " +
           fault +
           "\nBackup:    none\nUnpacked:  none\n"
           "Found:     No whole copy was found. Take the project from its last package or from a "
           "copy of your own.\n";
}

// Puts the project away as an update does, and takes a script from what stays.
const QString breakOff =
    "mkdir -p data/update/backup; cp -a line3 " + backup + "; rm line3/scripts/main.ys; ";

} // namespace

class ProjectRecoverTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatCannotBeUsed_data();
    void whatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void whatNeedsNoRecovery_data();
    void whatNeedsNoRecovery();
    void lookingChangesNothing();
    void whatLayInTheWayIsKept();
    void aSecondTimeThereIsNothingToDo();
};

void ProjectRecoverTest::whatCannotBeUsed_data() {
    support::addRefusals();
    const QString data = " --data data";
    refusal("the project's folder", "", "@ line3" + data, "line3: is no project file");
    refusal("a script", "", "@ line3/scripts/main.ys" + data,
            "line3/scripts/main.ys: is no project file");
    refusal("a copy of the project file", "cp line3/line3.yslib line3/line3.yslib.bak",
            "@ line3/line3.yslib.bak" + data, "line3/line3.yslib.bak: is no project file");
    refusal("an empty name", "", "@ ''" + data, ": is no project file");
    const QString moved = "mkdir $(printf 'd\\377'); mv line3 $(printf 'd\\377')";
    refusal("below a folder whose name is no UTF-8", moved,
            "cd d*/line3 && @ line3.yslib --data ../../data",
            "line3.yslib: a name on the way there is no UTF-8");
    refusal("a file as the data folder", "", "@ line3/line3.yslib --data line3/line3.yslib",
            "line3/line3.yslib: is no folder");
    const QString isNot = ": is not the data folder, which is @here/data";
    refusal("the folder of the updates in the data folder", breakOff,
            "@ line3/line3.yslib --data data/update", "data/update" + isNot);
    refusal("the folder of the backups", breakOff, "@ line3/line3.yslib --data data/update/backup/",
            "data/update/backup/" + isNot);
    refusal("the same from within it", breakOff,
            "cd data/update/backup && @ ../../../line3/line3.yslib --apply --data .", "." + isNot);
    refusal("the folder above the launcher's", "mkdir -p share/Quorvane/update",
            "@ line3/line3.yslib --data share",
            "share: is not the data folder, which is @here/share/Quorvane");
    refusal("the folder of the updates, of all projects", breakOff, "@ --data data/update",
            "data/update" + isNot);
    refusal("a folder of that name", "mkdir d.yslib", "@ d.yslib" + data, "d.yslib: is a folder");
    refusal("a pipe is not waited for", "mkfifo p.yslib", "@ p.yslib" + data,
            "p.yslib: is no plain file");
    refusal("a project that is nowhere", "", "@ none/line4.yslib" + data,
            "@here/none/line4.yslib: neither the project nor a backup of it is there");
    refusal("a project that is gone, and the data folder of nobody", breakOff + "rm -r line3",
            "@ line3/line3.yslib --data none",
            "@here/line3/line3.yslib: neither the project nor a backup of it is there");
    refusal("somebody else's", "chmod 755 .; chmod 000 line3/line3.yslib",
            "$user @ line3/line3.yslib" + data, "line3/line3.yslib: Permission denied");
    refusal("a data folder of somebody else's, to be written to", breakOff + "chmod 755 .",
            "$user @ line3/line3.yslib --apply" + data, "@here/data/update: cannot write there");
    refusal("a package that is missing", "", "@ line3/line3.yslib --package none.zip" + data,
            "none.zip: no such file");
    refusal("a folder for the package", "", "@ line3/line3.yslib --package line3" + data,
            "line3: is a folder");
    refusal("a pipe for the package", "mkfifo p.zip", "@ line3/line3.yslib --package p.zip" + data,
            "p.zip: is no plain file");
    refusal("a package of somebody else's", "chmod 755 .; chmod 000 package.txt",
            "$user @ line3/line3.yslib --package package.txt" + data,
            "package.txt: Permission denied");
    refusal("a library that is missing", "", "@ line3/line3.yslib --library none.ini" + data,
            "none.ini: no such file");
    refusal("a library that is a folder", "", "@ line3/line3.yslib --library line3" + data,
            "line3: is a folder");
}

void ProjectRecoverTest::whatCannotBeUsed() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void ProjectRecoverTest::wrongWords_data() {
    support::addRefusals();
    refusal("no project to change", "", "@ --data data --apply",
            "without FILE.yslib it looks at every project, and changes nothing");
    refusal("two projects", "", "@ line3/line3.yslib line3/line3.yslib",
            "project recover takes [FILE.yslib]" + seeHelp);
    refusal("the data folder without its option", "", "@ line3/line3.yslib data",
            "project recover takes [FILE.yslib]" + seeHelp);
    refusal("an empty name for the package", "", "@ line3/line3.yslib --package ''",
            "--package is given an empty value" + seeHelp);
    refusal("by force", "", "@ line3/line3.yslib --force", "Unknown option 'force'" + seeHelp);
    refusal("a format, which it has none of", "", "@ line3/line3.yslib --format json",
            "Unknown option 'format'" + seeHelp);
    refusal("an answer behind --apply", "", "@ line3/line3.yslib --apply=yes",
            "Unexpected value after '--apply'" + seeHelp);
}

void ProjectRecoverTest::wrongWords() {
    support::expectRefusal(Desk(command, engineersFiles()));
}

void ProjectRecoverTest::whatNeedsNoRecovery_data() {
    support::addOutcomes();
    const QString data = " --data data";
    outcome("a whole project", "", "@ line3/line3.yslib" + data, {0, whole("line3")});
    outcome("a whole project, with --apply", "", "@ line3/line3.yslib --apply" + data,
            {0, whole("line3") + "Now:       @here/line3/line3.yslib passes the validator.\n"});
    outcome("a data folder that is missing", "", "@ line3/line3.yslib --data none",
            {0, whole("line3")});
    outcome("a data folder that is called as one within it",
            "mkdir -p update/backup; mv update data/update", "@ line3/line3.yslib --data data",
            {0, whole("line3")});
    outcome("a data folder called update that nothing lies in", "mkdir update",
            "@ line3/line3.yslib --data update", {0, whole("line3")});
    outcome("of two data folders the last counts", breakOff,
            "@ line3/line3.yslib --data data --data none",
            {1, "Project:   @here/line3: 3 files, fails the validator\n"
                "           [Error] scripts[0].path: 引用的文件不存在：scripts/main.ys\n"
                "Backup:    none\nUnpacked:  none\n"
                "Found:     No whole copy was found. Take the project from its last package or "
                "from a copy of your own.\n"});
    outcome("from one of its folders", "", "cd line3/scripts && @ ../line3.yslib --data ../../data",
            {0, whole("line3")});
    outcome("in a folder with a blank and Chinese", "mv line3 '产 线'; mv data '数 据'",
            "@ '产 线/line3.yslib' --data '数 据'", {0, whole("产 线")});
    outcome("a name that begins with a dash, behind two dashes",
            "mv line3/line3.yslib line3/-l.yslib", "cd line3 && @ --data ../data -- -l.yslib",
            {0, whole("line3")});
    outcome("a name in capitals", "mv line3/line3.yslib line3/LINE3.YSLIB",
            "@ line3/LINE3.YSLIB" + data, {0, whole("line3")});
    outcome("an emptied project file without a copy, with --apply", ": >line3/line3.yslib",
            "@ line3/line3.yslib --apply" + data, {1, damaged("JSON 无效：illegal value")});
    outcome("a damaged project file and no package for one, with --apply",
            "echo '{\"a\":}' >line3/line3.yslib",
            "@ line3/line3.yslib --package package.txt --apply" + data,
            {1, damaged("JSON 无效：object is missing after a comma")});
}

void ProjectRecoverTest::whatNeedsNoRecovery() {
    support::expectOutcome(Desk(command, engineersFiles()));
}

void ProjectRecoverTest::lookingChangesNothing() {
    const Desk desk(command, engineersFiles());
    desk.arrange(breakOff);
    const FileTree before = desk.tree();
    const Answer answer = desk.type("@ line3/line3.yslib --data data");
    QCOMPARE(answer.err, QString());
    QVERIFY2(answer.out.endsWith("The backup belongs in the project's place: the old project, "
                                 "whole.\nTo do:     the same command with --apply.\n"),
             qPrintable(answer.out));
    QCOMPARE(answer.status, 1);
    QCOMPARE(support::changes(before, desk.tree()), QStringList());
}

void ProjectRecoverTest::whatLayInTheWayIsKept() {
    const Desk desk(command, engineersFiles());
    desk.arrange(breakOff + "echo mine >line3/mine.txt");
    const FileTree before = desk.tree();
    const Answer answer = desk.type("@ line3/line3.yslib --data data --apply");
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);
    const FileTree after = desk.tree();
    QCOMPARE(support::below(after, "line3"), support::below(before, backup));
    // Its name has the time: it is told.
    const QString told = "Kept:      what lay in its place, as " + desk.path() + '/';
    QString kept;
    for (const QString &line : answer.out.split('\n')) {
        if (line.startsWith(told))
            kept = line.mid(told.size());
    }
    QVERIFY2(kept.startsWith("line3.set_aside_"), qPrintable(answer.out));
    QCOMPARE(support::below(after, kept), support::below(before, "line3"));
    QVERIFY(answer.out.endsWith("\nNow:       " + desk.path("line3/line3.yslib") +
                                " passes the validator.\n"));
}

void ProjectRecoverTest::aSecondTimeThereIsNothingToDo() {
    const Desk desk(command, engineersFiles());
    desk.arrange(breakOff);
    QCOMPARE(desk.type("@ line3/line3.yslib --data data --apply").status, 0);
    const FileTree before = desk.tree();
    const Answer again = desk.type("@ line3/line3.yslib --data data --apply");
    QString told = whole("line3") + "Now:       @here/line3/line3.yslib passes the validator.\n";
    QCOMPARE(again.out, told.replace("@here", desk.path()));
    QCOMPARE(again.err, QString());
    QCOMPARE(again.status, 0);
    QCOMPARE(support::changes(before, desk.tree()), QStringList());
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectRecoverTest)
#include "project_recover_mistakes_test.moc"
