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

// QMetaType::registerNormalizedType, the overload that takes a name and a type's functions, under the
// names that the linker's --wrap gives to it and to what stands in for it.
#define WRAPPED                                                                                    \
    "_ZN9QMetaType22registerNormalizedTypeERK10QByteArrayPFvPvEPFS3_S3_PKvEi6QFlagsINS_"           \
    "8TypeFlagEE"                                                                                  \
    "PK11QMetaObject"
int registerInQt(const QByteArray &name, QMetaType::Destructor destructor,
                 QMetaType::Constructor constructor, int size, QMetaType::TypeFlags flags,
                 const QMetaObject *metaObject) asm("__real_" WRAPPED);
int registerHere(const QByteArray &name, QMetaType::Destructor destructor,
                 QMetaType::Constructor constructor, int size, QMetaType::TypeFlags flags,
                 const QMetaObject *metaObject) asm("__wrap_" WRAPPED);

int registerHere(const QByteArray &name, QMetaType::Destructor destructor,
                 QMetaType::Constructor constructor, int size, QMetaType::TypeFlags flags,
                 const QMetaObject *metaObject) {
    __tsan_release(&queue);
    return registerInQt(name, destructor, constructor, size, flags, metaObject);
}
