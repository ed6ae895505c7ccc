// A project update applied from a stick's package, against the programs that do the same work, in one
// run.
//
//   apply     applyProjectUpdate on a project of 2 GiB in 20,000 files, against the sum of `cp` of the
//             package from the stick, `sha256sum` of it, `unzip -q`, `cp -a` (the backup), `sync -f` of
//             both folders, `rm -rf` of the old one, `mv`, and `rm -rf` of what is left: at most 0.8 times
//             their wall and processor time on a tmpfs, and their wall time on a disk
//   bare      the same against a program that does nothing but these steps, with the same libraries, and that
//             one against the programs: reported
//   one file  the same with all in one file (FILES 1): at most 1.1
//   stick     the same where the package is read at 30 MB/s, on both sides: at most 1.05 of the wall time
//   memory    what the apply takes beyond the idle program: less than 64 MiB
//   hash      fileSha256Hex on the package, against `openssl dgst -sha256`: reported
//
//   benchmark_apply [MEBIBYTES [FILES [ROUNDS [PROGRAM]]]]
//   benchmark_apply --stick [MEBIBYTES [FILES [ROUNDS [PROGRAM]]]]
//
// It works in a folder below TMPDIR, which needs room for four times the project: that folder's file system
// is the one that is measured. Each apply is a process of its own, as each program on the other side is;
// PROGRAM is another build of this one, whose apply is measured instead. The sides take turns in beginning
// a round, and each begins when the disk has come to rest.
#include "../support/measured_process.h"
#include "bare_apply.h"
#include "measured_project.h"
#include "quiet_disk.h"
#include "update/files/text_file.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <cstdio>
#include <string>

namespace {

constexpr char stickSpeed[] = "30e6"; // bytes a second

using Command = std::vector<QByteArray>;

// In seconds, of one round.
struct Times {
    double wall = 0;
    double processor = 0;

    void add(const Spent &spent) {
        wall += spent.seconds;
        processor += spent.processorSeconds;
    }
};

// Of all rounds.
struct Side {
    std::vector<double> wall;
    std::vector<double> processor;

