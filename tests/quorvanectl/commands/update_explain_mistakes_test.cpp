// update explain in the hands of a support engineer: another installation, another address, and keys
// that do not fit. That it says what the launcher says is proved in explain_test.cpp.
#include "publisher_desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;
using support::PublisherDesk;
using support::refusal;

namespace {

const QString command = "quorvanectl update explain";
const QString seeHelp = "; see quorvanectl update explain --help";

// A line PC that trusts this publisher.
class SupportDesk : public PublisherDesk {
public:
    SupportDesk()
        : PublisherDesk(command) {
        support::writeTree(path("pc/bin"), {{"config/update.pub", support::publisher::publicPem()},
                                            {"config/FunctionLib.ini", ""},
                                            {"config/release_version.json",
                                             R"({"runtimePackageVersion": "1.0.0"})"}});
    }
};

} // namespace

class UpdateExplainTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatCannotBeUsed_data();
    void whatCannotBeUsed();
    void wrongWords_data();
    void wrongWords();
    void aManifestThatTheLauncherRefuses_data();
    void aManifestThatTheLauncherRefuses();
    void whatTheRuntimeIsToldOfIt_data();
    void whatTheRuntimeIsToldOfIt();
    void theWholeText();
};

void UpdateExplainTest::whatCannotBeUsed_data() {
    support::addRefusals();
    const QString pc = " --install pc";
    refusal("a manifest that is missing", "", "@ none.json" + pc, "none.json: no such file");
    refusal("the folder of a manifest", "", "@ site" + pc, "site: is a folder");
    refusal("a pipe is not waited for", "rm m.json; mkfifo m.json", "@ m.json" + pc,
            "m.json: is no plain file");
    refusal("an empty file", ": >m.json", "@ m.json" + pc,
            "m.json: is no JSON: line 1, column 1: illegal value");
    refusal("UTF-16", "iconv -t UTF-16 m.json >u.json", "@ u.json" + pc,
            "u.json: is no JSON: line 1, column 1: illegal value");
    refusal("an array", "echo '[]' >m.json", "@ m.json" + pc, "m.json: is no JSON object");
    refusal("somebody else's", "chmod 755 . pc; chmod 000 m.json", "$user @ m.json" + pc,
            "m.json: Permission denied");

    const QString none = ": no installation is there: it has no folder bin/config or config";
    refusal("an installation that is missing", "", "@ signed.json --install none", "none" + none);
    refusal("a file for the installation", "", "@ signed.json --install m.json", "m.json" + none);
    refusal("the folder of its settings", "", "@ signed.json --install pc/bin/config",
            "pc/bin/config" + none);
    refusal("of two installations the last, which is missing", "",
            "@ signed.json --install none" + pc + " --install gone", "gone" + none);

    refusal("the project's folder", "", "@ signed.json --project site" + pc, "site: is a folder");
    refusal("a project that is missing", "", "@ signed.json --project none.yslib" + pc,
            "none.yslib: no such file");
    refusal("a project that is a pipe", "mkfifo p.yslib", "@ signed.json --project p.yslib" + pc,
            "p.yslib: is no plain file");
    refusal("a project that is an array", "echo '[]' >p.yslib",
            "@ signed.json --project p.yslib" + pc, "p.yslib: is no JSON object");
    refusal("a project with a fault", "echo '{\"a\" 1}' >p.yslib",
            "@ signed.json --project p.yslib" + pc,
            "p.yslib: is no JSON: line 1, column 6: missing name separator");
    refusal("of two faults the manifest's is told", "", "@ none.json --project none.yslib",
            "none.json: no such file");
}

void UpdateExplainTest::whatCannotBeUsed() {
    support::expectRefusal(SupportDesk());
}

