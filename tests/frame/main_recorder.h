// What the launcher's main builds, each the real thing under a name that also notes when it is
// called.
#pragma once

#include "frame/app_paths.h"
#include "frame/locale_manager.h"
#include "frame/settings_store.h"
#include "launcher/launcher_service.h"
#include "library/function_library.h"
#include "parameter/source_parameter.h"
#include "window/launcher_window.h"

#include <QApplication>
#include <QList>

namespace recorder {

void note(const QString &step);

void outliveBrokenPipes();

struct Paths : AppPaths {
    static void initialize();
};

struct Settings {
    static Settings &instance();
    bool open();
};

struct Locale {
    static Locale &instance();
    void applySavedLocale(const QString &defaultLocale);
};

struct Library {
    static Library &instance();
    bool load(const QString &path, QString *error);
};

struct Parameters : SourceParameter {
    explicit Parameters(bool threaded);
};

// Ends when the real service has ended.
struct AfterService {
    ~AfterService();
};

struct Service : AfterService, LauncherService {
    Service();
    ~Service() override;
    void initialize();
    void start();
};

struct Window : LauncherWindow {
    explicit Window(LauncherService *launcher);
    ~Window() override;

protected:
    void showEvent(QShowEvent *event) override;
};

} // namespace recorder

// The launcher's main, built with these names.
int launcherMain(int argc, char **argv);
