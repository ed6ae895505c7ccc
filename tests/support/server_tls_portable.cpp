// The server's side of TLS, ready to be weaker than any client should accept.
#include "support/server_tls.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

namespace support {
namespace tls {
namespace {

void require(bool condition, const char *what) {
    if (!condition)
        qFatal("scripted server: %s", what);
}

} // namespace

ssl_ctx_st *makeContext(const TlsSetup &setup) {
    ssl_ctx_st *context = SSL_CTX_new(TLS_server_method());
    SSL_CTX_set_security_level(context, 0); // weak keys are for the other side to refuse
    SSL_CTX_set_min_proto_version(context, setup.lowestVersion);
    SSL_CTX_set_max_proto_version(context, setup.highestVersion);
    if (!setup.ciphers.isEmpty())
        require(SSL_CTX_set_cipher_list(context, setup.ciphers.constData()) == 1, "cipher list");
    if (setup.wantsClientCertificate)
        SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);

    BIO *chain = BIO_new_mem_buf(setup.chainPem.constData(), int(setup.chainPem.size()));
    X509 *own = PEM_read_bio_X509(chain, nullptr, nullptr, nullptr);
    require(own != nullptr && SSL_CTX_use_certificate(context, own) == 1, "certificate");
    X509_free(own);
    while (X509 *further = PEM_read_bio_X509(chain, nullptr, nullptr, nullptr))
        SSL_CTX_add_extra_chain_cert(context, further); // takes it over
    BIO_free(chain);
    ERR_clear_error();

    BIO *keyText = BIO_new_mem_buf(setup.keyPem.constData(), int(setup.keyPem.size()));
    EVP_PKEY *key = PEM_read_bio_PrivateKey(keyText, nullptr, nullptr, nullptr);
    require(key != nullptr && SSL_CTX_use_PrivateKey(context, key) == 1, "key");
    EVP_PKEY_free(key);
    BIO_free(keyText);
    return context;
}

void freeContext(ssl_ctx_st *context) {
    SSL_CTX_free(context);
}

ssl_st *handshake(ssl_ctx_st *context, int socket) {
    ssl_st *const connection = SSL_new(context);
    SSL_set_fd(connection, socket);
    if (SSL_accept(connection) == 1)
        return connection;
    freeConnection(connection);
    return nullptr;
}

qint64 send(ssl_st *connection, const char *bytes, int size) {
    return SSL_write(connection, bytes, size);
}

qint64 receive(ssl_st *connection, char *bytes, int size) {
    return SSL_read(connection, bytes, size);
}

void sayFarewell(ssl_st *connection) {
    SSL_shutdown(connection);
}

void freeConnection(ssl_st *connection) {
    SSL_free(connection);
    ERR_clear_error();
}

} // namespace tls
} // namespace support
