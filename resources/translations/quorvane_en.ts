<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="zh_CN">
<context>
    <name>BoxButtons</name>
    <message>
        <source>确定</source>
        <translation>&amp;OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>&amp;Cancel</translation>
    </message>
</context>
<context>
    <name>LauncherService</name>
    <message>
        <source>未选择 yslib 项目。</source>
        <translation>No project is chosen. Press &quot;Choose project…&quot; and pick one.</translation>
    </message>
    <message>
        <source>正在执行项目预检...</source>
        <translation>Checking the project...</translation>
    </message>
    <message>
        <source>更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。</source>
        <translation>An update is being worked on, so F8 does nothing yet. Wait for it to end, or press &quot;Cancel update&quot;, then press F8 again.</translation>
    </message>
    <message>
        <source>未选择项目。按 F8 进入修复模式。</source>
        <translation>No project is chosen. Press F8 for repair mode and choose one.</translation>
    </message>
    <message>
        <source>就绪，即将启动：%1</source>
        <translation>Ready. This project will be started: %1</translation>
    </message>
    <message>
        <source>正在检查更新...</source>
        <translation>Looking for updates...</translation>
    </message>
    <message>
        <source>正在应用更新...</source>
        <translation>Installing the update... Leave the PC on.</translation>
    </message>
    <message>
        <source>正在启动...</source>
        <translation>Starting the line...</translation>
    </message>
    <message>
        <source>正在监护目标进程。日志：%1</source>
        <translation>The line is running. Leave this window open: closing it stops the line. Log: %1</translation>
    </message>
    <message>
        <source>修复模式：选择 yslib、查看日志或手动启动。</source>
        <translation>Repair mode: nothing starts by itself. Choose a project, read the log, or start.</translation>
    </message>
    <message>
        <source>已选项目：%1</source>
        <translation>Project chosen: %1</translation>
    </message>
    <message>
        <source>（进程崩溃）</source>
        <translation> (it crashed)</translation>
    </message>
    <message>
        <source>（可能被外部终止，如任务管理器）</source>
        <translation> (it may have been ended from outside, for example in Task Manager)</translation>
    </message>
    <message>
        <source>已启动 %1</source>
        <translation>Started %1</translation>
    </message>
    <message>
        <source>Dump 目录：%1</source>
        <translation>Crash reports: %1</translation>
    </message>
    <message>
        <source>目标进程已退出，代码 %1%2。
日志：%3
%4</source>
        <translation>The line has stopped with code %1%2. Press &quot;Start now&quot; to start it again.
Log: %3
%4</translation>
    </message>
    <message>
        <source>检测到离线更新包。请选择是否更新，或继续启动。</source>
        <translation>The USB stick holds an update. The start waits: update, or start without it.</translation>
    </message>
    <message>
        <source>发现在线更新。请选择是否更新，或继续启动。</source>
        <translation>There is an update on the network. The start waits: update, or start without it.</translation>
    </message>
    <message>
        <source>已设为下次启动再提醒。本次可继续启动。</source>
        <translation>You will be asked again at the next start. This time the line can start without the update.</translation>
    </message>
    <message>
        <source>已跳过此在线版本提示。可通过「有更新」再次打开更新。</source>
        <translation>You will not be asked about this version again. To install it after all, press &quot;Update available&quot;.</translation>
    </message>
    <message>
        <source>更新检查已取消。</source>
        <translation>The search for updates was stopped. What is installed stays in use.</translation>
    </message>
    <message>
        <source>无可用更新，将启动当前版本。</source>
        <translation>There is no update. What is installed will be started.</translation>
    </message>
    <message>
        <source>当前没有可取消的更新任务。</source>
        <translation>There is nothing to cancel: no update is being worked on.</translation>
    </message>
    <message>
        <source>正在取消更新任务…</source>
        <translation>Cancelling the update… This can take a moment.</translation>
    </message>
    <message>
        <source>当前没有可应用的已验证更新。</source>
        <translation>There is no checked update that could be installed.</translation>
    </message>
    <message>
        <source>组件更新任务已取消。</source>
        <translation>The component update was cancelled. Press &quot;Start now&quot; to start the line.</translation>
    </message>
    <message>
        <source>项目更新已完成。</source>
        <translation>The project has been updated.</translation>
    </message>
    <message>
        <source>已跳过项目更新。</source>
        <translation>The project was left as it is.</translation>
    </message>
    <message>
        <source>已处理所选更新内容，正在启动…</source>
        <translation>What you ticked has been dealt with. Starting the line…</translation>
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
        <translation>Getting the new project…</translation>
    </message>
    <message>
        <source>校验 manifest…</source>
        <translation>Checking the update list…</translation>
    </message>
    <message>
        <source>拉取并校验 manifest…</source>
        <translation>Getting and checking the update list…</translation>
    </message>
    <message>
        <source>项目包校验完成</source>
        <translation>The new project has passed its check</translation>
    </message>
    <message>
        <source>项目包校验失败</source>
        <translation>The new project did not pass its check</translation>
    </message>
    <message>
        <source>准备组件安装包…</source>
        <translation>Getting the installers ready…</translation>
    </message>
    <message>
        <source>正在检查更新，请稍候…</source>
        <translation>Still looking for updates… Please wait, or press &quot;Cancel update&quot; to start without them.</translation>
    </message>
    <message>
        <source>插件 %1 版本 %2 低于 manifest 要求 %3（仅警告，不拦截）。</source>
        <translation>Plug-in %1 has version %2, this update expects %3 (only a warning, you can go on).</translation>
    </message>
    <message>
        <source>插件 %1 缺失：%2（仅警告，不拦截）。</source>
        <translation>Plug-in %1 is missing: %2 (only a warning, you can go on).</translation>
    </message>
    <message>
        <source>项目预检失败：
