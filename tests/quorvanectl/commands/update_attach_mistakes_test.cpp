// update attach in the hands of a publisher whose key is in a safe: signatures that come back from
// there in another form, or for another manifest.
#include "publisher_desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;
using support::outcome;
using support::PublisherDesk;
using support::refusal;

namespace {

const QString command = "quorvanectl update attach";
const QString seeHelp = "; see quorvanectl update attach --help";
const QString toVerified = " --key update.pub --out x.json";

QString failed(const QString &file, const QString &key = "update.pub",
               const QString &sum = support::signedSum(), int bytes = 384) {
    return "quorvanectl: " + file + ": " + support::verificationFailed(key, sum, bytes) + "\n";
}

} // namespace

class UpdateAttachTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileThatHoldsNoSignature_data();
    void aFileThatHoldsNoSignature();
    void aManifestOrKeyThatCannotBeUsed_data();
    void aManifestOrKeyThatCannotBeUsed();
    void aPlaceThatIsNotWrittenTo_data();
    void aPlaceThatIsNotWrittenTo();
    void aSignatureOfSomethingElse_data();
    void aSignatureOfSomethingElse();
    void whatIsAttached_data();
    void whatIsAttached();
    void anUnaskedForSignatureGoesInUnchecked();
};

void UpdateAttachTest::aFileThatHoldsNoSignature_data() {
    support::addRefusals();
    const QString none = ": holds no RSA signature, neither in bytes nor as base64";
    const QString to = " --out x.json";
    refusal("an empty file", ": >m.sig", "@ m.json m.sig" + to, "m.sig" + none);
    refusal("the public key", "", "@ m.json update.pub" + to, "update.pub" + none);
    refusal("the private key", "", "@ m.json private.pem" + to, "private.pem" + none);
    refusal("a manifest that is signed", "", "@ m.json signed.json" + to, "signed.json" + none);
    refusal("the manifest twice", "", "@ m.json m.json" + to, "m.json" + none);
    refusal("base64 between the lines of PEM",
            "(echo -----BEGIN SIGNATURE-----; openssl base64 -in m.sig) >p.sig",
            "@ m.json p.sig" + to, "p.sig" + none);
    refusal("base64 with the letters of addresses", "(echo -_; openssl base64 -in m.sig) >a.sig",
            "@ m.json a.sig" + to, "a.sig" + none);
    refusal("bytes that lost their end", "head -c 127 m.sig >cut.sig", "@ m.json cut.sig" + to,
            "cut.sig" + none);
    refusal("a folder", "", "@ m.json site" + to, "site: is a folder");
    refusal("a file that is missing", "", "@ m.json none.sig" + to, "none.sig: no such file");
    refusal("a pipe is not waited for", "rm m.sig; mkfifo m.sig", "@ m.json m.sig" + to,
            "m.sig: is no plain file");
    refusal("a file of somebody else's", "chmod 755 .; chmod 000 m.sig",
            "$user @ m.json m.sig" + to, "m.sig: Permission denied");
}

void UpdateAttachTest::aFileThatHoldsNoSignature() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateAttachTest::aManifestOrKeyThatCannotBeUsed_data() {
    support::addRefusals();
    const QString takes = "update attach takes manifest.json SIGNATURE" + seeHelp;
    refusal("signature and manifest swapped", "printf 'xx' >m.sig", "@ m.sig m.json --out x.json",
            "m.sig: is no JSON: line 1, column 1: illegal value");
    refusal("a fault in the manifest, with its place", R"(printf '{"a": tru}' >m.json)",
            "@ m.json m.sig --out x.json", "m.json: is no JSON: line 1, column 7: illegal value");
    refusal("an array", "echo '[]' >m.json", "@ m.json m.sig --out x.json",
            "m.json: is no JSON object");
    refusal("the private key as the key", "", "@ m.json m.sig --key private.pem --out x.json",
            "private.pem: holds no RSA public key in PEM form");
    refusal("a folder as the key", "", "@ m.json m.sig --key site --out x.json",
            "site: is a folder");
    refusal("a key that is missing", "", "@ m.json m.sig --key none.pub --out x.json",
            "none.pub: no such file");
    refusal("of three faults the manifest's is told", "", "@ none.json none.sig --key none.pub",
            "none.json: no such file");
    refusal("no signature", "", "@ m.json", takes);
    refusal("the name to write to without --out", "", "@ m.json m.sig x.json", takes);
    refusal("a signature whose name begins with a dash", "cp m.sig ./-m.sig", "@ m.json -m.sig",
            "Unknown options: m, ., s, i, g" + support::behindDashes + seeHelp);
    refusal("an empty name for the key", "", "@ m.json m.sig --key '' --out x.json",
            "--key is given an empty value" + seeHelp);
}

