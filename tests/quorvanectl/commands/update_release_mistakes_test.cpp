// update release in the hands of a publisher: what comes into the site, what stays as it was, and what is
// refused before anything changes.
#include "release_desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QLockFile>

using support::Answer;
using support::FileTree;
using support::outcome;
using support::refusal;
using support::release;
using support::ReleaseDesk;
using support::signedLine;
using support::zip12;

namespace {

const QString seeHelp = "; see quorvanectl update release --help";

} // namespace

class UpdateReleaseTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refusedBeforeAnythingChanges_data();
    void refusedBeforeAnythingChanges();
    void findingsLeaveTheSiteAsItWas_data();
    void findingsLeaveTheSiteAsItWas();
    void theFirstOneMakesTheSite();
    void whatIsOnOfferIsCarriedOver();
    void withoutWhatNoSignatureCoversItGoesOn();
    void anotherProjectComesBesideTheFirst();
    void aTrialOnlyReads();
    void aPackageOfOneThatWasBrokenOffIsTakenAgain();
    void aSecondOneAtOnceIsRefused();
    void whatOneThatWasKilledLeftIsClearedAway();
    void aClockThatIsBehindPublishesLater();
};

void UpdateReleaseTest::refusedBeforeAnythingChanges_data() {
    support::addRefusals();
    refusal("no version", "", "@ site line3 --key private.pem",
            "--version : must be three or four numbers such as 1.2.0");
    refusal("a version of two numbers", "", release + "1.2",
            "--version 1.2: must be three or four numbers such as 1.2.0");
    refusal("no key", "", "@ site line3 --version 1.2.0", "no key given; --key names the file");
    refusal("the public key", "", "@ site line3 --version 1.2.0 --key update.pub",
            "update.pub: it holds no private key in PEM form");
    refusal("no site", "", "@ line3 --version 1.2.0 --key private.pem",
            "update release takes SITE PROJECT_DIR" + seeHelp);
    refusal("a project that is not there", "", "@ site none --version 1.2.0 --key private.pem",
            "none: is no folder");
    refusal("a site in a folder that is not there", "",
            "@ none/site line3 --version 1.2.0 --key private.pem", "none/site: cannot be made");
    refusal("a site that is a file", ": >site", release + "1.2.0", "site: is no folder");
    refusal("a site in the project", "", "@ line3/site line3 --version 1.2.0 --key private.pem",
            "line3/site: lies in the project's folder");
    refusal("a manifest that is none", "mkdir site; echo '{' >site/manifest.json",
            release + "1.2.0",
            "site/manifest.json: is no JSON: line 2, column 1: unterminated object");
    refusal("a manifest that is a link", "mkdir site; ln -s /etc/hostname site/manifest.json",
            release + "1.2.0",
            "site/manifest.json: is a link; what it leads to is not written over");
    refusal("the version that is on offer",
            "quorvanectl update release site line3 --version 1.2.0 --key private.pem",
            release + "1.2.0",
            "--version 1.2.0: is not above 1.2.0, which site/manifest.json offers");
    refusal("a lower version",
            "quorvanectl update release site line3 --version 1.10.0 --key private.pem",
            release + "1.9.0",
            "--version 1.9.0: is not above 1.10.0, which site/manifest.json offers");
    refusal("a package of that name with other bytes",
            "mkdir -p site/packages; echo other >" + zip12, release + "1.2.0",
            zip12 + ": lies there with other bytes; a package that has its name never changes: "
                    "take another version");
    refusal("a link in the package's place", "mkdir -p site/packages; ln -s nowhere " + zip12,
            release + "1.2.0",
            zip12 + ": lies there with other bytes; a package that has its name never changes: "
                    "take another version");
    refusal("a file in the place of the packages", "mkdir site; : >site/packages",
            release + "1.2.0", "site/packages: cannot be made");
    refusal("a site where nothing may be written", "mkdir site; chmod 755 . site; chmod 644 *.pem",
            "$user " + QString(release).replace("@", "@") +
                "1.2.0 2>&1 >&2 | tail -n 1 >&2; exit 2",
            "site: cannot write there");
    refusal("by force", "", release + "1.2.0 --force", "Unknown option 'force'" + seeHelp);
}

void UpdateReleaseTest::refusedBeforeAnythingChanges() {
    support::expectRefusal(ReleaseDesk());
}

