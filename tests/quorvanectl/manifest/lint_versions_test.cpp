// Versions of a manifest: each mistake with its words, and the near miss that is none.
#include "quorvanectl/manifest/manifest_lint_rules.h"

#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

using ctl::LintFinding;

class LintVersionsTest : public QObject {
    Q_OBJECT

private:
    static QString linesOf(const QVector<LintFinding> &findings);
    static QJsonObject object(const QByteArray &text);

private Q_SLOTS:
    void components_data();
    void components();
    void projects_data();
    void projects();
    void succession_data();
    void succession();
    void thePreviousManifestMayBeAnything_data();
    void thePreviousManifestMayBeAnything();
};

QString LintVersionsTest::linesOf(const QVector<LintFinding> &findings) {
    QStringList lines;
    for (const LintFinding &finding : findings)
        lines += ctl::lintLine(finding);
    return lines.join('\n');
}

QJsonObject LintVersionsTest::object(const QByteArray &text) {
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject())
        qFatal("%s", text.constData());
    return document.object();
}

void LintVersionsTest::components_data() {
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QString>("lines");
    const auto row = [](const char *name, const char *record, const QString &lines) {
        QTest::newRow(name) << QByteArray(record) << lines;
    };
    row("the same in both places", R"({"version": "1.3.0", "setupUrl": "setup-1.3.0.exe"})", "");
    row("with a v in front", R"({"version": "v1.3.0", "setupUrl": "setup-v1.3.0.exe"})", "");
    row("a zero more", R"({"version": "1.3.0", "setupUrl": "setup-1.3.0.0.exe"})", "");
    row("in the name alone", R"({"setupUrl": "setup-1.3.0.exe"})", "");
    row("in the name and in its folder",
        R"({"setupUrl": "https://cdn.example/1.3.0/setup-1.3.0.exe"})", "");
    row("in a folder alone", R"({"setupUrl": "https://cdn.example/1.3.0/setup.exe"})", "");
    row("nowhere", R"({"setupUrl": "setup.exe"})",
        "runtime: neither `version` nor the installer's name holds a version: nobody is offered it "
        "[no-version]");
    row("nowhere, and no address either", "{}",
        "runtime: neither `version` nor the installer's name holds a version: nobody is offered it "
        "[no-version]");
    row("in the unsigned key alone", R"({"version": "1.3.0", "setupUrl": "setup.exe"})",
        "runtime.setupUrl: the version stands only in `version`, which no signature covers; put it "
        "into the installer's name [unsigned-version]");
    row("in the unsigned key alone, and no address", R"({"version": "1.3.0"})", "");
    row("two of them", R"({"version": "1.4.0", "setupUrl": "setup-1.3.0.exe"})",
        "runtime.version: says 1.4.0, the installer's name says 1.3.0 [version-disagrees]");
    row("an address of numbers in front",
        R"({"version": "1.3.0", "setupUrl": "https://10.20.30.40/setup-1.3.0.exe"})",
        "runtime.setupUrl: the first version in the address counts, 10.20.30.40, and not the "
        "installer's 1.3.0 [version-disagrees]");
    row("a name with a number that no reader holds", R"({"setupUrl": "setup-1.3.2147483648.exe"})",
        "runtime.setupUrl: '1.3.2147483648' holds a number above 2147483647, which counts as 0 "
        "[bad-version]");
    row("a name with the largest number", R"({"setupUrl": "setup-1.3.2147483647.exe"})", "");
    row("two numbers", R"({"version": "1.3", "setupUrl": "setup-1.3.0.exe"})",
        "runtime.version: '1.3' has two numbers; only three or four are recognised everywhere "
        "[two-number-version]");
    row("five numbers", R"({"version": "1.3.0.0.1", "setupUrl": "setup-1.3.0.exe"})",
        "runtime.version: '1.3.0.0.1' is not three or four numbers; the rest counts for nothing "
        "[bad-version]");
    row("a word behind", R"({"version": "1.3.0-rc1", "setupUrl": "setup-1.3.0.exe"})",
        "runtime.version: '1.3.0-rc1' is not three or four numbers; the rest counts for nothing "
        "[bad-version]");
    row("blanks around are dropped", R"({"version": " 1.3.0 ", "setupUrl": "setup-1.3.0.exe"})",
        "");
    row("zeros", R"({"setupUrl": "setup-0.0.0.exe"})",
        "runtime: 0.0.0 is above no version [no-version]");
    row("nearly zeros", R"({"setupUrl": "setup-0.0.0.1.exe"})", "");

    row("a lowest version below", R"({"setupUrl": "setup-1.3.0.exe", "minVersion": "1.2.9"})", "");
    row("a lowest version that is empty", R"({"setupUrl": "setup-1.3.0.exe", "minVersion": " "})",
        "");
    row("a lowest version that is the same",
        R"({"setupUrl": "setup-1.3.0.exe", "minVersion": "1.3.0"})",
        "runtime.minVersion: 1.3.0 is not below the version 1.3.0 itself: nobody can update "
        "[min-version-too-high]");
    row("a lowest version of more digits below",
        R"({"setupUrl": "setup-1.10.0.exe", "minVersion": "1.9.0"})", "");
    row("a lowest version of fewer digits above",
        R"({"setupUrl": "setup-1.9.0.exe", "minVersion": "1.10.0"})",
        "runtime.minVersion: 1.10.0 is not below the version 1.9.0 itself: nobody can update "
        "[min-version-too-high]");
    row("a lowest version that is a word",
        R"({"setupUrl": "setup-1.3.0.exe", "minVersion": "any"})",
        "runtime.minVersion: 'any' is not three or four numbers; the rest counts for nothing "
        "[bad-version]");
}

void LintVersionsTest::components() {
    QFETCH(QByteArray, record);
    QTEST(linesOf(ctl::lintVersions({"runtime", false, object(record)})), "lines");
}

void LintVersionsTest::projects_data() {
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QString>("lines");
    const auto row = [](const char *name, const char *record, const QString &lines) {
        QTest::newRow(name) << QByteArray(record) << lines;
    };
    row("three numbers", R"({"version": "1.2.0"})", "");
    row("a package of another version is the package's business",
        R"({"version": "1.2.0", "zipUrl": "a-1.3.0.zip"})", "");
    row("a lowest version is nothing of a project's", R"({"version": "1.2.0", "minVersion": "x"})",
        "");
    row("none", R"({"zipUrl": "a-1.2.0.zip"})",
        "projects[0]: a project without `version` is offered again at every start [no-version]");
    row("blanks alone", R"({"version": " "})",
        "projects[0]: a project without `version` is offered again at every start [no-version]");
    row("one number", R"({"version": "7"})",
        "projects[0].version: '7' is not three or four numbers; the rest counts for nothing "
        "[bad-version]");
    row("two numbers", R"({"version": "v1.2"})",
        "projects[0].version: 'v1.2' has two numbers; only three or four are recognised everywhere "
        "[two-number-version]");
    row("zeros", R"({"version": "v0.0.0"})", "projects[0]: 0.0.0 is above no version [no-version]");
    row("a time in a number", R"({"version": "1.2.20261120060000"})",
        "projects[0].version: '1.2.20261120060000' holds a number above 2147483647, which counts "
        "as 0 [bad-version]");
}

void LintVersionsTest::projects() {
    QFETCH(QByteArray, record);
    QTEST(linesOf(ctl::lintVersions({"projects[0]", true, object(record)})), "lines");
}

void LintVersionsTest::succession_data() {
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("now");
    QTest::addColumn<QString>("lines");
    const auto row = [](const char *name, const char *before, const char *now,
                        const QString &lines) {
        QTest::newRow(name) << QByteArray(before) << QByteArray(now) << lines;
    };
    row("a first component", "{}", R"({"runtime": {"setupUrl": "setup-1.3.0.exe"}})", "");
    row("a higher version", R"({"runtime": {"setupUrl": "setup-1.3.0.exe"}})",
        R"({"runtime": {"setupUrl": "setup-1.10.0.exe"}})", "");
    row("the same package with its hash in large letters",
        R"({"runtime": {"setupUrl": "setup-1.3.0.exe", "setupSha256": "ab"}})",
        R"({"runtime": {"setupUrl": "setup-1.3.0.exe", "setupSha256": "AB"}})", "");
    row("the same version under another name", R"({"runtime": {"setupUrl": "setup-1.3.0.exe"}})",
        R"({"runtime": {"setupUrl": "new/setup-1.3.0.exe"}})",
        "runtime: version 1.3.0 is not above 1.3.0 of the previous manifest "
        "[version-not-above-previous]");
    row("a version without its last zero", R"({"editor": {"setupUrl": "e-1.3.0.0.exe"}})",
        R"({"editor": {"setupUrl": "e-1.3.0.exe"}})",
        "editor: version 1.3.0 is not above 1.3.0.0 of the previous manifest "
        "[version-not-above-previous]");
    row("another version under the old address",
        R"({"projects": [{"name": "a", "version": "1.0.0", "zipUrl": "a.zip", "zipSha256": "1"}]})",
        R"({"projects": [{"name": "a", "version": "1.1.0", "zipUrl": "a.zip", "zipSha256": "2"}]})",
        "projects[0]: another package under the address of the previous one: a.zip "
        "[address-used-again]");
    row("projects in another order are the same ones",
        R"({"projects": [{"name": "a", "version": "1.0.0", "zipUrl": "a"},
                         {"name": "b", "version": "2.0.0", "zipUrl": "b"}]})",
        R"({"projects": [{"name": "B", "version": "2.0.0", "zipUrl": "b"},
                         {"name": "A", "version": "1.0.0", "zipUrl": "a"}]})",
        "");
    row("the first of two is gone",
        R"({"projects": [{"name": "a", "zipUrl": "p/a-1.0.0.zip"},
                         {"name": "b", "version": "2.0.0", "zipUrl": "b"}]})",
        R"({"projects": [{"name": "b", "version": "2.0.0", "zipUrl": "b"}]})",
        "projects[0]: stood in the previous manifest (a-1.0.0.zip) and is gone "
        "[no-longer-offered]");
    row("a project's new name is another project",
        R"({"projects": [{"name": "a", "zipUrl": "a"}]})",
        R"({"projects": [{"name": "c", "zipUrl": "a"}]})",
        "projects[0]: stood in the previous manifest (a) and is gone [no-longer-offered]");
    row("a component that became a text", R"({"runtime": {"setupUrl": "setup-1.3.0.exe"}})",
        R"({"runtime": "1.4.0"})",
        "runtime: stood in the previous manifest (setup-1.3.0.exe) and is gone "
        "[no-longer-offered]");

    const QString late = "publishedAt: is not later than that of the previous manifest [not-later]";
    row("a second later", R"({"publishedAt": "2026-11-20T06:00:00Z"})",
        R"({"publishedAt": "2026-11-20T06:00:01Z"})", "");
    row("the same time", R"({"publishedAt": "2026-11-20T06:00:00Z"})",
        R"({"publishedAt": "2026-11-20T06:00:00Z"})", late);
    row("the same time in another zone", R"({"publishedAt": "2026-11-20T06:00:00Z"})",
        R"({"publishedAt": "2026-11-20T14:00:00+08:00"})", late);
    row("later by its hour and earlier by its zone", R"({"publishedAt": "2026-11-20T06:00:00Z"})",
        R"({"publishedAt": "2026-11-20T07:00:00+08:00"})", late);
    row("no time any more", R"({"publishedAt": "2026-11-20T06:00:00Z"})", "{}", late);
    row("a first time", "{}", R"({"publishedAt": "2026-11-20T06:00:00Z"})", "");
}

void LintVersionsTest::succession() {
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, now);
    QTEST(linesOf(ctl::lintSuccession(object(now), object(before))), "lines");
}

void LintVersionsTest::thePreviousManifestMayBeAnything_data() {
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("empty") << QByteArray("{}");
    QTest::newRow("of wrong types")
        << QByteArray(R"({"runtime": 7, "projects": {"a": 1}, "publishedAt": 7})");
    QTest::newRow("with a time that is none") << QByteArray(R"({"publishedAt": "yesterday"})");
    QTest::newRow("with records that are none")
        << QByteArray(R"({"projects": [7, null, "a", []], "editor": null})");
}

void LintVersionsTest::thePreviousManifestMayBeAnything() {
    QFETCH(QByteArray, before);
    const QJsonObject now = object(R"({"runtime": {"setupUrl": "setup-1.3.0.exe"},
                                       "projects": [{"name": "a", "version": "1.0.0"}]})");
    QCOMPARE(linesOf(ctl::lintSuccession(now, object(before))), QString());
}

QUORVANE_TEST_MAIN(QCoreApplication, LintVersionsTest)
#include "lint_versions_test.moc"
