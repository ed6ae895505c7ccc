// The lines of the launch log.
#include "quorvanectl/log/known_lines.h"

#include <iterator>

namespace ctl {
namespace {

constexpr KnownLine launchLogRows[] = {
    {LineKind::TaskStarted, "[task %1] started kind=%2", "", "An update task begins.",
     "`%1` is the task's name, which the window shows too; `%2` is `check`, `apply` (the project, "
     "then the installers) or `setup` (installers alone).",
     "更新任务开始。",
     "`%1` 是任务的名称，窗口中也会显示；`%2` 为 `check`、`apply`（先项目，后安装程序）或 "
     "`setup`（只有安装程序）。"},
    {LineKind::TaskPhase, "[task %1] phase=%2 elapsedMs=%3", "", "A phase of the task has ended.",
     "`check`, then `found` or `none`: the result, which is dropped if the check was cancelled or "
     "another project was chosen meanwhile. `apply`, then \"Project updated to …\". `setup`: the "
     "installers are done. The time is always 0.",
     "任务的一个阶段结束。",
     "`check` 之后是 `found` 或 "
     "`none`，即查找的结果；如果查找被取消，或在此期间改选了项目，则结果作废。`apply` 之后是 "
     "\"Project updated to …\"。`setup`：安装程序已处理完毕。时间始终为 0。"},
    {LineKind::CancelRequested, "[task %1] cancel requested by user", "", "The cancel button.",
     "The task stops as soon as it can. A swap that has begun is not stopped.", "按了取消按钮。",
     "任务会尽快停止。已经开始的替换不会中止。"},
    {LineKind::ManifestRead, "已读取 U 盘 manifest：%1（file_sha256=%2）",
     "Read the update list on the USB stick: %1 (file_sha256=%2)", "A stick is in the PC.",
     "`%2` is the hash of the whole file. Compare it with the publisher's.", "电脑上插有 U 盘。",
     "`%2` 是整个文件的哈希，请与发布方的哈希比较。"},
    {LineKind::ManifestRead, "已读取 U 盘 manifest：%1（文件 SHA256 计算失败：%2）",
     "Read the update list on the USB stick: %1 (its SHA256 could not be computed: %2)",
     "A stick is in the PC, but failed meanwhile.",
     "The manifest was read once. `%2` says why it could not be read again.",
     "电脑上插有 U 盘，但它随后出错。", "清单只读取了一次，`%2` 是不能再次读取的原因。"},
    {LineKind::Warns, "U 盘 manifest 无法读取，尝试在线更新：%1 (%2)",
     "The update list on the USB stick cannot be read, trying the server: %1 (%2)",
     "A stick holds a manifest that is empty or cannot be read.", "The network was tried instead.",
     "U 盘上的清单为空或无法读取。", "改为尝试网络。"},
    {LineKind::Warns,
     "No answer from the mounted volumes within %1 ms: the check goes on without a stick", "",
     "A mounted volume hangs, for example a network drive whose server is gone.",
     "No stick was looked at, not even one that is in the PC. Disconnect the drive, or bring its "
     "server back, and start the launcher again.",
     "某个已挂载的卷没有响应，例如服务器已关闭的网络驱动器。",
     "没有查看任何 U 盘，包括已插入的。请断开该驱动器，或恢复它的服务器，然后重新启动启动器。"},
    {LineKind::ManifestRead, "已读取在线 manifest：%1", "Read the update list from the server: %1",
     "A manifest came from the server.", "`%1` is its address.", "从服务器得到了清单。",
     "`%1` 是它的地址。"},
    {LineKind::Offline, "在线更新不可用（%1）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。",
     "Online updates are not available (%1). You can update from a USB stick instead: "
     "QuorvanerUpdate/manifest.json.",
     "The server did not answer as it should.",
     "`%1` is one of the texts under \"The network\" below.", "服务器没有正常应答。",
     "`%1` 是下文“网络”中的一条文字。"},
    {LineKind::UpdateRefused, "更新被拒绝：%1（source=%2）。将继续使用当前版本。",
     "The update was refused: %1 (from %2). Do not use it; what is installed stays in use.",
     "A manifest failed its verification.",
     "`%1` is one of the texts under \"Signatures and hashes\" below.", "清单没有通过验证。",
     "`%1` 是下文“签名与哈希”中的一条文字。"},
    {LineKind::Settings, "Settings are not available: %1 is held by another program.", "",
     "`Quorvane.db` stayed locked for two seconds.",
     "The launcher goes on without its settings and does not wait again. It remembers nothing "
     "until the file is free. Find the program that holds it: a backup, a virus scanner, a "
     "database tool.",
     "`Quorvane.db` 被锁定两秒以上。",
     "启动器不用设置继续运行，也不再等待。在文件解锁之前，它不记录任何内容。请找出占用它的程序：备"
     "份、杀毒软件或数据库工具。"},
    {LineKind::Settings, "Settings are not available: %1 holds a view or a trigger for them.", "",
     "A table of `Quorvane.db` is a view, a virtual table or has a trigger: statements of the "
     "file's own, which need not end. No launcher makes such a file.",
     "The launcher goes on without its settings and leaves the file alone. Find out who changed "
     "it, then remove it: the next start makes a new one.",
     "`Quorvane.db` "
     "里的一个表是视图、虚拟表或带有触发器：这些是文件自带的语句，可能永远执行不完。启动器从不生成"
     "这样的文件。",
     "启动器不用设置继续运行，也不改动该文件。请查明是谁改了它，然后删除它：下次启动会新建一个。"},
    {LineKind::Compared, "Project version check: local=%1 remote=%2 compare=%3 path=%4", "",
     "The version of the project is compared with the manifest.",
     "`compare` below 0: the version on offer is newer. The line is written again each time they "
     "are compared.",
     "比较项目与清单中的版本。", "`compare` 小于 0：更新的版本较高。每次比较都会再写一行。"},
    {LineKind::Uncompared, "Project version check: local version unreadable, path=%1", "",
     "The version of the project is needed for an update, but the project has none.",
     "The project update is offered.", "更新需要项目的版本，但项目没有版本。", "会提供项目更新。"},
    {LineKind::Offer, "已验证的更新可用（来源：%1）。", "A genuine update is available (from %1).",
     "There is an update to offer.",
     "The first of several lines: the offer as the window shows it. [operators.md](operators.md) "
     "explains each line.",
     "有可用的更新。",
     "这是若干行中的第一行，内容与窗口显示的相同。[operators.md](operators.md) 解释了每一行。"},
    {LineKind::Tells, "修复模式下更新检查命中节流窗口（%1 秒），跳过重复请求。",
     "Repair mode: updates were looked for less than %1 seconds ago, so not again now.",
     "F8 again within 30 seconds.", "No second check was begun.", "30 秒内再次按了 F8。",
     "没有开始第二次查找。"},
    {LineKind::Skipped, "Online update skipped fingerprint=%1 components=[%2] source=%3", "",
     "\"Skip this version\".",
     "An offer with this fingerprint is not shown again. The fingerprint is also in the settings.",
     "按了「跳过此版本」。", "不再显示具有该指纹的更新。指纹也保存在设置中。"},
    {LineKind::Tells, "%1 安装包缓存命中但校验不一致，已自动重下并通过校验：%2",
     "The stored %1 installer did not pass its check; a fresh download did: %2",
     "An installer in `update/cache` was damaged or old.",
     "It was downloaded again and is good now.", "`update/cache` 中的安装程序已损坏或过时。",
     "已重新下载，现在没有问题。"},
    {LineKind::InstallerStarted,
     "%1 安装包已自动启动：%2（组件版本将在安装程序完成后写入本地配置）",
     "The %1 installer has been started: %2 (follow its window; it records the new version when it "
     "is done)",
     "An installer was started.",
     "It runs on its own; its result is not logged. The new version is in "
     "`config/release_version.json` once it is done.",
     "安装程序已启动。",
     "它独立运行，结果不写入日志。安装结束后，新版本写在 `config/release_version.json` 中。"},
    {LineKind::Tells, "%1 安装包已就绪：%2（请在关闭 Launcher 后手动执行该安装包）",
     "The %1 installer is ready: %2 (close the Launcher, then run it by hand)",
     "An installer is left to the user.", "This version never does so.", "安装程序留给用户运行。",
     "当前版本不会出现这种情况。"},
    {LineKind::Fails, "%1 安装包启动失败：%2，请稍后手动执行。",
     "The %1 installer could not be started: %2. Run it by hand later.",
     "An installer could not be started.",
     "Start it by hand: is it a program of this system, and may this user run it?",
     "安装程序无法启动。", "请手动运行：它是本系统的程序吗？该用户有权运行它吗？"},
    {LineKind::Fails, "%1 安装包下载失败（%2），将继续使用当前版本。",
     "The %1 installer could not be downloaded (%2). What is installed stays in use.",
     "An installer could not be downloaded.", "`%2` is a text under \"The network\".",
     "安装程序无法下载。", "`%2` 是“网络”中的一条文字。"},
    {LineKind::Fails, "%1 安装包不存在：%2，将继续使用当前版本。",
     "The %1 installer was not found: %2. What is installed stays in use.",
     "An installer is not on the stick.", "Copy the stick again.", "安装程序不在 U 盘上。",
     "重新复制 U 盘。"},
    {LineKind::Fails, "%1 安装包校验失败（%2），将继续使用当前版本。",
     "The %1 installer did not pass its check and was not started (%2). What is installed stays in "
     "use.",
     "An installer is not the published one. It was not started.",
     "`%2` is a text under \"Signatures and hashes\".", "安装程序与发布的不一致，没有启动。",
     "`%2` 是“签名与哈希”中的一条文字。"},
    {LineKind::Fails, "%1 安装包校验失败且重下失败（校验：%2；重下：%3），将继续使用当前版本。",
     "The %1 installer did not pass its check and could not be downloaded again (check: %2; "
     "download: %3). What is installed stays in use.",
     "An installer is not the published one, and could not be downloaded again. It was not "
     "started.",
     "`%2` is a text under \"Signatures and hashes\", `%3` one under \"The network\".",
     "安装程序与发布的不一致，重新下载也失败。没有启动它。",
     "`%2` 是“签名与哈希”中的一条文字，`%3` 是“网络”中的一条文字。"},
    {LineKind::Described, "a text under \"Starting the target\"", "“启动目标程序”中的一条文字",
     "The target was not started.", "The text says why.", "目标程序没有启动。", "文字说明原因。"},
    {LineKind::Described, "`[class]` and a text under \"Project packages\", or the text alone",
     "`[类别]` 加“项目更新包”中的一条文字，或只有该文字", "A project update failed.",
     "The text says why.", "项目更新失败。", "文字说明原因。"},
    {LineKind::Tells, "Project updated to %1 in %2 ms. Backup: %3", "", "The project was replaced.",
     "The backup named here is already gone.", "项目已替换。", "这里写出的备份此时已经删除。"},
    {LineKind::UpdateDone, "项目更新已完成。", "The project has been updated.",
     "An update has ended well.", "Lines about the installers follow.", "更新成功结束。",
     "后面是关于安装程序的各行。"},
    {LineKind::UpdateDone, "已跳过项目更新。", "The project was left as it is.",
     "An update has ended well, without the project.", "Lines about the installers follow.",
     "更新成功结束，但没有更新项目。", "后面是关于安装程序的各行。"},
    {LineKind::UpdateCancelled, "更新任务已取消。",
     "The update was cancelled. Press \"Start now\" to start the line.",
     "A project update was cancelled.",
     "If the swap had begun, the new project is in place all the same.", "项目更新被取消。",
     "如果替换已经开始，新项目仍会替换到位。"},
    {LineKind::PrecheckPassed, "Precheck passed for %1", "", "The project can run.",
     "It is started next, or the launcher waits for an answer about an update.", "项目可以运行。",
     "接着启动项目，或者等待用户回答是否更新。"},
    {LineKind::PrecheckWarns, "Precheck warnings:\n%1", "", "The project can run, with warnings.",
     "Only the log tells. The texts are under \"Findings about a project\".",
     "项目可以运行，但有警告。", "只写入日志。文字见“项目检查结果”。"},
    {LineKind::PrecheckFailed, "项目预检失败：\n%1\n日志：%2",
     "The project has errors and cannot run. Choose another, or give this text to its "
     "engineer:\n%1\nLog: %2",
     "The project cannot run.", "The texts are under \"Findings about a project\".",
     "项目无法运行。", "文字见“项目检查结果”。"},
    {LineKind::PrecheckFailed, "Project file not found: %1\nLog: %2", "",
     "The selected project is gone.", "Choose another, or put it back.", "所选的项目不存在。",
     "改选其他项目，或把它放回原处。"},
    {LineKind::Tells, "R1.5 dev fallback: launching LineStudio.exe (Runtime not present).", "",
     "The editor is started instead of the runtime.",
     "Only in a source tree or with `QUORVANE_DEV` set: never on a line.",
     "用编辑器代替 Runtime 启动。",
     "只在源代码目录中或设置了 `QUORVANE_DEV` 时出现，产线上不会出现。"},
    {LineKind::Launching, "Launching %1 %2", "", "The target is started.",
     "Program and arguments, without quotes.", "目标程序启动。", "程序和参数，不加引号。"},
    {LineKind::Exited, "Target exited with code %1%2. Log: %3", "", "The target has ended.",
     "`%2` is a hint in Chinese: （进程崩溃） it crashed; （可能被外部终止，如任务管理器） code 1, "
     "perhaps ended from outside.",
     "目标程序已结束。",
     "`%2` 是中文提示：（进程崩溃）表示崩溃；（可能被外部终止，如任务管理器）表示代码 "
     "1，可能被外部结束。"},
};

} // namespace

KnownTable launchLogTable() {
    return {TableKind::LogLines, "The launch log", launchLogRows, int(std::size(launchLogRows))};
}

} // namespace ctl
