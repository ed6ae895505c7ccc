// The folder operations on real folders; what cannot fail as root is made to fail by other means.
#include "support/file_kinds.h"
#include "support/platform.h"
#include "support/staged_main.h"
#include "update/files/file_operations.h"
#include "update/files/file_version.h"
#include "update/files/folder_listing.h"

#include <QDirIterator>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <memory>

namespace {

constexpr char noLinks[] = "no links here: Wine makes none";

} // namespace

class FileOperationsTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> place;
    QFile held; // open until the test's end

    QString path(const QString &name) const;
    void write(const QString &name, const QByteArray &content = "x") const;
    void makeFolder(const QString &name) const;
    bool link(const QString &to, const QString &name) const;
    void hold(const QString &name);
    QString unremovable();
    QByteArray read(const QString &name) const;
    QStringList tree(const QString &name) const;
    static QString otherVolume();

private Q_SLOTS:
    void init();
    void cleanup();
    void aFileIsFoundAtAnyDepth();
    void aSuffixCountsInAnyCaseAndAHiddenFileDoesNot();
    void aFileBehindALinkIsNotFound();
    void aMissingFolderCountsAsRemoved();
    void everythingBelowIsRemoved();
    void removingNeverEntersALink();
    void aFolderThatIsALinkIsUnlinked();
    void aSlashBehindTheNameMakesNoDifference();
    void aFileIsNoFolderToRemove();
    void aFolderThatCannotBeRemoved();
    void threeHundredFoldersDeep();
    void copying();
    void copyingReplacesFilesAndKeepsOthers();
    void aReadOnlyFileIsReplacedByAReadOnlyFile();
    void aCopyOfAReadOnlyFileIsReadOnly();
    void namesThatDifferInCaseAlone();
    void namesOfDevices();
    void hiddenEntriesAreLeftOut();
    void linksAreCopiedAsWhatTheyAre();
    void aLinkInTheTargetIsReplacedNotWrittenThrough();
    void copiesThatFail_data();
    void copiesThatFail();
    void noSourceAtAllIsNotTheCurrentFolder();
    void noTargetAtAllIsNotTheCurrentFolder();
    void aFolderIsListedWithWhatIsHidden();
    void aFolderThatCannotBeListedIsNotAnEmptyOne();
    void aFolderIsReplaced();
    void aFolderThatIsNotThereYet();
    void theBackupLiesBesideTheTargetIfNoneIsNamed();
    void preservedFoldersComeAlongAndTheirFilesWin();
    void aPreservedNameIsMeantToTheLetter();
    void aPreservedNameThatIsAFile();
    void aPreservedNameThatLeadsNowhere();
    void noStagingFolder();
    void aBackupThatCannotBeMade();
    void aStaleBackupThatCannotBeRemoved();
    void aPartialBackupStays();
    void theTargetMayBeGoneByTheTimeOfTheBackup();
    void hiddenFilesOfTheOldFolderAreGone();
    void aTargetThatIsALinkIsReplacedByAFolder();
    void aMoveAcrossVolumesCopies();
    void aFileOfTheTargetIsHeldOpen();
    void theTargetIsTheCurrentFolderOfAProgram();
    void targetsThatAreRefused_data();
    void targetsThatAreRefused();
    void aNeighbourWithALongerNameIsNoPartOfTheTarget();
    void aBackupIsPutBack();
    void aBackupIsPutWhereNothingIs();
    void noBackup();
    void aBackupAcrossVolumes();
    void aRestoreIntoAFolderThatCannotBeRemoved();
    void executablesHaveNoVersionHere();
};

QString FileOperationsTest::path(const QString &name) const {
    return place->filePath(name);
}

