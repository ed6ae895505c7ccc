// Extracts one archive and prints the failure: for a test that runs it under another mount table.
#include "update/files/zip_extract.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    QString error;
    if (extractZip(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]), &error))
        return 0;
    std::printf("%s\n", qPrintable(error));
    return 1;
}
