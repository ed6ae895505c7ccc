// update info: what a manifest or a package holds, and what of it is not what it says.
#include "publisher_desk.h"
#include "support/staged_main.h"
#include "support/zip_maker.h"

#include <QCoreApplication>

using support::Desk;
using support::FileTree;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl update info";

QString sumOf(const QByteArray &bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

FileTree files() {
    FileTree tree = support::publishersFiles();
    const QByteArray project = R"({"project": {"name": "a", "version": "1.0.0"}})";
    tree["p/a.zip"] = support::zipOf({{"a.yslib", project}, {"x/b.txt", "four"}});
    tree["p/r-1.3.0.exe"] = "an installer";
    QByteArray manifest = R"({"publishedAt": "2026-11-20T06:00:00Z",
"runtime": {"minVersion": "1.0.0", "setupUrl": "p/r-1.3.0.exe", "setupSha256": "@runtime"},
"editor": {"setupUrl": "@cdn/e-1.2.0.exe", "setupSha256": "ab"},
"plugins": [{"id": "camera", "minVersion": "1.1.0", "path": "plugins/camera.dll"}],
"projects": [{"name": "a", "version": "1.0.0", "zipUrl": "p/a.zip", "zipSha256": "@project"}]})";
    manifest.replace("@cdn", "https://cdn.example");
    manifest.replace("@runtime", sumOf("an installer").toUtf8().toUpper());
    manifest.replace("@project", sumOf(tree["p/a.zip"]).toUtf8());
    tree["all.json"] = manifest;
    tree["update.der"] = decodePemBody(support::publisher::publicPem());
    return tree;
}

QString size(const QString &file) {
    return QString::number(files().value(file).size());
}

QString keyLine() {
    return "  update.pub: public, SHA-256 " + sumOf(files().value("update.der")) + '\n';
}

} // namespace

class UpdateInfoTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsRefused_data();
    void whatIsRefused();
    void whatIsTold_data();
    void whatIsTold();
};

void UpdateInfoTest::whatIsRefused_data() {
    support::addRefusals();
    refusal("a file that is missing", "", "@ none.json", "none.json: no such file");
    refusal("a folder", "", "@ site", "site: is a folder");
    refusal("neither of both", "printf 'xx' >m.sig", "@ m.sig",
            "m.sig: is no JSON: line 1, column 1: illegal value");
    refusal("an archive that was cut off", "head -c 60 p/a.zip >cut.zip", "@ cut.zip",
            "cut.zip: Not a zip archive");
    refusal("a key for a package", "", "@ p/a.zip --key update.pub",
            "p/a.zip: a package carries no signature; --key goes with the manifest that names it");
    refusal("a private key", "", "@ all.json --key private.pem",
            "private.pem: holds no RSA public key in PEM form");
    refusal("a format that is none", "", "@ all.json --format xml",
            "no format 'xml'; there are: text, json");
    refusal("somebody else's", "chmod 755 .; chmod 000 m.json", "$user @ m.json",
            "m.json: Permission denied");
}

void UpdateInfoTest::whatIsRefused() {
    support::expectRefusal(Desk(command, files()));
}

void UpdateInfoTest::whatIsTold_data() {
    support::addOutcomes();
    const QString head = "all.json: a manifest of " + size("all.json") +
                         " bytes, published at 2026-11-20T06:00:00Z\n";
    const QString runtime = "  runtime 1.3.0, from 1.0.0: p/r-1.3.0.exe, ";
    const QString rest = "  editor 1.2.0: https://cdn.example/e-1.2.0.exe, not here\n"
                         "  a 1.0.0: p/a.zip, " +
                         size("p/a.zip") +
                         " bytes\n  plug-in camera, from 1.1.0: plugins/camera.dll\n";
    outcome("a manifest that is not signed", "", "@ all.json",
            {0, head + runtime + "12 bytes\n" + rest + "  not signed\n"});
    outcome("it is asked for a signature", "", "@ all.json --key update.pub",
            {1, head + runtime + "12 bytes\n" + rest + "  signature is empty\n" + keyLine()});
    outcome("a package is missing", "rm p/*.exe", "@ all.json",
            {0, head + runtime.left(runtime.size() - 1) + " not here\n" + rest + "  not signed\n"});
    outcome("a package has other bytes", "printf 'an InstalleR' >p/r-1.3.0.exe", "@ all.json",
            {1, head + runtime + "12 bytes, but not the file that it names\n" + rest +
                    "  not signed\n"});
    const QString small = "signed.json: a manifest of " + size("signed.json") +
                          " bytes, published at no time\n  runtime 1.2.0: setup-1.2.0.exe, not "
                          "here\n";
    outcome("one that is signed, and nobody asks by whom", "", "@ signed.json",
            {0, small + "  signature: 384 bytes; --key tells whose\n"});
    outcome("one that the key verifies", "", "@ signed.json --key update.pub",
            {0, small + "  signature verified\n" + keyLine()});
    outcome("a package behind its base", "", "@ m.json --base https://x.example",
            {0, "m.json: a manifest of " + size("m.json") +
                    " bytes, published at no time\n  runtime 1.2.0: setup-1.2.0.exe, not here\n"
                    "  not signed\n"});
    outcome("a package", "", "@ p/a.zip",
            {0, "p/a.zip: a package of " + size("p/a.zip") + " bytes, SHA-256 " +
                    sumOf(files().value("p/a.zip")) +
                    "\n  project a 1.0.0, 2 files, 50 bytes unpacked\n  a.yslib, 46 bytes\n"
                    "  x/b.txt, 4 bytes\n"});
    outcome("a package, for programs", "", "@ p/a.zip --format json",
            {0, QString(R"({
    "bytes": %1,
    "file": "p/a.zip",
    "files": [
        {
            "bytes": 46,
            "path": "a.yslib"
        },
        {
            "bytes": 4,
            "path": "x/b.txt"
        }
    ],
    "kind": "package",
    "name": "a",
    "sha256": "%2",
    "version": "1.0.0"
}
)")
                    .arg(size("p/a.zip"), sumOf(files().value("p/a.zip")))});
    outcome("a manifest, for programs", "", "@ m.json --format json",
            {0, QString(R"({
    "bytes": %1,
    "file": "m.json",
    "key_sha256": "",
    "kind": "manifest",
    "message": "",
    "ok": null,
    "packages": [
        {
            "address": "setup-1.2.0.exe",
            "bytes": null,
            "isNamedOne": null,
            "minVersion": "",
            "name": "runtime",
            "sha256": "",
            "version": "1.2.0",
            "where": "runtime"
        }
    ],
    "plugins": [
    ],
    "publishedAt": "",
    "sig_bytes": 0
}
)")
                    .arg(size("m.json"))});
}

void UpdateInfoTest::whatIsTold() {
    support::expectOutcome(Desk(command, files()));
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateInfoTest)
#include "update_info_mistakes_test.moc"
