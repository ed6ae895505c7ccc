// The fetch over TLS: one table of servers that misbehave, and what comes out.
//
// No external client is on the search path here, so Qt's text stands in every row.
#include "support/certificate_maker.h"
#include "support/scripted_server.h"
#include "support/search_path.h"
#include "support/staged_main.h"
#include "update/http_fetch.h"
#include "update/rsa_verifier.h"

#include <QElapsedTimer>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslSocket>

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <functional>

using support::answer;
using support::breakOff;
using support::Certificate;
using support::CertificateWish;
using support::redirect;
using support::reset;
using support::ScriptedServer;
using support::send;
using support::sendRaw;
using support::ServerScript;
using support::stall;
using support::TlsSetup;
using support::tlsWith;

namespace {

// Where the limit is what ends a hop: long enough for a handshake on a loaded machine under a sanitizer,
// short enough for a table of stalls.
constexpr int shortLimit = 3000; // ms
// Where something else ends it, the limit must not come first, however loaded the machine is.
constexpr int longLimit = 60000; // ms
const QByteArray whole = "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody";
const QByteArray tooShort = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsome";
const QByteArray withoutLength = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
const QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

struct Authorities {
    Certificate root = support::makeAuthority();
    Certificate stranger = support::makeAuthority("Unknown authority");
    Certificate middle = support::makeAuthority("Middle authority", &root);
    Certificate expired = expiredAuthority();
    Certificate good = support::makeCertificate({}, &root);

    static Certificate expiredAuthority() {
        CertificateWish wish;
        wish.commonName = "Expired authority";
        wish.subjectAltName.clear();
        wish.extendedKeyUsage.clear();
        wish.isAuthority = true;
        wish.startsInDays = -20;
        wish.endsInDays = -10;
        return support::makeCertificate(wish);
    }
};

const Authorities &authorities() {
    static const Authorities made;
    return made;
}

TlsSetup good() {
    return tlsWith(authorities().good);
}

// A server whose certificate the root has signed, but for what `change` does to it.
TlsSetup certified(const std::function<void(CertificateWish &wish)> &change) {
    CertificateWish wish;
    change(wish);
    return tlsWith(support::makeCertificate(wish, &authorities().root));
}

TlsSetup between(int lowest, int highest, const QByteArray &ciphers = QByteArray()) {
    TlsSetup setup = good();
    setup.lowestVersion = lowest;
    setup.highestVersion = highest;
    setup.ciphers = ciphers;
    return setup;
}

TlsSetup wantingClient(int version) {
    TlsSetup setup = between(version, version);
    setup.wantsClientCertificate = true;
    return setup;
}

TlsSetup beforeHandshake(const ServerScript &script) {
    TlsSetup setup = good();
    setup.beforeHandshake = script;
    return setup;
}

QByteArray hex(const char *digits) {
    return QByteArray::fromHex(digits);
}

} // namespace

class HttpFetchTlsTest : public QObject {
    Q_OBJECT

private:
    support::SearchPath path{false};

    static void trust(const QList<QByteArray> &pems);
    static void row(const char *name, const TlsSetup &tls, const ServerScript &script,
                    const QString &expected, const QString &reason = QString());
    static QStringList certificateErrors(const ScriptedServer &server);

private Q_SLOTS:
    void initTestCase();
    void servers_data();
    void servers();
    void aBodyWithoutLengthCutShortIsTakenAsItIs();
    void anEndlessBodyEndsAtTheLimit();
    void anAddressInPlaceOfAName();
    void redirectsBetweenTlsAndPlain();
    void aKeyThatIsRefusedLeavesNoErrorToAConnection();
};

