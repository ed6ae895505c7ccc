// update manifest in the hands of a publisher: packages in the wrong place, options of the wrong form,
// and what goes in although the lint will find it.
#include "publisher_desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;
using support::PublisherDesk;
using support::refusal;

namespace {

const QString command = "quorvanectl update manifest";
const QString seeHelp = "; see quorvanectl update manifest --help";
const QString runtime = " --runtime site/setup-1.2.0.exe";
const QString published = " --published-at 2026-11-20T06:00:00Z";

// The record of an installer whose content is that of the desk's.
QJsonObject installer(const QString &version, const QString &url, const QString &minVersion = {}) {
    const QByteArray sum = QCryptographicHash::hash("an installer", QCryptographicHash::Sha256);
    QJsonObject record{
        {"version", version}, {"setupUrl", url}, {"setupSha256", QString::fromLatin1(sum.toHex())}};
    if (!minVersion.isEmpty())
        record["minVersion"] = minVersion;
    return record;
}

QByteArray runtimeFrom(const QString &minVersion) {
    const QJsonObject record = installer("1.2.0", "setup-1.2.0.exe", minVersion);
    return QJsonDocument(QJsonObject{{"schemaVersion", 1}, {"runtime", record}}).toJson();
}

void layPackages(const PublisherDesk &desk) {
    const QByteArray project = R"({"project": {"name": "a"}})";
    const QByteArray versioned = R"({"project": {"name": "a", "version": "1.0.0"}})";
    support::writeTree(desk.path("site"),
                       {{"none-in-it.zip", support::zipOf({{"notes.txt", "mine"}})},
                        {"unversioned.zip", support::zipOf({{"a.yslib", project}})},
                        {"a.zip", support::zipOf({{"a.yslib", versioned}})}});
}

} // namespace

class UpdateManifestTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aPackageThatIsNotTaken_data();
    void aPackageThatIsNotTaken();
    void anInstallerThatIsNotTaken_data();
    void anInstallerThatIsNotTaken();
    void aPlaceThatIsNotWrittenTo_data();
    void aPlaceThatIsNotWrittenTo();
    void wrongWords_data();
    void wrongWords();
    void whatGoesIn_data();
    void whatGoesIn();
    void whereItIsWritten_data();
    void whereItIsWritten();
    void aPackageGivenTwiceGoesInTwice();
    void aPreviousOneThatIsNotTaken_data();
    void aPreviousOneThatIsNotTaken();
    void whatIsCarriedOver_data();
    void whatIsCarriedOver();
    void aLowestVersionThatGoesOnIsTold();
    void withAPreviousOneTheTimeIsBehindIt();
    void withoutATimeItIsNow();
};

void UpdateManifestTest::aPackageThatIsNotTaken_data() {
    support::addRefusals();
    refusal("a folder in its place", "", "@ --out site/x.json site", "site: is a folder");
    refusal("a file that is missing", "", "@ --out site/x.json site/none.zip",
            "site/none.zip: no such file");
    refusal("the name of another folder's file", "",
            "cd site && @ --out x.json site/setup-1.2.0.exe", "site/setup-1.2.0.exe: no such file");
    refusal("an empty one", ": >site/p.zip", "@ --out site/x.json site/p.zip",
            "site/p.zip: is empty, and a launcher takes no empty download");
    refusal("a pipe is not waited for", "mkfifo site/p.zip", "@ --out site/x.json site/p.zip",
            "site/p.zip: is no plain file");
    refusal("an installer among the packages", "", "@ --out site/x.json site/setup-1.2.0.exe",
            "site/setup-1.2.0.exe: Not a zip archive");
    refusal("a manifest among the packages", "", "@ --out site/x.json site/manifest.json",
            "site/manifest.json: Not a zip archive");
    refusal("an archive without a project", "", "@ --out site/x.json site/none-in-it.zip",
            "site/none-in-it.zip: its project has no name or no version");
    refusal("an archive of a project without a version", "",
            "@ --out site/x.json site/unversioned.zip",
            "site/unversioned.zip: its project has no name or no version");
    refusal("the second of two", "", "@ --out site/x.json site/a.zip site/b.zip",
            "site/b.zip: no such file");
    refusal("somebody else's",
            "chmod 755 .; chmod 777 site; echo x >site/p.zip; chmod 000 site/p.zip",
            "$user @ --out site/x.json site/p.zip", "site/p.zip: Permission denied");
}

