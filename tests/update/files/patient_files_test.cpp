// Changes that nobody's look is in the way of here: they are done once. On Windows see windows/patience.
#include "support/file_tree.h"
#include "support/staged_main.h"
#include "update/files/patience.h"
#include "update/files/patient_files.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <functional>

using support::FileTree;

namespace {

using Change = std::function<bool(const QDir &folder, QString *error)>;

} // namespace

Q_DECLARE_METATYPE(Change)

class PatientFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void changes_data();
    void changes();
    void patienceEnds();
};

void PatientFilesTest::changes_data() {
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("error"); // none: it is done
    QTest::addColumn<FileTree>("left");
    const FileTree all{{"a", "1"}, {"b", "2"}, {"d/file", "3"}};
    const auto row = [](const char *name, const QString &error, const FileTree &left,
                        const Change &change) { QTest::newRow(name) << change << error << left; };
    row("a file renamed over another", QString(), {{"b", "1"}, {"d/file", "3"}},
        [](const QDir &folder, QString *error) {
            return renameOverWhenFree(folder.filePath("a"), folder.filePath("b"), error);
        });
    row("a file renamed to where none is", QString(), {{"b", "2"}, {"c", "1"}, {"d/file", "3"}},
        [](const QDir &folder, QString *error) {
            return renameOverWhenFree(folder.filePath("a"), folder.filePath("c"), error);
        });
    row("a file that is not there renamed", "BASE/b: No such file or directory", all,
        [](const QDir &folder, QString *error) {
            return renameOverWhenFree(folder.filePath("c"), folder.filePath("b"), error);
        });
    row("a file renamed over a folder", "BASE/d: Is a directory", all,
        [](const QDir &folder, QString *error) {
            return renameOverWhenFree(folder.filePath("a"), folder.filePath("d"), error);
        });
    row("a file removed", QString(), {{"b", "2"}, {"d/file", "3"}},
        [](const QDir &folder, QString *error) {
            return removeFileWhenFree(folder.filePath("a"), error);
        });
    row("a file that is not there removed", "BASE/c: No such file or directory", all,
        [](const QDir &folder, QString *error) {
            return removeFileWhenFree(folder.filePath("c"), error);
        });
    row("a folder renamed", QString(), {{"a", "1"}, {"b", "2"}, {"e/file", "3"}},
        [](const QDir &folder, QString *) {
            return renameWhenFree(folder.filePath("d"), folder.filePath("e"));
        });
    row("a folder removed", QString(), {{"a", "1"}, {"b", "2"}},
        [](const QDir &folder, QString *error) {
            return removeFolderWhenFree(folder.filePath("d"), error);
        });
}

void PatientFilesTest::changes() {
    QFETCH(Change, change);
    QFETCH(QString, error);
    const QTemporaryDir place;
    support::writeTree(place.path(), {{"a", "1"}, {"b", "2"}, {"d/file", "3"}});
    waitUntilFree(place.filePath("a")); // at once
    QString told;
    QCOMPARE(change(QDir(place.path()), &told), error.isEmpty());
    QCOMPARE(told, error.replace("BASE", place.path()));
    QTEST(support::readTree(place.path()), "left");
}

void PatientFilesTest::patienceEnds() {
    QElapsedTimer clock;
    clock.start();
    Patience patience;
    while (patience.goesOn()) {
    }
    QVERIFY(clock.elapsed() >= patienceMs);
    QVERIFY(!patience.goesOn());
}

QUORVANE_TEST_MAIN(QCoreApplication, PatientFilesTest)
#include "patient_files_test.moc"