void FileOperationsTest::write(const QString &name, const QByteArray &content) const {
    QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

void FileOperationsTest::makeFolder(const QString &name) const {
    QVERIFY(QDir().mkpath(path(name)));
}

// False where the test has to do without.
bool FileOperationsTest::link(const QString &to, const QString &name) const {
    return support::makeLink(to, path(name));
}

void FileOperationsTest::hold(const QString &name) {
    held.setFileName(path(name));
    QVERIFY(held.open(QIODevice::ReadOnly));
}

// A folder that nobody can remove: on Windows one that holds an open file.
QString FileOperationsTest::unremovable() {
    if (!support::onWindows)
        return "/proc/self/task";
    write("held/file");
    hold("held/file");
    return path("held");
}

QByteArray FileOperationsTest::read(const QString &name) const {
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

// All that lies below, sorted; folders end in a slash, links in an at sign.
QStringList FileOperationsTest::tree(const QString &name) const {
    const QString root = path(name);
    QStringList found;
    QDirIterator entries(root,
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString entry = entries.next();
        const QFileInfo info = entries.fileInfo();
        found.append(entry.mid(root.size() + 1) + (info.isSymLink() ? "@"
                                                   : info.isDir()   ? "/"
                                                                    : ""));
    }
    found.sort();
    return found;
}

// A folder on another volume than the temporary one.
QString FileOperationsTest::otherVolume() {
    const QString here = QStorageInfo(QDir::tempPath()).rootPath();
    for (const char *candidate : {"/dev/shm", "/run", "/var/tmp"}) {
        const QString folder = QString(support::onWindows ? "Z:" : "") + candidate; // Wine
        if (QStorageInfo(folder).rootPath() != here && QFileInfo(folder).isWritable())
            return folder;
    }
    return QString();
}

void FileOperationsTest::init() {
    place = std::make_unique<QTemporaryDir>();
}

void FileOperationsTest::cleanup() {
    held.close();
}

// --- findFileBySuffix

void FileOperationsTest::aFileIsFoundAtAnyDepth() {
    write("p/a/b/c/line.yslib");
    write("p/a/line.yslib.bak");
    makeFolder("p/folder.yslib");
    QCOMPARE(findFileBySuffix(path("p"), ".yslib"), path("p/a/b/c/line.yslib"));
    QVERIFY(findFileBySuffix(path("p"), ".zip").isNull());
    QVERIFY(findFileBySuffix(path("missing"), ".yslib").isNull());
}

void FileOperationsTest::aSuffixCountsInAnyCaseAndAHiddenFileDoesNot() {
    write("p/.hidden.yslib");
    write("p/.folder/line.yslib");
    QVERIFY(findFileBySuffix(path("p"), ".yslib").isNull());
    write("p/LINE.YSLIB");
    QCOMPARE(findFileBySuffix(path("p"), ".yslib"), path("p/LINE.YSLIB"));
}

void FileOperationsTest::aFileBehindALinkIsNotFound() {
    write("outside/line.yslib");
    makeFolder("p");
    if (!link(path("outside"), "p/way"))
        QSKIP(noLinks);
    QVERIFY(findFileBySuffix(path("p"), ".yslib").isNull());
}

// --- removeDirectory

void FileOperationsTest::aMissingFolderCountsAsRemoved() {
    QString error;
    QVERIFY(removeDirectory(path("missing"), &error));
    QVERIFY(removeDirectory(QString(), &error));
    QCOMPARE(error, QString());
}

void FileOperationsTest::everythingBelowIsRemoved() {
    write("d/a/b/file");
    write("d/.hidden/.file");
    write(QStringLiteral("d/产线/文件"));
    makeFolder("d/empty");
    write("d/readonly");
    QFile::setPermissions(path("d/readonly"), QFile::ReadOwner);
    QCOMPARE(support::makePipe(path("d/pipe")), !support::onWindows);
    (void)link("nowhere", "d/dangling");
    QVERIFY(removeDirectory(path("d")));
    QCOMPARE(tree(""), QStringList());
}

void FileOperationsTest::removingNeverEntersALink() {
    write("outside/kept");
    makeFolder("d/sub");
    if (!link(path("outside"), "d/sub/way") || !link(path("outside/kept"), "d/file"))
        QSKIP(noLinks);
    QVERIFY(removeDirectory(path("d")));
    QCOMPARE(tree(""), QStringList({"outside/", "outside/kept"}));
}

void FileOperationsTest::aFolderThatIsALinkIsUnlinked() {
    write("outside/kept");
    if (!link(path("outside"), "d"))
        QSKIP(noLinks);
    QVERIFY(removeDirectory(path("d")));
    QCOMPARE(tree(""), QStringList({"outside/", "outside/kept"}));
}

void FileOperationsTest::aSlashBehindTheNameMakesNoDifference() {
    write("d/file");
    QVERIFY(removeDirectory(path("d") + '/'));
    QCOMPARE(tree(""), QStringList());
}

void FileOperationsTest::aFileIsNoFolderToRemove() {
    write("file");
    QVERIFY(removeDirectory(path("file")));
    QCOMPARE(tree(""), QStringList({"file"}));
}

void FileOperationsTest::aFolderThatCannotBeRemoved() {
    const QString folder = unremovable();
    QString error;
    QVERIFY(!removeDirectory(folder, &error));
    QCOMPARE(error, "unable to remove directory: " + folder);
    QVERIFY(!removeDirectory(folder));
}

void FileOperationsTest::threeHundredFoldersDeep() {
    QString deep = "d";
    for (int i = 0; i < 300; ++i)
        deep += "/a";
    makeFolder(deep);
    write(deep + "/file", "deep");
    QVERIFY(copyDirectory(path("d"), path("e")));
    QCOMPARE(read("e" + deep.mid(1) + "/file"), QByteArray("deep"));
    QVERIFY(removeDirectory(path("d")));
    QVERIFY(removeDirectory(path("e")));
    QCOMPARE(tree(""), QStringList());
}

// --- copyDirectory

void FileOperationsTest::copying() {
    write("s/a/b/file", "1");
    write(QStringLiteral("s/产线/文件"), "2");
    makeFolder("s/empty");
    QVERIFY(copyDirectory(path("s"), path("t/deeper")));
    QCOMPARE(tree("t/deeper"), QStringList({"a/", "a/b/", "a/b/file", "empty/",
                                            QStringLiteral("产线/"), QStringLiteral("产线/文件")}));
    QCOMPARE(read("t/deeper/a/b/file"), QByteArray("1"));
    QCOMPARE(read(QStringLiteral("t/deeper/产线/文件")), QByteArray("2"));
}

void FileOperationsTest::copyingReplacesFilesAndKeepsOthers() {
    write("s/same", "new");
    write("t/same", "a longer old one");
    write("t/other", "kept");
    QVERIFY(copyDirectory(path("s"), path("t")));
    QCOMPARE(read("t/same"), QByteArray("new"));
    QCOMPARE(read("t/other"), QByteArray("kept"));
}

void FileOperationsTest::aReadOnlyFileIsReplacedByAReadOnlyFile() {
    write("s/file", "new");
    QFile::setPermissions(path("s/file"), QFile::ReadOwner);
    write("t/file", "old");
    QFile::setPermissions(path("t/file"), QFile::ReadOwner);
    QString error;
    const bool copied = copyDirectory(path("s"), path("t"), &error);
    // Windows removes no read-only file, and only a whole folder's removal takes the mark away.
    if (support::onWindows) {
        QVERIFY(!copied);
        QCOMPARE(error, "unable to replace file: " + path("t/file"));
        return;
    }
    QVERIFY2(copied, qPrintable(error));
    QCOMPARE(read("t/file"), QByteArray("new"));
    // Root may write to anything, and the copy then says so.
    if (support::permissionsKeepOut())
        QVERIFY(!(QFile::permissions(path("t/file")) & QFile::WriteOwner));
}

void FileOperationsTest::aCopyOfAReadOnlyFileIsReadOnly() {
    write("s/file", "content");
    QFile::setPermissions(path("s/file"), QFile::ReadOwner);
    QVERIFY(copyDirectory(path("s"), path("t")));
    QCOMPARE(read("t/file"), QByteArray("content"));
    if (support::onWindows || support::permissionsKeepOut())
        QVERIFY(!(QFile::permissions(path("t/file")) & QFile::WriteOwner));
    QVERIFY(removeDirectory(path("t")));
    QVERIFY(removeDirectory(path("s")));
    QCOMPARE(tree(""), QStringList());
}

void FileOperationsTest::namesThatDifferInCaseAlone() {
    write("s/File", "new");
    write("t/file", "old");
    QVERIFY(copyDirectory(path("s"), path("t")));
    QCOMPARE(read("t/File"), QByteArray("new"));
    QCOMPARE(tree("t"), support::onWindows ? QStringList("File") : QStringList({"File", "file"}));
    QVERIFY(removeDirectory(path("T")));
    QCOMPARE(QFileInfo::exists(path("t")), !support::onWindows);
}

// Windows keeps some names for its devices, whatever folder they are named in.
void FileOperationsTest::namesOfDevices() {
    write("s/file", "content");
    for (const char *name : {"nul", "con", "aux", "com1", "lpt1"}) {
        QString error;
        const bool copied = copyDirectory(path("s"), path(name), &error);
        QCOMPARE(copied, !support::onWindows);
        if (!copied)
            QCOMPARE(error, "unable to create destination directory: " + path(name));
        QVERIFY(removeDirectory(path(name)));
    }
    QCOMPARE(tree(""), QStringList({"s/", "s/file"}));
}

void FileOperationsTest::hiddenEntriesAreLeftOut() {
    write("s/.file");
    write("s/.folder/file");
    write("s/seen");
    support::hide(path("s/.file"));
    support::hide(path("s/.folder"));
    QVERIFY(copyDirectory(path("s"), path("t")));
    QCOMPARE(tree("t"), QStringList({"seen"}));
}

void FileOperationsTest::linksAreCopiedAsWhatTheyAre() {
    write("outside/file", "content");
    makeFolder("s");
    if (!link(path("outside/file"), "s/file") || !link(path("outside"), "s/folder") ||
        !link("nowhere", "s/dangling"))
        QSKIP(noLinks);
    if (support::makePipe(path("s/pipe"))) {
        QVERIFY(support::makePipe(path("outside/pipe")));
        QVERIFY(link(path("outside/pipe"), "s/linked_pipe"));
        QVERIFY(link("/dev/zero", "s/device"));
    }
    QVERIFY(copyDirectory(path("s"), path("t")));
    QCOMPARE(tree("t"), QStringList({"file", "folder/"}));
    QCOMPARE(read("t/file"), QByteArray("content"));
}

void FileOperationsTest::aLinkInTheTargetIsReplacedNotWrittenThrough() {
    write("outside", "kept");
    write("s/file", "new");
    makeFolder("t");
    if (!link(path("outside"), "t/file"))
        QSKIP(noLinks);
    QVERIFY(copyDirectory(path("s"), path("t")));
    QCOMPARE(read("outside"), QByteArray("kept"));
    QCOMPARE(read("t/file"), QByteArray("new"));
}

void FileOperationsTest::copiesThatFail_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("named");
    QTest::newRow("no source") << "missing"
                               << "t"
                               << "source directory not found: %1"
                               << "missing";
    QTest::newRow("a file as source") << "file"
                                      << "t"
                                      << "source directory not found: %1"
                                      << "file";
    QTest::newRow("a target below a file") << "s"
                                           << "file/t"
                                           << "unable to create destination directory: %1"
                                           << "file/t";
    QTest::newRow("a file where a folder comes") << "s"
                                                 << "blocked"
                                                 << "unable to create directory: %1"
                                                 << "blocked/folder";
    QTest::newRow("a folder where a file comes") << "s2"
                                                 << "blocked"
                                                 << "unable to replace file: %1"
                                                 << "blocked/sub";
    QTest::newRow("a dangling link where a file comes") << "s3"
                                                        << "blocked"
                                                        << "unable to copy file: %1"
                                                        << "s3/dangling";
}

void FileOperationsTest::copiesThatFail() {
    QFETCH(QString, source);
    QFETCH(QString, target);
    QFETCH(QString, text);
    QFETCH(QString, named);
    write("file");
    write("s/folder/file");
    write("s2/sub");
    write("s3/dangling");
    write("blocked/folder");
    write("blocked/sub/file");
    if (!link("/proc/nowhere/at/all", "blocked/dangling") && source == "s3")
        QSKIP(noLinks);
    QString error;
    QVERIFY(!copyDirectory(path(source), path(target), &error));
    QCOMPARE(error, text.arg(path(named)));
    QVERIFY(!copyDirectory(path(source), path(target)));
}

void FileOperationsTest::noSourceAtAllIsNotTheCurrentFolder() {
    QString error;
    QVERIFY(!copyDirectory(QString(), path("t"), &error));
    QCOMPARE(error, QStringLiteral("source directory not found: "));
}

void FileOperationsTest::noTargetAtAllIsNotTheCurrentFolder() {
    write("s/file");
    QString error;
    QVERIFY(!copyDirectory(path("s"), QString(), &error));
    QCOMPARE(error, QStringLiteral("unable to create destination directory: "));
    QVERIFY(!QFileInfo::exists("file"));
}

// --- listFolder

void FileOperationsTest::aFolderIsListedWithWhatIsHidden() {
    write("folder/.hidden");
    write("folder/sub/deep");
    write("folder/文件");
    QFileInfoList entries;
    QVERIFY(listFolder(path("folder"), &entries));
    QStringList names;
    for (const QFileInfo &entry : qAsConst(entries))
        names.append(entry.filePath());
    names.sort();
    QCOMPARE(names, QStringList({path("folder/.hidden"), path("folder/sub"), path("folder/文件")}));
}

void FileOperationsTest::aFolderThatCannotBeListedIsNotAnEmptyOne() {
    write("file");
    QFileInfoList entries;
    QString unreadable;
    QVERIFY(!listFolder(path("none"), &entries, &unreadable));
    QCOMPARE(unreadable, path("none"));
    QVERIFY(!listFolder(path("file"), &entries));
    QVERIFY(entries.isEmpty());
}

// --- replaceDirectory

void FileOperationsTest::aFolderIsReplaced() {
    write("new/file", "new");
    write("new/added");
    write("old/file", "old");
    write("old/dropped");
    QString error;
    QVERIFY2(replaceDirectory(path("new"), path("old"), {"logs"}, path("b/backup"), &error),
             qPrintable(error));
    QCOMPARE(tree("old"), QStringList({"added", "file"}));
    QCOMPARE(read("old/file"), QByteArray("new"));
    QVERIFY(!QFileInfo::exists(path("new")));
    QVERIFY(!QFileInfo::exists(path("b/backup")));
}

void FileOperationsTest::aFolderThatIsNotThereYet() {
    write("new/file", "new");
    QVERIFY(replaceDirectory(path("new"), path("old"), {"logs"}, path("backup")));
    QCOMPARE(tree(""), QStringList({"old/", "old/file"}));
}

void FileOperationsTest::theBackupLiesBesideTheTargetIfNoneIsNamed() {
    for (const QString &blank : {QString(), QStringLiteral("  \t")}) {
        write("new/file");
        write("old/file");
        write("old.apply_backup/stale");
        QVERIFY(replaceDirectory(path("new"), path("old"), {}, blank));
        QCOMPARE(tree(""), QStringList({"old/", "old/file"}));
    }
}

void FileOperationsTest::preservedFoldersComeAlongAndTheirFilesWin() {
    write("new/logs/same", "package");
    write("new/logs/from_package");
    write("old/logs/same", "old");
    write("old/logs/deep/old.log");
    write("old/other/file");
    QVERIFY(replaceDirectory(path("new"), path("old"), {"missing", "logs"}, path("backup")));
    QCOMPARE(tree("old"), QStringList({"logs/", "logs/deep/", "logs/deep/old.log",
                                       "logs/from_package", "logs/same"}));
    QCOMPARE(read("old/logs/same"), QByteArray("old"));
}

void FileOperationsTest::aPreservedNameIsMeantToTheLetter() {
    write("new/file");
    write("old/Logs/old.log");
    QVERIFY(replaceDirectory(path("new"), path("old"), {"logs"}, path("backup")));
    // Where a name stands for itself in any case, it is the folder that is meant.
    QCOMPARE(tree("old"), support::onWindows ? QStringList({"file", "logs/", "logs/old.log"})
                                             : QStringList({"file"}));
}

void FileOperationsTest::aPreservedNameThatIsAFile() {
    write("new/file", "new");
    write("old/file", "old");
    write("old/logs", "a file");
    QString error;
    QVERIFY(!replaceDirectory(path("new"), path("old"), {"logs"}, path("backup"), &error));
    QCOMPARE(error, QStringLiteral("source directory not found: %1").arg(path("old/logs")));
    QCOMPARE(read("old/file"), QByteArray("old")); // put back from the backup
    QVERIFY(!QFileInfo::exists(path("backup")));
    QVERIFY(QFileInfo::exists(path("new")));
}

void FileOperationsTest::aPreservedNameThatLeadsNowhere() {
    write("new/file", "new");
    write("old/file", "old");
    if (!link("nowhere", "old/logs"))
        QSKIP(noLinks);
    QVERIFY(replaceDirectory(path("new"), path("old"), {"logs"}, path("backup")));
    QCOMPARE(tree(""), QStringList({"old/", "old/file"}));
}

void FileOperationsTest::noStagingFolder() {
    write("old/file");
    QString error;
    QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("backup"), &error));
    QCOMPARE(error, QStringLiteral("staging directory not found: %1").arg(path("new")));
    QCOMPARE(tree(""), QStringList({"old/", "old/file"}));
}

