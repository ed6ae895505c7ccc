// The shape of a manifest: each mistake with its words, and the near miss that is none.
#include "quorvanectl/manifest/manifest_lint_rules.h"

#include "support/manifest_maker.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>

class LintShapeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFullManifestIsInShape();
    void findings_data();
    void findings();
    void inTheOrderOfTheParts();
};

void LintShapeTest::aFullManifestIsInShape() {
    const auto findings = ctl::lintShape(support::fullManifest());
    QCOMPARE(findings.isEmpty() ? QString() : ctl::lintLine(findings.first()), QString());
}

void LintShapeTest::findings_data() {
    QTest::addColumn<QByteArray>("members"); // beside a runtime, where there is none among them
    QTest::addColumn<QString>("line");       // empty: nothing is wrong
    const QString unread = ": nobody reads this key, and no signature covers it [unlisted-key]";
    const QString asEmpty = "; it is read and signed as an empty one [wrong-type]";
    const auto row = [](const char *name, const char *members, const QString &line) {
        QTest::newRow(name) << QByteArray(members) << line;
    };

    row("a key that nobody reads", R"("channel": "beta")", "channel" + unread);
    row("a key in another case", R"("Editor": {"version": "1.2.0"})", "Editor" + unread);
    row("a key with a blank", R"("editor ": {})", "editor " + unread);
    row("an empty key", R"("": 1)", unread.mid(2));
    row("a key that nobody reads in a component", R"("runtime": {"setupURL": "a"})",
        "runtime.setupURL" + unread);
    row("a project's key in a component", R"("runtime": {"zipUrl": "a"})",
        "runtime.zipUrl" + unread);
    row("a component's key in a project", R"("projects": [{"setupUrl": "a"}])",
        "projects[0].setupUrl" + unread);
    row("a key that nobody reads in the second plug-in",
        R"("plugins": [{"path": "a"}, {"path": "b", "url": "c"}])", "plugins[1].url" + unread);

    row("the format's version", R"("schemaVersion": 1)", "");
    row("the format's version as a fraction of nothing", R"("schemaVersion": 1.0)", "");
    row("a later one", R"("schemaVersion": 2)",
        "schemaVersion: the format's version is 1 [schema-version]");
    row("none at all, as a number", R"("schemaVersion": 0)",
        "schemaVersion: the format's version is 1 [schema-version]");
    row("a little above it", R"("schemaVersion": 1.5)",
        "schemaVersion: the format's version is 1 [schema-version]");
    const QString number = "schemaVersion: must be a number; a text or a bool is signed in another "
                           "form [wrong-type]";
    row("the format's version as a text", R"("schemaVersion": "1")", number);
    row("as a bool", R"("schemaVersion": true)", number);
    row("as null", R"("schemaVersion": null)", number);

    row("a time", R"("publishedAt": "2026-11-20T06:00:00Z")", "");
    row("a time with its zone", R"("publishedAt": "2026-11-20T14:00:00+08:00")", "");
    row("a day alone", R"("publishedAt": "2026-11-20")", "");
    const auto noTime = [](const QString &time) {
        return "publishedAt: '" + time + "' is no time such as 2026-11-20T06:00:00Z [bad-time]";
    };
    row("a day that no month has", R"("publishedAt": "2026-02-30T06:00:00Z")",
        noTime("2026-02-30T06:00:00Z"));
    row("an hour that no day has", R"("publishedAt": "2026-11-20T25:00:00Z")",
        noTime("2026-11-20T25:00:00Z"));
    row("day and month the other way round", R"("publishedAt": "20.11.2026")",
        noTime("20.11.2026"));
    row("an empty time", R"("publishedAt": "")", noTime(""));
    row("seconds since 1970", R"("publishedAt": 1795154400)",
        "publishedAt: must be a text" + asEmpty);

    row("a signature", R"("signature": "c2lnbmVk")", "");
    row("an empty signature", R"("signature": "")", "");
    row("a signature that is an object", R"("signature": {"rsa": "x"})",
        "signature: must be a text" + asEmpty);

    row("a component that is a version", R"("editor": "1.2.0")",
        "editor: must be an object" + asEmpty);
    row("a component that is null", R"("editor": null)", "editor: must be an object" + asEmpty);
    row("a component without anything", R"("editor": {})", "");
    row("a version that is a number", R"("editor": {"version": 1.2})",
        "editor.version: must be a text" + asEmpty);
    row("a hash that is null", R"("editor": {"setupSha256": null})",
        "editor.setupSha256: must be a text" + asEmpty);
    row("plug-ins that are an object", R"("plugins": {"id": "camera"})",
        "plugins: must be an array" + asEmpty);
    row("no plug-ins", R"("plugins": [])", "");
    row("projects that are a text", R"("projects": "demo")",
        "projects: must be an array" + asEmpty);
    row("a project that is a text", R"("projects": [{}, "demo"])",
        "projects[1]: must be an object" + asEmpty);
    row("a project's name that is a list", R"("projects": [{"name": ["a"]}])",
        "projects[0].name: must be a text" + asEmpty);

    const QString skipped = "plugins[0]: a plug-in without `path` is skipped without a word "
                            "[no-path]";
    row("a plug-in with its path", R"("plugins": [{"path": "a.dll"}])", "");
    row("a plug-in without one", R"("plugins": [{"id": "camera"}])", skipped);
    row("a plug-in whose path is blank", R"("plugins": [{"path": " \t"}])", skipped);
    row("a plug-in's lowest version", R"("plugins": [{"path": "a", "minVersion": "v1.1.0"}])", "");
    row("a plug-in's lowest version that is empty",
        R"("plugins": [{"path": "a", "minVersion": ""}])", "");
    row("a plug-in's lowest version of two numbers",
        R"("plugins": [{"path": "a", "minVersion": "1.1"}])",
        "plugins[0].minVersion: '1.1' is not three or four numbers; the rest counts for nothing "
        "[bad-version]");
    row("a plug-in's lowest version that no reader holds",
        R"("plugins": [{"path": "a", "minVersion": "1.1.2147483648"}])",
        "plugins[0].minVersion: '1.1.2147483648' holds a number above 2147483647, which counts as "
        "0 [bad-version]");
}

