// Folders, texts and archives where the system refuses a call in the midst. The program has these calls of its
// own, which refuse as the system would.
#include "support/file_tree.h"
#include "support/staged_main.h"
#include "update/files/file_operations.h"
#include "update/files/place_facts.h"
#include "update/files/text_file.h"
#include "update/files/zip_extract.h"

#include <QTemporaryDir>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using support::FileTree;

namespace {

constexpr int slowly = -1;

struct Refusal {
    QByteArray call;
    QString path;        // of what it is asked for, below the test's folder
    int error;           // none: a reading ends there; `slowly`: it is done after `meanwhile`
    int wellBefore = 0;  // calls that go well
    int times = INT_MAX; // that it is refused then
};

bool isRunning = false;    // a test: libraries call these before there are any objects
QVector<Refusal> refusals; // with whole paths
std::function<void()> meanwhile;
QByteArray anotherName; // of the folder `oneName`
QByteArray oneName;
QByteArray mounted; // what a volume is mounted at

bool refuses(const char *call, const char *path) {
    if (!isRunning)
        return false;
    for (Refusal &refusal : refusals) {
        if (refusal.call != call || QFile::encodeName(refusal.path) != path)
            continue;
        if (refusal.wellBefore-- > 0 || refusal.times-- <= 0)
            continue;
        if (meanwhile)
            meanwhile();
        errno = refusal.error;
        return true;
    }
    return false;
}

bool refuses(const char *call, int descriptor) {
    if (!isRunning || refusals.isEmpty())
        return false;
    char name[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t size = ::readlink(link.c_str(), name, sizeof name);
    return size > 0 && refuses(call, std::string(name, size_t(size)).c_str());
}

// What packing makes little smaller, so that it is read in several pieces.
FileTree content() {
    QByteArray noise(300000, '\0');
    for (int i = 0; i < noise.size(); ++i)
        noise[i] = char((i * 2654435761U) >> 13);
    return {{"first", "1"}, {"noise", noise}};
}

QByteArray packed() {
    return support::zipOf(content());
}

// A tree as lines, which a failed comparison shows. A copy that was only begun may be written to and not read,
// but by root.
QStringList linesOf(const FileTree &tree) {
    QStringList lines;
    for (auto file = tree.begin(); file != tree.end(); ++file)
        lines.append(file.key() + " = " + QString::fromUtf8(file.value()).remove("unreadable"));
    return lines;
}

int openFile(const char *path, int flags, mode_t mode) {
    if (refuses("open", path))
        return -1;
    return int(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

int move(const char *from, const char *to, unsigned flags) {
    return refuses("rename", from)
               ? -1
               : int(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, flags));
}

} // namespace

// A program's own functions come before those of the C library, for the libraries it uses too.
extern "C" {

int open(const char *path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    va_end(more);
    return openFile(path, flags, mode);
}

int open64(const char *path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    va_end(more);
    return openFile(path, flags, mode);
}

int openat(int folder, const char *path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    va_end(more);
    return refuses("open", path) ? -1 : int(::syscall(SYS_openat, folder, path, flags, mode));
}

ssize_t read(int descriptor, void *data, size_t size) {
    if (refuses("read", descriptor) && errno != slowly)
        return errno == 0 ? 0 : -1;
    return ::syscall(SYS_read, descriptor, data, size);
}

int fchmod(int descriptor, mode_t mode) noexcept {
    return refuses("fchmod", descriptor) ? -1 : int(::syscall(SYS_fchmod, descriptor, mode));
}

int syncfs(int descriptor) noexcept {
    return refuses("syncfs", descriptor) ? -1 : int(::syscall(SYS_syncfs, descriptor));
}

int mkdir(const char *path, mode_t mode) noexcept {
    return refuses("mkdir", path) ? -1 : int(::syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}

int unlink(const char *path) noexcept {
    return refuses("unlink", path) ? -1 : int(::syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

int rmdir(const char *path) noexcept {
    return refuses("rmdir", path) ? -1 : int(::syscall(SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR));
}

int rename(const char *from, const char *to) noexcept {
    return move(from, to, 0);
}

int renameat2(int, const char *from, int, const char *to, unsigned flags) noexcept {
    return move(from, to, flags);
}

int stat(const char *path, struct stat *about) noexcept {
    const char *const asked = isRunning && anotherName == path ? oneName.constData() : path;
    return int(::syscall(SYS_newfstatat, AT_FDCWD, asked, about, 0));
}

int statx(int folder, const char *path, int flags, unsigned wanted, struct statx *about) noexcept {
    if (wanted == 0 && refuses("statx", path)) // the product's own; Qt wants more
        return -1;
    const int result = int(::syscall(SYS_statx, folder, path, flags, wanted, about));
    if (isRunning && mounted == path)
        about->stx_attributes |= STATX_ATTR_MOUNT_ROOT;
    return result;
}

} // extern "C"

Q_DECLARE_METATYPE(Refusal)
Q_DECLARE_METATYPE(QVector<Refusal>)

class RefusedCallsTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> place;

    [[nodiscard]] QString path(const QString &name) const;
    void refuse(const QVector<Refusal> &asked);
    QStringList toldOfDamage(int error);

private Q_SLOTS:
    void init();
    void cleanup();
    void replacements_data();
    void replacements();
    void aBackupThatGoesBeforeItIsNeeded();
    void aFolderThatIsNotThereYetIsLeftInParts();
    void whatAVolumeIsMountedAtIsNotTakenApart();
    void whatHoldsThePackageUnderAnotherNameIsLeftAlone();
    void theRootOfAVolumeUnderAnotherName();
    void restores_data();
    void restores();
    void removals_data();
    void removals();
    void copies_data();
    void copies();
    void aTextOnADamagedDisk();
    void anArchiveThatMayNotBeRead();
    void anArchiveOnADamagedDisk();
    void anArchiveThatIsCutWhileItIsRead();
    void anArchiveOnADiskThatStandsStill();
};

QString RefusedCallsTest::path(const QString &name) const {
    return place->filePath(name);
}

void RefusedCallsTest::refuse(const QVector<Refusal> &asked) {
    for (Refusal refusal : asked) {
        refusal.path = path(refusal.path);
        refusals.append(refusal);
    }
}

void RefusedCallsTest::init() {
    place = std::make_unique<QTemporaryDir>(QFileInfo(QDir::tempPath()).canonicalFilePath() +
                                            "/quorvane-XXXXXX");
    isRunning = true;
}

void RefusedCallsTest::cleanup() {
    isRunning = false;
    refusals.clear();
    meanwhile = nullptr;
    anotherName.clear();
    oneName.clear();
    mounted.clear();
}

// --- replaceDirectory

void RefusedCallsTest::replacements_data() {
    QTest::addColumn<QVector<Refusal>>("asked");
    QTest::addColumn<QString>("error"); // none: it is replaced all the same
    QTest::addColumn<FileTree>("left");
    const FileTree package{{"new/file", "new"}};
    const FileTree whole{
        {"old/empty/", ""}, {"old/file", "old"}, {"old/sub/deep", "old"}, {"new/file", "new"}};
    const FileTree replaced{{"old/file", "new"}};
    const QString stays = "unable to remove directory: BASE/old";
    const auto row = [](const char *name, const QVector<Refusal> &asked, const QString &error,
                        const FileTree &left) { QTest::newRow(name) << asked << error << left; };
    const auto with = [](FileTree tree, const QString &name, const QByteArray &content) {
        tree.insert(name, content);
        return tree;
    };
    const auto without = [](FileTree tree, const QString &name) {
        tree.remove(name);
        return tree;
    };
    row("a file that cannot be read after all, and its folder stays in the backup",
        {{"open", "old/sub/deep", EIO}}, "unable to copy file: BASE/old/sub/deep",
        with(with(with(whole, "backup/empty/", ""), "backup/file", "old"), "backup/sub/deep", ""));
    row("the backup does not reach the disk", {{"syncfs", "backup", EIO}},
        "unable to copy file: BASE/backup", whole);
    row("the backup cannot be opened for that", {{"open", "backup", EMFILE}},
        "unable to copy file: BASE/backup", whole);
    row("the package does not reach the disk", {{"syncfs", "new", EIO}},
        "unable to copy file: BASE/new", whole);
    row("an unlisted folder that is not made again",
        {{"open", "old/empty", EACCES}, {"mkdir", "old/empty", ENOSPC}}, stays,
        without(whole, "old/empty/"));
    row("a system too old to tell of mounts", {{"statx", "old/sub", ENOSYS}}, "", replaced);
    row("the old folder stays", {{"rmdir", "old", EBUSY}}, stays, with(package, "old/", ""));
    row("the old folder goes at the second try", {{"rmdir", "old", EBUSY, 0, 1}}, stays, whole);
    row("the same, and the backup cannot be renamed",
        {{"rmdir", "old", EBUSY, 0, 1}, {"rename", "backup", EXDEV}}, stays, whole);
    row("the same, and its copy does not reach the disk",
        {{"rmdir", "old", EBUSY, 0, 1}, {"rename", "backup", EXDEV}, {"syncfs", "old", EIO}}, stays,
        whole);
    row("the same, and it cannot be copied either",
        {{"rmdir", "old", EBUSY, 0, 1}, {"rename", "backup", EXDEV}, {"mkdir", "old", ENOSPC}},
        stays, package);
    row("the package cannot be renamed", {{"rename", "new", EXDEV}}, "", replaced);
    row("the package cannot be renamed, and its copy does not reach the disk",
        {{"rename", "new", EXDEV}, {"syncfs", "old", EIO}}, "unable to copy file: BASE/old", whole);
    row("the package can be neither renamed nor copied",
        {{"rename", "new", EXDEV}, {"open", "old/file", ENOSPC, 1}},
        "unable to copy file: BASE/new/file", whole);
}

void RefusedCallsTest::replacements() {
    QFETCH(QVector<Refusal>, asked);
    QFETCH(QString, error);
    support::writeTree(
        place->path(),
        {{"old/empty/", ""}, {"old/file", "old"}, {"old/sub/deep", "old"}, {"new/file", "new"}});
    refuse(asked);
    QString told;
    const bool replaced = replaceDirectory(path("new"), path("old"), {}, path("backup"), &told);
    refusals.clear();
    QCOMPARE(told, error.replace("BASE", place->path()));
    QCOMPARE(replaced, error.isEmpty());
    QFETCH(FileTree, left);
    QCOMPARE(linesOf(support::readTree(place->path())), linesOf(left));
}

// Somebody tidies up: nothing is there that could be put back.
void RefusedCallsTest::aBackupThatGoesBeforeItIsNeeded() {
    support::writeTree(place->path(), {{"old/sub/file", "old"}, {"new/file", "new"}});
    refuse({{"rmdir", "old", EBUSY, 0, 1}});
    meanwhile = [this] { QVERIFY(removeDirectory(path("backup"))); };
    QString error;
    QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("backup"), &error));
    QCOMPARE(error, "unable to remove directory: " + path("old"));
    QCOMPARE(linesOf(support::readTree(place->path())),
             linesOf(FileTree({{"old/", ""}, {"new/file", "new"}})));
}

// No backup was made of what was not there.
void RefusedCallsTest::aFolderThatIsNotThereYetIsLeftInParts() {
    support::writeTree(place->path(), {{"new/sub/file", "new"}});
    refuse({{"rename", "new", EXDEV}, {"open", "new/sub/file", EIO}});
    QString error;
    QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("backup"), &error));
    refusals.clear();
    QCOMPARE(error, "unable to copy file: " + path("new/sub/file"));
    QCOMPARE(linesOf(support::readTree(place->path())),
             linesOf(FileTree({{"old/sub/file", ""}, {"new/sub/file", "new"}})));
}

