// update stick in the hands of an engineer: a stick that holds something already, folders in the wrong
// order, a manifest of somebody else's.
#include "publisher_desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::outcome;
using support::PublisherDesk;
using support::refusal;

namespace {

const QString command = "quorvanectl update stick";
const QString seeHelp = "; see quorvanectl update stick --help";

// A folder is no stick, and that is told.
support::Outcome filled(const QString &stick, const QStringList &changed) {
    return {0, "setup-1.2.0.exe\n" + stick + "/QuorvanerUpdate/manifest.json\n",
            "quorvanectl: " + stick +
                ": is no mounted volume; a launcher looks only at the top of those\n",
            changed};
}

// As it is after a copy to a folder that holds no update.
QStringList whole(const QString &stick) {
    return {"+" + stick + "/QuorvanerUpdate/", "+" + stick + "/QuorvanerUpdate/manifest.json",
            "+" + stick + "/QuorvanerUpdate/setup-1.2.0.exe"};
}

} // namespace

class UpdateStickTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsNotCopied_data();
    void whatIsNotCopied();
    void aStickThatIsNotWrittenTo_data();
    void aStickThatIsNotWrittenTo();
    void wrongWords_data();
    void wrongWords();
    void anUpdateThatALauncherWouldRefuse_data();
    void anUpdateThatALauncherWouldRefuse();
    void whatLiesOnItAfterwards_data();
    void whatLiesOnItAfterwards();
    void anOldPackageIsReplacedByForce();
};

void UpdateStickTest::whatIsNotCopied_data() {
    support::addRefusals();
    refusal("stick and folder swapped", "", "@ stick site", "stick/manifest.json: no such file");
    refusal("the manifest in place of its folder", "", "@ site/manifest.json stick",
            "site/manifest.json/manifest.json: no such file");
    refusal("a manifest by another name", "mv site/manifest.json site/update.json", "@ site stick",
            "site/manifest.json: no such file");
    refusal("a manifest that is a folder", "rm site/manifest.json; mkdir site/manifest.json",
            "@ site stick", "site/manifest.json: is a folder");
    refusal("a manifest that is a pipe", "rm site/manifest.json; mkfifo site/manifest.json",
            "@ site stick", "site/manifest.json: is no plain file");
    refusal("an empty manifest", ": >site/manifest.json", "@ site stick",
            "site/manifest.json: is no JSON: line 1, column 1: illegal value");
    refusal("a manifest with a fault", "echo '{\"a\":}' >site/manifest.json", "@ site stick",
            "site/manifest.json: is no JSON: line 1, column 6: object is missing after a comma");
    refusal("a manifest in UTF-16", "iconv -t UTF-16 signed.json >site/manifest.json",
            "@ site stick", "site/manifest.json: is no JSON: line 1, column 1: illegal value");
    refusal("a manifest of somebody else's", "chmod 755 .; chmod 777 stick; chmod 000 site/*.json",
            "$user @ site stick", "site/manifest.json: Permission denied");
    refusal("the private key as the key", "", "@ site stick --key private.pem",
            "private.pem: holds no RSA public key in PEM form");
    refusal("an empty name for the key", "", "@ site stick --key ''",
            "--key is given an empty value" + seeHelp);
    refusal("a key that is missing", "", "@ site stick --key none.pub", "none.pub: no such file");
    refusal("a folder as the key", "", "@ site stick --key site", "site: is a folder");
}

