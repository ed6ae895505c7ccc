// Short work tells nothing of its progress, and long work does: in lines, or on a terminal in one
// line that is wiped at the end.
#include "quorvanectl/shell/progress.h"

#include "support/staged_main.h"

#include <QBuffer>
#include <QCoreApplication>

namespace {

// Work of a length that only ends when something was told, or after `seconds`.
QByteArray toldOf(bool onTerminal, qint64 done, int seconds) {
    QBuffer err;
    err.open(QIODevice::WriteOnly);
    ctl::Console console;
    console.err = &err;
    console.errorsOnTerminal = onTerminal;
    {
        ctl::Progress progress(console, "a.zip");
        if (done >= 0)
            progress.reached(done, 200);
        std::this_thread::sleep_for(std::chrono::milliseconds(seconds * 1000 + 500));
    }
    return err.data();
}

} // namespace

class ProgressTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shortWorkTellsNothing();
    void theResultOfTheWorkIsHandedOn();
    void longWorkIsTold_data();
    void longWorkIsTold();
};

void ProgressTest::shortWorkTellsNothing() {
    QBuffer err;
    err.open(QIODevice::WriteOnly);
    ctl::Console console;
    console.err = &err;
    { const ctl::Progress progress(console, "a.zip"); }
    QCOMPARE(err.data(), QByteArray());
}

void ProgressTest::theResultOfTheWorkIsHandedOn() {
    QBuffer err;
    err.open(QIODevice::WriteOnly);
    ctl::Console console;
    console.err = &err;
    QCOMPARE(ctl::whileTelling(console, "a.zip", [] { return QString("done"); }), QString("done"));
}

// The one test that has to let time pass: time is what is tested.
void ProgressTest::longWorkIsTold_data() {
    QTest::addColumn<bool>("onTerminal");
    QTest::addColumn<qint64>("done");
    QTest::addColumn<QByteArray>("told");

    QTest::newRow("a part of it, in a line") << false << qint64(50) << QByteArray("a.zip: 25 %\n");
    QTest::newRow("of unknown length, in a line")
        << false << qint64(-1) << QByteArray("a.zip: 1 s\n");
    QTest::newRow("on a terminal, wiped at the end")
        << true << qint64(200) << QByteArray("\ra.zip: 100 %\x1b[K\r\x1b[K");
}

void ProgressTest::longWorkIsTold() {
    QFETCH(bool, onTerminal);
    QFETCH(qint64, done);
    QFETCH(QByteArray, told);
    QCOMPARE(toldOf(onTerminal, done, 1), told);
}

QUORVANE_TEST_MAIN(QCoreApplication, ProgressTest)
#include "progress_test.moc"
