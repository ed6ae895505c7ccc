<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="zh_CN">
<context>
    <name>LauncherService</name>
    <message>
        <source>未选择 yslib 项目。</source>
        <translation>No yslib project is selected.</translation>
    </message>
    <message>
        <source>正在执行项目预检...</source>
        <translation>Checking the project...</translation>
    </message>
    <message>
        <source>更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。</source>
        <translation>An update task is running. Cancel it or wait for it to finish before entering repair mode (F8).</translation>
    </message>
    <message>
        <source>未选择项目。按 F8 进入修复模式。</source>
        <translation>No project is selected. Press F8 for repair mode.</translation>
    </message>
    <message>
        <source>就绪，即将启动：%1</source>
        <translation>Ready. About to start: %1</translation>
    </message>
    <message>
        <source>正在检查更新...</source>
        <translation>Checking for updates...</translation>
    </message>
    <message>
        <source>正在应用更新...</source>
        <translation>Applying the update...</translation>
    </message>
    <message>
        <source>正在启动...</source>
        <translation>Starting...</translation>
    </message>
    <message>
        <source>正在监护目标进程。日志：%1</source>
        <translation>Watching the target process. Log: %1</translation>
    </message>
    <message>
        <source>修复模式：选择 yslib、查看日志或手动启动。</source>
        <translation>Repair mode: choose a yslib, read the logs or start manually.</translation>
    </message>
    <message>
        <source>已选项目：%1</source>
        <translation>Project selected: %1</translation>
    </message>
    <message>
        <source>（进程崩溃）</source>
        <translation> (the process crashed)</translation>
    </message>
    <message>
        <source>（可能被外部终止，如任务管理器）</source>
        <translation> (possibly ended from outside, for example by Task Manager)</translation>
    </message>
    <message>
        <source>已启动 %1</source>
        <translation>Started %1</translation>
    </message>
    <message>
        <source>Dump 目录：%1</source>
        <translation>Dump folder: %1</translation>
    </message>
    <message>
        <source>目标进程已退出，代码 %1%2。
日志：%3
%4</source>
        <translation>The target process has exited with code %1%2.
Log: %3
%4</translation>
    </message>
    <message>
        <source>检测到离线更新包。请选择是否更新，或继续启动。</source>
        <translation>An offline update was found. Choose whether to update, or go on starting.</translation>
    </message>
    <message>
        <source>发现在线更新。请选择是否更新，或继续启动。</source>
        <translation>An online update is available. Choose whether to update, or go on starting.</translation>
    </message>
    <message>
        <source>已设为下次启动再提醒。本次可继续启动。</source>
        <translation>You will be reminded at the next start. You can go on starting now.</translation>
    </message>
    <message>
        <source>已跳过此在线版本提示。可通过「有更新」再次打开更新。</source>
        <translation>This online version will not be offered again. Use &quot;Update available&quot; to open it.</translation>
    </message>
    <message>
        <source>更新检查已取消。</source>
        <translation>The update check was cancelled.</translation>
    </message>
    <message>
        <source>无可用更新，将启动当前版本。</source>
        <translation>No update is available. The current version will be started.</translation>
    </message>
    <message>
        <source>当前没有可取消的更新任务。</source>
        <translation>There is no update task to cancel.</translation>
    </message>
    <message>
        <source>正在取消更新任务…</source>
        <translation>Cancelling the update task…</translation>
    </message>
    <message>
        <source>当前没有可应用的已验证更新。</source>
        <translation>There is no verified update to apply.</translation>
    </message>
    <message>
        <source>组件更新任务已取消。</source>
        <translation>The component update was cancelled.</translation>
    </message>
    <message>
        <source>项目更新已完成。</source>
        <translation>The project update is complete.</translation>
    </message>
    <message>
        <source>已跳过项目更新。</source>
        <translation>The project update was skipped.</translation>
    </message>
    <message>
        <source>已处理所选更新内容，正在启动…</source>
        <translation>The selected updates have been handled. Starting…</translation>
    </message>
    <message>
        <source>未知</source>
        <translation>unknown</translation>
    </message>
    <message>
        <source>版本：Launcher %1 / Runtime %2 / Editor %3</source>
        <translation>Versions: Launcher %1 / Runtime %2 / Editor %3</translation>
    </message>
    <message>
        <source>下载项目更新包…</source>
        <translation>Downloading the project update…</translation>
    </message>
    <message>
        <source>校验 manifest…</source>
        <translation>Verifying the manifest…</translation>
    </message>
    <message>
        <source>拉取并校验 manifest…</source>
        <translation>Fetching and verifying the manifest…</translation>
    </message>
    <message>
        <source>项目包校验完成</source>
        <translation>The project package has been verified</translation>
    </message>
    <message>
        <source>项目包校验失败</source>
        <translation>The project package failed verification</translation>
    </message>
    <message>
        <source>准备组件安装包…</source>
        <translation>Preparing the component installers…</translation>
    </message>
    <message>
        <source>正在检查更新，请稍候…</source>
        <translation>Checking for updates, please wait…</translation>
    </message>
    <message>
        <source>插件 %1 版本 %2 低于 manifest 要求 %3（仅警告，不拦截）。</source>
        <translation>Plug-in %1 has version %2, below the %3 that the manifest asks for (a warning only, nothing is blocked).</translation>
    </message>
    <message>
        <source>插件 %1 缺失：%2（仅警告，不拦截）。</source>
        <translation>Plug-in %1 is missing: %2 (a warning only, nothing is blocked).</translation>
    </message>
    <message>
        <source>项目预检失败：