void UpdateStickTest::whatIsNotCopied() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateStickTest::aStickThatIsNotWrittenTo_data() {
    support::addRefusals();
    const QString manifest = "stick/QuorvanerUpdate/manifest.json";
    const QString package = "stick/QuorvanerUpdate/setup-1.2.0.exe";
    const QString isRead = ": is read by this command and not overwritten";
    refusal("a mount point that is missing", "", "@ site none", "none: is no folder");
    refusal("a file", "", "@ site m.json", "m.json: is no folder");
    refusal("an empty name", "", "@ site ''", ": is no folder");
    refusal("another update lies there",
            "mkdir stick/QuorvanerUpdate; echo old >stick/QuorvanerUpdate/manifest.json",
            "@ site stick", "stick/QuorvanerUpdate/manifest.json: exists; --force overwrites it");
    refusal("a package of that name lies there",
            "mkdir stick/QuorvanerUpdate; echo old >stick/QuorvanerUpdate/setup-1.2.0.exe",
            "@ site stick", "stick/QuorvanerUpdate/setup-1.2.0.exe: exists; --force overwrites it");
    refusal("a folder lies there as the manifest, not even by force",
            "mkdir -p stick/QuorvanerUpdate/manifest.json", "@ site stick --force",
            "stick/QuorvanerUpdate/manifest.json: is a folder");
    refusal("a folder lies there as a package, not even by force",
            "mkdir -p stick/QuorvanerUpdate/setup-1.2.0.exe", "@ site stick --force",
            "stick/QuorvanerUpdate/setup-1.2.0.exe: is a folder");
    refusal("a file lies there as the folder", "echo mine >stick/QuorvanerUpdate", "@ site stick",
            "unable to create directory: @here/stick/QuorvanerUpdate");
    refusal("the update on the stick, onto its stick",
            "mkdir stick/QuorvanerUpdate; cp site/* stick/QuorvanerUpdate",
            "@ stick/QuorvanerUpdate stick", manifest + isRead);
    refusal("the update on the stick, onto its stick by force",
            "mkdir stick/QuorvanerUpdate; cp site/* stick/QuorvanerUpdate",
            "@ stick/QuorvanerUpdate stick --force", manifest + isRead);
    refusal("the same by another name of the folder, by force",
            "mkdir stick/QuorvanerUpdate; cp site/* stick/QuorvanerUpdate; "
            "ln -s stick/QuorvanerUpdate site2",
            "@ site2 stick --force", manifest + isRead);
    refusal("the key lies there as a package, by force",
            "mkdir stick/QuorvanerUpdate; cp update.pub " + package,
            "@ site stick --force --key " + package, package + isRead);
    const QString isLink = ": is a link; what it leads to is not written over";
    for (const QString &force : {QString(), QString(" --force")}) {
        const QByteArray by = force.isEmpty() ? "" : ", not even by force";
        refusal(QByteArray("a link lies there as a package" + by),
                "mkdir stick/QuorvanerUpdate; echo mine >mine; ln -s ../../mine " + package,
                "@ site stick" + force, package + isLink);
        refusal(QByteArray("a link to nowhere lies there as a package" + by),
                "mkdir stick/QuorvanerUpdate; ln -s ../../mine " + package, "@ site stick" + force,
                package + isLink);
        refusal(QByteArray("a link lies there as the manifest" + by),
                "mkdir stick/QuorvanerUpdate; echo mine >mine; ln -s ../../mine " + manifest,
                "@ site stick" + force, manifest + isLink);
        refusal(QByteArray("a link lies there as the folder" + by),
                "mkdir mine; ln -s ../mine stick/QuorvanerUpdate", "@ site stick" + force,
                "stick/QuorvanerUpdate" + isLink);
    }
    refusal("a link lies there as a package, and the old update stays",
            "mkdir stick/QuorvanerUpdate; echo old >" + manifest +
                "; echo mine >mine; "
                "ln -s ../../mine " +
                package,
            "@ site stick --force", package + isLink);
    refusal("a pipe lies there as a package, not even by force",
            "mkdir stick/QuorvanerUpdate; mkfifo " + package, "@ site stick --force",
            package + ": is no plain file");
    refusal("a stick of somebody else's", "chmod 755 . site stick", "$user @ site stick",
            "unable to create directory: @here/stick/QuorvanerUpdate");
}

void UpdateStickTest::aStickThatIsNotWrittenTo() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateStickTest::wrongWords_data() {
    support::addRefusals();
    const QString takes = "update stick takes DIR MOUNTPOINT" + seeHelp;
    refusal("no stick", "", "@ site", takes);
    refusal("three folders", "", "@ site stick out", takes);
    refusal("a mount point with a blank and no quotes", "mkdir 'MY STICK'", "@ site MY STICK",
            takes);
    refusal("the stick behind --out", "", "@ site --out stick", "Unknown option 'out'" + seeHelp);
    refusal("a format, which it has none of", "", "@ site stick --format json",
            "Unknown option 'format'" + seeHelp);
}

void UpdateStickTest::wrongWords() {
    support::expectRefusal(PublisherDesk(command));
}

