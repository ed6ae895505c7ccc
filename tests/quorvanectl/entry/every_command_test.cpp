// What holds for every command: its example runs, bad input is refused, nothing is overwritten.
#include "publisher.h"
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "run_tool.h"
#include "small_project.h"
#include "support/file_kinds.h"
#include "support/manifest_maker.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>

using support::Answer;
using support::ProjectFolder;

namespace {

// An update as a publisher's folder holds it, the key that it is signed with, and a line PC that
// trusts that key.
void layOutUpdate(const ProjectFolder &folder) {
    folder.write("private.pem", support::publisher::privatePem());
    folder.write("update.pub", support::publisher::publicPem());
    folder.write("line_pc/bin/config/update.pub", support::publisher::publicPem());
    QVERIFY(
        QFile::setPermissions(folder.path("private.pem"), QFile::ReadOwner | QFile::WriteOwner));

    folder.write("demo-1.2.0.zip", support::zipOf(support::smallProject()));

    const QString manifest = support::jsonText(
        {{"schemaVersion", 1},
         {"runtime", QJsonObject{{"setupUrl", "setup-1.2.0.exe"}, {"version", "1.2.0"}}}});
    const QByteArray signature = support::publisher::sign(canonicalManifestText(manifest).toUtf8());
    const QByteArray complete = ctl::withSignature(manifest, signature).toUtf8();
    folder.write("manifest.json", complete);
    folder.write("manifest.sig", signature);
    folder.write("site/manifest.json", complete);
    folder.write("site/setup-1.2.0.exe", "an installer");
    QVERIFY(QDir(folder.path("")).mkpath("stick"));
}

// Lays out the files that the examples name. Each example runs in a folder of its own.
void layOut(const ProjectFolder &folder) {
    folder.write("main.ys", "int a = 1;\n");
    folder.write("FunctionLib.ini", "1,foo,0,\n");
    folder.write("launcher.log",
                 "2026-11-20 06:00:00 [task check_1] started kind=check\n"
                 "2026-11-20 06:00:03 Online updates are not available (network request timed "
                 "out). You can update from a USB stick instead: QuorvanerUpdate/manifest.json.\n"
                 "2026-11-20 07:00:00 Target exited with code 1. Log: launcher.log\n");
    folder.write("demo/main.ys", "int a = 1;\n");
    folder.write("demo/demo.yslib", R"({"schemaVersion": 1,
"project": {"name": "demo", "displayName": "Demo", "createdAt": "2026-01-01"},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})");
    layOutUpdate(folder);
}

// Files of which no content is malformed, by command: any text is a script or a library, what is
// wrong in a script is a finding, and a damaged project file is what a recovery is for.
bool takesAnyText(const QString &title, const QString &file) {
    return title == "script check" || title == "project recover" || title == "library list" ||
           title == "language-server" || file == "main.ys";
}

QMap<QString, QByteArray> contentsOf(const ProjectFolder &folder) {
    QMap<QString, QByteArray> contents;
    QDirIterator entry(folder.path(""), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entry.hasNext()) {
        const QString name = QDir(folder.path("")).relativeFilePath(entry.next());
        contents.insert(name, folder.read(name));
    }
    return contents;
}

// The words of an example that name files of the folder.
QStringList filesOf(const QString &example) {
    const ProjectFolder folder;
    layOut(folder);
    QStringList files;
    for (const QString &word : example.split(' ')) {
        if (QFileInfo(folder.path(word)).isFile())
            files.append(word);
    }
    return files;
}

// All keys, at whatever depth. Keywords are data: they stand in `tokenKinds`.
QStringList keysOf(const QJsonValue &value) {
    QStringList keys;
    const QJsonArray array = value.toArray();
    for (const QJsonValue &element : array)
        keys.append(keysOf(element));
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        keys.append(member.key());
        if (member.key() != "tokenKinds")
            keys.append(keysOf(member.value()));
    }
    return keys;
}

