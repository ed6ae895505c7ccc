// update verify in the hands of a publisher: the wrong file, the wrong key, a manifest of another's.
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

const QString command = "quorvanectl update verify";
const QString seeHelp = "; see quorvanectl update verify --help";

// The line that says which key was asked. Two keys in one file: the first counts.
QString keyLine(const QString &key = "update.pub") {
    static const QMap<QString, QString> fingerprints = [] {
        const support::FileTree files = support::publishersFiles();
        const auto ofPem = [&](const QString &name) {
            return QString(QCryptographicHash::hash(decodePemBody(files.value(name)),
                                                    QCryptographicHash::Sha256)
                               .toHex());
        };
        return QMap<QString, QString>{{"ours", ofPem("update.pub")}, {"other", ofPem("other.pub")}};
    }();
    const bool isOther = key == "other.pub" || key == "both.pub";
    return "  " + key + ": public, SHA-256 " + fingerprints.value(isOther ? "other" : "ours") +
           '\n';
}

QString verified(const QString &file, const QString &key = "update.pub") {
    return file + ": signature verified\n  signed bytes, SHA-256: " + support::signedSum() +
           "\n  signature: 384 bytes\n  attempts: BCryptVerifySignature direct\n" + keyLine(key);
}

QString refused(const QString &file, const QString &key, int bytes = 384) {
    return file + ": " + support::verificationFailed(key, support::signedSum(), bytes) +
           "\n  signed bytes, SHA-256: " + support::signedSum() +
           "\n  signature: " + QString::number(bytes) + " bytes\n  attempts: " + support::attempts +
           "\n" + keyLine(key);
}

QString unsignedReport(const QString &reason) {
    return reason + "\n  signed bytes, SHA-256: " + support::signedSum() +
           "\n  signature: 0 bytes\n" + keyLine();
}

} // namespace

class UpdateVerifyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aManifestThatCannotBeUsed_data();
    void aManifestThatCannotBeUsed();
    void aKeyThatCannotBeUsed_data();
    void aKeyThatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void whatAManifestIsToldToBe_data();
    void whatAManifestIsToldToBe();
    void severalManifests_data();
    void severalManifests();
    void theKeyIsToldAsOpensslSaysIt();
    void severalManifestsForPrograms();
    void aForeignManifestForPrograms();
    void anEditForPrograms();
};

void UpdateVerifyTest::aManifestThatCannotBeUsed_data() {
    support::addRefusals();
    refusal("a pipe is not waited for", "rm m.json; mkfifo m.json", "@ m.json --key update.pub",
            "m.json: is no plain file");
    refusal("an empty file", ": >m.json", "@ m.json --key update.pub",
            "m.json: is no JSON: line 1, column 1: illegal value");
    refusal("a blank line alone", "echo >m.json", "@ m.json --key update.pub",
            "m.json: is no JSON: line 2, column 1: illegal value");
    refusal("an array", "echo '[1]' >m.json", "@ m.json --key update.pub",
            "m.json: is no JSON object");
    refusal("a text in UTF-16", "iconv -t UTF-16 signed.json >u.json", "@ u.json --key update.pub",
            "u.json: is no JSON: line 1, column 1: illegal value");
    refusal("a text in UTF-16 without a byte-order mark", "iconv -t UTF-16LE signed.json >u.json",
            "@ u.json --key update.pub",
            "u.json: is no JSON: line 1, column 2: unterminated object");
    refusal("a comma too many, with its line",
            R"(printf '{\n  "runtime": {"a": "b",}\n}\n' >m.json)", "@ m.json --key update.pub",
            "m.json: is no JSON: line 2, column 24: object is missing after a comma");
    refusal("a comma too few", R"(printf '{"schemaVersion": 1 "a": 2}' >m.json)",
            "@ m.json --key update.pub",
            "m.json: is no JSON: line 1, column 21: unterminated object");
    refusal("two manifests in one file", "cat signed.json m.json >x.json",
            "@ x.json --key update.pub",
            "x.json: is no JSON: line 9, column 1: garbage at the end of the document");
    refusal("a package in its place", R"(printf 'PK\003\004\000\000' >p.zip)",
            "@ p.zip --key update.pub", "p.zip: is no JSON: line 1, column 1: illegal value");
    refusal("a link that leads nowhere", "ln -s nowhere l.json", "@ l.json --key update.pub",
            "l.json: no such file");
    refusal("a link that leads to itself", "ln -s l.json l.json", "@ l.json --key update.pub",
            "l.json: no such file");
    refusal("the name of another folder's file", "", "cd site && @ signed.json --key ../update.pub",
            "signed.json: no such file");
    refusal("a dash is a name, not standard input", "", "@ - --key update.pub <signed.json",
            "-: no such file");
    refusal("a file of somebody else's", "chmod 755 .; chmod 000 signed.json",
            "$user @ signed.json --key update.pub", "signed.json: Permission denied");
    refusal("a line feed in its name is spelled out", "", "@ 'a\nb.json' --key update.pub",
            "a\\nb.json: no such file");
    refusal("of two faults the manifest's is told", "", "@ none.json --key none.pub",
            "none.json: no such file");
}

