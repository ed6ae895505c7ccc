// Passphrases from a descriptor and from a terminal: whole, or with the reason why not.
#include "quorvanectl/keys/passphrase.h"

#include "openssl_program.h"
#include "run_tool.h"
#include "support/file_tree.h"
#include "support/staged_main.h"
#include "terminal.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

using ctl::Passphrase;

namespace {

// The reading end of a pipe that holds these bytes and is closed behind them.
int pipeWith(const QByteArray &bytes) {
    int ends[2];
    if (::pipe(ends) != 0 ||
        ::write(ends[1], bytes.constData(), size_t(bytes.size())) != bytes.size())
        qFatal("no pipe");
    ::close(ends[1]);
    return ends[0];
}

} // namespace

class PassphraseTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void linesOfADescriptor_data();
    void linesOfADescriptor();
    void onlyTheFirstLineIsTaken();
    void aSecondReadingBeginsAnew();
    void descriptorsThatCannotBeRead_data();
    void descriptorsThatCannotBeRead();
    void whatIsTyped_data();
    void whatIsTyped();
    void numbersOfDescriptors_data();
    void numbersOfDescriptors();
    void aRefusedPassphraseMakesNoKey_data();
    void aRefusedPassphraseMakesNoKey();
};

void PassphraseTest::linesOfADescriptor_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("error");
    const QString empty = "the passphrase is empty";
    const QString longer = "the passphrase is longer than 1023 bytes";
    QTest::newRow("a line") << QByteArray("right one\n") << QByteArray("right one") << "";
    QTest::newRow("without a line feed") << QByteArray("right") << QByteArray("right") << "";
    QTest::newRow("the first of two lines") << QByteArray("a\nb\n") << QByteArray("a") << "";
    QTest::newRow("blanks belong to it") << QByteArray(" a \t\n") << QByteArray(" a \t") << "";
    QTest::newRow("so does a carriage return") << QByteArray("a\r\n") << QByteArray("a\r") << "";
    QTest::newRow("Chinese") << QByteArray("正确的马\n") << QByteArray("正确的马") << "";
    QTest::newRow("bytes that are no text")
        << QByteArray("\xff\xfe") << QByteArray("\xff\xfe") << "";
    QTest::newRow("a NUL within") << QByteArray("a\0b\n", 4) << QByteArray("a\0b", 3) << "";
    QTest::newRow("the longest") << QByteArray(1023, 'x') + '\n' << QByteArray(1023, 'x') << "";
    QTest::newRow("the longest without a line feed")
        << QByteArray(1023, 'x') << QByteArray(1023, 'x') << "";
    QTest::newRow("a byte longer") << QByteArray(1024, 'x') + '\n' << QByteArray() << longer;
    QTest::newRow("a whole file") << QByteArray(60000, 'x') << QByteArray() << longer;
    QTest::newRow("nothing") << QByteArray() << QByteArray() << empty;
    QTest::newRow("an empty line") << QByteArray("\n") << QByteArray() << empty;
    QTest::newRow("an empty line before another") << QByteArray("\na\n") << QByteArray() << empty;
}

void PassphraseTest::linesOfADescriptor() {
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, text);
    QFETCH(QString, error);
    const int descriptor = pipeWith(bytes);
    Passphrase passphrase;
    QString reason;
    QCOMPARE(passphrase.readFrom(descriptor, &reason), error.isEmpty());
    ::close(descriptor);
    QCOMPARE(reason, error);
    if (error.isEmpty()) {
        QCOMPARE(QByteArray(passphrase.data(), passphrase.size()), text);
        QCOMPARE(passphrase.data()[passphrase.size()], '\0');
    }
}

// What stands behind it is for others that read the descriptor.
void PassphraseTest::onlyTheFirstLineIsTaken() {
    const int descriptor = pipeWith("a\nb\n");
    Passphrase first;
    Passphrase second;
    QVERIFY(first.readFrom(descriptor));
    QVERIFY(second.readFrom(descriptor));
    ::close(descriptor);
    QCOMPARE(QByteArray(second.data()), QByteArray("b"));
}

void PassphraseTest::aSecondReadingBeginsAnew() {
    const int descriptor = pipeWith("a long one\nb\n");
    Passphrase passphrase;
    QVERIFY(passphrase.readFrom(descriptor));
    QVERIFY(passphrase.readFrom(descriptor));
    QCOMPARE(QByteArray(passphrase.data()), QByteArray("b"));
    QVERIFY(!passphrase.readFrom(descriptor));
    QCOMPARE(passphrase.size(), 0);
    ::close(descriptor);
}

void PassphraseTest::descriptorsThatCannotBeRead_data() {
    QTest::addColumn<QString>("path"); // empty: none is open
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("reason");
    QTest::newRow("one that is not open") << "" << 0 << "Bad file descriptor";
    QTest::newRow("one for writing") << "/dev/null" << O_WRONLY << "Bad file descriptor";
    QTest::newRow("a folder") << "/" << O_RDONLY << "Is a directory";
}

void PassphraseTest::descriptorsThatCannotBeRead() {
    QFETCH(QString, path);
    QFETCH(int, mode);
    QFETCH(QString, reason);
    const int descriptor =
        path.isEmpty() ? 999 : ::open(QFile::encodeName(path).constData(), mode | O_CLOEXEC);
    Passphrase passphrase;
    QString error;
    QVERIFY(!passphrase.readFrom(descriptor, &error));
    QCOMPARE(error, QStringLiteral("cannot read the passphrase from descriptor %1: %2")
                        .arg(QString::number(descriptor), reason));
    QVERIFY(!passphrase.readFrom(descriptor, nullptr));
    if (!path.isEmpty())
        ::close(descriptor);
}

