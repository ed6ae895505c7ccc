// Every finding of the validator, word for word and in its order: a clean project on the disk draws
// nothing, and each row changes one thing in it.
#include "project/project_validator.h"

#include "support/file_kinds.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextCodec>
#include <QThread>

#include <array>
#include <memory>
#include <vector>

using support::ProjectFolder;

namespace {

using Files = QList<QPair<QString, QByteArray>>; // name to content

const QString outOfMemory = qt_error_string(ENOMEM);

// A project that has everything and draws nothing. Its files are those of cleanFiles.
constexpr char cleanProject[] = R"({
    "schemaVersion": 1,
    "project": {"name": "line", "displayName": "Line", "createdAt": "2024-01-01"},
    "scripts": [
        {"id": "main", "path": "main.ys", "role": "main"},
        {"id": "sub", "path": "sub/sub.ys", "role": "sub"}
    ],
    "tasks": {
        "main": {"entryScriptId": "main"},
        "subs": [{"entryScriptId": "sub", "writesGlobals": ["cam1_width"]}]
    },
    "hardware": {"cameras": [{"id": "cam1", "driver": "file", "configPath": "data.json"}]},
    "models": {"runner": "data.json", "configs": [{"configPath": "data.json"}]},
    "processGroups": [{"name": "group"}]
})";

const Files cleanFiles = {{"main.ys", "import \"sub/sub.ys\";\nglobal int cam1_width = 0;\n"},
                          {"sub/sub.ys", "a = 1;\n"},
                          {"data.json", "{}"}};

QJsonValue parsed(const QByteArray &json) {
    return QJsonDocument::fromJson("[" + json + "]").array().at(0);
}

// `root` with the value at a path such as "scripts.0.path" replaced; undefined removes the key.
QJsonValue edited(const QJsonValue &root, const QStringList &path, const QJsonValue &value) {
    if (path.isEmpty())
        return value;
    if (root.isArray()) {
        QJsonArray array = root.toArray();
        const int index = path.first().toInt();
        while (array.size() <= index)
            array.append(QJsonObject());
        array.replace(index, edited(array.at(index), path.mid(1), value));
        return array;
    }
    QJsonObject object = root.toObject();
    object.insert(path.first(), edited(object.value(path.first()), path.mid(1), value));
    return object;
}

QByteArray toJson(const QJsonValue &root) {
    return QJsonDocument(root.toObject()).toJson();
}

QStringList linesOf(const QVector<ProjectIssue> &issues) {
    const QString text = formatProjectIssues(issues);
    return text.isEmpty() ? QStringList() : text.split('\n');
}

// A project on the disk: the clean one's files and the given document.
QStringList issuesOf(const QByteArray &document, const Files &files) {
    const ProjectFolder folder;
    for (const auto &file : cleanFiles + files)
        folder.write(file.first, file.second);
    return linesOf(validateProjectFile(folder.write("line.yslib", document)));
}

QByteArray inGbk(const QString &text) {
    return QTextCodec::codecForName("GBK")->fromUnicode(text);
}

} // namespace

Q_DECLARE_METATYPE(Files)

class ProjectValidatorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void documents_data();
    void documents();
    void projects_data();
    void projects();
    void scripts_data();
    void scripts();
    void textWithoutPath();
    void textWithoutFile();
    void noFile();
    void absolutePathThatExists();
    void driveLetterThatExists();
    void filesThatMayNotBeRead();
    void everyRuleInItsOrder();
    void linksOnTheDisk();
    void hugeFiles();
    void manyIssues();
    void twoThreadsAtOnce();
    void sourcesStandInForTheDisk();
    void errorsAndWarningsApart();
    void format();
};

void ProjectValidatorTest::init() {
    QVERIFY(support::loadScriptVocabulary());
}

