// update lint in the hands of a publisher: files in another place or of another kind than the manifest
// says, and the manifest of last time given the wrong way round. Its rules are proved in
// manifest_lint_test.cpp.
#include "publisher_desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::outcome;
using support::PublisherDesk;
using support::refusal;

namespace {

const QString command = "quorvanectl update lint";
const QString seeHelp = "; see quorvanectl update lint --help";

QString installerSum() {
    return QCryptographicHash::hash("an installer", QCryptographicHash::Sha256).toHex();
}

// Writes site/x.json, of one installer whose hash is right.
QString withHash(const QString &url) {
    return "echo '{\"runtime\": {\"setupUrl\": \"" + url + "\", \"setupSha256\": \"" +
           installerSum() + "\"}}' >site/x.json; ";
}

QString offer(const QString &time, const QString &version, const QString &file) {
    return "echo '{\"publishedAt\": \"" + time +
           "\", \"runtime\": {\"setupUrl\": \"https://x.example/s-" + version +
           ".exe\", \"setupSha256\": \"" + installerSum() + "\"}}' >" + file + "; ";
}

} // namespace

class UpdateLintTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileThatCannotBeUsed_data();
    void aFileThatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void whatIsFound_data();
    void whatIsFound();
};

void UpdateLintTest::aFileThatCannotBeUsed_data() {
    support::addRefusals();
    refusal("the folder of a manifest", "", "@ site", "site: is a folder");
    refusal("a pipe is not waited for", "rm m.json; mkfifo m.json", "@ m.json",
            "m.json: is no plain file");
    refusal("an empty file", ": >m.json", "@ m.json",
            "m.json: is no JSON: line 1, column 1: illegal value");
    refusal("UTF-16", "iconv -t UTF-16 m.json >u.json", "@ u.json",
            "u.json: is no JSON: line 1, column 1: illegal value");
    refusal("a fault, for programs", "echo '{\"a\": 1,}' >m.json", "@ m.json --format json",
            "m.json: is no JSON: line 1, column 9: object is missing after a comma");
    refusal("an array", "echo '[]' >m.json", "@ m.json", "m.json: is no JSON object");
    refusal("somebody else's", "chmod 755 .; chmod 000 m.json", "$user @ m.json",
            "m.json: Permission denied");
    refusal("the previous one is missing", "", "@ m.json --previous none.json",
            "none.json: no such file");
    refusal("the previous one is a folder", "", "@ m.json --previous site", "site: is a folder");
    refusal("the previous one is a pipe", "mkfifo p.json", "@ m.json --previous p.json",
            "p.json: is no plain file");
    refusal("the previous one has a fault", R"(printf '{\n"a": 1,\n}' >p.json)",
            "@ m.json --previous p.json",
            "p.json: is no JSON: line 3, column 1: object is missing after a comma");
    refusal("the previous one is an array", "echo '[]' >p.json", "@ m.json --previous p.json",
            "p.json: is no JSON object");
    refusal("of two previous ones the last, which is missing", "",
            "@ m.json --previous signed.json --previous none.json", "none.json: no such file");
    refusal("a library that is missing", "", "@ m.json --library none.ini",
            "none.ini: no such file");
    refusal("a library that is a folder", "", "@ m.json --library site", "site: is a folder");
}

void UpdateLintTest::aFileThatCannotBeUsed() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateLintTest::wrongWords_data() {
    support::addRefusals();
    refusal("no manifest", "", "@", "update lint takes manifest.json" + seeHelp);
    refusal("the previous one without its option", "", "@ m.json signed.json",
            "update lint takes manifest.json" + seeHelp);
    refusal("a format of another command", "", "@ m.json --format sarif",
            "no format 'sarif'; there are: text, json");
    refusal("to have it put right", "", "@ m.json --fix", "Unknown option 'fix'" + seeHelp);
    refusal("a key, which update verify takes", "", "@ m.json --key update.pub",
            "Unknown option 'key'" + seeHelp);
}