void UpdateManifestTest::aPackageThatIsNotTaken() {
    const PublisherDesk desk(command);
    layPackages(desk);
    support::expectRefusal(desk);
}

void UpdateManifestTest::anInstallerThatIsNotTaken_data() {
    support::addRefusals();
    refusal("a file that is missing", "", "@ --out site/x.json --runtime site/none-1.0.0.exe",
            "site/none-1.0.0.exe: no such file");
    refusal("a folder", "mkdir site/tools-1.0.0", "@ --out site/x.json --editor site/tools-1.0.0",
            "site/tools-1.0.0: is a folder");
    refusal("a pipe is not waited for", "mkfifo site/s-1.2.0.exe",
            "@ --out site/x.json --launcher site/s-1.2.0.exe",
            "site/s-1.2.0.exe: is no plain file");
    refusal("a version in its folder's name alone",
            "mkdir site/1.2.0; cp site/setup-1.2.0.exe site/1.2.0/setup.exe",
            "@ --out site/x.json --runtime site/1.2.0/setup.exe",
            "site/1.2.0/setup.exe: its name holds no version, as in setup-1.2.0.exe");
    refusal("beside the manifest's folder", "", "@ --out out/x.json" + runtime,
            "site/setup-1.2.0.exe: lies outside the manifest's folder");
    refusal("in the manifest's folder as a link", "ln -s ../site/setup-1.2.0.exe out",
            "@ --out out/x.json --runtime out/setup-1.2.0.exe",
            "out/setup-1.2.0.exe: lies outside the manifest's folder");
    refusal("of two of a kind the last, which is missing", "",
            "@ --out site/x.json" + runtime + " --runtime site/none-1.3.0.exe",
            "site/none-1.3.0.exe: no such file");
    refusal("somebody else's", "chmod 755 .; chmod 777 site; chmod 000 site/setup-1.2.0.exe",
            "$user @ --out site/x.json" + runtime, "site/setup-1.2.0.exe: Permission denied");
}

void UpdateManifestTest::anInstallerThatIsNotTaken() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateManifestTest::aPlaceThatIsNotWrittenTo_data() {
    support::addRefusals();
    const QString exists = ": exists; --force overwrites it";
    const QString isRead = ": is read by this command and not overwritten";
    refusal("the manifest that is published", "", "@ --out site/manifest.json" + runtime,
            "site/manifest.json" + exists);
    refusal("the installer", "", "@ --out site/setup-1.2.0.exe" + runtime,
            "site/setup-1.2.0.exe" + isRead);
    refusal("the installer, by force", "", "@ --force --out site/setup-1.2.0.exe" + runtime,
            "site/setup-1.2.0.exe" + isRead);
    refusal("a package, by force", "cp m.sig p.zip", "@ --force --out ./p.zip p.zip",
            "./p.zip" + isRead);
    refusal("the words of the language, by force", "cp m.sig l.ini",
            "@ --force --out l.ini --library l.ini" + runtime, "l.ini" + isRead);
    refusal("a folder", "", "@ --out site" + runtime, "site: is a folder");
    refusal("a folder that is missing", "", "@ --out none/x.json",
            "none/x.json: No such file or directory");
    refusal("it is told before a package is looked at", "",
            "@ --out site/manifest.json site/none.zip", "site/manifest.json" + exists);
    refusal("a folder of somebody else's", "chmod 755 . site",
            "$user @ --out site/x.json" + runtime, "site/x.json: Permission denied");
}

