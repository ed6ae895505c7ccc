// doctor: each thing that is wrong with a line PC is told with its remedy, and nothing is changed.
#include "desk.h"
#include "publisher.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;
using support::Desk;
using support::FileTree;
using support::refusal;

namespace {

const QString command = "quorvanectl doctor";
const QString seeHelp = "; see quorvanectl doctor --help";
const QString healthy = "@ --offline --install pc --data data --project line/line.yslib";

// A line PC on which nothing is wrong.
FileTree linePc() {
    return {{"pc/bin/config/update.pub", support::publisher::publicPem()},
            {"pc/bin/config/release_version.json", R"({"runtimePackageVersion": "1.2.3"})"},
            {"pc/bin/LineRunner.exe", "program"},
            {"pc/bin/plugins/CoreOperators.dll", "plug-in"},
            {"pc/bin/config/FunctionLib.ini", "1,foo,0,\n"},
            {"private.pem", support::publisher::privatePem()},
            {"data/launcher.log", ""},
            {"line/line.yslib", R"({"schemaVersion": 1, "project": {"name": "line",
"displayName": "Line", "createdAt": "now"}, "scripts": [{"id": "m", "path": "m.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "m"}}})"},
            {"line/m.ys", "foo()\n"},
            {"line/images/1.png", "0123456789"}};
}

// "Error runtime" and so on, in their order.
QStringList kindsIn(const QString &out) {
    QStringList kinds;
    for (const QString &line : out.split('\n')) {
        if (line.startsWith("Error ") || line.startsWith("Warning "))
            kinds.append(line.section(':', 0, 0));
    }
    return kinds;
}

} // namespace

class DoctorMistakesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aHealthyLine();
    void whatIsWrong_data();
    void whatIsWrong();
    void refusals_data();
    void refusals();
    void theRememberedProject();
    void inJson();
    void aWarningInJson();
    void whatIsMounted();
    void theRoomIsToldWithoutAProjectToo();
    void aFullDisk();
};

void DoctorMistakesTest::aHealthyLine() {
    const Desk desk(command, linePc());
    const Answer answer = desk.type(healthy);
    QCOMPARE(answer.out, QString("editor: unknown\nlauncher: unknown\npythonTools: unknown\n"
                                 "runtime: 1.2.3\nproject: %1/line/line.yslib\n"
                                 "Nothing was found that would go wrong.\n")
                             .arg(desk.path()));
    QCOMPARE(answer.status, 0);
}

