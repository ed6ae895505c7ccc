// update sign in the hands of a publisher: the wrong key, and no old file lost to a mistake.
#include "publisher_desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;
using support::PublisherDesk;
using support::refusal;

namespace {

const QString command = "quorvanectl update sign";
const QString seeHelp = "; see quorvanectl update sign --help";

} // namespace

class UpdateSignTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aManifestThatCannotBeUsed_data();
    void aManifestThatCannotBeUsed();
    void aKeyThatCannotBeUsed_data();
    void aKeyThatCannotBeUsed();
    void aPlaceThatIsNotWrittenTo_data();
    void aPlaceThatIsNotWrittenTo();
    void wrongWords_data();
    void wrongWords();
    void whatIsSigned_data();
    void whatIsSigned();
    void aKeyThatOthersCanReadIsToldBeforeAnythingElse();
    void anotherPublishersSignatureGivesWay();
    void whatNoSignatureCoversIsKept();
};

void UpdateSignTest::aManifestThatCannotBeUsed_data() {
    support::addRefusals();
    const QString with = " --key private.pem --out x.json";
    refusal("a file that is missing", "", "@ none.json" + with, "none.json: no such file");
    refusal("a folder", "", "@ site" + with, "site: is a folder");
    refusal("a pipe is not waited for", "rm m.json; mkfifo m.json", "@ m.json" + with,
            "m.json: is no plain file");
    refusal("an empty file", ": >m.json", "@ m.json" + with,
            "m.json: is no JSON: line 1, column 1: illegal value");
    refusal("UTF-16", "iconv -t UTF-16 m.json >u.json", "@ u.json" + with,
            "u.json: is no JSON: line 1, column 1: illegal value");
    refusal("an array", "echo '[]' >m.json", "@ m.json" + with, "m.json: is no JSON object");
    refusal("a fault, with its place", R"(printf '{\n"a": 1,\n"b" 2}' >m.json)", "@ m.json" + with,
            "m.json: is no JSON: line 3, column 5: missing name separator");
    refusal("a fault behind Chinese, counted in characters",
            R"(echo '{"publishedAt": "产线" 2}' >m.json)", "@ m.json" + with,
            "m.json: is no JSON: line 1, column 22: unterminated object");
    refusal("manifest and key swapped", "", "@ private.pem --key m.json --out x.json",
            "private.pem: is no JSON: line 1, column 1: illegal value");
    refusal("somebody else's", "chmod 755 .; chmod 000 m.json", "$user @ m.json" + with,
            "m.json: Permission denied");
}

void UpdateSignTest::aManifestThatCannotBeUsed() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateSignTest::aKeyThatCannotBeUsed_data() {
    support::addRefusals();
    const QString noKey = ": it holds no private key in PEM form";
    refusal("none", "", "@ m.json --out x.json", "no key given; --key names the file");
    refusal("a name that is empty", "", "@ m.json --key '' --out x.json",
            "--key is given an empty value" + seeHelp);
    refusal("one that is too short to be taken by update attach",
            "umask 077; openssl genrsa -out short.pem 512", "@ m.json --key short.pem --out x.json",
            "short.pem: a key of 512 bits is too short; take 3072");
    refusal("a file that is missing", "", "@ m.json --key none.pem --out x.json",
            "none.pem: no such file");
    refusal("a folder", "", "@ m.json --key site --out x.json", "site: is a folder");
    refusal("a pipe is not waited for", "mkfifo k.pem", "@ m.json --key k.pem --out x.json",
            "k.pem: is no plain file");
    refusal("an empty file", ": >k.pem", "@ m.json --key k.pem --out x.json", "k.pem" + noKey);
    refusal("the public half", "", "@ m.json --key update.pub --out x.json", "update.pub" + noKey);
    refusal("the manifest", "", "@ m.json --key m.json --out x.json", "m.json" + noKey);
    refusal("a key of another kind", "openssl genpkey -algorithm ed25519 -out k.pem",
            "@ m.json --key k.pem --out x.json", "k.pem: it is no RSA key");
    refusal("in UTF-16", "iconv -t UTF-16 private.pem >k.pem", "@ m.json --key k.pem --out x.json",
            "k.pem" + noKey);
    refusal("in its binary form", "openssl pkey -in private.pem -outform DER -out k.der",
            "@ m.json --key k.der --out x.json", "k.der" + noKey);
    refusal("cut off by a copy", "head -c 1000 private.pem >k.pem",
            "@ m.json --key k.pem --out x.json", "k.pem" + noKey);
    refusal("of two the last, which is wrong", "",
            "@ m.json --key private.pem --key update.pub --out x.json", "update.pub" + noKey);
    refusal("somebody else's", "chmod 755 .", "$user @ m.json --key private.pem --out x.json",
            "private.pem: Permission denied");
    refusal("the wrong one leaves an old manifest alone, by force too", "",
            "@ m.json --key update.pub --out signed.json --force", "update.pub" + noKey);
}

