// The entries of one folder, none left out without a word.
#pragma once

#include <QFileInfo>
#include <QString>

// Appends the entries of one folder, hidden ones too, in no defined order. Unlike Qt's iterator this
// tells a folder that cannot be read from an empty one, and a name that is no UTF-8 from none: what
// cannot be seen would be left out. `unreadable` receives the path of either;
// `entries` holds what was seen all the same. Any thread.
[[nodiscard]] bool listFolder(const QString &folder, QFileInfoList *entries,
                              QString *unreadable = nullptr);
