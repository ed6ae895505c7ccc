// A key pair on disk: for its owner alone, and never over another one.
#include "quorvanectl/keys/key_files.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include "openssl_program.h"

#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using ctl::KeyFiles;
using ctl::makeKeyFiles;

class KeyFilesTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;
    static mode_t modeOf(const QString &file);

private Q_SLOTS:
    void init();
    void aPairInANewFolder();
    void theModeDoesNotDependOnTheUmask();
    void nothingIsOverwritten_data();
    void nothingIsOverwritten();
    void aLinkToNowhereIsNotFollowed();
    void aFolderThatCannotBeMade();
};

QString KeyFilesTest::path(const QString &name) const {
    return folder->filePath(name);
}

mode_t KeyFilesTest::modeOf(const QString &file) {
    struct stat status = {};
    return ::stat(QFile::encodeName(file).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

void KeyFilesTest::init() {
    folder.reset(new QTemporaryDir);
}

void KeyFilesTest::aPairInANewFolder() {
    const KeyFiles files = makeKeyFiles(path("ceremony/keys"), nullptr);
    QVERIFY2(files.ok, qPrintable(files.error));
    QCOMPARE(files.privatePath, path("ceremony/keys/private.pem"));
    QCOMPARE(files.publicPath, path("ceremony/keys/update.pub"));
    QCOMPARE(modeOf(files.privatePath), mode_t(0600));
    QCOMPARE(modeOf(path("ceremony/keys")), mode_t(0700));
    QByteArray der;
    QVERIFY(support::openssl({"pkey", "-pubin", "-in", files.publicPath, "-outform", "DER"}, &der));
    QCOMPARE(files.fingerprint,
             QString(QCryptographicHash::hash(der, QCryptographicHash::Sha256).toHex()));
    QByteArray publicHalf;
    QVERIFY(support::openssl({"pkey", "-in", files.privatePath, "-pubout"}, &publicHalf));
    QCOMPARE(publicHalf, support::bytesOf(files.publicPath));
}

// The mode is asked for when the file is made, so the widest umask must not widen it.
void KeyFilesTest::theModeDoesNotDependOnTheUmask() {
    const mode_t before = ::umask(0);
    const KeyFiles files = makeKeyFiles(path("keys"), nullptr);
    ::umask(before);
    QCOMPARE(modeOf(files.privatePath), mode_t(0600));
}

void KeyFilesTest::nothingIsOverwritten_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("an old private half") << "private.pem";
    QTest::newRow("an old public half") << "update.pub";
}

void KeyFilesTest::nothingIsOverwritten() {
    QFETCH(QString, name);
    support::writeTree(path("keys"), {{name, "precious"}});
    const KeyFiles files = makeKeyFiles(path("keys"), nullptr);
    QVERIFY(!files.ok);
    QCOMPARE(files.error, path("keys/" + name) + ": exists; a key is never overwritten");
    QCOMPARE(support::readTree(path("keys")), support::FileTree({{name, "precious"}}));
}

void KeyFilesTest::aLinkToNowhereIsNotFollowed() {
    support::writeTree(path("keys"), {{"x", ""}});
    QVERIFY(QFile::link(path("elsewhere"), path("keys/private.pem")));
    QVERIFY(!makeKeyFiles(path("keys"), nullptr).ok);
    QVERIFY(!QFileInfo::exists(path("elsewhere")));
}

void KeyFilesTest::aFolderThatCannotBeMade() {
    support::writeBytes(path("wall"), "a file");
    const KeyFiles files = makeKeyFiles(path("wall/keys"), nullptr);
    QVERIFY(!files.ok);
    QCOMPARE(files.error, QStringLiteral("%1: Not a directory").arg(path("wall/keys")));
}

QUORVANE_TEST_MAIN(QCoreApplication, KeyFilesTest)
#include "key_files_test.moc"
