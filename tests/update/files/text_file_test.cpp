// Files of text in UTF-8 and GBK, read and written, and their hashes: any bytes have a text, and
// what cannot be read is null and has a reason.
#include "update/files/text_file.h"

#include "support/platform.h"
#include "support/staged_main.h"

#include <QTextCodec>

namespace {

QString pathOf(const QString &name) {
    return QDir(support::stageRoot()).filePath(name);
}

QString writeBytes(const QString &name, const QByteArray &bytes) {
    const QString path = pathOf(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QByteArray readBytes(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(not read)");
}

const QByteArray mark = QByteArrayLiteral("\xEF\xBB\xBF");
const QByteArray gbkChinese = QByteArrayLiteral("\xD6\xD0\xCE\xC4"); // 中文

} // namespace

class TextFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void libraryHasTheGbkCodec();
    void decodes_data();
    void decodes();
    void emptyFileGivesEmptyTextThatIsNotNull();
    void aPathOfNothingNeedsNoFolder();
    void unreadableFileGivesNull_data();
    void unreadableFileGivesNull();
    void writes_data();
    void writes();
    void writingMakesTheFolder();
    void writingToAFolderFails();
    void folderThatCannotBeMadeIsNamed();
    void folderThatExistsIsFine();
    void hashes_data();
    void hashes();
    void hashOfAFileThatFailsWhileReadIsNull();
    void hashThatIsStoppedIsNull();
};

void TextFileTest::libraryHasTheGbkCodec() {
    QVERIFY(QTextCodec::codecForName("GBK") != nullptr);
}

void TextFileTest::decodes_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    const QString lost(QChar::ReplacementCharacter);
    QTest::newRow("plain letters") << QByteArray("abc") << "abc";
    QTest::newRow("UTF-8 without a mark") << QByteArray("中文") << "中文";
    QTest::newRow("UTF-8 behind a mark") << mark + "中文"
                                         << "中文";
    QTest::newRow("a mark alone") << mark << "";
    QTest::newRow("broken bytes behind a mark stay UTF-8") << mark + "a\xFF"
                                                           << "a" + lost;
    QTest::newRow("Chinese in GBK") << "a" + gbkChinese << "a中文";
    QTest::newRow("GBK that can be read as UTF-8 stays UTF-8")
        << QByteArray("\xC2\xA9") << QStringLiteral("©");
    QTest::newRow("GBK behind a mark is broken UTF-8")
        << mark + gbkChinese << QString::fromUtf8(gbkChinese);
    QTest::newRow("a replacement character of the file itself is read as GBK")
        << QByteArray("\xEF\xBF\xBD") << QTextCodec::codecForName("GBK")->toUnicode("\xEF\xBF\xBD");
    QTest::newRow("half a mark is no mark")
        << QByteArray("\xEF\xBB") << QTextCodec::codecForName("GBK")->toUnicode("\xEF\xBB");
    QTest::newRow("UTF-16 of letters is UTF-8 with NULs once its mark has made it GBK")
        << QByteArray("\xFF\xFE\x61\x00", 4)
        << QTextCodec::codecForName("GBK")->toUnicode(QByteArray("\xFF\xFE\x61\x00", 4));
    QTest::newRow("UTF-16 without a mark keeps its NULs")
        << QByteArray("a\0b\0", 4) << QString::fromLatin1("a\0b\0", 4);
    QTest::newRow("a NUL ends nothing") << QByteArray("a\0b", 3) << QString::fromLatin1("a\0b", 3);
    QTest::newRow("a NUL behind a mark ends nothing")
        << mark + QByteArray("\0b", 2) << QString::fromLatin1("\0b", 2);
    QTest::newRow("line ends stay") << QByteArray("a\r\nb\n") << "a\r\nb\n";
}

void TextFileTest::decodes() {
    QFETCH(QByteArray, bytes);
    QString error = "untouched";
    const QString text = readTextFile(writeBytes("in.txt", bytes), &error);
    QTEST(text, "expected");
    QVERIFY(!text.isNull());
    QCOMPARE(error, QString("untouched"));
}

void TextFileTest::emptyFileGivesEmptyTextThatIsNotNull() {
    const QString text = readTextFile(writeBytes("empty.txt", ""));
    QVERIFY(text.isEmpty());
    QVERIFY(!text.isNull());
}

// The file itself is refused then.
void TextFileTest::aPathOfNothingNeedsNoFolder() {
    QString error = "untouched";
    QVERIFY(ensureParentDir(QString(), &error));
    QCOMPARE(error, QString("untouched"));
    QVERIFY(!writeTextFile(QString(), "a"));
}

