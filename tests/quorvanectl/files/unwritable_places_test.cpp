// Every command that writes a file, where it cannot: it says so, and leaves the place as it was.
#include "openssl_program.h"
#include "run_tool.h"
#include "small_project.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QTemporaryDir>

using support::Answer;
using support::FileTree;

class UnwritablePlacesTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder; // what all commands read

    QString path(const QString &name) const;

private Q_SLOTS:
    void initTestCase();
    void commands_data();
    void commands();
    void aPackageThatDoesNotFit_data();
    void aPackageThatDoesNotFit();
    void wherePathsAreWrong_data();
    void wherePathsAreWrong();
};

QString UnwritablePlacesTest::path(const QString &name) const {
    return folder.filePath(name);
}

void UnwritablePlacesTest::initTestCase() {
    support::writeTree(path("line3"), support::smallProject());
    support::writeTree(folder.path(),
                       {{"m.json", R"({"runtime": {"setupUrl": "setup-1.2.0.exe"}})"},
                        {"signed.json", R"({"runtime": {"setupUrl": "setup-1.2.0.exe"},)"
                                        R"("signature": "c2lnbmVk"})"},
                        {"site/setup-1.2.0.exe", "an installer"},
                        {"site/manifest.json", R"({"runtime": {"setupUrl": "setup-1.2.0.exe"},)"
                                               R"("signature": "c2lnbmVk"})"},
                        {"raw.sig", QByteArray(256, '\x80')},
                        {"pc/bin/config/update.pub", ""},
                        {"data/launcher.log", "x\n"},
                        {"place/", ""}});
    QVERIFY(support::openssl({"genrsa", "-out", path("private.pem"), "2048"}));
    QVERIFY(QFile::setPermissions(path("private.pem"), QFile::ReadOwner | QFile::WriteOwner));
}

void UnwritablePlacesTest::commands_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("place"); // mount options and what follows
    QTest::addColumn<QString>("error");
    const QString library = " --library " QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini";
    const QString full = "No space left on device";
    const QString readOnly = "Read-only file system";
    const auto row = [](const char *name, const QString &command, const QString &error,
                        bool isFull) {
        QTest::newRow(name) << command
                            << (isFull
                                    ? "size=64k,nr_inodes=8;cat /dev/zero 2>/dev/null >place/.full"
                                    : "size=64k;mount -o remount,ro place")
                            << error;
    };
    const QString canonical = "update canonical m.json --out place/c.bin";
    row("the signed bytes on a full disk", canonical, "place/c.bin: " + full, true);
    row("the signed bytes where nothing may be written", canonical, "place/c.bin: " + readOnly,
        false);
    const QString attach = "update attach m.json raw.sig --out place/s.json";
    row("an attached signature on a full disk", attach, "place/s.json: " + full, true);
    const QString sign = "update sign m.json --key private.pem --out place/s.json";
    row("a signed manifest on a full disk", sign, "place/s.json: " + full, true);
    row("a signed manifest where nothing may be written", sign, "place/s.json: " + readOnly, false);
    row("a package on a full disk",
        "update pack line3 --version 1.2.0 --out place/packages" + library,
        "place/packages: cannot write a copy of " + path("line3/line3.yslib") +
            " that says the version",
        true);
    const QString stick = "update stick site place";
    row("a stick on a full disk", stick, "place/QuorvanerUpdate/setup-1.2.0.exe: " + full, true);
    row("a stick where nothing may be written", stick,
        "unable to create directory: " + path("place/QuorvanerUpdate"), false);
    row("a key pair on a full disk", "keys new place/keys --no-encrypt",
        "place/keys/private.pem: " + full, true);
    const QString collect = "support collect --out place/s.zip --install pc --data data";
    row("a support archive on a full disk", collect, "place/s.zip: " + full, true);
    row("a support archive where nothing may be written", collect, "place/s.zip: " + readOnly,
        false);
}

