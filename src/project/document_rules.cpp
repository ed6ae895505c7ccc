// The rules on what the document says, and on the files that it names.
#include "project/validation_rules.h"

#include "script/script_facts.h"
#include "update/files/project_path.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace validator {
namespace {

QString elementPath(const QString &array, int index) {
    return QStringLiteral("%1[%2]").arg(array, QString::number(index));
}

QString keyPath(const QString &object, const char *key) {
    return object + QLatin1Char('.') + QLatin1String(key);
}

// The error stands at `path` and `key`.
void requireText(Run &run, const QJsonObject &object, const QString &path, const char *key,
                 const QString &message) {
    if (textOf(object, key).isEmpty())
        addError(run, keyPath(path, key), message);
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
    if (!QFileInfo::exists(locatedPath(run.folder, file)))
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

void checkScriptPath(Run &run, const QJsonObject &script, const QString &path) {
    const QString file = textOf(script, "path");
    if (file.isEmpty())
        addError(run, keyPath(path, "path"), QStringLiteral("缺少 script path"));
    else
        checkFileExists(run, keyPath(path, "path"), file);
}

void checkScriptRole(Run &run, const QJsonObject &script, const QString &path) {
    const QString role = textOf(script, "role");
    requireText(run, script, path, "role", QStringLiteral("缺少 script role"));
    if (!role.isEmpty() && role != QLatin1String("main") && role != QLatin1String("sub") &&
        role != QLatin1String("module"))
        addError(run, keyPath(path, "role"),
                 QStringLiteral("script role 必须为 main、sub 或 module"));
}

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

void checkCameraFiles(Run &run, const QJsonObject &camera, const QString &path) {
    for (const char *const key : {"configPath", "calibPath", "roiPath"})
        checkOptionalFile(run, keyPath(path, key), textOf(camera, key));
}

QJsonObject modelsOf(const Run &run) {
    return run.root.value(QLatin1String("models")).toObject();
}

} // namespace

bool followsGlobalNaming(const QString &name) {
    // `$` also matches before a final line feed, and such a name passes.
    static const QRegularExpression naming(QStringLiteral("^[A-Za-z0-9]+_[A-Za-z0-9_]+$"));
    return naming.match(name).hasMatch();
}

void checkSchemaVersion(Run &run) {
    const QJsonValue version = run.root.value(QLatin1String("schemaVersion"));
    const QString path = QStringLiteral("schemaVersion");
    if (version.isUndefined())
        addError(run, path, QStringLiteral("缺少 schemaVersion"));
    else if (version.toInt() != 1)
        addError(run, path, QStringLiteral("不支持的 schemaVersion；期望值为 1"));
}

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

void checkScriptsGiven(Run &run) {
    if (run.scripts.isEmpty())
        addError(run, QStringLiteral("scripts"), QStringLiteral("scripts[] 至少包含一项"));
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

void checkProcessGroups(Run &run) {
    const QString path = QStringLiteral("processGroups");
    const QJsonArray groups = run.root.value(path).toArray();
    for (int i = 0; i < groups.size(); ++i) {
        if (groups.at(i).toObject().contains(QLatin1String("aggregate")))
            addWarning(run, elementPath(path, i),
                       QStringLiteral("不支持 aggregate 字段 (T9:A)；请使用 main 任务脚本"));
    }
}

} // namespace validator