void makeBad(const ProjectFolder &folder, const QString &file, const QString &fault) {
    QVERIFY(QFile::remove(folder.path(file)));
    if (fault == "a folder")
        QVERIFY(QDir(folder.path("")).mkdir(file));
    if (fault == "closed")
        QVERIFY(QFile(folder.write(file, "")).setPermissions(QFile::Permissions()));
    if (fault == "huge")
        folder.writeZeros(file, qint64(8) << 30);
    if (fault == "malformed")
        folder.write(file, "{ no");
}

} // namespace

class EveryCommandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theExampleRuns_data();
    void theExampleRuns();
    void theManPageNamesEveryKeyOfTheJson_data();
    void theManPageNamesEveryKeyOfTheJson();
    void nothingIsOverwritten_data();
    void nothingIsOverwritten();
    void aFullDiskLeavesNothingHalf_data();
    void aFullDiskLeavesNothingHalf();
    void hasAFileNamedAfterIt_data();
    void hasAFileNamedAfterIt();
    void badInputIsRefused_data();
    void badInputIsRefused();

private:
    void addCommands();
};

void EveryCommandTest::theExampleRuns_data() {
    addCommands();
}

void EveryCommandTest::theExampleRuns() {
    QFETCH(QString, example);
    QFETCH(QString, title);
    const ProjectFolder folder;
    layOut(folder);
    const Answer answer = support::runLine(example, folder.path(""));
    QVERIFY2(answer.status == ctl::Clean || answer.status == ctl::Findings, qPrintable(answer.err));
    // An editor that says nothing is told nothing.
    QCOMPARE(answer.out.isEmpty(), title == "language-server");
}

void EveryCommandTest::theManPageNamesEveryKeyOfTheJson_data() {
    addCommands();
}