void UpdateManifestTest::aPlaceThatIsNotWrittenTo() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateManifestTest::wrongWords_data() {
    support::addRefusals();
    const QString none = ": no such component; there are: runtime, launcher, editor, pythonTools";
    refusal("no --out", "", "@" + runtime,
            "--out must name the manifest: packages are addressed from its folder");
    refusal("an empty name behind --out", "", "@ --out ''" + runtime,
            "--out is given an empty value" + seeHelp);
    refusal("an empty name for an installer", "", "@ --out site/x.json --runtime ''",
            "--runtime is given an empty value" + seeHelp);
    refusal("an empty time", "", "@ --out site/x.json --published-at ''" + runtime,
            "--published-at is given an empty value" + seeHelp);
    refusal("a component in capitals", "",
            "@ --out site/x.json --min-version Runtime=1.0.0" + runtime,
            "--min-version Runtime=1.0.0" + none);
    refusal("a component by the name of its option", "",
            "@ --out site/x.json --min-version python-tools=1.0.0",
            "--min-version python-tools=1.0.0" + none);
    refusal("a lowest version alone", "", "@ --out site/x.json --min-version 1.0.0" + runtime,
            "--min-version 1.0.0" + none);
    refusal("nothing behind the equals sign", "",
            "@ --out site/x.json --min-version runtime=" + runtime,
            "--min-version runtime=: no version, as in runtime=1.0.0");
    refusal("the second lowest version, of what is not offered", "",
            "@ --out site/x.json --min-version runtime=1.0.0 --min-version editor=1.0.0" + runtime,
            "--min-version editor=1.0.0: no installer of this component is given");
    refusal("a plug-in of two parts", "", "@ --out site/x.json --plugin camera,1.0.0",
            "camera,1.0.0: a plug-in is given as id,minVersion,path");
    refusal("a plug-in whose path holds a comma", "",
            "@ --out site/x.json --plugin camera,1.0.0,a,b",
            "camera,1.0.0,a,b: a plug-in is given as id,minVersion,path");
    refusal("a library that is missing", "", "@ --out site/x.json --library none.ini" + runtime,
            "none.ini: no such file");
    refusal("a library that is a folder", "", "@ --out site/x.json --library site" + runtime,
            "site: is a folder");
    refusal("a key, which signs later", "", "@ --out site/x.json --key private.pem" + runtime,
            "--key verifies what --previous names");
    refusal("a component that no option has", "", "@ --out site/x.json --plc setup-1.0.0.exe",
            "Unknown option 'plc'" + seeHelp);
}

void UpdateManifestTest::wrongWords() {
    support::expectRefusal(PublisherDesk(command));
}

// What is typed stands in the manifest as it was typed; what it is worth is for update lint to say.
void UpdateManifestTest::whatGoesIn_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QJsonObject>("manifest"); // beside its two first keys
    const auto row = [](const char *name, const QString &arrangement, const QString &options,
                        const QJsonObject &manifest) {
        QTest::newRow(name) << arrangement << options << manifest;
    };
    const QString url = "setup-1.2.0.exe";
    row("nothing at all", "", "", {});
    row("of two installers of a kind the last", "cp site/setup-1.2.0.exe site/setup-1.3.0.exe",
        runtime + " --runtime site/setup-1.3.0.exe",
        {{"runtime", installer("1.3.0", "setup-1.3.0.exe")}});
    row("one file as two components", "", runtime + " --editor site/setup-1.2.0.exe",
        {{"runtime", installer("1.2.0", url)}, {"editor", installer("1.2.0", url)}});
    row("a lowest version above the version", "", runtime + " --min-version runtime=9.9.9",
        {{"runtime", installer("1.2.0", url, "9.9.9")}});
    row("a lowest version that is none", "", runtime + " --min-version runtime=new",
        {{"runtime", installer("1.2.0", url, "new")}});
    row("of two lowest versions the last", "",
        runtime + " --min-version runtime=1.0.0 --min-version runtime=1.1.0",
        {{"runtime", installer("1.2.0", url, "1.1.0")}});
    row("a base without a slash gets one", "", runtime + " --base https://cdn.example/a",
        {{"runtime", installer("1.2.0", "https://cdn.example/a/" + url)}});
    row("a base that is no address", "", runtime + " --base 'not an address'",
        {{"runtime", installer("1.2.0", "not an address/" + url)}});
    row("a plug-in of three empty parts", "", " --plugin ,,",
        {{"plugins", QJsonArray{QJsonObject{{"id", ""}, {"minVersion", ""}, {"path", ""}}}}});
    row("blanks in a plug-in belong to it", "", " --plugin 'a, 1.0.0, p'",
        {{"plugins",
          QJsonArray{QJsonObject{{"id", "a"}, {"minVersion", " 1.0.0"}, {"path", " p"}}}}});
}

