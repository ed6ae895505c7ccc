// A project update applied from a local zip, against the programs that do the same work, in one run.
//
//   apply     applyProjectUpdate on a project of 2 GiB in 20,000 files, against the sum of
//             `sha256sum` of the package, `unzip -q`, `cp -a` (the backup), `rm -rf` of the old
//             folder, `mv`, and `rm -rf` of the backup: at most 1.4 times their time, the aim is 1.1
//   memory    what the apply takes beyond the idle program: less than 64 MiB
//   hash      fileSha256Hex on the package, against `openssl dgst -sha256`: reported
//
//   benchmark_apply [MEBIBYTES [FILES [ROUNDS]]]
//
// It works in a folder below TMPDIR, which needs room for four times the project. Each apply is a
// process of its own, as each program on the other side is.
#include "../support/measured_process.h"
#include "frame/app_paths.h"
#include "launcher/offer/project_apply.h"
#include "library/function_library.h"
#include "support/manifest_maker.h"
#include "update/files/text_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <cstdio>
#include <unistd.h>

namespace {

constexpr char projectText[] = R"({"schemaVersion": 1,
"project": {"name": "line3", "displayName": "Line 3", "createdAt": "2026-01-01", "version": "1.0"},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";

void write(const QString &path, const QByteArray &content) {
    QFile file(path);
    if (!ensureParentDir(path) || !file.open(QIODevice::WriteOnly) ||
        file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

// Half of each file can be packed, half not.
QByteArray contentOf(int number, int size) {
    QByteArray content(size, '\0');
    quint32 state = quint32(number) * 2654435761U + 1;
    for (int i = 0; i < size / 2; ++i) {
        state = state * 1664525U + 1013904223U;
        content[i] = char(state >> 24);
    }
    return content;
}

// The folders and names that both sides work on.
struct Place {
    QString root;

    [[nodiscard]] QString at(const char *name) const { return root + '/' + name; }
    [[nodiscard]] QByteArray bytes(const char *name) const { return QFile::encodeName(at(name)); }
};

void makeProject(const Place &place, int mebibytes, int files) {
    const auto size = int((qint64(mebibytes) << 20) / files);
    write(place.at("old/line3.yslib"), projectText);
    write(place.at("old/main.ys"), "");
    for (int i = 0; i < files; ++i)
        write(place.root + QStringLiteral("/old/data/%1/%2.bin").arg(i / 200).arg(i),
              contentOf(i, size));
    (void)runProcess(
        {"sh", "-c", "cd \"$1\" && zip -q -1 -r ../line3.zip .", "sh", place.bytes("old")});
    write(place.at("old/logs/run.log"), "old");
}

void makeManifest(const Place &place) {
    const support::KeyPair publisher = support::KeyPair::rsa(2048);
    const QJsonObject record{{"name", "line3"},
                             {"version", "2.0.0"},
                             {"zipUrl", "line3.zip"},
                             {"zipSha256", fileSha256Hex(place.at("line3.zip"))}};
    const QJsonObject manifest{{"projects", QJsonArray{record}}};
    write(place.at("manifest.json"), support::signedManifest(manifest, publisher).toUtf8());
    write(place.at("app/config/update.pub"), publisher.publicPem().toUtf8());
}

// In the process that is measured. Idle: all but the apply itself.
int applyOnly(const QString &root, bool idle) {
    const Place place{root};
    AppPaths::initialize();
    UpdateSnapshot snapshot;
    snapshot.manifestText = readTextFile(place.at("manifest.json"));
    snapshot.source = place.at("manifest.json");
    snapshot.baseLocation = root;
    snapshot.fromUsb = true;
    const QJsonObject manifest = QJsonDocument::fromJson(snapshot.manifestText.toUtf8()).object();
    snapshot.projectEntry = manifest.value("projects").toArray().first().toObject();
    if (idle)
        return 0;
    const ApplyResult result =
        applyProjectUpdate(snapshot, place.at("project/line3.yslib"), nullptr);
    if (!result.success)
        std::fprintf(stderr, "%s\n", qPrintable(result.message));
    return result.success ? 0 : 1;
}

// The old project, written out, so that no side pays for the other's disk.
void putOldProject(const Place &place) {
    (void)runProcess({"rm", "-rf", place.bytes("project")});
    (void)runProcess({"cp", "-a", place.bytes("old"), place.bytes("project")});
    ::sync();
}

double baseline(const Place &place) {
    const QByteArray zip = place.bytes("line3.zip");
    const QByteArray project = place.bytes("project");
    const QByteArray staging = place.bytes("staging");
    const QByteArray backup = place.bytes("backup");
    const std::vector<std::pair<const char *, std::vector<QByteArray>>> steps{
        {"sha256sum", {"sh", "-c", "sha256sum \"$1\" >/dev/null", "sh", zip}},
        {"unzip", {"unzip", "-q", zip, "-d", staging}},
        {"cp -a", {"cp", "-a", project, backup}},
        {"rm -rf", {"rm", "-rf", project}},
        {"mv", {"mv", staging, project}},
        {"rm -rf", {"rm", "-rf", backup}},
    };
    double sum = 0;
    std::printf("  baseline:");
    for (const auto &[name, command] : steps) {
        const double seconds = runProcess(command).seconds;
        std::printf(" %s %.2f s", name, seconds);
        sum += seconds;
    }
    std::printf(", sum %.2f s\n", sum);
    return sum;
}

void compareApply(const Place &place, int rounds) {
    const QByteArray self = place.bytes("app/benchmark_apply");
    const double idle = runProcess({self, "--idle", QFile::encodeName(place.root)}).peakMebibytes;
    std::vector<double> ours;
    std::vector<double> theirs;
    double peak = 0;
    for (int round = 0; round < rounds; ++round) {
        putOldProject(place);
        const Spent own = runProcess({self, "--apply", QFile::encodeName(place.root)});
        ours.push_back(own.seconds);
        peak = qMax(peak, own.peakMebibytes);
        std::printf("  apply: %.2f s\n", own.seconds);
        putOldProject(place);
        theirs.push_back(baseline(place));
        std::fflush(stdout);
    }
    std::printf("apply: applyProjectUpdate %.2f s, the programs %.2f s, ratio %.2f   (reach 1.4, "
                "aim 1.1)\n",
                median(ours), median(theirs), median(ours) / median(theirs));
    std::printf("memory: peak %.1f MiB, idle %.1f MiB, %.1f MiB above   (reach 64)\n", peak, idle,
                peak - idle);
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
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--apply" || arguments.value(1) == "--idle")
        return applyOnly(arguments.value(2), arguments.value(1) == "--idle");
    const auto number = [&arguments](int index, int otherwise) {
        return arguments.size() > index ? arguments.at(index).toInt() : otherwise;
    };
    const QTemporaryDir temporary;
    const Place place{temporary.path()};
    qputenv("XDG_DATA_HOME", place.bytes("data"));
    makeProject(place, number(1, 2048), number(2, 20000));
    makeManifest(place);
    QFile::copy(QCoreApplication::applicationFilePath(), place.at("app/benchmark_apply"));
    const int rounds = number(3, 3);
    compareApply(place, rounds);
    compareHash(place, rounds);
    return 0;
}
