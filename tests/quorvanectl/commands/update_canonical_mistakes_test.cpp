// update canonical in the hands of whoever signs elsewhere: what is signed, and where it is written.
#include "publisher_desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::outcome;
using support::PublisherDesk;
using support::refusal;

namespace {

const QString command = "quorvanectl update canonical";
const QString seeHelp = "; see quorvanectl update canonical --help";

} // namespace

class UpdateCanonicalTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aManifestThatCannotBeUsed_data();
    void aManifestThatCannotBeUsed();
    void aPlaceThatIsNotWrittenTo_data();
    void aPlaceThatIsNotWrittenTo();
    void wrongWords_data();
    void wrongWords();
    void whatIsSigned_data();
    void whatIsSigned();
    void whereItIsWritten_data();
    void whereItIsWritten();
};

void UpdateCanonicalTest::aManifestThatCannotBeUsed_data() {
    support::addRefusals();
    refusal("the folder of a manifest", "", "@ site", "site: is a folder");
    refusal("a pipe is not waited for", "rm m.json; mkfifo m.json", "@ m.json",
            "m.json: is no plain file");
    refusal("an empty file has no bytes to sign", ": >m.json", "@ m.json --out c.bin",
            "m.json: is no JSON: line 1, column 1: illegal value");
    refusal("UTF-16", "iconv -t UTF-16 m.json >u.json", "@ u.json --out c.bin",
            "u.json: is no JSON: line 1, column 1: illegal value");
    refusal("an array", "echo '[]' >m.json", "@ m.json --out c.bin", "m.json: is no JSON object");
    refusal("the key", "", "@ private.pem --out c.bin",
            "private.pem: is no JSON: line 1, column 1: illegal value");
}

void UpdateCanonicalTest::aManifestThatCannotBeUsed() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateCanonicalTest::aPlaceThatIsNotWrittenTo_data() {
    support::addRefusals();
    const QString exists = ": exists; --force overwrites it";
    refusal("a file that is there", "", "@ m.json --out signed.json", "signed.json" + exists);
    refusal("the manifest itself", "", "@ m.json --out m.json", "m.json" + exists);
    refusal("the manifest by another name", "", "@ m.json --out ./site/../m.json",
            "./site/../m.json" + exists);
    refusal("a folder", "", "@ m.json --out out", "out: is a folder");
    refusal("a folder, not even by force", "", "@ m.json --out out --force", "out: is a folder");
    refusal("a folder that is missing", "", "@ m.json --out none/c.bin",
            "none/c.bin: No such file or directory");
    refusal("a folder that is missing, with nothing in it", "", "@ m.json --out none/",
            "none/: No such file or directory");
    refusal("a folder that is a file", "", "@ m.json --out m.sig/c.bin",
            "m.sig/c.bin: Not a directory");
    refusal("a link to nowhere is something", "ln -s nowhere link", "@ m.json --out link",
            "link" + exists);
    refusal("a pipe is not waited for", "mkfifo pipe", "@ m.json --out pipe",
            "pipe: is no plain file");
    refusal("a pipe is not replaced, not even by force", "mkfifo pipe",
            "@ m.json --out pipe --force", "pipe: is no plain file");
    refusal("a folder of somebody else's", "chmod 755 . out; chmod 644 m.json",
            "$user @ m.json --out out/c.bin", "out/c.bin: Permission denied");
    refusal("a file that is write-protected, not even by force",
            "chmod 755 .; chmod 777 out; echo old >out/c.bin; chmod 444 out/c.bin",
            "$user @ m.json --out out/c.bin --force",
            "out/c.bin: Existing file out/c.bin is not writable");
    refusal("a name that no folder holds", "", "@ m.json --out " + QString(300, 'n'),
            QString(300, 'n') + ": File name too long");
    refusal("standard output that is full", "", "@ m.json >/dev/full",
            "standard output: No space left on device");
}

