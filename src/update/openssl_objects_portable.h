// What all uses of OpenSSL share: its objects freed by their owners, and the kind of a key.
#pragma once

#include <openssl/evp.h>
#include <openssl/rsa.h>

// Deletes for a std::unique_ptr by OpenSSL's own function for that kind of object.
template<auto freeFunction>
struct OpenSslFree {
    template<typename T>
    void operator()(T *object) const {
        freeFunction(object);
    }
};

// Of any other kind is a key that no manifest is signed with.
[[nodiscard]] inline bool isRsa(const EVP_PKEY *key) {
    return EVP_PKEY_get_base_id(key) == EVP_PKEY_RSA;
}
