// Draws the launcher window in the states that the documentation shows, in both languages:
// scripts/screenshots runs it. The service stands still; its fields say what there is to see.
//
//   quorvane_screenshots FOLDER [PER CENT [PICTURE...]]
//
// PER CENT is the size of the fonts, 100 unless given; another one stands in the files' names. Without
// a PICTURE all are drawn.
#include "support/staged_main.h"
#include "window_scene.h"

#include "frame/app_paths.h"

#include <QApplication>
#include <QTextStream>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

namespace {

const char *const dataFolder = "C:/ProgramData/Quorvane";

QString flowText(const char *chinese) {
    return QCoreApplication::translate("LauncherService", chinese);
}

class Camera {
public:
    // Makes files like folder/name-suffix.png, of the wanted pictures; of all if none is named.
    Camera(const QString &folder, const QString &suffix, const QStringList &wanted)
        : target(folder)
        , ending(suffix)
        , chosen(wanted) {}

    void shoot(WindowScene &scene, const QString &name) const {
        scene.window.show();
        QCoreApplication::processEvents();
        save(&scene.window, name);
    }

    // The dialog or box that comes up during `action`.
    void shootModal(const std::function<void()> &action, const QString &name) const {
        if (!duringModal(action, [&](QWidget *modal) { save(modal, name); }))
            QTextStream(stdout) << name << " did not come up\n";
    }

private:
    void save(QWidget *widget, const QString &name) const {
        if (!chosen.isEmpty() && !chosen.contains(name))
            return;
        const QString file = QString("%1/%2-%3.png").arg(target, name, ending);
        const bool saved =
            widget->grab().toImage().convertToFormat(QImage::Format_RGB888).save(file);
        QTextStream(stdout) << file << ' ' << widget->width() << 'x' << widget->height()
                            << (saved ? "\n" : " was not saved\n");
    }