%1
日志：%2</source>
        <translation>The project has errors and cannot run. Choose another, or give this text to its engineer:
%1
Log: %2</translation>
    </message>
    <message>
        <source>Runtime 版本 %1 低于 manifest 要求 %2（仅警告，不拦截）。</source>
        <translation>The Runtime has version %1, this update expects %2 (only a warning, you can go on).</translation>
    </message>
    <message>
        <source>在线更新不可用（%1）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。</source>
        <translation>Online updates are not available (%1). You can update from a USB stick instead: QuorvanerUpdate/manifest.json.</translation>
    </message>
    <message>
        <source>未找到更新 manifest，将继续使用当前版本。</source>
        <translation>No update list was found. What is installed stays in use.</translation>
    </message>
    <message>
        <source>更新被拒绝：%1（source=%2）。将继续使用当前版本。</source>
        <translation>The update was refused: %1 (from %2). Do not use it; what is installed stays in use.</translation>
    </message>
    <message>
        <source>更新 manifest 解析失败，将继续使用当前版本。</source>
        <translation>The update list cannot be read. What is installed stays in use.</translation>
    </message>
    <message>
        <source>U 盘 manifest 无法读取，尝试在线更新：%1 (%2)</source>
        <translation>The update list on the USB stick cannot be read, trying the server: %1 (%2)</translation>
    </message>
    <message>
        <source>已读取 U 盘 manifest：%1（文件 SHA256 计算失败：%2）</source>
        <translation>Read the update list on the USB stick: %1 (its SHA256 could not be computed: %2)</translation>
    </message>
    <message>
        <source>已读取 U 盘 manifest：%1（file_sha256=%2）</source>
        <translation>Read the update list on the USB stick: %1 (file_sha256=%2)</translation>
    </message>
    <message>
        <source>已读取在线 manifest：%1</source>
        <translation>Read the update list from the server: %1</translation>
    </message>
    <message>
        <source>%1：%2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>未检测到高于当前版本的可用更新。</source>
        <translation>There is no update newer than what is installed.</translation>
    </message>
    <message>
        <source>项目：%1</source>
        <translation>Project: %1</translation>
    </message>
    <message>
        <source>未找到与当前项目匹配的项目记录（%1）。</source>
        <translation>This update is not for the project in use (%1).</translation>
    </message>
    <message>
        <source>新版本</source>
        <translation>a new version</translation>
    </message>
    <message>
        <source>已验证的更新可用（来源：%1）。</source>
        <translation>A genuine update is available (from %1).</translation>
    </message>
    <message>
        <source>当前项目版本：%1（%2）</source>
        <translation>Installed project version: %1 (%2)</translation>
    </message>
    <message>
        <source>可更新项：%1</source>
        <translation>It can update: %1</translation>
    </message>
    <message>
        <source>检测到离线更新包，可在主界面选择「立即更新」或继续启动。</source>
        <translation>It is on the USB stick. Press &quot;Update now&quot;, or start without it.</translation>
    </message>
    <message>
        <source>发现在线更新，可在主界面选择「立即更新」「稍后提醒」或「跳过此版本」。</source>
        <translation>It is on the network. Press &quot;Update now&quot;, &quot;Remind me later&quot; or &quot;Skip this version&quot;.</translation>
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
        <translation>Repair mode: updates were looked for less than %1 seconds ago, so not again now.</translation>
    </message>
    <message>
        <source>%1 未提供 setupUrl。</source>
        <translation>This update holds no installer for: %1.</translation>
    </message>
    <message>
        <source>%1 安装包缺失：%2</source>
        <translation>The %1 installer is missing on the USB stick: %2</translation>
    </message>
    <message>
        <source>%1 缺少可识别的目标版本（manifest 未提供 version 且 setupUrl 无版本号）。</source>
        <translation>The new version of %1 is not known: neither the update list nor the name of the installer tells it.</translation>
    </message>
    <message>
        <source>目标版本 %1 不高于当前版本 %2。</source>
        <translation>The version on offer, %1, is not newer than the installed %2.</translation>
    </message>
    <message>
        <source>当前版本 %1 低于该更新包最小可更新版本 %2。</source>
        <translation>The installed version %1 is too old: this update needs at least %2.</translation>
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
        <translation>This update holds nothing for the project in use.</translation>
    </message>
    <message>
        <source>当前项目版本 %1 已不低于更新版本 %2。</source>
        <translation>The installed project %1 is as new as the %2 on offer, or newer.</translation>
    </message>
    <message>
        <source>项目记录缺少 zipUrl。</source>
        <translation>The update list names no package for the project. Tell the publisher.</translation>
    </message>
    <message>
        <source>项目记录缺少 zipSha256。</source>
        <translation>The update list holds no checksum of the project package. Tell the publisher.</translation>
    </message>
    <message>
        <source>项目更新包缺失：%1</source>
        <translation>The project package is missing on the USB stick: %1</translation>
    </message>
    <message>
        <source>可更新到 %1。</source>
        <translation>Can be updated to %1.</translation>
    </message>
    <message>
        <source>%1 安装包下载失败（%2），将继续使用当前版本。</source>
        <translation>The %1 installer could not be downloaded (%2). What is installed stays in use.</translation>
    </message>
    <message>
        <source>%1 安装包不存在：%2，将继续使用当前版本。</source>
        <translation>The %1 installer was not found: %2. What is installed stays in use.</translation>
    </message>
    <message>
        <source>%1 安装包校验失败且重下失败（校验：%2；重下：%3），将继续使用当前版本。</source>
        <translation>The %1 installer did not pass its check and could not be downloaded again (check: %2; download: %3). What is installed stays in use.</translation>
    </message>
    <message>
        <source>%1 安装包缓存命中但校验不一致，已自动重下并通过校验：%2</source>
        <translation>The stored %1 installer did not pass its check; a fresh download did: %2</translation>
    </message>
    <message>
        <source>%1 安装包校验失败（%2），将继续使用当前版本。</source>
        <translation>The %1 installer did not pass its check and was not started (%2). What is installed stays in use.</translation>
    </message>
    <message>
        <source>%1 安装包已就绪：%2（请在关闭 Launcher 后手动执行该安装包）</source>
        <translation>The %1 installer is ready: %2 (close the Launcher, then run it by hand)</translation>
    </message>
    <message>
        <source>%1 安装包启动失败：%2，请稍后手动执行。</source>
        <translation>The %1 installer could not be started: %2. Run it by hand later.</translation>
    </message>
    <message>
        <source>%1 安装包已自动启动：%2（组件版本将在安装程序完成后写入本地配置）</source>
        <translation>The %1 installer has been started: %2 (follow its window; it records the new version when it is done)</translation>
    </message>
    <message>
        <source>更新任务正在进行中...</source>
        <translation>An update is being worked on already...</translation>
    </message>
    <message>
        <source>未选择任何更新内容。</source>
        <translation>Nothing was ticked, so nothing was updated.</translation>
    </message>
    <message>
        <source>项目更新不可用：%1</source>
        <translation>The project cannot be updated: %1</translation>
    </message>
    <message>
        <source>正在应用更新（后台执行）...</source>
        <translation>Installing the update in the background... Leave the PC on.</translation>
    </message>
    <message>
        <source>更新任务已取消。</source>
        <translation>The update was cancelled. Press &quot;Start now&quot; to start the line.</translation>
    </message>