void UpdateExplainTest::wrongWords_data() {
    support::addRefusals();
    const QString line = "@ signed.json --install pc ";
    refusal("an address without its scheme", "", line + "--url updates.example/manifest.json",
            "updates.example/manifest.json: not an address that begins with http:// or https://");
    refusal("an address with a blank in its host", "", line + "--url 'http://a b/manifest.json'",
            "http://a b/manifest.json: not an address that begins with http:// or https://");
    refusal("a path of Windows, whose drive is no scheme", "",
            line + R"(--url 'C:\site\manifest.json')",
            R"(C:\site\manifest.json: not an address that begins with http:// or https://)");
    refusal("the same with slashes", "", line + "--url C:/site/manifest.json",
            "C:/site/manifest.json: not an address that begins with http:// or https://");
    refusal("a file as a browser shows it", "", line + "--url file:///site/manifest.json",
            "file:///site/manifest.json: not an address that begins with http:// or https://");
    refusal("an address without a server", "", line + "--url https:///manifest.json",
            "https:///manifest.json: not an address that begins with http:// or https://");
    refusal("a protocol that no launcher speaks", "", line + "--url ftp://x.example/m.json",
            "ftp://x.example/m.json: not an address that begins with http:// or https://");
    refusal("of two addresses the last, which is none", "",
            line + "--url https://x.example/m.json --url m.json",
            "m.json: not an address that begins with http:// or https://");
    refusal("a language as a system names it", "", line + "--locale en_US",
            "en_US: the launcher speaks en and zh_CN");
    refusal("a language in short", "", line + "--locale zh",
            "zh: the launcher speaks en and zh_CN");
    refusal("an empty language", "", line + "--locale ''",
            "--locale is given an empty value" + seeHelp);
    refusal("a format of another command", "", line + "--format sarif",
            "no format 'sarif'; there are: text, json");
    refusal("a key, which lies in the installation", "", line + "--key update.pub",
            "Unknown option 'key'" + seeHelp);
    refusal("two manifests", "", line + "m.json", "update explain takes manifest.json" + seeHelp);
    refusal("no manifest", "", "@ --install pc", "update explain takes manifest.json" + seeHelp);
}

void UpdateExplainTest::wrongWords() {
    support::expectRefusal(SupportDesk());
}

// A finding, with the reason in every place where it is looked for.
void UpdateExplainTest::aManifestThatTheLauncherRefuses_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("manifest");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("key"); // the file that is tried
    const auto row = [](const char *name, const QString &arrangement, const QString &manifest,
                        const QString &reason, const QString &key = "pc/bin/config/update.pub") {
        QTest::newRow(name) << arrangement << manifest << reason << key;
    };
    const QString noKey = "pc/bin/resources/config/update.pub";
    row("not signed yet", "", "m.json", "signature is empty");
    row("a signature that is none",
        R"(sed -i 's/"signature": "[^"]*"/"signature": "???"/' signed.json)", "signed.json",
        "signature base64 is invalid");
    row("the installation trusts another publisher", "cp other.pub pc/bin/config/update.pub",
        "signed.json",
        support::verificationFailed("@here/pc/bin/config/update.pub", support::signedSum()));
    row("the installation trusts nobody", "rm pc/bin/config/update.pub", "signed.json",
        "update public key not found: @here/" + noKey, noKey);
    row("the installation's key is empty", ": >pc/bin/config/update.pub", "signed.json",
        "unable to read update public key: ");
}

void UpdateExplainTest::aManifestThatTheLauncherRefuses() {
    QFETCH(QString, arrangement);
    QFETCH(QString, manifest);
    QFETCH(QString, reason);
    QFETCH(QString, key);
    const SupportDesk desk;
    desk.arrange(arrangement);
    reason.replace("@here", desk.path());
    const support::FileTree before = desk.tree();
    const Answer answer = desk.type("@ " + manifest + " --install pc --locale zh_CN");
    QCOMPARE(answer.err, QString());
    QVERIFY2(
        answer.out.startsWith("Signature\n  " + reason + "\n  key:       " + desk.path(key) + "\n"),
        qPrintable(answer.out));
    QVERIFY(!answer.out.contains("\nItems\n"));
    const QString said =
        "更新被拒绝：" + reason + "（source=" + desk.path(manifest) + "）。将继续使用当前版本。\n";
    QVERIFY2(answer.out.endsWith("\n  " + said + "What the launcher says\n" + said),
             qPrintable(answer.out));
    QCOMPARE(answer.status, 1);
    QCOMPARE(support::changes(before, desk.tree()), QStringList());

    const Answer told = desk.type("@ " + manifest + " --install pc --format json");
    const QJsonObject json = QJsonDocument::fromJson(told.out.toUtf8()).object();
    QCOMPARE(json["verify"].toObject()["message"].toString(), reason);
    QCOMPARE(json["found"].toBool(true), false);
    QCOMPARE(told.status, 1);
}

