// The bytes of the settings' file: whatever they are, the launcher starts, asks and writes, and a
// file that cannot be used is told of.

#include "frame/app_paths.h"
#include "frame/settings_schema.h"
#include "frame/settings_store.h"
#include "support.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>

namespace {

int told = 0; // lines of the debug log since the last input

void count(QtMsgType, const QMessageLogContext &, const QString &) {
    ++told;
}

// The driver of the database is a plug-in, which only an application finds.
void prepare() {
    static int argc = 1;
    static char name[] = "settings";
    static char *argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    qputenv("XDG_DATA_HOME", QFile::encodeName(fuzz::folder().path()));
    fuzz::demand(AppPaths::databasePath().startsWith(fuzz::folder().path()));
    fuzz::demand(QDir().mkpath(AppPaths::dataDirectory()));
    qInstallMessageHandler(count);
}

qint64 linesOfLog() {
    return QFileInfo(AppPaths::launchLogPath()).size();
}

// As the launcher does between its start and its end.
void useSettings(SettingsStore &store) {
    for (const char *key : settings_schema::ownKeys)
        (void)store.value(QLatin1String(key), QStringLiteral("none"));
    (void)store.defaultProject();
    const auto projects = store.recentProjects(10);
    fuzz::demand(projects.size() <= 10);
    for (const RecentProject &project : projects)
        store.removeRecentProject(project.path);
    store.setDefaultProject(QStringLiteral("/p/line.yslib"));
    store.setValue(QLatin1String(settings_schema::localeKey), QStringLiteral("en"));
}

// What SQLite lays beside a file, else the next input would begin with it.
void removeCompanions() {
    QDir folder(AppPaths::dataDirectory());
    for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden))
        fuzz::demand(folder.remove(name));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const bool prepared = (prepare(), true);
    Q_UNUSED(prepared)
    fuzz::write(QDir(fuzz::folder().path()).relativeFilePath(AppPaths::databasePath()),
                fuzz::bytesOf(data, size));
    told = 0;
    SettingsStore &store = SettingsStore::instance();
    const bool opened = store.open();
    fuzz::demand(opened || told > 0 || linesOfLog() > 0);
    useSettings(store);
    (void)store.open(); // the next start finds what this one has left
    (void)store.value(QLatin1String(settings_schema::localeKey), QString());
    if (QSqlDatabase::contains(QStringLiteral("quorvane")))
        QSqlDatabase::removeDatabase(QStringLiteral("quorvane"));
    removeCompanions();
    return 0;
}
