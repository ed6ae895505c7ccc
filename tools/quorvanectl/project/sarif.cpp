#include "quorvanectl/project/sarif.h"

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
    {ast::syntaxErrorCode, "The script has a syntax error."},
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
    // The one syntax error without a text is a stray brace; the format asks for one.
    const int index = ruleIndex(ruleId);
    const QString text =
        message.isEmpty() && index >= 0 ? QString(QLatin1String(rules[index].text)) : message;
    return {{QStringLiteral("ruleId"), ruleId},
            {QStringLiteral("ruleIndex"), index},
            {QStringLiteral("level"),
             severity == 0 ? QStringLiteral("error") : QStringLiteral("warning")},
            {QStringLiteral("message"), textObject(text)},
            {QStringLiteral("locations"), QJsonArray{location}}};
}

// The path of an issue leads into the document, or names a script.
QJsonObject issueLocation(const QDir &folder, const QString &projectPath, const QString &path) {
    const QString script = locatedPath(folder, path);
    const bool ofScript = !path.isEmpty() && QFileInfo(script).isFile();
    QJsonObject location{{QStringLiteral("physicalLocation"),
                          QJsonObject{{QStringLiteral("artifactLocation"),
                                       artifact(folder, ofScript ? script : projectPath)}}}};
    if (!ofScript && !path.isEmpty())
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
    for (const ProjectIssue &issue : findings.issues)
        list.append(result(QStringLiteral("project"), issue.severity, issue.message,
                           issueLocation(folder, project, issue.path)));
    if (!findings.corePluginFault.isEmpty())
        list.append(result(QStringLiteral("core-plugin"), 0, findings.corePluginFault,
                           issueLocation(folder, project, QString())));
    for (const ScriptReport &script : findings.scripts) {
        for (const ast::ScriptDiagnostic &finding : script.result.diagnostics)
            list.append(result(finding.code, finding.severity, finding.message,
                               scriptLocation(folder, script.path, finding)));
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