%1
日志：%2</source>
        <translation>The project check failed:
%1
Log: %2</translation>
    </message>
    <message>
        <source>Runtime 版本 %1 低于 manifest 要求 %2（仅警告，不拦截）。</source>
        <translation>Runtime version %1 is below the %2 that the manifest asks for (a warning only, nothing is blocked).</translation>
    </message>
    <message>
        <source>在线更新不可用（%1）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。</source>
        <translation>Online updates are not available (%1). You can update from a USB stick: QuorvanerUpdate/manifest.json.</translation>
    </message>
    <message>
        <source>未找到更新 manifest，将继续使用当前版本。</source>
        <translation>No update manifest was found. The current version stays in use.</translation>
    </message>
    <message>
        <source>更新被拒绝：%1（source=%2）。将继续使用当前版本。</source>
        <translation>The update was refused: %1 (source=%2). The current version stays in use.</translation>
    </message>
    <message>
        <source>更新 manifest 解析失败，将继续使用当前版本。</source>
        <translation>The update manifest could not be parsed. The current version stays in use.</translation>
    </message>
    <message>
        <source>U 盘 manifest 无法读取，尝试在线更新：%1 (%2)</source>
        <translation>The manifest on the USB stick cannot be read, trying the online update: %1 (%2)</translation>
    </message>
    <message>
        <source>已读取 U 盘 manifest：%1（文件 SHA256 计算失败：%2）</source>
        <translation>Read the manifest on the USB stick: %1 (the SHA256 of the file could not be computed: %2)</translation>
    </message>
    <message>
        <source>已读取 U 盘 manifest：%1（file_sha256=%2）</source>
        <translation>Read the manifest on the USB stick: %1 (file_sha256=%2)</translation>
    </message>
    <message>
        <source>已读取在线 manifest：%1</source>
        <translation>Read the online manifest: %1</translation>
    </message>
    <message>
        <source>%1：%2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>未检测到高于当前版本的可用更新。</source>
        <translation>No update newer than the current version was found.</translation>
    </message>
    <message>
        <source>项目：%1</source>
        <translation>Project: %1</translation>
    </message>
    <message>
        <source>未找到与当前项目匹配的项目记录（%1）。</source>
        <translation>There is no project record for the current project (%1).</translation>
    </message>
    <message>
        <source>新版本</source>
        <translation>a new version</translation>
    </message>
    <message>
        <source>已验证的更新可用（来源：%1）。</source>
        <translation>A verified update is available (source: %1).</translation>
    </message>
    <message>
        <source>当前项目版本：%1（%2）</source>
        <translation>Current project version: %1 (%2)</translation>
    </message>
    <message>
        <source>可更新项：%1</source>
        <translation>Can be updated: %1</translation>
    </message>
    <message>
        <source>检测到离线更新包，可在主界面选择「立即更新」或继续启动。</source>
        <translation>An offline update was found. Choose &quot;Update now&quot; in the main window, or go on starting.</translation>
    </message>
    <message>
        <source>发现在线更新，可在主界面选择「立即更新」「稍后提醒」或「跳过此版本」。</source>
        <translation>An online update is available. Choose &quot;Update now&quot;, &quot;Remind me later&quot; or &quot;Skip this version&quot; in the main window.</translation>
    </message>
    <message>
        <source>Runtime</source>
        <translation>Runtime</translation>
    </message>
    <message>
        <source>Launcher</source>
        <translation>Launcher</translation>
    </message>
    <message>
        <source>Editor</source>
        <translation>Editor</translation>
    </message>
    <message>
        <source>Python 工具</source>
        <translation>Python tools</translation>
    </message>
    <message>
        <source>修复模式下更新检查命中节流窗口（%1 秒），跳过重复请求。</source>
        <translation>Repair mode: the last update check started less than %1 seconds ago, the repeated request was skipped.</translation>
    </message>
    <message>
        <source>%1 未提供 setupUrl。</source>
        <translation>%1 has no setupUrl.</translation>
    </message>
    <message>
        <source>%1 安装包缺失：%2</source>
        <translation>The installer of %1 is missing: %2</translation>
    </message>
    <message>
        <source>%1 缺少可识别的目标版本（manifest 未提供 version 且 setupUrl 无版本号）。</source>
        <translation>%1 has no recognisable target version (the manifest gives no version, and setupUrl holds none).</translation>
    </message>
    <message>
        <source>目标版本 %1 不高于当前版本 %2。</source>
        <translation>Target version %1 is not newer than the current version %2.</translation>
    </message>
    <message>
        <source>当前版本 %1 低于该更新包最小可更新版本 %2。</source>
        <translation>The current version %1 is below %2, the lowest version that this package can update.</translation>
    </message>
    <message>
        <source>未知版本</source>
        <translation>an unknown version</translation>
    </message>
    <message>
        <source>可从 %1 更新到 %2。</source>
        <translation>Can be updated from %1 to %2.</translation>
    </message>
    <message>
        <source>manifest 未提供可更新的项目记录。</source>
        <translation>The manifest offers no project record to update with.</translation>
    </message>
    <message>
        <source>当前项目版本 %1 已不低于更新版本 %2。</source>
        <translation>The current project version %1 is not below the update&apos;s version %2.</translation>
    </message>
    <message>
        <source>项目记录缺少 zipUrl。</source>
        <translation>The project record has no zipUrl.</translation>
    </message>
    <message>
        <source>项目记录缺少 zipSha256。</source>
        <translation>The project record has no zipSha256.</translation>
    </message>
    <message>
        <source>项目更新包缺失：%1</source>
        <translation>The project package is missing: %1</translation>
    </message>
    <message>
        <source>可更新到 %1。</source>
        <translation>Can be updated to %1.</translation>
    </message>
    <message>
        <source>%1 安装包下载失败（%2），将继续使用当前版本。</source>
        <translation>The %1 installer could not be downloaded (%2). The current version stays in use.</translation>
    </message>
    <message>
        <source>%1 安装包不存在：%2，将继续使用当前版本。</source>
        <translation>The %1 installer does not exist: %2. The current version stays in use.</translation>
    </message>
    <message>
        <source>%1 安装包校验失败且重下失败（校验：%2；重下：%3），将继续使用当前版本。</source>
        <translation>The %1 installer failed its check and could not be downloaded again (check: %2; download: %3). The current version stays in use.</translation>
    </message>
    <message>
        <source>%1 安装包缓存命中但校验不一致，已自动重下并通过校验：%2</source>
        <translation>The %1 installer in the cache did not match; it was downloaded again and passed its check: %2</translation>
    </message>
    <message>
        <source>%1 安装包校验失败（%2），将继续使用当前版本。</source>
        <translation>The %1 installer failed its check (%2). The current version stays in use.</translation>
    </message>
    <message>
        <source>%1 安装包已就绪：%2（请在关闭 Launcher 后手动执行该安装包）</source>
        <translation>The %1 installer is ready: %2 (run it by hand after closing the Launcher)</translation>
    </message>
    <message>
        <source>%1 安装包启动失败：%2，请稍后手动执行。</source>
        <translation>The %1 installer could not be started: %2. Run it by hand later.</translation>
    </message>
    <message>
        <source>%1 安装包已自动启动：%2（组件版本将在安装程序完成后写入本地配置）</source>
        <translation>The %1 installer was started: %2 (the component version is recorded once the installer has finished)</translation>
    </message>
    <message>
        <source>更新任务正在进行中...</source>
        <translation>An update task is already running...</translation>
    </message>
    <message>
        <source>未选择任何更新内容。</source>
        <translation>Nothing was chosen to update.</translation>
    </message>
    <message>
        <source>项目更新不可用：%1</source>
        <translation>The project update is not available: %1</translation>
    </message>
    <message>
        <source>正在应用更新（后台执行）...</source>
        <translation>Applying the update in the background...</translation>
    </message>
    <message>
        <source>更新任务已取消。</source>
        <translation>The update task was cancelled.</translation>
    </message>
