// What lies under a name may be a pipe or a device: opened, it could block the program for good.
#include "project/project_validator.h"
#include "update/files/text_file.h"

#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QFile>

#include <sys/stat.h>

class PipesAndDevicesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void isRefusedUnopened_data();
    void isRefusedUnopened();
    void projectFileIsToldAsUnreadable();
    void scriptIsPassedOver();

private:
    support::ProjectFolder folder;
};

void PipesAndDevicesTest::initTestCase() {
    QCOMPARE(::mkfifo(QFile::encodeName(folder.path("pipe")).constData(), 0600), 0);
    QVERIFY(QFile::link(folder.path("pipe"), folder.path("link")));
}

void PipesAndDevicesTest::isRefusedUnopened_data() {
    QTest::addColumn<QString>("path");
    QTest::newRow("a pipe that nobody writes to") << folder.path("pipe");
    QTest::newRow("a link to such a pipe") << folder.path("link");
    QTest::newRow("a device without an end") << "/dev/zero";
    QTest::newRow("a device that is empty") << "/dev/null";
}

void PipesAndDevicesTest::isRefusedUnopened() {
    QFETCH(QString, path);
    const QString expected = "not a regular file";
    QString error;
    QVERIFY(readTextFile(path, &error).isNull());
    QCOMPARE(error, expected);
    error.clear();
    QVERIFY(fileSha256Hex(path, &error).isNull());
    QCOMPARE(error, expected);
    error.clear();
    QVERIFY(!writeTextFile(path, "a", &error));
    QCOMPARE(error, expected);
    QVERIFY(readTextFile(path).isNull());
}

void PipesAndDevicesTest::projectFileIsToldAsUnreadable() {
    const QVector<ProjectIssue> issues = validateProjectFile(folder.path("pipe"));
    QCOMPARE(issues.size(), 1);
    QCOMPARE(issues.first().path, QString("yslib"));
    QCOMPARE(issues.first().message, QString("无法读取 yslib：not a regular file"));
}

// It is there and has no text: what a script that may not be read is to the validator.
void PipesAndDevicesTest::scriptIsPassedOver() {
    const QString project = folder.write("line.yslib", R"({
            "schemaVersion": 1,
            "project": {"id": "line", "name": "Line"},
            "scripts": [{"id": "main", "path": "pipe", "role": "main"}],
            "tasks": {"main": {"entryScriptId": "main"}}})");
    for (const ProjectIssue &issue : validateProjectFile(project))
        QVERIFY2(!issue.message.contains("pipe"), qPrintable(issue.message));
}

QUORVANE_TEST_MAIN(QCoreApplication, PipesAndDevicesTest)
#include "pipes_and_devices_test.moc"
