#include "quorvanectl/files/given_paths.h"

#include "quorvanectl/files/windows_names.h"

#include <QDir>
#include <QRegularExpression>

namespace {

// The names in a path, without the drive, or the server and its share.
QStringList namesIn(const QString &path) {
    const QString slashed = QDir::fromNativeSeparators(path);
    const bool hasDrive = slashed.size() > 1 && slashed.at(1) == QLatin1Char(':');
    const int first = slashed.startsWith(QLatin1String("//")) ? 4 : 0;
    return slashed.mid(hasDrive ? 2 : 0).split(QLatin1Char('/')).mid(first);
}

} // namespace

QString ctl::pathFault(const QString &path) {
    for (const QString &name : namesIn(path)) {
        const bool isStep = name == QLatin1String(".") || name == QLatin1String("..");
        const QString fault = isStep ? QString() : windowsNameFault(name);
        if (!fault.isEmpty())
            return fault;
    }
    return QString();
}

QString ctl::withoutLengthMark(const QString &argument) {
    static const QRegularExpression onServer(
        QStringLiteral(R"(^(--[a-z-]+=)?[\\/]{2}\?[\\/]UNC[\\/])"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression local(QStringLiteral(R"(^(--[a-z-]+=)?[\\/]{2}\?[\\/])"));
    QString plain = argument;
    return plain.replace(onServer, QStringLiteral(R"(\1//)"))
        .replace(local, QStringLiteral(R"(\1)"));
}
