#include "quorvanectl/shell/console.h"

#include <QFile>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

void ctl::occupyStandardStreams() {
    // The lowest free number is given out, so one behind the three says that all are taken.
    int last = 0;
    do
        last = ::open("/dev/null", O_RDONLY);
    while (last >= 0 && last <= STDERR_FILENO);
    ::close(last);
}

void ctl::prepareStreams() {}

std::unique_ptr<QIODevice> ctl::openStream(int stream) {
    auto file = std::make_unique<QFile>();
    if (stream == STDOUT_FILENO)
        (void)file->open(stdout, QIODevice::WriteOnly);
    else
        (void)file->open(stderr, QIODevice::WriteOnly | QIODevice::Unbuffered);
    return file;
}

bool ctl::isTerminal(int stream) {
    return isatty(stream) == 1;
}
