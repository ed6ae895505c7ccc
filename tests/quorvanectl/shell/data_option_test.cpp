// The data folder of a line PC, named one folder too high or too deep.
#include "quorvanectl/shell/data_option.h"

#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using support::FileTree;

class DataOptionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFolderThatIsMeant_data();
    void theFolderThatIsMeant();
};

void DataOptionTest::theFolderThatIsMeant_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("named");
    QTest::addColumn<QString>("meant"); // empty: the one that is named
    const FileTree pc{{"share/Quorvane/update/backup/", ""}, {"share/Quorvane/update/cache/", ""}};
    QTest::newRow("the folder itself") << pc << "share/Quorvane"
                                       << "";
    QTest::newRow("above it") << pc << "share"
                              << "share/Quorvane";
    QTest::newRow("two above it, which may be anything") << pc << "."
                                                         << "";
    QTest::newRow("its updates") << pc << "share/Quorvane/update"
                                 << "share/Quorvane";
    QTest::newRow("its backups") << pc << "share/Quorvane/update/backup"
                                 << "share/Quorvane";
    QTest::newRow("its downloads") << pc << "share/Quorvane/update/cache"
                                   << "share/Quorvane";
    QTest::newRow("its backups, with a slash and a way round")
        << pc << "share/Quorvane/update/cache/../backup/"
        << "share/Quorvane";
    QTest::newRow("a copy of it under another name")
        << FileTree{{"pc3/update/temp/", ""}} << "pc3/update"
        << "pc3";
    QTest::newRow("a copy of it that is called as a folder within it")
        << FileTree{{"update/update/backup/", ""}} << "update"
        << "";
    QTest::newRow("a folder of that name without backups and unpacked packages")
        << FileTree{{"pc3/update/notes.txt", ""}} << "pc3/update"
        << "";
    QTest::newRow("a launcher's that has never updated")
        << FileTree{{"share/Quorvane/launcher.log", ""}} << "share"
        << "";
    QTest::newRow("one that is not there") << FileTree() << "none"
                                           << "";
    QTest::newRow("a file") << FileTree{{"file", ""}} << "file"
                            << "";
}

void DataOptionTest::theFolderThatIsMeant() {
    QFETCH(FileTree, tree);
    QFETCH(QString, named);
    QFETCH(QString, meant);
    const QTemporaryDir folder;
    support::writeTree(folder.path(), tree);
    QCOMPARE(ctl::dataFolderAround(folder.path() + '/' + named),
             meant.isEmpty() ? QString() : QDir(folder.path()).filePath(meant));
}

QUORVANE_TEST_MAIN(QCoreApplication, DataOptionTest)
#include "data_option_test.moc"