void LintShapeTest::findings() {
    QFETCH(QByteArray, members);
    const QByteArray runtime = members.contains("\"runtime\"") ? "" : R"("runtime": {}, )";
    const QJsonDocument manifest = QJsonDocument::fromJson("{" + runtime + members + "}");
    QVERIFY(manifest.isObject());
    QStringList lines;
    for (const ctl::LintFinding &finding : ctl::lintShape(manifest.object()))
        lines.append(ctl::lintLine(finding));
    QTEST(lines.join('\n'), "line");
}

void LintShapeTest::inTheOrderOfTheParts() {
    const QJsonDocument manifest = QJsonDocument::fromJson(
        R"({"z": 1, "a": 1, "signature": 1, "schemaVersion": 2, "publishedAt": "x",
            "projects": [7], "plugins": [7], "editor": 7, "runtime": 7})");
    QStringList kinds;
    for (const ctl::LintFinding &finding : ctl::lintShape(manifest.object()))
        kinds.append(finding.kind + ' ' + finding.where);
    QCOMPARE(kinds,
             QStringList({"unlisted-key a", "unlisted-key z", "schema-version schemaVersion",
                          "bad-time publishedAt", "wrong-type signature", "wrong-type runtime",
                          "wrong-type editor", "wrong-type plugins[0]", "wrong-type projects[0]",
                          "no-path plugins[0]", "nothing-offered "}));
}

QUORVANE_TEST_MAIN(QCoreApplication, LintShapeTest)
#include "lint_shape_test.moc"
