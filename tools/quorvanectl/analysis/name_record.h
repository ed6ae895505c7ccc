// What an editor tells of a name.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace ctl {

struct Parameter {
    QString name;
    QString about; // the choices that there are
};

struct NameRecord {
    QString signature; // of a function the text of a call, of a variable its declaration
    QString description;
    QVector<Parameter> parameters; // each stands in the signature, in this order
    QString place;                 // where it is defined
    // Indices of the name in the text that was asked about.
    int from = 0;
    int to = 0;
};

// A call that is open around a place.
struct CallRecord {
    NameRecord function;
    int argument = 0; // the place's, from 0
};

// Of a function of the function library; nothing if there is none of this name.
[[nodiscard]] std::optional<NameRecord> libraryFunctionRecord(const QString &name);

// Of a key of a project's file; nothing if none stands there or it has no meaning there.
[[nodiscard]] std::optional<NameRecord> keyRecord(const QString &json, int index);

} // namespace ctl
