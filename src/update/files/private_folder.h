// A folder that nobody but its owner gets at.
#pragma once

#include <QString>

// Makes the folder, in one that exists; false if anything lies there already. What is made in it later
// is the owner's alone too. Any thread.
[[nodiscard]] bool makePrivateFolder(const QString &path);