void DoctorMistakesTest::whatIsWrong_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("kinds");
    QTest::addColumn<QString>("told"); // a part of it
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &kinds, const QString &told) {
        if (!line.contains("$user") || support::hasOrdinaryUser())
            QTest::newRow(name) << arrangement << line << kinds << told;
    };
    const QString everybody = "find . -type d -exec chmod 777 {} +; chmod -R a+rw .; ";
    const QString asUser = "$user " + healthy;
    row("no key", "rm pc/bin/config/update.pub", healthy, "Error update-key",
        "update.pub: no such file\n    Repair the installation: no update can be verified.\n");
    row("a key that is none", "echo none >pc/bin/config/update.pub", healthy, "Error update-key",
        "update.pub: ");
    row("no runtime", "rm pc/bin/LineRunner.exe", healthy, "Error runtime",
        "@here/pc/bin/LineRunner.exe: no such file\n    Run the installer of the Runtime.\n");
    row("the private key in place of the other", "cp private.pem pc/bin/config/update.pub", healthy,
        "Error update-key", "@here/pc/bin/config/update.pub: ");
    row("a folder for the key", "rm pc/bin/config/update.pub; mkdir pc/bin/config/update.pub",
        healthy, "Error update-key", "update.pub: is a folder\n");
    row("a folder for the runtime", "rm pc/bin/LineRunner.exe; mkdir pc/bin/LineRunner.exe",
        healthy, "Error runtime", "@here/pc/bin/LineRunner.exe: is a folder\n");
    row("an installation with nothing in it", "rm -r pc/bin/*; mkdir pc/bin/config", healthy,
        "Error update-key, Error runtime, Error core-plugin, Warning function-library, Warning "
        "version",
        "no such file\n    Repair the installation: scripts are read without the words of their "
        "language.\n");
    row("a function library that is a folder",
        "rm pc/bin/config/FunctionLib.ini; mkdir pc/bin/config/FunctionLib.ini", healthy,
        "Warning function-library", "FunctionLib.ini: is a folder\n");
    row("versions that are damaged", "echo '{' >pc/bin/config/release_version.json", healthy,
        "Warning version", "runtime: unknown\n");
    row("no core plug-in", "rm -r pc/bin/plugins", healthy, "Error core-plugin",
        "Core plugin missing: @here/pc/bin/plugins/CoreOperators.dll\n    Repair the runtime's "
        "installation.\n");
    row("no function library", "rm pc/bin/config/FunctionLib.ini", healthy,
        "Warning function-library", "FunctionLib.ini: no such file\n    Repair the installation: ");
    row("no version of the runtime", "rm pc/bin/config/release_version.json", healthy,
        "Warning version",
        "the version of the runtime is not known\n    Run the installer of the Runtime: it records "
        "its "
        "version.\n");
    row("a clock that is behind the log", "touch -d 2099-01-02 data/launcher.log", healthy,
        "Error clock", "by the clock, and @here/data/launcher.log was written at 2099-01-02T");
    row("one that is behind the settings", "touch -d 2099-01-02 data/Quorvane.db", healthy,
        "Error clock",
        "@here/data/Quorvane.db was written at 2099-01-02T00:00:00\n    Set the clock: with a "
        "wrong "
        "one certificates are refused, and the log is hard to read.\n");
    row("one that is behind the installation", "touch -d 2099-01-02 pc/bin/config/update.pub",
        healthy, "Error clock", "@here/pc/bin/config/update.pub was written at 2099-01-02T");
    row("one that is behind both, told once",
        "touch -d 2099-01-02 data/launcher.log pc/bin/config/update.pub", healthy, "Error clock",
        "@here/data/launcher.log was");
    row("a clock that is hours behind it, as of another zone",
        "touch -d '20 hours' data/launcher.log", healthy, "", "Nothing was found");
    row("a host that does not answer", "",
        "@ --url http://127.0.0.1:1/m.json --install pc --data data --project line/line.yslib",
        "Warning update-host",
        "http://127.0.0.1:1/m.json: Connection refused URL: http://127.0.0.1:1/m.json\n    Check "
        "cable, proxy, firewall; update from a stick meanwhile.\n");
    row("a log that is a pipe", "rm data/launcher.log; mkfifo data/launcher.log", healthy,
        "Warning log", "@here/data/launcher.log: is no file that this user may write\n");
    row("a log that is a folder", "rm data/launcher.log; mkdir data/launcher.log", healthy,
        "Warning log", "@here/data/launcher.log: is no file that this user may write\n");
    row("a log that root wrote", everybody + "chmod 444 data/launcher.log", asUser, "Warning log",
        "launcher.log: is no file that this user may write\n    Find out who put it there: lines "
        "of "
        "the log are lost.\n");
    row("no log yet", "rm data/launcher.log", healthy, "", "Nothing was found");
    row("settings with statements of their own",
        "python3 -c \"import sqlite3; d = sqlite3.connect('data/Quorvane.db'); "
        "d.execute('CREATE VIEW app_settings AS SELECT 1 AS key, 2 AS value'); d.commit()\"",
        healthy, "Warning settings",
        "@here/data/Quorvane.db: holds a view or a trigger for the settings\n    Find the program "
        "that holds or changed it: the launcher goes on without its settings.\n");
    row("a launcher that never ran", "",
        "XDG_DATA_HOME=$PWD/none @ --offline --install pc "
        "--project line/line.yslib",
        "Warning data-folder",
        "@here/none/Quorvane: no such folder\n    Start the launcher once, as the line's user.\n");
    row("settings that are a folder", "mkdir data/Quorvane.db", healthy, "Warning settings",
        "@here/data/Quorvane.db: ");
    row("an unpacked package", "mkdir -p data/update/temp/apply_20261120_060000", healthy,
        "Warning left-over",
        "@here/data/update/temp/apply_20261120_060000: is left of an update that runs or was "
        "broken off\n");
    row("more left-overs than help",
        "for i in 0 1 2 3 4 5; do mkdir -p data/update/temp/apply_20261120_06000$i; done", healthy,
        "Warning left-over, Warning left-over, Warning left-over, Warning left-over, Warning "
        "left-over",
        "apply_20261120_060004: is left");
    row("other folders beside them",
        "mkdir -p data/update/temp/mine data/update/temp/apply_2026 data/update/backup/line_1",
        healthy, "", "Nothing was found");
    row("a backup", "mkdir -p data/update/backup/line_20261120_060000", healthy,
        "Warning left-over",
        "line_20261120_060000: is left of an update that runs or was broken off\n    Close the "
        "launcher, then run quorvanectl project recover with the project's file.\n");
    row("a backup that was dealt with",
        "mkdir -p data/update/backup/line_20261120_060000.recovered", healthy, "",
        "Nothing was found");
    row("no project", "", "@ --offline --install pc --data data", "Warning project",
        "no project is selected\n");
    row("a folder for the project", "", QString(healthy).replace("/line.yslib", ""),
        "Error project",
        "@here/line: is a folder\n    Choose another; after an update, quorvanectl "
        "project recover.\n");
    row("a pipe for it, which is not waited for", "rm line/line.yslib; mkfifo line/line.yslib",
        healthy, "Error project", "@here/line/line.yslib: is no plain file\n");
    row("a link to a project that was moved",
        "mv line/line.yslib line/x; ln -s none line/line.yslib", healthy, "Error project",
        "@here/line/line.yslib: no such file\n");
    row("a script for it", "", QString(healthy).replace("line.yslib", "m.ys"),
        "Error project-check",
        "@here/line/m.ys: the launcher does not start it, by 1 error; the first: [Error] yslib: "
        "JSON "
        "无效：illegal value\n");
    row("of two projects the last", "", healthy + " --project none.yslib", "Error project",
        "@here/none.yslib: no such file\n");
    row("a name that steers a terminal", "mv line \"$(printf 'a\\033[2J')\"",
        QString(healthy).replace("line/", "\"$(printf 'a\\033[2J')\"/"), "",
        "project: @here/a\\x1b[2J/line.yslib\n");
    row("a project that is gone", "rm -r line", healthy, "Error project",
        "@here/line/line.yslib: no such file\n");
    row("a project that the launcher does not start", "rm line/m.ys", healthy,
        "Error project-check",
        "@here/line/line.yslib: the launcher does not start it, by 1 error; the first: [Error] "
        "scripts[0].path: 引用的文件不存在：m.ys\n    Choose another project, ");
    row("one with several errors", "echo '{\"schemaVersion\": 1}' >line/line.yslib; rm line/m.ys",
        healthy, "Error project-check",
        "by 3 errors; the first: [Error] project: 缺少 project 对象\n    Choose another project, "
        "and "
        "give its engineer what quorvanectl project check shows; after an update, quorvanectl "
        "project recover.\n");
    row("warnings about a project", "echo >line/other.ys", healthy, "", "Nothing was found");
    row("a project beside the launcher's folder", "cp -r line/. pc; rm -r line; ln -s pc line",
        healthy, "Error project-folder",
        "@here/line: is a whole volume, or holds the launcher or its data\n    Move the project "
        "into a folder of its own and choose it there: every update of it fails.\n");
    row("one with the data folder in it", "mkdir line/data",
        QString(healthy).replace("--data data", "--data line/data"), "Error project-folder",
        "@here/line: is a whole volume, or holds the launcher or its data\n");
    row("a data folder that may not be written", everybody + "chmod 555 data", asUser,
        "Error data-folder",
        "@here/data: this user may not write there\n    Give the line's user the right to write "
        "there: "
        "without it nothing is logged or remembered, and no update can be unpacked.\n");
    row("a folder of the project that may not be emptied", everybody + "chmod 555 line/images",
        asUser, "Error project-folder",
        "@here/line/images: nothing may be taken out of this folder\n");
    row("a file of the project that may not be read", everybody + "chmod 000 line/images/1.png",
        asUser, "Error project-folder", "@here/line/images/1.png: it may not be read\n");
    row("a folder of the project that may not be listed", everybody + "chmod 333 line/images",
        asUser, "Error project-folder",
        "@here/line/images: it cannot be listed, or its name is no UTF-8\n    Give the line's user "
        "the right to it, or take it out of the project: an update fails with it.\n");
    row("more of them than help",
        everybody + "cd line/images; for i in 2 3 4 5 6 7; do cp 1.png $i.png; done; chmod 000 *",
        asUser,
        "Error project-folder, Error project-folder, Error project-folder, Error project-folder, "
        "Error project-folder",
        ".png: it may not be read\n");
    row("a link out of the project, which is copied as one",
        everybody + "mkdir other; chmod 755 other; ln -s ../../other line/images/link", asUser, "",
        "Nothing was found");
    row("a project file that may not be read", everybody + "chmod 000 line/line.yslib", asUser,
        "Error project-check, Error project-folder", "@here/line/line.yslib: it may not be read\n");
    row("a hidden one, which is not copied",
        everybody + "mv line/images/1.png line/.x; chmod 000 line/.x", asUser, "",
        "Nothing was found");
    row("a project in a folder that may not be changed", everybody + "chmod 555 .", asUser,
        "Error project-folder", "@here: nothing may be taken out of this folder\n");
    row("a name that is no UTF-8", ": >\"$(printf 'line/a\\377')\"", healthy,
        "Error project-folder", ": it cannot be listed, or its name is no UTF-8\n");
}