void UpdateReleaseTest::findingsLeaveTheSiteAsItWas_data() {
    support::addOutcomes();
    outcome("a manifest of another key",
            "mkdir site; openssl genrsa -out k.pem 2048 2>errors; chmod 600 k.pem; "
            "echo '{}' >plain.json; "
            "quorvanectl update sign plain.json --key k.pem --out site/manifest.json",
            release + "1.2.0",
            {1, "site/manifest.json: is not signed with this key; nothing is carried over\n"});
    outcome("a manifest without a signature", "mkdir site; echo '{}' >site/manifest.json",
            release + "1.2.0",
            {1, "site/manifest.json: is not signed with this key; nothing is carried over\n"});
    outcome("a manifest with keys that no signature covers, wherever they stand",
            "mkdir site; echo '{\"note\": \"ours\", \"runtime\": {\"channel\": 1}, \"plugins\": "
            "[{\"path\": \"p\", \"p\": 1}], \"projects\": [{\"size\": 5}]}' >p.json; "
            "quorvanectl update sign p.json --key private.pem --out site/manifest.json",
            release + "1.2.0",
            {1, "site/manifest.json: holds what no signature covers and nobody reads: note, "
                "runtime.channel, plugins[0].p, projects[0].size; take it out there, which leaves "
                "the signature valid, and release again\n"});
    outcome("a project that a line PC would refuse", "rm line3/scripts/main.ys", release + "1.2.0",
            {1, "[Error] scripts[0].path: 引用的文件不存在：scripts/main.ys\n"});
    outcome("an installer on offer that is not there any more",
            "mkdir site; echo x >site/setup-1.3.0.exe; "
            "quorvanectl update manifest --runtime site/setup-1.3.0.exe --out site/p.json; "
            "quorvanectl update sign site/p.json --key private.pem --out site/manifest.json; "
            "rm site/p.json site/setup-1.3.0.exe",
            release + "1.2.0",
            {1, "site/manifest.json: runtime.setupUrl: there is no file @here/site/setup-1.3.0.exe "
                "[missing-package]\n"});
}

void UpdateReleaseTest::findingsLeaveTheSiteAsItWas() {
    support::expectOutcome(ReleaseDesk());
}

void UpdateReleaseTest::theFirstOneMakesTheSite() {
    const ReleaseDesk desk;
    const FileTree before = desk.tree();
    const Answer answer = desk.type(release + "1.2.0");
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.out, zip12 + ": 4 files, SHA-256 " + desk.sumOf(zip12) + '\n' + signedLine());
    QCOMPARE(answer.status, 0);
    QCOMPARE(support::changes(before, desk.tree()),
             QStringList({"+site/", "+site/manifest.json", "+site/packages/", '+' + zip12}));
    QCOMPARE(desk.manifest()["schemaVersion"].toInt(), 1);
    QCOMPARE(desk.manifest()["projects"].toArray(),
             QJsonArray{(QJsonObject{{"name", "产线三"},
                                     {"version", "1.2.0"},
                                     {"zipUrl", "packages/产线三-1.2.0.zip"},
                                     {"zipSha256", desk.sumOf(zip12)}})});
    QCOMPARE(desk.type("quorvanectl update verify site/manifest.json --key update.pub").status, 0);
    // A web server of another account must read it.
    QCOMPARE(desk.type("stat -c %a site/manifest.json '" + zip12 + "'").out, QString("644\n644\n"));
}

void UpdateReleaseTest::whatIsOnOfferIsCarriedOver() {
    const ReleaseDesk desk(true);
    const QJsonObject before = desk.manifest();
    const FileTree tree = desk.tree();
    const Answer answer = desk.type(release + "1.2.0");
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.out, zip12 + ": 4 files, SHA-256 " + desk.sumOf(zip12) +
                             "\n  carried over: runtime 1.3.0: packages/setup-1.3.0.exe\n" +
                             signedLine());
    QCOMPARE(support::changes(tree, desk.tree()),
             QStringList({'+' + zip12, "~site/manifest.json"}));
    QCOMPARE(desk.manifest()["runtime"], before["runtime"]);
    QCOMPARE(desk.manifest()["plugins"], before["plugins"]);
    QVERIFY(desk.manifest()["publishedAt"].toString() > before["publishedAt"].toString());
    QCOMPARE(desk.manifest()["projects"].toArray().size(), 1);
}

void UpdateReleaseTest::withoutWhatNoSignatureCoversItGoesOn() {
    const ReleaseDesk desk(true);
    desk.arrange("sed -i '1s/{/{\"note\": \"ours\",/' site/manifest.json");
    QCOMPARE(desk.type(release + "1.2.0").status, 1);
    desk.arrange("sed -i '1s/\"note\": \"ours\",//' site/manifest.json");
    QCOMPARE(desk.type(release + "1.2.0").status, 0);
}

