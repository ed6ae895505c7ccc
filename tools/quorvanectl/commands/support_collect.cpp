// quorvanectl support collect: one archive for whoever is asked for help.
#include "frame/app_paths.h"
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/interruption.h"
#include "quorvanectl/files/zip_writer.h"
#include "quorvanectl/shell/data_option.h"
#include "quorvanectl/shell/force_option.h"
#include "quorvanectl/shell/inspected_installation.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/progress.h"
#include "quorvanectl/support/support_files.h"

#include <QBuffer>
#include <QFileInfo>
#include <QSaveFile>

#include <memory>

namespace ctl {
namespace {

const QLatin1String outOption("out");
const QLatin1String homeOption("with-home-paths");

void declare(QCommandLineParser &parser) {
    parser.addOption(
        {outOption, QStringLiteral("The archive to write."), QStringLiteral("FILE.zip")});
    declareInstall(parser);
    declareData(parser);
    parser.addOption(
        {homeOption,
         QStringLiteral("Leaves the paths of users' folders as they are, not as \"~\".")});
    declareForce(parser);
}

bool pack(QSaveFile &file, const QVector<SupportFile> &files, QString *error) {
    ZipWriter zip(&file);
    bool packed = true;
    for (const SupportFile &entry : files) {
        auto content = std::make_unique<QBuffer>();
        content->setData(entry.content);
        packed = packed && zip.addFile(entry.name, std::move(content));
    }
    if (packed && zip.finish())
        return true;
    *error = QStringLiteral("%1: %2").arg(file.fileName(), zip.error());
    return false;
}

bool collectInto(QSaveFile &file, const SupportSources &sources, const Console &console,
                 QVector<SupportFile> *files, QString *error) {
    const InterruptionWatch watch;
    const Progress progress(console, QStringLiteral("collecting"));
    *files = supportFiles(sources);
    if (interrupted())
        *error = QStringLiteral("%1: interrupted, nothing was written").arg(file.fileName());
    return error->isEmpty() && pack(file, *files, error) && commitFile(file, error);
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString out = parser.value(outOption);
    SupportSources sources;
    sources.data = dataFolder(parser);
    sources.keepHomePaths = parser.isSet(homeOption);
    if (out.isEmpty())
        return refuse(console, QStringLiteral("--out must name the archive to write"));
    if (parser.isSet(dataOption) && !QFileInfo(sources.data.path).isDir())
        return refuse(console, QStringLiteral("%1: no such folder").arg(sources.data.path));
    QSaveFile file(out);
    const QStringList inputs{sources.data.launchLog(), sources.data.database()};
    if (!inspectInstallation(parser, &error) || !mayWrite(out, isForced(parser), &error, inputs) ||
        !openFile(file, isForced(parser), &error))
        return refuse(console, error);
    (void)loadLibrary(AppPaths::functionLibraryPath(),
                      &sources.libraryError); // then the archive says so itself
    QVector<SupportFile> files;
    if (!collectInto(file, sources, console, &files, &error))
        return refuse(console, error);
    printLine(console,
              QStringLiteral("%1: %2 files").arg(spelledOut(out), QString::number(files.size())));
    for (const SupportFile &entry : qAsConst(files))
        printLine(console,
                  QStringLiteral("  %1 %2 bytes")
                      .arg(entry.name.leftJustified(18), QString::number(entry.content.size())));
    return Clean;
}

} // namespace

Command supportCollect() {
    return {QStringLiteral("support"),
            QStringLiteral("collect"),
            QString(),
            QStringLiteral("Packs launch log, versions, settings and listings for support."),
            QStringLiteral("quorvanectl support collect --out support.zip --install line_pc"),
            declare,
            run};
}

} // namespace ctl
