#include "support/scripted_server.h"

#include "support/certificate_maker.h"
#include "support/server_sockets.h"
#include "support/server_tls.h"

#include <chrono>

namespace support {
namespace {

QByteArray reasonOf(int status) {
    return status < 300 ? "OK" : status < 400 ? "Elsewhere" : "Refused";
}

bool sendAll(int socket, ssl_st *tls, const QByteArray &bytes) {
    int done = 0;
    while (done < bytes.size()) {
        const int left = int(bytes.size()) - done;
        const char *const next = bytes.constData() + done;
        const qint64 sent =
            tls != nullptr ? tls::send(tls, next, left) : sockets::send(socket, next, left);
        if (sent <= 0)
            return false;
        done += int(sent);
    }
    return true;
}

// The head of the request; empty if the other side went away before it was whole.
QByteArray readHead(int socket, ssl_st *tls) {
    QByteArray head;
    char piece[4096];
    while (!head.contains("\r\n\r\n")) {
        const qint64 got = tls != nullptr ? tls::receive(tls, piece, sizeof piece)
                                          : sockets::receive(socket, piece, sizeof piece);
        if (got <= 0)
            return QByteArray();
        head.append(piece, int(got));
    }
    return head;
}

} // namespace

ServerStep send(const QByteArray &bytes) {
    return {ServerStep::Send, bytes};
}
ServerStep sendRaw(const QByteArray &bytes) {
    return {ServerStep::SendRaw, bytes};
}
ServerStep pause(int milliseconds) {
    return {ServerStep::Pause, QByteArray(), milliseconds};
}
ServerStep call(const std::function<void()> &happens) {
    return {ServerStep::Call, QByteArray(), 0, happens};
}
ServerStep stall() {
    return {ServerStep::Stall, QByteArray()};
}
ServerStep breakOff() {
    return {ServerStep::Break, QByteArray()};
}
ServerStep reset() {
    return {ServerStep::Reset, QByteArray()};
}

ServerScript answer(int status, const QByteArray &body, const QByteArray &headers) {
    const QByteArray head =
        "HTTP/1.1 " + QByteArray::number(status) + " " + reasonOf(status) + "\r\n" + headers +
        "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n";
    return {send(head), send(body)};
}

ServerScript redirect(int status, const QByteArray &location) {
    return answer(status, QByteArray(), "Location: " + location + "\r\n");
}

TlsSetup tlsWith(const Certificate &certificate, const QByteArray &furtherPem) {
    TlsSetup setup;
    setup.chainPem = certificate.pem + furtherPem;
    setup.keyPem = certificate.keyPem;
    return setup;
}

ScriptedServer::ScriptedServer() {
    listenOn();
}

ScriptedServer::ScriptedServer(const TlsSetup &tls)
    : isTls(true)
    , tlsSetup(tls)
    , context(tls::makeContext(tls)) {
    listenOn();
}

ScriptedServer::~ScriptedServer() {
    {
        const std::lock_guard<std::mutex> lock(guard);
        stop = true;
        for (const int socket : openSockets)
            sockets::endBoth(socket);
    }
    stopped.notify_all();
    sockets::stopListening(listener);
    accepter.join();
    for (std::thread &connection : connections)
        connection.join();
    sockets::close(listener);
    if (context != nullptr)
        tls::freeContext(context);
}

void ScriptedServer::on(const QByteArray &path, const ServerScript &script) {
    const std::lock_guard<std::mutex> lock(guard);
    scripts.insert(path, script);
}

QUrl ScriptedServer::url(const QString &path) const {
    return QUrl(QStringLiteral("%1://localhost:%2%3")
                    .arg(isTls ? "https" : "http", QString::number(portNumber), path));
}

QList<QByteArray> ScriptedServer::requests() const {
    const std::lock_guard<std::mutex> lock(guard);
    return heads;
}

QStringList ScriptedServer::paths() const {
    QStringList paths;
    for (const QByteArray &request : requests())
        paths.append(QString::fromUtf8(request.split(' ').value(1)));
    return paths;
}

void ScriptedServer::listenOn() {
    listener = sockets::listenOnLoopback(&portNumber);
    accepter = std::thread([this] { acceptAll(); });
}

void ScriptedServer::acceptAll() {
    for (;;) {
        const int socket = sockets::accept(listener);
        const std::lock_guard<std::mutex> lock(guard);
        if (socket < 0 || stop) {
            if (socket >= 0)
                sockets::close(socket);
            return;
        }
        openSockets.insert(socket);
        connections.emplace_back([this, socket] { serve(socket); });
    }
}

void ScriptedServer::serve(int socket) {
    if (isTls)
        handshakeAndServe(socket);
    else
        serveRequest(socket, nullptr);
    const std::lock_guard<std::mutex> lock(guard);
    openSockets.erase(socket);
    sockets::close(socket);
}

void ScriptedServer::handshakeAndServe(int socket) {
    sockets::waitForFirstByte(socket);
    if (!play(tlsSetup.beforeHandshake, socket, nullptr))
        return;
    if (ssl_st *const connection = tls::handshake(context, socket)) {
        serveRequest(socket, connection);
        tls::freeConnection(connection);
    }
}

void ScriptedServer::serveRequest(int socket, ssl_st *tls) {
    const QByteArray head = readHead(socket, tls);
    if (head.isEmpty())
        return;
    {
        const std::lock_guard<std::mutex> lock(guard);
        heads.append(head);
    }
    if (!play(scriptFor(head.split(' ').value(1)), socket, tls))
        return;
    if (tls != nullptr)
        tls::sayFarewell(tls);
    sockets::endSending(socket);
    sockets::waitForPeerToLeave(socket); // what it still sends must not turn the end into a reset
}

// False once the connection is not to be used any more.
bool ScriptedServer::play(const ServerScript &script, int socket, ssl_st *tls) {
    for (const ServerStep &step : script) {
        switch (step.kind) {
        case ServerStep::Send:
            if (!sendAll(socket, tls, step.bytes))
                return false;
            break;
        case ServerStep::SendRaw:
            if (!sendAll(socket, nullptr, step.bytes))
                return false;
            break;
        case ServerStep::Pause: {
            std::unique_lock<std::mutex> lock(guard);
            if (stopped.wait_for(lock, std::chrono::milliseconds(step.milliseconds),
                                 [this] { return stop; }))
                return false;
            break;
        }
        case ServerStep::Call:
            step.happens();
            break;
        case ServerStep::Stall:
            sockets::waitForPeerToLeave(socket);
            return false;
        case ServerStep::Reset:
            sockets::closeWithReset(socket);
            return false;
        case ServerStep::Break:
            return false;
        }
    }
    return true;
}

ServerScript ScriptedServer::scriptFor(const QByteArray &path) const {
    const std::lock_guard<std::mutex> lock(guard);
    const auto found = scripts.constFind(path);
    return found == scripts.constEnd() ? answer(404, "not found") : *found;
}

} // namespace support