void UpdateVerifyTest::aManifestThatCannotBeUsed() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateVerifyTest::aKeyThatCannotBeUsed_data() {
    support::addRefusals();
    const QString noKey = ": holds no RSA public key in PEM form";
    refusal("a folder", "", "@ signed.json --key site", "site: is a folder");
    refusal("a file that is missing", "", "@ signed.json --key none.pub", "none.pub: no such file");
    refusal("a pipe is not waited for", "rm update.pub; mkfifo update.pub",
            "@ signed.json --key update.pub", "update.pub: is no plain file");
    refusal("an empty file", ": >update.pub", "@ signed.json --key update.pub",
            "update.pub" + noKey);
    refusal("the manifest", "", "@ signed.json --key signed.json", "signed.json" + noKey);
    refusal("manifest and key swapped", "", "@ update.pub --key signed.json",
            "update.pub: is no JSON: line 1, column 1: illegal value");
    refusal("the lines around it are left out", "grep -v -- ----- update.pub >bare.pub",
            "@ signed.json --key bare.pub", "bare.pub" + noKey);
    refusal("in UTF-16", "iconv -t UTF-16 update.pub >u.pub", "@ signed.json --key u.pub",
            "u.pub" + noKey);
    refusal("in its binary form", "openssl pkey -pubin -in update.pub -outform DER -out der.pub",
            "@ signed.json --key der.pub", "der.pub" + noKey);
    refusal("cut off by a copy", "head -c 300 update.pub >cut.pub", "@ signed.json --key cut.pub",
            "cut.pub" + noKey);
    refusal("a certificate", "openssl req -x509 -key private.pem -subj /CN=x -out c.pem 2>errors",
            "@ signed.json --key c.pem", "c.pem" + noKey);
    refusal("a name that is empty", "", "@ signed.json --key ''",
            "--key is given an empty value" + seeHelp);
    refusal("somebody else's", "chmod 755 .; chmod 000 update.pub",
            "$user @ signed.json --key update.pub", "update.pub: Permission denied");
}

void UpdateVerifyTest::aKeyThatCannotBeUsed() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateVerifyTest::wrongWords_data() {
    support::addRefusals();
    refusal("no manifest", "", "@ --key update.pub",
            "update verify takes manifest.json..." + seeHelp);
    refusal("one dash before the option", "", "@ signed.json -key update.pub",
            "Unknown options: k, e, y" + support::behindDashes + seeHelp);
    refusal("a name that begins with a dash", "cp signed.json ./-m.json",
            "@ -m.json --key update.pub",
            "Unknown options: m, ., j, s, o, n" + support::behindDashes + seeHelp);
    refusal("the option of another command", "", "@ signed.json --key update.pub --out x.json",
            "Unknown option 'out'" + seeHelp);
    refusal("no key for several manifests", "", "@ signed.json m.json",
            "no key given; --key names the file");
    refusal("of several manifests and the key the key's fault is told", "",
            "@ none.json m.json --key none.pub", "none.pub: no such file");
    refusal("a format in capitals, for several manifests", "",
            "@ signed.json m.json --key update.pub --format JSON",
            "no format 'JSON'; there are: text, json");
    refusal("a format in capitals", "", "@ signed.json --key update.pub --format JSON",
            "no format 'JSON'; there are: text, json");
    refusal("a format of another command", "", "@ signed.json --key update.pub --format sarif",
            "no format 'sarif'; there are: text, json");
}

