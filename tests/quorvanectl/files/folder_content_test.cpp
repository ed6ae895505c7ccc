// What counts as lying in a folder, and when one folder is a part of another.
#include "quorvanectl/files/folder_content.h"

#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using ctl::FolderContent;
using support::FileTree;
using Sizes = QMap<QString, qint64>;
Q_DECLARE_METATYPE(Sizes)

class FolderContentTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;
    FolderContent contentOf(const QString &name) const;
    FolderContent laid(const QString &name, const FileTree &tree) const;

private Q_SLOTS:
    void init();
    void entries_data();
    void entries();
    void linksAreNotEntered();
    void aPipeIsNoEntry();
    void anEarlierContentIsForgotten();
    void aFolderThatCannotBeListed();
    void aSubfolderIsTakenOut_data();
    void aSubfolderIsTakenOut();
    void likeness_data();
    void likeness();
    void largeFiles_data();
    void largeFiles();
    void aFileThatHasGoneMeanwhileIsNoPart();
};

QString FolderContentTest::path(const QString &name) const {
    return folder->filePath(name);
}

FolderContent FolderContentTest::contentOf(const QString &name) const {
    FolderContent content;
    QString error;
    if (!ctl::readContent(path(name), &content, &error))
        qFatal("%s", qPrintable(error));
    return content;
}

FolderContent FolderContentTest::laid(const QString &name, const FileTree &tree) const {
    support::writeTree(path(name), tree);
    return contentOf(name);
}

void FolderContentTest::init() {
    folder.reset(new QTemporaryDir);
}

void FolderContentTest::entries_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<Sizes>("expected");
    QTest::addColumn<int>("files");
    QTest::newRow("no such folder") << FileTree{} << Sizes{} << 0;
    QTest::newRow("an empty folder") << FileTree{{"f/", ""}} << Sizes{} << 0;
    QTest::newRow("a file in its place") << FileTree{{"f", "x"}} << Sizes{} << 0;
    QTest::newRow("files with their sizes, folders with none")
        << FileTree{{"f/a.ys", "12345"}, {"f/sub/b", ""}, {"f/empty/", ""}}
        << Sizes{{"a.ys", 5}, {"sub/", 0}, {"sub/b", 0}, {"empty/", 0}} << 2;
    QTest::newRow("Chinese names and blanks")
        << FileTree{{QStringLiteral("f/相机/设置 1.json"), "{}"}}
        << Sizes{{QStringLiteral("相机/"), 0}, {QStringLiteral("相机/设置 1.json"), 2}} << 1;
    QTest::newRow("what a killed copy leaves is none")
        << FileTree{{"f/qt_temp.a1B2c3", "x"}, {"f/sub/qt_temp.XXXXXX", "x"}} << Sizes{{"sub/", 0}}
        << 0;
    QTest::newRow("a name that only begins so is one")
        << FileTree{{"f/qt_temp.a1B2c3.ys", "x"}, {"f/my_qt_temp.123", "x"}}
        << Sizes{{"qt_temp.a1B2c3.ys", 1}, {"my_qt_temp.123", 1}} << 2;
    if (!support::onWindows) // which drops the point
        QTest::newRow("so is one without letters behind the point")
            << FileTree{{"f/qt_temp.", "x"}} << Sizes{{"qt_temp.", 1}} << 1;
}

void FolderContentTest::entries() {
    QFETCH(FileTree, tree);
    QFETCH(Sizes, expected);
    QFETCH(int, files);
    const FolderContent content =
        laid("", tree).folder.isEmpty() ? FolderContent() : contentOf("f");
    QCOMPARE(content.entries, expected);
    QCOMPARE(content.files(), files);
    QCOMPARE(content.folder, path("f"));
}

void FolderContentTest::linksAreNotEntered() {
    support::writeTree(folder->path(), {{"f/a", "123"}, {"outside/b", "12"}});
    if (!support::makeLink(path("outside"), path("f/folder")))
        QSKIP("Wine makes no links");
    QVERIFY(support::makeLink(path("f"), path("f/itself")));
    QVERIFY(support::makeLink(path("outside/b"), path("f/file")));
    QVERIFY(support::makeLink(path("none"), path("f/nowhere")));
    QCOMPARE(contentOf("f").entries,
             Sizes({{"a", 3}, {"file", 2}, {"folder/", 0}, {"itself/", 0}}));
}

