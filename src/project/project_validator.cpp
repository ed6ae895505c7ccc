#include "project/project_validator.h"

#include "script/project_checks.h"
#include "script/project_path.h"
#include "update/memory_guard.h"
#include "update/text_file.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <cerrno>

namespace {

const qint32 errorSeverity = 0;
const qint32 warningSeverity = 1;

// What one run works on. The rules read everything above `issues` and append to it.
struct Run {
    QString projectPath;
    QDir folder;
    QJsonObject root;
    QJsonArray scripts;
    QSet<QString> scriptIds;   // as written
    QSet<QString> scriptPaths; // cleaned
    QVector<ProjectIssue> issues;
};

void addError(Run &run, const QString &path, const QString &message) {
    run.issues.append({errorSeverity, path, message});
}

void addWarning(Run &run, const QString &path, const QString &message) {
    run.issues.append({warningSeverity, path, message});
}

// Missing, empty and of another type are one case: empty text.
QString textOf(const QJsonObject &object, const char *key) {
    return object.value(QLatin1String(key)).toString();
}

QString elementPath(const QString &array, int index) {
    return QStringLiteral("%1[%2]").arg(array, QString::number(index));
}

QString keyPath(const QString &object, const char *key) {
    return object + QLatin1Char('.') + QLatin1String(key);
}

// A text that must be there.
void requireText(Run &run, const QJsonObject &object, const QString &path, const char *key,
                 const QString &message) {
    if (textOf(object, key).isEmpty())
        addError(run, keyPath(path, key), message);
}

// ---- Sub-checks ----

bool followsGlobalNaming(const QString &name) {
    // `$` also matches before a final line feed, and such a name passes.
    static const QRegularExpression naming(QStringLiteral("^[A-Za-z0-9]+_[A-Za-z0-9_]+$"));
    return naming.match(name).hasMatch();
}

bool isAbsoluteLooking(const QString &path) {
    return ast::isRootedPath(path) || path.contains(QLatin1String(":/"));
}

void checkEntryScript(Run &run, const QString &path, const QString &scriptId) {
    if (scriptId.isEmpty())
        addError(run, path, QStringLiteral("缺少 entryScriptId"));
    else if (!run.scriptIds.contains(scriptId))
        addError(run, path,
                 QStringLiteral("entryScriptId '%1' 未在 scripts[] 中登记").arg(scriptId));
}

// A folder counts as a file here. A path that looks absolute is warned of and used all the same.
void checkFileExists(Run &run, const QString &path, const QString &file) {
    if (isAbsoluteLooking(file))
        addWarning(run, path, QStringLiteral("path 疑似绝对路径；请使用相对 yslib 目录的路径"));
    if (!QFileInfo::exists(ast::locatedPath(run.folder, file)))
        addError(run, path, QStringLiteral("引用的文件不存在：%1").arg(file));
}

void checkRequiredFile(Run &run, const QString &path, const QString &file) {
    if (file.isEmpty())
        addError(run, path, QStringLiteral("缺少 path"));
    else
        checkFileExists(run, path, file);
}

void checkOptionalFile(Run &run, const QString &path, const QString &file) {
    if (!file.isEmpty())
        checkFileExists(run, path, file);
}

void checkWrittenGlobals(Run &run, const QString &path, const QJsonArray &names) {
    for (const QJsonValue &name : names) {
        if (name.isString() && !followsGlobalNaming(name.toString()))
            addWarning(run, path,
                       QStringLiteral("writesGlobals 项 '%1' 不符合 {camId}_{metric} 命名")
                           .arg(name.toString()));
    }
}

// ---- The version of the format ----

void checkSchemaVersion(Run &run) {
    const QJsonValue version = run.root.value(QLatin1String("schemaVersion"));
    const QString path = QStringLiteral("schemaVersion");
    if (version.isUndefined())
        addError(run, path, QStringLiteral("缺少 schemaVersion"));
    else if (version.toInt() != 1)
        addError(run, path, QStringLiteral("不支持的 schemaVersion；期望值为 1"));
}

// ---- The project's identity ----

void checkProject(Run &run) {
    const QString path = QStringLiteral("project");
    const QJsonObject project = run.root.value(path).toObject();
    if (project.isEmpty()) {
        addError(run, path, QStringLiteral("缺少 project 对象"));
        return;
    }
    requireText(run, project, path, "name", QStringLiteral("缺少 project.name"));
    requireText(run, project, path, "displayName", QStringLiteral("缺少 project.displayName"));
    requireText(run, project, path, "createdAt", QStringLiteral("缺少 project.createdAt"));
}

// ---- The registry of scripts ----

void checkScriptsGiven(Run &run) {
    if (run.scripts.isEmpty())
        addError(run, QStringLiteral("scripts"), QStringLiteral("scripts[] 至少包含一项"));
}

void checkScriptPath(Run &run, const QJsonObject &script, const QString &path) {
    const QString file = textOf(script, "path");
    if (file.isEmpty())
        addError(run, keyPath(path, "path"), QStringLiteral("缺少 script path"));
    else
        checkRequiredFile(run, keyPath(path, "path"), file);
}

void checkScriptRole(Run &run, const QJsonObject &script, const QString &path) {
    const QString role = textOf(script, "role");
    requireText(run, script, path, "role", QStringLiteral("缺少 script role"));
    if (!role.isEmpty() && role != QLatin1String("main") && role != QLatin1String("sub") &&
        role != QLatin1String("module"))
        addError(run, keyPath(path, "role"),
                 QStringLiteral("script role 必须为 main、sub 或 module"));
}

void checkScripts(Run &run) {
    for (int i = 0; i < run.scripts.size(); ++i) {
        const QJsonObject script = run.scripts.at(i).toObject();
        const QString path = elementPath(QStringLiteral("scripts"), i);
        requireText(run, script, path, "id", QStringLiteral("缺少 script id"));
        checkScriptPath(run, script, path);
        checkScriptRole(run, script, path);
    }
}

// ---- The tasks ----

void checkMainTask(Run &run, const QJsonObject &tasks) {
    const QString path = QStringLiteral("tasks.main");
    const QJsonObject task = tasks.value(QLatin1String("main")).toObject();
    if (task.isEmpty())
        addError(run, path, QStringLiteral("缺少 tasks.main"));
    else
        checkEntryScript(run, keyPath(path, "entryScriptId"), textOf(task, "entryScriptId"));
}

void checkSubTasks(Run &run, const QJsonObject &tasks) {
    const QJsonArray subs = tasks.value(QLatin1String("subs")).toArray();
    for (int j = 0; j < subs.size(); ++j) {
        const QJsonObject task = subs.at(j).toObject();
        const QString path = elementPath(QStringLiteral("tasks.subs"), j);
        checkEntryScript(run, keyPath(path, "entryScriptId"), textOf(task, "entryScriptId"));
        checkWrittenGlobals(run, keyPath(path, "writesGlobals"),
                            task.value(QLatin1String("writesGlobals")).toArray());
    }
}

void checkTasks(Run &run) {
    const QString path = QStringLiteral("tasks");
    const QJsonObject tasks = run.root.value(path).toObject();
    if (tasks.isEmpty()) {
        addError(run, path, QStringLiteral("缺少 tasks 对象"));
        return;
    }
    checkMainTask(run, tasks);
    checkSubTasks(run, tasks);
}

// ---- The cameras ----

void checkCameraFiles(Run &run, const QJsonObject &camera, const QString &path) {
    for (const char *const key : {"configPath", "calibPath", "roiPath"})
        checkOptionalFile(run, keyPath(path, key), textOf(camera, key));
}

void checkCameras(Run &run) {
    const QJsonObject hardware = run.root.value(QLatin1String("hardware")).toObject();
    const QJsonArray cameras = hardware.value(QLatin1String("cameras")).toArray();
    for (int k = 0; k < cameras.size(); ++k) {
        const QJsonObject camera = cameras.at(k).toObject();
        const QString path = elementPath(QStringLiteral("hardware.cameras"), k);
        requireText(run, camera, path, "id", QStringLiteral("缺少 camera id"));
        requireText(run, camera, path, "driver", QStringLiteral("缺少 camera driver"));
        checkCameraFiles(run, camera, path);
    }
}

// ---- The models ----

QJsonObject modelsOf(const Run &run) {
    return run.root.value(QLatin1String("models")).toObject();
}

void checkModelRunner(Run &run) {
    checkOptionalFile(run, QStringLiteral("models.runner"), textOf(modelsOf(run), "runner"));
}

void checkModelConfigs(Run &run) {
    const QJsonArray configs = modelsOf(run).value(QLatin1String("configs")).toArray();
    for (int m = 0; m < configs.size(); ++m) {
        const QString path = elementPath(QStringLiteral("models.configs"), m);
        checkRequiredFile(run, keyPath(path, "configPath"),
                          textOf(configs.at(m).toObject(), "configPath"));
    }
}

// ---- Scripts on the disk that the registry does not hold ----

// The name filter ignores case, the comparison does not: a registered main.ys does not cover
// MAIN.YS.
void checkUnregisteredScripts(Run &run) {
    if (run.scriptPaths.isEmpty())
        return;
    QDirIterator files(run.folder.path(), {QStringLiteral("*.ys")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = ast::cleanedPath(run.folder.relativeFilePath(files.next()));
        if (!run.scriptPaths.contains(path))
            addWarning(run, QStringLiteral("scripts"),
                       QStringLiteral("磁盘上的脚本未登记到 scripts[]：%1").arg(path));
    }
}

// ---- Process groups ----

void checkProcessGroups(Run &run) {
    const QString path = QStringLiteral("processGroups");
    const QJsonArray groups = run.root.value(path).toArray();
    for (int i = 0; i < groups.size(); ++i) {
        if (groups.at(i).toObject().contains(QLatin1String("aggregate")))
            addWarning(run, elementPath(path, i),
                       QStringLiteral("不支持 aggregate 字段 (T9:A)；请使用 main 任务脚本"));
    }
}

// ---- The names of globals ----

// A scan of the text: a declaration in a comment counts as well, and one of a type that the
// expression does not list is not seen.
QStringList badlyNamedGlobals(const QString &text) {
    static const QRegularExpression declaration(
        QStringLiteral("\\bglobal\\s+(?:int|bool|float|string|char)\\s+([A-Za-z_][A-Za-z0-9_]*)"));
    QStringList names;
    QRegularExpressionMatchIterator matches = declaration.globalMatch(text);
    while (matches.hasNext()) {
        const QString name = matches.next().captured(1);
        if (!followsGlobalNaming(name))
            names += name;
    }
    return names;
}

// A script that is missing or cannot be read has no globals; the first has been reported.
void checkGlobalNames(Run &run) {
    for (const QJsonValue &script : qAsConst(run.scripts)) {
        const QString path = textOf(script.toObject(), "path");
        if (path.isEmpty())
            continue;
        const QString file = ast::locatedPath(run.folder, path);
        const QStringList names =
            unlessOutOfMemory([&] { return badlyNamedGlobals(readTextFile(file)); }, QStringList());
        for (const QString &name : names)
            addWarning(run, path,
                       QStringLiteral("global 变量 '%1' 不符合 {camId}_{metric} 命名").arg(name));
    }
}

// ---- What is seen across the scripts ----

// The issue does not say which script the finding comes from, unless the message does.
void takeOver(Run &run, const ast::ScriptCheckResult &result) {
    for (const ast::ScriptDiagnostic &finding : result.diagnostics) {
        const qint32 severity = finding.severity == 0 ? errorSeverity : warningSeverity;
        run.issues.append({severity, QStringLiteral("scripts"), finding.message});
    }
}

void checkImports(Run &run) {
    takeOver(run, ast::checkImportGraph(run.projectPath, run.scripts));
}

void checkDuplicateGlobals(Run &run) {
    takeOver(run, ast::checkCrossScriptGlobals(run.projectPath, run.scripts));
}

// ---- The run ----

// In the order in which their findings stand.
using Rule = void (*)(Run &run);
const Rule rules[] = {
    checkSchemaVersion,    checkProject,      checkScriptsGiven,
    checkScripts,          checkTasks,        checkCameras,
    checkModelRunner,      checkModelConfigs, checkUnregisteredScripts,
    checkProcessGroups,    checkGlobalNames,  checkImports,
    checkDuplicateGlobals,
};

Run makeRun(const QJsonObject &root, const QString &projectPath) {
    Run run;
    run.projectPath = projectPath;
    run.folder = QDir(QFileInfo(projectPath).absolutePath());
    run.root = root;
    run.scripts = root.value(QLatin1String("scripts")).toArray();
    for (const QJsonValue &script : qAsConst(run.scripts)) {
        const QString id = textOf(script.toObject(), "id");
        const QString path = textOf(script.toObject(), "path");
        if (!id.isEmpty())
            run.scriptIds.insert(id);
        if (!path.isEmpty())
            run.scriptPaths.insert(ast::cleanedPath(path));
    }
    return run;
}

QVector<ProjectIssue> oneError(const QString &message) {
    return {{errorSeverity, QStringLiteral("yslib"), message}};
}

QVector<ProjectIssue> unreadable(const QString &reason) {
    return oneError(QStringLiteral("无法读取 yslib：%1").arg(reason));
}

QVector<ProjectIssue> validate(const QString &text, const QString &projectPath) {
    // Of no other path is the folder empty; a file's own absence is no fault here.
    if (projectPath.isEmpty())
        return oneError(QStringLiteral("无效的 yslib 路径：%1").arg(projectPath));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return oneError(QStringLiteral("JSON 无效：%1").arg(error.errorString()));
    Run run = makeRun(document.object(), projectPath);
    for (const Rule rule : rules)
        rule(run);
    return run.issues;
}

QString formatIssue(const ProjectIssue &issue) {
    const QString severity =
        issue.severity == errorSeverity ? QStringLiteral("Error") : QStringLiteral("Warning");
    if (issue.path.isEmpty())
        return QStringLiteral("[%1] %2").arg(severity, issue.message);
    return QStringLiteral("[%1] %2: %3").arg(severity, issue.path, issue.message);
}

} // namespace

QVector<ProjectIssue> validateProjectFile(const QString &projectPath) {
    QString error;
    const QString text = readTextFile(projectPath, &error);
    return text.isNull() ? unreadable(error) : validateProjectText(text, projectPath);
}

QVector<ProjectIssue> validateProjectText(const QString &text, const QString &projectPath) {
    return unlessOutOfMemory([&] { return validate(text, projectPath); },
                             unreadable(qt_error_string(ENOMEM)));
}

QString formatProjectIssues(const QVector<ProjectIssue> &issues) {
    QStringList lines;
    for (const ProjectIssue &issue : issues)
        lines += formatIssue(issue);
    return lines.join(QLatin1Char('\n'));
}