// Where a manifest lies, or is taken to lie, decides whether its installer is found.
void UpdateExplainTest::whatTheRuntimeIsToldOfIt_data() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("runtime");
    const auto row = [](const char *name, const QString &arrangement, const QString &line,
                        const QString &runtime) {
        QTest::newRow(name) << arrangement << line << runtime;
    };
    const QString offered = "installed 1.0.0, offered: 可从 1.0.0 更新到 1.2.0。";
    row("on its stick", "", "@ site/manifest.json --install pc", offered);
    row("by the installation's program folder", "", "@ site/manifest.json --install pc/bin",
        offered);
    row("from another folder", "", "cd stick && @ ../site/manifest.json --install ../pc", offered);
    row("in folders with a blank and Chinese", "mv pc '产 线'; mv site '优 盘'",
        "@ '优 盘/manifest.json' --install '产 线'", offered);
    row("behind a byte-order mark",
        R"(cd site; (printf '\357\273\277'; cat manifest.json) >b.json)",
        "@ site/b.json --install pc", offered);
    row("copied from its stick alone", "", "@ signed.json --install pc",
        "installed 1.0.0, left out: Runtime 安装包缺失：@here/setup-1.2.0.exe");
    row("copied from its stick alone, as one that was fetched", "",
        "@ signed.json --install pc --url https://x.example/manifest.json", offered);
    row("an installation that has it", R"(sed -i 's/1\.0\.0/1.2.0/' pc/bin/config/*.json)",
        "@ site/manifest.json --install pc",
        "installed 1.2.0, left out: 目标版本 1.2.0 不高于当前版本 1.2.0。");
    row("of two installations the last counts", "",
        "@ site/manifest.json --install none --install pc", offered);
}

void UpdateExplainTest::whatTheRuntimeIsToldOfIt() {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, runtime);
    const SupportDesk desk;
    desk.arrange(arrangement);
    const support::FileTree before = desk.tree();
    const Answer answer = desk.type(line + " --locale zh_CN");
    QCOMPARE(answer.err, QString());
    QString told;
    for (const QString &one : answer.out.split('\n')) {
        if (one.startsWith("  runtime:     "))
            told = one.mid(15);
    }
    QCOMPARE(told, runtime.replace("@here", desk.path()));
    QCOMPARE(answer.status, 0);
    QCOMPARE(support::changes(before, desk.tree()), QStringList());
}

void UpdateExplainTest::theWholeText() {
    const SupportDesk desk;
    const Answer answer = desk.type("@ signed.json --install pc --locale zh_CN");
    const QString fileSum =
        QCryptographicHash::hash(desk.read("signed.json"), QCryptographicHash::Sha256).toHex();
    QString expected = R"(Signature
  signature verified
  key:       @here/pc/bin/config/update.pub
  attempts:  BCryptVerifySignature direct
  canonical: sha256 %1, signature of 384 bytes
Items
  project:     installed unknown, left out: 未找到与当前项目匹配的项目记录（）。
  runtime:     installed 1.0.0, left out: Runtime 安装包缺失：@here/setup-1.2.0.exe
  launcher:    installed unknown, left out: Launcher 未提供 setupUrl。
  editor:      installed unknown, left out: Editor 未提供 setupUrl。
  pythonTools: installed unknown, left out: Python 工具 未提供 setupUrl。
Log of the launcher
  已读取 U 盘 manifest：@here/signed.json（file_sha256=%2）
What the launcher says
未检测到高于当前版本的可用更新。
项目：未找到与当前项目匹配的项目记录（）。
Runtime：Runtime 安装包缺失：@here/setup-1.2.0.exe
Launcher：Launcher 未提供 setupUrl。
Editor：Editor 未提供 setupUrl。
Python 工具：Python 工具 未提供 setupUrl。
)";
    expected = expected.arg(support::signedSum(), fileSum).replace("@here", desk.path());
    QCOMPARE(answer.out, expected);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.status, 0);
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateExplainTest)
#include "update_explain_mistakes_test.moc"