void UpdateAttachTest::aManifestOrKeyThatCannotBeUsed() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateAttachTest::aPlaceThatIsNotWrittenTo_data() {
    support::addRefusals();
    const QString exists = ": exists; --force overwrites it";
    const QString isRead = ": is read by this command and not overwritten";
    refusal("the manifest", "", "@ m.json m.sig --out m.json", "m.json" + exists);
    refusal("the signature", "", "@ m.json m.sig --out m.sig", "m.sig" + isRead);
    refusal("the signature, by force", "", "@ m.json m.sig --out m.sig --force", "m.sig" + isRead);
    refusal("the key, by force", "", "@ m.json m.sig --key update.pub --out update.pub --force",
            "update.pub" + isRead);
    refusal("the key as another file, by force", "ln update.pub other",
            "@ m.json m.sig --key update.pub --out other --force", "other" + isRead);
    refusal("an older manifest that is signed", "", "@ m.json m.sig --out site/manifest.json",
            "site/manifest.json" + exists);
    refusal("two places", "", "@ m.json m.sig --in-place --out x.json",
            "--in-place and --out name two places; give one");
    refusal("a folder", "", "@ m.json m.sig --out out --force", "out: is a folder");
    refusal("a folder that is missing", "", "@ m.json m.sig --out none/x.json",
            "none/x.json: No such file or directory");
    refusal("a folder of somebody else's", "chmod 755 . out",
            "$user @ m.json m.sig --out out/x.json", "out/x.json: Permission denied");
}

void UpdateAttachTest::aPlaceThatIsNotWrittenTo() {
    support::expectRefusal(PublisherDesk(command));
}

// A finding, and no file: neither a new one nor an old one, even by force.
void UpdateAttachTest::aSignatureOfSomethingElse_data() {
    support::addOutcomes();
    outcome("of the manifest as it lies there, not of what is canonical",
            "openssl dgst -sha256 -sign private.pem -out raw.sig m.json",
            "@ m.json raw.sig" + toVerified, {1, "", failed("raw.sig")});
    outcome("made with another digest",
            "quorvanectl update canonical m.json | "
            "openssl dgst -sha1 -sign private.pem -out old.sig",
            "@ m.json old.sig" + toVerified, {1, "", failed("old.sig")});
    outcome("made with another padding",
            "quorvanectl update canonical m.json | openssl dgst -sha256 "
            "-sigopt rsa_padding_mode:pss -sign private.pem -out pss.sig",
            "@ m.json pss.sig" + toVerified, {1, "", failed("pss.sig")});
    outcome(
        "of another manifest", "sed -i s/setup-1.2.0/setup-1.3.0/ m.json",
        "@ m.json m.sig" + toVerified,
        {1, "",
         failed("m.sig", "update.pub",
                QCryptographicHash::hash(QByteArray(support::signedBytes).replace("1.2.0", "1.3.0"),
                                         QCryptographicHash::Sha256)
                    .toHex())});
    outcome("of another publisher", "", "@ m.json m.sig --key other.pub --out x.json",
            {1, "", failed("m.sig", "other.pub")});
    outcome("an old manifest stays, by force too", "",
            "@ m.json m.sig --key other.pub --out signed.json --force",
            {1, "", failed("m.sig", "other.pub")});
    outcome("cut off at half", "head -c 200 m.sig >half.sig", "@ m.json half.sig" + toVerified,
            {1, "", failed("half.sig", "update.pub", support::signedSum(), 200)});
    outcome("with a line feed behind its bytes", R"((cat m.sig; echo) >more.sig)",
            "@ m.json more.sig" + toVerified,
            {1, "", failed("more.sig", "update.pub", support::signedSum(), 385)});
    outcome("in hexadecimal digits, which are letters of base64 too",
            R"(od -An -v -tx1 m.sig >hex; tr -d ' \n' <hex >hex.sig)",
            "@ m.json hex.sig" + toVerified,
            {1, "", failed("hex.sig", "update.pub", support::signedSum(), 576)});
}

