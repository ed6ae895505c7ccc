// The verifier of Windows with each of its steps failing in turn: what it tells, and that it gives back
// all that it was given, once.
//
// The test puts itself between the verifier and the system, by the table through which a program
// calls what it imports.
#include "support/key_maker.h"
#include "support/platform.h"
#include "support/staged_main.h"
#include "update/rsa_attempts.h"

#include <windows.h>

#include <bcrypt.h>
#include <wincrypt.h>

#include <algorithm>
#include <set>

// Each entry of the table is a pointer of this name.
#define ENTRY(function) extern "C" decltype(&::function) __imp_##function
ENTRY(BCryptDestroyKey);
ENTRY(BCryptVerifySignature);
ENTRY(CryptAcquireContextW);
ENTRY(CryptCreateHash);
ENTRY(CryptDecodeObjectEx);
ENTRY(CryptDestroyHash);
ENTRY(CryptDestroyKey);
ENTRY(CryptHashData);
ENTRY(CryptImportPublicKeyInfo);
ENTRY(CryptImportPublicKeyInfoEx2);
ENTRY(CryptReleaseContext);
ENTRY(CryptVerifySignatureA);
ENTRY(LocalFree);
#undef ENTRY

namespace {

const DWORD failure = 4711;   // the error of the failing step
const DWORD overwritten = 42; // what giving back leaves for the last error

QString failing;       // the step that fails
int before = 0;        // how often it succeeds first
bool modernFails;      // CNG finds no signature to be good
bool mistaken = false; // something was given back that was not held

using Held = std::pair<QString, quintptr>; // its kind and its value
std::set<Held> held;

bool failsNow(const char *step) {
    if (failing != step || before-- > 0)
        return false;
    SetLastError(failure);
    return true;
}

// The call that fills `place` has returned by then.
template<typename T>
BOOL hold(BOOL done, const char *kind, const T *place) {
    if (done)
        held.insert({kind, (quintptr)*place});
    return done;
}

QStringList leftOver() {
    QStringList kinds(mistaken ? QStringList("given back twice") : QStringList());
    for (const Held &one : held)
        kinds.append(one.first);
    return kinds;
}

template<typename T>
void giveBack(const char *kind, T value) {
    mistaken |= held.erase({kind, (quintptr)value}) == 0;
}

template<typename T>
T leave(T result) {
    SetLastError(overwritten);
    return result;
}

// Replaces one entry of the table, and gives what stood there.
template<typename Function>
Function replaced(Function &entry, Function by) {
    const Function original = entry;
    DWORD protection = 0;
    if (!VirtualProtect(&entry, sizeof entry, PAGE_READWRITE, &protection))
        qFatal("cannot write the table of imports");
    entry = by;
    return original;
}

// A stand-in for `function` that calls `original`.
#define INSTEAD_OF(function, ...)                                                                  \
    static decltype(&::function) original;                                                         \
    original = replaced<decltype(&::function)>(__imp_##function, __VA_ARGS__)

void watchModernInterface() {
    {
        INSTEAD_OF(
            CryptDecodeObjectEx,
            [](DWORD encoding, LPCSTR type, const BYTE *bytes, DWORD size, DWORD flags,
               PCRYPT_DECODE_PARA how, void *block, DWORD *blockSize) -> BOOL {
                return !failsNow("CryptDecodeObjectEx") &&
                       hold(original(encoding, type, bytes, size, flags, how, block, blockSize),
                            "block", static_cast<void **>(block));
            });
    }
    {
        INSTEAD_OF(LocalFree, [](HLOCAL memory) -> HLOCAL {
            if (memory)
                giveBack("block", memory);
            return leave(original(memory));
        });
    }
    {
        INSTEAD_OF(CryptImportPublicKeyInfoEx2,
                   [](DWORD encoding, PCERT_PUBLIC_KEY_INFO info, DWORD flags, void *more,
                      BCRYPT_KEY_HANDLE *key) -> BOOL {
                       return !failsNow("CryptImportPublicKeyInfoEx2") &&
                              hold(original(encoding, info, flags, more, key), "CNG key", key);
                   });
    }
    {
        INSTEAD_OF(BCryptDestroyKey, [](BCRYPT_KEY_HANDLE key) -> NTSTATUS {
            giveBack("CNG key", key);
            return leave(original(key));
        });
    }
    {
        INSTEAD_OF(BCryptVerifySignature,
                   [](BCRYPT_KEY_HANDLE key, void *padding, PUCHAR hash, ULONG hashSize,
                      PUCHAR signature, ULONG size, ULONG flags) -> NTSTATUS {
                       return modernFails
                                  ? static_cast<NTSTATUS>(0xC000A000)
                                  : original(key, padding, hash, hashSize, signature, size, flags);
                   });
    }
}

void watchLegacyInterface() {
    {
        INSTEAD_OF(CryptAcquireContextW,
                   [](HCRYPTPROV *provider, LPCWSTR container, LPCWSTR name, DWORD type,
                      DWORD flags) -> BOOL {
                       return !failsNow("CryptAcquireContextW") &&
                              hold(original(provider, container, name, type, flags), "provider",
                                   provider);
                   });
    }
    {
        INSTEAD_OF(CryptReleaseContext, [](HCRYPTPROV provider, DWORD flags) -> BOOL {
            giveBack("provider", provider);
            return leave(original(provider, flags));
        });
    }
    {
        INSTEAD_OF(CryptImportPublicKeyInfo,
                   [](HCRYPTPROV provider, DWORD encoding, PCERT_PUBLIC_KEY_INFO info,
                      HCRYPTKEY *key) -> BOOL {
                       return !failsNow("CryptImportPublicKeyInfo") &&
                              hold(original(provider, encoding, info, key), "key", key);
                   });
    }
    {
        INSTEAD_OF(CryptDestroyKey, [](HCRYPTKEY key) -> BOOL {
            giveBack("key", key);
            return leave(original(key));
        });
    }
    {
        INSTEAD_OF(CryptCreateHash,
                   [](HCRYPTPROV provider, ALG_ID kind, HCRYPTKEY key, DWORD flags,
                      HCRYPTHASH *hash) -> BOOL {
                       return !failsNow("CryptCreateHash") &&
                              hold(original(provider, kind, key, flags, hash), "hash", hash);
                   });
    }
    {
        INSTEAD_OF(CryptDestroyHash, [](HCRYPTHASH hash) -> BOOL {
            giveBack("hash", hash);
            return leave(original(hash));
        });
    }
    {
        INSTEAD_OF(CryptHashData,
                   [](HCRYPTHASH hash, const BYTE *data, DWORD size, DWORD flags) -> BOOL {
                       return !failsNow("CryptHashData") && original(hash, data, size, flags);
                   });
    }
    {
        INSTEAD_OF(CryptVerifySignatureA,
                   [](HCRYPTHASH hash, const BYTE *signature, DWORD size, HCRYPTKEY key,
                      LPCSTR text, DWORD flags) -> BOOL {
                       return !failsNow("CryptVerifySignatureA") &&
                              original(hash, signature, size, key, text, flags);
                   });
    }
}

} // namespace

class RsaHandlesTest : public QObject {
    Q_OBJECT

private:
    const support::KeyPair signer = support::KeyPair::rsa(2048);
    const QByteArray signedBytes = "the canonical text";

private Q_SLOTS:
    void initTestCase();
    void aStepFails_data();
    void aStepFails();
    void anAttemptSucceeds_data();
    void anAttemptSucceeds();
};

void RsaHandlesTest::initTestCase() {
    watchModernInterface();
    watchLegacyInterface();
}

void RsaHandlesTest::aStepFails_data() {
    QTest::addColumn<QString>("step");
    QTest::addColumn<int>("goodBefore");
    QTest::addColumn<QString>("details");
    const QString modern = "BCryptVerifySignature direct=0xFFFFFFFFC000A000 "
                           "reversed=0xFFFFFFFFC000A000; ";
    const QString both = modern + "CryptVerifySignature direct=4711 reversed=4711";
    QTest::newRow("the key is not decoded")
        << "CryptDecodeObjectEx" << 0 << "CryptDecodeObjectEx failed: 4711";
    QTest::newRow("CNG does not take the key")
        << "CryptImportPublicKeyInfoEx2" << 0 << "CryptImportPublicKeyInfoEx2 failed: 4711";
    QTest::newRow("there is no CryptoAPI")
        << "CryptAcquireContextW" << 0 << modern + "CryptAcquireContext failed: 4711";
    QTest::newRow("the key is not decoded again")
        << "CryptDecodeObjectEx" << 1 << modern + "CryptDecodeObjectEx(legacy) failed: 4711";
    QTest::newRow("CryptoAPI does not take the key")
        << "CryptImportPublicKeyInfo" << 0 << modern + "CryptImportPublicKeyInfo failed: 4711";
    QTest::newRow("no hash is made") << "CryptCreateHash" << 0 << both;
    QTest::newRow("the data is not hashed") << "CryptHashData" << 0 << both;
    QTest::newRow("the signature is not verified") << "CryptVerifySignatureA" << 0 << both;
    QTest::newRow("only the reversed signature is not verified")
        << "CryptVerifySignatureA" << 1
        << modern + "CryptVerifySignature direct=2148073478 reversed=4711";
}

void RsaHandlesTest::aStepFails() {
    QFETCH(QString, step);
    QFETCH(int, goodBefore);
    failing = step;
    before = goodBefore;
    modernFails = false;
    QString details;
    QVERIFY(!verifyRsaSha256(signer.publicDer(), "other data", signer.sign(signedBytes), &details));
    details = support::withWindowsNumbers(details);
    QTEST(details, "details");
    QCOMPARE(leftOver(), QStringList());
}

void RsaHandlesTest::anAttemptSucceeds_data() {
    QTest::addColumn<bool>("modern");
    QTest::addColumn<bool>("asMade");
    QTest::addColumn<QString>("details");
    QTest::newRow("the first") << true << true << "BCryptVerifySignature direct";
    QTest::newRow("the second") << true << false << "BCryptVerifySignature reversed-bytes";
    QTest::newRow("the third") << false << false << "CryptVerifySignature direct";
    QTest::newRow("the fourth") << false << true << "CryptVerifySignature reversed-bytes";
}

void RsaHandlesTest::anAttemptSucceeds() {
    QFETCH(bool, modern);
    QFETCH(bool, asMade);
    failing.clear();
    modernFails = !modern;
    QByteArray signature = signer.sign(signedBytes);
    if (!asMade)
        std::reverse(signature.begin(), signature.end());
    QString details;
    QVERIFY(verifyRsaSha256(signer.publicDer(), signedBytes, signature, &details));
    QTEST(details, "details");
    QCOMPARE(leftOver(), QStringList());
}

QUORVANE_TEST_MAIN(QCoreApplication, RsaHandlesTest)
#include "rsa_handles_test.moc"