// Whole documents: what cannot be read as a project at all, and every encoding.
void ProjectValidatorTest::documents_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QStringList>("expected");
    const QString invalid = QStringLiteral("[Error] yslib: JSON 无效：");
    const QString clean = QString::fromUtf8(cleanProject);
    const QString chinese = QString(clean).replace("\"Line\"", QStringLiteral("\"检测线\""));
    QTest::newRow("a clean project draws nothing") << QByteArray(cleanProject) << QStringList();
    QTest::newRow("an unknown key at the top is ignored")
        << QString(clean).replace("\"schemaVersion\"", "\"x\":[],\"schemaVersion\"").toUtf8()
        << QStringList();
    QTest::newRow("behind a byte-order mark")
        << QByteArray("\xEF\xBB\xBF") + chinese.toUtf8() << QStringList();
    QTest::newRow("Chinese in UTF-8") << chinese.toUtf8() << QStringList();
    QTest::newRow("Chinese in GBK") << inGbk(chinese) << QStringList();
    QTest::newRow("the last of two equal keys wins")
        << QString(clean).replace("\"name\": \"line\"", "\"name\":\"\", \"name\":\"x\"").toUtf8()
        << QStringList();
    QTest::newRow("the last of two equal keys wins, also where it is the wrong one")
        << QString(clean).replace("\"name\": \"line\"", "\"name\":\"x\", \"name\":\"\"").toUtf8()
        << QStringList(QStringLiteral("[Error] project.name: 缺少 project.name"));
    QTest::newRow("broken UTF-8 in a text is read as GBK and draws nothing")
        << clean.toUtf8().replace("\"Line\"", "\"\xC0\xC1\"") << QStringList();
    QTest::newRow("broken UTF-8 behind a byte-order mark draws nothing in a text")
        << "\xEF\xBB\xBF" + clean.toUtf8().replace("\"Line\"", "\"\xFF\"") << QStringList();
    QTest::newRow("an empty file") << QByteArray() << QStringList(invalid + "illegal value");
    QTest::newRow("no JSON") << QByteArray("hello") << QStringList(invalid + "illegal value");
    QTest::newRow("a broken end") << QByteArray("{\"a\":1")
                                  << QStringList(invalid + "invalid termination by number");
    QTest::newRow("text behind the end")
        << QByteArray("{} x") << QStringList(invalid + "garbage at the end of the document");
    QTest::newRow("an array at the root, with the parser's text for no error")
        << QByteArray("[]") << QStringList(invalid + "no error occurred");
    QTest::newRow("UTF-16 is not recognised")
        << QByteArray("\xFF\xFE{\0}\0", 6) << QStringList(invalid + "illegal value");
    QTest::newRow("NUL bytes") << QByteArray(1000, '\0') << QStringList(invalid + "illegal value");
    QTest::newRow("nested 100,000 deep")
        << QByteArray(100000, '[') << QStringList(invalid + "too deeply nested document");
    QTest::newRow("nested 100,000 deep below a key")
        << "{\"a\":" + QByteArray(100000, '[') + QByteArray(100000, ']') + "}"
        << QStringList(invalid + "too deeply nested document");
    QTest::newRow("an empty object draws every missing part")
        << QByteArray("{}")
        << QStringList({QStringLiteral("[Error] schemaVersion: 缺少 schemaVersion"),
                        QStringLiteral("[Error] project: 缺少 project 对象"),
                        QStringLiteral("[Error] scripts: scripts[] 至少包含一项"),
                        QStringLiteral("[Error] tasks: 缺少 tasks 对象")});
}

void ProjectValidatorTest::documents() {
    QFETCH(QByteArray, document);
    QFETCH(QStringList, expected);
    QCOMPARE(issuesOf(document, {}), expected);
}

