#include "quorvanectl/language_server/message.h"

#include <QJsonDocument>

namespace ctl {
namespace {

Message malformed(const QJsonValue &id, RpcError error, const QString &reason) {
    Message message;
    message.id = id;
    message.error = error;
    message.reason = reason;
    return message;
}

Message checked(const QJsonObject &object) {
    const QJsonValue given = object.value(QLatin1String("id"));
    const QJsonValue id = isRequestId(given) ? given : QJsonValue();
    const auto invalid = [&](const QString &reason) {
        return malformed(id, RpcError::InvalidRequest, reason);
    };
    const QJsonValue method = object.value(QLatin1String("method"));
    const QJsonValue params = object.value(QLatin1String("params"));
    if (object.value(QLatin1String("jsonrpc")) != QLatin1String("2.0"))
        return invalid(QStringLiteral("jsonrpc is not \"2.0\""));
    const bool answers =
        object.contains(QLatin1String("result")) || object.contains(QLatin1String("error"));
    Message message;
    message.id = id;
    message.params = params;
    if (method.isUndefined() && answers) {
        message.kind = Message::Kind::Response;
        message.isRefused = object.contains(QLatin1String("error"));
        return message;
    }
    if (!method.isString())
        return invalid(QStringLiteral("method is no text"));
    if (!given.isUndefined() && !isRequestId(given))
        return invalid(QStringLiteral("id is neither a text nor a whole number"));
    if (!params.isUndefined() && !params.isNull() && !params.isObject() && !params.isArray())
        return invalid(QStringLiteral("params is neither an object nor an array"));
    message.kind = given.isUndefined() ? Message::Kind::Notification : Message::Kind::Request;
    message.method = method.toString();
    return message;
}

} // namespace

bool isRequestId(const QJsonValue &id) {
    return id.isString() || (id.isDouble() && id.toDouble() == double(id.toInt()));
}

Message parsedMessage(const QByteArray &body) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        return malformed(QJsonValue(), RpcError::ParseError, error.errorString());
    if (!document.isObject())
        return malformed(QJsonValue(), RpcError::InvalidRequest,
                         QStringLiteral("the message is no object"));
    return checked(document.object());
}

QJsonObject answerTo(const QJsonValue &id, const QJsonValue &result) {
    return {{QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
            {QStringLiteral("id"), id},
            {QStringLiteral("result"), result}};
}

QJsonObject errorFor(const QJsonValue &id, RpcError error, const QString &reason) {
    return {{QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
            {QStringLiteral("id"), id},
            {QStringLiteral("error"), QJsonObject{{QStringLiteral("code"), int(error)},
                                                  {QStringLiteral("message"), reason}}}};
}

QJsonObject notification(const QString &method, const QJsonObject &params) {
    return {{QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
            {QStringLiteral("method"), method},
            {QStringLiteral("params"), params}};
}

QJsonObject request(const QJsonValue &id, const QString &method, const QJsonObject &params) {
    QJsonObject message = notification(method, params);
    message.insert(QStringLiteral("id"), id);
    return message;
}

} // namespace ctl
