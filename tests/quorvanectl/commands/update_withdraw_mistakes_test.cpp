// update withdraw in the hands of a publisher in a hurry: what is on offer again, and what is not signed.
#include "publisher_desk.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;
using support::Desk;
using support::FileTree;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl update withdraw";
const QString seeHelp = "; see quorvanectl update withdraw --help";
const QString isRead = ": is read by this command and not overwritten";

QByteArray signedManifest(const QByteArray &text) {
    const QByteArray bytes = canonicalManifestText(text).toUtf8();
    return ctl::withSignature(text, support::publisher::sign(bytes)).toUtf8();
}

FileTree files() {
    FileTree tree = support::publishersFiles();
    tree["old.json"] = signedManifest(R"({"schemaVersion": 1, "note": "ours",
        "publishedAt": "2126-01-01T06:00:00Z",
        "runtime": {"setupUrl": "r-1.0.0.exe", "version": "9.9.9"}})");
    tree["new.json"] = signedManifest(R"({"schemaVersion": 1,
        "publishedAt": "2126-01-02T06:00:00Z", "runtime": {"setupUrl": "r-1.1.0.exe"}})");
    return tree;
}

class WithdrawDesk : public Desk {
public:
    WithdrawDesk()
        : Desk(command, files()) {
        arrange("chmod 600 private.pem");
    }
};

} // namespace

class UpdateWithdrawTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsRefused_data();
    void whatIsRefused();
    void nothingIsSignedThatIsNotOurs_data();
    void nothingIsSignedThatIsNotOurs();
    void whatIsOnOfferAgain_data();
    void whatIsOnOfferAgain();
};

void UpdateWithdrawTest::whatIsRefused_data() {
    support::addRefusals();
    refusal("nothing to go back to", "", "@ new.json --key private.pem",
            "--to must name the manifest to go back to");
    refusal("what is published is missing", "", "@ none.json --to old.json --key private.pem",
            "none.json: no such file");
    refusal("what to go back to is missing", "", "@ new.json --to none.json --key private.pem",
            "none.json: no such file");
    refusal("what to go back to is none", "", "@ new.json --to m.sig --key private.pem",
            "m.sig: is no JSON: line 1, column 1: illegal value");
    refusal("no key", "", "@ new.json --to old.json", "no key given; --key names the file");
    refusal("the public key", "", "@ new.json --to old.json --key update.pub",
            "update.pub: it holds no private key in PEM form");
    refusal("over what to go back to, by force", "",
            "@ new.json --to old.json --key private.pem --out old.json --force",
            "old.json" + isRead);
    refusal("over what is published without a word of it", "",
            "@ new.json --to old.json --key private.pem --out new.json",
            "new.json: exists; --force overwrites it");
    refusal("both are one, in place", "", "@ new.json --to new.json --key private.pem --in-place",
            "new.json" + isRead);
    refusal("two places", "", "@ new.json --to old.json --key private.pem --in-place --out x.json",
            "--in-place and --out name two places; give one");
    refusal("the other one without its option", "", "@ new.json old.json --key private.pem",
            "update withdraw takes published.json" + seeHelp);
}

void UpdateWithdrawTest::whatIsRefused() {
    support::expectRefusal(WithdrawDesk());
}

void UpdateWithdrawTest::nothingIsSignedThatIsNotOurs_data() {
    support::addOutcomes();
    const QString with = " --key private.pem --in-place";
    outcome("a publication that somebody changed", "sed -i s/r-1.1.0/r-6.6.6/ new.json",
            "@ new.json --to old.json" + with, {1, "new.json: is not signed with this key\n"});
    outcome("the one before, changed", "sed -i s/r-1.0.0/r-6.6.6/ old.json",
            "@ new.json --to old.json" + with, {1, "old.json: is not signed with this key\n"});
    outcome("both, of nobody", "cp m.json old.json", "@ m.json --to old.json" + with,
            {1, "m.json: is not signed with this key\nold.json: is not signed with this key\n"});
}

void UpdateWithdrawTest::nothingIsSignedThatIsNotOurs() {
    support::expectOutcome(WithdrawDesk());
}

void UpdateWithdrawTest::whatIsOnOfferAgain_data() {
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("file"); // empty: the output
    QTest::newRow("in place") << " --in-place"
                              << "new.json";
    QTest::newRow("in another file") << " --out x.json"
                                     << "x.json";
    QTest::newRow("on the output") << ""
                                   << "";
}

// All of the manifest before, a second behind the one that is published. Of a component's version, which no
// signature covers, what its installer's name says.
void UpdateWithdrawTest::whatIsOnOfferAgain() {
    QFETCH(QString, options);
    QFETCH(QString, file);
    const WithdrawDesk desk;
    const FileTree before = desk.tree();
    const Answer answer = desk.type("@ new.json --to old.json --key private.pem" + options);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);
    if (!file.isEmpty())
        QCOMPARE(answer.out,
                 file + ": offers what old.json does, published at 2126-01-02T06:00:01Z\n");
    const QStringList changed{(before.contains(file) ? "~" : "+") + file};
    QCOMPARE(support::changes(before, desk.tree()), file.isEmpty() ? QStringList() : changed);
    const QByteArray made = file.isEmpty() ? answer.out.toUtf8() : desk.read(file);
    QJsonObject expected = QJsonDocument::fromJson(before.value("old.json")).object();
    expected["publishedAt"] = "2126-01-02T06:00:01Z";
    expected.remove("signature");
    expected["runtime"] = QJsonObject{{"setupUrl", "r-1.0.0.exe"}, {"version", "1.0.0"}};
    QCOMPARE(made, signedManifest(QJsonDocument(expected).toJson()));
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateWithdrawTest)
#include "update_withdraw_mistakes_test.moc"
