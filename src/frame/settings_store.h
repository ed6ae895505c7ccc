// The few values that outlast a run, in one SQLite file (AppPaths::databasePath()).
//
// No operation fails visibly: a read that cannot be made gives its default, a write that cannot be
// made is lost, and the launcher runs on without a memory. A file that another program holds is waited
// for once, two seconds at most; from then on no operation waits, and the launch log tells of it. It
// tells too of a file that is not used since a view or a trigger of its own (settings_stand_in.h) could
// keep an operation from ending. The store keeps no state of its own, each operation fetches the connection named "quorvane". Main thread
// only.
#pragma once

#include <QList>
#include <QString>

struct RecentProject {
    QString path;
    QString displayName;
};

class SettingsStore {
public:
    static SettingsStore &instance();
    SettingsStore(const SettingsStore &) = delete;
    SettingsStore &operator=(const SettingsStore &) = delete;

    // Opens the database, brings its schema up to date and drops recent projects whose file is gone
    // from the newest 100. May be called again: the new connection replaces the old one. False,
    // with a line in the debug log or the launch log, if the file cannot be opened, is no database or
    // is not used.
    bool open();

    [[nodiscard]] QString value(const QString &key, const QString &defaultValue) const;
    void setValue(const QString &key, const QString &value);

    // Absolute path of the project to start with; empty if there is none.
    [[nodiscard]] QString defaultProject() const;
    // Stores the absolute form of `path`, or the empty text for an empty one.
    void setDefaultProject(const QString &path);

    // At most `limit` projects, newest first.
    [[nodiscard]] QList<RecentProject> recentProjects(int limit) const;
    // Removes the row of the absolute form of `path`; a row stored in another form stays.
    void removeRecentProject(const QString &path);

private:
    SettingsStore() = default;
};
