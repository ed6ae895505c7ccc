// An HTTP server on loopback that does exactly what a test writes down: answers, waits, breaks off,
// over plain TCP or over TLS. Each connection serves one request and has a thread of its own, so
// the test may block.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVector>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

struct ssl_st;
struct ssl_ctx_st;

namespace support {

struct Certificate;

struct ServerStep {
    enum Kind {
        Send,    // through TLS if there is any
        SendRaw, // onto the wire, past TLS
        Pause,   // for `milliseconds`
        Call,    // `happens`, on the connection's thread
        Stall,   // until the other side goes away or the server is destroyed
        Break,   // closes the connection without a farewell
        Reset,   // closes it so that the other side is told of an error
    };
    Kind kind;
    QByteArray bytes;
    int milliseconds = 0;
    std::function<void()> happens = {};
};

// What is done with one connection, step by step; then it is closed as it should be.
using ServerScript = QVector<ServerStep>;

[[nodiscard]] ServerStep send(const QByteArray &bytes);
[[nodiscard]] ServerStep sendRaw(const QByteArray &bytes);
[[nodiscard]] ServerStep pause(int milliseconds);
[[nodiscard]] ServerStep call(const std::function<void()> &happens);
[[nodiscard]] ServerStep stall();
[[nodiscard]] ServerStep breakOff();
[[nodiscard]] ServerStep reset();

// A whole answer. `headers` are lines that end in CRLF; Content-Length and Connection are added.
[[nodiscard]] ServerScript answer(int status, const QByteArray &body,
                                  const QByteArray &headers = QByteArray());
// An answer without a body that names `location`.
[[nodiscard]] ServerScript redirect(int status, const QByteArray &location);

struct TlsSetup {
    QByteArray chainPem; // the server's certificate first
    QByteArray keyPem;
    int lowestVersion = 0; // as OpenSSL numbers them; 0 for its own choice
    int highestVersion = 0;
    QByteArray ciphers; // OpenSSL's list for TLS 1.2 and older; empty for its own choice
    bool wantsClientCertificate = false;
    // Played on the wire once the client's first message is there. The handshake follows, unless
    // this has ended the connection.
    ServerScript beforeHandshake;
};

[[nodiscard]] TlsSetup tlsWith(const Certificate &certificate,
                               const QByteArray &furtherPem = QByteArray());

class ScriptedServer {
public:
    ScriptedServer();                             // plain
    explicit ScriptedServer(const TlsSetup &tls); // TLS
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer &) = delete;
    ScriptedServer &operator=(const ScriptedServer &) = delete;

    // The script for requests of this path (with its query, if any); 404 where there is none.
    void on(const QByteArray &path, const ServerScript &script);

    [[nodiscard]] quint16 port() const { return portNumber; }
    // On "localhost".
    [[nodiscard]] QUrl url(const QString &path) const;
    // The heads of all requests so far, in the order of their arrival.
    [[nodiscard]] QList<QByteArray> requests() const;
    // The paths of the same.
    [[nodiscard]] QStringList paths() const;

private:
    void listenOn();
    void acceptAll();
    void serve(int socket);
    void serveRequest(int socket, ssl_st *tls);
    void handshakeAndServe(int socket);
    [[nodiscard]] bool play(const ServerScript &script, int socket, ssl_st *tls);
    [[nodiscard]] ServerScript scriptFor(const QByteArray &path) const;

    int listener = -1;
    quint16 portNumber = 0;
    bool isTls = false;
    TlsSetup tlsSetup;
    ssl_ctx_st *context = nullptr;
    mutable std::mutex guard;
    std::condition_variable stopped;
    bool stop = false;
    std::set<int> openSockets;
    std::vector<std::thread> connections;
    QMap<QByteArray, ServerScript> scripts;
    QList<QByteArray> heads;
    std::thread accepter;
};

} // namespace support

Q_DECLARE_METATYPE(support::ServerStep)
Q_DECLARE_METATYPE(support::TlsSetup)
