// A desk: the folder in which somebody types a command, what comes back, and what lies in the folder
// afterwards. It takes a shell.
#pragma once

#include "run_tool.h"
#include "support/file_tree.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

namespace support {

class Desk {
public:
    // `command` is what "@" stands for in a line, such as "quorvanectl update verify".
    explicit Desk(const QString &command, const FileTree &tree = {})
        : typed(command) {
        writeTree(folder.path(), tree);
    }

    [[nodiscard]] QString path(const QString &name = QString()) const;
    [[nodiscard]] QByteArray read(const QString &name) const { return tree().value(name); }

    // Prepares the desk by a line of shell, which must not fail.
    void arrange(const QString &line) const;

    // What a line answers. "$user" before a command lets a user run it whom permissions keep out. The
    // lines that tell a slow machine's progress are left out.
    [[nodiscard]] Answer type(QString line) const;

    // All that lies here, as readTree() gives it; a pipe or another device, which would block a
    // reader, stands as "(device)".
    [[nodiscard]] FileTree tree() const;

private:
    QString typed;
    QTemporaryDir folder;
};

// Whether "$user" can be had: root must be able to become somebody else.
[[nodiscard]] bool hasOrdinaryUser();

// What became of a folder: "+name" is new, "-name" is gone, "~name" has another content.
[[nodiscard]] QStringList changes(const FileTree &before, const FileTree &after);

// --- rows ------------------------------------------------------------------------------------------

// Lines that are refused: a word of the tool to whoever typed it, and nothing else happens.
void addRefusals();
void refusal(const char *name, const QString &arrangement, const QString &line,
             const QString &error);
// What is told behind an option that is none and has one dash.
const QString behindDashes =
    ": an option has two dashes, and a name that begins with a dash goes behind --";
// Compares the current row: one line of error, no output, status 2, and every file as before.
void expectRefusal(const Desk &desk);

// Lines of which something comes.
void addOutcomes();
struct Outcome {
    int status = 0;
    QString out = {};
    QString err = {};
    QStringList changed = {}; // as of changes()
};
void outcome(const char *name, const QString &arrangement, const QString &line,
             const Outcome &expected);
// Compares the current row. "@here" in a text stands for the desk's path.
void expectOutcome(const Desk &desk);

} // namespace support

Q_DECLARE_METATYPE(support::Outcome)

// --- the bodies ------------------------------------------------------------------------------------

namespace support {
namespace desk_detail {

inline const char *ordinaryUser() {
    return ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups" : "";
}

inline QByteArray contentOf(const QFileInfo &info) {
    if (info.isSymLink())
        return "-> " + QFile::encodeName(info.symLinkTarget());
    if (!info.isFile())
        return "(device)";
    QFile file(info.filePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

} // namespace desk_detail

inline QString Desk::path(const QString &name) const {
    return name.isEmpty() ? folder.path() : folder.filePath(name);
}

inline void Desk::arrange(const QString &line) const {
    const Answer answer = line.isEmpty() ? Answer{0, {}, {}} : runLine(line, folder.path());
    if (answer.status != 0)
        qFatal("%s: %s", qPrintable(line), qPrintable(answer.err));
}

inline Answer Desk::type(QString line) const {
    static const QRegularExpression progress("^(?!quorvanectl: )[^\n]*: \\d+ [s%]\n",
                                             QRegularExpression::MultilineOption);
    Answer answer =
        runLine(line.replace('@', typed), folder.path(), {{"user", desk_detail::ordinaryUser()}});
    answer.err.remove(progress);
    return answer;
}

inline FileTree Desk::tree() const {
    const QDir::Filters everything =
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    FileTree tree;
    QDirIterator entries(folder.path(), everything, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString name = QDir(folder.path()).relativeFilePath(entries.next());
        const QFileInfo info = entries.fileInfo();
        if (info.isSymLink() || !info.isDir())
            tree.insert(name, desk_detail::contentOf(info));
        else
            tree.insert(name + '/', QByteArray());
    }
    return tree;
}

inline bool hasOrdinaryUser() {
    static const bool found = [] {
        const Desk desk("quorvanectl", {{"file", ""}});
        desk.arrange("chmod 755 . && chmod 000 file");
        return desk.type("$user @ --version").status == 0 &&
               desk.type("$user cat file").status != 0;
    }();
    return found;
}

inline QStringList changes(const FileTree &before, const FileTree &after) {
    QStringList found;
    for (auto entry = after.begin(); entry != after.end(); ++entry) {
        if (!before.contains(entry.key()))
            found.append('+' + entry.key());
        else if (before.value(entry.key()) != entry.value())
            found.append('~' + entry.key());
    }
    for (auto entry = before.begin(); entry != before.end(); ++entry) {
        if (!after.contains(entry.key()))
            found.append('-' + entry.key());
    }
    found.sort();
    return found;
}

inline void addRefusals() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("error");
}

inline void refusal(const char *name, const QString &arrangement, const QString &line,
                    const QString &error) {
    if (!line.contains("$user") || hasOrdinaryUser())
        QTest::newRow(name) << arrangement << line << error;
}

inline void expectRefusal(const Desk &desk) {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(QString, error);
    desk.arrange(arrangement);
    const FileTree before = desk.tree();
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, "quorvanectl: " + error.replace("@here", desk.path()) + "\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
    QCOMPARE(changes(before, desk.tree()), QStringList());
}

inline void addOutcomes() {
    QTest::addColumn<QString>("arrangement");
    QTest::addColumn<QString>("line");
    QTest::addColumn<Outcome>("expected");
}

inline void outcome(const char *name, const QString &arrangement, const QString &line,
                    const Outcome &expected) {
    if (!line.contains("$user") || hasOrdinaryUser())
        QTest::newRow(name) << arrangement << line << expected;
}

inline void expectOutcome(const Desk &desk) {
    QFETCH(QString, arrangement);
    QFETCH(QString, line);
    QFETCH(Outcome, expected);
    desk.arrange(arrangement);
    const FileTree before = desk.tree();
    const Answer answer = desk.type(line);
    QCOMPARE(answer.err, expected.err.replace("@here", desk.path()));
    QCOMPARE(answer.out, expected.out.replace("@here", desk.path()));
    QCOMPARE(answer.status, expected.status);
    QCOMPARE(changes(before, desk.tree()), expected.changed);
}

} // namespace support
