// Stands in for PowerShell: unpacks the archive that the script names, as the script does. It knows
// entries that are not packed, as zipOf() of file_tree.h makes them in Windows builds.
#include "update/files/zip_extract.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <QtEndian>

#include <cstdio>

namespace {

int fail(const QString &text) {
    std::fputs(text.toLocal8Bit().constData(), stderr);
    return 1;
}

quint32 number(const QByteArray &bytes, int at, int size) {
    const char *place = bytes.constData() + at;
    return size == 2 ? qFromLittleEndian<quint16>(place) : qFromLittleEndian<quint32>(place);
}

// Names and contents, from the records in front of each entry.
QMap<QString, QByteArray> entriesOf(const QByteArray &archive) {
    QMap<QString, QByteArray> entries;
    int at = 0;
    while (archive.mid(at, 4) == "PK\3\4" && number(archive, at + 8, 2) == 0) {
        const int size = int(number(archive, at + 18, 4));
        const int nameSize = int(number(archive, at + 26, 2));
        const int content = at + 30 + nameSize + int(number(archive, at + 28, 2));
        entries.insert(QString::fromUtf8(archive.mid(at + 30, nameSize)),
                       archive.mid(content, size));
        at = content + size;
    }
    return entries;
}

bool write(const QString &path, const QByteArray &content) {
    if (path.endsWith('/'))
        return QDir().mkpath(path);
    QFile file(path); // of two entries that are one file the second is refused
    return QDir().mkpath(QFileInfo(path).path()) && !file.exists() &&
           file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    static const QRegularExpression paths("ExtractToDirectory\\('(.*)','(.*)'\\);$");
    const auto named = paths.match(QCoreApplication::arguments().last());
    QFile archive(named.captured(1));
    if (!archive.open(QIODevice::ReadOnly))
        return fail("no archive");
    const QMap<QString, QByteArray> entries = entriesOf(archive.readAll());
    if (entries.isEmpty())
        return fail("no entries that can be read");
    for (const QString &name : entries.keys()) {
        if (isUnsafeZipName(name))
            return fail("unsafe zip entry: " + name);
    }
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        if (!write(named.captured(2) + '/' + entry.key(), entry.value()))
            return fail("cannot write " + entry.key());
    }
    return 0;
}