void DoctorMistakesTest::whatIsWrong() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, kinds);
    QFETCH(QString, told);
    const Desk desk(command, linePc());
    desk.arrange(arrangement);
    const FileTree before = desk.tree();
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    QCOMPARE(kindsIn(answer.out).join(", "), kinds);
    QVERIFY2(answer.out.contains(told.replace("@here", desk.path())), qPrintable(answer.out));
    QCOMPARE(answer.status, kinds.contains("Error") ? 1 : 0);
    QCOMPARE(support::changes(before, desk.tree()), QStringList());
    desk.arrange("chmod 755 . data line line/*/ 2>/dev/null; rm -rf line"); // Qt sees no such name
}

void DoctorMistakesTest::refusals_data() {
    support::addRefusals();
    const QString noAddress = ": not an address that begins with http:// or https://";
    refusal("no installation", "", "@ --offline --install none",
            "none: no installation is there: it has no folder bin/config or config");
    refusal("a data folder that is missing", "", "@ --offline --install pc --data none",
            "none: no such folder");
    refusal("an address that is none", "", "@ --install pc --data data --url here",
            "here" + noAddress);
    refusal("a host without http", "", "@ --install pc --data data --url localhost:1/m.json",
            "localhost:1/m.json" + noAddress);
    refusal("a file for an address", "", "@ --install pc --data data --url file:///etc/hosts",
            "file:///etc/hosts" + noAddress);
    refusal("a path of Windows for it", "", "@ --install pc --data data --url 'C:\\m.json'",
            "C:\\m.json" + noAddress);
    refusal("an address without a host", "", "@ --install pc --data data --url http:///m.json",
            "http:///m.json" + noAddress);
    refusal("an address that is wrong, although the network is left alone", "",
            "@ --offline --install pc --data data --url ftp://h/m.json",
            "ftp://h/m.json" + noAddress);
    refusal("a file for the data folder", "", "@ --offline --install pc --data line/m.ys",
            "line/m.ys: no such folder");
    refusal("the data folder for the installation", "", "@ --offline --install data",
            "data: no installation is there: it has no folder bin/config or config");
    refusal("a variable of a script that is not set", "",
            "@ --offline --install pc --data data --project \"$LINE\"",
            "--project is given an empty value" + seeHelp);
    refusal("a project without its option", "", "@ line/line.yslib",
            "doctor takes no arguments" + seeHelp);
    refusal("a format that it has not", "", "@ --format sarif",
            "no format 'sarif'; there are: text, json");
}

