#include "first_frame.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const unsigned long unpainted = 0xff00ff; // a colour that no window of ours has
constexpr double patience = 30000;        // milliseconds
const timespec pollPause{0, 200000};

[[noreturn]] void giveUp(const char *reason) {
    std::fprintf(stderr, "benchmark_startup: %s\n", reason);
    std::exit(1);
}

double now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

// A connection of its own for each measurement, with the screen painted in the one colour: a window
// shows it through until the program paints.
class Watcher {
public:
    Watcher()
        : m_display(XOpenDisplay(nullptr)) {
        if (m_display == nullptr)
            giveUp("no display");
        m_root = DefaultRootWindow(m_display);
        XSetWindowBackground(m_display, m_root, unpainted);
        XClearWindow(m_display, m_root);
        XSelectInput(m_display, m_root, SubstructureNotifyMask);
        XSync(m_display, True);
    }
    ~Watcher() { XCloseDisplay(m_display); }
    Watcher(const Watcher &) = delete;
    Watcher &operator=(const Watcher &) = delete;

    void waitForPaint(double deadline) {
        const Window window = mappedWindow(deadline);
        XWindowAttributes place{};
        XGetWindowAttributes(m_display, window, &place);
        const int x = place.x + place.width / 2;
        const int y = place.y + place.height / 2;
        while (pixel(x, y) == unpainted)
            pauseUntil(deadline);
    }

private:
    Window mappedWindow(double deadline) {
        for (;;) {
            while (XPending(m_display) == 0)
                pauseUntil(deadline);
            XEvent event;
            XNextEvent(m_display, &event);
            if (event.type == MapNotify && event.xmap.override_redirect == False)
                return event.xmap.window;
        }
    }

    unsigned long pixel(int x, int y) {
        XImage *const image = XGetImage(m_display, m_root, x, y, 1, 1, AllPlanes, ZPixmap);
        const unsigned long colour = XGetPixel(image, 0, 0) & 0xffffff;
        XDestroyImage(image);
        return colour;
    }

    static void pauseUntil(double deadline) {
        if (now() > deadline)
            giveUp("no frame came");
        nanosleep(&pollPause, nullptr);
    }

    Display *m_display;
    Window m_root = 0;
};

pid_t startProgram(const QByteArray &program) {
    char *const arguments[] = {const_cast<char *>(program.constData()), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, program.constData(), nullptr, nullptr, arguments, environ) != 0)
        giveUp("the program does not start");
    return pid;
}

QByteArray readProcess(pid_t pid, const QString &name) {
    QFile file(QString("/proc/%1/%2").arg(QString::number(pid), name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A line such as "Rss:      51236 kB".
double mebibytes(const QByteArray &report, const QByteArray &name) {
    const int start = report.indexOf(name + ":") + name.size() + 1;
    return report.mid(start, report.indexOf("kB", start) - start).trimmed().toDouble() / 1024;
}

// The first number of a thread's schedstat is the nanoseconds that it ran.
double cpuTime(pid_t pid) {
    double nanoseconds = 0;
    const QDir threads(QString("/proc/%1/task").arg(pid));
    const QStringList names = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        const QByteArray times = readProcess(pid, "task/" + name + "/schedstat");
        nanoseconds += times.split(' ').constFirst().toDouble();
    }
    return nanoseconds / 1e6;
}

} // namespace

FirstFrame measureFirstFrame(const QString &program) {
    Watcher screen;
    FirstFrame frame;
    const double start = now();
    const pid_t pid = startProgram(QFile::encodeName(program));
    screen.waitForPaint(start + patience);
    frame.milliseconds = now() - start;
    kill(pid, SIGSTOP);
    frame.cpuMilliseconds = cpuTime(pid);
    const QByteArray report = readProcess(pid, "smaps_rollup");
    frame.residentMiB = mebibytes(report, "Rss");
    frame.proportionalMiB = mebibytes(report, "Pss");
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return frame;
}
