// project new: what it makes passes every check, and what stands in its way stays as it is.
#include "desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

using support::Desk;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl project new";

QStringList filesOf(const QString &folder, const QString &name) {
    QStringList files{folder + "/",
                      folder + "/hardware/",
                      folder + "/hardware/cam1_config.json",
                      folder + "/" + name + ".yslib",
                      folder + "/scripts/",
                      folder + "/scripts/limits.ys",
                      folder + "/scripts/main.ys",
                      folder + "/scripts/part_inspection.ys"};
    for (QString &file : files)
        file.prepend('+');
    files.sort();
    return files;
}

QString made(const QString &file) {
    return file + ": a project with a main script, a sub task and a module\n";
}

} // namespace

class ProjectNewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsMade_data();
    void whatIsMade();
    void itPassesEveryCheck_data();
    void itPassesEveryCheck();
    void names_data();
    void names();
    void whatCannotBeMade_data();
    void whatCannotBeMade();
};

void ProjectNewTest::whatIsMade_data() {
    support::addOutcomes();
    outcome("a project", "", "@ line4",
            {0, made("line4/line4.yslib"), "", filesOf("line4", "line4")});
    outcome("named with a slash", "", "@ line4/",
            {0, made("line4/line4.yslib"), "", filesOf("line4", "line4")});
    outcome("in a folder, with a Chinese name and a blank", "mkdir lines", "@ 'lines/产 线'",
            {0, made("lines/产 线/产 线.yslib"), "", filesOf("lines/产 线", "产 线")});
    outcome("above where one stands", "mkdir lines", "cd lines && @ ../line4",
            {0, made("../line4/line4.yslib"), "", filesOf("line4", "line4")});
    outcome("a name with a per cent sign", "", "@ 100%1",
            {0, made("100%1/100%1.yslib"), "", filesOf("100%1", "100%1")});
}

void ProjectNewTest::whatIsMade() {
    support::expectOutcome(Desk(command));
}

void ProjectNewTest::itPassesEveryCheck_data() {
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("out");
    const QString clean = "line4/line4.yslib: clean\n";
    QTest::newRow("the project's")
        << "quorvanectl project check --strict line4/line4.yslib" << clean;
    QTest::newRow("how it hangs together")
        << "quorvanectl project graph line4/line4.yslib | head -n 1"
        << "line4/line4.yslib: 3 scripts, 3 imports, 4 globals\n";
    QTest::newRow("a package's, made as it is")
        << "quorvanectl update pack line4 --version 1.0.0 --out . | cut -d ' ' -f 1-3"
        << "./line4-1.0.0.zip: 6 files,\n";
}

void ProjectNewTest::itPassesEveryCheck() {
    QFETCH(QString, line);
    const Desk desk(command);
    desk.arrange("quorvanectl project new line4");
    const support::Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    QTEST(answer.out, "out");
}

void ProjectNewTest::names_data() {
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("displayName");
    QTest::newRow("of the folder") << "@ line4"
                                   << "line4"
                                   << "line4";
    QTest::newRow("for people") << "@ line4 --display-name '产线四 \"A\" %1'"
                                << "line4"
                                << "产线四 \"A\" %1";
    QTest::newRow("of a folder with a per cent sign")
        << "mkdir x && cd x && @ %3%2 && mv %3%2 ../line4"
        << "%3%2"
        << "%3%2";
}

void ProjectNewTest::names() {
    QFETCH(QString, line);
    const Desk desk(command);
    desk.arrange(line.replace('@', command));
    QStringList found = desk.tree().keys().filter(".yslib");
    QCOMPARE(found.size(), 1);
    const QJsonObject project =
        QJsonDocument::fromJson(desk.read(found.first())).object()["project"].toObject();
    QTEST(project["name"].toString(), "name");
    QTEST(project["displayName"].toString(), "displayName");
    QCOMPARE(project["version"].toString(), QString("1.0.0"));
    static const QRegularExpression time("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ$");
    QVERIFY(time.match(project["createdAt"].toString()).hasMatch());
}

void ProjectNewTest::whatCannotBeMade_data() {
    support::addRefusals();
    const QString exists = ": exists; a new project gets a folder of its own";
    refusal("a folder that is there", "mkdir line4; echo mine >line4/a", "@ line4",
            "line4" + exists);
    refusal("an empty folder", "mkdir line4", "@ line4", "line4" + exists);
    refusal("where one stands", "", "@ .", "." + exists);
    refusal("a file", "echo mine >line4", "@ line4", "line4" + exists);
    refusal("a link to nowhere", "ln -s none line4", "@ line4", "line4" + exists);
    refusal("in a folder that is missing", "", "@ lines/line4",
            "lines/line4: there is no folder @here/lines");
    refusal("in a file", "echo mine >lines", "@ lines/line4",
            "lines/line4: there is no folder @here/lines");
    refusal("a variable of a script that is not set", "", "@ \"$LINE\"",
            ": has no name for a project");
    refusal("the folder above", "mkdir a", "cd a && @ ..", ".." + exists);
    refusal("another project's file", "quorvanectl project new line4 >/dev/null",
            "@ line4/line4.yslib", "line4/line4.yslib" + exists);
    refusal("a name that ends in a blank", "", "@ 'a '",
            "a : Windows drops a point or blank at a name's end");
    refusal("a name that ends in a point", "", "@ a.",
            "a.: Windows drops a point or blank at a name's end");
    refusal("a device of Windows with an ending", "", "@ NUL.txt",
            "NUL.txt: Windows keeps this name for a device");
    refusal("a name that steers a terminal", "", "@ \"$(printf 'a\\033b')\"",
            "a\\x1bb: it holds a control character");
    refusal("a name that is no UTF-8", "", "@ \"$(printf 'a\\377')\"",
            QString("a") + QChar(QChar::ReplacementCharacter) + ": it is not readable as text");
    const QString longName(251, 'x');
    refusal("a name that has no room for its file's ending", "", "@ " + longName,
            longName + "/" + longName + ".yslib: File name too long");
    refusal("the root", "", "@ /", "/: has no name for a project");
    refusal("a name that Windows has not", "", "@ con",
            "con: Windows keeps this name for a device");
    refusal("a name with a sign that Windows has not", "", "@ 'a:b'",
            "a:b: Windows allows none of < > : \" | ? * \\ in a name");
    refusal("a name that holds what leads out", "", "@ 'a\\b'",
            "a\\b: Windows allows none of < > : \" | ? * \\ in a name");
    refusal("in a folder of somebody else's", "chmod 755 .; mkdir lines; chmod 555 lines",
            "$user @ lines/line4", "lines/line4: cannot write there");
    refusal("two projects", "", "@ a b",
            "project new takes DIR; see quorvanectl project new --help");
    refusal("no name for people", "", "@ a --display-name ''",
            "--display-name is given an empty value; see quorvanectl project new --help");
}

void ProjectNewTest::whatCannotBeMade() {
    support::expectRefusal(Desk(command));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectNewTest)
#include "project_new_test.moc"