void UpdateReleaseTest::anotherProjectComesBesideTheFirst() {
    const ReleaseDesk desk;
    desk.arrange("cp -r line3 line4 && sed -i s/产线三/line4/ line4/line3.yslib");
    QCOMPARE(desk.type(release + "1.2.0").status, 0);
    const Answer answer = desk.type("@ site line4 --key private.pem --version 1.0.0");
    QCOMPARE(answer.out, "site/packages/line4-1.0.0.zip: 4 files, SHA-256 " +
                             desk.sumOf("site/packages/line4-1.0.0.zip") +
                             "\n  carried over: 产线三 1.2.0: packages/产线三-1.2.0.zip\n" +
                             signedLine());
    QCOMPARE(desk.type(release + "1.3.0").status, 0);
    QStringList offered;
    const QJsonArray projects = desk.manifest()["projects"].toArray();
    for (const QJsonValue &project : projects)
        offered.append(project["name"].toString() + ' ' + project["version"].toString());
    QCOMPARE(offered, QStringList({"产线三 1.3.0", "line4 1.0.0"}));
    QVERIFY(desk.tree().contains(zip12)); // whoever fetches it now gets it
}

void UpdateReleaseTest::aTrialOnlyReads() {
    for (const bool isPublished : {false, true}) {
        const ReleaseDesk desk(isPublished);
        const FileTree before = desk.tree();
        const Answer trial = desk.type(release + "1.2.0 --dry-run");
        QCOMPARE(trial.err, QString());
        QCOMPARE(trial.status, 0);
        QCOMPARE(support::changes(before, desk.tree()), QStringList());
        QCOMPARE(desk.type(release + "1.2.0").status, 0);
        const QString carried =
            "  would be carried over: runtime 1.3.0: packages/setup-1.3.0.exe\n";
        QCOMPARE(trial.out, zip12 + ": 4 files, SHA-256 " + desk.sumOf(zip12) + '\n' +
                                (isPublished ? carried : QString()) + signedLine("would be "));
    }
}

void UpdateReleaseTest::aPackageOfOneThatWasBrokenOffIsTakenAgain() {
    const ReleaseDesk desk;
    desk.arrange("quorvanectl update pack line3 --version 1.2.0 --out site/packages");
    const Answer answer = desk.type(release + "1.2.0");
    QCOMPARE(answer.out, zip12 + ": 4 files, SHA-256 " + desk.sumOf(zip12) +
                             ", lay there already\n" + signedLine());
    QCOMPARE(answer.status, 0);
}

void UpdateReleaseTest::aSecondOneAtOnceIsRefused() {
    const ReleaseDesk desk(true);
    QLockFile first(desk.path("site/.quorvanectl-release.lock"));
    QVERIFY(first.tryLock(0));
    const FileTree before = desk.tree();
    const Answer answer = desk.type(release + "1.2.0");
    QCOMPARE(
        answer.err,
        QString("quorvanectl: site: another release is at work there: process %1 on %2\n")
            .arg(QString::number(QCoreApplication::applicationPid()), QSysInfo::machineHostName()));
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
    QCOMPARE(support::changes(before, desk.tree()), QStringList());
    first.unlock();
    QCOMPARE(desk.type(release + "1.2.0").status, 0);
}

void UpdateReleaseTest::whatOneThatWasKilledLeftIsClearedAway() {
    const ReleaseDesk desk(true);
    desk.arrange("mkdir -p site/.quorvanectl-release/packages && "
                 "echo half >site/.quorvanectl-release/packages/产线三-1.2.0.zip && "
                 ": >site/.quorvanectl-release.lock");
    QCOMPARE(desk.type(release + "1.2.0").status, 0);
    QCOMPARE(desk.type("ls -A site").out, QString("manifest.json\npackages\n"));
}

void UpdateReleaseTest::aClockThatIsBehindPublishesLater() {
    const ReleaseDesk desk;
    desk.arrange("mkdir site; echo '{\"publishedAt\": \"2126-01-01T08:00:00+02:00\"}' >p.json; "
                 "quorvanectl update sign p.json --key private.pem --out site/manifest.json");
    QCOMPARE(desk.type(release + "1.2.0").err, QString());
    QCOMPARE(desk.manifest()["publishedAt"].toString(), QString("2126-01-01T06:00:01Z"));
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateReleaseTest)
#include "update_release_mistakes_test.moc"
