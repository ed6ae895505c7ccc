// The entry: builds the process-wide frame in one fixed order, shows the window, starts the flow and
// tears down in reverse. No step depends on how an earlier one ended, so no result is looked at: a
// frame without settings, translation or function library runs on with less.
#include "frame/app_paths.h"
#include "frame/broken_pipe.h"
#include "frame/locale_manager.h"
#include "frame/settings_store.h"
#include "frame/without_open_gl.h"
#include "launcher/launcher_service.h"
#include "launcher/offer/stick_search.h"
#include "library/function_library.h"
#include "parameter/source_parameter.h"
#include "window/launcher_window.h"

#include <QApplication>
#include <QList>
#include <QThreadPool>

#include <cstdlib>

namespace {

// A worker may outlive the service. It ends while there is an application: Qt would wait
// for it later too, but no event reaches a thread by then, so a fetch would never end.
struct EndOfWorkers {
    ~EndOfWorkers() { QThreadPool::globalInstance()->waitForDone(); }
};

// Never deleted: the first one's thread still runs when the process ends.
QList<SourceParameter *> sourceParameters;

void makeSourceParameters() {
    if (!sourceParameters.isEmpty())
        return;
    sourceParameters.append(new SourceParameter(true));
    sourceParameters.append(new SourceParameter(false));
}

int runLauncher(int argc, char **argv) {
    outliveBrokenPipes(); // each step below may warn

    // Line PCs have screens of any density. These two only count before there is an application.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);

    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Quorvaner"));
    QCoreApplication::setOrganizationName(QStringLiteral("Quorvane"));

    AppPaths::initialize();
    (void)SettingsStore::instance().open();
    LocaleManager::instance().applySavedLocale(QStringLiteral("en"));
    (void)FunctionLibrary::instance().load(AppPaths::functionLibraryPath(), nullptr);
    makeSourceParameters();

    const EndOfWorkers endOfWorkers{};
    LauncherService service;
    service.initialize(); // stands on its own, so it makes the folders and opens the settings again
    LauncherWindow window(&service);
    {
        const WithoutOpenGl untilShown;
        window.show();
    }
    service.start(); // only now: the first countdownChanged must reach a window that is shown
    return QApplication::exec();
}

} // namespace

int main(int argc, char **argv) {
    const int status = runLauncher(argc, argv);
    // All that is ours has ended. What is left to destroy may still be in use.
    if (isStickSearchLeftBehind())
        std::_Exit(status);
    return status;
}
