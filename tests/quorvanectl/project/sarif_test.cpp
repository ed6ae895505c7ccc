// The findings of a project as a log for code scanners: each object has the names it must and may
// have, and each finding its rule and its place, under names that need encoding.
#include "quorvanectl/project/sarif.h"

#include "run_tool.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

using support::ProjectFolder;

namespace {

// What the standard says of the objects that occur here: the names that may stand in each, those
// that must marked by "!". No other name may occur.
const QMap<QString, QStringList> &propertiesOf() {
    static const QMap<QString, QStringList> table{
        {"log", {"$schema", "version!", "runs!", "inlineExternalProperties", "properties"}},
        {"run",
         {"tool!", "invocations", "columnKind", "originalUriBaseIds", "results", "artifacts",
          "defaultEncoding", "properties"}},
        {"tool", {"driver!", "extensions", "properties"}},
        {"driver",
         {"name!", "version", "semanticVersion", "fullName", "informationUri", "rules",
          "properties"}},
        {"rule",
         {"id!", "name", "shortDescription", "fullDescription", "defaultConfiguration", "help",
          "helpUri", "properties"}},
        {"description", {"text!", "markdown", "properties"}},
        {"result",
         {"ruleId", "ruleIndex", "rule", "kind", "level", "message!", "locations", "properties"}},
        {"message", {"text!", "markdown", "id", "arguments", "properties"}},
        {"location",
         {"id", "physicalLocation", "logicalLocations", "message", "annotations", "properties"}},
        {"logicalLocation",
         {"name", "index", "fullyQualifiedName", "decoratedName", "parentIndex", "kind"}},
        {"physicalLocation",
         {"address", "artifactLocation!", "region", "contextRegion", "properties"}},
        {"artifactLocation", {"uri!", "uriBaseId", "index", "description", "properties"}},
        {"region",
         {"startLine!", "startColumn", "endLine", "endColumn", "snippet", "message", "properties"}},
        {"base", {"uri!", "uriBaseId", "description"}},
    };
    return table;
}

// Throws the test out at the first name that may not stand there, or that is missing.
QJsonObject checked(const char *kind, const QJsonValue &value) {
    const QJsonObject object = value.toObject();
    QStringList known;
    for (const QString &name : propertiesOf()[kind]) {
        const bool isRequired = name.endsWith('!');
        known.append(QString(name).remove('!'));
        if (isRequired && !object.contains(known.last()))
            qFatal("%s without %s", kind, qPrintable(known.last()));
    }
    for (const QString &name : object.keys()) {
        if (!known.contains(name))
            qFatal("%s with %s", kind, qPrintable(name));
    }
    return object;
}

QString nonEmpty(const QJsonValue &value) {
    if (!value.isString() || value.toString().isEmpty())
        qFatal("an empty text");
    return value.toString();
}

// A project with a finding of every rule, under names that need encoding.
void layOut(const ProjectFolder &folder) {
    support::writeTree(folder.path(""), {
                                            {"产线 #1/检测 100%.yslib", R"({"schemaVersion": 1,
            "project": {"name": "a", "displayName": "a", "createdAt": "a"},
            "scripts": [{"id": "main", "path": ".\\scripts\\主 程序.ys", "role": "main"},
                        {"id": "brace", "path": "a:b.ys", "role": "sub"},
                        {"id": "bad", "path": "bad.ys", "role": "sub"},
                        {"id": "open", "path": "open.ys", "role": "sub"},
                        {"id": "none", "path": "none.ys", "role": "sub"}],
            "tasks": {"main": {"entryScriptId": "main"}}})"},
                                            {"产线 #1/scripts/主 程序.ys", "if a { }\n"},
                                            {"产线 #1/a:b.ys", "}\n"},
                                            {"产线 #1/bad.ys", "名 = \"😀\" $ 1\nglobal int a\n"},
                                            {"产线 #1/open.ys", "a = \"b\n"},
                                            {"产线 #1/extra.ys", ""},
                                        });
}

} // namespace

class SarifTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theLogAndItsRun();
    void theRules();
    void everyResultIsComplete();
    void thePlaceOfTheProjectIsAnAbsoluteFolder();
    void theResults_data();
    void theResults();
    void aMessageIsNeverEmpty();
    void aPlaceIsNeverZero();
    void aFileThatIsNoProjectIsOneResult_data();
    void aFileThatIsNoProjectIsOneResult();
    void aCleanProjectHasNoResults();

private:
    static bool isUri(const QString &text);
    static void checkLocation(const QJsonValue &value);
    static QString summary(const QJsonObject &result);
    ProjectFolder projectFolder;
    QJsonObject sarif;
    QJsonObject firstRun;
};

