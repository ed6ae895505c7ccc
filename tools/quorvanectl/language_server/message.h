// Messages of JSON-RPC 2.0: what came, and the forms of what is sent.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace ctl {

// The numbers are the protocol's.
enum class RpcError {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
    ServerNotInitialized = -32002,
    RequestCancelled = -32800,
    RequestFailed = -32803,
};

struct Message {
    enum class Kind { Request, Notification, Response, Malformed };
    Kind kind = Kind::Malformed;
    QJsonValue id; // of a request; null where one cannot be told
    QString method;
    QJsonValue params;
    bool isRefused = false; // of a response: what was asked for is not done
    // Of a malformed one.
    RpcError error = RpcError::ParseError;
    QString reason;
};

// A text or a whole number, nothing else.
[[nodiscard]] bool isRequestId(const QJsonValue &id);

[[nodiscard]] Message parsedMessage(const QByteArray &body);

[[nodiscard]] QJsonObject answerTo(const QJsonValue &id, const QJsonValue &result);
[[nodiscard]] QJsonObject errorFor(const QJsonValue &id, RpcError error, const QString &reason);
[[nodiscard]] QJsonObject notification(const QString &method, const QJsonObject &params);
[[nodiscard]] QJsonObject request(const QJsonValue &id, const QString &method,
                                  const QJsonObject &params);

} // namespace ctl
