// Archives of archivers, archives by hand, and archives that mean harm.
#include "support/search_path.h"
#include "support/staged_main.h"
#include "support/zip_maker.h"
#include "update/files/zip_extract.h"
#include "update/files/zip_unpack.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <clocale>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using support::makeZip;
using support::SearchPath;
using support::ZipEntry;
using support::ZipWish;

namespace {

constexpr quint16 utf8Flag = 0x800;

ZipEntry modeEntry(const QByteArray &name, const QByteArray &content, quint16 mode) {
    ZipEntry entry{name, content};
    entry.mode = mode;
    return entry;
}

} // namespace

Q_DECLARE_METATYPE(ZipEntry)

class ZipExtractTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> workFolder;
    QString reason;
    bool isUnsafe = false; // as told by extract()

    QString path(const QString &name) const;
    QString write(const QString &name, const QByteArray &content) const;
    bool extract(const QByteArray &zip);
    QByteArray read(const QString &name) const;
    QStringList tree() const;
    void run(const QString &program, const QStringList &arguments, const QString &folder) const;

private Q_SLOTS:
    void init();
    void filesComeOutByteForByte();
    void foldersWithAndWithoutAnEntryOfTheirOwn();
    void anEmptyArchive();
    void aCommentAndBytesInFront();
    void bytesThatWerePutInFront();
    void aCommentWithTheMarkOfAnEnd();
    void dataInAnotherOrderThanTheDirectory();
    void aPlaceBeyondTheSmallForm_data();
    void aPlaceBeyondTheSmallForm();
    void theLargeForm();
    void largeFormsThatLeadNowhere_data();
    void largeFormsThatLeadNowhere();
    void aDirectoryThatEndsBeforeItsEnd();
    void seventyThousandEntries();
    void ofTheProgramZip();
    void ofThePythonModule();
    void ofAStreamOfThePythonModule();
    void ofAStreamOfTheProgramZip();
    void names_data();
    void names();
    void namesDoNotDependOnTheLocale();
    void unsafeNames_data();
    void unsafeNames();
    void aNulInTheName_data();
    void aNulInTheName();
    void twoHalves_data();
    void twoHalves();
    void twoDirectories_data();
    void twoDirectories();
    void anEndThatSaysOtherwise_data();
    void anEndThatSaysOtherwise();
    void anEmptyArchiveBehindOtherBytes();
    void aNameThatIsNotTheUtf8ThatItSays();
    void aFolderWithContent();
    void anEncryptedEntry();
    void anEncryptedArchiveOfTheProgramZip();
    void aLinkIsWrittenAsAPlainFile();
    void aPackedLinkIsWrittenAsAPlainFile();
    void aLinkOfTheProgramZip();
    void nothingIsWrittenThroughALinkOfTheArchive();
    void nothingIsWrittenThroughALinkOfTheTarget();
    void devicesAndPermissionsAreLeftOut();
    void noArchive();
    void nothingIsUnpackedIntoTheRoot_data();
    void nothingIsUnpackedIntoTheRoot();
    void aFolderInThePlaceOfTheArchive();
    void aTargetThatCannotBeMade();
    void brokenArchives_data();
    void brokenArchives();
    void theTextsOfTheReader();
    void anExistingFileIsNotOverwritten();
    void aTextOfAFailureNeedsNoPlace();
    void theTimeRunsOut();
    void theTimeRunsOutWhileNamesAreRead();
    void theTimeRunsOutBetweenEntries();
    void theTimeRunsOutWithinOneEntry();
    void tooManyNames();
    void namesThatAreMadeToBeFoundSlowly();
    void headersOfManyBytes();
    void contentOfMoreBytesThanHeadersMayHave();
    void aBombEndsAtTheLimit();
    void aBombEndsAtTheFullDisk();
    void theCommandOfPowershell();
    void pathsAreNotEscaped();
    void unsafeNamesByThePattern_data();
    void unsafeNamesByThePattern();
    void powershellEnds_data();
    void powershellEnds();
    void noPowershell();
};

QString ZipExtractTest::path(const QString &name) const {
    return workFolder->filePath(name);
}

QString ZipExtractTest::write(const QString &name, const QByteArray &content) const {
    QFile file(path(name));
    if (!QDir().mkpath(QFileInfo(path(name)).path()) || !file.open(QIODevice::WriteOnly) ||
        file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(name));
    return path(name);
}

bool ZipExtractTest::extract(const QByteArray &zip) {
    ZipFailure failure;
    const bool done = extractZip(write("a.zip", zip), path("out"), &failure);
    reason = failure.reason;
    isUnsafe = failure.isUnsafe;
    return done;
}

