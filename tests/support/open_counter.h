// How often the files of some folders are opened, by this process or another. The kernel counts.
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace support {

using Opens = QMap<QString, int>; // absolute path to how often it was opened

class OpenCounter {
public:
    // Counts from here on. The folders must be there; what lies in their sub-folders does not count.
    explicit OpenCounter(const QStringList &folders);
    ~OpenCounter();
    OpenCounter(const OpenCounter &) = delete;
    OpenCounter &operator=(const OpenCounter &) = delete;

    // Since the last call. Every open that has returned is among them.
    [[nodiscard]] Opens take();

private:
    int queue;
    QMap<int, QString> folderOf;
};

} // namespace support
