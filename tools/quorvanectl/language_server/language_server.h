// What the server answers to each message of an editor.
//
// It knows no stream: messages go in, messages come out by way of `send`, in the order in which the
// editor has to see them. The methods are a table in language_server.cpp. On one thread; the function
// library must be loaded.
#pragma once

#include "quorvanectl/analysis/workspace.h"
#include "quorvanectl/language_server/client_abilities.h"
#include "quorvanectl/language_server/message.h"
#include "quorvanectl/language_server/text_positions.h"

#include <QHash>
#include <QJsonArray>
#include <QList>
#include <QMap>
#include <QSet>

#include <functional>
#include <optional>

namespace ctl {

class LanguageServer {
public:
    using Send = std::function<void(const QJsonObject &message)>;
    explicit LanguageServer(Send sendTo);

    // All messages that have come meanwhile, in their order: a request that a later one of them cancels is
    // not worked on, and findings are told once, of the texts as the last of them leaves them.
    void take(const QList<QByteArray> &bodies);

    // Set by the notification `exit`: 0 behind a `shutdown`, else 1.
    [[nodiscard]] std::optional<int> exitStatus() const { return status; }

private:
    enum class State { Fresh, Running, ShutDown };
    struct Document {
        QString uri; // as the editor writes it
        int version;
    };
    using Handler = QJsonValue (LanguageServer::*)(const QJsonObject &params);
    struct Method {
        const char *name;
        bool isRequest;
        Handler handler;
    };

    // language_server.cpp: which message goes where.
    void noteCancel(const Message &message);
    void answerRequest(const Message &message);
    void answer(const QJsonValue &id, const Method &method, const QJsonObject &params);
    void refuse(RpcError error, const QString &reason);
    void takeNotification(const Message &message);
    static const Method *methodOf(const Message &message);
    QJsonValue initialize(const QJsonObject &params);
    QJsonValue initialized(const QJsonObject &params);
    QJsonValue shutDown(const QJsonObject &params);
    void complain(const QString &line);

    // assist_messages.cpp: what is offered while one types, and what is told of names.
    struct AskedPlace {
        QString path;
        TextPositions places;
        int index;
    };
    std::optional<AskedPlace> askedPlace(const QJsonObject &params);
    QJsonValue complete(const QJsonObject &params);
    QJsonObject itemOf(const Proposal &proposal, const QJsonObject &range) const;
    QJsonValue hover(const QJsonObject &params);
    QJsonValue helpWithSignature(const QJsonObject &params);

    // progress_messages.cpp: how far the first read of a project is.
    void askForProgress();
    void takeAnswer(const Message &message);
    void tellReading(const QString &projectPath, int read, int all);
    void sendProgress(const QJsonObject &value);

    // navigation_messages.cpp: where names are declared and used.
    QJsonObject locationOf(const NamePlace &place);
    QJsonValue findDefinition(const QJsonObject &params);
    QJsonValue findReferences(const QJsonObject &params);
    QJsonValue highlight(const QJsonObject &params);
    QJsonValue prepareRename(const QJsonObject &params);
    QJsonValue rename(const QJsonObject &params);

    // outline_messages.cpp: what a script is made of, and what is told of all this when an editor begins.
    std::optional<QString> askedText(const QJsonObject &params);
    QJsonValue listSymbols(const QJsonObject &params);
    QJsonObject symbolJson(const QString &path, const ScriptName &name);
    QJsonValue listFolds(const QJsonObject &params);
    QJsonValue listWords(const QJsonObject &params);
    void addNavigation(QJsonObject *capabilities) const;

    // text_messages.cpp: texts that open, change and close, and what is told of them.
    QJsonValue opened(const QJsonObject &params);
    QJsonValue changed(const QJsonObject &params);
    QJsonValue closed(const QJsonObject &params);
    QJsonValue saved(const QJsonObject &params);
    QJsonValue filesChanged(const QJsonObject &params);
    bool applyChanges(const QJsonArray &changes, QString *text);
    void publish();
    void publishFile(const QString &path, const QJsonArray &diagnostics);
    bool isMoved(const QString &path, const QVector<Finding> &findings) const;
    QJsonArray diagnosticsOf(const QString &path, const QVector<Finding> &findings);
    QJsonObject findingJson(const QString &path, const Finding &finding);
    static QString pathIn(const QJsonObject &document);
    QString uriOf(const QString &path) const;
    // The reference holds until the next call.
    const TextPositions &positionsIn(const QString &path);

    Send send;
    State state = State::Fresh;
    std::optional<int> status;
    QSet<QString> cancelled; // ids of requests, in the form of idText()
    QString refusal;         // of the request that is worked on: why it has no answer
    RpcError refusalError = RpcError::InvalidParams;
    ClientAbilities abilities;
    struct Progress {
        int number = 0;         // of the name that it goes by
        bool isGranted = false; // by the editor, for one time
        int percentage = 0;
    };
    Progress progress;

    Workspace workspace;
    QHash<QString, Document> documents; // by path
    bool isStale = false;               // whether findings have to be told anew
    QSet<QString> touched;              // the paths of texts that have changed since they were told
    struct Told {
        QVector<Finding> findings;
        QJsonArray diagnostics; // the same in the editor's columns
    };
    QMap<QString, Told> told;
    QHash<QString, TextPositions>
        positions; // of the texts that one answer or publication looks into
};

} // namespace ctl
