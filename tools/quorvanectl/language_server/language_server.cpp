#include "quorvanectl/language_server/language_server.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <utility>

namespace ctl {
namespace {

// A number and a text of the same digits are two ids.
QString idText(const QJsonValue &id) {
    return id.isString() ? QLatin1Char('"') + id.toString() : QString::number(id.toInt());
}

} // namespace

LanguageServer::LanguageServer(Send sendTo)
    : send(std::move(sendTo)) {}

void LanguageServer::take(const QList<QByteArray> &bodies) {
    QList<Message> messages;
    for (const QByteArray &body : bodies) {
        messages.append(parsedMessage(body));
        noteCancel(messages.last());
    }
    for (const Message &message : qAsConst(messages)) {
        if (status)
            return;
        if (message.kind == Message::Kind::Malformed)
            send(errorFor(message.id, message.error, message.reason));
        else if (message.kind == Message::Kind::Request)
            answerRequest(message);
        else if (message.kind == Message::Kind::Notification)
            takeNotification(message);
        else
            takeAnswer(message);
    }
    cancelled.clear(); // what was to be cancelled later has been answered before
    if (isStale && state == State::Running && !status)
        publish();
}

// A cancel that names no request takes none back.
void LanguageServer::noteCancel(const Message &message) {
    const QJsonValue id = message.params.toObject().value(QLatin1String("id"));
    if (message.kind == Message::Kind::Notification &&
        message.method == QLatin1String("$/cancelRequest") && isRequestId(id))
        cancelled.insert(idText(id));
}

const LanguageServer::Method *LanguageServer::methodOf(const Message &message) {
    static const Method methods[] = {
        {"initialize", true, &LanguageServer::initialize},
        {"initialized", false, &LanguageServer::initialized},
        {"shutdown", true, &LanguageServer::shutDown},
        {"textDocument/didOpen", false, &LanguageServer::opened},
        {"textDocument/didChange", false, &LanguageServer::changed},
        {"textDocument/didClose", false, &LanguageServer::closed},
        {"textDocument/didSave", false, &LanguageServer::saved},
        {"textDocument/completion", true, &LanguageServer::complete},
        {"textDocument/hover", true, &LanguageServer::hover},
        {"textDocument/signatureHelp", true, &LanguageServer::helpWithSignature},
        {"textDocument/definition", true, &LanguageServer::findDefinition},
        {"textDocument/references", true, &LanguageServer::findReferences},
        {"textDocument/documentHighlight", true, &LanguageServer::highlight},
        {"textDocument/prepareRename", true, &LanguageServer::prepareRename},
        {"textDocument/rename", true, &LanguageServer::rename},
        {"textDocument/documentSymbol", true, &LanguageServer::listSymbols},
        {"textDocument/foldingRange", true, &LanguageServer::listFolds},
        {"textDocument/semanticTokens/full", true, &LanguageServer::listWords},
        {"workspace/didChangeWatchedFiles", false, &LanguageServer::filesChanged},
    };
    const bool isRequest = message.kind == Message::Kind::Request;
    for (const Method &method : methods) {
        if (method.isRequest == isRequest && message.method == QLatin1String(method.name))
            return &method;
    }
    return nullptr;
}

void LanguageServer::answerRequest(const Message &message) {
    const bool starts = message.method == QLatin1String("initialize");
    const Method *const method = methodOf(message);
    const auto refuse = [&](RpcError error, const QString &reason) {
        send(errorFor(message.id, error, reason));
    };
    if (cancelled.contains(idText(message.id)))
        refuse(RpcError::RequestCancelled, QStringLiteral("cancelled"));
    else if (state == State::Fresh && !starts)
        refuse(RpcError::ServerNotInitialized, QStringLiteral("initialize comes first"));
    else if (state == State::ShutDown)
        refuse(RpcError::InvalidRequest, QStringLiteral("the server is shut down"));
    else if (state == State::Running && starts)
        refuse(RpcError::InvalidRequest, QStringLiteral("initialize comes once"));
    else if (method == nullptr)
        refuse(RpcError::MethodNotFound, QStringLiteral("no method %1").arg(message.method));
    else if (starts && !message.params.isObject())
        refuse(RpcError::InvalidParams, QStringLiteral("params is no object"));
    else
        answer(message.id, *method, message.params.toObject());
}

void LanguageServer::answer(const QJsonValue &id, const Method &method, const QJsonObject &params) {
    refusal.clear();
    refusalError = RpcError::InvalidParams;
    const QJsonValue result = (this->*method.handler)(params);
    send(refusal.isEmpty() ? answerTo(id, result) : errorFor(id, refusalError, refusal));
    positions.clear(); // the next message may change a text
}

void LanguageServer::refuse(RpcError error, const QString &reason) {
    refusal = reason;
    refusalError = error;
}

// A notification has no answer: one that is not known, or comes at the wrong time, is passed over.
void LanguageServer::takeNotification(const Message &message) {
    if (message.method == QLatin1String("exit")) {
        status = state == State::ShutDown ? 0 : 1;
        return;
    }
    const Method *const method = methodOf(message);
    if (state == State::Running && method != nullptr)
        (void)(this->*method->handler)(message.params.toObject());
}

QJsonValue LanguageServer::initialize(const QJsonObject &params) {
    abilities = abilitiesIn(params);
    state = State::Running;
    const QJsonObject sync{{QStringLiteral("openClose"), true},
                           {QStringLiteral("change"), 2}, // stretches of a text
                           {QStringLiteral("save"), true}};
    const QLatin1String encoding(abilities.unit == ColumnUnit::Utf8 ? "utf-8" : "utf-16");
    const QJsonArray quote{QStringLiteral("\"")}; // in which imports, keys and roles stand
    const QJsonArray callSigns{QStringLiteral("("), QStringLiteral(",")};
    QJsonObject capabilities{{QStringLiteral("positionEncoding"), encoding},
                             {QStringLiteral("textDocumentSync"), sync},
                             {QStringLiteral("completionProvider"),
                              QJsonObject{{QStringLiteral("triggerCharacters"), quote}}},
                             {QStringLiteral("hoverProvider"), true},
                             {QStringLiteral("signatureHelpProvider"),
                              QJsonObject{{QStringLiteral("triggerCharacters"), callSigns}}}};
    addNavigation(&capabilities);
    const QJsonObject info{{QStringLiteral("name"), QStringLiteral("quorvanectl")},
                           {QStringLiteral("version"), QCoreApplication::applicationVersion()}};
    return QJsonObject{{QStringLiteral("capabilities"), capabilities},
                       {QStringLiteral("serverInfo"), info}};
}

// The editor is asked to tell what changes on the disk: the answer to that is of no interest.
QJsonValue LanguageServer::initialized(const QJsonObject &) {
    askForProgress();
    if (!abilities.registersWatchers)
        return {};
    const QJsonObject watcher{{QStringLiteral("globPattern"), QStringLiteral("**/*.{ys,yslib}")}};
    const QJsonObject options{{QStringLiteral("watchers"), QJsonArray{watcher}}};
    const QJsonObject registration{
        {QStringLiteral("id"), QStringLiteral("files")},
        {QStringLiteral("method"), QStringLiteral("workspace/didChangeWatchedFiles")},
        {QStringLiteral("registerOptions"), options}};
    send(request(QStringLiteral("files"), QStringLiteral("client/registerCapability"),
                 {{QStringLiteral("registrations"), QJsonArray{registration}}}));
    return {};
}

QJsonValue LanguageServer::shutDown(const QJsonObject &) {
    state = State::ShutDown;
    return {};
}

// In the editor's log of the server.
void LanguageServer::complain(const QString &line) {
    send(notification(QStringLiteral("window/logMessage"),
                      {{QStringLiteral("type"), 1}, {QStringLiteral("message"), line}}));
}

} // namespace ctl
