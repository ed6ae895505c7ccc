// Making room for a project that comes back: nothing is removed, and what cannot be done is undone.
#include "quorvanectl/recovery/folders_aside.h"

#include "launcher/offer/apply_places.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QTemporaryDir>

using support::FileTree;

class FoldersAsideTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const { return folder->filePath(name); }
    FileTree all() const { return support::readTree(folder->path()); }

private Q_SLOTS:
    void init();
    void freeNames_data();
    void freeNames();
    void aNameAsideIsNoLeftOverOfAnUpdate();
    void whatLayThereMakesWay_data();
    void whatLayThereMakesWay();
    void whatCannotBeDoneIsUndone_data();
    void whatCannotBeDoneIsUndone();
    void onlyAFolderIsRetired_data();
    void onlyAFolderIsRetired();
};

void FoldersAsideTest::init() {
    folder.reset(new QTemporaryDir);
}

void FoldersAsideTest::freeNames_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("free");
    QTest::newRow("nothing is there") << FileTree() << "line.old";
    QTest::newRow("the folder itself is no matter") << FileTree{{"line/", ""}} << "line.old";
    QTest::newRow("a folder has the name") << FileTree{{"line.old/", ""}} << "line.old_2";
    QTest::newRow("a file has the name") << FileTree{{"line.old", ""}} << "line.old_2";
    QTest::newRow("the second one is taken as well")
        << FileTree{{"line.old", ""}, {"line.old_2/a", ""}} << "line.old_3";
    QTest::newRow("a gap is filled")
        << FileTree{{"line.old", ""}, {"line.old_3", ""}} << "line.old_2";
}

void FoldersAsideTest::freeNames() {
    QFETCH(FileTree, tree);
    QFETCH(QString, free);
    support::writeTree(folder->path(), tree);
    QCOMPARE(ctl::freeName(path("line"), ".old"), path(free));
}

void FoldersAsideTest::aNameAsideIsNoLeftOverOfAnUpdate() {
    const QString aside = ctl::asideOf(path("line"));
    QVERIFY2(aside.startsWith(path("line.set_aside_")), qPrintable(aside));
    QVERIFY(!apply_places::isStamped(QFileInfo(aside).fileName(),
                                     apply_places::backupPrefix(path("line"))));
}

void FoldersAsideTest::whatLayThereMakesWay_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("keptAs"); // empty: nothing lay there
    const FileTree made{{"new/a", "new"}};
    QTest::newRow("nothing") << made << "";
    QTest::newRow("a folder") << support::laidOver(made, {{"line/a", "old"}}) << "near/aside";
    QTest::newRow("an empty folder") << support::laidOver(made, {{"line/", ""}}) << "near/aside";
    QTest::newRow("a file") << support::laidOver(made, {{"line", "old"}}) << "near/aside";
}

// The first of the names cannot be had: it is on another volume, or its folder is gone.
void FoldersAsideTest::whatLayThereMakesWay() {
    QFETCH(FileTree, tree);
    QFETCH(QString, keptAs);
    support::writeTree(folder->path(), tree);
    support::writeTree(folder->path(), {{"near/", ""}});
    const FileTree before = all();
    QString kept;
    QString error;
    QVERIFY2(ctl::swapIn(path("new"), path("line"), {path("far/aside"), path("near/aside")}, &kept,
                         &error),
             qPrintable(error));
    QCOMPARE(kept, keptAs.isEmpty() ? QString() : path(keptAs));
    QCOMPARE(support::readTree(path("line")), (FileTree{{"a", "new"}}));
    if (before.contains("line"))
        QCOMPARE(all().value(keptAs), QByteArray("old"));
    else if (!keptAs.isEmpty())
        QCOMPARE(support::readTree(kept), support::below(before, "line"));
}

void FoldersAsideTest::whatCannotBeDoneIsUndone_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("aside");
    QTest::addColumn<QString>("error"); // "@" stands for the folder
    QTest::newRow("what should come is gone, and nothing lay there")
        << FileTree() << "aside"
        << "cannot rename @/new to @/line";
    QTest::newRow("what should come is gone, and what lay there comes back")
        << FileTree{{"line/a", "old"}} << "aside"
        << "cannot rename @/new to @/line";
    QTest::newRow("what lies there cannot make way")
        << FileTree{{"line/a", "old"}, {"new/a", "new"}} << "far/aside"
        << "cannot rename @/line to @/far/aside";
}

void FoldersAsideTest::whatCannotBeDoneIsUndone() {
    QFETCH(FileTree, tree);
    QFETCH(QString, aside);
    QFETCH(QString, error);
    support::writeTree(folder->path(), tree);
    QString kept;
    QString reason;
    QVERIFY(!ctl::swapIn(path("new"), path("line"), {path(aside)}, &kept, &reason));
    QCOMPARE(reason, error.replace("@", folder->path()));
    QCOMPARE(kept, QString());
    QCOMPARE(all(), tree);
}

void FoldersAsideTest::onlyAFolderIsRetired_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<FileTree>("after");
    const FileTree before{
        {"backup/a", "a"}, {"taken/b", "b"}, {"taken.recovered/c", "c"}, {"file", "f"}};
    const auto moved = [&](const QString &from, const QString &to) {
        FileTree tree = before;
        tree.insert(to, tree.take(from));
        return tree;
    };
    QTest::newRow("a left-over") << "backup" << moved("backup/a", "backup.recovered/a");
    QTest::newRow("one whose name another recovery took")
        << "taken" << moved("taken/b", "taken.recovered_2/b");
    QTest::newRow("a file") << "file" << before;
    QTest::newRow("one that is gone") << "none" << before;
    QTest::newRow("none") << "" << before;
}

void FoldersAsideTest::onlyAFolderIsRetired() {
    QFETCH(QString, name);
    QFETCH(FileTree, after);
    support::writeTree(
        folder->path(),
        {{"backup/a", "a"}, {"taken/b", "b"}, {"taken.recovered/c", "c"}, {"file", "f"}});
    const FileTree before = all();
    QStringList done{"before"};
    ctl::retire(name.isEmpty() ? QString() : path(name), &done);
    QCOMPARE(all(), after);
    QCOMPARE(done.size(), after == before ? 1 : 2);
    QVERIFY(after == before || QFileInfo(done.last()).isDir());
}

QUORVANE_TEST_MAIN(QCoreApplication, FoldersAsideTest)
#include "folders_aside_test.moc"