QByteArray ZipExtractTest::read(const QString &name) const {
    QFile file(path("out/" + name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

QStringList ZipExtractTest::tree() const {
    QStringList found;
    QDirIterator entries(path("out"),
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString entry = entries.next();
        found.append(entry.mid(path("out").size() + 1) + (entries.fileInfo().isDir() ? "/" : ""));
    }
    found.sort();
    return found;
}

void ZipExtractTest::run(const QString &program, const QStringList &arguments,
                         const QString &folder) const {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    // As long as it takes on a loaded machine: QtTest ends a function that hangs.
    QVERIFY2(process.waitForFinished(-1), qPrintable(process.errorString()));
    QVERIFY2(process.exitCode() == 0, process.readAllStandardError());
}

void ZipExtractTest::init() {
    workFolder = std::make_unique<QTemporaryDir>();
}

// --- what comes out

void ZipExtractTest::filesComeOutByteForByte() {
    QByteArray noise(300000, '\0');
    for (int i = 0; i < noise.size(); ++i)
        noise[i] = char((i * 2654435761U) >> 13);
    QVERIFY2(extract(makeZip({{"stored", noise},
                              {"packed", noise, true},
                              {"deep/er/zeros", QByteArray(5000000, '\0'), true},
                              {"empty", ""}})),
             qPrintable(reason));
    QVERIFY(read("stored") == noise);
    QVERIFY(read("packed") == noise);
    QVERIFY(read("deep/er/zeros") == QByteArray(5000000, '\0'));
    QCOMPARE(tree(),
             QStringList({"deep/", "deep/er/", "deep/er/zeros", "empty", "packed", "stored"}));
}

void ZipExtractTest::foldersWithAndWithoutAnEntryOfTheirOwn() {
    QVERIFY(QDir().mkpath(path("out/before")));
    QVERIFY2(extract(makeZip({{"own/", ""},
                              {"own/file", "1"},
                              {"own/deep/file", "1"},
                              {"before/file", "1"},
                              {"implied/file", "2"},
                              {"late/file", "3"},
                              {"late/", ""}})),
             qPrintable(reason));
    QCOMPARE(tree(), QStringList({"before/", "before/file", "implied/", "implied/file", "late/",
                                  "late/file", "own/", "own/deep/", "own/deep/file", "own/file"}));
}

void ZipExtractTest::anEmptyArchive() {
    QVERIFY2(extract(makeZip(QVector<ZipEntry>())), qPrintable(reason));
    QCOMPARE(tree(), QStringList());
}

void ZipExtractTest::aCommentAndBytesInFront() {
    ZipWish wish;
    wish.entries = {{"file", "content"}, {"packed", QByteArray(100000, 'x'), true}};
    wish.comment = "a comment";
    wish.before = "#!/bin/sh\nexit\n";
    QVERIFY2(extract(makeZipAs(wish)), qPrintable(reason));
    QCOMPARE(read("file"), QByteArray("content"));
    QCOMPARE(read("packed"), QByteArray(100000, 'x'));
}

// But for the length of a comment behind it: that is not as long as what is left.
void ZipExtractTest::aCommentWithTheMarkOfAnEnd() {
    ZipWish wish;
    wish.entries = {{"file", "content"}};
    wish.comment = "PK\x05\x06" + QByteArray(40, 'x');
    QVERIFY2(extract(makeZipAs(wish)), qPrintable(reason));
    QCOMPARE(read("file"), QByteArray("content"));
}

// All places in it are then wrong.
void ZipExtractTest::bytesThatWerePutInFront() {
    QVERIFY(!extract("#!/bin/sh\n" + makeZip({{"file", "content"}})));
    QCOMPARE(reason, QStringLiteral("Zip archive inconsistent"));
    QCOMPARE(tree(), QStringList());
}

void ZipExtractTest::dataInAnotherOrderThanTheDirectory() {
    const QByteArray one(100000, '1');
    const QByteArray two(100000, '2');
    QByteArray zip = makeZip({{"one", one}, {"two", two}});
    constexpr int record = 46 + 3;
    const QByteArray directory = zip.mid(zip.size() - 22 - 2 * record, 2 * record);
    zip.replace(zip.size() - 22 - 2 * record, 2 * record,
                directory.mid(record) + directory.left(record));
    QVERIFY2(extract(zip), qPrintable(reason));
    QCOMPARE(read("one"), one);
    QCOMPARE(read("two"), two);
}

void ZipExtractTest::aPlaceBeyondTheSmallForm_data() {
    QTest::addColumn<qint64>("place");
    QTest::addColumn<QString>("told"); // none: it comes out
    QTest::newRow("that is the data's") << qint64(0) << "";
    QTest::newRow("that the file has not") << (qint64(1) << 40) << "Not a zip archive";
    QTest::newRow("that is another's") << qint64(1) << "Not a zip archive";
}

// As of an entry that lies behind 4 GiB.
void ZipExtractTest::aPlaceBeyondTheSmallForm() {
    QFETCH(qint64, place);
    QFETCH(QString, told);
    QByteArray zip = makeZip({{"file", "content"}});
    const int directory = zip.size() - 22 - 46 - 4;
    QByteArray extra("\x01\x00\x08\x00", 4);
    extra.resize(12);
    qToLittleEndian(place, extra.data() + 4);
    zip[directory + 30] = char(extra.size());
    zip.replace(directory + 42, 4, QByteArray(4, '\xFF'));
    zip[zip.size() - 22 + 12] = char(46 + 4 + extra.size());
    zip.insert(zip.size() - 22, extra);
    QCOMPARE(extract(zip), told.isEmpty());
    QCOMPARE(reason, told);
    QCOMPARE(read("file"), QByteArray(told.isEmpty() ? "content" : "(none)"));
}

// A signature behind the entries, which libzip does not follow.
void ZipExtractTest::aDirectoryThatEndsBeforeItsEnd() {
    QByteArray zip = makeZip({{"file", "content"}});
    const QByteArray signature("PK\x05\x05\x00\x00", 6);
    zip[zip.size() - 22 + 12] = char(46 + 4 + signature.size());
    zip.insert(zip.size() - 22, signature);
    QVERIFY(!extract(zip));
    QCOMPARE(reason, QStringLiteral("Zip archive inconsistent"));
    QVERIFY(!isUnsafe);
    QCOMPARE(tree(), QStringList());
}

void ZipExtractTest::theLargeForm() {
    ZipWish wish;
    wish.entries = {{"file", "content"}, {"packed", QByteArray(100000, 'x'), true}};
    wish.zip64 = true;
    QVERIFY2(extract(makeZipAs(wish)), qPrintable(reason));
    QCOMPARE(read("file"), QByteArray("content"));
    QCOMPARE(read("packed"), QByteArray(100000, 'x'));
}

// The end of the large form is where the bytes of its number say.
void ZipExtractTest::largeFormsThatLeadNowhere_data() {
    QTest::addColumn<int>("fromEnd"); // of the archive, where the number stands
    QTest::addColumn<qint64>("number");
    constexpr int endAt = 22 + 12;
    constexpr int directoryAt = 22 + 20 + 8;
    QTest::newRow("an end behind all that a file may hold")
        << endAt << std::numeric_limits<qint64>::max();
    QTest::newRow("an end before the file") << endAt << qint64(-1);
    QTest::newRow("a directory before the file") << directoryAt << qint64(-1);
    QTest::newRow("a directory behind its end") << directoryAt << (qint64(1) << 40);
}

void ZipExtractTest::largeFormsThatLeadNowhere() {
    QFETCH(int, fromEnd);
    QFETCH(qint64, number);
    ZipWish wish;
    wish.entries = {{"file", "content"}};
    wish.zip64 = true;
    QByteArray zip = makeZipAs(wish);
    qToLittleEndian(number, zip.data() + zip.size() - fromEnd);
    QVERIFY(!extract(zip));
    QCOMPARE(reason, QStringLiteral("Zip archive inconsistent"));
    QCOMPARE(tree(), QStringList());
    // In memory a file may be read at places that no disk lets a program go to.
    const QTemporaryDir memory("/dev/shm/zip_extract_XXXXXX");
    QFile archive(memory.filePath("a.zip"));
    if (memory.isValid()) {
        QVERIFY(archive.open(QIODevice::WriteOnly) && archive.write(zip) == zip.size());
        archive.close();
        ZipFailure failure;
        QVERIFY(!extractZip(archive.fileName(), path("out"), &failure));
        QCOMPARE(failure.reason, QStringLiteral("Zip archive inconsistent"));
    }
}

void ZipExtractTest::seventyThousandEntries() {
    ZipWish wish;
    for (int i = 0; i < 70000; ++i)
        wish.entries.append({"d/" + QByteArray::number(i), ""});
    wish.zip64 = true; // more than the small form can count
    QVERIFY2(extract(makeZipAs(wish)), qPrintable(reason));
    QCOMPARE(QDir(path("out/d")).count() - 2, 70000U);
}

void ZipExtractTest::ofTheProgramZip() {
    QVERIFY2(!QStandardPaths::findExecutable("zip").isEmpty(),
             "zip is not installed: run scripts/setup test");
    write(QStringLiteral("in/产线三/主程序.yslib"), "{}");
    write("in/plain.ys", QByteArray(100000, 'y'));
    write("in/.hidden", "h");
    run("zip", {"-q", "-r", path("a.zip"), "."}, path("in"));
    QVERIFY2(extractZip(path("a.zip"), path("out"), &reason), qPrintable(reason));
    QCOMPARE(tree(), QStringList({".hidden", "plain.ys", QStringLiteral("产线三/"),
                                  QStringLiteral("产线三/主程序.yslib")}));
    QCOMPARE(read(QStringLiteral("产线三/主程序.yslib")), QByteArray("{}"));
}

void ZipExtractTest::ofThePythonModule() {
    QVERIFY2(!QStandardPaths::findExecutable("python3").isEmpty(),
             "python3 is not installed: run scripts/setup test");
    write(QStringLiteral("in/产线三/主程序.yslib"), "{}");
    write("in/plain.ys", QByteArray(100000, 'y'));
    run("python3", {"-m", "zipfile", "-c", path("a.zip"), "plain.ys", QStringLiteral("产线三")},
        path("in"));
    QVERIFY2(extractZip(path("a.zip"), path("out"), &reason), qPrintable(reason));
    QCOMPARE(tree(), QStringList({"plain.ys", QStringLiteral("产线三/"),
                                  QStringLiteral("产线三/主程序.yslib")}));
}

// Sizes and checksums then stand behind the data, and zeros before it.
void ZipExtractTest::ofAStreamOfThePythonModule() {
    QVERIFY2(!QStandardPaths::findExecutable("python3").isEmpty(),
             "python3 is not installed: run scripts/setup test");
    write("in/plain.ys", QByteArray(100000, 'y'));
    run("sh",
        {"-c",
         "python3 -c 'import sys, zipfile; zipfile.ZipFile(sys.stdout.buffer, \"w\", "
         "zipfile.ZIP_DEFLATED).write(\"plain.ys\")' | cat >\"$1\"",
         "sh", path("a.zip")},
        path("in"));
    QVERIFY2(extractZip(path("a.zip"), path("out"), &reason), qPrintable(reason));
    QCOMPARE(read("plain.ys"), QByteArray(100000, 'y'));
}

// Meant: this program puts one of the sizes before the data all the same, so the halves disagree.
void ZipExtractTest::ofAStreamOfTheProgramZip() {
    QVERIFY2(!QStandardPaths::findExecutable("zip").isEmpty(),
             "zip is not installed: run scripts/setup test");
    write("in/plain.ys", QByteArray(100000, 'y'));
    run("sh", {"-c", "zip -q - plain.ys | cat >\"$1\"", "sh", path("a.zip")}, path("in"));
    QVERIFY(!extractZip(path("a.zip"), path("out"), &reason));
    QCOMPARE(reason, QStringLiteral("Zip archive inconsistent"));
}

// --- names

void ZipExtractTest::names_data() {
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<int>("flags");
    QTest::addColumn<QString>("written");
    const QByteArray utf8 = QStringLiteral("产线/文件.ys").toUtf8();
    const QByteArray gbk = "\xB2\xFA\xCF\xDF/\xCE\xC4\xBC\xFE.ys";
    const QString chinese = QStringLiteral("产线/文件.ys");
    QTest::newRow("Chinese, said to be UTF-8") << utf8 << int(utf8Flag) << chinese;
    QTest::newRow("Chinese in UTF-8 without saying so") << utf8 << 0 << chinese;
    QTest::newRow("Chinese in GBK") << gbk << 0 << chinese;
    // The second byte of this letter is a backslash.
    QTest::newRow("GBK with a byte like a backslash")
        << QByteArray("\xD5\x5C.ys") << 0 << QStringLiteral("誠.ys");
    QTest::newRow("GBK that ends like UTF-8 cut in the midst")
        << QByteArray("a\xE4\xBA") << 0 << QStringLiteral("a浜");
    QTest::newRow("backslashes are slashes") << QByteArray("a\\b\\c") << 0 << "a/b/c";
    QTest::newRow("both separators in one name") << QByteArray("a\\b/c\\d") << 0 << "a/b/c/d";
    QTest::newRow("both separators in a row") << QByteArray("a\\/b") << 0 << "a/b";
    QTest::newRow("letters and their accents apart")
        << QByteArray("a\xCC\x88.ys") << int(utf8Flag) << QString::fromUtf8("a\xCC\x88.ys");
    QTest::newRow("letters and their accents apart, without saying UTF-8")
        << QByteArray("a\xCC\x88.ys") << 0 << QString::fromUtf8("a\xCC\x88.ys");
    QTest::newRow("letters and their accents in one")
        << QByteArray("\xC3\xA4.ys") << int(utf8Flag) << QString::fromUtf8("\xC3\xA4.ys");
    QTest::newRow("the sign for what cannot be read, in UTF-8")
        << QByteArray("\xEF\xBF\xBD") << 0 << QString(QChar::ReplacementCharacter);
    QTest::newRow("a mark of byte order") << QByteArray("\xEF\xBB\xBF"
                                                        "a")
                                          << int(utf8Flag) << QString(QChar(0xFEFF)) + "a";
    QTest::newRow("dots within a name") << QByteArray("a..b/c") << 0 << "a..b/c";
    QTest::newRow("dots before a name") << QByteArray("..a/b") << 0 << "..a/b";
    QTest::newRow("dots behind a name") << QByteArray("a../b") << 0 << "a../b";
    QTest::newRow("three dots") << QByteArray(".../b") << 0 << ".../b";
    QTest::newRow("this folder") << QByteArray("./a/./b") << 0 << "a/b";
    QTest::newRow("slashes in a row") << QByteArray("a//b") << 0 << "a/b";
    QTest::newRow("a colon further on") << QByteArray("ab:c") << 0 << "ab:c";
    QTest::newRow("quotes and percent signs") << QByteArray("a'%1\"") << 0 << "a'%1\"";
    QTest::newRow("a blank at the end") << QByteArray("a ") << 0 << "a ";
    QTest::newRow("hidden") << QByteArray(".a") << 0 << ".a";
    QTest::newRow("a name beyond the first plane")
        << QByteArray("\xF0\x9F\x98\x80") << int(utf8Flag) << QString::fromUtf8("\xF0\x9F\x98\x80");
}

void ZipExtractTest::names() {
    QFETCH(QByteArray, stored);
    QFETCH(int, flags);
    QFETCH(QString, written);
    ZipEntry entry{stored, "content"};
    entry.flags = quint16(flags);
    QVERIFY2(extract(makeZip({entry})), qPrintable(reason));
    QCOMPARE(read(written), QByteArray("content"));
}

// A service may run in the plain locale.
void ZipExtractTest::namesDoNotDependOnTheLocale() {
    const QByteArray before = ::setlocale(LC_ALL, nullptr);
    ::setlocale(LC_ALL, "C");
    ZipEntry entry{QStringLiteral("产线.ys").toUtf8(), "content"};
    entry.flags = utf8Flag;
    const bool extracted = extract(makeZip({entry}));
    ::setlocale(LC_ALL, before.constData());
    QVERIFY2(extracted, qPrintable(reason));
    QCOMPARE(read(QStringLiteral("产线.ys")), QByteArray("content"));
}

// --- refused whole, before anything is written

void ZipExtractTest::unsafeNames_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("told");
    const auto row = [](const char *label, const QByteArray &name, const QString &told) {
        QTest::newRow(label) << name << told;
    };
    row("upwards in the middle", "a/../b", "a/../b");
    row("upwards at the start", "../x", "../x");
    row("upwards at the end", "a/..", "a/..");
    row("upwards alone", "..", "..");
    row("a folder upwards", "../", "../");
    row("upwards by a backslash", "..\\x", "../x");
    row("upwards by backslashes in the middle", "a\\..\\b", "a/../b");
    row("a drive", "C:/x", "C:/x");
    row("a drive in small letters", "c:x", "c:x");
    row("a drive with a backslash", "D:\\x", "D:/x");
    row("upwards by a slash and a backslash", "..\\/x", "..//x");
    row("upwards behind a slash, before a backslash", "a/..\\b", "a/../b");
    row("upwards behind a backslash, before a slash", "a\\../b", "a/../b");
    row("a backslash and a slash in front", "\\/x", "//x");
    row("a slash in front", "/x", "/x");
    row("a backslash in front", "\\x", "/x");
    row("a share", "\\\\server\\x", "//server/x");
    row("a line break", "a\nb", "a\nb");
    row("a bell", "a\ab", "a\ab");
    row("delete", "a\x7F", "a\x7F");
    row("a NUL", QByteArray("a\0b", 3), "a");
    row("a NUL before an upward path", QByteArray("a\0/../b", 7), "a");
}

void ZipExtractTest::unsafeNames() {
    QFETCH(QByteArray, name);
    QFETCH(QString, told);
    QVERIFY(!extract(makeZip({{"first", "1"}, {name, "2"}, {"last", "3"}})));
    QCOMPARE(reason, "unsafe zip entry: " + told);
    QVERIFY(isUnsafe);
    QCOMPARE(tree(), QStringList());
    QCOMPARE(QDir(workFolder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList({"a.zip", "out"}));
}

void ZipExtractTest::aNulInTheName_data() {
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<bool>("zip64");
    QTest::newRow("plain") << QByteArray() << false;
    QTest::newRow("behind other bytes") << QByteArray(1000, '#') << false;
    QTest::newRow("in the large form") << QByteArray() << true;
}

void ZipExtractTest::aNulInTheName() {
    QFETCH(QByteArray, before);
    QFETCH(bool, zip64);
    ZipWish wish;
    wish.entries = {{"first", "1"}, {QByteArray("harm\0ess", 8), "1"}};
    wish.zip64 = zip64;
    wish.before = before;
    QVERIFY(!extract(makeZipAs(wish)));
    QCOMPARE(reason, QStringLiteral("unsafe zip entry: harm"));
    QVERIFY(isUnsafe);
    QCOMPARE(tree(), QStringList());
}

// --- two halves that disagree

void ZipExtractTest::twoHalves_data() {
    QTest::addColumn<ZipEntry>("entry");
    const auto named = [](const char *label, const QByteArray &before, const QByteArray &listed) {
        ZipEntry entry{before, "1"};
        entry.nameInDirectory = listed;
        QTest::newRow(label) << entry;
    };
    named("a root in the directory", "xt", "/xt");
    named("a drive in the directory", "xt", "C:/xt");
    named("upwards in the directory", "xt", "../xt");
    named("upwards before the data", "../xt", "xt");
    named("two harmless names", "a", "b");
    named("one name longer by a letter", "xt", "xtt");
    named("a backslash for a slash", "a/b", "a\\b");
    named("a file before the data, a folder in the directory", "a", "a/");
    named("large letters for small ones", "a", "A");
    named("a NUL in the directory", "harmless", QByteArray("harm\0ess", 8));
    named("a NUL before the data", QByteArray("harm\0ess", 8), "harmless");
    named("a NUL in the directory for a blank", "harm ess", QByteArray("harm\0ess", 8));
    named("a NUL before the data for a blank", QByteArray("harm\0ess", 8), "harm ess");
    const QByteArray zeros(5000, '\0');
    ZipEntry entry{"packed", zeros, true};
    entry.sizeChange = 1;
    QTest::newRow("the size") << entry;
    entry.sizeChange = 0;
    entry.packedSizeChange = 1;
    QTest::newRow("the packed size") << entry;
    entry.packedSizeChange = 0;
    entry.methodInDirectory = 0;
    QTest::newRow("the method") << entry;
    ZipEntry plain{"plain", "content"};
    plain.methodInDirectory = 8;
    QTest::newRow("the method of an entry that is not packed") << plain;
}

void ZipExtractTest::twoHalves() {
    QFETCH(ZipEntry, entry);
    QVERIFY(!extract(makeZip({{"first", "1"}, entry, {"last", "3"}})));
    QCOMPARE(reason, QStringLiteral("Zip archive inconsistent"));
    QVERIFY(!isUnsafe);
    QCOMPARE(tree(), QStringList());
    QVERIFY(!QFileInfo::exists(path("xt")) && !QFileInfo::exists("/xt"));
}

void ZipExtractTest::twoDirectories_data() {
    QTest::addColumn<int>("commentSize"); // at least
    QTest::newRow("side by side") << 0;
    QTest::newRow("as far apart as they can be") << 65535;
}

// The one is in the other's comment; some readers take this one, some that one.
void ZipExtractTest::twoDirectories() {
    QFETCH(int, commentSize);
    ZipWish wish;
    wish.entries = {{"one", "1"}};
    ZipWish inner;
    inner.entries = {{"other", "2"}};
    const QByteArray outer = makeZipAs(wish);
    inner.before = outer;
    const int left = commentSize - (makeZipAs(inner).size() - outer.size());
    inner.before.append(QByteArray(std::max(0, left), ' '));
    wish.comment = makeZipAs(inner).mid(outer.size());
    QVERIFY(!extract(makeZipAs(wish)));
    QCOMPARE(reason, QStringLiteral("Zip archive inconsistent"));
    QCOMPARE(tree(), QStringList());
}

// Some readers find nothing then, or only the first entry, and say nothing.
void ZipExtractTest::anEndThatSaysOtherwise_data() {
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("fewerBytes"); // of the directory
    QTest::addColumn<int>("shift");      // of its place
    constexpr int first = 46 + 5;        // bytes of the first entry in the directory
    constexpr int all = 2 * 46 + 5 + 6;
    QTest::newRow("no entries") << 0 << 0 << 0;
    QTest::newRow("an entry less") << 1 << 0 << 0;
    QTest::newRow("an entry more") << 3 << 0 << 0;
    QTest::newRow("no bytes") << 2 << all << 0;
    QTest::newRow("fewer bytes") << 2 << 40 << 0;
    QTest::newRow("neither entries nor bytes") << 0 << all << 0;
    QTest::newRow("neither entries nor bytes, at its end") << 0 << all << all;
    QTest::newRow("the first entry alone") << 1 << all - first << 0;
    QTest::newRow("a place behind it") << 2 << 0 << 1;
}

void ZipExtractTest::anEndThatSaysOtherwise() {
    QFETCH(int, entries);
    QFETCH(int, fewerBytes);
    QFETCH(int, shift);
    QByteArray zip = makeZip({{"first", "1"}, {"second", "2"}});
    char *const end = zip.data() + zip.size() - 22;
    end[8] = char(entries);
    end[10] = char(entries);
    end[12] = char(end[12] - fewerBytes);
    end[16] = char(end[16] + shift);
    QVERIFY(!extract(zip));
    QCOMPARE(reason, QStringLiteral("Zip archive inconsistent"));
    QVERIFY(!isUnsafe);
    QCOMPARE(tree(), QStringList());
}

void ZipExtractTest::anEmptyArchiveBehindOtherBytes() {
    ZipWish wish;
    wish.before = "content";
    QVERIFY(!extract(makeZipAs(wish)));
    QCOMPARE(reason, QStringLiteral("Zip archive inconsistent"));
}

void ZipExtractTest::aNameThatIsNotTheUtf8ThatItSays() {
    ZipEntry entry{"a\xC0\xAF", "1"};
    entry.flags = utf8Flag;
    QVERIFY(!extract(makeZip({entry})));
    QVERIFY2(reason.endsWith(": the name is no UTF-8"), qPrintable(reason));
    QCOMPARE(tree(), QStringList());
}

void ZipExtractTest::aFolderWithContent() {
    QVERIFY(!extract(makeZip({{"first", "1"}, {"a/", "2"}})));
    QCOMPARE(reason, QStringLiteral("a/: a folder cannot have content"));
    QCOMPARE(tree(), QStringList());
}

void ZipExtractTest::anEncryptedEntry() {
    ZipEntry entry{"secret", QByteArray(40, 'x')};
    entry.flags = 1;
    QVERIFY(!extract(makeZip({{"first", "1"}, entry})));
    QCOMPARE(reason, QStringLiteral("encrypted zip entry: secret"));
    QVERIFY(!isUnsafe);
    QCOMPARE(tree(), QStringList());
}

void ZipExtractTest::anEncryptedArchiveOfTheProgramZip() {
    QVERIFY2(!QStandardPaths::findExecutable("zip").isEmpty(),
             "zip is not installed: run scripts/setup test");
    write("in/secret", "content");
    run("zip", {"-q", "-P", "password", path("a.zip"), "secret"}, path("in"));
    QVERIFY(!extractZip(path("a.zip"), path("out"), &reason));
    QCOMPARE(reason, QStringLiteral("encrypted zip entry: secret"));
    QCOMPARE(tree(), QStringList());
}

// --- links, devices, permissions

void ZipExtractTest::aLinkIsWrittenAsAPlainFile() {
    QVERIFY2(extract(makeZip(
                 {modeEntry("way", "/etc/passwd", 0120777), modeEntry("up", "..", 0120777)})),
             qPrintable(reason));
    QVERIFY(!QFileInfo(path("out/way")).isSymLink());
    QCOMPARE(read("way"), QByteArray("/etc/passwd"));
    QCOMPARE(read("up"), QByteArray(".."));
}

void ZipExtractTest::aPackedLinkIsWrittenAsAPlainFile() {
    ZipEntry entry = modeEntry("way", QByteArray("a/").repeated(200) + "b", 0120777);
    entry.deflated = true;
    const bool extracted = extract(makeZip({entry}));
    QVERIFY(!QFileInfo(path("out/way")).isSymLink());
    QVERIFY2(extracted, qPrintable(reason));
    QCOMPARE(read("way"), entry.content);
}

void ZipExtractTest::aLinkOfTheProgramZip() {
    QVERIFY2(!QStandardPaths::findExecutable("zip").isEmpty(),
             "zip is not installed: run scripts/setup test");
    write("in/file", "x");
    QCOMPARE(::symlink("/etc", QFile::encodeName(path("in/way"))), 0);
    run("zip", {"-q", "-r", "-y", path("a.zip"), "."}, path("in"));
    QVERIFY2(extractZip(path("a.zip"), path("out"), &reason), qPrintable(reason));
    QVERIFY(!QFileInfo(path("out/way")).isSymLink());
    QCOMPARE(read("way"), QByteArray("/etc"));
}

void ZipExtractTest::nothingIsWrittenThroughALinkOfTheArchive() {
    QVERIFY(!extract(makeZip({modeEntry("way", "..", 0120777), {"way/harm", "x"}})));
    QVERIFY(!QFileInfo::exists(path("harm")));
}

void ZipExtractTest::nothingIsWrittenThroughALinkOfTheTarget() {
    QVERIFY(QDir().mkpath(path("outside")) && QDir().mkpath(path("out")));
    QCOMPARE(::symlink(QFile::encodeName(path("outside")), QFile::encodeName(path("out/way"))), 0);
    QVERIFY(!extract(makeZip({{"way/harm", "x"}})));
    QCOMPARE(reason, QStringLiteral("unsafe zip entry: way/harm"));
    QVERIFY(!extract(makeZip({{"way/deeper/", ""}})));
    QVERIFY(!extract(makeZip({{"way", "x"}})));
    QCOMPARE(QDir(path("outside")).count(), 2U);
}

void ZipExtractTest::devicesAndPermissionsAreLeftOut() {
    QVERIFY2(extract(makeZip({modeEntry("device", "1", 0020666), modeEntry("pipe", "2", 0010666),
                              modeEntry("setuid", "3", 0106755)})),
             qPrintable(reason));
    for (const char *name : {"device", "pipe", "setuid"}) {
        struct stat status {};
        QCOMPARE(::lstat(QFile::encodeName(path("out/") + name), &status), 0);
        QVERIFY(S_ISREG(status.st_mode));
        QCOMPARE(status.st_mode & 07111, 0U);
    }
}

// --- failures

void ZipExtractTest::noArchive() {
    QVERIFY(!extractZip(path("missing.zip"), path("out"), &reason));
    QCOMPARE(reason, QStringLiteral("zip not found: %1").arg(path("missing.zip")));
    QVERIFY(!QFileInfo::exists(path("out")));
    QVERIFY(!extractZip(path("missing.zip"), path("out")));
}

void ZipExtractTest::nothingIsUnpackedIntoTheRoot_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("a file") << QByteArray("quorvane_unpacked_by_mistake");
    QTest::newRow("a folder") << QByteArray("quorvane_unpacked_by_mistake/");
}

// What lies in it cannot be told from what lies above it.
void ZipExtractTest::nothingIsUnpackedIntoTheRoot() {
    QFETCH(QByteArray, name);
    const QString zip = write("a.zip", makeZip({{name, ""}}));
    const bool extracted = extractZip(zip, "/", &reason);
    (void)QFile::remove('/' + name);
    (void)QDir().rmdir('/' + name);
    QVERIFY(!extracted);
    QCOMPARE(reason, "unsafe zip entry: " + name);
}

void ZipExtractTest::aFolderInThePlaceOfTheArchive() {
    QVERIFY(QDir().mkpath(path("a.zip")));
    QVERIFY(!extractZip(path("a.zip"), path("out"), &reason));
    QCOMPARE(reason, QStringLiteral("file to open is a directory"));
}

void ZipExtractTest::aTargetThatCannotBeMade() {
    write("a.zip", makeZip({{"file", "1"}}));
    QVERIFY(!extractZip(path("a.zip"), path("a.zip/out"), &reason));
    QCOMPARE(reason,
             QStringLiteral("unable to create destination directory: %1").arg(path("a.zip/out")));
    QVERIFY(!extractZip(path("a.zip"), QString(), &reason));
    QCOMPARE(reason, QStringLiteral("unable to create destination directory: "));
}

void ZipExtractTest::brokenArchives_data() {
    QTest::addColumn<QByteArray>("zip");
    const QByteArray whole =
        makeZip({{"first", QByteArray(100, '1')}, {"second", QByteArray(5000, '2'), true}});
    QTest::newRow("no bytes") << QByteArray();
    QTest::newRow("text") << QByteArray("this is not a zip archive");
    QTest::newRow("another kind of archive") << QByteArray("\x1F\x8B\x08\x00", 4);
    QTest::newRow("cut within the end record") << whole.left(whole.size() - 5);
    QTest::newRow("cut within the directory") << whole.left(whole.size() - 60);
    QTest::newRow("cut in half") << whole.left(whole.size() / 2);
    QTest::newRow("the start gone") << whole.mid(10);
    ZipEntry wrongCrc{"file", "content"};
    wrongCrc.crcChange = 1;
    QTest::newRow("a wrong checksum") << makeZip({wrongCrc});
    wrongCrc.deflated = true;
    QTest::newRow("a wrong checksum, packed") << makeZip({wrongCrc});
    ZipEntry unknown{"file", "content"};
    unknown.method = 77;
    QTest::newRow("an unknown method") << makeZip({unknown});
    ZipEntry noise{"file", QByteArray(100, '\xFF')};
    noise.method = 8;
    QTest::newRow("noise that is said to be packed") << makeZip({noise});
    QTest::newRow("two entries of one name") << makeZip({{"file", "1"}, {"file", "2"}});
    QTest::newRow("two names that mean one file") << makeZip({{"a/file", "1"}, {"a\\file", "2"}});
    QTest::newRow("a file and a folder of one name")
        << makeZip({{"name", "1"}, {"name/file", "2"}});
    QTest::newRow("a folder and a file of one name")
        << makeZip({{"name/file", "1"}, {"name", "2"}});
    QTest::newRow("a file named as this folder") << makeZip({{".", "1"}});
    QTest::newRow("a name too long for the system") << makeZip({{QByteArray(300, 'n'), "1"}});
    QTest::newRow("no name") << makeZip({{"", "1"}});
    QTest::newRow("a folder twice") << makeZip({{"a/", ""}, {"a/", ""}});
}

void ZipExtractTest::brokenArchives() {
    QFETCH(QByteArray, zip);
    QVERIFY(!extract(zip));
    QVERIFY(!reason.isEmpty());
}

void ZipExtractTest::theTextsOfTheReader() {
    ZipEntry wrongCrc{"file", "content"};
    wrongCrc.crcChange = 1;
    QVERIFY(!extract(makeZip({wrongCrc})));
    QCOMPARE(reason, QStringLiteral("file: CRC error"));
    QVERIFY(!extract("text"));
    QCOMPARE(reason, QStringLiteral("Not a zip archive"));
    QVERIFY(!extract(makeZip({{"a", "1"}, {"a", "2"}})));
    QCOMPARE(reason, QStringLiteral("two zip entries of one name"));
    ZipEntry unknown{"file", "content"};
    unknown.method = 77;
    QVERIFY(!extract(makeZip({unknown})));
    QCOMPARE(reason, QStringLiteral("file: the compression is not supported"));
}

void ZipExtractTest::anExistingFileIsNotOverwritten() {
    write("out/file", "old");
    QVERIFY(!extract(makeZip({{"file", "new"}})));
    QCOMPARE(reason,
             QStringLiteral("unable to write file: %1 (File exists)").arg(path("out/file")));
    QCOMPARE(read("file"), QByteArray("old"));
}

void ZipExtractTest::aTextOfAFailureNeedsNoPlace() {
    QVERIFY(!extractZip(write("a.zip", "x"), path("out")));
    QVERIFY(!extractZip(write("b.zip", makeZip({{"../x", ""}})), path("out")));
}

// --- limits

void ZipExtractTest::theTimeRunsOut() {
    const QString zip = write("a.zip", makeZip({{"zeros", QByteArray(4000000, '\0'), true}}));
    QVERIFY(!extractZipWithin(zip, path("out"), 0, &reason));
    QCOMPARE(reason, QStringLiteral("zip extraction timed out"));
    QCOMPARE(tree(), QStringList());
    QVERIFY(extractZipWithin(zip, path("out"), 120000, &reason));
}

// An archive may hold millions of names.
void ZipExtractTest::theTimeRunsOutWhileNamesAreRead() {
    const QString zip = write("a.zip", makeZip({{"first", "1"}, {QByteArray("a\0b", 3), "2"}}));
    QVERIFY(!extractZipWithin(zip, path("out"), 0, &reason));
    QCOMPARE(reason, QStringLiteral("zip extraction timed out"));
}

// An archive of few bytes and many zeros onto a disk that is too slow for them.
void ZipExtractTest::aBombEndsAtTheLimit() {
    const QString zip =
        write("a.zip", makeZip({{"zeros", QByteArray(16 << 20, '\0'), true}, {"then", "x"}}));
    QVERIFY(QFileInfo(zip).size() < 1 << 20);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!extractZipWithin(zip, path("out"), 5, &reason));
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(reason, QStringLiteral("zip extraction timed out"));
    QVERIFY(!QFileInfo::exists(path("out/then")));
}

// A small archive of 256 MiB of zeros, onto a disk that does not hold them and ends within a block
// that is written: the reason is told then too.
void ZipExtractTest::aBombEndsAtTheFullDisk() {
    const QString unshare = QStandardPaths::findExecutable("unshare");
    QVERIFY2(!unshare.isEmpty(), "unshare is not installed: run scripts/setup test");
    if (QProcess::execute(unshare, {"-Urm", "true"}) != 0)
        QSKIP("no private mounts on this system");
    QVERIFY2(!QStandardPaths::findExecutable("zip").isEmpty(),
             "zip is not installed: run scripts/setup test");
    QFile zeros(path("zeros"));
    QVERIFY(zeros.open(QIODevice::WriteOnly) && zeros.resize(1 << 28));
    const QString zip = path("a.zip");
    run("zip", {"-q", zip, "zeros"}, workFolder->path());
    QVERIFY(QFileInfo(zip).size() < 1 << 19);
    QVERIFY(QDir().mkpath(path("disk")));
    QProcess process;
    process.start(unshare,
                  {"-Urm", "sh", "-c",
                   "mount -t tmpfs -o size=65540k none \"$1\" && exec \"$2\" \"$3\" \"$1/out\"",
                   "sh", path("disk"), EXTRACT_PROGRAM, zip});
    QVERIFY(process.waitForFinished(-1));
    const QByteArray output = process.readAllStandardOutput();
    QVERIFY2(output.startsWith("unable to write file: ") &&
                 output.endsWith(" (No space left on device)\n"),
             output + process.readAllStandardError());
    QCOMPARE(process.exitCode(), 1);
}

// The limit grows until the first entry is asked about, which takes until the limit is over.
void ZipExtractTest::theTimeRunsOutBetweenEntries() {
    const QString zip = write("a.zip", makeZip({{"first/", ""}, {"second/", ""}}));
    QStringList asked;
    for (int limit = 50; limit < 60000 && asked.isEmpty(); limit *= 3) {
        const auto leavesOut = [limit, &asked](const QString &name) {
            asked.append(name);
            for (const QDeadlineTimer over(limit); !over.hasExpired();)
                QTest::qSleep(1);
            return true;
        };
        ZipFailure failure;
        QVERIFY(!unpackSomeByLibzip(zip, path("out"), limit, leavesOut, &failure));
        QCOMPARE(failure.reason, QStringLiteral("zip extraction timed out"));
    }
    QCOMPARE(asked, QStringList("first/"));
}

// The limit grows until the one entry is begun; all of it takes many times as long.
void ZipExtractTest::theTimeRunsOutWithinOneEntry() {
    const int size = 96 << 20;
    const QString zip = write("a.zip", makeZip({{"zeros", QByteArray(size, '\0'), true}}));
    for (int limit = 1; limit < 60000 && !QFileInfo::exists(path("out/zeros"));
         limit += 1 + limit / 4) {
        QVERIFY(!extractZipWithin(zip, path("out"), limit, &reason));
        QCOMPARE(reason, QStringLiteral("zip extraction timed out"));
    }
    const QFileInfo begun(path("out/zeros"));
    QVERIFY(begun.exists());
    QVERIFY2(begun.size() < size, qPrintable(QString::number(begun.size())));
}

void ZipExtractTest::tooManyNames() {
    ZipWish wish;
    for (int i = 0; i < 100001; ++i)
        wish.entries.append({QByteArray::number(i), ""});
    wish.zip64 = true;
    QVERIFY(!extract(makeZipAs(wish)));
    QCOMPARE(reason, QStringLiteral("the zip archive's directory is too large"));
    QCOMPARE(tree(), QStringList());
}

// The reader would compare each with all: 33 times a letter and the next one are the same for both pairs.
void ZipExtractTest::namesThatAreMadeToBeFoundSlowly() {
    ZipWish wish;
    for (int i = 0; i < 1 << 15; ++i) {
        QByteArray name;
        for (int bit = 0; bit < 15; ++bit)
            name += (i >> bit & 1) != 0 ? "Az" : "BY";
        wish.entries.append({name, ""});
    }
    QVERIFY(!extract(makeZipAs(wish)));
    QCOMPARE(reason, QStringLiteral("the zip archive's directory is too large"));
}

// What stands before the data of entries takes memory at once, before any is judged.
void ZipExtractTest::headersOfManyBytes() {
    ZipWish wish;
    for (int i = 0; i < 4000; ++i) {
        ZipEntry entry{"n" + QByteArray::number(1000 + i), ""};
        entry.extra = QByteArray("\x99\x99\xF8\x7F", 4) + QByteArray(0x7FF8, 'x');
        wish.entries.append(entry);
    }
    QVERIFY(!extract(makeZipAs(wish)));
    QCOMPARE(reason, QStringLiteral("the zip archive's directory is too large"));
}

void ZipExtractTest::contentOfMoreBytesThanHeadersMayHave() {
    QVERIFY2(!QStandardPaths::findExecutable("zip").isEmpty(),
             "zip is not installed: run scripts/setup test");
    const qint64 size = (64 << 20) + 1;
    QVERIFY(QFile::resize(write("in/large", ""), size));
    run("zip", {"-q", "-0", path("a.zip"), "large"}, path("in"));
    QVERIFY2(extractZip(path("a.zip"), path("out"), &reason), qPrintable(reason));
    QCOMPARE(QFileInfo(path("out/large")).size(), size);
}

// --- PowerShell

void ZipExtractTest::theCommandOfPowershell() {
    const QStringList arguments = powershellZipArguments("C:/a b.zip", QStringLiteral("D:/产线"));
    QCOMPARE(arguments.mid(0, 4),
             QStringList({"-NoProfile", "-ExecutionPolicy", "Bypass", "-Command"}));
    QCOMPARE(
        arguments.value(4),
        QStringLiteral(
            R"($ErrorActionPreference='Stop';Add-Type -AssemblyName System.IO.Compression.FileSystem;$zip=[IO.Compression.ZipFile]::OpenRead('C:/a b.zip');try {  foreach ($entry in $zip.Entries) {    $name=$entry.FullName.Replace('\','/');    if ($name -match '(^|/)\.\.(?=/|$)|^[A-Za-z]:|^[\\/]') { throw 'unsafe zip entry: ' + $name }  }} finally { $zip.Dispose() }[IO.Compression.ZipFile]::ExtractToDirectory('C:/a b.zip','D:/产线');)"));
}

// Kept: paths stand in the script as they are, so a quote breaks it.
void ZipExtractTest::pathsAreNotEscaped() {
    const QString script = powershellZipArguments("it's.zip", "%1%2").last();
    QCOMPARE(script.count("'it's.zip'"), 2);
    QVERIFY(script.endsWith(",'%1%2');"));
}

void ZipExtractTest::unsafeNamesByThePattern_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("unsafe");
    const QStringList bad = {"..",    "../a", "a/..",    "a/../b",  "..\\a",
                             "a\\..", "/a",   "a/..\\b", "a\\../b", "\\a",
                             "C:",    "c:a",  "Z:/a",    "//a",     "a//../b"};
    const QStringList good = {"",     "a",    "...",  "..a",  "a..",   "a..b",  ".",    "./a",
                              "a/.b", "ab:c", "1:/a", "a/C:", ".../a", "a/...", "..a/b"};
    for (const QString &name : bad)
        QTest::newRow(qPrintable("unsafe: " + name)) << name << true;
    for (const QString &name : good)
        QTest::newRow(qPrintable("safe: " + name)) << name << false;
}

