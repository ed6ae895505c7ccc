// The folder operations where the user lacks a right, and where a name is no text.
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/ordinary_user.h"
#include "support/staged_main.h"
#include "update/files/file_operations.h"

#include <QTemporaryDir>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

using support::FileTree;
using support::OrdinaryUser;

namespace {

enum class Outcome { True, False, NoMounts };

// What `work` gives in a process of its own, for which `from` is at `to` too.
Outcome whileMounted(const QString &from, const QString &to, const std::function<bool()> &work) {
    const pid_t child = ::fork();
    if (child == 0) {
        const bool mounted =
            (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount(QFile::encodeName(from).constData(), QFile::encodeName(to).constData(), nullptr,
                    MS_BIND, nullptr) == 0;
        ::_exit(int(!mounted ? Outcome::NoMounts : work() ? Outcome::True : Outcome::False));
    }
    int status = 0;
    const bool ended = ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    return ended ? Outcome(WEXITSTATUS(status)) : Outcome::False;
}

} // namespace

class FileRightsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFolderThatCannotBeLookedAtIsNotTakenForGone();
    void aLinkThatCannotBeRemovedLeavesWhatItLeadsToAsItIs();
    void aFolderThatCannotBeTakenApartIsLeftAlone_data();
    void aFolderThatCannotBeTakenApartIsLeftAlone();
    void whatALinkedProjectHoldsStaysAsItIs();
    void aNameThatIsNoUtf8LeavesTheFolderAlone();
    void whatHoldsThePackageIsLeftAloneAtAnotherMountToo();
};

void FileRightsTest::aFolderThatCannotBeLookedAtIsNotTakenForGone() {
    const QTemporaryDir folder;
    const OrdinaryUser user(folder.path());
    if (!user.isOne)
        QSKIP("root may do anything, and cannot become anybody else here");
    const QString closed = folder.filePath("closed");
    support::writeTree(folder.path(), {{"closed/d/file", "x"}, {"new/file", "x"}});
    QCOMPARE(::chmod(QFile::encodeName(closed), 0600), 0);
    QString error;
    const bool removed = removeDirectory(closed + "/d", &error);
    QString told;
    const bool replaced = replaceDirectory(folder.filePath("new"), closed + "/d", {},
                                           folder.filePath("backup"), &told);
    ::chmod(QFile::encodeName(closed), 0700);
    QVERIFY(!removed && !replaced);
    QCOMPARE(error, "unable to remove directory: " + closed + "/d");
    QCOMPARE(told, "unable to remove directory: " + closed + "/d");
    QCOMPARE(support::readTree(closed), FileTree({{"d/file", "x"}}));
    QVERIFY(!QFileInfo::exists(folder.filePath("backup")));
}

void FileRightsTest::aLinkThatCannotBeRemovedLeavesWhatItLeadsToAsItIs() {
    const QTemporaryDir folder;
    const OrdinaryUser user(folder.path());
    if (!user.isOne)
        QSKIP("root may do anything, and cannot become anybody else here");
    support::writeTree(folder.path(), {{"outside", "x"}, {"d/", ""}});
    QVERIFY(QFile::setPermissions(folder.filePath("outside"), QFile::ReadOwner));
    QVERIFY(support::makeLink(folder.filePath("outside"), folder.filePath("d/way")));
    QCOMPARE(::chmod(QFile::encodeName(folder.filePath("d")), 0500), 0);
    QVERIFY(!removeDirectory(folder.filePath("d")));
    ::chmod(QFile::encodeName(folder.filePath("d")), 0700);
    struct stat after {};
    QCOMPARE(::stat(QFile::encodeName(folder.filePath("outside")), &after), 0);
    QCOMPARE(after.st_mode & 0777, 0400U);
}

// Seen beforehand: the copy, or the removal, would leave parts of it. The text is the one that the
// replacement would have ended with.
void FileRightsTest::aFolderThatCannotBeTakenApartIsLeftAlone_data() {
    QTest::addColumn<QStringList>("spoilt");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("error"); // none: it is replaced all the same
    const QString stays = "unable to remove directory: BASE/in/target";
    const QString uncopied = "unable to copy file: BASE/in/target/b/file";
    const auto row = [](const char *name, const QStringList &spoilt, int mode,
                        const QString &error) { QTest::newRow(name) << spoilt << mode << error; };
    row("a folder that cannot be listed", {"in/target/b"}, 0300, stays);
    row("a hidden one too", {"in/target/.c"}, 0300, stays);
    row("one below a hidden one", {"in/target/.c/sub"}, 0300, stays);
    row("an empty folder that cannot be listed", {"in/target/empty"}, 0300, "");
    row("an empty one that nothing may be done with", {"in/target/empty"}, 0, "");
    row("an empty one beside another that is not", {"in/target/empty", "in/target/b"}, 0300, stays);
    row("the project's folder itself, unlisted", {"in/target"}, 0300, stays);
    row("a file that cannot be read", {"in/target/b/file"}, 0, uncopied);
    row("one beside a folder that cannot be listed", {"in/target/a", "in/target/b/file"}, 0200,
        uncopied);
    row("a folder that nothing can be taken out of", {"in/target/b"}, 0500, stays);
    row("one whose entries can be listed and no more", {"in/target/b"}, 0600, stays);
    row("the project's folder itself", {"in/target"}, 0500, stays);
    row("the folder that it lies in", {"in"}, 0500, stays);
    row("a file that may not be written to", {"in/target/b/file"}, 0400, "");
    row("a hidden file that cannot be read", {"in/target/.hidden"}, 0, "");
    row("a file below a hidden folder that cannot be read", {"in/target/.c/file"}, 0, "");
    row("a file further below one", {"in/target/.c/sub/file"}, 0, "");
    row("an empty folder that may not be written to", {"in/target/empty"}, 0500, "");
    row("what a link leads to", {"outside"}, 0500, "");
}

