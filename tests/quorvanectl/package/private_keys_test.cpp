// A private key that lies in a project's folder: it goes into the package, since some device may want it, and
// whoever packs is told.
#include "quorvanectl/package/project_pack.h"

#include "publisher.h"
#include "run_tool.h"
#include "small_project.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QTemporaryDir>

using support::Answer;
using support::FileTree;

namespace {

QString told(const QString &name) {
    return name + ": it is a private key, and whoever gets the package gets it\n";
}

} // namespace

class PrivateKeysTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const { return folder->filePath(name); }
    Answer pack(const FileTree &more) const;

private Q_SLOTS:
    void init();
    void whatIsTold_data();
    void whatIsTold();
    void severalInTheOrderOfThePackage();
    void besideWhatStandsInTheWay();
};

void PrivateKeysTest::init() {
    folder.reset(new QTemporaryDir);
    support::writeTree(path("line3"), support::smallProject());
}

// Packs the project with these files in it.
Answer PrivateKeysTest::pack(const FileTree &more) const {
    support::writeTree(path("line3"), more);
    const QString library = QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini";
    return support::runTool({"update", "pack", path("line3"), "--version", "1.2.0", "--out",
                             path("out"), "--library", library});
}

void PrivateKeysTest::whatIsTold_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isTold");
    const QByteArray pem = support::publisher::privatePem();
    const auto beginning = [](const QByteArray &kind) {
        return "-----BEGIN " + kind + "-----\nAAEC\n-----END " + kind + "-----\n";
    };
    const QByteArray plain = "PRIVATE KEY";
    QTest::newRow("as this program makes it") << "private.pem" << pem << true;
    QTest::newRow("under another name") << "相机/notes.txt" << pem << true;
    QTest::newRow("hidden") << ".key" << pem << true;
    QTest::newRow("encrypted") << "k" << beginning("ENCRYPTED PRIVATE KEY") << true;
    QTest::newRow("in an older form") << "k" << beginning("RSA PRIVATE KEY") << true;
    QTest::newRow("for curves") << "k" << beginning("EC PRIVATE KEY") << true;
    QTest::newRow("of another program") << "k" << beginning("OPENSSH PRIVATE KEY") << true;
    QTest::newRow("with the line ends of Windows")
        << "k" << QByteArray(pem).replace("\n", "\r\n") << true;
    QTest::newRow("cut off behind its first line") << "k"
                                                   << "-----BEGIN " + plain + "-----" << true;
    QTest::newRow("in the folder that is left out") << "logs/private.pem" << pem << false;
    QTest::newRow("the public half") << "update.pub" << support::publisher::publicPem() << false;
    QTest::newRow("a certificate") << "c.pem" << beginning("CERTIFICATE") << false;
    QTest::newRow("a text about keys") << "read.me"
                                       << "begins with -----BEGIN " + plain + "-----\n"
                                       << false;
    QTest::newRow("a first line without its end") << "k"
                                                  << "-----BEGIN " + plain + "\n-----" << false;
    QTest::newRow("an empty file") << "private.pem" << QByteArray("") << false;
}

void PrivateKeysTest::whatIsTold() {
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(bool, isTold);
    const Answer answer = pack({{name, content}});
    QCOMPARE(answer.err, QString());
    const QString zip = path("out") + "/产线三-1.2.0.zip: ";
    QVERIFY2(answer.out.startsWith((isTold ? told(name) : QString()) + zip),
             qPrintable(answer.out));
    QCOMPARE(answer.status, 0);
}

void PrivateKeysTest::severalInTheOrderOfThePackage() {
    const QByteArray pem = support::publisher::privatePem();
    const QString out = pack({{"b.pem", pem}, {"a/z.pem", pem}, {"C.pem", pem}}).out;
    QVERIFY2(out.startsWith(told("C.pem") + told("a/z.pem") + told("b.pem") + path("out")),
             qPrintable(out));
}

void PrivateKeysTest::besideWhatStandsInTheWay() {
    const Answer answer = pack({{"k.pem", support::publisher::privatePem()}, {"copy.yslib", "{}"}});
    QCOMPARE(answer.out, told("k.pem") +
                             "several project files, of which the launcher takes any: copy.yslib, "
                             "line3.yslib\n");
    QCOMPARE(answer.status, 1);
    QVERIFY(!QFileInfo::exists(path("out")));
}

QUORVANE_TEST_MAIN(QCoreApplication, PrivateKeysTest)
#include "private_keys_test.moc"
