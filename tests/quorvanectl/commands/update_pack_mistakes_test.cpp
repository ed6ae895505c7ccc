// update pack in the hands of a publisher: another folder than the project's, a place that is taken, and
// a project that nobody should get.
#include "desk.h"
#include "small_project.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QCryptographicHash>

using support::Answer;
using support::Desk;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl update pack";
const QString seeHelp = "; see quorvanectl update pack --help";
const QString toOut = " --version 1.2.0 --out out";
const QString package = "产线三-1.2.0.zip";

support::FileTree publishersFiles() {
    support::FileTree files{{"out/", ""}, {"m.json", "{}"}};
    const support::FileTree project = support::smallProject();
    for (auto file = project.begin(); file != project.end(); ++file)
        files.insert("line3/" + file.key(), file.value());
    return files;
}

} // namespace

class UpdatePackTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsNotPacked_data();
    void whatIsNotPacked();
    void wrongWords_data();
    void wrongWords();
    void aProjectThatNobodyShouldGet_data();
    void aProjectThatNobodyShouldGet();
    void whereThePackageLies_data();
    void whereThePackageLies();
};

void UpdatePackTest::whatIsNotPacked_data() {
    support::addRefusals();
    refusal("the project file in place of its folder", "", "@ line3/line3.yslib" + toOut,
            "line3/line3.yslib: is no folder");
    refusal("a folder that is missing", "", "@ line4" + toOut, "line4: is no folder");
    refusal("a folder below one whose name is no UTF-8",
            "mkdir $(printf 'd\\377'); mv line3 $(printf 'd\\377')",
            "cd d* && @ line3 --version 1.2.0 --out ../out",
            "line3: a name on the way there is no UTF-8");
    refusal("into the project itself", "", "@ line3 --version 1.2.0 --out line3",
            "line3: lies in the project's folder");
    refusal("into a folder of the project that is not there yet", "",
            "@ line3/. --version 1.2.0 --out line3/packages/new --force",
            "line3/packages/new: lies in the project's folder");
    refusal("into the project by another name", "ln -s line3/scripts link",
            "@ line3 --version 1.2.0 --out link", "link: lies in the project's folder");
    refusal("an empty name", "", "@ ''" + toOut, ": is no folder");
    refusal("a pipe", "mkfifo p", "@ p" + toOut, "p: is no folder");
    refusal("a package of this version is there", "echo old >out/" + package, "@ line3" + toOut,
            "out/" + package + ": exists; --force overwrites it");
    refusal("a folder of the package's name is there, not even by force", "mkdir out/" + package,
            "@ line3 --force" + toOut, "out/" + package + ": is a folder");
    refusal("a file in place of the folder to write to", "", "@ line3 --version 1.2.0 --out m.json",
            "m.json: Not a directory");
    refusal("a folder to write to of somebody else's", "chmod 755 . out", "$user @ line3" + toOut,
            "out: Permission denied");
    refusal("a library that is missing", "", "@ line3 --library none.ini" + toOut,
            "none.ini: no such file");
    refusal("a library that is a folder", "", "@ line3 --library line3" + toOut,
            "line3: is a folder");
}

void UpdatePackTest::whatIsNotPacked() {
    support::expectRefusal(Desk(command, publishersFiles()));
}

void UpdatePackTest::wrongWords_data() {
    support::addRefusals();
    const auto version = [](const char *name, const QString &text) {
        refusal(name, "", "@ line3 --out out --version '" + text + "'",
                "--version " + text + ": must be three or four numbers such as 1.2.0");
    };
    version("a version with a letter in front", "v1.2.0");
    version("a version with a blank in front", " 1.2.0");
    version("a version in the digits of a Chinese keyboard", "１.２.０");
    version("a version with commas", "1,2,0");
    refusal("of two versions the last, which is none", "",
            "@ line3 --version 1.2.0 --version new --out out",
            "--version new: must be three or four numbers such as 1.2.0");
    refusal("no value behind --version", "", "@ line3 --out out --version",
            "Missing value after '--version'" + seeHelp);
    refusal("an empty name for the folder to write to", "", "@ line3 --version 1.2.0 --out ''",
            "--out is given an empty value" + seeHelp);
    refusal("two projects", "", "@ line3 line3" + toOut, "update pack takes PROJECT_DIR" + seeHelp);
    refusal("a format, which it has none of", "", "@ line3 --format json" + toOut,
            "Unknown option 'format'" + seeHelp);
    refusal("of two faults the version's is told", "", "@ line4 --version new",
            "--version new: must be three or four numbers such as 1.2.0");
}

void UpdatePackTest::wrongWords() {
    support::expectRefusal(Desk(command, publishersFiles()));
}

