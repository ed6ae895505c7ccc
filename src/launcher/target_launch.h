// The facts and texts around the start of the target; the start itself is LauncherService's.
#pragma once

#include <QProcess>
#include <QString>

// The environment variable QUORVANE_DEV is "1", or "true" in any case: the editor may stand in for
// a missing runtime.
[[nodiscard]] bool isDevMode();

// Why nothing can be started from `directory`. `editorAllowed`: dev mode or a source tree.
[[nodiscard]] QString missingTargetText(const QString &directory, bool editorAllowed,
                                        bool editorPresent);

// 32 lower-case hexadecimal digits.
[[nodiscard]] QString newLaunchNonce();

// A hint at how the target ended, in Chinese and not translated; null when there is nothing to say.
[[nodiscard]] const char *exitSuffix(int exitCode, QProcess::ExitStatus exitStatus);
