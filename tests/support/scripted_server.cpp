#include "support/scripted_server.h"

#include "support/certificate_maker.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

namespace support {
namespace {

void require(bool condition, const char *what) {
    if (!condition)
        qFatal("scripted server: %s", what);
}

QByteArray reasonOf(int status) {
    return status < 300 ? "OK" : status < 400 ? "Elsewhere" : "Refused";
}

bool sendAll(int socket, ssl_st *tls, const QByteArray &bytes) {
    int done = 0;
    while (done < bytes.size()) {
        const int left = static_cast<int>(bytes.size()) - done;
        const ssize_t sent = tls != nullptr ? SSL_write(tls, bytes.constData() + done, left)
                                            : ::send(socket, bytes.constData() + done,
                                                     static_cast<size_t>(left), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        done += static_cast<int>(sent);
    }
    return true;
}

// The head of the request; empty if the other side went away before it was whole.
QByteArray readHead(int socket, ssl_st *tls) {
    QByteArray head;
    char piece[4096];
    while (!head.contains("\r\n\r\n")) {
        const ssize_t got = tls != nullptr ? SSL_read(tls, piece, sizeof piece)
                                           : ::recv(socket, piece, sizeof piece, 0);
        if (got <= 0)
            return QByteArray();
        head.append(piece, static_cast<int>(got));
    }
    return head;
}

void waitForPeerToLeave(int socket) {
    pollfd poller{socket, POLLIN | POLLRDHUP, 0};
    char ignored[4096];
    while (::poll(&poller, 1, -1) > 0) {
        if ((poller.revents & (POLLHUP | POLLERR | POLLRDHUP)) != 0)
            return;
        if (::recv(socket, ignored, sizeof ignored, 0) <= 0)
            return;
    }
}

void waitForFirstByte(int socket) {
    char byte = 0;
    (void)::recv(socket, &byte, 1, MSG_PEEK);
}

void dropWithReset(int socket) {
    const linger now{1, 0};
    (void)::setsockopt(socket, SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

ssl_ctx_st *makeContext(const TlsSetup &setup) {
    ssl_ctx_st *context = SSL_CTX_new(TLS_server_method());
    SSL_CTX_set_security_level(context, 0); // weak keys are for the other side to refuse
    SSL_CTX_set_min_proto_version(context, setup.lowestVersion);
    SSL_CTX_set_max_proto_version(context, setup.highestVersion);
    if (!setup.ciphers.isEmpty())
        require(SSL_CTX_set_cipher_list(context, setup.ciphers.constData()) == 1, "cipher list");
    if (setup.wantsClientCertificate)
        SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);

    BIO *chain =
        BIO_new_mem_buf(setup.chainPem.constData(), static_cast<int>(setup.chainPem.size()));
    X509 *own = PEM_read_bio_X509(chain, nullptr, nullptr, nullptr);
    require(own != nullptr && SSL_CTX_use_certificate(context, own) == 1, "certificate");
    X509_free(own);
    while (X509 *further = PEM_read_bio_X509(chain, nullptr, nullptr, nullptr))
        SSL_CTX_add_extra_chain_cert(context, further); // takes it over
    BIO_free(chain);
    ERR_clear_error();

    BIO *keyText = BIO_new_mem_buf(setup.keyPem.constData(), static_cast<int>(setup.keyPem.size()));
    EVP_PKEY *key = PEM_read_bio_PrivateKey(keyText, nullptr, nullptr, nullptr);
    require(key != nullptr && SSL_CTX_use_PrivateKey(context, key) == 1, "key");
    EVP_PKEY_free(key);
    BIO_free(keyText);
    return context;
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
    : m_isTls(true)
    , m_setup(tls)
    , m_context(makeContext(tls)) {
    listenOn();
}

ScriptedServer::~ScriptedServer() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
        for (const int socket : m_sockets)
            ::shutdown(socket, SHUT_RDWR);
    }
    m_stopped.notify_all();
    ::shutdown(m_listener, SHUT_RDWR);
    m_accepter.join();
    for (std::thread &connection : m_connections)
        connection.join();
    ::close(m_listener);
    SSL_CTX_free(m_context);
}

void ScriptedServer::on(const QByteArray &path, const ServerScript &script) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_scripts.insert(path, script);
}

QUrl ScriptedServer::url(const QString &path) const {
    return QUrl(QStringLiteral("%1://localhost:%2%3")
                    .arg(m_isTls ? "https" : "http", QString::number(m_port), path));
}

QList<QByteArray> ScriptedServer::requests() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

QStringList ScriptedServer::paths() const {
    QStringList paths;
    for (const QByteArray &request : requests())
        paths += QString::fromUtf8(request.split(' ').value(1));
    return paths;
}

void ScriptedServer::listenOn() {
    std::signal(SIGPIPE, SIG_IGN); // the TLS library writes to sockets that may be gone
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const plain = reinterpret_cast<sockaddr *>(&address);
    require(::bind(m_listener, plain, size) == 0 && ::listen(m_listener, 64) == 0 &&
                ::getsockname(m_listener, plain, &size) == 0,
            "cannot listen");
    m_port = ntohs(address.sin_port);
    m_accepter = std::thread([this] { acceptAll(); });
}

void ScriptedServer::acceptAll() {
    for (;;) {
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (socket < 0 || m_stop) {
            if (socket >= 0)
                ::close(socket);
            return;
        }
        m_sockets.insert(socket);
        m_connections.emplace_back([this, socket] { serve(socket); });
    }
}

void ScriptedServer::serve(int socket) {
    if (m_isTls)
        handshakeAndServe(socket);
    else
        serveRequest(socket, nullptr);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sockets.erase(socket);
    ::close(socket);
}

void ScriptedServer::handshakeAndServe(int socket) {
    waitForFirstByte(socket);
    if (!play(m_setup.beforeHandshake, socket, nullptr))
        return;
    ssl_st *const tls = SSL_new(m_context);
    SSL_set_fd(tls, socket);
    if (SSL_accept(tls) == 1)
        serveRequest(socket, tls);
    SSL_free(tls);
    ERR_clear_error();
}

void ScriptedServer::serveRequest(int socket, ssl_st *tls) {
    const QByteArray head = readHead(socket, tls);
    if (head.isEmpty())
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requests += head;
    }
    if (!play(scriptFor(head.split(' ').value(1)), socket, tls))
        return;
    if (tls != nullptr)
        SSL_shutdown(tls);
    ::shutdown(socket, SHUT_WR);
    waitForPeerToLeave(socket); // what it still sends must not turn the end into a reset
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
            std::unique_lock<std::mutex> lock(m_mutex);
            if (m_stopped.wait_for(lock, std::chrono::milliseconds(step.milliseconds),
                                   [this] { return m_stop; }))
                return false;
            break;
        }
        case ServerStep::Stall:
            waitForPeerToLeave(socket);
            return false;
        case ServerStep::Reset:
            dropWithReset(socket);
            return false;
        case ServerStep::Break:
            return false;
        }
    }
    return true;
}

ServerScript ScriptedServer::scriptFor(const QByteArray &path) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_scripts.constFind(path);
    return found == m_scripts.constEnd() ? answer(404, "not found") : *found;
}

} // namespace support
