// What the validator finds in a project.
#include "quorvanectl/log/known_lines.h"

#include <iterator>

namespace ctl {
namespace {

constexpr KnownLine fileRows[] = {
    {LineKind::Tells, "无法读取 yslib：%1", "", "The project file cannot be read.",
     "Check the file and its rights; after an update, `quorvanectl project recover`.",
     "项目文件无法读取。", "检查文件及其权限；如果刚更新过，使用 `quorvanectl project recover`。"},
    {LineKind::Tells, "无效的 yslib 路径：%1", "", "The path names no file.",
     "Choose another project.", "路径没有指向文件。", "改选其他项目。"},
    {LineKind::Tells, "JSON 无效：%1", "", "The file is not JSON; the reason follows.",
     "Take it from a copy; after an update, `quorvanectl project recover`.",
     "文件不是 JSON；后面是原因。",
     "从副本中取回；如果刚更新过，使用 `quorvanectl project recover`。"},
    {LineKind::Tells, "缺少 schemaVersion", "", "The key is missing.", "Write 1.", "缺少该键。",
     "写入 1。"},
    {LineKind::Tells, "不支持的 schemaVersion；期望值为 1", "",
     "The file has a format that this launcher does not know.",
     "Use the launcher that fits the project.", "文件格式是此启动器不认识的版本。",
     "使用与项目匹配的启动器。"},
    {LineKind::Tells, "缺少 project 对象", "", "The key `project` is missing.", "Write it.",
     "缺少 `project` 键。", "补上。"},
    {LineKind::Tells, "缺少 project.name", "", "The name is missing.", "Write it.", "缺少名称。",
     "补上。"},
    {LineKind::Tells, "缺少 project.displayName", "", "The name for people is missing.",
     "Write it.", "缺少显示名称。", "补上。"},
    {LineKind::Tells, "缺少 project.createdAt", "", "The time of creation is missing.", "Write it.",
     "缺少创建时间。", "补上。"},
    {LineKind::Tells, "Core plugin missing: %1", "",
     "`CoreOperators.dll` is not in the plug-in folder.", "Repair the runtime's installation.",
     "插件文件夹中没有 `CoreOperators.dll`。", "修复 Runtime 的安装。"},
};

constexpr KnownLine entryRows[] = {
    {LineKind::Tells, "scripts[] 至少包含一项", "", "No script is registered.",
     "Register the main script.", "没有登记任何脚本。", "登记主脚本。"},
    {LineKind::Tells, "缺少 script id", "", "A script has no `id`.", "Write it.",
     "某个脚本没有 `id`。", "补上。"},
    {LineKind::Tells, "缺少 script path", "", "A script has no `path`.", "Write it.",
     "某个脚本没有 `path`。", "补上。"},
    {LineKind::Tells, "缺少 script role", "", "A script has no `role`.",
     "Write main, sub or module.", "某个脚本没有 `role`。", "写入 main、sub 或 module。"},
    {LineKind::Tells, "script role 必须为 main、sub 或 module", "", "Another role.",
     "Write main, sub or module.", "角色不在允许范围内。", "写入 main、sub 或 module。"},
    {LineKind::Tells, "缺少 tasks 对象", "", "The key `tasks` is missing.", "Write it.",
     "缺少 `tasks` 键。", "补上。"},
    {LineKind::Tells, "缺少 tasks.main", "", "The main task is missing.", "Write it.",
     "缺少主任务。", "补上。"},
    {LineKind::Tells, "缺少 entryScriptId", "", "A task names no script.",
     "Write the script's `id`.", "某个任务没有指定脚本。", "写入脚本的 `id`。"},
    {LineKind::Tells, "entryScriptId '%1' 未在 scripts[] 中登记", "",
     "A task names a script that is not registered.", "Register it, or correct the `id`.",
     "某个任务指定的脚本没有登记。", "登记该脚本，或改正 `id`。"},
    {LineKind::Tells, "缺少 camera id", "", "A camera has no `id`.", "Write it.",
     "某个相机没有 `id`。", "补上。"},
    {LineKind::Tells, "缺少 camera driver", "", "A camera has no `driver`.", "Write it.",
     "某个相机没有 `driver`。", "补上。"},
    {LineKind::Tells, "缺少 path", "", "A path is missing.", "Write it.", "缺少路径。", "补上。"},
    {LineKind::Tells, "path 疑似绝对路径；请使用相对 yslib 目录的路径", "",
     "A path looks absolute (a warning).", "Make it relative to the project file.",
     "路径看起来是绝对路径（警告）。", "改为相对于项目文件的路径。"},
    {LineKind::Tells, "引用的文件不存在：%1", "", "A file that the project names is missing.",
     "Put it back; check the case of its letters.", "项目引用的文件不存在。",
     "放回该文件；检查字母的大小写。"},
    {LineKind::Tells, "writesGlobals 项 '%1' 不符合 {camId}_{metric} 命名", "",
     "A name does not follow the rule (a warning).", "Rename it.", "名称不符合规则（警告）。",
     "改名。"},
    {LineKind::Tells, "不支持 aggregate 字段 (T9:A)；请使用 main 任务脚本", "",
     "An old key (a warning).", "Move it to the main script.", "旧的键（警告）。",
     "移到主脚本中。"},
};

constexpr KnownLine scriptRows[] = {
    {LineKind::Tells, "磁盘上的脚本未登记到 scripts[]：%1", "",
     "A script lies beside the project and is not registered (a warning).",
     "Register or remove it.", "项目旁边有脚本没有登记（警告）。", "登记或删除。"},
    {LineKind::Tells, "global 变量 '%1' 不符合 {camId}_{metric} 命名", "",
     "A global's name does not follow the rule (a warning).", "Rename it.",
     "全局变量的名称不符合规则（警告）。", "改名。"},
    {LineKind::Tells, "检测到 import 循环依赖", "", "Scripts import each other in a ring.",
     "Break the ring.", "脚本之间循环导入。", "打破循环。"},
    {LineKind::Tells, "跨脚本 global '%1' 重复定义：%2", "", "Two scripts define the same global.",
     "Rename one.", "两个脚本定义了同一个全局变量。", "将其中一个改名。"},
};

} // namespace

KnownTable projectFileTable() {
    return {TableKind::Findings, "The file as a whole", fileRows, int(std::size(fileRows))};
}

KnownTable projectEntriesTable() {
    return {TableKind::Findings, "Its entries", entryRows, int(std::size(entryRows))};
}

KnownTable projectScriptsTable() {
    return {TableKind::Findings, "Across its scripts", scriptRows, int(std::size(scriptRows))};
}

} // namespace ctl