void EveryCommandTest::theManPageNamesEveryKeyOfTheJson() {
    QFETCH(QString, example);
    const ProjectFolder folder;
    layOut(folder);
    const Answer answer = support::runLine(example + " --format json", folder.path(""));
    if (answer.err.contains("Unknown option 'format'") || answer.err.contains("no format 'json'") ||
        example.contains(" script t"))
        return; // a tree has the fields of its nodes, tokens have none
    const QJsonDocument json = QJsonDocument::fromJson(answer.out.toUtf8());
    QVERIFY2(json.isObject(), qPrintable(answer.out + answer.err));
    QFile man(QUORVANE_SOURCE_TREE "/tools/quorvanectl/quorvanectl.1");
    QVERIFY(man.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(man.readAll());
    for (const QString &key : keysOf(json.object()))
        QVERIFY2(page.contains('"' + key + '"'), qPrintable(key));
}

void EveryCommandTest::nothingIsOverwritten_data() {
    addCommands();
}

// A command that wrote files refuses to write them again, and does it with --force.
void EveryCommandTest::nothingIsOverwritten() {
    QFETCH(QString, example);
    const ProjectFolder folder;
    layOut(folder);
    const auto before = contentsOf(folder);
    (void)support::runLine(example, folder.path(""));
    const auto after = contentsOf(folder);
    for (auto file = before.begin(); file != before.end(); ++file)
        QCOMPARE(after.value(file.key()), file.value());
    if (after == before)
        return;
    const Answer again = support::runLine(example, folder.path(""));
    QCOMPARE(again.status, int(ctl::Refused));
    QStringList told = again.err.split('\n', Qt::SkipEmptyParts);
    // QFile gives no file of the example's to its owner alone on Windows.
    told.removeAll("quorvanectl: private.pem: others can read this private key");
    QCOMPARE(told.size(), 1);
    QCOMPARE(contentsOf(folder), after);
    const Answer forced = support::runLine(example + " --force", folder.path(""));
    if (!forced.err.contains("Unknown option 'force'"))
        QVERIFY2(forced.status != ctl::Refused, qPrintable(forced.err));
    else
        QCOMPARE(contentsOf(folder), after);
}

void EveryCommandTest::aFullDiskLeavesNothingHalf_data() {
    addCommands();
}

// A command that writes files says which one it could not write, and leaves none behind.
void EveryCommandTest::aFullDiskLeavesNothingHalf() {
    if (!support::canMountPrivately())
        QSKIP("no private mounts on this system");
    QFETCH(QString, example);
    const ProjectFolder folder;
    layOut(folder);
    const auto before = contentsOf(folder);
    const ProjectFolder other;
    layOut(other);
    (void)support::runLine(example, other.path(""));
    if (contentsOf(other).keys() == before.keys())
        return;
    folder.write("on_full_disk.sh",
                 "mount -t tmpfs -o size=8M none disk && cp -a [!d]* demo* disk\n"
                 "cd disk && cat /dev/zero 2>/dev/null >full\n"
                 "find . -type f >../before\n" +
                     example.toUtf8() +
                     "\n"
                     "status=$?\nfind . -type f >../after\nexit $status\n");
    QVERIFY(QDir(folder.path("")).mkdir("disk"));
    const Answer answer =
        support::runLine(QLatin1String(support::privately) + "sh on_full_disk.sh", folder.path(""));
    QCOMPARE(answer.status, int(ctl::Refused));
    QCOMPARE(answer.out, QString());
    const QString said = answer.err.section('\n', -2, -2); // progress may come before it
    QVERIFY2(said.startsWith("quorvanectl: "), qPrintable(answer.err));
    QVERIFY2(said.contains("No space left on device") || said.contains("cannot write"),
             qPrintable(said));
    QCOMPARE(folder.read("after"), folder.read("before"));
}

void EveryCommandTest::hasAFileNamedAfterIt_data() {
    addCommands();
}

void EveryCommandTest::hasAFileNamedAfterIt() {
    QFETCH(QString, title);
    const QString name = QString(title).replace(QRegularExpression("[ -]"), "_");
    QFile file(QString(QUORVANE_SOURCE_TREE "/tools/quorvanectl/commands/%1.cpp").arg(name));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    QVERIFY(file.readAll().startsWith("// quorvanectl " + title.toUtf8()));
}

void EveryCommandTest::badInputIsRefused_data() {
    QTest::addColumn<QString>("example");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("fault");

    for (const ctl::Command &command : ctl::allCommands()) {
        const QString title = ctl::titleOf(command);
        for (const QString &file : filesOf(command.example)) {
            QStringList faults{"missing"};
            // The same reader refuses them under Wine, where a start takes long: file_access.
            if (!support::onWindows)
                faults.append({"a folder", "huge"});
            if (support::permissionsKeepOut())
                faults.append("closed");
            if (!takesAnyText(title, file))
                faults.append("malformed");
            for (const QString &fault : faults)
                QTest::newRow(qPrintable(title + ": " + file + " is " + fault))
                    << command.example << file << fault;
        }
    }
}

void EveryCommandTest::badInputIsRefused() {
    QFETCH(QString, example);
    QFETCH(QString, file);
    QFETCH(QString, fault);
    const ProjectFolder folder;
    layOut(folder);
    makeBad(folder, file, fault);
    const auto before = contentsOf(folder).keys();
    const Answer answer = support::runLine(example, folder.path(""));
    QCOMPARE(answer.status, int(ctl::Refused));
    QCOMPARE(answer.out, QString());
    QVERIFY2(answer.err.count('\n') == 1, qPrintable(answer.err));
    QVERIFY2(answer.err.startsWith("quorvanectl: ") && answer.err.contains(file),
             qPrintable(answer.err));
    QCOMPARE(contentsOf(folder).keys(), before);
}

void EveryCommandTest::addCommands() {
    QTest::addColumn<QString>("example");
    QTest::addColumn<QString>("title");
    for (const ctl::Command &command : ctl::allCommands())
        QTest::newRow(qPrintable(ctl::titleOf(command)))
            << command.example << ctl::titleOf(command);
}

QUORVANE_TEST_MAIN(QCoreApplication, EveryCommandTest)
#include "every_command_test.moc"
