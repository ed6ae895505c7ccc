// update withdraw in the hands of a publisher in a hurry: what is on offer again, and what is not signed.
#include "publisher_desk.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"

#include <QCoreApplication>
#include <QDateTime>
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

// A line of shell that makes a signed manifest with that time of publication.
QString sign(const QString &name, const QString &time) {
    return "echo '{\"publishedAt\": \"" + time + "\"}' >plain; quorvanectl update sign plain " +
           "--key private.pem --out " + name + "; rm plain; ";
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
    void swappedTheMistakeDoesNotComeBack_data();
    void swappedTheMistakeDoesNotComeBack();
    void timesThatAreNotLater_data();
    void timesThatAreNotLater();
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
    refusal("what to go back to is none", "printf 'xx' >m.sig",
            "@ new.json --to m.sig --key private.pem",
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
    refusal("an empty name to go back to", "", "@ new.json --to '' --key private.pem",
            "--to is given an empty value" + seeHelp);
    refusal("of two to go back to the last, which is missing", "",
            "@ new.json --to old.json --to none.json --key private.pem", "none.json: no such file");
    refusal("of two faults what is published is told", "",
            "@ none.json --to gone.json --key none.pem", "none.json: no such file");
    refusal("the folder of what is published", "", "@ site --to old.json --key private.pem",
            "site: is a folder");
    refusal("a pipe to go back to is not waited for", "mkfifo p.json",
            "@ new.json --to p.json --key private.pem", "p.json: is no plain file");
    refusal("an array to go back to", "echo '[]' >a.json",
            "@ new.json --to a.json --key private.pem", "a.json: is no JSON object");
    refusal("over the key, by force", "",
            "@ new.json --to old.json --key private.pem --out private.pem --force",
            "private.pem" + isRead);
    refusal("over what to go back to by another name, by force", "ln old.json copy.json",
            "@ new.json --to old.json --key private.pem --out copy.json --force",
            "copy.json" + isRead);
    refusal("into a folder", "", "@ new.json --to old.json --key private.pem --out out --force",
            "out: is a folder");
    refusal("into a folder that is missing", "",
            "@ new.json --to old.json --key private.pem --out none/x.json",
            "none/x.json: No such file or directory");
    refusal("into a folder of somebody else's", "chmod 755 . out; chmod 644 *.pem",
            "$user @ new.json --to old.json --key private.pem --out out/x.json 2>&1 >&2 "
            "| tail -n 1 >&2; exit 2",
            "out/x.json: Permission denied");
    refusal("with a key that is too short", "openssl genrsa -out k.pem 512 2>/dev/null",
            "@ new.json --to old.json --key k.pem",
            "k.pem: a key of 512 bits is too short; take 3072");
    refusal("with a wrong passphrase",
            "openssl rsa -aes256 -in private.pem -passout pass:right -out k.pem 2>/dev/null; "
            "echo wrong >words",
            "@ new.json --to old.json --key k.pem --passphrase-fd 3 3<words",
            "k.pem: the passphrase is wrong, or the key is damaged");
    refusal("an output that is full", "", "@ new.json --to old.json --key private.pem >/dev/full",
            "standard output: No space left on device");
    refusal("only to look", "", "@ new.json --to old.json --key private.pem --dry-run",
            "Unknown option 'dry-run'" + seeHelp);
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

// The manifest of before would be written over, and it may be the only copy.
void UpdateWithdrawTest::swappedTheMistakeDoesNotComeBack_data() {
    support::addRefusals();
    const QString with = "@ old.json --to new.json --key private.pem";
    const QString later =
        "new.json: is later than old.json, which is to give way; are the two swapped?";
    refusal("in place", "", with + " --in-place", later);
    refusal("in place, by force", "", with + " --in-place --force", later);
    refusal("in another file", "", with + " --out x.json", later);
    refusal("on the output", "", with, later);
    refusal("a second later, in the time of another place",
            sign("a.json", "2126-01-01T06:00:00Z") + sign("b.json", "2126-01-01T05:00:01-01:00"),
            "@ a.json --to b.json --key private.pem",
            "b.json: is later than a.json, which is to give way; are the two swapped?");
}

void UpdateWithdrawTest::swappedTheMistakeDoesNotComeBack() {
    support::expectRefusal(WithdrawDesk());
}

void UpdateWithdrawTest::timesThatAreNotLater_data() {
    QTest::addColumn<QString>("published");
    QTest::addColumn<QString>("previous");
    QTest::addColumn<QString>("time"); // empty: now
    QTest::newRow("the same one") << "2126-01-01T06:00:00Z"
                                  << "2126-01-01T06:00:00Z"
                                  << "2126-01-01T06:00:01Z";
    QTest::newRow("earlier, in the time of another place") << "2126-01-01T06:00:00Z"
                                                           << "2126-01-01T07:00:00+02:00"
                                                           << "2126-01-01T06:00:01Z";
    QTest::newRow("none in what is published") << ""
                                               << "2020-01-01T06:00:00Z"
                                               << "";
    QTest::newRow("none in what was before") << "2126-01-01T06:00:00Z"
                                             << ""
                                             << "2126-01-01T06:00:01Z";
    QTest::newRow("a word in both") << "soon"
                                    << "yesterday"
                                    << "";
}

void UpdateWithdrawTest::timesThatAreNotLater() {
    QFETCH(QString, published);
    QFETCH(QString, previous);
    QFETCH(QString, time);
    const WithdrawDesk desk;
    desk.arrange(sign("a.json", published) + sign("b.json", previous));
    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    const Answer answer = desk.type("@ a.json --to b.json --key private.pem --in-place");
    QCOMPARE(answer.err, QString());
    const QString made =
        QJsonDocument::fromJson(desk.read("a.json")).object()["publishedAt"].toString();
    QVERIFY2(time.isEmpty() ? made >= now : made == time, qPrintable(made));
    QCOMPARE(answer.out, "a.json: offers what b.json does, published at " + made + '\n');
    QCOMPARE(answer.status, 0);
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
