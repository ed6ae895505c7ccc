// The parameter store: variables that are written and deleted by name, from any thread.
//
// A writer emits ParaWriteSigDate or ParaDeleteSigDate. The call is queued to the store's thread,
// and all data is touched there and nowhere else; there is no lock. The writes of one writer are
// done in the order in which it emitted them. Failures are SendMessage texts, emitted on the
// store's thread.
//
//     YsDate speed;
//     speed.value = 12.5;
//     emit store->ParaWriteSigDate(QStringLiteral("speed"), speed);     // a variable
//     emit store->ParaWriteSigDate(QStringLiteral("lanes[4]"), speed);  // first: an array of four
//     emit store->ParaWriteSigDate(QStringLiteral("lanes[2]"), speed);  // from then on: an element
//
// Emit a named cell, as above. Passing it makes the copy that registers its type
// (parameter/ys_date.h); if the very first write of a process emits a temporary, no cell has ever
// been copied, and Qt then drops the writes to that store for good, with a warning.
//
// Ending: the end of its thread destroys a threaded store, on that thread. Deleting the store from
// another thread ends its thread and waits for it; deleteLater ends it without a wait. Do one of
// these, once, when the writers have stopped. To end the thread while they still emit, first
// disconnect its finished signal from the store; what they emit then is dropped with the store.
#pragma once

#include "parameter/base_parameter.h"

#include <QList>
#include <QStringList>

class QThread;

class SourceParameter : public QObject {
    Q_OBJECT

public:
    // With `threaded` the store lives on a thread of its own, else on the one that creates it,
    // whose event loop must then run for anything to be written.
    explicit SourceParameter(bool threaded);
    ~SourceParameter() override;

    // To be read on the store's thread only. The two lists run in parallel. The objects are owned
    // by nobody: a delete drops one from the lists and leaves it allocated and connected, and so
    // does the store's end. Whoever wants them freed takes them from the list.
    QList<BaseParameter *> m_parameters;
    QStringList m_names;
    QThread *m_thread = nullptr; // Null if not threaded.
    bool m_threaded;

Q_SIGNALS:
    // By value: what is emitted must be a copy.
    void ParaWriteSigDate(QString name, YsDate value);
    // An index in the name is ignored: the whole variable goes.
    void ParaDeleteSigDate(QString name);
    // A refusal of the store or of one of its variables.
    void SendMessage(QString message);
    void PrintThreadIDSignals();

public Q_SLOTS:
    // Writes the id of the store's thread to the debug log, from that thread.
    void PrintThreadIDSlots();

private Q_SLOTS:
    void ParaWriteSloDate(const QString &name, const YsDate &value);
    void ParaDeleteSloDate(const QString &name);

private:
    void startThread();
    void endThread();
    void leaveThread();
    BaseParameter *newParameter();
};
