// Addresses and hashes of a manifest, and its packages side by side: each mistake with its words,
// and the near miss that is none. What the packages hold is in manifest_lint_test.
#include "quorvanectl/manifest/manifest_lint_rules.h"

#include "support/file_tree.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QJsonDocument>
#include <QTemporaryDir>

using ctl::LintFinding;
using ctl::PackageRecord;

namespace {

const QString hash(64, 'a');

PackageRecord component(const QString &address, const QString &sum = hash) {
    return {"runtime", false, {{"setupUrl", address}, {"setupSha256", sum}}};
}

PackageRecord project(const QString &address, const QString &sum = hash) {
    return {"projects[0]", true, {{"name", "a"}, {"zipUrl", address}, {"zipSha256", sum}}};
}

QString linesOf(const QVector<LintFinding> &findings) {
    QStringList lines;
    for (const LintFinding &finding : findings)
        lines += ctl::lintLine(finding);
    return lines.join('\n');
}

} // namespace

class LintPackagesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void addresses_data();
    void addresses();
    void installers_data();
    void installers();
    void hashes_data();
    void hashes();
    void missingAddresses();
    void blanksAroundAnAddress();
    void packagesSideBySide_data();
    void packagesSideBySide();
    void files_data();
    void files();
};

void LintPackagesTest::addresses_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<QStringList>("rules"); // "words [kind]"
    const QString query = "a query or fragment becomes part of the file's name on the line PC "
                          "[query]";
    const QString quote = "a quote in the path keeps Windows from unpacking it [quote]";
    const QString backslash = "a backslash is no divider in a URL; use slashes [backslash]";
    const QString local = "a path of this one machine [local-path]";
    const QString out = "leads out of the manifest's folder [leads-out]";
    const QString open = "is not fetched over https [not-https]";
    const QString noHost = "names no server [no-host]";
    const QString secret = "a name or password in an address is shown to everybody [credentials]";
    const QString percent = "a per cent sign reads differently on a stick and on a server "
                            "[percent]";
    const QString noName = "ends without a file's name [no-file-name]";
    const QString badName = "Windows has no file of that name [bad-file-name]";
    const auto row = [](const char *name, const QString &address, const QStringList &rules) {
        QTest::newRow(name) << address << rules;
    };
    row("over https", "https://cdn.example/packages/a-1.2.0.zip", {});
    row("over https on another port", "https://cdn.example:8443/a.zip", {});
    row("beside the manifest", "a-1.2.0.zip", {});
    row("below it", "packages/a-1.2.0.zip", {});
    row("Chinese and blanks", QStringLiteral("包/产线 三.zip"), {});
    row("a way round that stays", "packages/../a.zip", {});
    row("two points in a name", "packages/a..zip", {});
    row("a query", "https://cdn.example/a.zip?token=1", {query});
    row("a fragment", "packages/a.zip#new", {query});
    row("an empty query", "https://cdn.example/a.zip?", {query});
    row("a single quote", "it's/a.zip", {quote});
    row("a double quote in the name", "packages/\"a\".zip", {quote});
    row("backslashes", "packages\\a.zip", {backslash});
    row("a path from the root", "/srv/a.zip", {local});
    row("a drive", "C:/out/a.zip", {local});
    row("a drive alone", "C:a.zip", {local, badName});
    row("the folder above", "../a.zip", {out});
    row("the folder above, behind a way round", "packages/../../a.zip", {out});
    row("over http", "http://cdn.example/a.zip", {open});
    row("over ftp", "ftp://cdn.example/a.zip", {open});
    row("from a file's address", "file:///srv/a.zip", {open, noHost});
    row("no server", "https:///a.zip", {noHost});
    row("a name in the address", "https://me@cdn.example/a.zip", {secret});
    row("a password in an open address", "http://me:x@cdn.example/a.zip", {open, secret});
    row("a blank written as in a URL", "https://cdn.example/a%20b.zip", {percent});
    row("a folder", "https://cdn.example/packages/", {noName});
    row("a name of a device", "packages/con.zip", {badName});
    row("a name that only begins as one", "packages/console.zip", {});
    row("a point at the end", "packages/a.zip.", {badName});
    row("a star in the name", "packages/a*.zip", {badName});
    row("everything at once", "http://me@cdn.example/it's\\%20?",
        {query, quote, backslash, open, secret, percent});
}

void LintPackagesTest::addresses() {
    QFETCH(QString, address);
    QFETCH(QStringList, rules);
    QString lines;
    for (const QString &rule : rules)
        lines += "\nprojects[0].zipUrl: " + address + ": " + rule;
    QCOMPARE(linesOf(ctl::lintAddress(project(address))), lines.mid(1));
}

