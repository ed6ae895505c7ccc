// The commands of the family `update`, but `explain`, as a program: statuses, interrupts, and JSON.
#include "openssl_program.h"
#include "publisher_folder.h"
#include "small_project.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <csignal>

using support::Answer;
using support::PublisherFolder;

namespace {

QJsonObject json(const PublisherFolder &folder, const QString &line) {
    return QJsonDocument::fromJson(folder.line(line).out.toUtf8()).object();
}

// Runs until `begun` is true, interrupts, and gives the exit status; -1 if a signal ended it.
int interruptedRun(const PublisherFolder &folder, const QStringList &arguments,
                   const std::function<bool()> &begun) {
    QProcess process;
    process.setWorkingDirectory(folder.path(""));
    process.start(QUORVANE_TOOL, arguments);
    if (!process.waitForStarted() || !QTest::qWaitFor(begun, 30000))
        return -2;
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    if (!process.waitForFinished(30000))
        return -3;
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

} // namespace

class UpdateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aKeyThatOthersCanReadIsTold();
    void canonicalIsWhatOpensslSigns();
    void aForeignSignatureIsNotAttached();
    void verifyForPrograms();
    void lintForPrograms();
    void refusedUsage_data();
    void refusedUsage();
    void aKeyThatVerifiesNothing_data();
    void aKeyThatVerifiesNothing();
    void aBrokenProjectIsNotPacked();
    void anInterruptedPackLeavesNothing();
    void anInterruptedStickHoldsNoUpdate();
};

void UpdateTest::aKeyThatOthersCanReadIsTold() {
    const PublisherFolder folder;
    folder.layManifest();
    folder.layKeys();
    QVERIFY(folder.line("chmod 644 keys/private.pem").status == 0);
    const Answer answer =
        folder.line("quorvanectl update sign site/manifest.json --key keys/private.pem");
    QCOMPARE(answer.status, int(ctl::Clean));
    QCOMPARE(answer.err,
             QString("quorvanectl: keys/private.pem: others can read this private key\n"));
    QVERIFY(answer.out.contains("\"signature\""));
}

void UpdateTest::canonicalIsWhatOpensslSigns() {
    const PublisherFolder folder;
    folder.layManifest();
    folder.layKeys();
    const Answer answer = folder.line(
        "quorvanectl update canonical site/manifest.json >canonical && "
        "openssl dgst -sha256 -sign keys/private.pem -out raw canonical && "
        "openssl base64 -in raw -out text && "
        "quorvanectl update attach site/manifest.json raw --key keys/update.pub >1.json && "
        "quorvanectl update attach site/manifest.json text --key keys/update.pub >2.json && "
        "quorvanectl update sign site/manifest.json --key keys/private.pem >3.json && "
        "cmp 1.json 2.json && cmp 2.json 3.json");
    QVERIFY2(answer.status == 0, qPrintable(answer.err));
}

void UpdateTest::aForeignSignatureIsNotAttached() {
    const PublisherFolder folder;
    folder.layManifest();
    folder.layKeys();
    QVERIFY(support::openssl({"rand", "-out", folder.path("signature"), "384"}));
    const QString attach = "quorvanectl update attach site/manifest.json signature --out x.json";
    const Answer refused = folder.line(attach + " --key keys/update.pub");
    QCOMPARE(refused.status, int(ctl::Findings));
    QVERIFY(refused.err.startsWith("quorvanectl: signature: RSA signature verification failed"));
    QVERIFY(!QFileInfo::exists(folder.path("x.json")));
    QCOMPARE(folder.line(attach).status, int(ctl::Clean)); // nobody said what it must be
}

void UpdateTest::verifyForPrograms() {
    const PublisherFolder folder;
    folder.layManifest();
    folder.layKeys();
    QCOMPARE(folder
                 .line("quorvanectl update sign site/manifest.json --key keys/private.pem "
                       "--out signed.json")
                 .status,
             int(ctl::Clean));
    const QString verify = "quorvanectl update verify %1 --key keys/update.pub --format json";
    const QJsonObject good = json(folder, verify.arg("signed.json"));
    QCOMPARE(good.keys(), QStringList({"canonical_sha256", "details", "key_sha256", "message", "ok",
                                       "sig_bytes"}));
    QCOMPARE(good["ok"].toBool(), true);
    QCOMPARE(good["sig_bytes"].toInt(), 384);
    QVERIFY(folder.line("quorvanectl update canonical signed.json | openssl dgst -sha256 -r")
                .out.startsWith(good["canonical_sha256"].toString()));
    QCOMPARE(folder.line(verify.arg("site/manifest.json")).status, int(ctl::Findings));
    QCOMPARE(json(folder, verify.arg("site/manifest.json"))["message"].toString(),
             QString("signature is empty"));
}

void UpdateTest::lintForPrograms() {
    const PublisherFolder folder;
    folder.lay(
        {{"manifest.json", "{\"runtime\": {\"setupUrl\": \"https://x.example/s-1.2.0.exe\"}}"}});
    QCOMPARE(folder.line("quorvanectl update lint manifest.json").status, int(ctl::Findings));
    const QJsonObject lint = json(folder, "quorvanectl update lint manifest.json --format json");
    QCOMPARE(lint["manifest"].toString(), QString("manifest.json"));
    const QJsonObject finding = lint["findings"].toArray().first().toObject();
    QCOMPARE(finding["kind"].toString(), QString("missing-hash"));
    QCOMPARE(finding["where"].toString(), QString("runtime.setupSha256"));
    QCOMPARE(finding["message"].toString(),
             QString("is missing: the installer is started unchecked"));
}

