// Why the target was not started, and why a project was not updated.
#include "quorvanectl/log/known_lines.h"

#include <iterator>

namespace ctl {
namespace {

constexpr KnownLine targetRows[] = {
    {LineKind::StartFailed,
     "LineRunner.exe not found in %1.\nProduction layout requires Runtime (R2). Install Runtime "
     "beside Launcher.",
     "", "The runtime is not in the folder of the launcher.",
     "Run the installer of the Runtime. Check that nobody moved `LineRunner.exe`, and that no "
     "virus scanner took it.",
     "启动器所在的文件夹中没有 Runtime。",
     "运行 Runtime 的安装程序。检查 `LineRunner.exe` 是否被移走，或被杀毒软件隔离。"},
    {LineKind::StartFailed,
     "LineRunner.exe not found in %1.\nSet QUORVANE_DEV=1 to allow Ops fallback, or build from "
     "repository layout (auto-fallback).",
     "", "The editor is there, the runtime is not.",
     "Install the runtime; on a developer's machine, set the variable.",
     "有编辑器，但没有 Runtime。", "安装 Runtime；在开发者的电脑上可设置该变量。"},
    {LineKind::StartFailed,
     "Neither LineRunner.exe nor LineStudio.exe was found in %1.\nBuild the app target, then run "
     "scripts\\deploy_bin.ps1 before testing from bin\\.",
     "", "A source tree without programs.", "Build them.", "源代码目录中没有程序。",
     "构建这些程序。"},
    {LineKind::StartFailed, "Failed to start %1: %2", "",
     "The system could not start it within five seconds; `%2` is the system's reason.",
     "Check rights, a virus scanner, missing libraries: start the program by hand.",
     "系统在五秒内没有启动它；`%2` 是系统给出的原因。",
     "检查权限、杀毒软件和缺少的库：请手动运行该程序。"},
    {LineKind::StartFailed, "未选择 yslib 项目。",
     "No project is chosen. Press \"Choose project…\" and pick one.", "There is no project.",
     "Choose one.", "没有项目。", "选择一个项目。"},
};

constexpr KnownLine packageRows[] = {
    {LineKind::UpdateFailed, "cancelled", "", "The user cancelled.", "None.", "用户取消。",
     "无需处理。"},
    {LineKind::UpdateFailed, "No cached manifest for apply.", "", "There is no update any more.",
     "Look for updates again.", "已经没有可用的更新。", "重新查找更新。"},
    {LineKind::UpdateFailed, "Apply pre-check signature failed: %1", "",
     "The signature no longer fits: the key file was changed after the check.",
     "See \"Signatures and hashes\".", "签名不再相符：检查之后密钥文件被改动。",
     "见“签名与哈希”。"},
    {LineKind::UpdateFailed, "Unable to resolve update zip: %1", "",
     "The package could not be read or downloaded; the reason follows.",
     "See the next two and \"The network\".", "更新包无法读取或下载；后面是原因。",
     "见下面两条和“网络”。"},
    {LineKind::UpdateFailed, "zipUrl is empty", "", "The record names no package.",
     "Tell the publisher.", "清单没有写出更新包。", "告知发布方。"},
    {LineKind::UpdateFailed, "update zip not found: %1", "",
     "The package is not on the stick, or the stick was pulled.",
     "Copy the stick again; leave it in.", "更新包不在 U 盘上，或者 U 盘已拔下。",
     "重新复制 U 盘，并保持插入。"},
    {LineKind::UpdateFailed, "zipSha256 is required in manifest.", "", "The record has no hash.",
     "Tell the publisher.", "清单中没有哈希。", "告知发布方。"},
    {LineKind::UpdateFailed, "Update zip hash failed: %1", "",
     "The package is not the published one.",
     "Copy the stick again. From the network: a cache on the way holds an old file.",
     "更新包与发布的不一致。", "重新复制 U 盘。如果来自网络：途中的缓存保存着旧文件。"},
    {LineKind::UpdateFailed, "Extract failed: %1", "",
     "The package could not be unpacked, or not be copied from the stick; the reason follows.",
     "See \"Archives and folders\".", "更新包无法解压，或无法从 U 盘复制；后面是原因。",
     "见“压缩包与文件夹”。"},
    {LineKind::UpdateFailed, "No yslib found in extracted package.", "",
     "The package holds no project.", "Tell the publisher.", "更新包中没有项目。", "告知发布方。"},
    {LineKind::UpdateFailed, "Apply validator failed:\n%1", "",
     "The new project cannot run; its findings follow.",
     "Tell the publisher. The old one is in place.", "新项目无法运行；后面是检查结果。",
     "告知发布方。旧项目仍在原处。"},
    {LineKind::UpdateFailed, "Replace failed, rolled back: %1", "",
     "The swap failed; the reason follows.",
     "See \"A project update that was interrupted\". Look at the project before you start it.",
     "替换失败；后面是原因。", "见“更新中断之后的项目”。启动之前请先检查项目。"},
    {LineKind::UpdateFailed, "No yslib after replace, rolled back.", "",
     "The project file vanished after the swap.", "Update again.", "替换之后项目文件消失。",
     "重新更新。"},
    {LineKind::UpdateFailed, "another launcher is applying an update", "",
     "Two launchers run. The other one was first and was not done after two minutes.",
     "Wait until it is done; close one of them.",
     "运行着两个启动器，先开始的一个两分钟后仍未结束。", "等它结束；关闭其中一个。"},
    {LineKind::UpdateFailed, "not enough memory for the update", "", "The PC ran out of memory.",
     "Close programs; try again.", "电脑内存不足。", "关闭一些程序，然后再试。"},
};

} // namespace

KnownTable targetTable() {
    return {TableKind::LoggedTexts, "Starting the target", targetRows, int(std::size(targetRows))};
}

KnownTable packageTable() {
    return {TableKind::LoggedTexts, "Project packages", packageRows, int(std::size(packageRows))};
}

} // namespace ctl
