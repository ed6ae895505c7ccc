// How long the window does not answer when it is given one line of 300,000 characters: a server's reason phrase,
// a version of a manifest that nobody signed. In a message box, in the log pane and in labels, at most 200 ms.
//
//   benchmark_long_line [ROUNDS]     11 unless told otherwise; on a screen, as of xvfb-run
//
// Told is the longest turn of the event loop from the moment in which the text is given until it has been painted,
// and what it took of the processor, medians of the rounds and the worst of them. Fonts are loaded before.

#include "window/bounded_pane.h"
#include "window/report_box.h"
#include "window/text_label.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <sys/resource.h>

namespace {

constexpr int length = 300000;
constexpr int shortLength = 40;
constexpr int watchTime = 400; // ms, enough for all that follows from a text

double processorTime() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto milliseconds = [](const timeval &time) {
        return double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3;
    };
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

struct Turn {
    double wall = 0;
    double processor = 0;
};

// Looks at the clock in each turn of the event loop, also in that of a box.
class TurnWatch : public QObject {
public:
    TurnWatch() {
        ticks.setInterval(0);
        connect(&ticks, &QTimer::timeout, this, [this] { look(); });
    }

    void begin() {
        longest = {};
        clock.start();
        processor = processorTime();
        ticks.start();
    }

    [[nodiscard]] Turn end() {
        ticks.stop();
        return longest;
    }

private:
    void look() {
        const double now = processorTime();
        longest.wall = std::max(longest.wall, double(clock.nsecsElapsed()) / 1e6);
        longest.processor = std::max(longest.processor, now - processor);
        clock.start();
        processor = now;
    }

    QTimer ticks;
    QElapsedTimer clock;
    double processor = 0;
    Turn longest;
};

QString repeated(const QString &units, int times) {
    return units.repeated(times / units.size() + 1).left(times);
}

struct Script {
    const char *name;
    QString units;
};

// Letters of one script, of two in turns, which a layout takes apart at each, and words.
const Script scripts[] = {
    {"Latin", QStringLiteral("x")},
    {"Chinese", QStringLiteral("产线三")},
    {"both in turns", QStringLiteral("a产")},
    {"words", QStringLiteral("reason 原因 ")},
};

void wait(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

Turn boxTurn(QWidget *parent, const QString &text) {
    TurnWatch watch;
    QTimer::singleShot(watchTime, [] { QApplication::activeModalWidget()->close(); });
    watch.begin();
    showReport(parent, QMessageBox::Warning, QStringLiteral("Report"), text);
    return watch.end();
}

Turn turnOf(const std::function<void()> &give) {
    TurnWatch watch;
    watch.begin();
    give();
    wait(watchTime);
    return watch.end();
}

Turn paneTurn(QWidget *window, const QString &text) {
    QPlainTextEdit pane;
    boundLayout(&pane);
    window->layout()->addWidget(&pane);
    pane.show();
    return turnOf([&] { pane.appendPlainText(text); });
}

Turn labelTurn(QWidget *window, const QString &text, bool wraps) {
    TextLabel label(window);
    label.setWordWrap(wraps);
    label.setMaximumLines(wraps ? 4 : 1);
    window->layout()->addWidget(&label);
    label.show();
    return turnOf([&] { label.setText(text); });
}

struct Place {
    const char *name;
    std::function<Turn(QWidget *, const QString &)> turn;
};

const Place places[] = {
    {"message box", boxTurn},
    {"log pane", paneTurn},
    {"label of one line",
     [](QWidget *window, const QString &text) { return labelTurn(window, text, false); }},
    {"label of lines",
     [](QWidget *window, const QString &text) { return labelTurn(window, text, true); }},
};

double worst = 0;

void measure(QWidget *window, const Place &place, const Script &script, int rounds) {
    (void)place.turn(window, repeated(script.units, shortLength));
    QVector<double> wall;
    QVector<double> processor;
    for (int round = 0; round < rounds; ++round) {
        // Labels remember what they have measured, so each round has a text of its own.
        const Turn turn =
            place.turn(window, QString::number(round) + repeated(script.units, length));
        wall.append(turn.wall);
        processor.append(turn.processor);
    }
    std::sort(wall.begin(), wall.end());
    std::sort(processor.begin(), processor.end());
    worst = std::max(worst, wall.last());
    std::printf("%-18s %-14s %7.1f ms, worst %7.1f; processor %7.1f ms, worst %7.1f\n", place.name,
                script.name, wall.at(rounds / 2), wall.last(), processor.at(rounds / 2),
                processor.last());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    const int rounds =
        std::max(QApplication::arguments().value(1, QStringLiteral("11")).toInt(), 1);
    QWidget window;
    window.setLayout(new QVBoxLayout);
    window.resize(640, 480);
    window.show();
    wait(watchTime);
    for (const Place &place : places)
        for (const Script &script : scripts)
            measure(&window, place, script, rounds);
    std::printf("the longest turn of all: %.1f ms (at most 200)\n", worst);
    return 0;
}
