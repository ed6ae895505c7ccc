// The folder operations on real folders; what cannot fail as root is made to fail by other means.
#include "support/staged_main.h"
#include "update/file_operations.h"
#include "update/file_version.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace {

// Root may do anything. As long as this lives, the test is somebody else, to whom the folder belongs.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const QString &folder)
        : isOne(::geteuid() != 0) {
        const uid_t nobody = 65534;
        const QByteArray name = QFile::encodeName(folder);
        if (isOne || ::chown(name.constData(), nobody, static_cast<gid_t>(-1)) != 0 ||
            ::seteuid(nobody) != 0)
            return;
        becameOne = true;
        isOne = ::euidaccess(name.constData(), W_OK | X_OK) == 0;
    }
    ~OrdinaryUser() {
        if (becameOne && ::seteuid(0) != 0)
            qFatal("cannot be root again");
    }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

    bool isOne;

private:
    bool becameOne = false;
};

} // namespace

class FileOperationsTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const QString &name) const { return m_folder->filePath(name); }

    void write(const QString &name, const QByteArray &content = "x") const {
        QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
    }

    void makeFolder(const QString &name) const { QVERIFY(QDir().mkpath(path(name))); }

    void link(const QString &to, const QString &name) const {
        QCOMPARE(::symlink(QFile::encodeName(to), QFile::encodeName(path(name))), 0);
    }

    QByteArray read(const QString &name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }

    // All that lies below, sorted; folders end in a slash, links in an at sign.
    QStringList tree(const QString &name) const {
        const QString root = path(name);
        QStringList found;
        QDirIterator entries(root,
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QString entry = entries.next();
            const QFileInfo info = entries.fileInfo();
            found += entry.mid(root.size() + 1) + (info.isSymLink() ? "@"
                                                   : info.isDir()   ? "/"
                                                                    : "");
        }
        found.sort();
        return found;
    }

    // A folder on another volume than the temporary one.
    static QString otherVolume() {
        for (const char *candidate : {"/dev/shm", "/run", "/var/tmp"}) {
            struct stat here {};
            struct stat there {};
            const QByteArray temporary = QFile::encodeName(QDir::tempPath());
            if (::stat(temporary.constData(), &here) == 0 && ::stat(candidate, &there) == 0 &&
                here.st_dev != there.st_dev && ::access(candidate, W_OK) == 0)
                return candidate;
        }
        return QString();
    }

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    // --- findFileBySuffix

    void aFileIsFoundAtAnyDepth() {
        write("p/a/b/c/line.yslib");
        write("p/a/line.yslib.bak");
        makeFolder("p/folder.yslib");
        QCOMPARE(findFileBySuffix(path("p"), ".yslib"), path("p/a/b/c/line.yslib"));
        QVERIFY(findFileBySuffix(path("p"), ".zip").isNull());
        QVERIFY(findFileBySuffix(path("missing"), ".yslib").isNull());
    }

    void aSuffixCountsInAnyCaseAndAHiddenFileDoesNot() {
        write("p/.hidden.yslib");
        write("p/.folder/line.yslib");
        QVERIFY(findFileBySuffix(path("p"), ".yslib").isNull());
        write("p/LINE.YSLIB");
        QCOMPARE(findFileBySuffix(path("p"), ".yslib"), path("p/LINE.YSLIB"));
    }

    void aFileBehindALinkIsNotFound() {
        write("outside/line.yslib");
        makeFolder("p");
        link(path("outside"), "p/way");
        QVERIFY(findFileBySuffix(path("p"), ".yslib").isNull());
    }

    // --- removeDirectory

    void aMissingFolderCountsAsRemoved() {
        QString error;
        QVERIFY(removeDirectory(path("missing"), &error));
        QVERIFY(removeDirectory(QString(), &error));
        QCOMPARE(error, QString());
    }

    void everythingBelowIsRemoved() {
        write("d/a/b/file");
        write("d/.hidden/.file");
        write(QStringLiteral("d/产线/文件"));
        makeFolder("d/empty");
        write("d/readonly");
        QFile::setPermissions(path("d/readonly"), QFile::ReadOwner);
        QCOMPARE(::mkfifo(QFile::encodeName(path("d/pipe")), 0600), 0);
        link("nowhere", "d/dangling");
        QVERIFY(removeDirectory(path("d")));
        QCOMPARE(tree(""), QStringList());
    }

    void removingNeverEntersALink() {
        write("outside/kept");
        makeFolder("d/sub");
        link(path("outside"), "d/sub/way");
        link(path("outside/kept"), "d/file");
        QVERIFY(removeDirectory(path("d")));
        QCOMPARE(tree(""), QStringList({"outside/", "outside/kept"}));
    }

    void aFolderThatIsALinkIsUnlinked() {
        write("outside/kept");
        link(path("outside"), "d");
        QVERIFY(removeDirectory(path("d")));
        QCOMPARE(tree(""), QStringList({"outside/", "outside/kept"}));
    }

    void aFolderThatCannotBeLookedAtIsNotTakenForGone() {
        const OrdinaryUser user(m_folder->path());
        if (!user.isOne)
            QSKIP("root may do anything, and cannot become anybody else here");
        write("closed/d/file");
        write("new/file");
        QCOMPARE(::chmod(QFile::encodeName(path("closed")), 0600), 0);
        QString error;
        const bool removed = removeDirectory(path("closed/d"), &error);
        QString told;
        const bool replaced =
            replaceDirectory(path("new"), path("closed/d"), {}, path("backup"), &told);
        ::chmod(QFile::encodeName(path("closed")), 0700);
        QVERIFY(!removed && !replaced);
        QCOMPARE(error, "unable to remove directory: " + path("closed/d"));
        QCOMPARE(told, "unable to copy file: " + path("closed/d"));
        QCOMPARE(tree("closed"), QStringList({"d/", "d/file"}));
        QVERIFY(!QFileInfo::exists(path("backup")));
    }

    void aLinkThatCannotBeRemovedLeavesWhatItLeadsToAsItIs() {
        const OrdinaryUser user(m_folder->path());
        if (!user.isOne)
            QSKIP("root may do anything, and cannot become anybody else here");
        write("outside");
        QVERIFY(QFile::setPermissions(path("outside"), QFile::ReadOwner));
        makeFolder("d");
        link(path("outside"), "d/way");
        QCOMPARE(::chmod(QFile::encodeName(path("d")), 0500), 0);
        QVERIFY(!removeDirectory(path("d")));
        ::chmod(QFile::encodeName(path("d")), 0700);
        struct stat after {};
        QCOMPARE(::stat(QFile::encodeName(path("outside")), &after), 0);
        QCOMPARE(after.st_mode & 0777, 0400U);
    }

    void aFileIsNoFolderToRemove() {
        write("file");
        QVERIFY(removeDirectory(path("file")));
        QCOMPARE(tree(""), QStringList({"file"}));
    }

    void aFolderThatCannotBeRemoved() {
        QString error;
        QVERIFY(!removeDirectory("/proc/self/task", &error));
        QCOMPARE(error, QStringLiteral("unable to remove directory: /proc/self/task"));
        QVERIFY(!removeDirectory("/proc/self/task"));
    }

    void threeHundredFoldersDeep() {
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

    void copying() {
        write("s/a/b/file", "1");
        write(QStringLiteral("s/产线/文件"), "2");
        makeFolder("s/empty");
        QVERIFY(copyDirectory(path("s"), path("t/deeper")));
        QCOMPARE(tree("t/deeper"),
                 QStringList({"a/", "a/b/", "a/b/file", "empty/", QStringLiteral("产线/"),
                              QStringLiteral("产线/文件")}));
        QCOMPARE(read("t/deeper/a/b/file"), QByteArray("1"));
        QCOMPARE(read(QStringLiteral("t/deeper/产线/文件")), QByteArray("2"));
    }

    void copyingReplacesFilesAndKeepsOthers() {
        write("s/same", "new");
        write("t/same", "a longer old one");
        write("t/other", "kept");
        QVERIFY(copyDirectory(path("s"), path("t")));
        QCOMPARE(read("t/same"), QByteArray("new"));
        QCOMPARE(read("t/other"), QByteArray("kept"));
    }

    void aReadOnlyFileIsReplacedByAReadOnlyFile() {
        write("s/file", "new");
        QFile::setPermissions(path("s/file"), QFile::ReadOwner);
        write("t/file", "old");
        QFile::setPermissions(path("t/file"), QFile::ReadOwner);
        QVERIFY(copyDirectory(path("s"), path("t")));
        QCOMPARE(read("t/file"), QByteArray("new"));
        // Root may write to anything, and the copy then says so.
        if (::geteuid() != 0)
            QVERIFY(!(QFile::permissions(path("t/file")) & QFile::WriteOwner));
    }

    void hiddenEntriesAreLeftOut() {
        write("s/.file");
        write("s/.folder/file");
        write("s/seen");
        QVERIFY(copyDirectory(path("s"), path("t")));
        QCOMPARE(tree("t"), QStringList({"seen"}));
    }

    void linksAreCopiedAsWhatTheyAre() {
        write("outside/file", "content");
        makeFolder("s");
        QCOMPARE(::mkfifo(QFile::encodeName(path("outside/pipe")), 0600), 0);
        QCOMPARE(::mkfifo(QFile::encodeName(path("s/pipe")), 0600), 0);
        link(path("outside/file"), "s/file");
        link(path("outside"), "s/folder");
        link(path("outside/pipe"), "s/linked_pipe");
        link("/dev/zero", "s/device");
        link("nowhere", "s/dangling");
        QVERIFY(copyDirectory(path("s"), path("t")));
        QCOMPARE(tree("t"), QStringList({"file", "folder/"}));
        QCOMPARE(read("t/file"), QByteArray("content"));
    }

    void aLinkInTheTargetIsReplacedNotWrittenThrough() {
        write("outside", "kept");
        write("s/file", "new");
        makeFolder("t");
        link(path("outside"), "t/file");
        QVERIFY(copyDirectory(path("s"), path("t")));
        QCOMPARE(read("outside"), QByteArray("kept"));
        QCOMPARE(read("t/file"), QByteArray("new"));
    }

    void copiesThatFail_data() {
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

    void copiesThatFail() {
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
        link("/proc/nowhere/at/all", "blocked/dangling");
        QString error;
        QVERIFY(!copyDirectory(path(source), path(target), &error));
        QCOMPARE(error, text.arg(path(named)));
        QVERIFY(!copyDirectory(path(source), path(target)));
    }

    void noSourceAtAllIsNotTheCurrentFolder() {
        QString error;
        QVERIFY(!copyDirectory(QString(), path("t"), &error));
        QCOMPARE(error, QStringLiteral("source directory not found: "));
    }

    // --- listFolder

    void aFolderIsListedWithWhatIsHidden() {
        write("folder/.hidden");
        write("folder/sub/deep");
        write("folder/文件");
        QFileInfoList entries;
        QVERIFY(listFolder(path("folder"), &entries));
        QStringList names;
        for (const QFileInfo &entry : qAsConst(entries))
            names += entry.filePath();
        names.sort();
        QCOMPARE(names,
                 QStringList({path("folder/.hidden"), path("folder/sub"), path("folder/文件")}));
    }

    void aFolderThatCannotBeListedIsNotAnEmptyOne() {
        write("file");
        QFileInfoList entries;
        QString unreadable;
        QVERIFY(!listFolder(path("none"), &entries, &unreadable));
        QCOMPARE(unreadable, path("none"));
        QVERIFY(!listFolder(path("file"), &entries));
        QVERIFY(entries.isEmpty());
    }

    // --- replaceDirectory

    void aFolderIsReplaced() {
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

    void aFolderThatIsNotThereYet() {
        write("new/file", "new");
        QVERIFY(replaceDirectory(path("new"), path("old"), {"logs"}, path("backup")));
        QCOMPARE(tree(""), QStringList({"old/", "old/file"}));
    }

    void theBackupLiesBesideTheTargetIfNoneIsNamed() {
        for (const QString &blank : {QString(), QStringLiteral("  \t")}) {
            write("new/file");
            write("old/file");
            write("old.apply_backup/stale");
            QVERIFY(replaceDirectory(path("new"), path("old"), {}, blank));
            QCOMPARE(tree(""), QStringList({"old/", "old/file"}));
        }
    }

    void preservedFoldersComeAlongAndTheirFilesWin() {
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

    void aPreservedNameIsMeantToTheLetter() {
        write("new/file");
        write("old/Logs/old.log");
        QVERIFY(replaceDirectory(path("new"), path("old"), {"logs"}, path("backup")));
        QCOMPARE(tree("old"), QStringList({"file"}));
    }

    // Seen beforehand: the copy, or the removal, would leave parts of it.
    void aFolderThatCannotBeTakenApartIsLeftAlone_data() {
        QTest::addColumn<QString>("spoilt");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("error"); // none: it is replaced all the same
        const QString stays = "unable to remove directory: BASE/in/target";
        const auto row = [](const char *name, const QString &spoilt, int mode,
                            const QString &error) {
            QTest::newRow(name) << spoilt << mode << error;
        };
        row("a folder that cannot be listed", "in/target/b", 0300,
            "unable to copy file: BASE/in/target/b");
        row("a hidden one too", "in/target/.c", 0300, "unable to copy file: BASE/in/target/.c");
        row("a file that cannot be read", "in/target/b/file", 0,
            "unable to copy file: BASE/in/target/b/file");
        row("a folder that nothing can be taken out of", "in/target/b", 0500, stays);
        row("one whose entries can be listed and no more", "in/target/b", 0600, stays);
        row("the project's folder itself", "in/target", 0500, stays);
        row("the folder that it lies in", "in", 0500, stays);
        row("a file that may not be written to", "in/target/b/file", 0400, "");
        row("a hidden file that cannot be read", "in/target/.hidden", 0, "");
        row("an empty folder that may not be written to", "in/target/empty", 0500, "");
        row("what a link leads to", "outside", 0500, "");
    }

    void aFolderThatCannotBeTakenApartIsLeftAlone() {
        QFETCH(QString, spoilt);
        QFETCH(int, mode);
        QFETCH(QString, error);
        const OrdinaryUser user(m_folder->path());
        if (!user.isOne)
            QSKIP("root may do anything, and cannot become anybody else here");
        for (const char *name : {"in/target/a/file", "in/target/b/file", "in/target/.c/file",
                                 "in/target/.hidden", "outside/file", "staging/new"})
            write(name);
        makeFolder("in/target/empty");
        link(path("outside"), "in/target/way");
        const QStringList before = tree("in");
        QCOMPARE(::chmod(QFile::encodeName(path(spoilt)), static_cast<mode_t>(mode)), 0);
        QString told;
        const bool replaced =
            replaceDirectory(path("staging"), path("in/target"), {}, path("backup"), &told);
        ::chmod(QFile::encodeName(path(spoilt)), 0700);
        QCOMPARE(told, error.replace("BASE", m_folder->path()));
        QCOMPARE(replaced, error.isEmpty());
        QCOMPARE(tree("in"), error.isEmpty() ? QStringList({"target/", "target/new"}) : before);
        QVERIFY(!QFileInfo::exists(path("backup")));
        QCOMPARE(read("outside/file"), QByteArray("x"));
    }

    void aNameThatIsNoUtf8LeavesTheFolderAlone() {
        write("old/sub/file");
        write("new/file");
        const QByteArray name = QFile::encodeName(path("old/sub/")) + "\xB2\xFA.log";
        const int descriptor = ::open(name.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        QVERIFY(descriptor >= 0);
        ::close(descriptor);
        const QString start = "unable to copy file: " + path("old/sub/");
        QString error;
        QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("backup"), &error));
        QVERIFY2(error.startsWith(start) && error.endsWith(".log"), qPrintable(error));
        QCOMPARE(read("old/sub/file"), QByteArray("x"));
        QVERIFY(!QFileInfo::exists(path("backup")));
        QVERIFY(!copyDirectory(path("old"), path("copy"), &error)); // nor is it left out of a copy
        QVERIFY2(error.startsWith(start), qPrintable(error));
        QCOMPARE(::unlink(name.constData()), 0); // the folder's own removal could not
    }

    void aPreservedNameThatIsAFile() {
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

    void noStagingFolder() {
        write("old/file");
        QString error;
        QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("backup"), &error));
        QCOMPARE(error, QStringLiteral("staging directory not found: %1").arg(path("new")));
        QCOMPARE(tree(""), QStringList({"old/", "old/file"}));
    }

    void aBackupThatCannotBeMade() {
        write("new/file");
        write("old/file");
        write("blocking");
        QString error;
        QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("blocking/backup"), &error));
        QCOMPARE(error, QStringLiteral("unable to create destination directory: %1")
                            .arg(path("blocking/backup")));
        QCOMPARE(read("old/file"), QByteArray("x"));
    }

    void aStaleBackupThatCannotBeRemoved() {
        write("new/file");
        write("old/file", "old");
        QString error;
        QVERIFY(!replaceDirectory(path("new"), path("old"), {}, "/proc/self/task", &error));
        QCOMPARE(error, QStringLiteral("unable to remove directory: /proc/self/task"));
        QCOMPARE(read("old/file"), QByteArray("old"));
        QVERIFY(QFileInfo::exists(path("new/file")));
    }

    // What was copied so far stays at the backup's place.
    void aPartialBackupStays() {
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

    void theTargetMayBeGoneByTheTimeOfTheBackup() {
        QString error;
        QVERIFY(!backUpDirectory(path("gone"), path("backup"), &error));
        QCOMPARE(error, QStringLiteral("backup source not found: %1").arg(path("gone")));
    }

    // Hidden files of the project are in no backup; a success drops them.
    void hiddenFilesOfTheOldFolderAreGone() {
        write("new/file");
        write("old/.quorvane-installed-version");
        QVERIFY(replaceDirectory(path("new"), path("old"), {}, path("backup")));
        QCOMPARE(tree("old"), QStringList({"file"}));
    }

    void aTargetThatIsALinkIsReplacedByAFolder() {
        write("outside/kept");
        write("new/file");
        link(path("outside"), "old");
        QVERIFY(replaceDirectory(path("new"), path("old"), {}, path("backup")));
        QCOMPARE(tree(""), QStringList({"old/", "old/file", "outside/", "outside/kept"}));
    }

    void aMoveAcrossVolumesCopies() {
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

    void targetsThatAreRefused_data() {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("staging");
        QTest::addColumn<QString>("backup");
        // Were one of the first not refused, its backup could not be made: nothing would be lost.
        const QString nowhere = "BASE/file/backup";
        QTest::newRow("no target") << ""
                                   << "BASE/new" << nowhere;
        QTest::newRow("the root") << "/"
                                  << "BASE/new" << nowhere;
        QTest::newRow("the root in other words") << "/usr/.."
                                                 << "BASE/new" << nowhere;
        QTest::newRow("the root of a volume") << "/proc"
                                              << "BASE/new" << nowhere;
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
    }

    void targetsThatAreRefused() {
        QFETCH(QString, target);
        QFETCH(QString, staging);
        QFETCH(QString, backup);
        write("file");
        write("new/file");
        write("p/new/file");
        write("p/kept");
        link(path("p"), "way");
        const QStringList before = tree("");
        const auto inPlace = [this](QString name) { return name.replace("BASE", path("")); };
        QString error;
        QVERIFY(!replaceDirectory(inPlace(staging), inPlace(target), {"logs"}, inPlace(backup),
                                  &error));
        QCOMPARE(error, QStringLiteral("unable to remove directory: %1").arg(inPlace(target)));
        QCOMPARE(tree(""), before);
    }

    void aNeighbourWithALongerNameIsNoPartOfTheTarget() {
        write("line_new/file", "new");
        write("line/file", "old");
        QVERIFY(replaceDirectory(path("line_new"), path("line"), {}, path("line_backup")));
        QCOMPARE(read("line/file"), QByteArray("new"));
    }

    // --- restoreDirectory

    void aBackupIsPutBack() {
        write("backup/file", "old");
        write("target/file", "new");
        write("target/added");
        QVERIFY(restoreDirectory(path("backup"), path("target")));
        QCOMPARE(tree(""), QStringList({"target/", "target/file"}));
        QCOMPARE(read("target/file"), QByteArray("old"));
    }

    void aBackupIsPutWhereNothingIs() {
        write("backup/file");
        QVERIFY(restoreDirectory(path("backup"), path("target")));
        QCOMPARE(tree(""), QStringList({"target/", "target/file"}));
    }

    void noBackup() {
        write("target/file");
        QString error;
        QVERIFY(!restoreDirectory(path("backup"), path("target"), &error));
        QCOMPARE(error, QStringLiteral("backup directory not found: %1").arg(path("backup")));
        QCOMPARE(tree(""), QStringList({"target/", "target/file"}));
    }

    void aBackupAcrossVolumes() {
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

    void aRestoreIntoAFolderThatCannotBeRemoved() {
        write("backup/file");
        QString error;
        QVERIFY(!restoreDirectory(path("backup"), "/proc/self/task", &error));
        QCOMPARE(error, QStringLiteral("unable to remove directory: /proc/self/task"));
        QCOMPARE(tree("backup"), QStringList({"file"}));
    }

    // --- file versions

    void executablesHaveNoVersionHere() {
        QCOMPARE(fileVersionText(QCoreApplication::applicationFilePath()), QString());
        QCOMPARE(fileVersionText(path("missing.exe")), QString());
    }
};

QUORVANE_TEST_MAIN(QCoreApplication, FileOperationsTest)
#include "file_operations_test.moc"