void RefusedCallsTest::whatAVolumeIsMountedAtIsNotTakenApart() {
    const FileTree tree{{"old/volume/file", "x"}, {"new/file", "new"}};
    support::writeTree(place->path(), tree);
    mounted = QFile::encodeName(path("old/volume"));
    QString error;
    QVERIFY(!replaceDirectory(path("new"), path("old"), {}, path("backup"), &error));
    QCOMPARE(error, "unable to remove directory: " + path("old"));
    QCOMPARE(linesOf(support::readTree(place->path())), linesOf(tree));
}

// No path of the package shows that it lies in the folder.
void RefusedCallsTest::whatHoldsThePackageUnderAnotherNameIsLeftAlone() {
    const FileTree tree{{"file", ""}, {"mirror/new/file", "new"}, {"old/file", "x"}};
    support::writeTree(place->path(), tree);
    anotherName = QFile::encodeName(path("mirror"));
    oneName = QFile::encodeName(path("old"));
    // Were it not refused, the backup could not be made: nothing would be lost.
    QString error;
    QVERIFY(!replaceDirectory(path("mirror/new"), path("old"), {}, path("file/backup"), &error));
    QCOMPARE(error, "unable to remove directory: " + path("old"));
    QCOMPARE(linesOf(support::readTree(place->path())), linesOf(tree));
}