void DoctorMistakesTest::refusals() {
    support::expectRefusal(Desk(command, linePc()));
}

void DoctorMistakesTest::theRememberedProject() {
    const Desk desk(command, linePc());
    desk.arrange("python3 -c \"import sqlite3; d = sqlite3.connect('data/Quorvane.db'); "
                 "d.execute('CREATE TABLE app_settings (key TEXT PRIMARY KEY, value TEXT)'); "
                 "d.execute('INSERT INTO app_settings VALUES(?, ?)', ('default_project_path', "
                 "'$PWD/line/line.yslib')); d.commit()\"");
    const Answer answer = desk.type("@ --offline --install pc --data data");
    QVERIFY2(answer.out.contains("project: " + desk.path("line/line.yslib\n")),
             qPrintable(answer.out));
    QCOMPARE(answer.status, 0);
}

void DoctorMistakesTest::inJson() {
    const Desk desk(command, linePc());
    desk.arrange("rm pc/bin/LineRunner.exe");
    const QJsonObject json =
        QJsonDocument::fromJson(desk.type(healthy + " --format json").out.toUtf8()).object();
    QCOMPARE(json["findings"].toArray(),
             (QJsonArray{QJsonObject{{"kind", "runtime"},
                                     {"severity", 0},
                                     {"message", desk.path("pc/bin/LineRunner.exe: no such file")},
                                     {"remedy", "Run the installer of the Runtime."}}}));
    QCOMPARE(json["versions"].toObject()["runtime"].toString(), QString("1.2.3"));
    QCOMPARE(json["project"].toString(), desk.path("line/line.yslib"));
    const int held = desk.read("line/line.yslib").size() + desk.read("line/m.ys").size() + 10;
    QCOMPARE(json["neededBytes"].toInt(), 2 * held);
}

