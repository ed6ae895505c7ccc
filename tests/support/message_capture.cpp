#include "support/message_capture.h"

#include <QMutex>

namespace support {
namespace {

QMutex mutex;
QStringList captured;
QtMessageHandler previous = nullptr;

void capture(QtMsgType, const QMessageLogContext &, const QString &message) {
    const QMutexLocker lock(&mutex);
    captured.append(message);
}

} // namespace

MessageCapture::MessageCapture() {
    captured.clear();
    previous = qInstallMessageHandler(capture);
}

MessageCapture::~MessageCapture() {
    qInstallMessageHandler(previous);
}

QStringList MessageCapture::messages() const {
    const QMutexLocker lock(&mutex);
    return captured;
}

} // namespace support