// The clean project with one value replaced.
void ProjectValidatorTest::projects_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("json"); // empty removes the key
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const char *path, const QByteArray &json,
                        const QStringList &expected = QStringList()) {
        QTest::newRow(name) << path << json << expected;
    };
    const QString unsupported =
        QStringLiteral("[Error] schemaVersion: 不支持的 schemaVersion；期望值为 1");
    row("no schemaVersion", "schemaVersion", "",
        {QStringLiteral("[Error] schemaVersion: 缺少 schemaVersion")});
    row("schemaVersion 2", "schemaVersion", "2", {unsupported});
    row("schemaVersion 0", "schemaVersion", "0", {unsupported});
    row("schemaVersion 1.0 is 1", "schemaVersion", "1.0");
    row("schemaVersion 1.5 reads as 0", "schemaVersion", "1.5", {unsupported});
    row("schemaVersion as a text is unsupported and not missing", "schemaVersion", "\"1\"",
        {unsupported});
    row("schemaVersion null is unsupported and not missing", "schemaVersion", "null",
        {unsupported});
    row("schemaVersion true is unsupported", "schemaVersion", "true", {unsupported});

    const QString noProject = QStringLiteral("[Error] project: 缺少 project 对象");
    const QString noName = QStringLiteral("[Error] project.name: 缺少 project.name");
    const QString noDisplayName =
        QStringLiteral("[Error] project.displayName: 缺少 project.displayName");
    const QString noCreatedAt = QStringLiteral("[Error] project.createdAt: 缺少 project.createdAt");
    row("no project", "project", "", {noProject});
    row("an empty project", "project", "{}", {noProject});
    row("an array for the project", "project", "[1]", {noProject});
    row("a project with unknown keys alone", "project", "{\"x\":1}",
        {noName, noDisplayName, noCreatedAt});
    row("no name", "project.name", "", {noName});
    row("an empty name", "project.name", "\"\"", {noName});
    row("a blank name counts", "project.name", "\" \"");
    row("a number for a name", "project.name", "5", {noName});
    row("no display name", "project.displayName", "", {noDisplayName});
    row("no time of creation", "project.createdAt", "", {noCreatedAt});
    row("any text is a time of creation", "project.createdAt", "\"yesterday\"");
    row("any version will do", "project.version", "[1]");

    const QString noScripts = QStringLiteral("[Error] scripts: scripts[] 至少包含一项");
    const QString unknownMain = QStringLiteral("[Error] tasks.main.entryScriptId: entryScriptId "
                                               "'main' 未在 scripts[] 中登记");
    const QString unknownSub = QStringLiteral("[Error] tasks.subs[0].entryScriptId: entryScriptId "
                                              "'sub' 未在 scripts[] 中登记");
    row("no scripts: no entry is known, and no search runs", "scripts", "",
        {noScripts, unknownMain, unknownSub});
    row("an empty list of scripts", "scripts", "[]", {noScripts, unknownMain, unknownSub});
    row("an object for the scripts", "scripts", "{\"id\":\"main\"}",
        {noScripts, unknownMain, unknownSub});
    const QString mainUnlisted =
        QStringLiteral("[Warning] scripts: 磁盘上的脚本未登记到 scripts[]：main.ys");
    const QString subUnlisted =
        QStringLiteral("[Warning] scripts: 磁盘上的脚本未登记到 scripts[]：sub/sub.ys");
    row("an element of scripts that is no object", "scripts.0", "5",
        {QStringLiteral("[Error] scripts[0].id: 缺少 script id"),
         QStringLiteral("[Error] scripts[0].path: 缺少 script path"),
         QStringLiteral("[Error] scripts[0].role: 缺少 script role"), unknownMain, mainUnlisted});
    row("no script id", "scripts.0.id", "",
        {QStringLiteral("[Error] scripts[0].id: 缺少 script id"), unknownMain});
    row("two scripts of one id", "scripts.1.id", "\"main\"", {unknownSub});
    row("no script path", "scripts.1.path", "",
        {QStringLiteral("[Error] scripts[1].path: 缺少 script path"), subUnlisted});
    row("no paths at all: no search runs", "scripts",
        R"([{"id":"main","role":"main"},{"id":"sub","role":"sub"}])",
        {QStringLiteral("[Error] scripts[0].path: 缺少 script path"),
         QStringLiteral("[Error] scripts[1].path: 缺少 script path")});
    row("a script file that does not exist", "scripts.1.path", "\"sub/no.ys\"",
        {QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：sub/no.ys"), subUnlisted});
    row("a folder counts as existing", "scripts.1.path", "\"sub\"", {subUnlisted});
    row("a path that leads out of the folder, and does not end in .ys", "scripts.1.path", "\"../\"",
        {subUnlisted});
    row("a path that is not clean covers its file", "scripts.1.path", "\"./x/../sub//sub.ys\"",
        {QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：./x/../sub//sub.ys")});
    row("a path with ./ and ../ covers its file", "scripts.1.path", "\"./sub/../sub/sub.ys\"");
    row("a path with backslashes covers its file", "scripts.1.path", "\".\\\\sub\\\\sub.ys\"");
    row("a path of other case does not cover its file", "scripts.1.path", "\"sub/SUB.ys\"",
        {QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：sub/SUB.ys"), subUnlisted});
    row("a script listed twice", "scripts.2", R"({"id":"again","path":"main.ys","role":"module"})");
    const QString absolute =
        QStringLiteral("[Warning] scripts[1].path: path 疑似绝对路径；请使用相对 yslib 目录的路径");
    row("a path with a drive letter is warned of, and missing", "scripts.1.path",
        "\"C:\\\\proj\\\\a.ys\"",
        {absolute, QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：C:\\proj\\a.ys"),
         subUnlisted});
    row("a path that begins with a slash", "scripts.1.path", "\"/no/such/a.ys\"",
        {absolute, QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：/no/such/a.ys"),
         subUnlisted});
    row("a path that begins with a backslash", "scripts.1.path", "\"\\\\no.ys\"",
        {absolute, QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：\\no.ys"),
         subUnlisted});
    row("a path with :/ in its middle", "scripts.1.path", "\"ab:/a.ys\"",
        {absolute, QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：ab:/a.ys"),
         subUnlisted});
    row("a drive letter without a slash is relative", "scripts.1.path", "\"C:a.ys\"",
        {QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：C:a.ys"), subUnlisted});
    row("a path with a NUL", "scripts.1.path", "\"sub/sub.ys\\u0000\"",
        {QStringLiteral("[Error] scripts[1].path: 引用的文件不存在：sub/sub.ys") + QChar(0),
         subUnlisted});
    row("no role", "scripts.0.role", "",
        {QStringLiteral("[Error] scripts[0].role: 缺少 script role")});
    row("a role of other case", "scripts.0.role", "\"Main\"",
        {QStringLiteral("[Error] scripts[0].role: script role 必须为 main、sub 或 module")});
    row("an entry script of role module, and no script of role main", "scripts.0.role",
        "\"module\"");
    row("two scripts of one id that is still known", "scripts.2",
        R"({"id":"main","path":"sub/sub.ys","role":"module"})");
    row("a script that does not end in .ys", "scripts.2",
        R"({"id":"a","path":"data.json","role":"module"})");

    const QString noTasks = QStringLiteral("[Error] tasks: 缺少 tasks 对象");
    const QString noMain = QStringLiteral("[Error] tasks.main: 缺少 tasks.main");
    const QString noMainEntry =
        QStringLiteral("[Error] tasks.main.entryScriptId: 缺少 entryScriptId");
    row("no tasks", "tasks", "", {noTasks});
    row("empty tasks", "tasks", "{}", {noTasks});
    row("no main task; the sub tasks are looked at all the same", "tasks",
        R"({"subs":[{"entryScriptId":"x"}]})",
        {noMain, QStringLiteral("[Error] tasks.subs[0].entryScriptId: entryScriptId 'x' 未在 "
                                "scripts[] 中登记")});
    row("an empty main task", "tasks.main", "{}", {noMain});
    row("a main task without an entry", "tasks.main", "{\"x\":1}", {noMainEntry});
    row("a number for an entry", "tasks.main.entryScriptId", "1", {noMainEntry});
    row("an unknown entry", "tasks.main.entryScriptId", "\"x\"",
        {QStringLiteral(
            "[Error] tasks.main.entryScriptId: entryScriptId 'x' 未在 scripts[] 中登记")});
    row("an unknown entry with a placeholder in it", "tasks.main.entryScriptId", "\"%1\"",
        {QStringLiteral(
            "[Error] tasks.main.entryScriptId: entryScriptId '%1' 未在 scripts[] 中登记")});
    row("ids are compared with case", "tasks.main.entryScriptId", "\"Main\"",
        {QStringLiteral(
            "[Error] tasks.main.entryScriptId: entryScriptId 'Main' 未在 scripts[] 中登记")});
    row("no sub tasks", "tasks.subs", "");
    row("an object for the sub tasks", "tasks.subs", "{\"a\":1}");
    row("two sub tasks of one script", "tasks.subs.1", "{\"entryScriptId\":\"sub\"}");
    row("a sub task that is no object", "tasks.subs.1", "5",
        {QStringLiteral("[Error] tasks.subs[1].entryScriptId: 缺少 entryScriptId")});
    row("an unknown entry of a sub task", "tasks.subs.1", "{\"entryScriptId\":\"x\"}",
        {QStringLiteral(
            "[Error] tasks.subs[1].entryScriptId: entryScriptId 'x' 未在 scripts[] 中登记")});
    const auto badGlobal = [](const QString &name) {
        return QStringLiteral("[Warning] tasks.subs[0].writesGlobals: writesGlobals 项 '%1' 不符合 "
                              "{camId}_{metric} 命名")
            .arg(name);
    };
    row("written globals that follow the rule", "tasks.subs.0.writesGlobals",
        R"(["cam1_width","cam_1","a_b_c","1_2","A__"])");
    row("written globals that break the rule, each for itself", "tasks.subs.0.writesGlobals",
        R"(["cam1","_width","cam1_","cam-1_width","cam1_w","","a b_c"])",
        {badGlobal("cam1"), badGlobal("_width"), badGlobal("cam1_"), badGlobal("cam-1_width"),
         badGlobal(""), badGlobal("a b_c")});
    row("a written global beyond ASCII", "tasks.subs.0.writesGlobals",
        QStringLiteral("[\"相机_宽\",\"cam1_\u0661\"]").toUtf8(),
        {badGlobal(QStringLiteral("相机_宽")), badGlobal(QStringLiteral("cam1_\u0661"))});
    row("a written global with a line feed at its end passes", "tasks.subs.0.writesGlobals",
        R"(["cam1_width\n"])");
    // The format above splits at line feeds, so this name shows as three lines.
    row("a written global with two line feeds at its end does not", "tasks.subs.0.writesGlobals",
        R"(["cam1_width\n\n"])", badGlobal("cam1_width\n\n").split('\n'));
    row("written globals that are no texts are passed over", "tasks.subs.0.writesGlobals",
        R"([5,null,["cam1"],{"a":"cam1"},true])");
    row("a text for the written globals is passed over", "tasks.subs.0.writesGlobals", "\"cam1\"");

    row("no hardware", "hardware", "");
    row("hardware without cameras", "hardware", "{\"x\":1}");
    row("an empty hardware", "hardware", "{}");
    row("a camera that is no object", "hardware.cameras.1", "5",
        {QStringLiteral("[Error] hardware.cameras[1].id: 缺少 camera id"),
         QStringLiteral("[Error] hardware.cameras[1].driver: 缺少 camera driver")});
    row("no camera id", "hardware.cameras.0.id", "",
        {QStringLiteral("[Error] hardware.cameras[0].id: 缺少 camera id")});
    row("no camera driver", "hardware.cameras.0.driver", "",
        {QStringLiteral("[Error] hardware.cameras[0].driver: 缺少 camera driver")});
    row("a camera without files", "hardware.cameras.0", R"({"id":"a","driver":"b"})");
    row("camera files that are missing, in the order of the keys", "hardware.cameras.0",
        R"({"id":"a","driver":"b","roiPath":"r","configPath":"c","calibPath":"k"})",
        {QStringLiteral("[Error] hardware.cameras[0].configPath: 引用的文件不存在：c"),
         QStringLiteral("[Error] hardware.cameras[0].calibPath: 引用的文件不存在：k"),
         QStringLiteral("[Error] hardware.cameras[0].roiPath: 引用的文件不存在：r")});

    row("no models", "models", "");
    row("empty models", "models", "{}");
    row("no runner", "models.runner", "");
    row("a runner that is missing", "models.runner", "\"no.json\"",
        {QStringLiteral("[Error] models.runner: 引用的文件不存在：no.json")});
    row("no model configurations", "models.configs", "");
    row("a model configuration without a path", "models.configs.0", "{\"x\":1}",
        {QStringLiteral("[Error] models.configs[0].configPath: 缺少 path")});
    row("a model configuration that is no object", "models.configs.0", "null",
        {QStringLiteral("[Error] models.configs[0].configPath: 缺少 path")});
    row("a model configuration that is missing", "models.configs.0.configPath", "\"no.json\"",
        {QStringLiteral("[Error] models.configs[0].configPath: 引用的文件不存在：no.json")});

    const QString aggregate = QStringLiteral(
        "[Warning] processGroups[1]: 不支持 aggregate 字段 (T9:A)；请使用 main 任务脚本");
    row("no process groups", "processGroups", "");
    row("an aggregate", "processGroups.1", R"({"aggregate":{"a":1}})", {aggregate});
    row("an aggregate of null counts as present", "processGroups.1", R"({"aggregate":null})",
        {aggregate});
    row("a process group that is no object", "processGroups.1", "\"aggregate\"");
}

void ProjectValidatorTest::projects() {
    QFETCH(QString, path);
    QFETCH(QByteArray, json);
    QFETCH(QStringList, expected);
    if (support::onWindows && (json.contains("SUB.ys") || json.contains("./x/../")))
        QSKIP("Windows takes any case, and does not ask for the folder in front of ..");
    const QJsonValue value = json.isEmpty() ? QJsonValue(QJsonValue::Undefined) : parsed(json);
    const QJsonValue root = edited(parsed(cleanProject), path.split('.'), value);
    QCOMPARE(issuesOf(toJson(root), {}), expected);
}

// The clean project with files added or replaced.
void ProjectValidatorTest::scripts_data() {
    QTest::addColumn<Files>("files");
    QTest::addColumn<QStringList>("expected");
    const auto unlisted = [](const QString &path) {
        return QStringLiteral("[Warning] scripts: 磁盘上的脚本未登记到 scripts[]：") + path;
    };
    const auto badGlobal = [](const QString &name) {
        return QStringLiteral("[Warning] sub/sub.ys: global 变量 '%1' 不符合 {camId}_{metric} 命名")
            .arg(name);
    };
    const QString cycle = QStringLiteral("[Error] scripts: 检测到 import 循环依赖");
    QTest::newRow("a script in a sub-folder that is not registered")
        << Files({{"sub/other.ys", ""}}) << QStringList(unlisted("sub/other.ys"));
    QTest::newRow("the search takes any case of .ys")
        << Files({{"OTHER.YS", ""}}) << QStringList(unlisted("OTHER.YS"));
    QTest::newRow("the registry does not cover another case")
        << Files({{"Main.ys", ""}}) << QStringList(unlisted("Main.ys"));
    QTest::newRow("other files are no scripts")
        << Files({{"a.ysx", ""}, {"ys", ""}, {"a.ys.bak", ""}}) << QStringList();
    QTest::newRow("hidden files and folders are not searched")
        << Files({{".hidden.ys", ""}, {".git/a.ys", ""}}) << QStringList();
    QTest::newRow("a folder named like a script is searched and is none itself")
        << Files({{"x.ys/y.ys", ""}}) << QStringList(unlisted("x.ys/y.ys"));

    QTest::newRow("a global that follows the rule")
        << Files({{"sub/sub.ys", "global float cam2_height;"}}) << QStringList();
    QTest::newRow("globals that break the rule, in the order of the text")
        << Files({{"sub/sub.ys", "global int width;\nglobal bool _a;\nglobal char x_;\n"}})
        << QStringList({badGlobal("width"), badGlobal("_a"), badGlobal("x_")});
    QTest::newRow("the same name twice is two issues")
        << Files({{"sub/sub.ys", "global int w;\nglobal int w;"}})
        << QStringList({badGlobal("w"), badGlobal("w")});
    QTest::newRow("a type that the scan does not know is not seen")
        << Files({{"sub/sub.ys", "global double width;"}}) << QStringList();
    QTest::newRow("a global without a type is not seen")
        << Files({{"sub/sub.ys", "global width;"}}) << QStringList();
    QTest::newRow("a declaration in a comment or in a string counts")
        << Files({{"sub/sub.ys", "// global int a;\nx = \"global string b\";"}})
        << QStringList({badGlobal("a"), badGlobal("b")});
    QTest::newRow("a declaration inside a function counts for the rule on names")
        << Files({{"sub/sub.ys", "function f() {\nglobal int a;\n}\n"}})
        << QStringList(badGlobal("a"));
    QTest::newRow("a declaration over two lines counts")
        << Files({{"sub/sub.ys", "x = 1; // global\nint\r\n\tw"}}) << QStringList(badGlobal("w"));
    QTest::newRow("the word alone counts")
        << Files({{"sub/sub.ys", "x = 1; //myglobal int a; my_global int b; my-global int c;"}})
        << QStringList(badGlobal("c"));
    QTest::newRow("a name ends where ASCII ends")
        << Files({{"sub/sub.ys", QStringLiteral("global int 检;\nglobal int cam1_w检;\nglobal int "
                                                "cam检;\n")
                                     .toUtf8()}})
        << QStringList(badGlobal("cam"));

    QTest::newRow("a script that does not parse draws nothing")
        << Files({{"sub/sub.ys", "} else @"}}) << QStringList();
    QTest::newRow("a bad name in a script that does not parse counts")
        << Files({{"sub/sub.ys", "} global int w;"}}) << QStringList(badGlobal("w"));
    QTest::newRow("a cycle of imports")
        << Files({{"sub/sub.ys", "import \"../main.ys\";"}}) << QStringList(cycle);
    QTest::newRow("a cycle in a script that does not parse is not seen")
        << Files({{"sub/sub.ys", "import \"../main.ys\";\n}"}}) << QStringList();
    QTest::newRow("an import of a script that does not exist draws nothing")
        << Files({{"sub/sub.ys", "import \"no.ys\";"}}) << QStringList();
    const QString twice = QStringLiteral(
        "[Error] scripts: 跨脚本 global 'cam1_width' 重复定义：main.ys:2, sub/sub.ys:1");
    QTest::newRow("a global that two scripts declare")
        << Files({{"sub/sub.ys", "global int cam1_width;"}}) << QStringList(twice);
    QTest::newRow("names first, then the cycle, then the duplicates")
        << Files({{"sub/sub.ys", "global int cam1_width; global int w;\nimport \"../main.ys\";"}})
        << QStringList({badGlobal("w"), cycle, twice});

    QTest::newRow("a script in GBK")
        << Files({{"sub/sub.ys", inGbk(QStringLiteral("// 检测线\nglobal int w;"))}})
        << QStringList(badGlobal("w"));
    QTest::newRow("a script in UTF-16 is not recognised")
        << Files({{"sub/sub.ys", QByteArray("\xFF\xFEg\0l\0o\0", 8)}}) << QStringList();
    QTest::newRow("a script of NUL bytes")
        << Files({{"sub/sub.ys", QByteArray(1000, '\0')}}) << QStringList();
    QTest::newRow("a script nested 100,000 deep")
        << Files({{"sub/sub.ys", QByteArray(100000, '(') + "\nglobal int w;"}})
        << QStringList(badGlobal("w"));
}

void ProjectValidatorTest::scripts() {
    QFETCH(Files, files);
    QFETCH(QStringList, expected);
    if (support::onWindows && files.contains({QStringLiteral("Main.ys"), QByteArray()}))
        QSKIP("Windows takes Main.ys for main.ys");
    QCOMPARE(issuesOf(cleanProject, files), expected);
}

// The one way to an empty path: a file without a path cannot be read in the first place.
void ProjectValidatorTest::textWithoutPath() {
    const QString text = QString::fromUtf8(cleanProject);
    QCOMPARE(linesOf(validateProjectText(text, QString())),
             QStringList(QStringLiteral("[Error] yslib: 无效的 yslib 路径：")));
    QCOMPARE(linesOf(validateProjectText(QStringLiteral("no JSON"), QStringLiteral(""))),
             QStringList(QStringLiteral("[Error] yslib: 无效的 yslib 路径：")));
    const QStringList unreadable = linesOf(validateProjectFile(QString()));
    QCOMPARE(unreadable.size(), 1);
    QVERIFY(unreadable.first().startsWith(QStringLiteral("[Error] yslib: 无法读取 yslib：")));
}

void ProjectValidatorTest::textWithoutFile() {
    const ProjectFolder folder;
    for (const auto &file : cleanFiles)
        folder.write(file.first, file.second);
    QCOMPARE(linesOf(validateProjectText(QString::fromUtf8(cleanProject), folder.path())),
             QStringList());
}

void ProjectValidatorTest::noFile() {
    const ProjectFolder folder;
    folder.write("folder.yslib/inside", "");
    for (const QString &name : {QStringLiteral("missing.yslib"), QStringLiteral("folder.yslib")}) {
        QFile file(folder.path(name));
        QVERIFY(!file.open(QIODevice::ReadOnly));
        QCOMPARE(
            linesOf(validateProjectFile(folder.path(name))),
            QStringList(QStringLiteral("[Error] yslib: 无法读取 yslib：") + file.errorString()));
    }
}

void ProjectValidatorTest::filesThatMayNotBeRead() {
    if (!support::permissionsKeepOut())
        QSKIP("root reads every file, and on Windows no permission closes one");
    const ProjectFolder folder;
    for (const auto &file : cleanFiles)
        folder.write(file.first, file.second);
    const QString project = folder.write("line.yslib", cleanProject);
    folder.write("sub/sub.ys", "import \"../main.ys\"; global int w;");
    QVERIFY(QFile::setPermissions(folder.path("sub/sub.ys"), {}));
    QCOMPARE(linesOf(validateProjectFile(project)), QStringList());
    QVERIFY(QFile::setPermissions(project, {}));
    QVERIFY(formatProjectIssues(validateProjectFile(project))
                .startsWith(QStringLiteral("[Error] yslib: 无法读取 yslib：")));
}

void ProjectValidatorTest::absolutePathThatExists() {
    const ProjectFolder elsewhere;
    const QString path = elsewhere.write("a.ys", "global int w;");
    const QJsonValue root = edited(parsed(cleanProject), {"scripts", "2"},
                                   QJsonObject{{"id", "a"}, {"path", path}, {"role", "sub"}});
    QCOMPARE(issuesOf(toJson(root), {}),
             QStringList(
                 {QStringLiteral(
                      "[Warning] scripts[2].path: path 疑似绝对路径；请使用相对 yslib 目录的路径"),
                  QStringLiteral("[Warning] %1: global 变量 'w' 不符合 {camId}_{metric} 命名")
                      .arg(path)}));
}

// Only Windows reads the name as an absolute path; the warning is the same everywhere.
void ProjectValidatorTest::driveLetterThatExists() {
    if (support::onWindows)
        QSKIP("no file of a folder can have such a name on Windows");
    const QJsonValue root =
        edited(parsed(cleanProject), {"scripts", "2"},
               QJsonObject{{"id", "a"}, {"path", "C:\\proj\\a.ys"}, {"role", "sub"}});
    const QStringList expected(QStringLiteral(
        "[Warning] scripts[2].path: path 疑似绝对路径；请使用相对 yslib 目录的路径"));
    QCOMPARE(issuesOf(toJson(root), {{"C:\\proj\\a.ys", ""}}), expected);
    QCOMPARE(issuesOf(toJson(root), {{"C:/proj/a.ys", ""}}), expected);
}

void ProjectValidatorTest::everyRuleInItsOrder() {
    const QByteArray document = R"({
        "schemaVersion": 2,
        "project": {"x": 1},
        "scripts": [{"path": "/no.ys", "role": "x"}, {"id": "a", "path": "main.ys"},
                    {"id": "b", "path": "sub/sub.ys", "role": "sub"}],
        "tasks": {"main": {"x": 1}, "subs": [{"entryScriptId": "c", "writesGlobals": ["w"]}]},
        "hardware": {"cameras": [{"configPath": "/c", "roiPath": "r"}]},
        "models": {"runner": "no", "configs": [{}]},
        "processGroups": [{"aggregate": 1}]
    })";
    const QString absolute = QStringLiteral("path 疑似绝对路径；请使用相对 yslib 目录的路径");
    const QStringList expected = {
        QStringLiteral("[Error] schemaVersion: 不支持的 schemaVersion；期望值为 1"),
        QStringLiteral("[Error] project.name: 缺少 project.name"),
        QStringLiteral("[Error] project.displayName: 缺少 project.displayName"),
        QStringLiteral("[Error] project.createdAt: 缺少 project.createdAt"),
        QStringLiteral("[Error] scripts[0].id: 缺少 script id"),
        QStringLiteral("[Warning] scripts[0].path: ") + absolute,
        QStringLiteral("[Error] scripts[0].path: 引用的文件不存在：/no.ys"),
        QStringLiteral("[Error] scripts[0].role: script role 必须为 main、sub 或 module"),
        QStringLiteral("[Error] scripts[1].role: 缺少 script role"),
        QStringLiteral("[Error] tasks.main.entryScriptId: 缺少 entryScriptId"),
        QStringLiteral("[Error] tasks.subs[0].entryScriptId: entryScriptId 'c' 未在 scripts[] "
                       "中登记"),
        QStringLiteral("[Warning] tasks.subs[0].writesGlobals: writesGlobals 项 'w' 不符合 "
                       "{camId}_{metric} 命名"),
        QStringLiteral("[Error] hardware.cameras[0].id: 缺少 camera id"),
        QStringLiteral("[Error] hardware.cameras[0].driver: 缺少 camera driver"),
        QStringLiteral("[Warning] hardware.cameras[0].configPath: ") + absolute,
        QStringLiteral("[Error] hardware.cameras[0].configPath: 引用的文件不存在：/c"),
        QStringLiteral("[Error] hardware.cameras[0].roiPath: 引用的文件不存在：r"),
        QStringLiteral("[Error] models.runner: 引用的文件不存在：no"),
        QStringLiteral("[Error] models.configs[0].configPath: 缺少 path"),
        QStringLiteral("[Warning] scripts: 磁盘上的脚本未登记到 scripts[]：other.ys"),
        QStringLiteral(
            "[Warning] processGroups[0]: 不支持 aggregate 字段 (T9:A)；请使用 main 任务脚本"),
        QStringLiteral("[Warning] sub/sub.ys: global 变量 'w' 不符合 {camId}_{metric} 命名"),
        QStringLiteral("[Error] scripts: 检测到 import 循环依赖"),
        QStringLiteral(
            "[Error] scripts: 跨脚本 global 'cam1_width' 重复定义：main.ys:2, sub/sub.ys:1")};
    const Files files = {
        {"other.ys", ""},
        {"sub/sub.ys", "global int cam1_width; global int w;\nimport \"../main.ys\";"}};
    QCOMPARE(issuesOf(document, files), expected);
}

void ProjectValidatorTest::linksOnTheDisk() {
    if (support::onWindows)
        QSKIP("Qt makes shortcuts there, which are no links");
    const ProjectFolder folder;
    for (const auto &file : cleanFiles)
        folder.write(file.first, file.second);
    const ProjectFolder elsewhere;
    elsewhere.write("other.ys", "");
    // Neither a loop of folders nor a folder elsewhere is entered; a link to nothing is no file.
    QVERIFY(QFile::link(folder.path(""), folder.path("loop")));
    QVERIFY(QFile::link(elsewhere.path(""), folder.path("elsewhere")));
    QVERIFY(QFile::link(folder.path("self.ys"), folder.path("self.ys")));
    const QString project = folder.write("line.yslib", cleanProject);
    QCOMPARE(linesOf(validateProjectFile(project)), QStringList());
    // A registered link that leads nowhere is a file that does not exist.
    const QJsonValue root = edited(parsed(cleanProject), {"scripts", "2"},
                                   QJsonObject{{"id", "a"}, {"path", "self.ys"}, {"role", "sub"}});
    QCOMPARE(linesOf(validateProjectText(QString::fromUtf8(toJson(root)), project)),
             QStringList(QStringLiteral("[Error] scripts[2].path: 引用的文件不存在：self.ys")));
    // So is the project file itself.
    QVERIFY(QFile::link(folder.path("self.yslib"), folder.path("self.yslib")));
    QVERIFY(formatProjectIssues(validateProjectFile(folder.path("self.yslib")))
                .startsWith(QStringLiteral("[Error] yslib: 无法读取 yslib：")));
}

// More text than one string can hold, and more bytes than one array can.
void ProjectValidatorTest::hugeFiles() {
    constexpr qint64 gigabyte = 1LL << 30;
    const ProjectFolder folder;
    for (const qint64 size : {gigabyte, 3 * gigabyte})
        QCOMPARE(linesOf(validateProjectFile(folder.writeZeros("huge.yslib", size))),
                 QStringList(QStringLiteral("[Error] yslib: 无法读取 yslib：") + outOfMemory));
    for (const auto &file : cleanFiles)
        folder.write(file.first, file.second);
    folder.writeZeros("sub/sub.ys", gigabyte);
    QCOMPARE(linesOf(validateProjectFile(folder.write("line.yslib", cleanProject))), QStringList());
}

void ProjectValidatorTest::manyIssues() {
    QJsonArray scripts;
    for (int i = 0; i < 1000; ++i)
        scripts.append(i);
    const QJsonValue root = edited(parsed(cleanProject), {"scripts"}, scripts);
    const QStringList issues = issuesOf(toJson(root), {});
    QCOMPARE(issues.size(), 3002);
    QCOMPARE(issues.at(2999), QStringLiteral("[Error] scripts[999].role: 缺少 script role"));
}

// The check before a start and the check of an update may meet.
void ProjectValidatorTest::twoThreadsAtOnce() {
    const ProjectFolder folder;
    for (const auto &file : cleanFiles)
        folder.write(file.first, file.second);
    folder.write("sub/sub.ys", "global int cam1_width; global int w;");
    const QString project = folder.write("line.yslib", cleanProject);
    std::array<QString, 4> found;
    std::vector<std::unique_ptr<QThread>> threads;
    for (QString &text : found) {
        threads.emplace_back(QThread::create(
            [&text, &project] { text = formatProjectIssues(validateProjectFile(project)); }));
        threads.back()->start();
    }
    for (const auto &thread : threads)
        QVERIFY(thread->wait());
    for (const QString &text : found)
        QCOMPARE(text, formatProjectIssues(validateProjectFile(project)));
    QCOMPARE(found.front().count('\n'), 1);
}

// A text that is not saved counts; whether its file is there is asked of the disk all the same. Each file
// is asked for once.
void ProjectValidatorTest::sourcesStandInForTheDisk() {
    const ProjectFolder folder;
    for (const auto &file : cleanFiles)
        folder.write(file.first, file.second);
    QStringList asked;
    ProjectSources sources;
    sources.scriptAt = [&](const QString &file) {
        asked.append(file);
        if (file != folder.path("main.ys"))
            return ScriptContent();
        return ScriptContent{{{file}, {{"w", 1}}}, {{"w", 11}, {"h", 30}}};
    };
    sources.scriptsBelow = [&](const QString &of) {
        asked.append(of);
        return QStringList{folder.path("main.ys"), folder.path("sub/../other.ys")};
    };
    const QString text = QString::fromUtf8(cleanProject).replace("data.json", "gone.json");
    QCOMPARE(linesOf(validateProjectText(text, folder.path(), sources)),
             QStringList({"[Error] hardware.cameras[0].configPath: 引用的文件不存在：gone.json",
                          "[Error] models.runner: 引用的文件不存在：gone.json",
                          "[Error] models.configs[0].configPath: 引用的文件不存在：gone.json",
                          "[Warning] scripts: 磁盘上的脚本未登记到 scripts[]：other.ys",
                          "[Warning] main.ys: global 变量 'w' 不符合 {camId}_{metric} 命名",
                          "[Warning] main.ys: global 变量 'h' 不符合 {camId}_{metric} 命名",
                          "[Error] scripts: 检测到 import 循环依赖"}));
    QCOMPARE(asked, QStringList({folder.path("main.ys"), folder.path("sub/sub.ys"),
                                 QDir(folder.path("")).path()}));
}

void ProjectValidatorTest::errorsAndWarningsApart() {
    const QVector<ProjectIssue> warnings{{1, "%2", "%1"}, {1, "", "d"}};
    const QVector<ProjectIssue> both{{1, "%2", "%1"}, {0, "", "c"}, {1, "", "d"}, {0, "a", "b"}};
    QCOMPARE(errorLines(both), QStringList({"[Error] c", "[Error] a: b"}));
    QCOMPARE(warningLines(both), QStringList({"[Warning] %2: %1", "[Warning] d"}));
    QCOMPARE(errorLines(warnings), QStringList());
    QVERIFY(hasErrors(both));
    QVERIFY(!hasErrors(warnings));
    QVERIFY(!hasErrors({}));
}

void ProjectValidatorTest::format() {
    QCOMPARE(formatProjectIssues({}), QString());
    QCOMPARE(formatProjectIssues({{0, "a", "b"}}), QStringLiteral("[Error] a: b"));
    QCOMPARE(formatProjectIssues({{1, "%2", "%1"}, {0, "", "c %1"}, {1, "", "d"}}),
             QStringLiteral("[Warning] %2: %1\n[Error] c %1\n[Warning] d"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectValidatorTest)
#include "project_validator_test.moc"
