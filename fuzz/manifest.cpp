// The text of an update manifest: its signed form and its verification.

#include "support.h"
#include "update/canonical_manifest.h"
#include "update/manifest_signature.h"

namespace {

// A pair whose private half is gone: nothing verifies against it.
constexpr char publicKey[] = "-----BEGIN PUBLIC KEY-----\n"
                             "MIIBIjANBgkqhkiG9w0BAQEFAAOCAQ8AMIIBCgKCAQEAkzwWiTa+HUjcumqwgrva\n"
                             "6GAqa8H/puw0cZHsWLIQTcjqlC42z+NxzufeFXS+syYHkZSufS5NjSKfyyFnhzMn\n"
                             "N0xOnJYfgL5LFVXC/nBI+F3tZ0PAu1xLGWq9hfPUzJ4/lhrNKCN31962tABjSTku\n"
                             "xUdJfBGtX6v8H4K9+hAWDZYdyBMaLtQ2qbFUZY2/62luEiVMk/4J+X5HdZBJpy+k\n"
                             "/jDf3MQZPMmAWWi1kU5KKDAF7o1ArZadSOtDUnF9ea6fCBRW7BQydPoSKOwTzlky\n"
                             "bVs4Oe+BwbUKSODCvPiA5RxbYZBYFzgmsuq2hpYHrRTJ0N/osDzoP68KIsC16DlO\n"
                             "lwIDAQAB\n"
                             "-----END PUBLIC KEY-----\n";

} // namespace

// The JSON library loses the first of two containers under one key; that is not ours to mend.
extern "C" const char *__lsan_default_suppressions() { // NOLINT(bugprone-reserved-identifier)
    return "leak:libQt5Core";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const QString keyPath = fuzz::write(QStringLiteral("update.pub"), publicKey);
    const QString text = QString::fromUtf8(fuzz::bytesOf(data, size));
    const QString canonical = canonicalManifestText(text);
    const VerifyResult result = verifyManifest(text, keyPath);
    fuzz::demand(!result.ok && !result.message.isEmpty());
    fuzz::demand(canonical.isNull() ==
                 (result.message == QLatin1String("manifest JSON is invalid")));
    if (!canonical.isNull()) {
        fuzz::demand(canonical.startsWith(QLatin1Char('{')) &&
                     canonical.endsWith(QLatin1Char('}')));
        fuzz::demand(canonicalManifestText(canonical) == canonical); // it is its own signed form
    }
    return 0;
}
