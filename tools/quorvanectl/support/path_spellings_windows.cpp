#include "quorvanectl/support/path_spellings.h"

#include <QDir>

#include <windows.h>

#include <vector>

namespace ctl {
namespace {

using Speller = DWORD(WINAPI *)(const wchar_t *path, wchar_t *spelled, DWORD size);

QString spelled(const QString &folder, Speller spell) {
    const std::wstring path = QDir::toNativeSeparators(folder).toStdWString();
    std::vector<wchar_t> buffer(spell(path.c_str(), nullptr, 0) + 1);
    const DWORD length = spell(path.c_str(), buffer.data(), DWORD(buffer.size()));
    return length < buffer.size()
               ? QDir::fromNativeSeparators(QString::fromWCharArray(buffer.data(), int(length)))
               : QString();
}

} // namespace

const QRegularExpression::PatternOption pathsAreRead = QRegularExpression::CaseInsensitiveOption;

QStringList otherSpellings(const QString &folder) {
    QStringList found{spelled(folder, GetShortPathNameW), spelled(folder, GetLongPathNameW)};
    found.removeAll(QString());
    return found;
}

} // namespace ctl
