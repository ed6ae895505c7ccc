// What the settings database is made of: the statements that make and read its tables, and the
// launcher's own keys. Other programs may keep more in the same file.
#pragma once

namespace settings_schema {

// Keys of the table of values.
inline constexpr char defaultProjectKey[] = "default_project_path";
inline constexpr char localeKey[] = "ui/locale";
inline constexpr char skippedFingerprintKey[] = "update/online_skipped_version_fingerprint";
inline constexpr char skippedAtKey[] = "update/online_skipped_at";
inline constexpr const char *ownKeys[] = {defaultProjectKey, localeKey, skippedFingerprintKey,
                                          skippedAtKey};

// All tables of ours.
inline constexpr const char *tables[] = {"schema_version", "app_settings",   "recent_files",
                                         "debug_sessions", "debug_messages", "parameter_snapshots",
                                         "recent_projects"};

inline constexpr char readValues[] = "SELECT key, value FROM app_settings";
inline constexpr char readValue[] = "SELECT value FROM app_settings WHERE key=?";
inline constexpr char writeValue[] = "INSERT OR REPLACE INTO app_settings(key,value) VALUES(?,?)";

// Path of the project file, name and time, the newest first.
inline constexpr char readRecentProjects[] =
    "SELECT yslib_path, display_name, last_opened FROM recent_projects ORDER BY last_opened DESC";
inline constexpr char removeRecentProject[] = "DELETE FROM recent_projects WHERE yslib_path=?";

inline constexpr char readVersion[] = "SELECT version FROM schema_version LIMIT 1";
inline constexpr char writeFirstVersion[] = "INSERT INTO schema_version(version) VALUES(1)";
// Around the reading and writing of the first version: from the first of them on nobody else writes.
inline constexpr char beginToWrite[] = "BEGIN IMMEDIATE";
inline constexpr char endOfWriting[] = "COMMIT";
inline constexpr char giveUpWriting[] = "ROLLBACK";
inline constexpr char writeSecondVersion[] = "UPDATE schema_version SET version=2";

inline constexpr char makeVersionTable[] =
    "CREATE TABLE IF NOT EXISTS schema_version (version INTEGER NOT NULL)";
inline constexpr const char *makeFirstVersion[] = {
    "CREATE TABLE IF NOT EXISTS app_settings (key TEXT PRIMARY KEY, value TEXT)",
    "CREATE TABLE IF NOT EXISTS recent_files (path TEXT PRIMARY KEY, last_opened TEXT, "
    "encoding TEXT)",
    "CREATE TABLE IF NOT EXISTS debug_sessions (id INTEGER PRIMARY KEY AUTOINCREMENT,"
    "started_at TEXT, script_hash TEXT, status TEXT)",
    "CREATE TABLE IF NOT EXISTS debug_messages (id INTEGER PRIMARY KEY AUTOINCREMENT,"
    "session_id INTEGER, ts TEXT, line_no INTEGER, message TEXT)",
    "CREATE TABLE IF NOT EXISTS parameter_snapshots (id INTEGER PRIMARY KEY AUTOINCREMENT,"
    "session_id INTEGER, scope_id INTEGER, payload TEXT)",
};
inline constexpr char makeSecondVersion[] =
    "CREATE TABLE IF NOT EXISTS recent_projects (yslib_path TEXT PRIMARY KEY,display_name TEXT,"
    "last_opened INTEGER NOT NULL)";

} // namespace settings_schema