void UpdateCanonicalTest::aPlaceThatIsNotWrittenTo() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateCanonicalTest::wrongWords_data() {
    support::addRefusals();
    refusal("two manifests", "", "@ m.json signed.json",
            "update canonical takes manifest.json" + seeHelp);
    refusal("no manifest", "", "@ --out c.bin", "update canonical takes manifest.json" + seeHelp);
    refusal("another option in the place of a name", "", "@ m.json --out --force",
            "Missing value after '--out'" + seeHelp);
    refusal("no value behind --out", "", "@ m.json --out", "Missing value after '--out'" + seeHelp);
    refusal("an empty name for --out", "", "@ m.json --out ''",
            "--out is given an empty value" + seeHelp);
    refusal("a value behind --force", "", "@ m.json --out c.bin --force=yes",
            "Unexpected value after '--force'" + seeHelp);
    refusal("a key, which it has no use for", "", "@ m.json --key private.pem",
            "Unknown option 'key'" + seeHelp);
    refusal("a format, which it has none of", "", "@ m.json --format json",
            "Unknown option 'format'" + seeHelp);
}

void UpdateCanonicalTest::wrongWords() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateCanonicalTest::whatIsSigned_data() {
    support::addOutcomes();
    outcome("no line feed behind it", "", "@ m.json", {0, support::signedBytes});
    outcome("no signature in it", "", "@ signed.json", {0, support::signedBytes});
    outcome("no byte-order mark before it", R"((printf '\357\273\277'; cat m.json) >b.json)",
            "@ b.json", {0, support::signedBytes});
    outcome("no line end of Windows in it", R"(sed -i 's/, /,\r\n/g' m.json)", "@ m.json",
            {0, support::signedBytes});
    outcome("nothing that is not listed", R"(sed -i 's/{/{"note": "mine", /' m.json)", "@ m.json",
            {0, support::signedBytes});
    outcome("of a key that stands twice the last",
            R"(echo '{"schemaVersion": 1, "schemaVersion": 2}' >m.json)", "@ m.json",
            {0, R"({"schemaVersion":2})"});
    outcome("what has a wrong type as an empty one",
            R"(echo '{"schemaVersion": "1", "runtime": 7, "projects": {}}' >m.json)", "@ m.json",
            {0, R"({"schemaVersion":"1","runtime":{},"projects":[]})"});
    outcome("control characters do not reach a terminal",
            R"(printf '{"publishedAt": "a\\u001bb\\nc"}' >m.json)", "@ m.json",
            {0, R"({"publishedAt":"a\u001bb\nc"})"});
    outcome("--force alone has nothing to do", "", "@ m.json --force", {0, support::signedBytes});
}

void UpdateCanonicalTest::whatIsSigned() {
    support::expectOutcome(PublisherDesk(command));
}

// Every row writes the same bytes, to a file that is told on standard output.
void UpdateCanonicalTest::whereItIsWritten_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("told");
    QTest::addColumn<QString>("file");
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &told, const QString &file) {
        QTest::newRow(name) << arrangement << line << told << file;
    };
    row("a new file", "", "@ m.json --out c.bin", "c.bin", "c.bin");
    row("of two names the last", "", "@ m.json --out a.bin --out b.bin", "b.bin", "b.bin");
    row("over a file, by force", "echo old >c.bin", "@ m.json --out c.bin --force", "c.bin",
        "c.bin");
    row("over the manifest, by force", "", "@ m.json --out m.json --force", "m.json", "m.json");
    row("where a link leads, by force", "ln -s there.bin link", "@ m.json --out link --force",
        "link", "there.bin");
    row("a name of a blank and Chinese", "", "@ m.json --out '规范 1.bin'", "规范 1.bin",
        "规范 1.bin");
    row("a name that begins with a dash", "", "@ m.json --out -c.bin", "-c.bin", "-c.bin");
    row("a dash alone is a name", "", "@ m.json --out -", "-", "-");
    row("from another folder", "", "cd site && @ ../m.json --out ../c.bin", "../c.bin", "c.bin");
    row("a line feed in its name is spelled out", "", "@ m.json --out 'c\n.bin'", "c\\n.bin",
        "c\n.bin");
}

void UpdateCanonicalTest::whereItIsWritten() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, told);
    QFETCH(QString, file);
    const PublisherDesk desk(command);
    desk.arrange(arrangement);
    const support::FileTree before = desk.tree();
    const support::Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.out, told + ": written\n");
    QCOMPARE(answer.status, 0);
    QCOMPARE(desk.read(file), support::signedBytes);
    const QString sign = before.contains(file) ? "~" : "+";
    QCOMPARE(support::changes(before, desk.tree()), QStringList(sign + file));
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateCanonicalTest)
#include "update_canonical_mistakes_test.moc"
