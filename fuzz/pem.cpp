// The text of a key file, and the key in it.

#include "support.h"
#include "update/manifest_signature.h"
#include "update/rsa_attempts.h"

#include <QRegularExpression>

namespace {

// The format as it is described: the same pattern, without what keeps the real one fast.
QByteArray describedBody(const QString &text) {
    static const QRegularExpression block(
        QStringLiteral("-----BEGIN [^-]+-----\\s*([A-Za-z0-9+/=\\s]+)\\s*-----END [^-]+-----"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression blank(QStringLiteral("\\s"));
    const QRegularExpressionMatch match = block.match(text);
    return QByteArray::fromBase64(match.captured(1).remove(blank).toLatin1());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const QString text = QString::fromUtf8(fuzz::bytesOf(data, size));
    const QByteArray key = decodePemBody(text);
    if (size < 300) // beyond it the described pattern may give up
        fuzz::demand(key == describedBody(text));
    QString details;
    fuzz::demand(!verifyRsaSha256(key, "data", QByteArray(256, 'x'), &details));
    fuzz::demand(!details.isEmpty());
    return 0;
}
