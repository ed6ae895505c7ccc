// The bytes of a zip archive: whatever they are, nothing appears outside the target, and no link.

#include "support.h"
#include "update/files/file_operations.h"
#include "update/files/zip_extract.h"

#include <QDirIterator>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const QString zip = fuzz::write(QStringLiteral("input.zip"), fuzz::bytesOf(data, size));
    const QString target = fuzz::folder().filePath(QStringLiteral("a/target"));
    QString error;
    const bool extracted = extractZipWithin(zip, target, 5000, &error);
    fuzz::demand(extracted == error.isEmpty());

    const auto all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    fuzz::demand(QDir(fuzz::folder().path()).entryList(all).size() == 2);
    fuzz::demand(QDir(fuzz::folder().filePath(QStringLiteral("a"))).entryList(all).size() == 1);
    QDirIterator entries(target, all, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        fuzz::demand(entries.fileInfo().isFile() || entries.fileInfo().isDir());
        fuzz::demand(!entries.fileInfo().isSymLink());
    }
    fuzz::demand(removeDirectory(target));
    return 0;
}
