#include "quorvanectl/analysis/script_store.h"

#include "quorvanectl/files/file_access.h"
#include "update/files/text_file.h"

#include <QCryptographicHash>

namespace ctl {

void ScriptStore::open(const QString &path, const QString &text) {
    auto script = openScripts.find(path);
    if (script == openScripts.end())
        script = openScripts.insert(path, {text, nullptr, MovedSymbols(path)});
    script->text = text;
    script->summary.reset();
    script->symbols.change(text);
}

void ScriptStore::close(const QString &path) {
    openScripts.remove(path);
    fileChanged(path);
}

void ScriptStore::fileChanged(const QString &path) {
    const auto known = files.find(path);
    if (known != files.end())
        known->isRead = false;
}

std::shared_ptr<const ScriptSummary> ScriptStore::summaryOf(const QString &path) {
    const auto open = openScripts.find(path);
    if (open != openScripts.end()) {
        if (!open->summary) {
            std::shared_ptr<ast::Program> program;
            open->summary =
                std::make_shared<const ScriptSummary>(ctl::summaryOf(path, open->text, &program));
            ++summaries;
            if (open->summary->findings.empty()) {
                letGoOfTree();
                open->symbols.settle(program);
                withTree = path;
            }
        }
        return open->summary;
    }
    KnownFile &file = files[path];
    const FileStamp stamp = stampOf(path);
    if (!file.isRead || !(file.stamp == stamp)) {
        file.stamp = stamp;
        file.isRead = true;
        readAnew(path, &file);
    }
    return file.summary;
}

// A tree takes many times the memory of its text: only the script that was changed last, in which one
// types, has one.
void ScriptStore::letGoOfTree() {
    const auto script = openScripts.find(withTree);
    if (script != openScripts.end())
        script->symbols.letGoOfTree();
}

std::shared_ptr<const ScriptSymbols> ScriptStore::symbolsOf(const QString &path) {
    (void)summaryOf(path); // tells whether the text is whole, or the file another
    const auto open = openScripts.find(path);
    if (open != openScripts.end())
        return open->symbols.symbols();
    KnownFile &file = files[path];
    if (!file.symbols) {
        QString error;
        const bool isRead = file.stamp.size <= largestScript;
        const QByteArray bytes = isRead ? readBytes(path, &error) : QByteArray();
        file.symbols = std::make_shared<const ScriptSymbols>(symbolsIn(path, decodeText(bytes)));
    }
    return file.symbols;
}

ScriptExports ScriptStore::exportsOf(const QString &path) {
    return isOpen(path) ? ctl::exportsOf(*symbolsOf(path), openScripts.value(path).text)
                        : summaryOf(path)->exports;
}

void ScriptStore::readAnew(const QString &path, KnownFile *file) {
    if (file->stamp.size > largestScript) {
        file->hash.clear();
        file->symbols.reset();
        file->summary = std::make_shared<const ScriptSummary>(tooLarge());
        return;
    }
    QString error; // of no interest: what a project misses is told by its check
    const QByteArray bytes = readBytes(path, &error);
    const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
    if (hash == file->hash)
        return;
    file->hash = hash;
    file->symbols.reset();
    file->summary = std::make_shared<const ScriptSummary>(
        bytes.isNull() ? ScriptSummary() : ctl::summaryOf(path, decodeText(bytes)));
    ++summaries;
}

void ScriptStore::keepOnly(const QSet<QString> &paths) {
    for (auto file = files.begin(); file != files.end();)
        file = paths.contains(file.key()) ? ++file : files.erase(file);
}

} // namespace ctl
