// Fetches one URL and prints the failure or the size: for a test that limits its memory.
#include "update/http_fetch.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const FetchResult result = fetchUrl(QUrl(QString::fromLocal8Bit(argv[1])), 120000, 8);
    std::printf("%s\n", result.ok ? QByteArray::number(result.body.size()).constData()
                                  : qPrintable(result.error));
    return 0;
}
