// What the service and its workers share: the cancel flag and the way back to the service.
//
// A worker may outlive the service, which waits for it for a limited time only. So both own this
// block, and neither holds a pointer to the other.
#pragma once

#include "launcher/offer/update_context.h"

#include <QString>

#include <mutex>

class QObject;

class TaskLink {
public:
    explicit TaskLink(QObject *reportsTo)
        : service(reportsTo) {}

    CancelFlag cancelFlag{0};

    // Queues a call of the service's slot reportUpdateTaskProgress; drops the report when the
    // service is gone. Any thread.
    void reportProgress(const QString &taskId, const QString &phase, int percent,
                        const QString &detail);

    // Called by the service when it dies: no report reaches it from here on.
    void cut();

private:
    std::mutex lock; // a standard one, which ThreadSanitizer can see
    QObject *service;
};
