// update sign with a file that is no key to sign with, or a manifest that is none.
#include "openssl_program.h"
#include "run_tool.h"
#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using support::Answer;
using support::FileTree;

class SignMistakesTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder;

    QString path(const QString &name) const;

private Q_SLOTS:
    void initTestCase();
    void keysThatSignNothing_data();
    void keysThatSignNothing();
    void keysThatSign_data();
    void keysThatSign();
    void manifestsThatAreNone_data();
    void manifestsThatAreNone();
    void aKeyForAllToReadIsTold_data();
    void aKeyForAllToReadIsTold();
};

QString SignMistakesTest::path(const QString &name) const {
    return folder.filePath(name);
}

void SignMistakesTest::initTestCase() {
    QByteArray key;
    QByteArray curve;
    QByteArray edwards;
    QByteArray publicKey;
    QByteArray certificate;
    QByteArray request;
    QVERIFY(support::openssl({"genrsa", "2048"}, &key));
    support::writeTree(folder.path(), {{"good.pem", key}});
    QVERIFY(support::openssl({"pkey", "-in", path("good.pem"), "-pubout"}, &publicKey));
    QVERIFY(support::openssl({"genpkey", "-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:P-256"},
                             &curve));
    QVERIFY(support::openssl({"genpkey", "-algorithm", "ED25519"}, &edwards));
    QVERIFY(support::openssl({"req", "-x509", "-key", path("good.pem"), "-subj", "/CN=a"},
                             &certificate));
    QVERIFY(support::openssl({"pkey", "-in", path("good.pem"), "-outform", "DER"}, &request));
    support::writeTree(folder.path(), {{"m.json", "{}"},
                                       {"update.pub", publicKey},
                                       {"curve.pem", curve},
                                       {"edwards.pem", edwards},
                                       {"certificate.pem", certificate},
                                       {"key.der", request},
                                       {"empty.pem", ""},
                                       {"cut.pem", key.left(key.size() / 2)},
                                       {"noend.pem", key.left(key.indexOf("-----END"))},
                                       {"spoilt.pem", QByteArray(key).replace(200, 4, "!!!!")},
                                       {"windows.pem", QByteArray(key).replace("\n", "\r\n")},
                                       {"noted.pem", "My key, keep it safe\n" + key + "end\n"},
                                       {"both.pem", publicKey + key},
                                       {"folder/a", ""}});
    for (const QString &name : QDir(folder.path()).entryList({"*.pem"}, QDir::Files))
        QVERIFY(QFile::setPermissions(path(name), QFile::ReadOwner | QFile::WriteOwner));
}

void SignMistakesTest::keysThatSignNothing_data() {
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("reason");
    const QString none = "it holds no private key in PEM form";
    const QString otherKind = "it is no RSA key";
    QTest::newRow("the public half") << "update.pub" << none;
    QTest::newRow("a certificate") << "certificate.pem" << none;
    QTest::newRow("a key in DER form") << "key.der" << none;
    QTest::newRow("an empty file") << "empty.pem" << none;
    QTest::newRow("the first half of a key") << "cut.pem" << none;
    QTest::newRow("a key without its last line") << "noend.pem" << none;
    QTest::newRow("a key with other bytes in it") << "spoilt.pem" << none;
    QTest::newRow("the manifest") << "m.json" << none;
    QTest::newRow("a key for curves") << "curve.pem" << otherKind;
    QTest::newRow("a key for other curves") << "edwards.pem" << otherKind;
    QTest::newRow("no file") << "none.pem"
                             << "no such file";
    QTest::newRow("a folder") << "folder"
                              << "is a folder";
}