</context>
<context>
    <name>LauncherWindow</name>
    <message>
        <source>预检失败</source>
        <translation>Project check failed</translation>
    </message>
    <message>
        <source>启动失败</source>
        <translation>Start failed</translation>
    </message>
    <message>
        <source>Dump 目录：</source>
        <translation>Dump folder: </translation>
    </message>
    <message>
        <source>目标进程提前退出</source>
        <translation>The target process exited early</translation>
    </message>
    <message>
        <source>选择 yslib 项目</source>
        <translation>Choose a yslib project</translation>
    </message>
    <message>
        <source>项目文件 (*.yslib)</source>
        <translation>Project files (*.yslib)</translation>
    </message>
    <message>
        <source>项目：%1</source>
        <translation>Project: %1</translation>
    </message>
    <message>
        <source>（无）</source>
        <translation>(none)</translation>
    </message>
    <message>
        <source>将在 %1 秒后自动启动（F8 = 修复模式）</source>
        <translation>Starting automatically in %1 s (F8 = repair mode)</translation>
    </message>
    <message>
        <source>本次会话尚无日志。启动过程将显示在这里。</source>
        <translation>Nothing has been logged in this session yet. What the launcher does will be shown here.</translation>
    </message>
    <message>
        <source>Quorvane 启动器</source>
        <translation>Quorvane Launcher</translation>
    </message>
    <message>
        <source>Quorvane 启动器 v%1</source>
        <translation>Quorvane Launcher v%1</translation>
    </message>
    <message>
        <source>跳过核心插件预检（有风险）</source>
        <translation>Skip the core plug-in check (risky)</translation>
    </message>
    <message>
        <source>浏览 yslib…</source>
        <translation>Browse for yslib…</translation>
    </message>
    <message>
        <source>打开启动日志</source>
        <translation>Open launch log</translation>
    </message>
    <message>
        <source>打开 dump 目录</source>
        <translation>Open dump folder</translation>
    </message>
    <message>
        <source>立即启动</source>
        <translation>Start now</translation>
    </message>
    <message>
        <source>应用更新</source>
        <translation>Apply update</translation>
    </message>
    <message>
        <source>跳过并启动当前版本</source>
        <translation>Skip and start the current version</translation>
    </message>
    <message>
        <source>立即更新</source>
        <translation>Update now</translation>
    </message>
    <message>
        <source>稍后提醒</source>
        <translation>Remind me later</translation>
    </message>
    <message>
        <source>跳过此版本</source>
        <translation>Skip this version</translation>
    </message>
    <message>
        <source>有更新</source>
        <translation>Update available</translation>
    </message>
    <message>
        <source>取消更新任务</source>
        <translation>Cancel update task</translation>
    </message>
    <message>
        <source>更新任务</source>
        <translation>Update task</translation>
    </message>
    <message>
        <source>启动日志（本次会话）</source>
        <translation>Launch log (this session)</translation>
    </message>
    <message>
        <source>切换到中文</source>
        <extracomment>Shown while English is in force, to those who read Chinese: stays Chinese.</extracomment>
        <translation>切换到中文</translation>
    </message>
    <message>
        <source>项目文件路径</source>
        <translation>Project file path</translation>
    </message>
    <message>
        <source>正在处理</source>
        <translation>Working</translation>
    </message>
    <message>
        <source>检测到离线更新包，建议尽快更新。</source>
        <translation>An offline update was found. It is best to update soon.</translation>
    </message>
    <message>
        <source>发现在线更新，可选择立即更新或稍后处理。</source>
        <translation>An online update is available. Update now or deal with it later.</translation>
    </message>
    <message>
        <source>跳过并启动</source>
        <translation>Skip and start</translation>
    </message>
    <message>
        <source>更新进行中</source>
        <translation>Update in progress</translation>
    </message>
    <message>
        <source>当前已有更新任务在执行，请等待完成或取消后再试。</source>
        <translation>An update task is already running. Wait for it to finish, or cancel it and try again.</translation>
    </message>
    <message>
        <source>选择更新内容</source>
        <translation>Choose what to update</translation>
    </message>
    <message>
        <source>（不可用）</source>
        <translation> (not available)</translation>
    </message>
    <message>
        <source>更新项目（USER/projects）</source>
        <translation>Update the project (USER/projects)</translation>
    </message>
    <message>
        <source>更新 Python 工具 (Black/Ruff)</source>
        <translation>Update the Python tools (Black/Ruff)</translation>
    </message>
    <message>
        <source>更新 Runtime 组件</source>
        <translation>Update the Runtime</translation>
    </message>
    <message>
        <source>更新 Launcher 组件</source>
        <translation>Update the Launcher</translation>
    </message>
    <message>
        <source>更新 Editor 组件</source>
        <translation>Update the Editor</translation>
    </message>
    <message>
        <source>请选择需要更新的内容（可多选）：</source>
        <translation>Choose what to update (one or more):</translation>
    </message>
    <message>
        <source>说明：组件更新包会按勾选项提供安装引导。Python 工具优先于 Runtime/Editor 安装；Runtime/Editor/Launcher 安装器会按既定顺序拉起，建议在空闲时执行更新。</source>
        <translation>Note: an installer opens for each component that you tick. The Python tools are installed before Runtime and Editor; the installers of Runtime, Editor and Launcher then open in a fixed order. It is best to update while the line is idle.</translation>
    </message>
    <message>
        <source>未选择更新内容</source>
        <translation>Nothing selected</translation>
    </message>
    <message>
        <source>请至少勾选一项更新内容。</source>
        <translation>Tick at least one item to update.</translation>
    </message>
    <message>
        <source>检查更新</source>
        <translation>Checking for updates</translation>
    </message>
    <message>
        <source>下载</source>
        <translation>Downloading</translation>
    </message>
    <message>
        <source>校验</source>
        <translation>Verifying</translation>
    </message>
    <message>
        <source>安装组件</source>
        <translation>Installing components</translation>
    </message>
    <message>
        <source>更新任务 [%1]：%2</source>
        <translation>Update task [%1]: %2</translation>
    </message>
    <message>
        <source>进行中…</source>
        <translation>In progress…</translation>
    </message>
    <message>
        <source>网络错误</source>
        <translation>Network error</translation>
    </message>
    <message>
        <source>校验失败</source>
        <translation>Verification failed</translation>
    </message>
    <message>
        <source>验签失败</source>
        <translation>Signature check failed</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>cancelled</translation>
    </message>
    <message>
        <source>已取消</source>
        <translation>Cancelled</translation>
    </message>
    <message>
        <source>更新失败</source>
        <translation>Update failed</translation>
    </message>
    <message>
        <source>更新完成</source>
        <translation>Update complete</translation>
    </message>
</context>
</TS>