void TextFileTest::unreadableFileGivesNull_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no such file") << pathOf("none.txt")
                                  << support::systemText("No such file or directory",
                                                         "File not found.");
    QTest::newRow("a folder") << support::stageRoot()
                              << support::systemText("file to open is a directory",
                                                     "Access denied.");
    if (!support::onWindows)
        QTest::newRow("a device") << "/dev/zero"
                                  << "not a regular file";
}

void TextFileTest::unreadableFileGivesNull() {
    QFETCH(QString, path);
    QString error;
    QVERIFY(readTextFile(path, &error).isNull());
    QTEST(error, "expected");
    QVERIFY(fileSha256Hex(path, &error).isNull());
    QTEST(error, "expected");
    QVERIFY(readTextFile(path).isNull());
    QVERIFY(fileSha256Hex(path).isNull());
}

void TextFileTest::writes_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("Chinese as UTF-8 without a mark") << "中文" << QByteArray("中文");
    QTest::newRow("nothing") << "" << QByteArray("");
    QTest::newRow("a null text") << QString() << QByteArray("");
    QTest::newRow("a NUL within") << QString::fromLatin1("a\0b", 3) << QByteArray("a\0b", 3);
    QTest::newRow("a character beyond 16 bits")
        << QString::fromUtf8("\xF0\x9F\x93\xB7") << QByteArray("\xF0\x9F\x93\xB7");
}

void TextFileTest::writes() {
    QFETCH(QString, text);
    const QString path = writeBytes("out.txt", "older and longer content");
    QString error = "untouched";
    QVERIFY(writeTextFile(path, text, &error));
    QTEST(readBytes(path), "expected");
    QCOMPARE(error, QString("untouched"));
}

void TextFileTest::writingMakesTheFolder() {
    const QString path = pathOf("missing/deep/out.txt");
    QVERIFY(writeTextFile(path, "a"));
    QCOMPARE(readBytes(path), QByteArray("a"));
}

void TextFileTest::writingToAFolderFails() {
    QString error;
    QVERIFY(!writeTextFile(support::stageRoot(), "a", &error));
    QCOMPARE(error, support::systemText("Is a directory", "Access denied."));
    QVERIFY(!writeTextFile(support::stageRoot(), "a"));
}

void TextFileTest::folderThatCannotBeMadeIsNamed() {
    const QString file = writeBytes("in_the_way", "");
    const QString expected = "unable to create directory: " + file + "/sub";
    QString error;
    QVERIFY(!ensureParentDir(file + "/sub/out.txt", &error));
    QCOMPARE(error, expected);
    error.clear();
    QVERIFY(!writeTextFile(file + "/sub/out.txt", "a", &error));
    QCOMPARE(error, expected);
    QVERIFY(!ensureParentDir(file + "/sub/out.txt"));
}

void TextFileTest::folderThatExistsIsFine() {
    QString error = "untouched";
    QVERIFY(ensureParentDir(pathOf("any.txt"), &error));
    QVERIFY(ensureParentDir("relative.txt", &error));
    QCOMPARE(error, QString("untouched"));
}

void TextFileTest::hashes_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no bytes") << QByteArray("")
                              << "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
    QTest::newRow("three letters")
        << QByteArray("abc") << "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    for (const int size : {1048575, 1048576, 1048577, 3145728}) {
        const QByteArray bytes(size, 'q');
        QTest::addRow("%d bytes, around whole pieces", size)
            << bytes
            << QString(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
    }
}

void TextFileTest::hashes() {
    QFETCH(QByteArray, bytes);
    QString error = "untouched";
    QTEST(fileSha256Hex(writeBytes("hash.bin", bytes), &error), "expected");
    QCOMPARE(error, QString("untouched"));
}

// Reading the first page of a process's own memory opens well and then fails.
void TextFileTest::hashThatIsStoppedIsNull() {
    const QString path = writeBytes("hash.bin", "abc");
    QString error;
    QVERIFY(fileSha256Hex(path, &error, [] { return true; }).isNull());
    QCOMPARE(error, QString("interrupted"));
    QCOMPARE(fileSha256Hex(path, &error, [] { return false; }), fileSha256Hex(path));
}

void TextFileTest::hashOfAFileThatFailsWhileReadIsNull() {
    if (support::onWindows)
        QSKIP("no such file on Windows");
    QString error;
    QVERIFY(fileSha256Hex("/proc/self/mem", &error).isNull());
    QCOMPARE(error, QString("Input/output error"));
}

QUORVANE_TEST_MAIN(QCoreApplication, TextFileTest)
#include "text_file_test.moc"