void UpdateSignTest::aKeyThatCannotBeUsed() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateSignTest::aPlaceThatIsNotWrittenTo_data() {
    support::addRefusals();
    const QString sign = "@ m.json --key private.pem --out ";
    const QString exists = ": exists; --force overwrites it";
    refusal("an older manifest that is signed", "", sign + "signed.json", "signed.json" + exists);
    refusal("the manifest", "", sign + "m.json", "m.json" + exists);
    refusal("the key", "", sign + "private.pem",
            "private.pem: is read by this command and not overwritten");
    const QString isRead = ": is read by this command and not overwritten";
    refusal("the key, by force", "", sign + "private.pem --force", "private.pem" + isRead);
    refusal("the key by another name, by force", "ln -s private.pem link", sign + "link --force",
            "link" + isRead);
    refusal("a pipe, by force", "mkfifo pipe", sign + "pipe --force", "pipe: is no plain file");
    refusal("a folder", "", sign + "out", "out: is a folder");
    refusal("a folder, not even by force", "", sign + "out --force", "out: is a folder");
    refusal("a folder that is missing", "", sign + "none/x.json",
            "none/x.json: No such file or directory");
    refusal("a link to nowhere is something", "ln -s nowhere link", sign + "link", "link" + exists);
    refusal("two places", "", "@ m.json --key private.pem --in-place --out x.json",
            "--in-place and --out name two places; give one");
    refusal("in the place of the key", "", "@ private.pem --key private.pem --in-place",
            "private.pem: is read by this command and not overwritten");
    refusal("it is told before a passphrase is asked for",
            "openssl pkey -in private.pem -aes256 -passout pass:x -out locked.pem",
            "@ m.json --key locked.pem --out signed.json", "signed.json" + exists);
}

void UpdateSignTest::aPlaceThatIsNotWrittenTo() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateSignTest::wrongWords_data() {
    support::addRefusals();
    refusal("two manifests", "", "@ m.json signed.json --key private.pem",
            "update sign takes manifest.json" + seeHelp);
    refusal("no manifest", "", "@ --key private.pem", "update sign takes manifest.json" + seeHelp);
    refusal("a format, which it has none of", "", "@ m.json --key private.pem --format json",
            "Unknown option 'format'" + seeHelp);
    refusal("the passphrase itself", "", "@ m.json --key private.pem --passphrase secret",
            "Unknown option 'passphrase'" + seeHelp);
}

void UpdateSignTest::wrongWords() {
    support::expectRefusal(PublisherDesk(command));
}

