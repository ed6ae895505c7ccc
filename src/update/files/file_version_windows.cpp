#include "update/files/file_version.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>

#include <windows.h>

namespace {

QByteArray versionBlock(const QString &path) {
    const std::wstring name = QDir::toNativeSeparators(path).toStdWString();
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeW(name.c_str(), &unused);
    QByteArray block(int(size), '\0');
    if (size == 0 || !GetFileVersionInfoW(name.c_str(), 0, size, block.data()))
        return QByteArray();
    return block;
}

} // namespace

QString fileVersionText(const QString &path) {
    if (!QFileInfo::exists(path))
        return QString();
    const QByteArray block = versionBlock(path);
    VS_FIXEDFILEINFO *info = nullptr;
    UINT length = 0;
    if (block.isEmpty() ||
        !VerQueryValueW(block.constData(), L"\\", reinterpret_cast<void **>(&info), &length) ||
        !info || length < sizeof(VS_FIXEDFILEINFO))
        return QString();
    return QStringLiteral("%1.%2.%3.%4")
        .arg(QString::number(HIWORD(info->dwFileVersionMS)),
             QString::number(LOWORD(info->dwFileVersionMS)),
             QString::number(HIWORD(info->dwFileVersionLS)),
             QString::number(LOWORD(info->dwFileVersionLS)));
}