void UnwritablePlacesTest::commands() {
    if (!support::canMountPrivately())
        QSKIP("no private mounts on this system");
    QFETCH(QString, command);
    QFETCH(QString, place);
    const QString list = "find place -mindepth 1 -not -name .full -not -type d";
    support::writeTree(folder.path(),
                       {{"run.sh", ("mount -t tmpfs -o " + place.section(';', 0, 0) +
                                    " none place && " + place.section(';', 1) + "\nquorvanectl " +
                                    command + "; echo status $?; " + list + "\n")
                                       .toUtf8()}});
    const Answer answer =
        support::runLine(QLatin1String(support::privately) + "sh run.sh", folder.path());
    QCOMPARE(answer.out, QString("status 2\n")); // and not a file of it is left
    QFETCH(QString, error);
    QCOMPARE(answer.err.section('\n', -2), "quorvanectl: " + error + "\n"); // behind its progress
}

void UnwritablePlacesTest::aPackageThatDoesNotFit_data() {
    QTest::addColumn<QString>("room");
    QTest::addColumn<QString>("error"); // its beginning
    const QString zip = "place/packages/产线三-1.2.0.zip: ";
    QTest::newRow("room for no package") << "80k" << zip;
    QTest::newRow("room for the package, not for a look into it")
        << "160k" << zip + "unable to write file: ";
}

// The fault is the disk's, not the project's: no finding, but a refusal that names the package.
void UnwritablePlacesTest::aPackageThatDoesNotFit() {
    if (!support::canMountPrivately())
        QSKIP("no private mounts on this system");
    QFETCH(QString, room);
    QFETCH(QString, error);
    QByteArray noise; // what no packing makes smaller
    for (int i = 0; noise.size() < 100000; ++i)
        noise += QCryptographicHash::hash(QByteArray::number(i), QCryptographicHash::Sha256);
    support::writeTree(path("line4"), support::smallProject());
    support::writeTree(path("line4"), {{"noise.bin", noise}});
    support::writeTree(folder.path(),
                       {{"run.sh", ("mount -t tmpfs -o size=" + room +
                                    " none place && quorvanectl update pack line4 --version 1.2.0 "
                                    "--out place/packages --library " QUORVANE_SOURCE_TREE
                                    "/resources/config/FunctionLib.ini; echo status $?; "
                                    "find place -type f\n")
                                       .toUtf8()}});
    const Answer answer =
        support::runLine(QLatin1String(support::privately) + "sh run.sh", folder.path());
    QCOMPARE(answer.out, QString("status 2\n"));
    const QString line = answer.err.section('\n', -2);
    QVERIFY2(line.startsWith("quorvanectl: " + error), qPrintable(line));
}

void UnwritablePlacesTest::wherePathsAreWrong_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("error");
    const QString missing = ": No such file or directory";
    QTest::newRow("a folder that is not there") << "update canonical m.json --out none/c.bin"
                                                << "none/c.bin" + missing;
    QTest::newRow("a folder in the file's place") << "update canonical m.json --out place"
                                                  << "place: is a folder";
    QTest::newRow("a folder in the file's place, forced")
        << "update canonical m.json --force --out place"
        << "place: is a folder";
    QTest::newRow("a file in a folder's place") << "update canonical m.json --out m.json/c.bin"
                                                << "m.json/c.bin: Not a directory";
    QTest::newRow("the manifest itself, unforced") << "update canonical m.json --out m.json"
                                                   << "m.json: exists; --force overwrites it";
    QTest::newRow("a manifest's folder that is not there")
        << "update sign m.json --key private.pem --out none/s.json"
        << "none/s.json" + missing;
    QTest::newRow("an archive of support into a folder that is not there")
        << "support collect --install pc --data data --out none/s.zip"
        << "none/s.zip" + missing;
    QTest::newRow("an archive of support over a file")
        << "support collect --install pc --data data --out m.json"
        << "m.json: exists; --force overwrites it";
    QTest::newRow("a name longer than any file's")
        << "update canonical m.json --out " + QString(256, 'n')
        << QString(256, 'n') + ": File name too long";
}

void UnwritablePlacesTest::wherePathsAreWrong() {
    QFETCH(QString, command);
    QFETCH(QString, error);
    const FileTree before = support::readTree(folder.path());
    const Answer answer = support::runLine("quorvanectl " + command, folder.path());
    QCOMPARE(answer.err, "quorvanectl: " + error + "\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
    QCOMPARE(support::readTree(folder.path()), before);
}

QUORVANE_TEST_MAIN(QCoreApplication, UnwritablePlacesTest)
#include "unwritable_places_test.moc"
