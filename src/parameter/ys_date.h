// The value cell of the parameter store: a value and the tag of its kind, copied freely.
//
// A cell travels through queued signals, so Qt must know its type under the name "YsDate". Copying
// a cell registers the type, every time; nothing else does. A cell is thus transportable once any
// cell of the process has been copied, and passing a named cell to a signal is such a copy. Do not
// add Q_DECLARE_METATYPE: it would register the type at the connection already.
//
// Threads: a cell has none; copies may be made on any thread.
#pragma once

#include <QVariant>

struct YsDate {
    YsDate() = default;
    YsDate(const YsDate &other);
    // No move operations: a moved cell would be one that was never registered.
    YsDate &operator=(const YsDate &other);
    ~YsDate() = default;

    QVariant value;  // The store never looks inside.
    qint32 kind = 5; // Which number stands for which kind is the writers' affair.
};