void FileRightsTest::aFolderThatCannotBeTakenApartIsLeftAlone() {
    QFETCH(QStringList, spoilt);
    QFETCH(int, mode);
    QFETCH(QString, error);
    const QTemporaryDir folder;
    const OrdinaryUser user(folder.path());
    if (!user.isOne)
        QSKIP("root may do anything, and cannot become anybody else here");
    support::writeTree(folder.path(), {{"in/target/a/file", "x"},
                                       {"in/target/b/file", "x"},
                                       {"in/target/.c/file", "x"},
                                       {"in/target/.c/sub/file", "x"},
                                       {"in/target/.hidden", "x"},
                                       {"in/target/empty/", ""},
                                       {"outside/file", "x"},
                                       {"staging/new", "x"}});
    QVERIFY(support::makeLink(folder.filePath("outside"), folder.filePath("in/target/way")));
    const FileTree before = support::readTree(folder.filePath("in"));
    for (const QString &name : spoilt)
        QCOMPARE(::chmod(QFile::encodeName(folder.filePath(name)), static_cast<mode_t>(mode)), 0);
    QString told;
    const bool replaced = replaceDirectory(folder.filePath("staging"), folder.filePath("in/target"),
                                           {}, folder.filePath("backup"), &told);
    for (const QString &name : spoilt)
        ::chmod(QFile::encodeName(folder.filePath(name)), 0700);
    QCOMPARE(told, error.replace("BASE", folder.path()));
    QCOMPARE(replaced, error.isEmpty());
    QCOMPARE(support::readTree(folder.filePath("in")),
             error.isEmpty() ? FileTree({{"target/new", "x"}}) : before);
    QVERIFY(!QFileInfo::exists(folder.filePath("backup")));
    QCOMPARE(support::readTree(folder.filePath("outside")), FileTree({{"file", "x"}}));
}

void FileRightsTest::whatALinkedProjectHoldsStaysAsItIs() {
    const QTemporaryDir folder;
    const OrdinaryUser user(folder.path());
    if (!user.isOne)
        QSKIP("root may do anything, and cannot become anybody else here");
    support::writeTree(folder.path(), {{"outside/empty/", ""}, {"new/file", "x"}});
    QVERIFY(support::makeLink(folder.filePath("outside"), folder.filePath("project")));
    const QByteArray closed = QFile::encodeName(folder.filePath("outside/empty"));
    QCOMPARE(::chmod(closed.constData(), 0300), 0);
    QString error;
    QVERIFY(!replaceDirectory(folder.filePath("new"), folder.filePath("project"), {},
                              folder.filePath("backup"), &error));
    QCOMPARE(error, "unable to remove directory: " + folder.filePath("project"));
    struct stat after {};
    QCOMPARE(::stat(closed.constData(), &after), 0);
    ::chmod(closed.constData(), 0700);
    QCOMPARE(after.st_mode & 0777, 0300U);
}

void FileRightsTest::aNameThatIsNoUtf8LeavesTheFolderAlone() {
    const QTemporaryDir folder;
    support::writeTree(folder.path(), {{"old/sub/file", "x"}, {"new/file", "x"}});
    const QByteArray sub = QFile::encodeName(folder.filePath("old/sub/"));
    const QByteArrayList names{sub + "\xB2\xFA.log", sub + "\xB2\xFB.log"};
    for (const QByteArray &name : names) {
        const int descriptor = ::open(name.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        QVERIFY(descriptor >= 0);
        ::close(descriptor);
    }
    QString error;
    QVERIFY(!replaceDirectory(folder.filePath("new"), folder.filePath("old"), {},
                              folder.filePath("backup"), &error));
    QCOMPARE(error, "unable to remove directory: " + folder.filePath("old"));
    QVERIFY(support::readTree(folder.filePath("old")).contains("sub/file"));
    QVERIFY(!QFileInfo::exists(folder.filePath("backup")));
    QVERIFY(!copyDirectory(folder.filePath("old"), folder.filePath("copy"),
                           &error)); // nor is it left out of a copy
    // Either of the two, which are shown alike.
    QCOMPARE(error, "unable to copy file: " + folder.filePath("old/sub/") +
                        QString(2, QChar::ReplacementCharacter) + ".log");
    for (const QByteArray &name : names)
        QCOMPARE(::unlink(name.constData()), 0); // the folder's own removal could not
}

// No path of the package shows that it lies in this folder.
void FileRightsTest::whatHoldsThePackageIsLeftAloneAtAnotherMountToo() {
    const QTemporaryDir folder;
    support::writeTree(folder.path(),
                       {{"file", ""}, {"mirror/", ""}, {"p/kept", "x"}, {"p/new/file", "x"}});
    const QString target = folder.filePath("mirror/p");
    const Outcome refused = whileMounted(folder.path(), folder.filePath("mirror"), [&] {
        // Were it not refused, the backup could not be made: nothing would be lost.
        QString error;
        return !replaceDirectory(folder.filePath("p/new"), target, {},
                                 folder.filePath("file/backup"), &error) &&
               error == "unable to remove directory: " + target;
    });
    if (refused == Outcome::NoMounts)
        QSKIP("no mounts of its own for a process here");
    QVERIFY(refused == Outcome::True);
    QCOMPARE(support::readTree(folder.filePath("p")), FileTree({{"kept", "x"}, {"new/file", "x"}}));
}

QUORVANE_TEST_MAIN(QCoreApplication, FileRightsTest)
#include "file_rights_test.moc"