void RefusedCallsTest::theRootOfAVolumeUnderAnotherName() {
    const QString otherRoot = rootOfVolume("/proc");
    QCOMPARE(otherRoot, QStringLiteral("/proc"));
    QVERIFY(mayBeReplaced(place->path(), {}));
    QVERIFY(!lieOnOneVolume(place->path(), otherRoot));
    QVERIFY(lieOnOneVolume(place->path(), QDir::tempPath()));
    oneName = QFile::encodeName(rootOfVolume(place->path()));
    anotherName = QFile::encodeName(place->path());
    QVERIFY(!mayBeReplaced(place->path(), {}));
    anotherName = "/proc";
    QVERIFY(lieOnOneVolume(place->path(), otherRoot));
}

// --- restoreDirectory

void RefusedCallsTest::restores_data() {
    QTest::addColumn<QVector<Refusal>>("asked");
    QTest::addColumn<QString>("error"); // none: it is put back
    QTest::addColumn<FileTree>("left");
    const auto row = [](const char *name, const QVector<Refusal> &asked, const QString &error,
                        const FileTree &left) { QTest::newRow(name) << asked << error << left; };
    row("a copy where it cannot be renamed", {{"rename", "backup", EXDEV}}, "",
        {{"target/file", "old"}});
    row("a copy that is refused", {{"rename", "backup", EXDEV}, {"open", "backup/file", EIO}},
        "unable to copy file: BASE/backup/file", {{"backup/file", "old"}, {"target/file", ""}});
    row("a copy that does not reach the disk",
        {{"rename", "backup", EXDEV}, {"syncfs", "target", EIO}},
        "unable to copy file: BASE/target", {{"backup/file", "old"}, {"target/file", "old"}});
}