    QString target;
    QString ending;
    QStringList chosen;
};

void place(WindowScene &scene, State state, const QString &status) {
    scene.service.projectPath = "D:/Line3/USER/projects/demo/demo.yslib";
    scene.service.statusText = status;
    scene.put(state);
}

void shootOrdinaryRun(const Camera &camera) {
    QFile::remove(AppPaths::launchLogPath());
    WindowScene scene;
    LauncherService::appendLaunchLog("[task check_1f0c27aa] started kind=check");
    place(scene, State::Countdown, QString());
    camera.shoot(scene, "countdown");
    place(scene, State::Monitor,
          flowText("正在监护目标进程。日志：%1").arg(QString(dataFolder) + "/launcher.log"));
    camera.shoot(scene, "monitor");
    const QString dumps = flowText("Dump 目录：%1").arg(QString(dataFolder) + "/dumps");
    place(scene, State::Failed,
          flowText("目标进程已退出，代码 %1%2。\n日志：%3\n%4")
              .arg("7", QString(), QString(dataFolder) + "/launcher.log", dumps));
    camera.shoot(scene, "failed");
    camera.shootModal(
        [&] {
            Q_EMIT scene.service.launchFailed("LineRunner.exe not found in D:/Line3/bin.\n"
                                              "Production layout requires Runtime (R2). "
                                              "Install Runtime beside Launcher.");
        },
        "start-failed");
}

void shootRepair(const Camera &camera) {
    WindowScene scene;
    place(scene, State::RepairMode, flowText("修复模式：选择 yslib、查看日志或手动启动。"));
    camera.shoot(scene, "repair");
}

// What a check finds, in the words in which it tells of it.
QString summaryOf(const QString &source, const char *advice) {
    return QStringList{
        flowText("已验证的更新可用（来源：%1）。").arg(source),
        flowText("当前项目版本：%1（%2）").arg("2.3.1", "D:/Line3/USER/projects/demo/demo.yslib"),
        flowText("可更新项：%1").arg("Project -> 2.4.0, Runtime -> 1.8.2"), flowText(advice)}
        .join('\n');
}

void shootStick(const Camera &camera) {
    WindowScene scene;
    place(scene, State::RepairMode, flowText("检测到离线更新包。请选择是否更新，或继续启动。"));
    scene.service.updateSummary =
        summaryOf("E:/QuorvanerUpdate/manifest.json",
                  "检测到离线更新包，可在主界面选择「立即更新」或继续启动。");
    scene.offerUpdate(PromptMode::UsbBanner);
    camera.shoot(scene, "banner-stick");
}

void shootUpdate(const Camera &camera) {
    WindowScene scene;
    place(scene, State::RepairMode, flowText("发现在线更新。请选择是否更新，或继续启动。"));
    scene.service.updateSummary =
        summaryOf("https://updates.quorvane.invalid/Quorvaner/Update/manifest.json",
                  "发现在线更新，可在主界面选择「立即更新」「稍后提醒」或「跳过此版本」。");
    scene.offerUpdate(PromptMode::OnlineBanner);
    camera.shoot(scene, "banner");
    scene.service.snapshot.projectEntry = {
        {"name", "demo"}, {"version", "2.4.0"}, {"zipUrl", "demo-2.4.0.zip"}, {"zipSha256", "0"}};
    scene.service.snapshot.runtimeEntry = {{"version", "1.8.2"}, {"setupUrl", "runtime.exe"}};
    camera.shootModal([&] { scene.parts.bannerUpdateButton->click(); }, "choice");
    scene.offerUpdate(PromptMode::BadgeOnly);
    camera.shoot(scene, "badge");
    place(scene, State::ApplyingUpdate, flowText("正在应用更新..."));
    scene.service.taskId = "apply_1f0c27aa";
    scene.setTaskActive(true);
    Q_EMIT scene.service.updateTaskProgressChanged("apply_1f0c27aa", "download", 42,
                                                   "detail:download-project");
    camera.shoot(scene, "task");
    scene.service.checkInFlight = false;
}

void shootCheck(const Camera &camera) {
    WindowScene scene;
    place(scene, State::UpdateCheck, flowText("正在检查更新..."));
    scene.service.taskId = "check_1f0c27aa";
    scene.setTaskActive(true);
    Q_EMIT scene.service.updateTaskProgressChanged("check_1f0c27aa", "check", -1,
                                                   "detail:fetch-manifest");
    camera.shoot(scene, "check");
    scene.service.checkInFlight = false;
}

// The boxes that tell the end of an update.
void shootEnds(const Camera &camera) {
    WindowScene scene;
    place(scene, State::RepairMode, flowText("修复模式：选择 yslib、查看日志或手动启动。"));
    const auto end = [&](bool success, const QString &details, const QString &name) {
        camera.shootModal([&] { Q_EMIT scene.service.applyUpdateFinished(success, details); },
                          name);
    };
    end(true, flowText("项目更新已完成。"), "updated");
    end(false,
        "[hash] Update zip hash failed: SHA256 mismatch for "
        "E:/QuorvanerUpdate/line3-2.4.0.zip (expected 5e88…, got a1b2…)",
        "update-failed");
}

// As much text as there can be: a path of 300 characters and thirty findings.
void shootCrowded(const Camera &camera) {
    WindowScene scene;
    const QString path = ("D:/" + QString("Line3/").repeated(50)).left(292) + "/a.yslib";
    QString findings;
    for (int i = 1; i <= 30; ++i)
        findings += QString("[error] YS%1 scripts/station_%1.ys: import not found\n").arg(100 + i);
    place(scene, State::RepairMode, findings + path);
    scene.service.projectPath = path;
    scene.service.updateSummary = findings;
    scene.offerUpdate(PromptMode::OnlineBanner);
    camera.shoot(scene, "crowded");
    camera.shootModal([&] { Q_EMIT scene.service.precheckFailed(scene.service.statusText); },
                      "findings");
}

void shootAll(const Camera &camera) {
    shootOrdinaryRun(camera);
    shootRepair(camera);
    shootStick(camera);
    shootUpdate(camera);
    shootCheck(camera);
    shootEnds(camera);
    shootCrowded(camera);
}

// What an installation of today has, so that the pictures show versions.
bool stageVersions() {
    const QString folder = support::stageRoot() + "/app/config";
    QFile file(folder + "/release_version.json");
    return QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) &&
           file.write(R"({"launcherPackageVersion": "1.4.0", "runtimePackageVersion": "1.8.1",
                          "editorPackageVersion": "1.3.2"})") > 0;
}

} // namespace

int main(int argc, char **argv) {
    if (!support::isStaged(argc, argv))
        return support::runStaged(argc, argv);
    support::dropStagedMarker(argc, argv);
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2)
        return 2;
    const int percent = arguments.size() > 2 ? arguments.at(2).toInt() : 100;
    const QString suffix = percent == 100 ? "%1" : QString("%1-%2").arg("%1").arg(percent);
    const QStringList wanted = arguments.mid(3);
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * percent / 100);
    QApplication::setFont(font);
    stageTranslation();
    if (!stageVersions())
        return 1;
    useLanguage(Language::Chinese);
    shootAll(Camera(arguments.at(1), suffix.arg("zh"), wanted));
    useLanguage(Language::English);
    shootAll(Camera(arguments.at(1), suffix.arg("en"), wanted));
    return 0;
}
