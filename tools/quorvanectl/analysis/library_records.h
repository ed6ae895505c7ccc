// The functions of the function library, each as its file has it.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace ctl {

struct LibraryRecord {
    QString name;
    // The text of a call; null where the line has too few fields for its arguments.
    QString callTemplate;
    QStringList arguments;        // as the call has them
    QVector<QStringList> options; // of each: the choices that there are, mostly none
    QString description;          // empty where the line ends with its last argument
};

// In the order of the file; of equal names the last alone.
[[nodiscard]] QVector<LibraryRecord> libraryRecords();

// The one that is spelled so; nothing if there is none.
[[nodiscard]] std::optional<LibraryRecord> libraryRecord(const QString &name);

// The same call with its arguments as places to fill in, as snippets of editors are written.
[[nodiscard]] QString snippetOf(const LibraryRecord &function);

} // namespace ctl
