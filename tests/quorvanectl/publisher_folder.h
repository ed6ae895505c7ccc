// A folder in which a publisher's commands are run, with what they work on.
#pragma once

#include "run_tool.h"
#include "support/file_tree.h"

#include "quorvanectl/shell/command.h"

#include <QTemporaryDir>
#include <QtTest>

namespace support {

class PublisherFolder {
public:
    QString path(const QString &name) const { return folder.filePath(name); }

    // A line as one types it in this folder.
    Answer line(const QString &text) const { return runLine(text, folder.path()); }

    void lay(const FileTree &tree) const { writeTree(folder.path(), tree); }

    // An unsigned manifest of one installer.
    void layManifest() const {
        lay({{"site/setup-1.2.0.exe", "an installer"}});
        const Answer made = line("quorvanectl update manifest --runtime site/setup-1.2.0.exe "
                                 "--out site/manifest.json");
        QCOMPARE(made.err, QString());
    }

    void layKeys() const {
        QCOMPARE(line("quorvanectl keys new keys --no-encrypt").status, int(ctl::Clean));
    }

private:
    QTemporaryDir folder;
};

} // namespace support