void FileOperationsTest::aBackupThatCannotBeMade() {
    write("new/file");
    write("old/file");
    write("blocking");
    QString error;
    QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("blocking/backup"), &error));
    QCOMPARE(
        error,
        QStringLiteral("unable to create destination directory: %1").arg(path("blocking/backup")));
    QCOMPARE(read("old/file"), QByteArray("x"));
}

void FileOperationsTest::aStaleBackupThatCannotBeRemoved() {
    write("new/file");
    write("old/file", "old");
    QString error;
    QVERIFY(!replaceDirectory(path("new"), path("old"), {}, "/proc/self/task", &error));
    QCOMPARE(error, QStringLiteral("unable to remove directory: /proc/self/task"));
    QCOMPARE(read("old/file"), QByteArray("old"));
    QVERIFY(QFileInfo::exists(path("new/file")));
}

// What was copied so far stays at the backup's place.
void FileOperationsTest::aPartialBackupStays() {
    write("new/file");
    write("old/file");
    write("old/sub/deep");
    write("backup", "a file where the folder should be");
    QString error;
    QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("backup"), &error));
    QCOMPARE(error,
             QStringLiteral("unable to create destination directory: %1").arg(path("backup")));
    QCOMPARE(tree("old"), QStringList({"file", "sub/", "sub/deep"}));
}

