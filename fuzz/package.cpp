// A package and the manifest beside it, as the command line reads them: what `update lint` says to a
// publisher, and what `project recover` makes of a broken-off update that such a package was for.
//
// An input is a manifest, a NUL and a package. With nothing before the NUL, a manifest in order offers
// the package.

#include "frame/data_folder.h"
#include "frame/steering_characters.h"
#include "launcher/offer/apply_places.h"
#include "launcher/offer/project_apply.h"
#include "quorvanectl/entry/command_line.h"
#include "quorvanectl/recovery/project_recovery.h"
#include "quorvanectl/shell/command.h"
#include "script_language.h"
#include "update/files/file_operations.h"
#include "update/files/zip_extract.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>

namespace {

void silent(QtMsgType, const QMessageLogContext &, const QString &) {}

constexpr char inOrder[] = R"({"schemaVersion": 1, "publishedAt": "2026-01-02T00:00:00Z",
"projects": [{"name": "line", "version": "1.1.0", "zipUrl": "package.zip",
"zipSha256": "0000000000000000000000000000000000000000000000000000000000000000"}]})";

constexpr char wholeProject[] = R"({"schemaVersion": 1,
"project": {"name": "line", "displayName": "Line", "createdAt": "2026-01-01", "version": "1.0.0"},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";

QString place(const char *name) {
    return fuzz::folder().filePath(QLatin1String(name));
}

void makeFolder(const QString &path) {
    fuzz::demand(QDir().mkpath(path));
}

// --- the commands ----------------------------------------------------------------------------------

struct Said {
    int status;
    QString out;
};

// Whatever a package is called or holds, it neither steers the terminal nor ends without an answer.
Said run(const QStringList &arguments) {
    QBuffer out;
    QBuffer err;
    fuzz::demand(out.open(QIODevice::WriteOnly) && err.open(QIODevice::WriteOnly));
    ctl::Console console;
    console.out = &out;
    console.err = &err;
    const Said said{ctl::runCommandLine(arguments, console), QString::fromUtf8(out.data())};
    fuzz::demand(std::none_of(said.out.begin(), said.out.end(), [](QChar unit) {
        return steersDisplay(unit) && unit != QLatin1Char('\n');
    }));
    const bool refused = err.data().contains("quorvanectl: "); // beside what tells of progress
    fuzz::demand(refused == (said.status == ctl::Refused));
    fuzz::demand(refused || !said.out.isEmpty());
    return said;
}

QStringList withLibrary(const QStringList &arguments) {
    return arguments + QStringList{QStringLiteral("--library"), place("FunctionLib.ini")};
}

void lint() {
    const QString manifest = place("site/manifest.json");
    const QStringList command = withLibrary(
        {QStringLiteral("update"), QStringLiteral("lint"), manifest, QStringLiteral("--previous"),
         place("previous.json"), QStringLiteral("--base"), QStringLiteral("https://line.example")});
    const Said text = run(command);
    if (text.status == ctl::Refused)
        return;
    fuzz::demand((text.status == ctl::Clean) ==
                 (text.out == manifest + QStringLiteral(": clean\n")));
    const Said json = run(command + QStringList(QStringLiteral("--format=json")));
    fuzz::demand(json.status == text.status);
    fuzz::demand(QJsonDocument::fromJson(json.out.toUtf8()).isObject());
}

// --- a broken-off update ---------------------------------------------------------------------------

void unpack(const QString &package, const QString &target) {
    QString error;
    fuzz::demand(extractZip(package, target, &error) == error.isEmpty());
}

// A project that came from the package and whose file was cut off while the version was written in.
QString layOutProject(const QString &package) {
    const QString folder = place("projects/line");
    makeFolder(folder);
    unpack(package, folder);
    makeFolder(folder); // what does not unpack leaves none
    const QString found = findProjectFile(folder);
    const QString file = found.isEmpty() ? folder + QStringLiteral("/line.yslib") : found;
    QFile cut(file);
    fuzz::demand(cut.open(QIODevice::WriteOnly | QIODevice::Truncate));
    return file;
}

// The backup of an older project, and the package once more, unpacked and not yet moved in.
void layOutRemains(const DataFolder &data, const QString &projectFile, const QString &package) {
    const QString stamp = QStringLiteral("20260102_030405");
    const QString backup = data.updateBackup() + QLatin1Char('/') +
                           apply_places::backupPrefix(place("projects/line")) + stamp;
    const QString staging =
        data.updateTemp() + QLatin1Char('/') + apply_places::stagingPrefix() + stamp;
    makeFolder(backup);
    makeFolder(data.updateTemp());
    const QString inBackup = backup + QLatin1Char('/') + QFileInfo(projectFile).fileName();
    for (const QString &file : {inBackup, backup + QStringLiteral("/main.ys")}) {
        QFile target(file);
        fuzz::demand(target.open(QIODevice::WriteOnly));
        target.write(file == inBackup ? QByteArray(wholeProject) : QByteArray("int a = 1;\n"));
    }
    unpack(package, staging);
}

void recover(const QString &projectFile, const DataFolder &data, const QString &package) {
    (void)run(
        withLibrary({QStringLiteral("project"), QStringLiteral("recover"), projectFile,
                     QStringLiteral("--data"), data.path, QStringLiteral("--package"), package}));
    ctl::UpdateRemains remains;
    QString error;
    if (!ctl::lookAtRemains({projectFile, data, package}, &remains, &error)) {
        fuzz::demand(!error.isEmpty());
        return;
    }
    const ctl::RecoveryResult result = ctl::recoverProject(remains);
    fuzz::demand(result.ok == result.error.isEmpty());
    // What lay in the project's place is still there, under the name that was told.
    if (result.ok && remains.recovery != ctl::Recovery::None)
        fuzz::demand(QFileInfo::exists(result.keptAs));
}

void prepare() {
    qInstallMessageHandler(silent); // a path with a NUL is told to the debug log
    fuzz::loadScriptLanguage();
    makeFolder(place("site"));
    fuzz::write(QStringLiteral("previous.json"), inOrder);
}

} // namespace

// The JSON parser of Qt 5.15 loses the memory of an object or array whose key comes twice. That is
// not ours to mend; leaks of ours show in the tests of the command line.
extern "C" const char *__asan_default_options() { // NOLINT(bugprone-reserved-identifier)
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const bool prepared = (prepare(), true);
    Q_UNUSED(prepared)
    const QByteArray bytes = fuzz::bytesOf(data, size);
    const int end = qMax(0, bytes.indexOf('\0'));
    fuzz::write(QStringLiteral("site/manifest.json"),
                end == 0 ? QByteArray(inOrder) : bytes.left(end));
    const QString package = fuzz::write(QStringLiteral("site/package.zip"), bytes.mid(end + 1));
    lint();

    const DataFolder folder{place("data")};
    for (const bool withRemains : {false, true}) {
        const QString projectFile = layOutProject(package);
        if (withRemains)
            layOutRemains(folder, projectFile, package);
        recover(projectFile, folder, package);
        fuzz::demand(removeDirectory(place("projects")) && removeDirectory(folder.path));
    }
    return 0;
}