void UpdateManifestTest::whatGoesIn() {
    QFETCH(QString, arrangement);
    QFETCH(QString, options);
    QFETCH(QJsonObject, manifest);
    const PublisherDesk desk(command);
    desk.arrange(arrangement);
    const Answer answer = desk.type("@ --out site/x.json" + published + options);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.out, QString("site/x.json: written\n"));
    QCOMPARE(answer.status, 0);
    manifest["schemaVersion"] = 1;
    manifest["publishedAt"] = "2026-11-20T06:00:00Z";
    QCOMPARE(QJsonDocument::fromJson(desk.read("site/x.json")).object(), manifest);
}

// The address is that of the installer seen from the manifest, wherever the publisher sits.
void UpdateManifestTest::whereItIsWritten_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("url");
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &file, const QString &url) {
        QTest::newRow(name) << arrangement << line << file << url;
    };
    row("from the folder itself", "", "cd site && @ --out x.json --runtime ./setup-1.2.0.exe",
        "site/x.json", "setup-1.2.0.exe");
    row("from a folder beside it", "",
        "cd stick && @ --out ../site/x.json --runtime ../site/setup-1.2.0.exe", "site/x.json",
        "setup-1.2.0.exe");
    row("by its whole path", "", "@ --out x.json --runtime \"$PWD/site/setup-1.2.0.exe\"", "x.json",
        "site/setup-1.2.0.exe");
    row("through a link to its folder", "ln -s site latest",
        "@ --out latest/x.json --runtime site/setup-1.2.0.exe", "site/x.json", "setup-1.2.0.exe");
    row("in a folder with a blank and Chinese",
        "mkdir '发 布'; cp site/setup-1.2.0.exe '发 布/安 装-1.2.0.exe'",
        "@ --out '发 布/清单.json' --runtime '发 布/安 装-1.2.0.exe'", "发 布/清单.json",
        "安 装-1.2.0.exe");
    row("with a name that begins with a dash", "cp site/setup-1.2.0.exe ./-s-1.2.0.exe",
        "@ --out x.json --runtime -s-1.2.0.exe", "x.json", "-s-1.2.0.exe");
    row("over an older one, by force", "",
        "@ --out site/manifest.json --force --runtime site/setup-1.2.0.exe", "site/manifest.json",
        "setup-1.2.0.exe");
}

void UpdateManifestTest::whereItIsWritten() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, file);
    QFETCH(QString, url);
    const PublisherDesk desk(command);
    desk.arrange(arrangement);
    const support::FileTree before = desk.tree();
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, QString());
    QVERIFY2(answer.out.endsWith(": written\n"), qPrintable(answer.out));
    QCOMPARE(answer.status, 0);
    const QJsonObject made = QJsonDocument::fromJson(desk.read(file)).object();
    QCOMPARE(made["runtime"].toObject(), installer("1.2.0", url));
    const QString sign = before.contains(file) ? "~" : "+";
    QCOMPARE(support::changes(before, desk.tree()), QStringList(sign + file));
}

