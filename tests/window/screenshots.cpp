// Draws the launcher window in the states that the documentation shows: scripts/screenshots runs it.
//
//   quorvane_screenshots FOLDER [SCALE]     SCALE enlarges the fonts; 1 unless given
#include "support/staged_main.h"
#include "window_scene.h"

#include <QApplication>
#include <QTextStream>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

namespace {

void shoot(WindowScene &scene, const QString &folder, const QString &name) {
    scene.window.show();
    QCoreApplication::processEvents();
    scene.window.grab().save(folder + "/" + name + ".png");
    QTextStream(stdout) << name << ' ' << scene.window.width() << 'x' << scene.window.height()
                        << '\n';
}

void place(WindowScene &scene, State state, const QString &status) {
    scene.service.statusText = status;
    scene.put(state);
}

void shootStates(const QString &folder, const QString &suffix) {
    const QString demo = "D:/Line/USER/projects/demo/demo.yslib";
    {
        WindowScene scene;
        scene.service.projectPath = demo;
        LauncherService::appendLaunchLog("[task check_1f0c27aa] started kind=check");
        scene.put(State::Countdown);
        shoot(scene, folder, "countdown" + suffix);
    }
    {
        WindowScene scene;
        scene.service.projectPath = demo;
        scene.service.state = State::RepairMode;
        scene.service.refreshStatus();
        shoot(scene, folder, "repair" + suffix);
    }
    {
        WindowScene scene;
        scene.service.projectPath = demo;
        scene.service.state = State::Monitor;
        scene.service.refreshStatus();
        shoot(scene, folder, "monitor" + suffix);
    }
    {
        WindowScene scene;
        scene.service.projectPath = demo;
        place(scene, State::Failed,
              QCoreApplication::translate("LauncherService",
                                          "目标进程已退出，代码 %1%2。\n日志：%3\n%4")
                  .arg("7", "", "C:/ProgramData/Quorvane/Quorvaner/launcher.log",
                       QCoreApplication::translate("LauncherService", "Dump 目录：%1")
                           .arg("C:/ProgramData/Quorvane/Quorvaner/dumps")));
        shoot(scene, folder, "failed" + suffix);
    }
    {
        WindowScene scene;
        scene.service.projectPath = demo;
        place(scene, State::RepairMode,
              QCoreApplication::translate("LauncherService",
                                          "发现在线更新。请选择是否更新，或继续启动。"));
        scene.service.updateSummary = "https://updates.example/Quorvaner/Update/manifest.json\n"
                                      "Project -> 2.4.0, Runtime -> 1.8.2";
        scene.offerUpdate(PromptMode::OnlineBanner);
        shoot(scene, folder, "banner" + suffix);
        scene.offerUpdate(PromptMode::BadgeOnly);
        shoot(scene, folder, "badge" + suffix);
        scene.service.taskId = "apply_1f0c27aa";
        place(scene, State::ApplyingUpdate,
              QCoreApplication::translate("LauncherService", "正在应用更新（后台执行）..."));
        scene.setTaskActive(true);
        Q_EMIT scene.service.updateTaskProgressChanged("apply_1f0c27aa", "download", 42,
                                                       "detail:download-project");
        shoot(scene, folder, "task" + suffix);
    }
    {
        WindowScene scene;
        scene.service.projectPath = "/media/line/" + QString("ordner/").repeated(40) + "demo.yslib";
        QString findings;
        for (int i = 1; i <= 30; ++i)
            findings += QString("[错误] scripts/station_%1.ys: 第 %1 项检查未通过\n").arg(i);
        scene.service.updateSummary = findings;
        place(scene, State::RepairMode, findings + scene.service.projectPath);
        scene.offerUpdate(PromptMode::OnlineBanner);
        shoot(scene, folder, "crowded" + suffix);
    }
}

} // namespace

int main(int argc, char **argv) {
    if (!support::isStaged(argc, argv))
        return support::runStaged(argc, argv);
    support::dropStagedMarker(argc, argv);
    QApplication application(argc, argv);
    if (argc < 2)
        return 2;
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const qreal scale = argc > 2 ? QString::fromLocal8Bit(argv[2]).toDouble() : 1.0;
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * scale);
    QApplication::setFont(font);
    stageTranslation();
    useLanguage(Language::Chinese);
    shootStates(folder, "_zh");
    useLanguage(Language::English);
    shootStates(folder, "_en");
    return 0;
}