// Findings, and not one file.
void UpdateStickTest::anUpdateThatALauncherWouldRefuse_data() {
    support::addOutcomes();
    const auto manifest = [](const QString &runtime) {
        return "echo '{\"runtime\": {" + runtime +
               "}, \"signature\": \"c2lnbmVk\"}' >site/manifest.json";
    };
    outcome("not signed yet", "cp m.json site/manifest.json", "@ site stick",
            {1, "the manifest is not signed\n"});
    outcome("signed with blanks", R"(echo '{"signature": "  "}' >site/manifest.json)",
            "@ site stick", {1, "the manifest is not signed\n"});
    outcome("of another publisher", "", "@ site stick --key other.pub",
            {1, support::verificationFailed("other.pub", support::signedSum()) + "\n"});
    outcome("its package is missing", "rm site/setup-1.2.0.exe", "@ site stick",
            {1, "runtime: there is no file site/setup-1.2.0.exe\n"});
    outcome("its package is a folder", "rm site/*.exe; mkdir site/setup-1.2.0.exe", "@ site stick",
            {1, "runtime: there is no file site/setup-1.2.0.exe\n"});
    outcome("its package is a pipe", "rm site/*.exe; mkfifo site/setup-1.2.0.exe", "@ site stick",
            {1, "runtime: there is no file site/setup-1.2.0.exe\n"});
    outcome("its package's name is in other letters",
            "mv site/setup-1.2.0.exe site/Setup-1.2.0.exe", "@ site stick",
            {1, "runtime: there is no file site/setup-1.2.0.exe\n"});
    outcome("both faults are told, and control characters are spelled out",
            "cp m.json site/manifest.json; sed -i 's/setup-/\\\\u001b[31m/' site/manifest.json",
            "@ site stick",
            {1, "the manifest is not signed\n"
                "runtime: there is no file site/\\x1b[31m1.2.0.exe\n"});
    outcome("its package has another hash",
            manifest(R"("setupUrl": "setup-1.2.0.exe", "setupSha256": "00")"), "@ site stick",
            {1, "runtime: SHA256 mismatch for site/setup-1.2.0.exe (expected 00, got " +
                    QCryptographicHash::hash("an installer", QCryptographicHash::Sha256).toHex() +
                    ")\n"});
    outcome("an old update stays, by force too",
            "cp m.json site/manifest.json; mkdir stick/QuorvanerUpdate; "
            "echo old >stick/QuorvanerUpdate/manifest.json",
            "@ site stick --force", {1, "the manifest is not signed\n"});
}

void UpdateStickTest::anUpdateThatALauncherWouldRefuse() {
    support::expectOutcome(PublisherDesk(command));
}

void UpdateStickTest::whatLiesOnItAfterwards_data() {
    support::addOutcomes();
    outcome("what lay on it stays, an old package too",
            "mkdir stick/QuorvanerUpdate; echo old >stick/QuorvanerUpdate/setup-1.1.0.exe; "
            "echo mine >stick/photo.jpg",
            "@ site stick",
            filled("stick", {"+stick/QuorvanerUpdate/manifest.json",
                             "+stick/QuorvanerUpdate/setup-1.2.0.exe"}));
    outcome("a name with a blank and Chinese", "mkdir '优 盘'", "@ site '优 盘'",
            filled("优 盘", whole("优 盘")));
    outcome("from the folder itself", "", "cd site && @ . ../stick",
            filled("../stick", whole("stick")));
    outcome("a slash behind both names", "", "@ site/ stick/",
            {0, "setup-1.2.0.exe\nstick/QuorvanerUpdate/manifest.json\n",
             "quorvanectl: stick/: is no mounted volume; a launcher looks only at the top of "
             "those\n",
             whole("stick")});
    outcome("a name that begins with a dash, behind two dashes", "mkdir ./-stick",
            "@ -- site -stick", filled("-stick", whole("-stick")));
    outcome("the update's folder taken for the stick", "mkdir stick/QuorvanerUpdate",
            "@ site stick/QuorvanerUpdate",
            filled("stick/QuorvanerUpdate", whole("stick/QuorvanerUpdate")));
    outcome("through a link", "ln -s stick latest", "@ site latest",
            filled("latest", whole("stick")));
    // No hash, no check: that is for update lint to say.
    outcome("a package that is no longer the one that was signed",
            "echo another >site/setup-1.2.0.exe", "@ site stick --key update.pub",
            filled("stick", whole("stick")));
}

void UpdateStickTest::whatLiesOnItAfterwards() {
    const PublisherDesk desk(command);
    support::expectOutcome(desk);
    // A copy is one to the byte.
    const support::FileTree tree = desk.tree();
    for (auto file = tree.begin(); file != tree.end(); ++file) {
        const QString name = QFileInfo(file.key()).fileName();
        if (file.key().contains("QuorvanerUpdate/") && tree.contains("site/" + name))
            QCOMPARE(file.value(), tree.value("site/" + name));
    }
}

void UpdateStickTest::anOldPackageIsReplacedByForce() {
    const PublisherDesk desk(command);
    desk.arrange("mkdir stick/QuorvanerUpdate; cd stick/QuorvanerUpdate; "
                 "echo old >manifest.json; echo old >setup-1.2.0.exe; echo old >notes.txt");
    QCOMPARE(desk.type("@ site stick --force --key update.pub").status, 0);
    QCOMPARE(support::below(desk.tree(), "stick/QuorvanerUpdate"),
             (support::FileTree{{"manifest.json", desk.read("site/manifest.json")},
                                {"setup-1.2.0.exe", "an installer"},
                                {"notes.txt", "old\n"}}));
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateStickTest)
#include "update_stick_mistakes_test.moc"