void SignMistakesTest::keysThatSignNothing() {
    QFETCH(QString, key);
    QFETCH(QString, reason);
    const Answer answer = support::runTool(
        {"update", "sign", path("m.json"), "--key", path(key), "--out", path("s.json")});
    QCOMPARE(answer.err, "quorvanectl: " + path(key) + ": " + reason + "\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
    QVERIFY(!QFileInfo::exists(path("s.json")));
}

void SignMistakesTest::keysThatSign_data() {
    QTest::addColumn<QString>("key");
    QTest::newRow("a key") << "good.pem";
    QTest::newRow("with line ends of Windows") << "windows.pem";
    QTest::newRow("with words around it") << "noted.pem";
    QTest::newRow("behind its public half") << "both.pem";
}

// All are one key, and a signature has no randomness.
void SignMistakesTest::keysThatSign() {
    QFETCH(QString, key);
    const Answer expected =
        support::runTool({"update", "sign", path("m.json"), "--key", path("good.pem")});
    const Answer answer = support::runTool({"update", "sign", path("m.json"), "--key", path(key)});
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);
    QVERIFY(answer.out.contains("\"signature\": \""));
    QCOMPARE(answer.out, expected.out);
}

void SignMistakesTest::manifestsThatAreNone_data() {
    QTest::addColumn<QByteArray>("manifest");
    QTest::addColumn<QString>("reason");
    QTest::newRow("an empty file") << QByteArray() << "line 1, column 1";
    QTest::newRow("a list") << QByteArray("[]") << "";
    QTest::newRow("a comma too many")
        << QByteArray("{\n\"a\": 1,\n}") << "line 3, column 1: object is missing after a comma";
    QTest::newRow("cut off") << QByteArray("{\"a\": ") << "line 1, column ";
    QTest::newRow("something behind it") << QByteArray("{}\n{}") << "line 2, column 1";
    QTest::newRow("a key instead")
        << QByteArray("-----BEGIN PUBLIC KEY-----\n") << "line 1, column ";
}

void SignMistakesTest::manifestsThatAreNone() {
    QFETCH(QByteArray, manifest);
    QFETCH(QString, reason);
    support::writeTree(folder.path(), {{"bad.json", manifest}});
    const QStringList commands[] = {
        {"update", "sign", path("bad.json"), "--key", path("good.pem"), "--out", path("s.json")},
        {"update", "attach", path("bad.json"), path("key.der"), "--out", path("s.json")},
        {"update", "verify", path("bad.json"), "--key", path("update.pub")},
        {"update", "canonical", path("bad.json"), "--out", path("s.json")},
        {"update", "lint", path("bad.json")},
        {"update", "explain", path("bad.json")}};
    QString first;
    for (const QStringList &command : commands) {
        const Answer answer = support::runTool(command);
        QVERIFY2(answer.err.startsWith("quorvanectl: " + path("bad.json") + ": "),
                 qPrintable(answer.err));
        QVERIFY2(answer.err.contains(reason), qPrintable(answer.err));
        QCOMPARE(answer.err.count('\n'), 1);
        first = first.isEmpty() ? answer.err : first;
        QCOMPARE(answer.err, first); // in the same words everywhere
        QCOMPARE(answer.out, QString());
        QCOMPARE(answer.status, 2);
    }
    QVERIFY(!QFileInfo::exists(path("s.json")));
}

void SignMistakesTest::aKeyForAllToReadIsTold_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("told");
    const int own = int(QFile::ReadOwner | QFile::WriteOwner);
    QTest::newRow("for its owner alone") << own << false;
    QTest::newRow("for its owner to read alone") << int(QFile::ReadOwner) << false;
    QTest::newRow("for its group") << (own | int(QFile::ReadGroup)) << true;
    QTest::newRow("for others") << (own | int(QFile::ReadOther)) << true;
    QTest::newRow("for others to write, which is another matter")
        << (own | int(QFile::WriteOther)) << false;
}

void SignMistakesTest::aKeyForAllToReadIsTold() {
    QFETCH(int, mode);
    QFETCH(bool, told);
    QVERIFY(QFile::setPermissions(path("both.pem"), QFile::Permissions(mode)));
    const Answer answer =
        support::runTool({"update", "sign", path("m.json"), "--key", path("both.pem")});
    QCOMPARE(answer.err,
             told ? "quorvanectl: " + path("both.pem") + ": others can read this private key\n"
                  : QString());
    QCOMPARE(answer.status, 0);
}

QUORVANE_TEST_MAIN(QCoreApplication, SignMistakesTest)
#include "sign_mistakes_test.moc"
