// Whatever lies where a script, a project or an import should: nothing is waited for, and nothing that is
// too large is read.
#include "quorvanectl/analysis/workspace.h"

#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QFile>

#include <sys/stat.h>

using support::ProjectFolder;

namespace {

const char *const kinds[] = {"pipe", "device", "folder", "large"};

// One of these at `name`, which nobody can read to its end.
void put(const ProjectFolder &folder, const QString &name, const QString &kind) {
    const QString path = folder.path(name);
    bool isMade = true;
    if (kind == "pipe")
        isMade = ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
    else if (kind == "device")
        isMade = QFile::link("/dev/zero", path);
    else if (kind == "folder")
        (void)folder.write(name + "/a.ys", "$");
    else
        (void)folder.writeZeros(name, qint64(1) << 30);
    if (!isMade)
        qFatal("cannot make %s", qPrintable(path));
}

QStringList messagesIn(const ctl::FindingsByFile &findings) {
    QStringList messages;
    for (const QVector<ctl::Finding> &file : findings) {
        for (const ctl::Finding &finding : file)
            messages.append(finding.message);
    }
    return messages;
}

} // namespace

class NeverBlocksTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void atAScript_data();
    void atAScript();
    void atAProject_data();
    void atAProject();
    void aFolderThatLeadsBackToItself();
    void aTextAboveTheLimit();
};

void NeverBlocksTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void NeverBlocksTest::atAScript_data() {
    QTest::addColumn<QString>("kind");
    for (const char *kind : kinds)
        QTest::newRow(kind) << QString(kind);
}

// Where a listed script is, and where an import leads.
void NeverBlocksTest::atAScript() {
    QFETCH(QString, kind);
    const ProjectFolder folder;
    put(folder, "b.ys", kind);
    (void)folder.write("line.yslib", R"({"schemaVersion": 1, "project": {"name": "n",
"displayName": "d", "createdAt": "c"}, "scripts": [{"id": "a", "path": "a.ys", "role": "main"},
{"id": "b", "path": "b.ys", "role": "sub"}], "tasks": {"main": {"entryScriptId": "a"}}})");
    (void)folder.write("a.ys", "");
    const QString script = folder.path("a.ys");
    ctl::Workspace workspace;
    workspace.open(script, "import \"b.ys\";\nint n;\n");
    QStringList missing;
    if (kind == "folder")
        missing = QStringList{"磁盘上的脚本未登记到 scripts[]：b.ys/a.ys"};
    QCOMPARE(messagesIn(workspace.findings()), missing);
    QCOMPARE(workspace.proposalsAt(script, 15).list.first().label, QString("n"));
    QVERIFY(workspace.recordAt(script, 19));
}

void NeverBlocksTest::atAProject_data() {
    atAScript_data();
}

// Only a file makes a folder a project's; one that is too large says so.
void NeverBlocksTest::atAProject() {
    QFETCH(QString, kind);
    const ProjectFolder folder;
    put(folder, "line.yslib", kind);
    ctl::Workspace workspace;
    const QString script = folder.path("a.ys");
    workspace.open(script, "");
    const QString project = folder.path("line.yslib");
    QStringList expected;
    if (kind == "large")
        expected = QStringList{project + ": is larger than 64 MiB"};
    QCOMPARE(messagesIn(workspace.findings()), expected);
    QCOMPARE(workspace.projectOf(script), kind == "large" ? project : QString());
}

void NeverBlocksTest::aFolderThatLeadsBackToItself() {
    const ProjectFolder folder;
    (void)folder.write("line.yslib", "{}");
    (void)folder.write("sub/b.ys", "");
    QVERIFY(QFile::link(folder.path(""), folder.path("sub/back")));
    ctl::Workspace workspace;
    const QString script = folder.path("a.ys");
    workspace.open(script, "import \"");
    QStringList paths;
    for (const ctl::Proposal &proposal : workspace.proposalsAt(script, 8).list)
        paths.append(proposal.label);
    QCOMPARE(paths, QStringList("sub/b.ys"));
}

// Not looked into at all: neither what it declares nor where one stands in it.
void NeverBlocksTest::aTextAboveTheLimit() {
    const ProjectFolder folder;
    ctl::Workspace workspace;
    const QString script = folder.path("a.ys");
    workspace.open(script, "int n;\n" + QString(ctl::largestScript, ' '));
    QCOMPARE(messagesIn(workspace.findings()),
             QStringList("the script is larger than 16 MiB and is not looked into"));
    QVERIFY(workspace.proposalsAt(script, 7).list.isEmpty());
    QVERIFY(!workspace.recordAt(script, 4));
    QVERIFY(!workspace.callAt(script, 7));
    QVERIFY(workspace.symbolsOf(script)->names.isEmpty());
    QVERIFY(workspace.wordsOf(script).isEmpty());
    QVERIFY(workspace.foldsOf(script).isEmpty());
    QVERIFY(workspace.definitionsAt(script, 4).isEmpty());
    QVERIFY(workspace.referencesAt(script, 4).isEmpty());
    // Once it fits, all of it is.
    workspace.change(script, "int n;\n" + QString(int(ctl::largestScript) - 7, ' '));
    QVERIFY(workspace.findings().isEmpty());
    QCOMPARE(workspace.wordsOf(script).size(), 2);
    QCOMPARE(workspace.definitionsAt(script, 4).size(), 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, NeverBlocksTest)

#include "never_blocks_test.moc"
