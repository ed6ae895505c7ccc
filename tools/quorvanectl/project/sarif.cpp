#include "quorvanectl/project/sarif.h"

#include "quorvanectl/project/script_warnings.h"
#include "script/script_diagnostics.h"
#include "update/files/project_path.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QUrl>

namespace ctl {
namespace {

const QLatin1String folderName("PROJECT");

struct Rule {
    const char *id;
    const char *text;
};

// In the order of their indices.
const Rule rules[] = {
    {"project", "The project does not follow the rules of a project file."},
    {"core-plugin", "The core plug-in is missing."},
    {ast::lexicalErrorCode, "The script holds a character that the language does not know."},
    {ast::syntaxErrorCode, syntaxErrorText},
    {openStringCode, "A text in the script is still open at the end of the file."},
    {openBracketCode, "A brace, parenthesis or bracket of the script is never closed."},
    {incompleteCode, "The script passes, with a statement that is not whole."},
};

int ruleIndex(const QString &id) {
    int index = 0;
    for (const Rule &rule : rules) {
        if (id == QLatin1String(rule.id))
            return index;
        ++index;
    }
    return -1;
}

QJsonObject textObject(const QString &text) {
    return {{QStringLiteral("text"), text}};
}

QJsonArray ruleList() {
    QJsonArray list;
    for (const Rule &rule : rules)
        list.append(QJsonObject{
            {QStringLiteral("id"), QLatin1String(rule.id)},
            {QStringLiteral("shortDescription"), textObject(QLatin1String(rule.text))}});
    return list;
}

QDir folderOf(const ProjectFindings &findings) {
    return QDir(QFileInfo(findings.projectPath).absolutePath());
}

// A reference relative to the folder, percent-encoded; a colon too, which would end a scheme. What
// lies on another drive has none, and stands as a whole.
QJsonObject artifact(const QDir &folder, const QString &file) {
    const QString path = folder.relativeFilePath(file);
    if (QDir::isAbsolutePath(path))
        return {{QStringLiteral("uri"), QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)}};
    return {{QStringLiteral("uri"),
             QString::fromLatin1(QUrl::toPercentEncoding(path, QByteArrayLiteral("/")))},
            {QStringLiteral("uriBaseId"), folderName}};
}

QJsonObject result(const QString &ruleId, qint32 severity, const QString &message,
                   const QJsonObject &location) {
    return {{QStringLiteral("ruleId"), ruleId},
            {QStringLiteral("ruleIndex"), ruleIndex(ruleId)},
            {QStringLiteral("level"),
             severity == 0 ? QStringLiteral("error") : QStringLiteral("warning")},
            {QStringLiteral("message"), textObject(message)},
            {QStringLiteral("locations"), QJsonArray{location}}};
}

QJsonObject issueLocation(const QDir &folder, const QString &projectPath, const QString &path,
                          const IssuePlace &place) {
    const QString file = place.script.isEmpty() ? projectPath : place.script;
    QJsonObject physical{{QStringLiteral("artifactLocation"), artifact(folder, file)}};
    if (place.at.line > 0)
        physical.insert(QStringLiteral("region"),
                        QJsonObject{{QStringLiteral("startLine"), place.at.line},
                                    {QStringLiteral("startColumn"), place.at.column}});
    QJsonObject location{{QStringLiteral("physicalLocation"), physical}};
    if (place.script.isEmpty() && !path.isEmpty())
        location.insert(QStringLiteral("logicalLocations"),
                        QJsonArray{QJsonObject{{QStringLiteral("fullyQualifiedName"), path}}});
    return location;
}

QJsonObject region(const ast::ScriptDiagnostic &finding) {
    QJsonObject region{{QStringLiteral("startLine"), qMax(1, finding.line)},
                       {QStringLiteral("startColumn"), qMax(1, finding.column)}};
    if (finding.endColumn > finding.column)
        region.insert(QStringLiteral("endColumn"), finding.endColumn);
    return region;
}

QJsonObject scriptLocation(const QDir &folder, const QString &path,
                           const ast::ScriptDiagnostic &finding) {
    return {{QStringLiteral("physicalLocation"),
             QJsonObject{
                 {QStringLiteral("artifactLocation"), artifact(folder, locatedPath(folder, path))},
                 {QStringLiteral("region"), region(finding)}}}};
}

QJsonArray results(const ProjectFindings &findings) {
    const QDir folder = folderOf(findings);
    const QString project = QFileInfo(findings.projectPath).absoluteFilePath();
    QJsonArray list;
    for (int i = 0; i < findings.issues.size(); ++i) {
        const ProjectIssue &issue = findings.issues.at(i);
        list.append(result(QStringLiteral("project"), issue.severity, issue.message,
                           issueLocation(folder, project, issue.path, findings.places.value(i))));
    }
    if (!findings.corePluginFault.isEmpty())
        list.append(result(QStringLiteral("core-plugin"), 0, findings.corePluginFault,
                           issueLocation(folder, project, QString(), {})));
    for (const ScriptReport &script : findings.scripts) {
        for (const auto *const part : {&script.result.diagnostics, &script.warnings}) {
            for (const ast::ScriptDiagnostic &finding : *part)
                list.append(result(finding.code, finding.severity, wordsOf(finding),
                                   scriptLocation(folder, script.path, finding)));
        }
    }
    return list;
}

QJsonObject tool() {
    QJsonObject driver{{QStringLiteral("name"), QStringLiteral("quorvanectl")},
                       {QStringLiteral("rules"), ruleList()}};
    const QString version = QCoreApplication::applicationVersion();
    if (!version.isEmpty())
        driver.insert(QStringLiteral("version"), version);
    return {{QStringLiteral("driver"), driver}};
}

// With a slash at its end: references count from it.
QJsonObject baseIds(const QDir &folder) {
    const QUrl url = QUrl::fromLocalFile(folder.path() + QLatin1Char('/'));
    return {{folderName, QJsonObject{{QStringLiteral("uri"), url.toString(QUrl::FullyEncoded)}}}};
}

} // namespace

QJsonObject sarifLog(const ProjectFindings &findings) {
    const QJsonObject run{{QStringLiteral("tool"), tool()},
                          {QStringLiteral("columnKind"), QStringLiteral("utf16CodeUnits")},
                          {QStringLiteral("originalUriBaseIds"), baseIds(folderOf(findings))},
                          {QStringLiteral("results"), results(findings)}};
    return {{QStringLiteral("$schema"),
             QStringLiteral("https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/"
                            "sarif-schema-2.1.0.json")},
            {QStringLiteral("version"), QStringLiteral("2.1.0")},
            {QStringLiteral("runs"), QJsonArray{run}}};
}

} // namespace ctl