    void add(const Times &times) {
        wall.push_back(times.wall);
        processor.push_back(times.processor);
    }
};

// The programs' side with and without those that came to it later.
struct Programs {
    Side all;
    Side withoutCopy;
    Side withoutCopyAndSync;
};

// The same with the package as slow as a stick.
Command slowly(const Place &place, bool slow, Command command) {
    if (slow) {
        const QByteArray file = place.bytes("line3.zip");
        command.insert(command.begin(),
                       {"env", "LD_PRELOAD=" QUORVANE_SLOW_READS, "SLOW_FILE=" + file,
                        QByteArray("SLOW_BYTES=") + stickSpeed});
    }
    return command;
}

void putOldProject(const Place &place) {
    (void)runProcess({"rm", "-rf", place.bytes("project"), place.bytes("data")});
    (void)runProcess({"cp", "-a", place.bytes("old"), place.bytes("project")});
    waitForQuietDisk(place.root);
}

void runPrograms(const Place &place, bool slow, Programs *sums) {
    const QByteArray stick = place.bytes("line3.zip");
    const QByteArray zip = place.bytes("copy.zip");
    const QByteArray project = place.bytes("project");
    const QByteArray staging = place.bytes("staging");
    const QByteArray backup = place.bytes("backup");
    const std::vector<std::pair<const char *, Command>> steps{
        {"cp", slowly(place, slow, {"cp", stick, zip})},
        {"sha256sum", {"sh", "-c", "sha256sum \"$1\" >/dev/null", "sh", zip}},
        {"unzip", {"unzip", "-q", zip, "-d", staging}},
        {"rm", {"rm", zip}},
        {"cp -a", {"cp", "-a", project, backup}},
        {"sync -f", {"sync", "-f", backup}},
        {"sync -f", {"sync", "-f", staging}},
        {"rm -rf", {"rm", "-rf", project}},
        {"mv", {"mv", staging, project}},
        {"rm -rf", {"rm", "-rf", backup}},
    };
    Times all;
    Times withoutCopy;
    Times withoutCopyAndSync;
    std::printf("  the programs:");
    for (const auto &[name, command] : steps) {
        const Spent spent = runProcess(command);
        std::printf(" %s %.2f/%.2f", name, spent.seconds, spent.processorSeconds);
        all.add(spent);
        const bool copies = name == std::string("cp") || name == std::string("rm");
        if (!copies)
            withoutCopy.add(spent);
        if (!copies && name != std::string("sync -f"))
            withoutCopyAndSync.add(spent);
    }
    std::printf(", sum %.2f/%.2f s\n", all.wall, all.processor);
    sums->all.add(all);
    sums->withoutCopy.add(withoutCopy);
    sums->withoutCopyAndSync.add(withoutCopyAndSync);
}

// This program once more, for one side of a round.
Spent runSelf(const Place &place, bool slow, const QByteArray &program, const char *side) {
    return runProcess(slowly(place, slow, {program, side, QFile::encodeName(place.root)}));
}

void report(const char *what, const Spent &spent, Side *sums) {
    std::printf("  %s: %.2f/%.2f s\n", what, spent.seconds, spent.processorSeconds);
    Times times;
    times.add(spent);
    sums->add(times);
}

void runApply(const Place &place, bool slow, Side *sums, double *peak) {
    const Spent spent = runSelf(place, slow, place.bytes("app/benchmark_apply"), "--apply");
    report("apply", spent, sums);
    *peak = qMax(*peak, spent.peakMebibytes);
}

void runBare(const Place &place, Side *sums) {
    const QByteArray self = QFile::encodeName(QCoreApplication::applicationFilePath());
    report("bare", runSelf(place, false, self, "--bare"), sums);
}

// "1.00 in wall time (2.00 s, the programs 2.00 s), ..." of the medians.
void printRatio(const Side &ours, const Side &theirs, const char *named) {
    std::printf("ratio %.2f in wall time (%.2f s, %s %.2f s), %.2f in processor time (%.2f s, "
                "%.2f s), medians of %d rounds\n",
                median(ours.wall) / median(theirs.wall), median(ours.wall), named,
                median(theirs.wall), median(ours.processor) / median(theirs.processor),
                median(ours.processor), median(theirs.processor), int(ours.wall.size()));
}

struct Sides {
    Side apply;
    Programs programs;
    Side bare;
    double peak = 0; // of the applies, in MiB
};

// One process of each kind a round, in another order each time. From a stick nothing stands bare: its reading
// takes most of the time on either side.
Sides runRounds(const Place &place, bool slow, int rounds) {
    Sides sides;
    const int kinds = slow ? 2 : 3;
    for (int turn = 0; turn < kinds * rounds; ++turn) {
        putOldProject(place);
        const int side = (turn / kinds + turn) % kinds;
        if (side == 0)
            runApply(place, slow, &sides.apply, &sides.peak);
        else if (side == 1)
            runPrograms(place, slow, &sides.programs);
        else
            runBare(place, &sides.bare);
        std::fflush(stdout);
    }
    return sides;
}

// scripts/benchmark reads the beginnings of these lines.
void compareApply(const Place &place, const char *what, bool slow, int rounds) {
    const double idle =
        runSelf(place, false, place.bytes("app/benchmark_apply"), "--idle").peakMebibytes;
    const Sides sides = runRounds(place, slow, rounds);
    const QByteArray volume = QStorageInfo(place.root).fileSystemType();
    std::printf("%s on %s: ", what, volume.constData());
    printRatio(sides.apply, sides.programs.all, "the programs");
    std::printf("without the cp of the package: ");
    printRatio(sides.apply, sides.programs.withoutCopy, "the programs");
    std::printf("without sync -f too: ");
    printRatio(sides.apply, sides.programs.withoutCopyAndSync, "the programs");
    if (!slow) {
        std::printf("against the bare steps: ");
        printRatio(sides.apply, sides.bare, "bare");
        std::printf("the bare steps against the programs: ");
        printRatio(sides.bare, sides.programs.all, "the programs");
    }
    std::printf("memory: peak %.1f MiB, idle %.1f MiB, %.1f MiB above   (reach 64)\n", sides.peak,
                idle, sides.peak - idle);
}

void compareHash(const Place &place, int rounds) {
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer clock;
        clock.start();
        if (fileSha256Hex(place.at("line3.zip")).isEmpty())
            qFatal("no hash");
        ours.push_back(double(clock.nsecsElapsed()) / 1e9);
        theirs.push_back(runProcess({"openssl", "dgst", "-sha256", "-out", "/dev/null",
                                     place.bytes("line3.zip")})
                             .seconds);
    }
    const double mebibytes = double(QFileInfo(place.at("line3.zip")).size()) / (1 << 20);
    std::printf("hash of %.0f MiB: fileSha256Hex %.2f s (%.0f MiB/s), openssl dgst %.2f s "
                "(%.0f MiB/s), ratio %.2f\n",
                mebibytes, median(ours), mebibytes / median(ours), median(theirs),
                mebibytes / median(theirs), median(ours) / median(theirs));
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--apply" || arguments.value(1) == "--idle")
        return applyPackage({arguments.value(2)}, arguments.value(1) == "--idle");
    if (arguments.value(1) == "--bare") {
        bareApply({arguments.value(2)});
        return 0;
    }
    const bool slow = arguments.removeAll("--stick") > 0;
    const auto number = [&arguments](int index, int otherwise) {
        return arguments.size() > index ? arguments.at(index).toInt() : otherwise;
    };
    const QTemporaryDir temporary;
    const Place place{temporary.path()};
    qputenv("XDG_DATA_HOME", place.bytes("data"));
    const int files = number(2, 20000);
    makePackage(place, number(1, 2048), files);
    const QString program = arguments.value(4, QCoreApplication::applicationFilePath());
    if (!QFile::copy(program, place.at("app/benchmark_apply")))
        qFatal("cannot copy %s", qPrintable(program));
    const int rounds = number(3, 7);
    compareApply(place, slow ? "stick" : (files == 1 ? "one file" : "apply"), slow, rounds);
    if (!slow)
        compareHash(place, rounds);
    return 0;
}
