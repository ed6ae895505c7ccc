// The one way in which the update pipeline gets a URL: blocking, into memory.
//
// A call spins an event loop of its own around Qt's network classes, so it may run on any thread,
// a pool thread included. It shares nothing but the cancel flag. Redirects are followed here, one
// request a hop. Where a request for an https URL fails, an external client gets the same URL (see
// https_fallback.h): it may know a proxy or a certificate that Qt does not.
#pragma once

#include "update/files/cancel_flag.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

class QEventLoop;
class QNetworkReply;

// What a byte array can hold: a larger body is refused.
inline constexpr qint64 largestDownload = 0x7FFFFF00; // bytes

struct FetchResult {
    QByteArray body;
    qint32 statusCode = 0; // HTTP status of the last reply; 0 when there was none
    QUrl finalUrl;         // of the last reply; invalid when none arrived
    QString error;         // English, untranslated; empty on success, "cancelled" after a cancel
    bool ok = false;
};

// Gets `url`, following at most `maxRedirects` redirects to http and https addresses. `timeoutMs`
// holds for each hop by itself. `cancelFlag` may be null; raised, it ends the wait for Qt
// within about 100 ms, while a running external client is waited for. An empty body is a failure.
// Status, final URL and body of the last reply stay in a failed result.
[[nodiscard]] FetchResult fetchUrl(const QUrl &url, int timeoutMs, int maxRedirects,
                                   const CancelFlag *cancelFlag = nullptr);

// Fetches with 120 seconds a hop and 8 redirects, then writes the body to `path` in place, making
// its folders. A write that ends early goes unnoticed: packages are checked by their hash.
[[nodiscard]] bool downloadToFile(const QUrl &url, const QString &path, QString *error = nullptr,
                                  const CancelFlag *cancelFlag = nullptr);

// Runs `loop` until the reply has finished, `timeoutMs` have passed or the flag is raised; the last
// two abort the reply. On the thread of both objects.
void waitForReply(QNetworkReply &reply, QEventLoop &loop, int timeoutMs,
                  const CancelFlag *cancelFlag);
