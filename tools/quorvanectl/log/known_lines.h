// The lines of the launch log, and the texts that stand in them, each with its cause and remedy in both
// languages: the tables of docs/support.md, to which a test holds these rows.
#pragma once

#include <QString>

#include <initializer_list>

namespace ctl {

// What a line tells of its start.
enum class LineKind {
    Described, // a row of the page that is no text of its own
    Tells,
    TaskStarted,
    TaskPhase,
    CancelRequested,
    ManifestRead,
    Offline,
    UpdateRefused,
    Settings,
    Compared,
    Uncompared,
    Offer,
    Skipped,
    InstallerStarted,
    UpdateDone,
    UpdateCancelled,
    UpdateFailed,
    PrecheckPassed,
    PrecheckWarns,
    PrecheckFailed,
    StartFailed,
    Launching,
    Exited,
    Warns,
    Fails,
};

// In UTF-8. %1 and so on stand for what the launcher fills in.
struct KnownLine {
    LineKind kind = LineKind::Tells;
    const char *text = "";    // Chinese, or in the one language that it has
    const char *english = ""; // empty for a text in one language
    const char *cause = "";
    const char *remedy = "";
    const char *chineseCause = "";
    const char *chineseRemedy = "";
};

// Whether a row stands for the lines of the log, or for texts in them.
enum class TableKind { LogLines, LoggedTexts, InnerTexts, Findings };

struct KnownTable {
    TableKind kind = TableKind::LogLines;
    const char *heading = ""; // on the page
    const KnownLine *rows = nullptr;
    int count = 0;

    [[nodiscard]] const KnownLine *begin() const { return rows; }
    [[nodiscard]] const KnownLine *end() const { return rows + count; }
};

// In the order of the page.
[[nodiscard]] const std::initializer_list<KnownTable> &knownTables();

// One for each file that holds rows.
[[nodiscard]] KnownTable launchLogTable();
[[nodiscard]] KnownTable targetTable();
[[nodiscard]] KnownTable packageTable();
[[nodiscard]] KnownTable signatureTable();
[[nodiscard]] KnownTable networkTable();
[[nodiscard]] KnownTable archiveTable();
[[nodiscard]] KnownTable projectFileTable();
[[nodiscard]] KnownTable projectEntriesTable();
[[nodiscard]] KnownTable projectScriptsTable();

} // namespace ctl