void ZipExtractTest::unsafeNamesByThePattern() {
    QFETCH(QString, name);
    QTEST(isUnsafeZipName(name), "unsafe");
}

void ZipExtractTest::powershellEnds_data() {
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("error");
    QTest::newRow("success") << QByteArray("exit 0\n") << "";
    QTest::newRow("a failure with its words")
        << QByteArray("echo ' unsafe zip entry: ../x ' >&2; exit 1\n") << "unsafe zip entry: ../x";
    QTest::newRow("a failure without a word")
        << QByteArray("exit 7\n") << "zip extraction failed with exit code 7";
    QTest::newRow("words before a success") << QByteArray("echo x >&2; exit 0\n") << "";
    QTest::newRow("a crash with words") << QByteArray("echo broken >&2; kill -9 $$\n") << "broken";
    QTest::newRow("no end") << QByteArray("exec /bin/sleep 60\n") << "zip extraction timed out";
}

void ZipExtractTest::powershellEnds() {
    QFETCH(QByteArray, script);
    QFETCH(QString, error);
    SearchPath search(false);
    search.addScript("powershell", "echo \"$#\" > \"$here/log\"\n" + script);
    reason.clear();
    const int limit = error.endsWith("timed out") ? 1000 : 60000; // ms
    QCOMPARE(powershellUnpack("a.zip", "out", limit, &reason), error.isEmpty());
    QCOMPARE(reason, error);
    if (limit == 60000)
        QCOMPARE(search.read("log"), QByteArray("5\n"));
}

void ZipExtractTest::noPowershell() {
    const SearchPath search(false);
    QVERIFY(!powershellUnpack("a.zip", "out", 2000, &reason));
    QCOMPARE(reason, QStringLiteral("zip extraction timed out"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ZipExtractTest)
#include "zip_extract_test.moc"
