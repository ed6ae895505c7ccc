// Certificates and authorities made while a test runs.
#pragma once

#include <QByteArray>

#include <memory>

struct evp_pkey_st;
struct x509_st;

namespace support {

struct CertificateWish {
    QByteArray commonName = "localhost";
    QByteArray subjectAltName = "DNS:localhost,IP:127.0.0.1"; // empty for none
    int startsInDays = -1;
    int endsInDays = 30;
    bool isAuthority = false;
    QByteArray extendedKeyUsage = "serverAuth"; // empty for none
    const char *digest = "SHA256";
    int rsaBits = 0; // 0 for a key on the curve P-256
};

struct Certificate {
    QByteArray pem;
    QByteArray keyPem;
    std::shared_ptr<x509_st> x509;
    std::shared_ptr<evp_pkey_st> key;
};

// Signed by `issuer`, or by itself if that is null. Ends the program if it cannot be made.
[[nodiscard]] Certificate makeCertificate(const CertificateWish &wish,
                                          const Certificate *issuer = nullptr);

[[nodiscard]] Certificate makeAuthority(const QByteArray &commonName = "Test authority",
                                        const Certificate *issuer = nullptr);

} // namespace support
