// Reads the process table in /proc; where there is none, nothing is known.
#include "quorvanectl/recovery/running_programs.h"

#include "frame/data_folder.h"
#include "frame/program_names.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace ctl {
namespace {

QByteArray read(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray variable(const QList<QByteArray> &environment, const QByteArray &name) {
    for (const QByteArray &entry : environment) {
        if (entry.startsWith(name + '='))
            return entry.mid(name.size() + 1);
    }
    return QByteArray();
}

// Where a process with this environment keeps the launcher's data.
QString dataFolderIn(const QList<QByteArray> &environment) {
    const QByteArray data = variable(environment, "XDG_DATA_HOME");
    const QByteArray base = data.isEmpty() ? variable(environment, "HOME") + "/.local/share" : data;
    return DataFolder::below(QFile::decodeName(base)).path;
}

// Two folders that do not exist are not the same one, as a comparison of QFileInfo would have it.
bool isSameFolder(const QString &a, const QString &b) {
    const QString canonical = QFileInfo(a).canonicalFilePath();
    return !canonical.isEmpty() && canonical == QFileInfo(b).canonicalFilePath();
}

bool isAtWork(const QString &process, const QByteArray &name, const QString &projectFile,
              const QString &dataFolder) {
    if (name == program_names::launcher) {
        const auto environment = read(process + QStringLiteral("/environ")).split('\0');
        return isSameFolder(dataFolderIn(environment), dataFolder);
    }
    return name == program_names::runtime &&
           read(process + QStringLiteral("/cmdline"))
               .split('\0')
               .contains("--project=" + QFile::encodeName(projectFile));
}

} // namespace

QStringList programsAtWork(const QString &projectFile, const QString &dataFolder) {
    QStringList found;
    const QDir processes(QStringLiteral("/proc"));
    for (const QString &number : processes.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString process = processes.filePath(number);
        const QByteArray name = read(process + QStringLiteral("/comm")).trimmed();
        if (isAtWork(process, name, projectFile, dataFolder))
            found.append(QStringLiteral("%1 (process %2)").arg(QString::fromUtf8(name), number));
    }
    return found;
}

} // namespace ctl
