// Installers that are small real programs, and what they told when they ran: see installer.cpp.
#pragma once

#include "support/staged_main.h"
#include "update/files/text_file.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace installers {

inline int test = 0;

// Each test has a folder of its own: nothing waits for the installers of the one before.
inline QString toldFolder() {
    return support::stageRoot() + "/told/" + QString::number(test) + '/';
}

inline void forget() {
    ++test;
}

// The bytes of an installer that tells this name.
inline QByteArray named(const QByteArray &name) {
    QFile program(QStringLiteral(INSTALLER_PROGRAM));
    if (!program.open(QIODevice::ReadOnly))
        qFatal("no installer in %s", qPrintable(program.fileName()));
    return program.readAll() + '\n' + toldFolder().toUtf8() + '\n' + name;
}

// One text for each that was started, in their order: the name and the number of arguments. Empty
// for one that has not told it yet.
inline QStringList ran() {
    QStringList told;
    while (QFileInfo::exists(toldFolder() + QString::number(told.size())))
        told.append(readTextFile(toldFolder() + QString::number(told.size()) + "/told"));
    return told;
}

} // namespace installers
