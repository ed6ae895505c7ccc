// What an editor says to the server, in the words of the protocol, and what it hears.
#pragma once

#include "quorvanectl/language_server/language_server.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>
#include <QUrl>

namespace conversation {

inline QByteArray json(const QJsonObject &object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

inline constexpr char shutdownRequest[] = R"({"jsonrpc":"2.0","id":9,"method":"shutdown"})";
inline constexpr char exitNotification[] = R"({"jsonrpc":"2.0","method":"exit"})";

inline QByteArray initialize(const QByteArray &capabilities = "{}") {
    return R"({"jsonrpc":"2.0","id":0,"method":"initialize","params":{"processId":null,)"
           R"("rootUri":null,"capabilities":)" +
           capabilities + "}}";
}

inline QByteArray told(const char *method, const QJsonObject &params) {
    return json({{"jsonrpc", "2.0"}, {"method", method}, {"params", params}});
}

inline QString uriOf(const QString &path) {
    return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
}

inline QByteArray opened(const QString &uri, const QString &text, int version = 1) {
    return told(
        "textDocument/didOpen",
        {{"textDocument",
          QJsonObject{{"uri", uri}, {"languageId", "ys"}, {"version", version}, {"text", text}}}});
}

inline QByteArray changed(const QString &uri, int version, const QJsonArray &changes) {
    return told("textDocument/didChange",
                {{"textDocument", QJsonObject{{"uri", uri}, {"version", version}}},
                 {"contentChanges", changes}});
}

inline QByteArray about(const char *method, const QString &uri) {
    return told(method, {{"textDocument", QJsonObject{{"uri", uri}}}});
}

inline QByteArray asked(const char *method, const QJsonObject &params, int id = 1) {
    return json({{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}});
}

inline QJsonObject position(int line, int character) {
    return {{"line", line}, {"character", character}};
}

inline QJsonObject change(const QJsonObject &start, const QJsonObject &end, const QString &text) {
    return {{"range", QJsonObject{{"start", start}, {"end", end}}}, {"text", text}};
}

// A server, and what it has sent.
struct Conversation {
    QStringList sent;
    ctl::LanguageServer server{
        [this](const QJsonObject &message) { sent.append(QString::fromUtf8(json(message))); }};

    // What is sent of these, all of which come at once.
    QStringList say(const QList<QByteArray> &bodies) {
        sent.clear();
        server.take(bodies);
        return sent;
    }

    void begin(const QByteArray &capabilities = "{}") {
        (void)say({initialize(capabilities), told("initialized", {})});
    }

    // "uri@version 0:6-0:7 1 YS100, ..." of each publication.
    QStringList findingsAfter(const QList<QByteArray> &bodies) {
        QStringList lines;
        const QStringList messages = say(bodies);
        for (const QString &message : messages) {
            const QJsonObject params =
                QJsonDocument::fromJson(message.toUtf8()).object().value("params").toObject();
            QStringList findings;
            const QJsonArray all = params.value("diagnostics").toArray();
            for (const QJsonValue &finding : all)
                findings.append(findingText(finding.toObject()));
            lines.append(QString("%1@%2 %3")
                             .arg(params.value("uri").toString(),
                                  QString::number(params.value("version").toInt()),
                                  findings.join(", "))
                             .trimmed());
        }
        return lines;
    }

private:
    static QString findingText(const QJsonObject &finding) {
        const QJsonObject range = finding.value("range").toObject();
        const auto place = [&](const char *end) {
            const QJsonObject at = range.value(end).toObject();
            return QString("%1:%2")
                .arg(at.value("line").toInt())
                .arg(at.value("character").toInt());
        };
        return QString("%1-%2 %3 %4")
            .arg(place("start"), place("end"), QString::number(finding.value("severity").toInt()),
                 finding.value("code").toString());
    }
};

} // namespace conversation