void UpdateLintTest::wrongWords() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateLintTest::whatIsFound_data() {
    support::addOutcomes();
    const QString noHash =
        ": runtime.setupSha256: is missing: the installer is started unchecked [missing-hash]\n";
    const auto noFile = [](const QString &manifest, const QString &file) {
        return manifest + ": runtime.setupUrl: there is no file @here/" + file +
               " [missing-package]\n";
    };
    outcome("nothing", withHash("setup-1.2.0.exe"), "@ site/x.json", {0, "site/x.json: clean\n"});
    outcome("an installer of somebody else's has no hash",
            withHash("setup-1.2.0.exe") + "chmod 755 . site; chmod 000 site/setup-1.2.0.exe",
            "$user @ site/x.json",
            {1, "site/x.json: runtime.setupUrl: @here/site/setup-1.2.0.exe cannot be read: "
                "Permission denied [bad-package]\n"});
    outcome("nothing, for programs", withHash("setup-1.2.0.exe"), "@ site/x.json --format json",
            {0, "{\n    \"findings\": [\n    ],\n    \"manifest\": \"site/x.json\"\n}\n"});
    outcome("of two formats the last counts", withHash("setup-1.2.0.exe"),
            "@ site/x.json --format json --format text", {0, "site/x.json: clean\n"});
    outcome("a manifest that was copied out of its folder", "", "@ signed.json",
            {1, "signed.json" + noHash + noFile("signed.json", "setup-1.2.0.exe")});
    outcome("the package is missing", withHash("setup-1.2.0.exe") + "rm site/*.exe",
            "@ site/x.json", {1, noFile("site/x.json", "site/setup-1.2.0.exe")});
    outcome("the package is a folder",
            withHash("setup-1.2.0.exe") + "rm site/*.exe; mkdir site/setup-1.2.0.exe",
            "@ site/x.json", {1, noFile("site/x.json", "site/setup-1.2.0.exe")});
    outcome("the package is a pipe, which is not waited for",
            withHash("setup-1.2.0.exe") + "rm site/*.exe; mkfifo site/setup-1.2.0.exe",
            "@ site/x.json", {1, noFile("site/x.json", "site/setup-1.2.0.exe")});
    outcome("the package's name is in other letters", withHash("Setup-1.2.0.exe"), "@ site/x.json",
            {1, noFile("site/x.json", "site/Setup-1.2.0.exe")});
    outcome("the package was made anew",
            withHash("setup-1.2.0.exe") + "printf another >site/setup-1.2.0.exe", "@ site/x.json",
            {1, "site/x.json: runtime.setupSha256: the file's hash is " +
                    QCryptographicHash::hash("another", QCryptographicHash::Sha256).toHex() +
                    " [hash-disagrees]\n"});
    outcome("the package was emptied", withHash("setup-1.2.0.exe") + ": >site/setup-1.2.0.exe",
            "@ site/x.json",
            {1,
             "site/x.json: runtime.setupUrl: the package is empty, and a launcher takes no empty "
             "download [bad-size]\n"});
    outcome("behind its base the package is looked for",
            withHash("https://x.example/a/s-1.2.0.exe"), "@ site/x.json --base https://x.example/a",
            {1, noFile("site/x.json", "site/s-1.2.0.exe")});
    outcome("behind another base it is not", withHash("https://x.example/a/s-1.2.0.exe"),
            "@ site/x.json --base https://x.example/b", {0, "site/x.json: clean\n"});

    outcome("the manifest of last time is the one of today",
            offer("2026-11-21T06:00:00Z", "1.1.0", "old.json"), "@ old.json --previous old.json",
            {1, "old.json: publishedAt: is not later than that of the previous manifest "
                "[not-later]\n"});
    outcome("the manifests the wrong way round",
            offer("2026-11-21T06:00:00Z", "1.1.0", "old.json") +
                offer("2026-11-22T06:00:00Z", "1.2.0", "new.json"),
            "@ old.json --previous new.json",
            {1, "old.json: runtime: version 1.1.0 is not above 1.2.0 of the previous manifest "
                "[version-not-above-previous]\n"
                "old.json: publishedAt: is not later than that of the previous manifest "
                "[not-later]\n"});
    outcome("the right way round",
            offer("2026-11-21T06:00:00Z", "1.1.0", "old.json") +
                offer("2026-11-22T06:00:00Z", "1.2.0", "new.json"),
            "@ new.json --previous old.json", {0, "new.json: clean\n"});

    const QString gone =
        "new.json: editor: stood in the previous manifest (e-1.0.0.exe) and is gone "
        "[no-longer-offered]\n";
    const QString withdrawn = R"(echo '{"publishedAt": "2026-11-20T06:00:00Z", )"
                              R"("editor": {"setupUrl": "e-1.0.0.exe"}}' >old.json; )" +
                              offer("2026-11-21T06:00:00Z", "1.1.0", "new.json");
    outcome("what is no longer offered is a warning", withdrawn, "@ new.json --previous old.json",
            {0, gone});
    outcome("the same, for programs", withdrawn, "@ new.json --previous old.json --format json",
            {0, R"({
    "findings": [
        {
            "kind": "no-longer-offered",
            "message": "stood in the previous manifest (e-1.0.0.exe) and is gone",
            "severity": 1,
            "where": "editor"
        }
    ],
    "manifest": "new.json"
}
)"});
    outcome("a warning beside an error", withdrawn + "sed -i s/-21T/-19T/ new.json; ",
            "@ new.json --previous old.json",
            {1, gone + "new.json: publishedAt: is not later than that of the previous manifest "
                       "[not-later]\n"});

    outcome("in the encoding of an old editor",
            R"(printf '{"publishedAt": "\262\372\317\337", "signature": ""}' >m.json)", "@ m.json",
            {1, QString("m.json: the file is not UTF-8, and a server's manifest is read as nothing "
                        "else [not-utf8]\n"
                        "m.json: publishedAt: '%1%1%1%1' is no time such as 2026-11-20T06:00:00Z "
                        "[bad-time]\n"
                        "m.json: the manifest names no component and no project "
                        "[nothing-offered]\n")
                    .arg(QChar(QChar::ReplacementCharacter))});
    outcome("a key with control characters, which are spelled out",
            R"(printf '{"a\\u001b[31m\\n": 1}' >m.json)", "@ m.json",
            {1, "m.json: a\\x1b[31m\\n: nobody reads this key, and no signature covers it "
                "[unlisted-key]\n"
                "m.json: the manifest names no component and no project [nothing-offered]\n"});
    outcome("the same, for programs", R"(printf '{"a\\u001b[31m\\n": 1}' >m.json)",
            "@ m.json --format json", {1, R"({
    "findings": [
        {
            "kind": "unlisted-key",
            "message": "nobody reads this key, and no signature covers it",
            "severity": 0,
            "where": "a\u001b[31m\n"
        },
        {
            "kind": "nothing-offered",
            "message": "the manifest names no component and no project",
            "severity": 0,
            "where": ""
        }
    ],
    "manifest": "m.json"
}
)"});
    outcome("in a folder with a blank and Chinese",
            "mkdir '发 布'; mv site/setup-1.2.0.exe '发 布'; mv m.json '发 布/清单.json'",
            "@ '发 布/清单.json'", {1, "发 布/清单.json" + noHash});
    outcome("from the folder itself", "", "cd site && @ manifest.json",
            {1, "manifest.json" + noHash});
    outcome("a name that begins with a dash, behind two dashes",
            withHash("setup-1.2.0.exe") + "mv site/x.json site/-x.json", "cd site && @ -- -x.json",
            {0, "-x.json: clean\n"});
}

void UpdateLintTest::whatIsFound() {
    support::expectOutcome(PublisherDesk(command));
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateLintTest)
#include "update_lint_mistakes_test.moc"