// Findings on standard output, and nothing in the folder to write to.
void UpdatePackTest::aProjectThatNobodyShouldGet_data() {
    support::addOutcomes();
    const QString line3 = "@ line3" + toOut;
    outcome("an empty folder", "mkdir e", "@ e" + toOut,
            {1, "no project file (.yslib) lies here\n"});
    outcome("the folder of all projects", "mkdir p; mv line3 p", "@ p" + toOut,
            {1, "line3/line3.yslib: the project file must lie at the top\n"});
    outcome("a copy of the project file beside it", "cp line3/line3.yslib line3/Copy.YSLIB", line3,
            {1, "several project files, of which the launcher takes any: Copy.YSLIB, "
                "line3.yslib\n"});
    outcome("an empty project file", ": >line3/line3.yslib", line3,
            {1, "[Error] yslib: JSON 无效：illegal value\n"});
    outcome("a project file in UTF-16",
            "cd line3; iconv -t UTF-16 line3.yslib >u; mv u line3.yslib", line3,
            {1, "[Error] yslib: JSON 无效：illegal value\n"});
    outcome("a project file with a comma too many", "echo '{\"a\": 1,}' >line3/line3.yslib", line3,
            {1, "[Error] yslib: JSON 无效：object is missing after a comma\n"});
    outcome("a project without a name", R"(sed -i 's/"name": "产线三"/"name": ""/' line3/*.yslib)",
            line3, {1, "[Error] project.name: 缺少 project.name\n"});
    outcome("a link in it", "ln -s ../m.json line3/m.json", line3, {1, "m.json: it is a link\n"});
    outcome("a pipe in it", "mkfifo line3/pipe", line3,
            {1, "pipe: it is neither a file nor a folder\n"});
    outcome("a file of somebody else's in it",
            "chmod 755 .; chmod 777 out; chmod 000 line3/scripts/main.ys", "$user " + line3,
            {1, "scripts/main.ys: it cannot be read\n"});
    outcome("a folder of somebody else's in it",
            "chmod 755 .; chmod 777 out; mkdir line3/x; chmod 000 line3/x", "$user " + line3,
            {1, "x: it cannot be read\n"});
    outcome("all faults of its names at once, control characters spelled out",
            "cd line3; : >aux.txt; : >'b\x1b'; : >'c?d'", line3,
            {1, "aux.txt: Windows keeps this name for a device\n"
                "b\\x1b: it holds a control character\n"
                "c?d: Windows allows none of < > : \" | ? * \\ in a name\n"});
    outcome("an old package stays, by force too",
            "echo old >out/" + package + "; rm line3/scripts/main.ys", line3 + " --force",
            {1, "[Error] scripts[0].path: 引用的文件不存在：scripts/main.ys\n"});
}

void UpdatePackTest::aProjectThatNobodyShouldGet() {
    support::expectOutcome(Desk(command, publishersFiles()));
}

// Each row packs the same project: one line, one file, and that file is the package told.
void UpdatePackTest::whereThePackageLies_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("told");
    QTest::addColumn<QStringList>("changed");
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &told, const QStringList &changed) {
        QTest::newRow(name) << arrangement << line << told << changed;
    };
    const QStringList inOut{"+out/" + package};
    row("from the folder itself", "", "cd line3 && @ . --version 1.2.0 --out ../out",
        "../out/" + package, inOut);
    row("from one of its folders", "", "cd line3/scripts && @ .. --version 1.2.0 --out ../../out",
        "../../out/" + package, inOut);
    row("with slashes behind the names", "", "@ line3/ --version 1.2.0 --out out/",
        "out/" + package, inOut);
    row("through a link to the project", "ln -s line3 latest", "@ latest" + toOut, "out/" + package,
        inOut);
    row("in folders that are missing", "", "@ line3 --version 1.2.0 --out a/b", "a/b/" + package,
        {"+a/", "+a/b/", "+a/b/" + package});
    row("the package's name for the folder's", "", "@ line3 --version 1.2.0 --out line3.zip",
        "line3.zip/" + package, {"+line3.zip/", "+line3.zip/" + package});
    row("over an older one, by force", "echo old >out/" + package, "@ line3 --force" + toOut,
        "out/" + package, {"~out/" + package});
    row("of two versions the last counts", "", "@ line3 --version 1.1.0 --version 1.2.0 --out out",
        "out/" + package, inOut);
    row("a project file behind a byte-order mark",
        R"(cd line3; (printf '\357\273\277'; cat line3.yslib) >b; mv b line3.yslib)",
        "@ line3" + toOut, "out/" + package, inOut);
    row("a folder with a blank and Chinese", "mv line3 '产 线'",
        "@ '产 线' --version 1.2.0 --out '发 布'", "发 布/" + package,
        {"+发 布/", "+发 布/" + package});
    row("a folder that begins with a dash, behind two dashes", "mv line3 ./-line3",
        "@ --version 1.2.0 --out out -- -line3", "out/" + package, inOut);
}

void UpdatePackTest::whereThePackageLies() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, told);
    const Desk desk(command, publishersFiles());
    desk.arrange(arrangement);
    const support::FileTree before = desk.tree();
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    const support::FileTree after = desk.tree();
    QTEST(support::changes(before, after), "changed");
    QByteArray zip;
    for (auto file = after.begin(); file != after.end(); ++file) {
        if (file.key().endsWith('/' + package))
            zip = file.value();
    }
    const QString sum = QCryptographicHash::hash(zip, QCryptographicHash::Sha256).toHex();
    QCOMPARE(answer.out, told + ": 4 files, SHA-256 " + sum + "\n");
    QCOMPARE(answer.status, 0);
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdatePackTest)
#include "update_pack_mistakes_test.moc"