void PassphraseTest::whatIsTyped_data() {
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QString>("outcome"); // empty: it opens the key
    const QString wrong = "the passphrase is wrong, or the key is damaged";
    QTest::newRow("the right one") << QByteArray("正 a\n") << "";
    QTest::newRow("with the return of a terminal") << QByteArray("正 a\r") << "";
    QTest::newRow("a letter too many and taken back") << QByteArray("正 ab\x7f\n") << "";
    QTest::newRow("taken back by the other key") << QByteArray("正 ab\b\n") << "";
    QTest::newRow("a character of three bytes taken back at once")
        << QByteArray("正误\x7f a\n") << "";
    QTest::newRow("more taken back than was typed") << QByteArray("x\x7f\x7f\x7f正 a\n") << "";
    QTest::newRow("another") << QByteArray("other\n") << wrong;
    QTest::newRow("in large letters") << QByteArray("正 A\n") << wrong;
    QTest::newRow("nothing") << QByteArray("\n") << "the passphrase is empty";
    QTest::newRow("all taken back") << QByteArray("a\x7f\n") << "the passphrase is empty";
    QTest::newRow("the end instead") << QByteArray("a\x04") << "no passphrase was given";
    QTest::newRow("Ctrl-C instead") << QByteArray("a\x03") << "no passphrase was given";
}

void PassphraseTest::whatIsTyped() {
    QFETCH(QByteArray, typed);
    QFETCH(QString, outcome);
    const QTemporaryDir folder;
    const QString key = folder.filePath("private.pem");
    static const QByteArray pem = [] {
        QByteArray made;
        if (!support::openssl({"genpkey", "-algorithm", "RSA", "-pkeyopt", "rsa_keygen_bits:2048",
                               "-aes256", "-pass", "pass:正 a"},
                              &made))
            qFatal("no key");
        return made;
    }();
    support::writeTree(folder.path(), {{"m.json", "{}"}, {"private.pem", pem}});
    QVERIFY(QFile::setPermissions(key, QFile::ReadOwner | QFile::WriteOwner));
    support::Terminal terminal(QUORVANE_TOOL, {"update", "sign", folder.filePath("m.json"), "--key",
                                               key, "--out", folder.filePath("s.json")});
    QVERIFY2(terminal.shows("Passphrase of " + key.toUtf8() + ": "), terminal.screen().constData());
    terminal.type(typed);
    QCOMPARE(terminal.wait(), outcome.isEmpty() ? 0 : 2);
    const QByteArray screen = terminal.screen();
    QVERIFY2(!screen.contains("a b") && !screen.contains("正"), screen.constData()); // no echo
    QCOMPARE(QFileInfo::exists(folder.filePath("s.json")), outcome.isEmpty());
    const QString remark = "quorvanectl: " + key + ": " + outcome + "\r\n";
    QVERIFY2(outcome.isEmpty() || screen.endsWith(remark.toUtf8()), screen.constData());
}

void PassphraseTest::numbersOfDescriptors_data() {
    QTest::addColumn<QString>("number");
    QTest::newRow("a word") << "x";
    QTest::newRow("below zero") << "-1";
    QTest::newRow("a fraction") << "3.5";
    QTest::newRow("a number with a word") << "3x";
    QTest::newRow("larger than any") << "99999999999";
}

void PassphraseTest::numbersOfDescriptors() {
    QFETCH(QString, number);
    const QTemporaryDir folder;
    const support::Answer answer =
        support::runTool({"keys", "new", folder.filePath("keys"), "--passphrase-fd=" + number});
    QCOMPARE(answer.err,
             "quorvanectl: --passphrase-fd " + number + ": is no number of a descriptor\n");
    QCOMPARE(answer.status, 2);
    QVERIFY(support::readTree(folder.path()).isEmpty());
}

void PassphraseTest::aRefusedPassphraseMakesNoKey_data() {
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("error");
    QTest::newRow("an empty one") << QByteArray("\n") << "--passphrase-fd 3 3<given"
                                  << "the passphrase is empty";
    QTest::newRow("one that is too long") << QByteArray(1024, 'x') << "--passphrase-fd 3 3<given"
                                          << "the passphrase is longer than 1023 bytes";
    QTest::newRow("a descriptor that nobody opened")
        << QByteArray() << "--passphrase-fd 7"
        << "cannot read the passphrase from descriptor 7: Bad file descriptor";
    QTest::newRow("an input that has ended") << QByteArray() << "--passphrase-fd 0"
                                             << "the passphrase is empty";
}

void PassphraseTest::aRefusedPassphraseMakesNoKey() {
    QFETCH(QByteArray, given);
    QFETCH(QString, options);
    QFETCH(QString, error);
    const QTemporaryDir folder;
    support::writeTree(folder.path(), {{"given", given}});
    const support::Answer answer =
        support::runLine("quorvanectl keys new keys --encrypt " + options, folder.path());
    QCOMPARE(answer.err, "quorvanectl: " + error + "\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
    QCOMPARE(support::readTree(folder.path()), support::FileTree({{"given", given}}));
}

QUORVANE_TEST_MAIN(QCoreApplication, PassphraseTest)
#include "passphrase_test.moc"