// A warning, and what is empty for want of a project.
void DoctorMistakesTest::aWarningInJson() {
    const Desk desk(command, linePc());
    const Answer answer = desk.type("@ --offline --install pc --data data --format json");
    const QJsonObject json = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    QCOMPARE(json.keys(),
             (QStringList{"data", "findings", "freeBytes", "neededBytes", "project", "versions"}));
    QCOMPARE(json["findings"].toArray(),
             (QJsonArray{QJsonObject{
                 {"kind", "project"},
                 {"severity", 1},
                 {"message", "no project is selected"},
                 {"remedy", "Choose one in the launcher, or name it with --project."}}}));
    QCOMPARE(json["project"].toString(), QString());
    QCOMPARE(json["data"].toString(), desk.path("data"));
    QCOMPARE(
        json["versions"].toObject(),
        (QJsonObject{{"editor", ""}, {"launcher", ""}, {"pythonTools", ""}, {"runtime", "1.2.3"}}));
    QCOMPARE(answer.status, 0);
}

void DoctorMistakesTest::whatIsMounted() {
    if (!support::canMountPrivately())
        QSKIP("no private mounts on this system");
    const auto told = [](const QString &mounted) {
        const Desk desk(command, linePc());
        desk.arrange("{ echo 'mount -t tmpfs none " + mounted + "'; echo '" +
                     QString(healthy).replace('@', command) + "'; } >run.sh");
        const Answer answer = desk.type(QLatin1String(support::privately) + "sh run.sh");
        return answer.out.section('\n', 5).replace(desk.path(), "@here") +
               QString::number(answer.status);
    };
    QCOMPARE(told("line/images"),
             QString("Error project-folder: @here/line/images: a volume is mounted on it\n    Give "
                     "the line's user the right to it, or take it out of the project: an update "
                     "fails with it.\n1"));
    QCOMPARE(told("/etc/ssl/certs"),
             QString("Error certificates: no certificate authorities are known\n    Install the "
                     "system's certificates: without them no update comes from the network.\n1"));
}

void DoctorMistakesTest::theRoomIsToldWithoutAProjectToo() {
    const Desk desk(command, linePc());
    const QJsonObject json =
        QJsonDocument::fromJson(
            desk.type("@ --offline --install pc --data data --format json").out.toUtf8())
            .object();
    QVERIFY(json["freeBytes"].toDouble() > 0);
    QCOMPARE(json["neededBytes"].toInt(), 0);
}

void DoctorMistakesTest::aFullDisk() {
    if (!support::canMountPrivately())
        QSKIP("no private mounts on this system");
    const Desk desk(command, linePc());
    desk.arrange("mkdir full; head -c 3000000 /dev/zero >line/large; { echo 'mount -t tmpfs -o "
                 "size=4M none full'; echo 'quorvanectl doctor --offline --install pc --data full "
                 "--project line/line.yslib'; } >run.sh");
    const Answer answer = desk.type(QLatin1String(support::privately) + "sh run.sh");
    QCOMPARE(kindsIn(answer.out), QStringList("Error space"));
    QVERIFY2(
        answer.out.contains(desk.path("full: 4 MiB are free, and an update of the project "
                                      "needs 6 MiB\n    Make room: an update that fills the disk "
                                      "may leave the project in pieces.\n")),
        qPrintable(answer.out));
    QCOMPARE(answer.status, 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, DoctorMistakesTest)
#include "doctor_mistakes_test.moc"
