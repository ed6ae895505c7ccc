#include "quorvanectl/support/system_facts.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace ctl {
namespace {

// Files of the kernel tell no size, so they are read to their end.
QString textOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

qint64 bytesOf(const QString &memory, const char *key) {
    const QRegularExpression line(QStringLiteral("^%1:\\s+(\\d+) kB").arg(QLatin1String(key)),
                                  QRegularExpression::MultilineOption);
    return line.match(memory).captured(1).toLongLong() * 1024;
}

} // namespace

Memory memoryOfThisPc() {
    const QString text = textOf(QStringLiteral("/proc/meminfo"));
    return {bytesOf(text, "MemTotal"), bytesOf(text, "MemAvailable")};
}

// The first of a screen's modes is the one that it prefers.
QVector<Screen> screensOfThisPc() {
    QVector<Screen> screens;
    const QDir cards(QStringLiteral("/sys/class/drm"));
    for (const QString &name :
         cards.entryList({QStringLiteral("card*-*")}, QDir::Dirs, QDir::Name)) {
        const QDir card(cards.filePath(name));
        if (textOf(card.filePath(QStringLiteral("status"))).trimmed() == QLatin1String("connected"))
            screens.append(
                {name,
                 textOf(card.filePath(QStringLiteral("modes"))).section(QLatin1Char('\n'), 0, 0),
                 0});
    }
    return screens;
}

} // namespace ctl
