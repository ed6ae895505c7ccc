#include "support/certificate_maker.h"

#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

namespace support {
namespace {

const long secondsPerDay = 24L * 60 * 60;

void require(bool condition) {
    if (!condition)
        qFatal("cannot make a certificate");
}

template<typename Write>
QByteArray pemOf(Write write) {
    BIO *memory = BIO_new(BIO_s_mem());
    require(write(memory) == 1);
    char *data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    const QByteArray pem(data, int(size));
    BIO_free(memory);
    return pem;
}

void setCommonName(X509_NAME *name, const QByteArray &commonName) {
    require(
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                                   reinterpret_cast<const unsigned char *>(commonName.constData()),
                                   int(commonName.size()), -1, 0) == 1);
}

void addExtension(X509 *x509, X509 *issuer, int nid, const QByteArray &value) {
    if (value.isEmpty())
        return;
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, x509, nullptr, nullptr, 0);
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value.constData());
    require(extension != nullptr && X509_add_ext(x509, extension, -1) == 1);
    X509_EXTENSION_free(extension);
}

void setSerialNumber(X509 *x509) {
    quint32 serial = 0;
    require(RAND_bytes(reinterpret_cast<unsigned char *>(&serial), sizeof serial) == 1);
    ASN1_INTEGER_set(X509_get_serialNumber(x509), long(serial >> 1) + 1);
}

} // namespace

Certificate makeCertificate(const CertificateWish &wish, const Certificate *issuer) {
    Certificate made;
    made.key.reset(wish.rsaBits > 0 ? EVP_RSA_gen(unsigned(wish.rsaBits)) : EVP_EC_gen("P-256"),
                   EVP_PKEY_free);
    made.x509.reset(X509_new(), X509_free);
    X509 *const x509 = made.x509.get();
    X509 *const signer = issuer != nullptr ? issuer->x509.get() : x509;
    EVP_PKEY *const signerKey = issuer != nullptr ? issuer->key.get() : made.key.get();

    require(X509_set_version(x509, 2) == 1);
    setSerialNumber(x509);
    X509_gmtime_adj(X509_getm_notBefore(x509), wish.startsInDays * secondsPerDay);
    X509_gmtime_adj(X509_getm_notAfter(x509), wish.endsInDays * secondsPerDay);
    setCommonName(X509_get_subject_name(x509), wish.commonName);
    require(X509_set_issuer_name(x509, X509_get_subject_name(signer)) == 1);
    require(X509_set_pubkey(x509, made.key.get()) == 1);
    addExtension(x509, signer, NID_basic_constraints,
                 wish.isAuthority ? "critical,CA:TRUE" : "critical,CA:FALSE");
    addExtension(x509, signer, NID_subject_key_identifier, "hash");
    addExtension(x509, signer, NID_subject_alt_name, wish.subjectAltName);
    addExtension(x509, signer, NID_ext_key_usage, wish.extendedKeyUsage);
    require(X509_sign(x509, signerKey, EVP_get_digestbyname(wish.digest)) > 0);

    made.pem = pemOf([x509](BIO *to) { return PEM_write_bio_X509(to, x509); });
    made.keyPem = pemOf([&made](BIO *to) {
        return PEM_write_bio_PrivateKey(to, made.key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
    return made;
}

Certificate makeAuthority(const QByteArray &commonName, const Certificate *issuer) {
    CertificateWish wish;
    wish.commonName = commonName;
    wish.subjectAltName.clear();
    wish.extendedKeyUsage.clear();
    wish.isAuthority = true;
    return makeCertificate(wish, issuer);
}

} // namespace support
