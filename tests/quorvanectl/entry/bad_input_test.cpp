// What holds for every command: a file that it cannot read is refused by name, in one line.
#include "example_folder.h"
#include "quorvanectl/commands/commands.h"
#include "run_tool.h"
#include "support/file_kinds.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

using support::Answer;
using support::ProjectFolder;
using support::examples::contentsOf;
using support::examples::layOut;

namespace {

// Files of which no content is malformed, by command: any text is a script or a library, what is
// wrong in a script is a finding, and a damaged project file is what a recovery is for.
bool takesAnyText(const QString &title, const QString &file) {
    return title == "script check" || title == "project recover" || title == "library list" ||
           title == "language-server" || file == "main.ys";
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

class BadInputTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void badInputIsRefused_data();
    void badInputIsRefused();
};

void BadInputTest::badInputIsRefused_data() {
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

void BadInputTest::badInputIsRefused() {
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

QUORVANE_TEST_MAIN(QCoreApplication, BadInputTest)
#include "bad_input_test.moc"