void UpdateTest::refusedUsage_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("error");
    QTest::newRow("a version of two numbers")
        << "update pack line3 --version 1.2 --out out"
        << "--version 1.2: must be three or four numbers such as 1.2.0";
    QTest::newRow("no version") << "update pack line3 --out out"
                                << "--version : must be three or four numbers such as 1.2.0";
    QTest::newRow("no folder to write to") << "update pack line3 --version 1.2.0"
                                           << "--out must name the folder to write to";
    QTest::newRow("no name for the manifest")
        << "update manifest x.zip"
        << "--out must name the manifest: packages are addressed from its folder";
    QTest::newRow("a component that is none")
        << "update manifest --out m.json --min-version plc=1.0.0"
        << "--min-version plc=1.0.0: no such component; there are: runtime, launcher, editor, "
           "pythonTools";
    QTest::newRow("a lowest version of what is not offered")
        << "update manifest --out m.json --min-version editor=1.0.0"
        << "--min-version editor=1.0.0: no installer of this component is given";
    QTest::newRow("a component without its lowest version")
        << "update manifest --out m.json --min-version runtime"
        << "--min-version runtime: no version, as in runtime=1.0.0";
    QTest::newRow("no key to verify with") << "update verify m.json"
                                           << "no key given; --key names the file";
    QTest::newRow("no key to sign with") << "update sign m.json"
                                         << "no key given; --key names the file";
}

void UpdateTest::refusedUsage() {
    const PublisherFolder folder;
    QFETCH(QString, command);
    QFETCH(QString, error);
    folder.lay({{"m.json", "{}"}});
    const Answer answer = folder.line("quorvanectl " + command);
    QCOMPARE(answer.err, "quorvanectl: " + error + "\n");
    QCOMPARE(answer.status, int(ctl::Refused));
}

void UpdateTest::aKeyThatVerifiesNothing_data() {
    QTest::addColumn<QString>("key");
    QTest::newRow("a private one") << "keys/private.pem";
    QTest::newRow("one of another kind") << "curve.pub";
    QTest::newRow("none at all") << "m.json";
}

void UpdateTest::aKeyThatVerifiesNothing() {
    const PublisherFolder folder;
    QFETCH(QString, key);
    folder.layKeys();
    folder.lay({{"m.json", "{}"}});
    QVERIFY(
        support::openssl({"genpkey", "-algorithm", "ed25519", "-out", folder.path("curve.pem")}));
    QVERIFY(support::openssl(
        {"pkey", "-in", folder.path("curve.pem"), "-pubout", "-out", folder.path("curve.pub")}));
    const Answer answer = folder.line("quorvanectl update verify m.json --key " + key);
    QCOMPARE(answer.err, "quorvanectl: " + key + ": holds no RSA public key in PEM form\n");
    QCOMPARE(answer.status, int(ctl::Refused));
}

void UpdateTest::aBrokenProjectIsNotPacked() {
    const PublisherFolder folder;
    support::FileTree project = support::smallProject();
    project.remove("scripts/main.ys");
    support::writeTree(folder.path("line3"), project);
    const Answer answer = folder.line("quorvanectl update pack line3 --version 1.2.0 --out out");
    QCOMPARE(answer.status, int(ctl::Findings));
    QCOMPARE(answer.out, QString("[Error] scripts[0].path: 引用的文件不存在：scripts/main.ys\n"));
}

void UpdateTest::anInterruptedPackLeavesNothing() {
    const PublisherFolder folder;
    support::writeTree(folder.path("line3"), support::smallProject());
    QFile large(folder.path("line3/model.bin"));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(qint64(1) << 31));
    const auto begun = [&folder] {
        return !QDir(folder.path("out"))
                    .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                    .isEmpty();
    };
    QCOMPARE(interruptedRun(
                 folder, {"update", "pack", "line3", "--version", "1.2.0", "--out", "out"}, begun),
             int(ctl::Refused));
    QVERIFY(support::readTree(folder.path("out")).isEmpty());
}

void UpdateTest::anInterruptedStickHoldsNoUpdate() {
    const PublisherFolder folder;
    folder.lay({{"site/manifest.json",
                 "{\"runtime\": {\"setupUrl\": \"setup-1.2.0.exe\"}, \"signature\": \"c2lnbmVk\"}"},
                {"stick/", ""}});
    QFile large(folder.path("site/setup-1.2.0.exe"));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(qint64(1) << 31));
    const auto begun = [&folder] {
        return QFileInfo::exists(folder.path("stick/QuorvanerUpdate"));
    };
    QCOMPARE(interruptedRun(folder, {"update", "stick", "site", "stick"}, begun),
             int(ctl::Refused));
    QCOMPARE(support::readTree(folder.path("stick")).keys(), QStringList{"QuorvanerUpdate/"});
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateTest)
#include "update_test.moc"
