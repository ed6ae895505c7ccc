#include "project/core_plugin.h"

#include "update/files/failure.h"

#include <QDir>
#include <QFileInfo>

bool hasCorePlugin(const QString &pluginFolder, QString *error) {
    const QString plugin = QDir(pluginFolder).filePath(QStringLiteral("CoreOperators.dll"));
    return QFileInfo::exists(plugin) ||
           fail(QStringLiteral("Core plugin missing: %1").arg(plugin), error);
}