void LintPackagesTest::installers_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isProgram");
    QTest::newRow("a program") << "setup-1.2.0.exe" << true;
    QTest::newRow("one without a suffix") << "setup-1.2.0" << true;
    QTest::newRow("a suffix in the middle") << "setup.msi.exe" << true;
    QTest::newRow("a suffix without its point") << "setupmsi" << true;
    for (const char *const suffix : {"msi", "MSIX", "msp", "zip", "7z", "rar", "tar", "gz", "iso"})
        QTest::newRow(suffix) << QStringLiteral("setup-1.2.0.") + suffix << false;
}

void LintPackagesTest::installers() {
    QFETCH(QString, name);
    QFETCH(bool, isProgram);
    const QString line = "runtime.setupUrl: the launcher starts an installer as it is, and " +
                         name + " is no program [no-program]";
    QCOMPARE(linesOf(ctl::lintAddress(component("p/" + name))), isProgram ? QString() : line);
    QCOMPARE(linesOf(ctl::lintAddress(project("p/" + name))), QString()); // that one is unpacked
}

void LintPackagesTest::hashes_data() {
    QTest::addColumn<QString>("sum");
    QTest::addColumn<QString>("ofProject");
    QTest::addColumn<QString>("ofComponent");
    const QString none = "is no SHA-256, which has 64 hexadecimal digits [bad-hash]";
    const QString nobody = "is missing: nobody is offered the project [missing-hash]";
    QTest::newRow("sixty-four digits") << QString(64, '0') << ""
                                       << "";
    QTest::newRow("in large letters") << QString(64, 'F') << ""
                                      << "";
    QTest::newRow("with blanks around, which are dropped") << " " + hash + "\n"
                                                           << ""
                                                           << "";
    QTest::newRow("none") << "" << nobody
                          << "is missing: the installer is started unchecked [missing-hash]";
    QTest::newRow("blanks") << "  " << nobody
                            << "is blank: the installer is never started [missing-hash]";
    QTest::newRow("a digit less") << QString(63, 'a') << none << none;
    QTest::newRow("a digit more") << QString(65, 'a') << none << none;
    QTest::newRow("a letter that is no digit") << QString(63, 'a') + "g" << none << none;
    QTest::newRow("with its kind in front") << "sha256:" + hash << none << none;
    QTest::newRow("with a file's name behind") << hash + "  a.zip" << none << none;
    QTest::newRow("in base64") << "47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU=" << none << none;
}

void LintPackagesTest::hashes() {
    QFETCH(QString, sum);
    QFETCH(QString, ofProject);
    QFETCH(QString, ofComponent);
    const auto line = [](const QString &where, const QString &words) {
        return words.isEmpty() ? QString() : where + ": " + words;
    };
    QCOMPARE(linesOf(ctl::lintAddress(project("a.zip", sum))),
             line("projects[0].zipSha256", ofProject));
    QCOMPARE(linesOf(ctl::lintAddress(component("a.exe", sum))),
             line("runtime.setupSha256", ofComponent));
}

// One finding, whatever else is wrong with it.
void LintPackagesTest::missingAddresses() {
    QCOMPARE(linesOf(ctl::lintAddress(project("", ""))),
             QString("projects[0]: `zipUrl` is missing: nobody is offered it [no-address]"));
    QCOMPARE(linesOf(ctl::lintAddress(component(" \t", "x"))),
             QString("runtime: `setupUrl` is missing: nobody is offered it [no-address]"));
}

void LintPackagesTest::blanksAroundAnAddress() {
    const QString line = "projects[0].zipUrl: blanks around the address become part of it [blanks]";
    QCOMPARE(linesOf(ctl::lintAddress(project("a.zip "))), line);
    QCOMPARE(linesOf(ctl::lintAddress(project("\na.zip"))), line);
    QCOMPARE(linesOf(ctl::lintAddress(project("a b.zip"))), QString());
}

