// The launcher's main once more, with the recorder's names in the place of the frame's, so that a
// test sees what it calls and in which order.
#include "main_recorder.h"

#include "frame/broken_pipe.h"

#define main launcherMain
#define outliveBrokenPipes recorder::outliveBrokenPipes
#define AppPaths recorder::Paths
#define SettingsStore recorder::Settings
#define LocaleManager recorder::Locale
#define FunctionLibrary recorder::Library
#define SourceParameter recorder::Parameters
#define LauncherService recorder::Service
#define LauncherWindow recorder::Window

// The source itself, so that no line of the entry goes untested.
#include "frame/entry/main.cpp" // NOLINT(bugprone-suspicious-include)
