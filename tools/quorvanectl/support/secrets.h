// What must not leave a line PC with a support archive, taken out of texts. Any thread.
#pragma once

#include <QString>

namespace ctl {

// The text without the nonces of started runtimes, and without the user names, passwords, queries and
// fragments of addresses, where tokens stand. "(left out)" says where something was.
[[nodiscard]] QString withoutSecrets(QString text);

// The text with "~" for the folder of whichever user: of this one, and by the places where systems
// keep them.
[[nodiscard]] QString withoutHomePaths(QString text);

} // namespace ctl
