#include "launcher/task_link.h"

#include <QMetaObject>
#include <QObject>

void TaskLink::reportProgress(const QString &taskId, const QString &phase, int percent,
                              const QString &detail) {
    const std::lock_guard<std::mutex> locked(lock);
    if (service == nullptr)
        return;
    QMetaObject::invokeMethod(service, "reportUpdateTaskProgress", Qt::QueuedConnection,
                              Q_ARG(QString, taskId), Q_ARG(QString, phase), Q_ARG(int, percent),
                              Q_ARG(QString, detail));
}

void TaskLink::cut() {
    const std::lock_guard<std::mutex> locked(lock);
    service = nullptr;
}