void UpdateVerifyTest::wrongWords() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateVerifyTest::whatAManifestIsToldToBe_data() {
    support::addOutcomes();
    // The same manifest by other names and in other clothes.
    outcome("behind a byte-order mark", R"((printf '\357\273\277'; cat signed.json) >b.json)",
            "@ b.json --key update.pub", {0, verified("b.json")});
    outcome("laid out anew by an editor", R"(tr -d '\n ' <signed.json >flat.json)",
            "@ flat.json --key update.pub", {0, verified("flat.json")});
    outcome("in a folder with blanks and Chinese",
            "mkdir '产 线'; cp signed.json '产 线/清单 1.json'; cp update.pub '产 线/公 钥.pub'",
            "@ '产 线/清单 1.json' --key '产 线/公 钥.pub'",
            {0, verified("产 线/清单 1.json", "产 线/公 钥.pub")});
    outcome("from another folder", "", "cd stick && @ ../signed.json --key ../update.pub",
            {0, verified("../signed.json", "../update.pub")});
    outcome("a dash in front of its name, behind two dashes", "cp signed.json ./-m.json",
            "@ --key update.pub -- -m.json", {0, verified("-m.json")});
    outcome("a key with the line ends of Windows", R"(sed -i 's/$/\r/' update.pub)",
            "@ signed.json --key update.pub", {0, verified("signed.json")});
    outcome("a key behind a byte-order mark", R"((printf '\357\273\277'; cat update.pub) >b.pub)",
            "@ signed.json --key b.pub", {0, verified("signed.json", "b.pub")});
    outcome("of two keys the last counts", "", "@ signed.json --key other.pub --key update.pub",
            {0, verified("signed.json")});
    outcome("of two formats the last counts", "",
            "@ signed.json --key=update.pub --format json --format text",
            {0, verified("signed.json")});

    // Manifests that a launcher would refuse.
    outcome("not signed yet", "", "@ m.json --key update.pub",
            {1, unsignedReport("m.json: signature is empty")});
    outcome("another publisher's", "", "@ signed.json --key other.pub",
            {1, refused("signed.json", "other.pub")});
    outcome("two keys in one file are none of them", "cat other.pub update.pub >both.pub",
            "@ signed.json --key both.pub", {1, refused("signed.json", "both.pub")});
    outcome("a signature that lost its end",
            R"(sed -i -E 's/("signature": ".{100})[^"]*/\1/' signed.json)",
            "@ signed.json --key update.pub", {1, refused("signed.json", "update.pub", 75)});
    outcome("a signature that is none",
            R"(sed -i 's/"signature": "[^"]*"/"signature": "???"/' signed.json)",
            "@ signed.json --key update.pub",
            {1, unsignedReport("signed.json: signature base64 is invalid")});
    outcome("a signature that is a number",
            R"(sed -i 's/"signature": "[^"]*"/"signature": 7/' signed.json)",
            "@ signed.json --key update.pub",
            {1, unsignedReport("signed.json: signature is empty")});
}

void UpdateVerifyTest::whatAManifestIsToldToBe() {
    support::expectOutcome(PublisherDesk(command));
}

void UpdateVerifyTest::severalManifests_data() {
    support::addOutcomes();
    const QString good = "signed.json: signature verified\n";
    const QString unsignedOne = "m.json: signature is empty\n";
    const QString missing = "none.json: no such file\n";
    outcome("all good", "cp signed.json b.json", "@ signed.json b.json --key update.pub",
            {0, good + "b.json: signature verified\n" + keyLine()});
    outcome("the same one twice", "", "@ signed.json signed.json --key update.pub",
            {0, good + good + keyLine()});
    outcome("one that is not signed", "", "@ signed.json m.json signed.json --key update.pub",
            {1, good + unsignedOne + good + keyLine()});
    outcome("another publisher's", "", "@ signed.json m.json --key other.pub",
            {1, "signed.json: " + support::verificationFailed("other.pub", support::signedSum()) +
                    "\n" + unsignedOne + keyLine("other.pub")});
    outcome("one that is missing is told in its place", "",
            "@ m.json none.json signed.json --key update.pub",
            {2, unsignedOne + missing + good + keyLine()});
    outcome("the missing one first, and the worst counts", "",
            "@ none.json m.json --key update.pub", {2, missing + unsignedOne + keyLine()});
    outcome("one that is no JSON", "echo '[' >x.json", "@ signed.json x.json --key update.pub",
            {2, good + "x.json: is no JSON: line 2, column 1: unterminated array\n" + keyLine()});
    outcome("an array and a folder", "echo '[1]' >x.json",
            "@ x.json site signed.json --key update.pub",
            {2, "x.json: is no JSON object\nsite: is a folder\n" + good + keyLine()});
    outcome("a pipe is not waited for", "mkfifo pipe", "@ pipe signed.json --key update.pub",
            {2, "pipe: is no plain file\n" + good + keyLine()});
    outcome("somebody else's", "chmod 755 .; cp signed.json x.json; chmod 000 x.json",
            "$user @ signed.json x.json --key update.pub",
            {2, good + "x.json: Permission denied\n" + keyLine()});
    outcome("a line feed in a name is spelled out", "",
            "@ 'a\nb.json' signed.json --key update.pub",
            {2, "a\\nb.json: no such file\n" + good + keyLine()});
    outcome("a name with a blank and no quotes", "cp signed.json 'my update.json'",
            "@ my update.json --key update.pub",
            {2, "my: no such file\nupdate.json: no such file\n" + keyLine()});
    outcome("one alone is told in full", "", "@ signed.json --key update.pub",
            {0, verified("signed.json")});
}

void UpdateVerifyTest::severalManifests() {
    support::expectOutcome(PublisherDesk(command));
}

void UpdateVerifyTest::theKeyIsToldAsOpensslSaysIt() {
    const PublisherDesk desk(command);
    const QString sum =
        desk.type("openssl pkey -pubin -in update.pub -outform DER | openssl sha256 -r")
            .out.left(64);
    QCOMPARE(keyLine(), "  update.pub: public, SHA-256 " + sum + '\n');
}

void UpdateVerifyTest::severalManifestsForPrograms() {
    const PublisherDesk desk(command);
    const Answer answer =
        desk.type("@ signed.json m.json none.json --key update.pub --format json");
    QCOMPARE(answer.out, QString(R"([
    {
        "canonical_sha256": "%1",
        "details": "BCryptVerifySignature direct",
        "key_sha256": "%2",
        "manifest": "signed.json",
        "message": "signature verified",
        "ok": true,
        "sig_bytes": 384
    },
    {
        "canonical_sha256": "%1",
        "details": "",
        "key_sha256": "%2",
        "manifest": "m.json",
        "message": "signature is empty",
        "ok": false,
        "sig_bytes": 0
    },
    {
        "canonical_sha256": "",
        "details": "",
        "key_sha256": "%2",
        "manifest": "none.json",
        "message": "no such file",
        "ok": false,
        "sig_bytes": 0
    }
]
)")
                             .arg(support::signedSum(), keyLine().trimmed().section(' ', -1)));
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 2);
}

