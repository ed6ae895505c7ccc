#include "update/https_fallback.h"

bool httpsFallback(const QUrl &url, int timeoutMs, QByteArray *body, qint32 *status, QUrl *finalUrl,
                   QString *error) {
    return curlFetch(url, timeoutMs, body, status, finalUrl, error);
}
