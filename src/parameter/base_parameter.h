// One named variable of the parameter store: a scalar or an array, each element tagged with a kind.
//
// The first write creates it; from then on it accepts only values of the kind it holds. A refusal
// leaves it as it was and is one SendMessage; nothing throws.
//
// The name given to a write only serves its message and, on creation, becomes the variable's name.
// It carries no index. Arguments come by value: the copy of the cell registers its type
// (parameter/ys_date.h), also where the write is refused.
//
// Threads: no lock; belongs to the thread of the store that holds it.
#pragma once

#include "parameter/ys_date.h"

#include <QObject>
#include <QString>

#include <vector>

class BaseParameter : public QObject {
    Q_OBJECT

public:
    BaseParameter() = default;

    // Creates a scalar, or modifies a variable that exists.
    void ParaCreate(QString name, YsDate value);

    // Creates an array of `number` copies of the value (none for a number below 1), or modifies the
    // element `number` of a variable that exists. A size that memory cannot hold is refused.
    void ParaCreateArray(QString name, YsDate value, qint32 number);

    // Makes the value the variable's only one. True if it was REFUSED.
    [[nodiscard]] bool ParaModify(QString name, YsDate value);

    // Replaces one element. True if it was REFUSED.
    [[nodiscard]] bool ParaModifyElement(QString name, YsDate value, qint32 index);

    // True if the name may be a parameter's. Usable from any thread.
    [[nodiscard]] static bool ParaNameIsLegal(QString name);

    // To be read and written on the store's thread only.
    std::vector<YsDate> m_values;
    QString m_name = QStringLiteral("m_m_nullname"); // While it reads so, nothing is created.
    qint32 m_arraySize =
        0; // As given at creation; not changed when a scalar write shrinks an array.

Q_SIGNALS:
    // Why a write was refused.
    void SendMessage(QString message);

private:
    bool isCreated() const;
    bool refuse(const QString &message);
    QString limitMessage(const QString &name, qint32 index) const;
};