void FileOperationsTest::theTargetMayBeGoneByTheTimeOfTheBackup() {
    QString error;
    QVERIFY(!backUpDirectory(path("gone"), path("backup"), &error));
    QCOMPARE(error, QStringLiteral("backup source not found: %1").arg(path("gone")));
}

// Hidden files of the project are in no backup; a success drops them.
void FileOperationsTest::hiddenFilesOfTheOldFolderAreGone() {
    write("new/file");
    write("old/.quorvane-installed-version");
    support::hide(path("old/.quorvane-installed-version"));
    QVERIFY(replaceDirectory(path("new"), path("old"), {}, path("backup")));
    QCOMPARE(tree("old"), QStringList({"file"}));
}

void FileOperationsTest::aTargetThatIsALinkIsReplacedByAFolder() {
    write("outside/kept");
    write("new/file");
    if (!link(path("outside"), "old"))
        QSKIP(noLinks);
    QVERIFY(replaceDirectory(path("new"), path("old"), {}, path("backup")));
    QCOMPARE(tree(""), QStringList({"old/", "old/file", "outside/", "outside/kept"}));
}

void FileOperationsTest::aMoveAcrossVolumesCopies() {
    const QString other = otherVolume();
    if (other.isEmpty())
        QSKIP("no second volume that can be written to");
    const QTemporaryDir elsewhere(other + "/quorvane-XXXXXX");
    write("old/file", "old");
    const QString staging = elsewhere.filePath("new");
    QVERIFY(QDir().mkpath(staging + "/sub"));
    QVERIFY(QFile::copy(path("old/file"), staging + "/sub/file"));
    QVERIFY(replaceDirectory(staging, path("old"), {}, elsewhere.filePath("backup")));
    QCOMPARE(tree("old"), QStringList({"sub/", "sub/file"}));
    QCOMPARE(QDir(elsewhere.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList());
}

// Windows lets no file be removed that a program holds open.
void FileOperationsTest::aFileOfTheTargetIsHeldOpen() {
    write("new/file", "new");
    write("old/file", "old");
    write("old/held", "held");
    hold("old/held");
    QString error;
    const bool replaced = replaceDirectory(path("new"), path("old"), {}, path("backup"), &error);
    QCOMPARE(replaced, !support::onWindows);
    QVERIFY(!QFileInfo::exists(path("backup")));
    QCOMPARE(held.readAll(), QByteArray("held"));
    if (!support::onWindows) {
        QCOMPARE(tree(""), QStringList({"old/", "old/file"}));
        return;
    }
    QCOMPARE(error, "unable to remove directory: " + path("old"));
    QCOMPARE(tree(""), QStringList({"new/", "new/file", "old/", "old/file", "old/held"}));
}

void FileOperationsTest::theTargetIsTheCurrentFolderOfAProgram() {
    if (!support::onWindows)
        QSKIP("a folder can be removed all the same here");
    write("new/file", "new");
    write("old/file", "old");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(path("old")));
    QString error;
    const bool replaced = replaceDirectory(path("new"), path("old"), {}, path("backup"), &error);
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(!replaced);
    QCOMPARE(error, "unable to remove directory: " + path("old"));
    QCOMPARE(tree(""), QStringList({"new/", "new/file", "old/", "old/file"}));
}