void UpdateVerifyTest::aForeignManifestForPrograms() {
    const PublisherDesk desk(command);
    const Answer answer = desk.type("@ signed.json --key other.pub --format json");
    QCOMPARE(answer.out, QString(R"({
    "canonical_sha256": "%1",
    "details": "%2",
    "key_sha256": "%4",
    "message": "%3",
    "ok": false,
    "sig_bytes": 384
}
)")
                             .arg(support::signedSum(), support::attempts,
                                  support::verificationFailed("other.pub", support::signedSum()),
                                  keyLine("other.pub").trimmed().section(' ', -1)));
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 1);
}

// Whoever changes a word of a signed manifest changes what is signed, and the sum says so.
void UpdateVerifyTest::anEditForPrograms() {
    const PublisherDesk desk(command);
    desk.arrange("sed -i s/setup-1.2.0/setup-1.3.0/ signed.json");
    QByteArray bytes = support::signedBytes;
    const QString sum = QCryptographicHash::hash(bytes.replace("setup-1.2.0", "setup-1.3.0"),
                                                 QCryptographicHash::Sha256)
                            .toHex();
    const Answer answer = desk.type("@ signed.json --key update.pub --format json");
    const QJsonObject told = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    QCOMPARE(told["message"].toString(), support::verificationFailed("update.pub", sum));
    QCOMPARE(told["canonical_sha256"].toString(), sum);
    QCOMPARE(told["ok"].toBool(true), false);
    QCOMPARE(answer.status, 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateVerifyTest)
#include "update_verify_mistakes_test.moc"
