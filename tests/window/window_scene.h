// A launcher window over a real service, in the test program's own installation.
#pragma once

#include "window_parts.h"

#include "launcher/launcher_service.h"
#include "window/launcher_window.h"

#include <QMetaEnum>

#include <functional>

struct WindowScene {
    WindowScene();

    // Puts the service into a state without its flow and refreshes the window.
    void put(LauncherService::State state);
    // An update task as the service sees it: a check that is on its way.
    void setTaskActive(bool active);
    // An offer of an update, online or from a stick, and the prompt that goes with it.
    void offerUpdate(LauncherService::UpdatePromptMode mode);
    void refresh();

    LauncherService service;
    LauncherWindow window;
    WindowParts parts;
};

// Shows a window on a screen with a window manager, and waits for the frame that comes some time after.
void showFramed(QWidget &window);
// The frame's width and height as far as the window system has told of it.
[[nodiscard]] QSize frameOf(const QWidget &window);

// Lays the compiled English translation beside the staged program.
void stageTranslation();
// Takes it away again.
void removeTranslation();

enum class Language { Chinese, English };
// Brings the language in force; needs the staged translation for English.
void useLanguage(Language language);
// Rows "Chinese" and "English" with a column "language".
void addLanguageRows();

// Every state of the service with its name.
[[nodiscard]] QList<LauncherService::State> allStates();
[[nodiscard]] QByteArray nameOf(LauncherService::State state);

// Runs `action`, and `visit` with the modal widget that comes up during it; one that is still open
// then is closed. True when one came up.
[[nodiscard]] bool duringModal(const std::function<void()> &action,
                               const std::function<void(QWidget *)> &visit);

Q_DECLARE_METATYPE(Language)
