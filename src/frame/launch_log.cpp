#include "frame/launch_log.h"

#include "frame/app_paths.h"
#include "frame/log_append.h"
#include "frame/pipe_or_device.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace {

std::function<void(const QString &)> redirected;

} // namespace

void redirectLaunchLog(std::function<void(const QString &message)> sink) {
    redirected = std::move(sink);
}

void appendLaunchLog(const QString &message) {
    if (redirected)
        return redirected(message);
    const QString now =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const QString line = QStringLiteral("%1 %2\n").arg(now, message);
    (void)appendToFile(AppPaths::launchLogPath(), line.toUtf8()); // a lost line stops nothing
}

RunLogView::RunLogView()
    : offset(QFileInfo(AppPaths::launchLogPath()).size()) {}

QString RunLogView::text() const {
    QFile file(AppPaths::launchLogPath());
    if (isPipeOrDevice(file.fileName()) || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    const qint64 start = file.size() < offset ? 0 : offset;
    if (!file.seek(start))
        return QString();
    const QByteArray bytes = file.readAll();
    return QString::fromUtf8(bytes.constData(), bytes.size()).trimmed();
}