void SarifTest::initTestCase() {
    layOut(projectFolder);
    const support::Answer answer =
        support::runProgram({"project", "check", "产线 #1/检测 100%.yslib", "--core-plugin",
                             "plugins", "--format", "sarif"},
                            projectFolder.path(""));
    QCOMPARE(answer.status, 1);
    QCOMPARE(answer.err, QString());
    QJsonParseError error;
    sarif = QJsonDocument::fromJson(answer.out.toUtf8(), &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    firstRun = sarif["runs"].toArray().at(0).toObject();
}

void SarifTest::theLogAndItsRun() {
    checked("log", sarif);
    QCOMPARE(sarif["version"].toString(), QString("2.1.0"));
    QVERIFY(QUrl(sarif["$schema"].toString(), QUrl::StrictMode).isValid());
    QVERIFY(sarif["$schema"].toString().endsWith("sarif-schema-2.1.0.json"));
    QCOMPARE(sarif["runs"].toArray().size(), 1);
    checked("run", firstRun);
    QCOMPARE(firstRun["columnKind"].toString(), QString("utf16CodeUnits"));
    const QJsonObject driver = checked("driver", checked("tool", firstRun["tool"])["driver"]);
    QCOMPARE(driver["name"].toString(), QString("quorvanectl"));
    QCOMPARE(nonEmpty(driver["version"]).count('.'), 2);
}

void SarifTest::theRules() {
    QStringList told;
    const QJsonArray rules = firstRun["tool"].toObject()["driver"].toObject()["rules"].toArray();
    for (const QJsonValue &value : rules) {
        const QJsonObject rule = checked("rule", value);
        told.append(rule["id"].toString() + ": " +
                    checked("description", rule["shortDescription"])["text"].toString());
    }
    QCOMPARE(told,
             (QStringList{
                 "project: The project does not follow the rules of a project file.",
                 "core-plugin: The core plug-in is missing.",
                 "YS100: The script holds a character that the language does not know.",
                 "YS200: The script has a syntax error.",
                 "open-string: A text in the script is still open at the end of the file.",
                 "open-bracket: A brace, parenthesis or bracket of the script is never closed.",
                 "incomplete-statement: The script passes, with a statement that is not whole."}));
}

void SarifTest::everyResultIsComplete() {
    const QJsonArray rules = firstRun["tool"].toObject()["driver"].toObject()["rules"].toArray();
    const QJsonArray results = firstRun["results"].toArray();
    QVERIFY(results.size() > 5);
    for (const QJsonValue &value : results) {
        const QJsonObject result = checked("result", value);
        nonEmpty(checked("message", result["message"])["text"]);
        QVERIFY(
            QStringList({"none", "note", "warning", "error"}).contains(result["level"].toString()));
        QCOMPARE(rules.at(result["ruleIndex"].toInt(-1)).toObject()["id"], result["ruleId"]);
        QCOMPARE(result["locations"].toArray().size(), 1);
        checkLocation(result["locations"].toArray().at(0));
    }
}

void SarifTest::thePlaceOfTheProjectIsAnAbsoluteFolder() {
    const QJsonObject bases = firstRun["originalUriBaseIds"].toObject();
    QCOMPARE(bases.keys(), QStringList("PROJECT"));
    const QString uri = checked("base", bases["PROJECT"])["uri"].toString();
    QVERIFY(isUri(uri));
    QVERIFY(uri.startsWith("file:///") && uri.endsWith('/'));
    QCOMPARE(QUrl(uri).toLocalFile(), projectFolder.path("产线 #1/"));
}

void SarifTest::theResults_data() {
    QTest::addColumn<QString>("text"); // ruleId level uri line:column-end logical name
    QTest::newRow("a script that is missing")
        << "project error %E6%A3%80%E6%B5%8B%20100%25.yslib 7:48 scripts[4].path";
    QTest::newRow("a script that is not registered")
        << "project warning %E6%A3%80%E6%B5%8B%20100%25.yslib 3:24 scripts";
    QTest::newRow("a name in a script") << "project warning bad.ys";
    QTest::newRow("what a script leaves open") << "open-string warning open.ys 1:5";
    QTest::newRow("the core plug-in") << "core-plugin error %E6%A3%80%E6%B5%8B%20100%25.yslib";
    QTest::newRow("a syntax error, to the end of its line")
        << "YS200 error scripts/%E4%B8%BB%20%E7%A8%8B%E5%BA%8F.ys 1:4-8";
    if (!support::onWindows) // no file has one in its name there
        QTest::newRow("a colon in a name") << "YS200 error a%3Ab.ys 1:1";
    QTest::newRow("behind a character of two units") << "YS100 error bad.ys 1:10-11";
}

void SarifTest::theResults() {
    QFETCH(QString, text);
    QStringList all;
    const QJsonArray results = firstRun["results"].toArray();
    for (const QJsonValue &result : results)
        all.append(summary(result.toObject()));
    QVERIFY2(all.contains(text), qPrintable(all.join('\n')));
}

// A stray brace has no text of its own, and a message must have one.
void SarifTest::aMessageIsNeverEmpty() {
    ctl::ProjectFindings findings;
    findings.projectPath = projectFolder.path("line.yslib");
    ast::ScriptDiagnostic finding;
    finding.code = "YS200";
    ctl::ScriptReport report;
    report.path = "a.ys";
    report.result.diagnostics.push_back(finding);
    findings.scripts.push_back(report);
    const QJsonObject run = ctl::sarifLog(findings)["runs"].toArray().at(0).toObject();
    const QJsonObject result = run["results"].toArray().at(0).toObject();
    QCOMPARE(result["message"].toObject()["text"].toString(),
             QString("The script has a syntax error."));
}

// The standard counts lines and columns from 1.
void SarifTest::aPlaceIsNeverZero() {
    ctl::ProjectFindings findings;
    findings.projectPath = projectFolder.path("line.yslib");
    ast::ScriptDiagnostic finding;
    finding.code = "YS100";
    finding.line = finding.column = 0;
    finding.endColumn = 5;
    ctl::ScriptReport report;
    report.path = "../other/a.ys";
    report.result.diagnostics.push_back(finding);
    findings.scripts.push_back(report);
    const QJsonObject run = ctl::sarifLog(findings)["runs"].toArray().at(0).toObject();
    QCOMPARE(summary(run["results"].toArray().at(0).toObject()),
             QString("YS100 error ../other/a.ys 1:1-5"));
}

void SarifTest::aFileThatIsNoProjectIsOneResult_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("message");
    QTest::newRow("a comma too many")
        << QByteArray("{\"a\": 1,\n }") << "project error a.yslib 2:2 yslib"
        << "JSON 无效：object is missing after a comma";
    QTest::newRow("a list") << QByteArray("\n[]") << "project error a.yslib 2:1 yslib"
                            << "JSON 无效：no error occurred";
}