void FileOperationsTest::targetsThatAreRefused_data() {
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("staging");
    QTest::addColumn<QString>("backup");
    // Were one of the first not refused, its backup could not be made: nothing would be lost.
    const QString nowhere = "BASE/file/backup";
    QTest::newRow("no target") << ""
                               << "BASE/new" << nowhere;
    const QString root = QDir::rootPath();
    QTest::newRow("the root") << root << "BASE/new" << nowhere;
    QTest::newRow("the root in other words") << root + "usr/.."
                                             << "BASE/new" << nowhere;
    QTest::newRow("the root of a volume")
        << QStorageInfo(support::onWindows ? QDir::tempPath() : "/proc").rootPath() << "BASE/new"
        << nowhere;
    QTest::newRow("the program's folder")
        << QCoreApplication::applicationDirPath() << "BASE/new" << nowhere;
    QTest::newRow("what holds the program") << support::stageRoot() << "BASE/new" << nowhere;
    QTest::newRow("what holds staging") << "BASE/p"
                                        << "BASE/p/new"
                                        << "BASE/backup";
    QTest::newRow("staging itself") << "BASE/new"
                                    << "BASE/new"
                                    << "BASE/backup";
    QTest::newRow("what holds the backup") << "BASE/p"
                                           << "BASE/new"
                                           << "BASE/p/backup";
    QTest::newRow("the backup itself") << "BASE/p"
                                       << "BASE/new"
                                       << "BASE/p";
    QTest::newRow("what holds the backup, in other words") << "BASE/p/new/../"
                                                           << "BASE/new"
                                                           << "BASE/p/backup";
    QTest::newRow("what holds staging, by a link") << "BASE/way"
                                                   << "BASE/p/new"
                                                   << "BASE/b";
    QTest::newRow("what is to hold the backup, by a link into it") << "BASE/p"
                                                                   << "BASE/new"
                                                                   << "BASE/inside/not/yet";
}

