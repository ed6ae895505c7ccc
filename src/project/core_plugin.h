// The runtime's core plug-in, without which no project runs.
#pragma once

#include <QString>

// Whether it lies in `pluginFolder`; `error` receives the text for the user if it does not. In
// English and untranslated. Any thread.
[[nodiscard]] bool hasCorePlugin(const QString &pluginFolder, QString *error = nullptr);
