// The scripts as they count at this moment: the text of an editor before the file on the disk.
//
// A file is read again only when its size or time has changed or it is told to have, and looked into
// again only when its content has; what is kept of it is a summary, not the text. One thread.
#pragma once

#include "quorvanectl/analysis/moved_symbols.h"
#include "quorvanectl/analysis/script_summary.h"
#include "quorvanectl/files/file_stamp.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <memory>

namespace ctl {

class ScriptStore {
public:
    // The text that an editor holds of this file, whether or not there is one. Paths are absolute and
    // cleaned.
    void open(const QString &path, const QString &text);
    // From here on the file on the disk counts again.
    void close(const QString &path);
    // The file may have changed.
    void fileChanged(const QString &path);

    [[nodiscard]] bool isOpen(const QString &path) const { return openScripts.contains(path); }
    // Of the open text, or of the file; an empty summary where no plain file can be read. Never null.
    [[nodiscard]] std::shared_ptr<const ScriptSummary> summaryOf(const QString &path);
    // The names of the open text, those that it had before it was spoilt where something is wrong with it;
    // or of the file. Never null.
    [[nodiscard]] std::shared_ptr<const ScriptSymbols> symbolsOf(const QString &path);
    // What those learn of it that import it; of an open text by its names, as they are above.
    [[nodiscard]] ScriptExports exportsOf(const QString &path);
    // Forgets the files that are not among these.
    void keepOnly(const QSet<QString> &paths);
    // How many texts were looked into so far.
    [[nodiscard]] int summaryCount() const { return summaries; }

private:
    struct OpenScript {
        QString text;
        std::shared_ptr<const ScriptSummary> summary; // null until it is asked for
        MovedSymbols symbols;
    };
    struct KnownFile {
        FileStamp stamp;
        bool isRead = false; // and may be taken for what the stamp tells
        QByteArray hash;
        std::shared_ptr<const ScriptSummary> summary;
        std::shared_ptr<const ScriptSymbols> symbols; // null until they are asked for
    };

    void readAnew(const QString &path, KnownFile *file);

    void letGoOfTree();

    QHash<QString, OpenScript> openScripts;
    QString withTree; // the open script that may have one
    QHash<QString, KnownFile> files;
    int summaries = 0;
};

} // namespace ctl
