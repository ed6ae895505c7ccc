// Texts that open, change and close, and the findings that are told of them.
#include "quorvanectl/language_server/language_server.h"

#include "quorvanectl/files/file_access.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QUrl>

#include <algorithm>

namespace ctl {
namespace {

QJsonObject documentIn(const QJsonObject &params) {
    return params.value(QLatin1String("textDocument")).toObject();
}

} // namespace

QJsonValue LanguageServer::opened(const QJsonObject &params) {
    const QJsonObject document = documentIn(params);
    const QString path = pathIn(document);
    const QJsonValue text = document.value(QLatin1String("text"));
    if (path.isEmpty() || !text.isString()) {
        complain(QStringLiteral("textDocument/didOpen without an address and a text"));
        return {};
    }
    documents.insert(path, {document.value(QLatin1String("uri")).toString(),
                            document.value(QLatin1String("version")).toInt()});
    workspace.open(path, text.toString());
    touched.insert(path);
    isStale = true;
    return {};
}

QJsonValue LanguageServer::changed(const QJsonObject &params) {
    const QJsonObject document = documentIn(params);
    const QString path = pathIn(document);
    const QJsonValue changes = params.value(QLatin1String("contentChanges"));
    if (!documents.contains(path)) {
        complain(QStringLiteral("textDocument/didChange of a text that is not open: %1").arg(path));
        return {};
    }
    QString text = workspace.textOf(path);
    if (!changes.isArray() || !applyChanges(changes.toArray(), &text)) {
        complain(
            QStringLiteral("textDocument/didChange without a text or with no range: %1").arg(path));
        return {};
    }
    documents[path].version = document.value(QLatin1String("version")).toInt();
    workspace.change(path, text);
    touched.insert(path);
    isStale = true;
    return {};
}

// Each counts in the text that those before it leave. All or none.
bool LanguageServer::applyChanges(const QJsonArray &changes, QString *text) {
    for (const QJsonValue &value : changes) {
        const QJsonObject change = value.toObject();
        const QJsonValue inserted = change.value(QLatin1String("text"));
        if (!inserted.isString())
            return false;
        const QJsonValue range = change.value(QLatin1String("range"));
        if (range.isUndefined()) {
            *text = inserted.toString();
            continue;
        }
        const std::optional<IndexRange> at = TextPositions(*text, abilities.unit).indexRange(range);
        if (!at)
            return false;
        text->replace(at->from, at->to - at->from, inserted.toString());
    }
    return true;
}

QJsonValue LanguageServer::closed(const QJsonObject &params) {
    const QString path = pathIn(documentIn(params));
    if (documents.contains(path)) {
        workspace.close(path);
        touched.insert(path);
        publish(); // while the address is known as the editor writes it
        documents.remove(path);
    }
    return {};
}

QJsonValue LanguageServer::saved(const QJsonObject &params) {
    const QString path = pathIn(documentIn(params));
    workspace.diskChanged(path);
    touched.insert(path);
    isStale = true;
    return {};
}

QJsonValue LanguageServer::filesChanged(const QJsonObject &params) {
    const QJsonArray changes = params.value(QLatin1String("changes")).toArray();
    for (const QJsonValue &change : changes) {
        const QString path = pathIn(change.toObject());
        workspace.diskChanged(path);
        touched.insert(path);
    }
    isStale = true;
    return {};
}

// Tells what has changed since the last time; a file without findings takes back those that it had.
void LanguageServer::publish() {
    isStale = false;
    const FindingsByFile now = workspace.findings();
    const QStringList before = told.keys();
    for (const QString &path : before) {
        if (!now.contains(path)) {
            publishFile(path, {});
            told.remove(path);
        }
    }
    for (auto file = now.cbegin(); file != now.cend(); ++file) {
        Told &last = told[file.key()];
        if (last.findings == file.value() && !isMoved(file.key(), file.value()))
            continue;
        const QJsonArray diagnostics = diagnosticsOf(file.key(), file.value());
        if (last.diagnostics != diagnostics)
            publishFile(file.key(), diagnostics);
        last = {file.value(), diagnostics};
    }
    touched.clear();
    positions.clear();
}

// The same place of the language may have another column for the editor once the text around it changes.
bool LanguageServer::isMoved(const QString &path, const QVector<Finding> &findings) const {
    if (touched.contains(path))
        return true;
    return std::any_of(findings.begin(), findings.end(), [this](const Finding &finding) {
        return std::any_of(
            finding.related.begin(), finding.related.end(),
            [this](const RelatedPlace &place) { return touched.contains(place.file); });
    });
}

void LanguageServer::publishFile(const QString &path, const QJsonArray &diagnostics) {
    QJsonObject params{{QStringLiteral("uri"), uriOf(path)},
                       {QStringLiteral("diagnostics"), diagnostics}};
    if (workspace.isOpen(path))
        params.insert(QStringLiteral("version"), documents.value(path).version);
    send(notification(QStringLiteral("textDocument/publishDiagnostics"), params));
}

QJsonArray LanguageServer::diagnosticsOf(const QString &path, const QVector<Finding> &findings) {
    QJsonArray diagnostics;
    for (const Finding &finding : findings)
        diagnostics.append(findingJson(path, finding));
    return diagnostics;
}

QJsonObject LanguageServer::findingJson(const QString &path, const Finding &finding) {
    QJsonObject json{{QStringLiteral("range"), positionsIn(path).rangeOf(finding.at)},
                     {QStringLiteral("severity"), finding.isError ? 1 : 2},
                     {QStringLiteral("source"), QStringLiteral("quorvane")},
                     {QStringLiteral("message"), finding.message}};
    if (!finding.code.isEmpty())
        json.insert(QStringLiteral("code"), finding.code);
    if (!abilities.showsRelated || finding.related.isEmpty())
        return json;
    QJsonArray related;
    for (const RelatedPlace &place : finding.related) {
        const QJsonObject location{
            {QStringLiteral("uri"), uriOf(place.file)},
            {QStringLiteral("range"), positionsIn(place.file).rangeOf(place.at)}};
        related.append(QJsonObject{{QStringLiteral("location"), location},
                                   {QStringLiteral("message"), place.message}});
    }
    json.insert(QStringLiteral("relatedInformation"), related);
    return json;
}

// The file that an address leads to. A text that has no file yet goes by its address.
QString LanguageServer::pathIn(const QJsonObject &document) {
    const QString uri = document.value(QLatin1String("uri")).toString();
    const QUrl url(uri);
    return url.isLocalFile() ? QDir::cleanPath(url.toLocalFile()) : uri;
}

QString LanguageServer::uriOf(const QString &path) const {
    const auto document = documents.constFind(path);
    return document != documents.constEnd()
               ? document->uri
               : QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
}

// Where nothing can be read, every place is the first one.
const TextPositions &LanguageServer::positionsIn(const QString &path) {
    auto known = positions.constFind(path);
    if (known == positions.constEnd()) {
        QString error;
        const QString text =
            workspace.isOpen(path) ? workspace.textOf(path) : readText(path, &error);
        known = positions.insert(path, TextPositions(text, abilities.unit));
    }
    return *known;
}

} // namespace ctl