</context>
<context>
    <name>LauncherWindow</name>
    <message>
        <source>预检失败</source>
        <translation>The project cannot run</translation>
    </message>
    <message>
        <source>启动失败</source>
        <translation>The line could not be started</translation>
    </message>
    <message>
        <source>Dump 目录：</source>
        <translation>Crash reports: </translation>
    </message>
    <message>
        <source>目标进程提前退出</source>
        <translation>The line stopped unexpectedly</translation>
    </message>
    <message>
        <source>选择 yslib 项目</source>
        <translation>Choose a project</translation>
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
        <translation>The line starts by itself in %1 s (F8 = stop, repair mode)</translation>
    </message>
    <message>
        <source>倒计时结束后，启动器检查项目并自动启动产线，无需任何操作。
在此之前会查找更新；显示黄色面板时，F8 暂不起作用。
按 F8 可停止自动启动并进入修复模式：选择项目、查看日志或手动启动。</source>
        <translation>When the count reaches zero, the project is checked and the line starts by itself.
Until then updates are looked for. While the yellow panel shows this, F8 does nothing.
Press F8 to stop and choose a project, read the log or start by hand (repair mode).</translation>
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
        <translation>Start without checking the core &amp;plug-in (risky)</translation>
    </message>
    <message>
        <source>浏览 yslib…</source>
        <translation>Ch&amp;oose project…</translation>
    </message>
    <message>
        <source>打开启动日志</source>
        <translation>Open &amp;log</translation>
    </message>
    <message>
        <source>打开 dump 目录</source>
        <translation>Open crash r&amp;eports</translation>
    </message>
    <message>
        <source>立即启动</source>
        <translation>&amp;Start now</translation>
    </message>
    <message>
        <source>应用更新</source>
        <translation>&amp;Install update</translation>
    </message>
    <message>
        <source>跳过并启动当前版本</source>
        <translation>Skip and start &amp;what is installed</translation>
    </message>
    <message>
        <source>立即更新</source>
        <translation>&amp;Update now</translation>
    </message>
    <message>
        <source>稍后提醒</source>
        <translation>&amp;Remind me later</translation>
    </message>
    <message>
        <source>跳过此版本</source>
        <translation>S&amp;kip this version</translation>
    </message>
    <message>
        <source>有更新</source>
        <translation>Update &amp;available</translation>
    </message>
    <message>
        <source>取消更新任务</source>
        <translation>&amp;Cancel update</translation>
    </message>
    <message>
        <source>更新任务</source>
        <translation>Update</translation>
    </message>
    <message>
        <source>启动日志（本次会话）</source>
        <translation>Log of this start</translation>
    </message>
    <message>
        <source>切换到中文</source>
        <extracomment>Shown while English is in force, to those who read Chinese: stays Chinese.</extracomment>
        <translation>切换到中文</translation>
    </message>
    <message>
        <source>项目文件路径</source>
        <translation>Path of the project file</translation>
    </message>
    <message>
        <source>正在处理</source>
        <translation>Working</translation>
    </message>
    <message>
        <source>更新提示</source>
        <translation>Update on offer</translation>
    </message>
    <message>
        <source>项目与手动启动</source>
        <translation>Project and manual start</translation>
    </message>
    <message>
        <source>检测到离线更新包，建议尽快更新。</source>
        <translation>There is an update on the USB stick. It is best to update soon.</translation>
    </message>
    <message>
        <source>发现在线更新，可选择立即更新或稍后处理。</source>
        <translation>There is an update on the network. Update now, or leave it for later.</translation>
    </message>
    <message>
        <source>跳过并启动</source>
        <translation>S&amp;kip and start</translation>
    </message>
    <message>
        <source>更新进行中</source>
        <translation>An update is being worked on</translation>
    </message>
    <message>
        <source>当前已有更新任务在执行，请等待完成或取消后再试。</source>
        <translation>An update is being worked on already. Wait for it to end, or press &quot;Cancel update&quot;, then try again.</translation>
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
        <translation>&amp;Project (in USER/projects)</translation>
    </message>
    <message>
        <source>更新 Python 工具 (Black/Ruff)</source>
        <translation>P&amp;ython tools (Black/Ruff)</translation>
    </message>
    <message>
        <source>更新 Runtime 组件</source>
        <translation>&amp;Runtime (runs the line)</translation>
    </message>
    <message>
        <source>更新 Launcher 组件</source>
        <translation>&amp;Launcher (this program)</translation>
    </message>
    <message>
        <source>更新 Editor 组件</source>
        <translation>&amp;Editor (for writing projects)</translation>
    </message>
    <message>
        <source>请选择需要更新的内容（可多选）：</source>
        <translation>Tick what you want to update (one or more):</translation>
    </message>
    <message>
        <source>说明：组件更新包会按勾选项提供安装引导。Python 工具优先于 Runtime/Editor 安装；Runtime/Editor/Launcher 安装器会按既定顺序拉起，建议在空闲时执行更新。</source>
        <translation>Note: each component that you tick opens its own installer. The Python tools come before Runtime and Editor; Runtime, Editor and Launcher follow in a fixed order. It is best to update while the line stands still.</translation>
    </message>
    <message>
        <source>未选择更新内容</source>
        <translation>Nothing is ticked</translation>
    </message>
    <message>
        <source>请至少勾选一项更新内容。</source>
        <translation>Nothing was updated. Open the choice again and tick at least one item.</translation>
    </message>
    <message>
        <source>检查更新</source>
        <translation>Looking for updates</translation>
    </message>
    <message>
        <source>下载</source>
        <translation>Downloading</translation>
    </message>
    <message>
        <source>校验</source>
        <translation>Checking</translation>
    </message>
    <message>
        <source>安装组件</source>
        <translation>Installing components</translation>
    </message>
    <message>
        <source>更新任务 [%1]：%2</source>
        <translation>Update [%1]: %2</translation>
    </message>
    <message>
        <source>进行中…</source>
        <translation>Working…</translation>
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
