// Puts the unpacker beside the program, under the name of the one that Windows has.
#include "support/unpacking.h"

#include <QCoreApplication>
#include <QFile>

void support::provideUnpacking() {
    const QString place = QCoreApplication::applicationDirPath() + "/powershell.exe";
    if (!QFile::exists(place) && !QFile::copy(QStringLiteral(UNPACKER_PROGRAM), place))
        qFatal("cannot place %s", qPrintable(place));
}