void HttpFetchTlsTest::trust(const QList<QByteArray> &pems) {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    QList<QSslCertificate> certificates;
    for (const QByteArray &pem : pems)
        certificates.append(QSslCertificate(pem));
    configuration.setCaCertificates(certificates);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

// `expected` is the start of the error, or ": " and the body of a success; `|` stands between two
// of which either will do, `#` for the URL. A text that depends on the TLS library's release is
// told only as far as it is stable.
// `reason` is what must be wrong with the certificate, if anything is.
void HttpFetchTlsTest::row(const char *name, const TlsSetup &tls, const ServerScript &script,
                           const QString &expected, const QString &reason) {
    QTest::newRow(name) << tls << script << expected << reason;
}

// What Qt holds against the certificate; a fetch says no more than that the handshake
// failed.
QStringList HttpFetchTlsTest::certificateErrors(const ScriptedServer &server) {
    QSslSocket socket;
    QStringList texts;
    QObject::connect(&socket, QOverload<const QList<QSslError> &>::of(&QSslSocket::sslErrors),
                     &socket, [&texts](const QList<QSslError> &errors) {
                         for (const QSslError &error : errors)
                             texts.append(error.errorString());
                     });
    socket.connectToHostEncrypted("localhost", server.port());
    (void)socket.waitForEncrypted(longLimit);
    return texts;
}

void HttpFetchTlsTest::initTestCase() {
    const Authorities &made = authorities();
    trust({made.root.pem, made.expired.pem});
}

void HttpFetchTlsTest::servers_data() {
    QTest::addColumn<TlsSetup>("tls");
    QTest::addColumn<ServerScript>("script");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("reason");
    const Authorities &made = authorities();
    const ServerScript body = answer(200, "body");
    const QString ok = ": body";
    const QString failed = "SSL handshake failed URL: #";
    const QString closed = "Connection closed URL: #";
    const QString closedIn = "Connection closed (HTTP 200) URL: #";
    const QString cancelled = "Operation canceled URL: #";
    const QString cancelledIn = "Operation canceled (HTTP 200) URL: #";

    // Servers that are as they should be
    row("a good server", good(), body, ok);
    row("a server with TLS 1.2 alone", between(TLS1_2_VERSION, TLS1_2_VERSION), body, ok);
    row("a server with TLS 1.3 alone", between(TLS1_3_VERSION, TLS1_3_VERSION), body, ok);
    row("a chain with an authority between",
        tlsWith(support::makeCertificate({}, &made.middle), made.middle.pem), body, ok);
    row("a key of 2048 bits", certified([](CertificateWish &w) { w.rsaBits = 2048; }), body, ok);
    row("a name by wildcard is not for a bare name", certified([](CertificateWish &w) {
            w.commonName = "x";
            w.subjectAltName = "DNS:*.localhost";
        }),
        body, failed, "The host name did not match any of the valid hosts for this certificate");

    // Certificates
    CertificateWish underAServer;
    underAServer.commonName = "under a server";
    row("an expired certificate", certified([](CertificateWish &w) {
            w.startsInDays = -10;
            w.endsInDays = -1;
        }),
        body, failed, "The certificate has expired");
    row("a certificate of tomorrow", certified([](CertificateWish &w) { w.startsInDays = 2; }),
        body, failed, "The certificate is not yet valid");
    row("a self-signed certificate", tlsWith(support::makeCertificate({})), body, failed,
        "The certificate is self-signed, and untrusted");
    row("an unknown authority", tlsWith(support::makeCertificate({}, &made.stranger)), body, failed,
        "The issuer certificate of a locally looked up certificate could not be found");
    row("an unknown authority that sends itself along",
        tlsWith(support::makeCertificate({}, &made.stranger), made.stranger.pem), body, failed,
        "The root certificate of the certificate chain is self-signed, and untrusted");
    row("an expired authority", tlsWith(support::makeCertificate({}, &made.expired)), body, failed,
        "The issuer certificate of a locally looked up certificate could not be found");
    row("the authority between left out", tlsWith(support::makeCertificate({}, &made.middle)), body,
        failed, "The issuer certificate of a locally looked up certificate could not be found");
    row("signed by a server, not an authority",
        tlsWith(support::makeCertificate(underAServer, &made.good), made.good.pem), body, failed,
        "One of the CA certificates is invalid");
    row("another host's certificate", certified([](CertificateWish &w) {
            w.commonName = "example.test";
            w.subjectAltName = "DNS:example.test";
        }),
        body, failed, "The host name did not match any of the valid hosts for this certificate");
    row("a certificate for an address alone", certified([](CertificateWish &w) {
            w.commonName = "x";
            w.subjectAltName = "IP:127.0.0.1";
        }),
        body, failed, "The host name did not match any of the valid hosts for this certificate");
    row("a certificate without names", certified([](CertificateWish &w) {
            w.commonName = "x";
            w.subjectAltName.clear();
        }),
        body, failed, "The host name did not match any of the valid hosts for this certificate");
    row("expired and for another host", certified([](CertificateWish &w) {
            w.commonName = "x";
            w.subjectAltName = "DNS:x";
            w.startsInDays = -10;
            w.endsInDays = -1;
        }),
        body, failed, "The certificate has expired");
    row("a certificate for clients",
        certified([](CertificateWish &w) { w.extendedKeyUsage = "clientAuth"; }), body, failed,
        "The supplied certificate is unsuitable for this purpose");
    row("a key of 1024 bits", certified([](CertificateWish &w) { w.rsaBits = 1024; }), body,
        failed);
    row("a client certificate is asked for, TLS 1.2", wantingClient(TLS1_2_VERSION), body, failed);
    // The refusal crosses with the request: whether its alert or the end comes first is chance.
    row("a client certificate is asked for, TLS 1.3", wantingClient(TLS1_3_VERSION), body,
        "Error while reading: |Connection closed URL: #");

    // Versions and ciphers
    row("TLS 1.0 alone", between(TLS1_VERSION, TLS1_VERSION), body, failed);
    row("TLS 1.1 alone", between(TLS1_1_VERSION, TLS1_1_VERSION), body, failed);
    row("ciphers without encryption alone",
        between(TLS1_2_VERSION, TLS1_2_VERSION, "ECDHE-ECDSA-NULL-SHA"), body, failed);
    row("ciphers without authentication alone",
        between(TLS1_2_VERSION, TLS1_2_VERSION, "AECDH-AES128-SHA"), body, failed);

    // The handshake
    row("closed at the first message", beforeHandshake({breakOff()}), body, closed);
    row("reset at the first message", beforeHandshake({reset()}), body, closed);
    row("an answer in plain HTTP", beforeHandshake({sendRaw(whole), breakOff()}), body, failed);
    row("noise", beforeHandshake({sendRaw(QByteArray(64, '\x7F')), breakOff()}), body, failed);
    row("another language", beforeHandshake({sendRaw("SSH-2.0-x\r\n"), breakOff()}), body, failed);
    row("the alert of a failed handshake",
        beforeHandshake({sendRaw(hex("15030300020228")), breakOff()}), body, failed);
    row("the alert of an unknown name",
        beforeHandshake({sendRaw(hex("15030300020270")), breakOff()}), body, failed);
    row("the alert of an inner error",
        beforeHandshake({sendRaw(hex("15030300020250")), breakOff()}), body, failed);
    row("an alert that closes", beforeHandshake({sendRaw(hex("15030300020100")), breakOff()}), body,
        failed);
    row("a record longer than allowed",
        beforeHandshake({sendRaw(hex("160303ffff") + QByteArray(70000, 'x')), breakOff()}), body,
        failed);
    row("a first message without content",
        beforeHandshake({sendRaw(hex("160303000402000000")), breakOff()}), body, failed);
    row("a record cut short, then closed",
        beforeHandshake({sendRaw(hex("1603030050020000")), breakOff()}), body, closed);
    row("a record cut short, then silence",
        beforeHandshake({sendRaw(hex("1603030050020000")), stall()}), body, cancelled);
    row("silence at the first message", beforeHandshake({stall()}), body, cancelled);
    row("a slow handshake", beforeHandshake({support::pause(300)}), body, ok);

    // Between handshake and body
    row("closed before the answer", good(), {breakOff()}, closed);
    row("closed with a farewell before the answer", good(), {}, closed);
    row("reset before the answer", good(), {reset()}, closed);
    row("silence before the answer", good(), {stall()}, cancelled);
    row("closed within the head", good(), {send("HTTP/1.1 200 O"), breakOff()}, closed);
    row("silence within the head", good(), {send("HTTP/1.1 200 O"), stall()}, cancelled);
    row("noise on the wire before the answer", good(),
        {sendRaw(QByteArray(64, '\x7F')), breakOff()}, "Error while reading: ");
    row("no HTTP within TLS", good(), {send("220 mail ready\r\n")}, closed);

    // The body
    row("an empty body", good(), answer(200, ""), "empty response body (HTTP 200) from #");
    row("closed within the body", good(), {send(tooShort), breakOff()}, closedIn);
    row("closed with a farewell within the body", good(), {send(tooShort)}, closedIn);
    row("reset within the body", good(), {send(tooShort), support::pause(100), reset()}, closedIn);
    row("silence within the body", good(), {send(tooShort), stall()}, cancelledIn);
    row("noise on the wire within the body", good(),
        {send(tooShort), support::pause(100), sendRaw(QByteArray(64, '\x7F')), breakOff()},
        "Error while reading: ");
    row("an unencrypted alert within the body", good(),
        {send(tooShort), support::pause(100), sendRaw(hex("15030300020228")), breakOff()},
        "Error while reading: ");
    row("no length, ended by a farewell", good(), {send(withoutLength + "body")}, ok);
    row("no length and no body", good(), {send(withoutLength)},
        "empty response body (HTTP 200) from #");
    row("bytes behind the body", good(), {send(whole + "more")}, ok);
    row("a body in pieces", good(), {send(chunked + "2\r\nbo\r\n2\r\ndy\r\n0\r\n\r\n")}, ok);
    row("a body in pieces that ends early", good(), {send(chunked + "2\r\nbo\r\n"), breakOff()},
        closedIn);
    row("a continue before the answer", good(), {send("HTTP/1.1 100 Continue\r\n\r\n" + whole)},
        ok);

    // Statuses
    row("not found", good(), answer(404, "body"),
        "Error transferring # - server replied: Refused (HTTP 404) URL: #");
    row("an error of the server", good(), answer(500, ""),
        "Error transferring # - server replied: Refused (HTTP 500) URL: #");
    row("not available", good(), answer(503, "body"),
        "Error transferring # - server replied: Refused (HTTP 503) URL: #");
    row("a redirect without a target", good(), answer(302, "body"),
        "redirect (302) missing Location header from #");
    row("a redirect to a file", good(), redirect(302, "file:///etc/passwd"),
        "redirect (302) missing Location header from #");
    row("a redirect to itself", good(), redirect(302, "/a"),
        "empty response body (HTTP 302) from #");
    row("a redirect to a closed port", good(), redirect(302, "http://localhost:1/b"),
        "Connection refused URL: http://localhost:1/b");
}

void HttpFetchTlsTest::servers() {
    QFETCH(TlsSetup, tls);
    QFETCH(ServerScript, script);
    QFETCH(QString, expected);
    QFETCH(QString, reason);
    ScriptedServer server(tls);
    server.on("/a", script);
    const bool endsByLimit = expected.startsWith("Operation canceled");
    QElapsedTimer clock;
    clock.start();
    const FetchResult result = fetchUrl(server.url("/a"), endsByLimit ? shortLimit : longLimit, 8);
    QVERIFY2(clock.elapsed() < longLimit, "a hop ends within its limit");

    const QString outcome = result.ok ? ": " + QString::fromUtf8(result.body) : result.error;
    const QStringList starts = expected.replace("#", server.url("/a").toString()).split('|');
    QVERIFY2(std::any_of(starts.begin(), starts.end(),
                         [&](const QString &start) { return outcome.startsWith(start); }),
             qPrintable(outcome));
    QVERIFY(result.ok == expected.startsWith(": "));
    QVERIFY(result.ok || !result.error.isEmpty());
    if (!reason.isEmpty()) {
        const QStringList errors = certificateErrors(server);
        QVERIFY2(errors.contains(reason), qPrintable(errors.join("; ")));
    }
}

// Qt has no word of its own for the end of TLS: an attacker may cut such a body.
// Packages and manifests are proved by hash and signature, which is why this may stand.
void HttpFetchTlsTest::aBodyWithoutLengthCutShortIsTakenAsItIs() {
    ScriptedServer server(good());
    server.on("/a", {send(withoutLength + "bo"), breakOff()});
    const FetchResult result = fetchUrl(server.url("/a"), longLimit, 8);
    QCOMPARE(result.body, QByteArray("bo"));
}

void HttpFetchTlsTest::anEndlessBodyEndsAtTheLimit() {
    ScriptedServer server(good());
    ServerScript script{send(withoutLength)};
    for (int i = 0; i < 1000; ++i)
        script += {send(QByteArray(1000, 'x')), support::pause(60)};
    server.on("/a", script);
    QElapsedTimer clock;
    clock.start();
    const FetchResult result = fetchUrl(server.url("/a"), shortLimit, 8);
    QVERIFY(clock.elapsed() < longLimit); // which is what the body takes
    QCOMPARE(
        result.error,
        QStringLiteral("Operation canceled (HTTP 200) URL: %1").arg(server.url("/a").toString()));
}

void HttpFetchTlsTest::anAddressInPlaceOfAName() {
    ScriptedServer server(good());
    server.on("/a", answer(200, "body"));
    QUrl url = server.url("/a");
    url.setHost("127.0.0.1");
    QCOMPARE(fetchUrl(url, longLimit, 8).body, QByteArray("body"));
}

void HttpFetchTlsTest::redirectsBetweenTlsAndPlain() {
    ScriptedServer secure(good());
    ScriptedServer plain;
    secure.on("/a", redirect(302, plain.url("/b").toEncoded()));
    plain.on("/b", redirect(302, secure.url("/c").toEncoded()));
    secure.on("/c", answer(200, "body"));
    const FetchResult result = fetchUrl(secure.url("/a"), longLimit, 8);
    QCOMPARE(result.body, QByteArray("body"));
    QCOMPARE(result.finalUrl, secure.url("/c"));
}

// Both share the library's queue of errors, and it would be read as the connection's.
void HttpFetchTlsTest::aKeyThatIsRefusedLeavesNoErrorToAConnection() {
    QCOMPARE(ERR_peek_error(), 0ul);
    QVERIFY(!platformRsaVerifier()->decodeKey("no key").ok);
    QCOMPARE(ERR_peek_error(), 0ul);
}

QUORVANE_TEST_MAIN(QCoreApplication, HttpFetchTlsTest)
#include "http_fetch_tls_test.moc"