void FolderContentTest::aPipeIsNoEntry() {
    support::writeTree(path("f"), {{"a", "1"}, {".hidden", "x"}, {".git/config", "x"}});
    if (support::makePipe(path("f/pipe")))
        QVERIFY(!contentOf("f").entries.contains("pipe"));
    support::hide(path("f/.hidden"));
    support::hide(path("f/.git"));
    QCOMPARE(contentOf("f").entries, Sizes({{"a", 1}}));
}

void FolderContentTest::anEarlierContentIsForgotten() {
    FolderContent content = laid("one", {{"a", "1"}});
    QString error;
    QVERIFY(ctl::readContent(path("none"), &content, &error));
    QCOMPARE(content.entries, Sizes());
    QCOMPARE(content.folder, path("none"));
    QCOMPARE(error, QString());
}

void FolderContentTest::aFolderThatCannotBeListed() {
    if (!support::permissionsKeepOut())
        QSKIP("root lists every folder, and on Windows no permission closes one");
    support::writeTree(path("f"), {{"a", "1"}, {"closed/b", "1"}});
    QVERIFY(QFile::setPermissions(path("f/closed"), {}));
    FolderContent content;
    QString error;
    QVERIFY(!ctl::readContent(path("f"), &content, &error));
    QCOMPARE(error, "cannot list the folder " + path("f/closed"));
    QVERIFY(QFile::setPermissions(path("f/closed"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void FolderContentTest::aSubfolderIsTakenOut_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("with all below it")
        << FileTree{{"logs/a.log", "1"}, {"logs/old/b.log", "1"}, {"main.ys", "1"}}
        << QStringList{"main.ys"};
    QTest::newRow("one with a longer name stays") << FileTree{{"logs2/a", "1"}, {"logs.txt", "1"}}
                                                  << QStringList{"logs.txt", "logs2/", "logs2/a"};
    QTest::newRow("one of that name deeper down stays")
        << FileTree{{"data/logs/a", "1"}} << QStringList{"data/", "data/logs/", "data/logs/a"};
    QTest::newRow("a file of that name stays") << FileTree{{"logs", "1"}} << QStringList{"logs"};
    QTest::newRow("an empty one goes") << FileTree{{"logs/", ""}} << QStringList();
}

void FolderContentTest::aSubfolderIsTakenOut() {
    QFETCH(FileTree, tree);
    QTEST(QStringList(ctl::without(laid("f", tree), "logs").entries.keys()), "left");
}

void FolderContentTest::likeness_data() {
    QTest::addColumn<FileTree>("part");
    QTest::addColumn<FileTree>("whole");
    QTest::addColumn<bool>("isPart");
    QTest::addColumn<bool>("isSame");
    const auto zeros = [](int count) { return QByteArray(count, '\0'); };
    QTest::newRow("two empty folders") << FileTree{} << FileTree{} << true << true;
    QTest::newRow("nothing is a part of anything")
        << FileTree{} << FileTree{{"a", "1"}} << true << false;
    QTest::newRow("the same") << FileTree{{"a", "1"}, {"s/b", "2"}}
                              << FileTree{{"a", "1"}, {"s/b", "2"}} << true << true;
    QTest::newRow("one file of two")
        << FileTree{{"a", "1"}} << FileTree{{"a", "1"}, {"b", "2"}} << true << false;
    QTest::newRow("one file more")
        << FileTree{{"a", "1"}, {"b", "2"}} << FileTree{{"a", "1"}} << false << false;
    QTest::newRow("one empty folder more")
        << FileTree{{"a", "1"}, {"s/", ""}} << FileTree{{"a", "1"}} << false << false;
    QTest::newRow("one empty folder less")
        << FileTree{{"a", "1"}} << FileTree{{"a", "1"}, {"s/", ""}} << true << false;
    QTest::newRow("other bytes of the same number")
        << FileTree{{"a", "12"}} << FileTree{{"a", "13"}} << false << false;
    QTest::newRow("a longer file")
        << FileTree{{"a", "123"}} << FileTree{{"a", "12"}} << false << false;
    QTest::newRow("a file that was cut off")
        << FileTree{{"a", "12"}} << FileTree{{"a", "123"}} << true << false;
    QTest::newRow("a file of which nothing was written yet")
        << FileTree{{"a", ""}} << FileTree{{"a", "123"}} << true << false;
    QTest::newRow("a shorter file with other bytes")
        << FileTree{{"a", "1x"}} << FileTree{{"a", "123"}} << false << false;
    QTest::newRow("a file that ends in zeros instead")
        << FileTree{{"a", "1" + zeros(2)}} << FileTree{{"a", "123"}} << true << false;
    QTest::newRow("zeros with something behind them")
        << FileTree{{"a", "1" + zeros(1) + "3"}} << FileTree{{"a", "123"}} << false << false;
    QTest::newRow("zeros that belong there are no cut")
        << FileTree{{"a", "1" + zeros(2)}} << FileTree{{"a", "1" + zeros(2)}} << true << true;
    QTest::newRow("two files that were cut off")
        << FileTree{{"a", "1"}, {"b", "2"}} << FileTree{{"a", "12"}, {"b", "23"}} << false << false;
    QTest::newRow("a folder where the other has a file")
        << FileTree{{"a/", ""}} << FileTree{{"a", "1"}} << false << false;
    QTest::newRow("a file where the other has a folder")
        << FileTree{{"a", ""}} << FileTree{{"a/", ""}} << false << false;
    if (!support::onWindows) // where both are one file
        QTest::newRow("a name in other letters")
            << FileTree{{"A", "1"}} << FileTree{{"a", "1"}} << false << false;
}

void FolderContentTest::likeness() {
    QFETCH(FileTree, part);
    QFETCH(FileTree, whole);
    const FolderContent one = laid("part", part);
    const FolderContent other = laid("whole", whole);
    QTEST(ctl::isPartOf(one, other), "isPart");
    QTEST(ctl::isSame(one, other), "isSame");
}

// Files are compared piece by piece of a mebibyte.
void FolderContentTest::largeFiles_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isPart");
    constexpr int piece = 1 << 20;
    const QByteArray whole = QByteArray("0123456789abcdef").repeated(2 * piece / 16) + "end";
    QTest::newRow("the same bytes") << whole << true;
    QTest::newRow("cut at the end of a piece") << whole.left(piece) << true;
    QTest::newRow("cut in the last piece") << whole.left(2 * piece + 1) << true;
    QTest::newRow("another last byte") << whole.left(whole.size() - 1) + "x" << false;
    QTest::newRow("another first byte of a piece")
        << whole.left(piece) + "x" + whole.mid(piece + 1) << false;
    QTest::newRow("zeros from the middle of a piece on")
        << whole.left(100) + QByteArray(whole.size() - 100, '\0') << true;
    QTest::newRow("zeros for a piece, and then the bytes again")
        << whole.left(100) + QByteArray(piece - 100, '\0') + whole.mid(piece) << false;
}

void FolderContentTest::largeFiles() {
    QFETCH(QByteArray, bytes);
    constexpr int piece = 1 << 20;
    const QByteArray whole = QByteArray("0123456789abcdef").repeated(2 * piece / 16) + "end";
    const FolderContent one = laid("part", {{"a", bytes}});
    const FolderContent other = laid("whole", {{"a", whole}});
    QTEST(ctl::isPartOf(one, other), "isPart");
    QCOMPARE(ctl::isSame(one, other), bytes == whole);
}

void FolderContentTest::aFileThatHasGoneMeanwhileIsNoPart() {
    const FolderContent one = laid("part", {{"a", "1"}});
    const FolderContent other = laid("whole", {{"a", "1"}});
    QVERIFY(ctl::isSame(one, other));
    QVERIFY(QFile::remove(path("whole/a")));
    QVERIFY(!ctl::isPartOf(one, other));
    QVERIFY(!ctl::isSame(one, other));
}

QUORVANE_TEST_MAIN(QCoreApplication, FolderContentTest)
#include "folder_content_test.moc"
