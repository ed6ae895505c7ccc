// Tells ThreadSanitizer what Qt's event queue orders. Qt is not instrumented, so the sanitizer sees
// neither the queue's locks nor, therefore, that a cell is copied into the queue before the receiver
// reads it.
//
// Built and linked under ThreadSanitizer alone. The last thing that a copy of a cell does is to
// register its type; that call comes through here, and all that its thread has done counts as done
// for every event that is delivered from then on.
#include <QMetaType>

#include <sanitizer/tsan_interface.h>

namespace {

char queue;

bool acquireQueue(void **) {
    __tsan_acquire(&queue);
    return false; // The event goes on to its receiver.
}

const bool isInstalled = QInternal::registerCallback(QInternal::EventNotifyCallback, acquireQueue);

} // namespace

// In the place of Qt's own for all that this program registers. The overload that it passes on to is the one
// of older programs, which looks at neither of its first two functions.
int QMetaType::registerNormalizedType(const ::QByteArray &name, Destructor destructor,
                                      Constructor constructor, int size, TypeFlags flags,
                                      const QMetaObject *metaObject) {
    __tsan_release(&queue);
    return registerNormalizedType(name, nullptr, nullptr, destructor, constructor, size, flags,
                                  metaObject);
}
