#include "main_recorder.h"

#define main launcherMain
#define AppPaths recorder::Paths
#define SettingsStore recorder::Settings
#define LocaleManager recorder::Locale
#define FunctionLibrary recorder::Library
#define SourceParameter recorder::Parameters
#define LauncherService recorder::Service
#define LauncherWindow recorder::Window

// The source itself, so that no line of the entry goes untested.
#include "frame/entry/main.cpp" // NOLINT(bugprone-suspicious-include)