// It is refused all the same.
void SarifTest::aFileThatIsNoProjectIsOneResult() {
    QFETCH(QByteArray, content);
    const ProjectFolder folder;
    folder.write("a.yslib", content);
    const support::Answer answer =
        support::runProgram({"project", "check", "a.yslib", "--format", "sarif"}, folder.path(""));
    QCOMPARE(answer.status, 2);
    QVERIFY2(answer.err.startsWith("quorvanectl: a.yslib: JSON 无效："), qPrintable(answer.err));
    const QJsonObject log = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    const QJsonObject run = checked("run", checked("log", log)["runs"].toArray().at(0));
    QCOMPARE(run["results"].toArray().size(), 1);
    const QJsonObject result = checked("result", run["results"].toArray().at(0));
    QTEST(summary(result), "result");
    QTEST(checked("message", result["message"])["text"].toString(), "message");
    checkLocation(result["locations"].toArray().at(0));
}

void SarifTest::aCleanProjectHasNoResults() {
    const support::Answer answer = support::runProgram(
        {"project", "check", "examples/projects/demo/demo.yslib", "--format", "sarif"},
        QUORVANE_SOURCE_TREE);
    QCOMPARE(answer.status, 0);
    const QJsonObject log = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    const QJsonObject run = log["runs"].toArray().at(0).toObject();
    QVERIFY(run["results"].isArray());
    QVERIFY(run["results"].toArray().isEmpty());
}

// A URI reference: nothing in it but what the standard for URIs allows.
bool SarifTest::isUri(const QString &text) {
    static const QRegularExpression form("^([A-Za-z0-9._~/:-]|%[0-9A-F]{2})+$");
    return form.match(text).hasMatch() && QUrl(text, QUrl::StrictMode).isValid();
}

void SarifTest::checkLocation(const QJsonValue &value) {
    const QJsonObject location = checked("location", value);
    const QJsonObject place = checked("physicalLocation", location["physicalLocation"]);
    const QJsonObject artifact = checked("artifactLocation", place["artifactLocation"]);
    QVERIFY(isUri(artifact["uri"].toString()));
    QVERIFY(QUrl(artifact["uri"].toString()).isRelative());
    QCOMPARE(artifact["uriBaseId"].toString(), QString("PROJECT"));
    if (place.contains("region")) {
        const QJsonObject region = checked("region", place["region"]);
        QVERIFY(region["startLine"].toInt() >= 1);
        QVERIFY(region["startColumn"].toInt() >= 1);
        QVERIFY(!region.contains("endColumn") ||
                region["endColumn"].toInt() > region["startColumn"].toInt());
    }
    const QJsonArray logical = location["logicalLocations"].toArray();
    for (const QJsonValue &name : logical)
        nonEmpty(checked("logicalLocation", name)["fullyQualifiedName"]);
}

QString SarifTest::summary(const QJsonObject &result) {
    const QJsonObject location = result["locations"].toArray().at(0).toObject();
    const QJsonObject place = location["physicalLocation"].toObject();
    QStringList words{result["ruleId"].toString(), result["level"].toString(),
                      place["artifactLocation"].toObject()["uri"].toString()};
    const QJsonObject region = place["region"].toObject();
    if (!region.isEmpty())
        words.append(
            QString("%1:%2").arg(region["startLine"].toInt()).arg(region["startColumn"].toInt()) +
            (region.contains("endColumn") ? QString("-%1").arg(region["endColumn"].toInt())
                                          : QString()));
    const QJsonArray names = location["logicalLocations"].toArray();
    for (const QJsonValue &name : names)
        words.append(name.toObject()["fullyQualifiedName"].toString());
    return words.join(' ');
}

QUORVANE_TEST_MAIN(QCoreApplication, SarifTest)
#include "sarif_test.moc"