void FileOperationsTest::targetsThatAreRefused() {
    QFETCH(QString, target);
    QFETCH(QString, staging);
    QFETCH(QString, backup);
    write("file");
    write("new/file");
    write("p/new/file");
    write("p/kept");
    const bool linked = link(path("p"), "way") && link(path("p/new"), "inside");
    if (!linked && (target == "BASE/way" || backup.startsWith("BASE/inside")))
        QSKIP(noLinks);
    const QStringList before = tree("");
    const auto inPlace = [this](QString name) { return name.replace("BASE", path("")); };
    QString error;
    QVERIFY(
        !replaceDirectory(inPlace(staging), inPlace(target), {"logs"}, inPlace(backup), &error));
    QCOMPARE(error, QStringLiteral("unable to remove directory: %1").arg(inPlace(target)));
    QCOMPARE(tree(""), before);
}

void FileOperationsTest::aNeighbourWithALongerNameIsNoPartOfTheTarget() {
    write("line_new/file", "new");
    write("line/file", "old");
    QVERIFY(replaceDirectory(path("line_new"), path("line"), {}, path("line_backup")));
    QCOMPARE(read("line/file"), QByteArray("new"));
}

// --- restoreDirectory

void FileOperationsTest::aBackupIsPutBack() {
    write("backup/file", "old");
    write("target/file", "new");
    write("target/added");
    QVERIFY(restoreDirectory(path("backup"), path("target")));
    QCOMPARE(tree(""), QStringList({"target/", "target/file"}));
    QCOMPARE(read("target/file"), QByteArray("old"));
}