void LintPackagesTest::packagesSideBySide_data() {
    QTest::addColumn<QByteArray>("manifest");
    QTest::addColumn<QString>("lines");
    const auto row = [](const char *name, const char *manifest, const QString &lines) {
        QTest::newRow(name) << QByteArray(manifest) << lines;
    };
    const QString over = "on a line PC one overwrites the other [same-file-name]";
    row("none", "{}", "");
    row("two projects", R"({"projects": [{"name": "a", "zipUrl": "a.zip"},
                                         {"name": "b", "zipUrl": "b.zip"}]})",
        "");
    row("one package for two components",
        R"({"runtime": {"setupUrl": "x/setup.exe"}, "editor": {"setupUrl": "y/SETUP.exe"}})",
        "editor.setupUrl: has the file name of runtime: " + over);
    row("one package for three",
        R"({"runtime": {"setupUrl": "s.exe"}, "launcher": {"setupUrl": "s.exe"},
            "editor": {"setupUrl": "s.exe"}})",
        "launcher.setupUrl: has the file name of runtime: " + over +
            "\neditor.setupUrl: has the file name of launcher: " + over);
    row("addresses without a file's name are not the same",
        R"({"runtime": {"setupUrl": "x/"}, "editor": {"setupUrl": "y/"}})", "");
    row("records without an address are not the same", R"({"runtime": {}, "editor": {}})", "");
    row("a project without a name", R"({"projects": [{"zipUrl": "a.zip"}]})",
        "projects[0].name: a project without a name matches no project [no-name]");
    row("two projects without a name", R"({"projects": [{"zipUrl": "a"}, {"zipUrl": "b"}]})",
        "projects[0].name: a project without a name matches no project [no-name]\n"
        "projects[1].name: a project without a name matches no project [no-name]");
    row("a name that is a number", R"({"projects": [{"name": 3, "zipUrl": "a"}]})",
        "projects[0].name: a project without a name matches no project [no-name]");
    row("a name of blanks", R"({"projects": [{"name": " ", "zipUrl": "a"}]})",
        "projects[0].name: blanks around the name belong to it: ' ' [blanks]");
    row("a project twice, in other letters",
        R"({"projects": [{"name": "Line", "zipUrl": "a"}, {"name": "b", "zipUrl": "b"},
                         {"name": "LINE", "zipUrl": "c"}]})",
        "projects[2].name: is that of projects[0], and only the first is looked at [same-project]");
}

void LintPackagesTest::packagesSideBySide() {
    QFETCH(QByteArray, manifest);
    const QJsonDocument document = QJsonDocument::fromJson(manifest);
    QVERIFY(document.isObject());
    QTEST(linesOf(ctl::lintTogether(ctl::packageRecords(document.object()))), "lines");
}

void LintPackagesTest::files_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("sum"); // empty: that of the file
    QTest::addColumn<QString>("line");
    const QString wrong = "runtime.setupSha256: the file's hash is %1 [hash-disagrees]";
    const QString missing = "runtime.setupUrl: there is no file %1 [missing-package]";
    QTest::newRow("the file that was meant") << "setup.exe"
                                             << ""
                                             << "";
    QTest::newRow("the file by its base") << "https://cdn.example/q/setup.exe"
                                          << ""
                                          << "";
    QTest::newRow("another file") << "setup.exe" << hash << wrong;
    QTest::newRow("another file by its base") << "https://cdn.example/q/setup.exe" << hash << wrong;
    QTest::newRow("a file on another server is not looked for")
        << "https://other.example/setup.exe" << hash << "";
    QTest::newRow("a file with a query is not looked for") << "none.exe?a" << hash << "";
    QTest::newRow("a file of this machine is not looked for") << "/none/setup.exe" << hash << "";
    QTest::newRow("no file") << "none.exe"
                             << "" << missing;
    QTest::newRow("a folder") << "folder"
                              << "" << missing;
    QTest::newRow("an empty file")
        << "empty.exe"
        << ""
        << "runtime.setupUrl: the package is empty, and a launcher takes "
           "no empty download [bad-size]";
}

void LintPackagesTest::files() {
    QFETCH(QString, address);
    QFETCH(QString, sum);
    QFETCH(QString, line);
    const QTemporaryDir folder;
    support::writeTree(folder.path(),
                       {{"setup.exe", "installer"}, {"empty.exe", ""}, {"folder/a", ""}});
    const QString actual =
        QCryptographicHash::hash("installer", QCryptographicHash::Sha256).toHex();
    if (line.contains("%1"))
        line = line.arg(line.contains("no file") ? folder.filePath(address) : actual);
    ctl::LintSubject subject;
    subject.folder = folder.path();
    subject.base = "https://cdn.example/q";
    QCOMPARE(linesOf(ctl::lintPackageFile(
                 component(address, sum.isEmpty() ? actual.toUpper() : sum), subject)),
             line);
}

QUORVANE_TEST_MAIN(QCoreApplication, LintPackagesTest)
#include "lint_packages_test.moc"