void RefusedCallsTest::restores() {
    QFETCH(QVector<Refusal>, asked);
    QFETCH(QString, error);
    support::writeTree(place->path(), {{"backup/file", "old"}, {"target/file", "new"}});
    refuse(asked);
    QString told;
    const bool restored = restoreDirectory(path("backup"), path("target"), &told);
    refusals.clear();
    QCOMPARE(told, error.replace("BASE", place->path()));
    QCOMPARE(restored, error.isEmpty());
    QFETCH(FileTree, left);
    QCOMPARE(linesOf(support::readTree(place->path())), linesOf(left));
}

// --- removeDirectory

void RefusedCallsTest::removals_data() {
    QTest::addColumn<QVector<Refusal>>("asked");
    QTest::addColumn<FileTree>("left"); // none: it is gone
    QTest::newRow("a file that stays, and all others go")
        << QVector<Refusal>{{"unlink", "d/file", EBUSY}} << FileTree{{"d/file", "x"}};
    QTest::newRow("a file that goes once it may be written to")
        << QVector<Refusal>{{"unlink", "d/file", EACCES, 0, 1}} << FileTree();
    QTest::newRow("an inner folder that stays")
        << QVector<Refusal>{{"rmdir", "d/sub", EBUSY}} << FileTree{{"d/sub/", ""}};
}

void RefusedCallsTest::removals() {
    QFETCH(QVector<Refusal>, asked);
    QFETCH(FileTree, left);
    support::writeTree(place->path(), {{"d/file", "x"}, {"d/sub/deep/file", "x"}});
    refuse(asked);
    QString error;
    QCOMPARE(removeDirectory(path("d"), &error), left.isEmpty());
    QCOMPARE(error, left.isEmpty() ? QString() : "unable to remove directory: " + path("d"));
    QCOMPARE(linesOf(support::readTree(place->path())), linesOf(left));
}

// --- copyDirectory

void RefusedCallsTest::copies_data() {
    QTest::addColumn<Refusal>("asked");
    QTest::addColumn<QString>("error");
    QTest::addColumn<FileTree>("left");
    QTest::newRow("a file that may not be read")
        << Refusal{"open", "s/file", EACCES} << "unable to copy file: BASE/s/file"
        << FileTree{{"file", ""}};
    QTest::newRow("a file that may not be made")
        << Refusal{"open", "t/file", EDQUOT} << "unable to copy file: BASE/s/file" << FileTree();
    QTest::newRow("a volume that knows no permissions")
        << Refusal{"fchmod", "t/file", EPERM} << "unable to copy file: BASE/s/file"
        << FileTree{{"file", ""}};
    QTest::newRow("a folder that is refused for the file")
        << Refusal{"mkdir", "t", EIO, 1} << "unable to create directory: BASE/t" << FileTree();
}