void UpdateAttachTest::aSignatureOfSomethingElse() {
    support::expectOutcome(PublisherDesk(command));
}

// What comes out is, to the byte, what update sign would have written.
void UpdateAttachTest::whatIsAttached_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("file"); // empty: standard output
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &file) {
        QTest::newRow(name) << arrangement << line << file;
    };
    row("to standard output", "", "@ m.json m.sig --key update.pub", "");
    row("base64 in one line without an end", "openssl base64 -A -in m.sig -out one.sig",
        "@ m.json one.sig" + toVerified, "x.json");
    row("base64 with the line ends of Windows",
        R"(openssl base64 -in m.sig -out t; sed 's/$/\r/' t >w.sig)", "@ m.json w.sig" + toVerified,
        "x.json");
    row("in the place of an old signature", "", "@ signed.json m.sig" + toVerified, "x.json");
    row("base64 behind a byte-order mark",
        R"((printf '\357\273\277'; openssl base64 -in m.sig) >b.sig)",
        "@ m.json b.sig" + toVerified, "x.json");
    row("base64 in UTF-16", "openssl base64 -in m.sig -out t; iconv -t UTF-16 t >u.sig",
        "@ m.json u.sig" + toVerified, "x.json");
    row("to a manifest behind a byte-order mark", R"((printf '\357\273\277'; cat m.json) >b.json)",
        "@ b.json m.sig" + toVerified, "x.json");
    row("over the manifest, by force", "", "@ m.json m.sig --key update.pub --out m.json --force",
        "m.json");
    row("in the manifest's own place", "", "@ m.json m.sig --key update.pub --in-place", "m.json");
    row("a signature whose name begins with a dash, behind two dashes", "cp m.sig ./-m.sig",
        "@ --out x.json -- m.json -m.sig", "x.json");
    row("under a name of a blank and Chinese", "", "@ m.json m.sig --out '签名 清单.json'",
        "签名 清单.json");
    row("from another folder", "", "cd stick && @ ../m.json ../m.sig --out ../x.json", "x.json");
}

void UpdateAttachTest::whatIsAttached() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, file);
    const PublisherDesk desk(command);
    const QByteArray expected = desk.read("signed.json");
    desk.arrange(arrangement);
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);
    if (file.isEmpty()) {
        QCOMPARE(answer.out.toUtf8(), expected);
        return;
    }
    QVERIFY2(answer.out.endsWith(file + ": written\n"), qPrintable(answer.out));
    QCOMPARE(answer.out.count('\n'), 1);
    QCOMPARE(desk.read(file), expected);
}

// Nobody said which key it must be: that is for update verify to find.
void UpdateAttachTest::anUnaskedForSignatureGoesInUnchecked() {
    const PublisherDesk desk(command);
    desk.arrange("openssl rand -out random.sig 384");
    QCOMPARE(desk.type("@ m.json random.sig --out x.json").out, QString("x.json: written\n"));
    const QJsonObject made = QJsonDocument::fromJson(desk.read("x.json")).object();
    QCOMPARE(made["signature"].toString(), QString::fromLatin1(desk.read("random.sig").toBase64()));
    QCOMPARE(desk.type("quorvanectl update verify x.json --key update.pub").status, 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateAttachTest)
#include "update_attach_mistakes_test.moc"