// Equal manifests have equal signatures, whatever the files and the key looked like.
void UpdateSignTest::whatIsSigned_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("file");
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &file) {
        QTest::newRow(name) << arrangement << line << file;
    };
    const QString with = " --key private.pem --out x.json";
    row("a manifest that is signed already", "", "@ signed.json" + with, "x.json");
    row("a manifest behind a byte-order mark", R"((printf '\357\273\277'; cat m.json) >b.json)",
        "@ b.json" + with, "x.json");
    row("a key behind a byte-order mark",
        R"(umask 077; (printf '\357\273\277'; cat private.pem) >k.pem)",
        "@ m.json --key k.pem --out x.json", "x.json");
    row("a key with the line ends of Windows", R"(umask 077; sed 's/$/\r/' private.pem >k.pem)",
        "@ m.json --key k.pem --out x.json", "x.json");
    row("over the manifest, by force", "", "@ m.json --key private.pem --out m.json --force",
        "m.json");
    row("in its own place", "", "@ m.json --key private.pem --in-place", "m.json");
    row("in the place that a link leads to", "mv m.json out/m.json; ln -s out/m.json m.json",
        "@ m.json --key private.pem --in-place", "out/m.json");
    row("of two names the last is written", "", "@ m.json --out a.json" + with, "x.json");
    row("a passphrase that the key does not need", "echo secret >words",
        "@ m.json" + with + " --passphrase-fd 3 3<words", "x.json");
    row("in folders with blanks and Chinese",
        "mkdir '产 线'; cp m.json '产 线/清单.json'; mv private.pem '产 线/私 钥.pem'",
        "@ '产 线/清单.json' --key '产 线/私 钥.pem' --out '产 线/签名 1.json'",
        "产 线/签名 1.json");
    row("from another folder", "", "cd site && @ ../m.json --key ../private.pem --out ../x.json",
        "x.json");
    row("to a name that begins with a dash", "", "@ m.json --key private.pem --out -x.json",
        "-x.json");
}

void UpdateSignTest::whatIsSigned() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, file);
    const PublisherDesk desk(command);
    const QByteArray expected = desk.read("signed.json");
    desk.arrange(arrangement);
    const support::FileTree before = desk.tree();
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    QVERIFY2(answer.out.endsWith(QFileInfo(file).fileName() + ": signed with a key of 3072 bits\n"),
             qPrintable(answer.out));
    QCOMPARE(answer.out.count('\n'), 1);
    QCOMPARE(answer.status, 0);
    QCOMPARE(desk.read(file), expected);
    support::FileTree after = desk.tree();
    const QString sign = before.contains(file) ? "~" : "+";
    QCOMPARE(support::changes(before, after), QStringList(sign + file));
}

void UpdateSignTest::aKeyThatOthersCanReadIsToldBeforeAnythingElse() {
    const PublisherDesk desk(command);
    desk.arrange("chmod 640 private.pem");
    const Answer answer = desk.type("@ m.json --key private.pem --out none/x.json");
    QCOMPARE(answer.err, QString("quorvanectl: private.pem: others can read this private key\n"
                                 "quorvanectl: none/x.json: No such file or directory\n"));
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
}

void UpdateSignTest::anotherPublishersSignatureGivesWay() {
    const PublisherDesk desk(command);
    desk.arrange("umask 077; openssl genrsa -out k.pem 2048 2>errors");
    QCOMPARE(desk.type("@ m.json --key k.pem --out theirs.json").out,
             QString("theirs.json: signed with a key of 2048 bits\n"));
    QVERIFY(desk.read("theirs.json") != desk.read("signed.json"));
    QCOMPARE(desk.type("@ theirs.json --key private.pem --out ours.json").status, 0);
    QCOMPARE(desk.read("ours.json"), desk.read("signed.json"));
}

void UpdateSignTest::whatNoSignatureCoversIsKept() {
    const PublisherDesk desk(command);
    desk.arrange(R"(echo '{"note": "for us", "runtime": {"version": "1.2.0"}}' >m.json)");
    const Answer answer = desk.type("@ m.json --key private.pem");
    QJsonObject made = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    QCOMPARE(QByteArray::fromBase64(made.take("signature").toString().toLatin1()),
             support::publisher::sign(R"({"runtime":{}})"));
    QCOMPARE(made,
             (QJsonObject{{"note", "for us"}, {"runtime", QJsonObject{{"version", "1.2.0"}}}}));
    QCOMPARE(answer.status, 0);
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateSignTest)
#include "update_sign_mistakes_test.moc"