void RefusedCallsTest::copies() {
    QFETCH(Refusal, asked);
    QFETCH(QString, error);
    support::writeTree(place->path(), {{"s/file", "x"}});
    refuse({asked});
    QString told;
    QVERIFY(!copyDirectory(path("s"), path("t"), &told));
    refusals.clear();
    QCOMPARE(told, error.replace("BASE", place->path()));
    QFETCH(FileTree, left);
    QCOMPARE(linesOf(support::readTree(path("t"))), linesOf(left));
}

// --- what is read

void RefusedCallsTest::aTextOnADamagedDisk() {
    support::writeTree(place->path(), {{"text", "abc"}});
    refuse({{"read", "text", EIO}});
    QString error;
    QVERIFY(readTextFile(path("text"), &error).isNull());
    QCOMPARE(error, QStringLiteral("Input/output error"));
    QVERIFY(readTextFile(path("text")).isNull());
}

void RefusedCallsTest::anArchiveThatMayNotBeRead() {
    support::writeTree(place->path(), {{"a.zip", support::zipOf({{"file", "x"}})}});
    refuse({{"open", "a.zip", EACCES}});
    QString error;
    QVERIFY(!extractZip(path("a.zip"), path("out"), &error));
    QCOMPARE(error, QStringLiteral("Permission denied"));
    QCOMPARE(linesOf(support::readTree(path("out"))), linesOf(FileTree()));
}

// Wherever the first damaged byte lies: what is told then, without repetitions.
QStringList RefusedCallsTest::toldOfDamage(int error) {
    support::writeTree(place->path(), {{"a.zip", packed()}});
    QStringList told;
    for (int wellBefore = 0;; ++wellBefore) {
        refuse({{"read", "a.zip", error, wellBefore}});
        QString reason;
        const bool extracted = extractZip(path("a.zip"), path("out"), &reason);
        refusals.clear();
        const FileTree out = support::readTree(path("out"));
        if (!removeDirectory(path("out")))
            qFatal("cannot remove what was unpacked");
        if (extracted)
            return out == content() ? told : QStringList();
        if (!told.contains(reason))
            told.append(reason);
    }
}

// And not that the archive is unsafe, since a name cannot be read. What libzip has got of a piece before the
// damage it takes for the end.
void RefusedCallsTest::anArchiveOnADamagedDisk() {
    QCOMPARE(
        toldOfDamage(EIO),
        QStringList({"Input/output error", "Read error: Input/output error",
                     "first: Read error: Input/output error", "first: Premature end of file",
                     "noise: Read error: Input/output error", "noise: Premature end of file"}));
}

void RefusedCallsTest::anArchiveThatIsCutWhileItIsRead() {
    QCOMPARE(toldOfDamage(0),
             QStringList({"Premature end of file", "Zip archive inconsistent",
                          "first: Premature end of file", "noise: Premature end of file"}));
}

// Whichever reading takes until the time is over. How far a busy machine comes before that is all the same.
void RefusedCallsTest::anArchiveOnADiskThatStandsStill() {
    constexpr int limit = 400; // ms
    support::writeTree(place->path(), {{"a.zip", packed()}});
    meanwhile = [] { QTest::qSleep(limit); };
    bool extracted = false;
    for (int wellBefore = 0; !extracted; ++wellBefore) {
        refuse({{"read", "a.zip", slowly, wellBefore, 1}});
        QString reason;
        extracted = extractZipWithin(path("a.zip"), path("out"), limit, &reason);
        const bool stoodStill = refusals.first().times < 1;
        refusals.clear();
        QVERIFY(!extracted || !stoodStill);
        QCOMPARE(reason, extracted ? QString() : QStringLiteral("zip extraction timed out"));
        QVERIFY(removeDirectory(path("out")));
    }
}

QUORVANE_TEST_MAIN(QCoreApplication, RefusedCallsTest)
#include "refused_calls_test.moc"