void FileOperationsTest::aBackupIsPutWhereNothingIs() {
    write("backup/file");
    QVERIFY(restoreDirectory(path("backup"), path("target")));
    QCOMPARE(tree(""), QStringList({"target/", "target/file"}));
}

void FileOperationsTest::noBackup() {
    write("target/file");
    QString error;
    QVERIFY(!restoreDirectory(path("backup"), path("target"), &error));
    QCOMPARE(error, QStringLiteral("backup directory not found: %1").arg(path("backup")));
    QCOMPARE(tree(""), QStringList({"target/", "target/file"}));
}

void FileOperationsTest::aBackupAcrossVolumes() {
    const QString other = otherVolume();
    if (other.isEmpty())
        QSKIP("no second volume that can be written to");
    const QTemporaryDir elsewhere(other + "/quorvane-XXXXXX");
    const QString backup = elsewhere.filePath("backup");
    QVERIFY(QDir().mkpath(backup + "/sub"));
    write("target/file");
    QVERIFY(restoreDirectory(backup, path("target")));
    QCOMPARE(tree("target"), QStringList({"sub/"}));
    QVERIFY(!QFileInfo::exists(backup));
}

void FileOperationsTest::aRestoreIntoAFolderThatCannotBeRemoved() {
    write("backup/file");
    QString error;
    const QString folder = unremovable();
    QVERIFY(!restoreDirectory(path("backup"), folder, &error));
    QCOMPARE(error, "unable to remove directory: " + folder);
    QCOMPARE(tree("backup"), QStringList({"file"}));
}

// --- file versions

void FileOperationsTest::executablesHaveNoVersionHere() {
    QCOMPARE(fileVersionText(QCoreApplication::applicationFilePath()), QString());
    QCOMPARE(fileVersionText(path("missing.exe")), QString());
}

QUORVANE_TEST_MAIN(QCoreApplication, FileOperationsTest)
#include "file_operations_test.moc"
