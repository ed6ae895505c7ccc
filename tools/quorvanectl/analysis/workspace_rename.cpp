// A global gets another name, in all scripts of its project and in the project's file, or the reason why not.
#include "quorvanectl/analysis/workspace.h"

#include "library/function_library.h"
#include "project/validation_rules.h"
#include "quorvanectl/files/json_input.h"
#include "script/lexer.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QRegularExpression>

namespace ctl {
namespace {

bool isOneName(const QString &text) {
    const std::vector<ast::Token> tokens = ast::Lexer(text).tokenize();
    return tokens.size() == 2 && tokens.front().kind == ast::Identifier &&
           tokens.front().text == text;
}

bool mentions(const QString &text, const QString &name) {
    const QRegularExpression word(
        QStringLiteral("(?<!\\w)%1(?!\\w)").arg(QRegularExpression::escape(name)),
        QRegularExpression::UseUnicodePropertiesOption);
    return text.contains(word);
}

// What is wrong with the name by itself; empty if nothing is.
QString faultOfName(const QString &name) {
    if (!isOneName(name))
        return QStringLiteral("'%1' is no name of the script language").arg(name);
    if (!validator::followsGlobalNaming(name))
        return QStringLiteral("'%1' breaks the naming rule {camId}_{metric}").arg(name);
    if (FunctionLibrary::instance().functionNames.contains(name))
        return QStringLiteral("'%1' is a function of the function library").arg(name);
    return {};
}

// What the system says of a file that is there and cannot be read; empty of any other.
QString faultOfReading(const QString &path) {
    QFile file(path);
    const bool isThere = QFileInfo(path).isFile(); // a pipe would block
    return isThere && !file.open(QIODevice::ReadOnly) ? file.errorString() : QString();
}

GlobalRename refused(const QString &reason) {
    return {reason, {}};
}

} // namespace

GlobalRename Workspace::renameAt(const QString &path, int index, const QString &newName) {
    const std::optional<NameMeaning> global = globalAt(path, index);
    if (!global)
        return refused(QLatin1String(renamesGlobalsAlone));
    const QString fault = faultOfName(newName);
    if (!fault.isEmpty())
        return refused(fault);
    if (newName == global->name)
        return {};
    const QString project = projectOf(path);
    const QString reasonOfProject = project.isEmpty() ? QString() : faultOfProject(project);
    if (!reasonOfProject.isEmpty())
        return refused(QStringLiteral("%1 %2").arg(folderAround(path).relativeFilePath(project),
                                                   reasonOfProject));
    const QStringList scripts = scriptsAround(path);
    for (const QString &script : scripts) {
        const QString reason = faultOfScript(script, {global->name, newName});
        if (!reason.isEmpty())
            return refused(
                QStringLiteral("%1 %2").arg(folderAround(path).relativeFilePath(script), reason));
    }
    if (ProjectNames(store, scripts).definitionsOf(*global).isEmpty())
        return refused(QStringLiteral("no script of the project declares '%1'").arg(global->name));
    return {{}, referencesAt(path, index)};
}

// Why the project's file does: as long as it cannot be read, nobody knows which scripts it lists, and the
// name would change in the open ones alone.
QString Workspace::faultOfProject(const QString &project) {
    const QString unread = isOpen(project) ? QString() : faultOfReading(project);
    if (!unread.isEmpty())
        return QStringLiteral("cannot be searched: %1").arg(unread);
    const QString text = textNow(project);
    if (QJsonDocument::fromJson(text.toUtf8()).isObject())
        return {};
    const std::optional<TextPlace> fault = jsonFault(text);
    return QStringLiteral("has a mistake in line %1: mend it first").arg(fault ? fault->line : 1);
}

// Why a script keeps a global from being renamed; empty if it does not. One that is not whole may use a name
// in ways that nobody sees.
QString Workspace::faultOfScript(const QString &script, const QStringList &names) {
    const QString unread = isOpen(script) ? QString() : faultOfReading(script);
    if (!unread.isEmpty())
        return QStringLiteral("cannot be searched: %1").arg(unread);
    const std::vector<ast::ScriptDiagnostic> findings = store.summaryOf(script)->findings;
    if (!findings.empty() && findings.front().code == QLatin1String(unreadScript))
        return QStringLiteral("cannot be searched: %1").arg(findings.front().message);
    if (!findings.empty()) {
        const QString text = textNow(script);
        if (text.isNull() || mentions(text, names.at(0)) || mentions(text, names.at(1)))
            return QStringLiteral("has a mistake in line %1: mend it first")
                .arg(findings.front().line);
    }
    const auto symbols = store.symbolsOf(script);
    for (const NameUse &use : symbols->uses) {
        if (use.name == names.at(1))
            return QStringLiteral("has another '%1' in line %2")
                .arg(use.name,
                     QString::number(textNow(script).leftRef(use.at.from).count(QLatin1Char('\n')) +
                                     1));
    }
    return {};
}

} // namespace ctl
