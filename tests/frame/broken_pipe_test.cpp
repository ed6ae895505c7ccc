// A program whose standard error has lost its reader goes on.
#include "frame/broken_pipe.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>
#include <cstdio>

#include <unistd.h>

class BrokenPipeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aWarningThatNobodyReadsIsLost();
    void programsThatAreStartedAreEndedByTheirs();
};

namespace {

// Standard error as a pipe that nobody reads, for the time of one object's life.
class UnreadErrors {
public:
    UnreadErrors()
        : before(::dup(STDERR_FILENO)) {
        int ends[2] = {-1, -1};
        if (::pipe(ends) != 0)
            return;
        (void)::dup2(ends[1], STDERR_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
    }
    ~UnreadErrors() {
        (void)::dup2(before, STDERR_FILENO);
        ::close(before);
    }
    Q_DISABLE_COPY(UnreadErrors)

private:
    int before;
};

} // namespace

// Comes to its end at all, which it would not do without.
void BrokenPipeTest::aWarningThatNobodyReadsIsLost() {
    outliveBrokenPipes();
    const UnreadErrors unread;
    QVERIFY(std::fputs("nobody reads this\n", stderr) == EOF || std::fflush(stderr) == EOF);
}

// The quick end of `program | head` stays theirs.
void BrokenPipeTest::programsThatAreStartedAreEndedByTheirs() {
    outliveBrokenPipes();
    QProcess shell;
    shell.start("/bin/sh", {"-c", "kill -PIPE $$; echo alive"});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitStatus(), QProcess::CrashExit);
    QCOMPARE(shell.exitCode(), SIGPIPE);
    QCOMPARE(shell.readAllStandardOutput(), QByteArray());
}

QUORVANE_TEST_MAIN(QCoreApplication, BrokenPipeTest)
#include "broken_pipe_test.moc"