void UpdateManifestTest::aPackageGivenTwiceGoesInTwice() {
    const PublisherDesk desk(command);
    layPackages(desk);
    QCOMPARE(desk.type("@ --out site/x.json site/a.zip site/a.zip").status, 0);
    const QJsonObject made = QJsonDocument::fromJson(desk.read("site/x.json")).object();
    const QJsonArray projects = made["projects"].toArray();
    QCOMPARE(projects.size(), 2);
    QCOMPARE(projects.at(0), projects.at(1));
    QCOMPARE(projects.at(0).toObject()["zipUrl"].toString(), QString("a.zip"));
}

void UpdateManifestTest::aPreviousOneThatIsNotTaken_data() {
    support::addRefusals();
    const QString make = "@ --out site/x.json --previous ";
    refusal("a file that is missing", "", make + "none.json", "none.json: no such file");
    refusal("one that is no manifest", "printf 'xx' >m.sig", make + "m.sig",
            "m.sig: is no JSON: line 1, column 1: illegal value");
    refusal("one that is not signed", "", make + "m.json --key update.pub",
            "m.json: signature is empty");
    refusal("one of another publisher", "", make + "signed.json --key other.pub",
            "signed.json: " + support::verificationFailed("other.pub", support::signedSum()));
    refusal("a key that is none", "", make + "signed.json --key private.pem",
            "private.pem: holds no RSA public key in PEM form");
    refusal("it is not written over, by force", "",
            "@ --force --out signed.json --previous signed.json",
            "signed.json: is read by this command and not overwritten");
    refusal("a lowest version for what is carried over", "",
            make + "signed.json --min-version runtime=1.0.0",
            "--min-version runtime=1.0.0: no installer of this component is given");
}

void UpdateManifestTest::aPreviousOneThatIsNotTaken() {
    support::expectRefusal(PublisherDesk(command));
}

void UpdateManifestTest::whatIsCarriedOver_data() {
    QTest::addColumn<QByteArray>("previous");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QByteArray>("manifest"); // beside the time
    const auto row = [](const char *name, const char *previous, const QString &options,
                        const QByteArray &manifest) {
        QTest::newRow(name) << QByteArray(previous) << options << manifest;
    };
    row("all of it, and no package has to be there",
        R"({"schemaVersion": 1, "signature": "ab", "runtime": {"minVersion": "1.0.0",
            "setupUrl": "r-1.3.0.exe", "setupSha256": "ab", "version": "1.3.0"},
            "plugins": [{"id": "a", "minVersion": "1", "path": "p"}],
            "projects": [{"name": "a", "version": "1.0.0", "zipUrl": "a", "zipSha256": "ab"}]})",
        "",
        R"({"schemaVersion": 1, "runtime": {"minVersion": "1.0.0",
            "setupUrl": "r-1.3.0.exe", "setupSha256": "ab", "version": "1.3.0"},
            "plugins": [{"id": "a", "minVersion": "1", "path": "p"}],
            "projects": [{"name": "a", "version": "1.0.0", "zipUrl": "a", "zipSha256": "ab"}]})");
    row("of a component that is given anew the lowest version alone",
        R"({"runtime": {"minVersion": " 1.0.0 ", "setupUrl": "r-1.1.0.exe"}})", runtime,
        runtimeFrom("1.0.0"));
    row("another lowest version takes its place",
        R"({"runtime": {"minVersion": "1.0.0", "setupUrl": "r-1.1.0.exe"}})",
        runtime + " --min-version runtime=0.0.0", runtimeFrom("0.0.0"));
    row("the lowest version of another component is no concern of it",
        R"({"editor": {"minVersion": "1.0.0"}})", runtime,
        R"({"schemaVersion": 1, "editor": {"minVersion": "1.0.0"}, "runtime": )" +
            QJsonDocument(installer("1.2.0", "setup-1.2.0.exe")).toJson() + "}");
    row("a project that is given anew takes the other's place, in whatever letters",
        R"({"projects": [{"name": "A", "version": "0.9.0"}, {"name": "b", "zipUrl": "b"}, 7]})",
        " site/a.zip",
        R"({"schemaVersion": 1, "projects": [{"name": "a", "version": "1.0.0",
            "zipUrl": "a.zip", "zipSha256": "@sum"}, {"name": "b", "zipUrl": "b"}, 7]})");
    row("a plug-in that is given anew takes the other's place",
        R"({"plugins": [{"id": "a", "minVersion": "1", "path": "p"}, {"id": "b"}]})",
        " --plugin b,2,q --plugin c,3,r",
        R"({"schemaVersion": 1, "plugins": [{"id": "a", "minVersion": "1", "path": "p"},
            {"id": "b", "minVersion": "2", "path": "q"},
            {"id": "c", "minVersion": "3", "path": "r"}]})");
    row("of a component's version what is signed of it",
        R"({"editor": {"setupUrl": "e-1.3.0.exe", "version": "9.9.9"}})", "",
        R"({"schemaVersion": 1, "editor": {"setupUrl": "e-1.3.0.exe", "version": "1.3.0"}})");
    row("what this program does not know stays", R"({"schemaVersion": 2, "note": "ours"})", "",
        R"({"schemaVersion": 2, "note": "ours"})");
}

void UpdateManifestTest::whatIsCarriedOver() {
    QFETCH(QByteArray, previous);
    QFETCH(QString, options);
    QFETCH(QByteArray, manifest);
    const PublisherDesk desk(command);
    layPackages(desk);
    support::writeTree(desk.path("site"), {{"old.json", previous}});
    const Answer answer =
        desk.type("@ --out site/x.json --previous site/old.json" + published + options);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);
    QJsonObject made = QJsonDocument::fromJson(desk.read("site/x.json")).object();
    QCOMPARE(made.take("publishedAt").toString(), QString("2026-11-20T06:00:00Z"));
    manifest.replace(
        "@sum",
        QCryptographicHash::hash(desk.read("site/a.zip"), QCryptographicHash::Sha256).toHex());
    QCOMPARE(made, QJsonDocument::fromJson(manifest).object());
}

void UpdateManifestTest::aLowestVersionThatGoesOnIsTold() {
    const PublisherDesk desk(command);
    support::writeTree(desk.path("site"), {{"old.json", R"({"runtime": {"minVersion": "1.0.0"},
        "editor": {"minVersion": "1.1.0"}})"}});
    const QString make = "@ --force --out site/x.json --previous site/old.json" + runtime;
    const Answer goesOn = desk.type(make);
    QCOMPARE(goesOn.out,
             QString("site/x.json: written\n  carried over: --min-version runtime=1.0.0\n"));
    QCOMPARE(goesOn.err, QString());
    QCOMPARE(desk.type(make + " --min-version runtime=1.0.0").out,
             QString("site/x.json: written\n"));
}

void UpdateManifestTest::withAPreviousOneTheTimeIsBehindIt() {
    const PublisherDesk desk(command);
    support::writeTree(desk.path(), {{"old.json", R"({"publishedAt": "2126-01-01T06:00:00Z"})"}});
    QCOMPARE(desk.type("@ --out site/x.json --previous old.json").status, 0);
    QCOMPARE(QJsonDocument::fromJson(desk.read("site/x.json")).object()["publishedAt"].toString(),
             QString("2126-01-01T06:00:01Z"));
}

void UpdateManifestTest::withoutATimeItIsNow() {
    const PublisherDesk desk(command);
    const QDateTime before = QDateTime::currentDateTimeUtc();
    QCOMPARE(desk.type("@ --out site/x.json").status, 0);
    const QJsonObject made = QJsonDocument::fromJson(desk.read("site/x.json")).object();
    const QDateTime at = QDateTime::fromString(made["publishedAt"].toString(), Qt::ISODate);
    QVERIFY2(at.isValid(), qPrintable(made["publishedAt"].toString()));
    QVERIFY(at.toSecsSinceEpoch() >= before.toSecsSinceEpoch());
    QVERIFY(at <= QDateTime::currentDateTimeUtc());
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateManifestTest)
#include "update_manifest_mistakes_test.moc"
