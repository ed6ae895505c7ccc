#include "update/http_fetch.h"

#include "update/files/failure.h"
#include "update/files/text_file.h"
#include "update/https_fallback.h"

#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <new>

namespace {

constexpr int cancelPollMs = 100;
// Less makes the two threads wait for each other.
constexpr qint64 readAhead = 16 << 20; // bytes
constexpr int downloadTimeoutMs = 120000;
constexpr int downloadRedirects = 8;

QString tooLargeText(const QUrl &url) {
    return QStringLiteral("response body too large for memory from %1").arg(url.toString());
}

// The end of a hop: whether another follows. With the text, the call has failed.
bool endWith(const QString &error, FetchResult *result) {
    result->error = error;
    return false;
}

QNetworkRequest requestFor(const QUrl &url) {
    QNetworkRequest request(url);
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED // the older of two attributes, for libraries that know only it
        request.setAttribute(QNetworkRequest::FollowRedirectsAttribute, true);
    QT_WARNING_POP
    // Where both are known this one wins: each redirect comes back here and is counted.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    return request;
}

bool isWebUrl(const QUrl &url) {
    return url.isValid() &&
           (url.scheme().compare(QLatin1String("http"), Qt::CaseInsensitive) == 0 ||
            url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0);
}

// Invalid if the reply names none that may be followed: a file on this machine may not.
QUrl redirectTarget(const QNetworkReply &reply, const QUrl &current) {
    QUrl target = reply.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (!target.isValid())
        target = QUrl(QString::fromUtf8(reply.rawHeader("Location")).trimmed());
    if (target.isValid() && target.isRelative())
        target = current.resolved(target);
    return isWebUrl(target) ? target : QUrl();
}

bool succeedWithBody(FetchResult *result) {
    if (result->body.isEmpty()) {
        const QString status = result->statusCode < 1 ? QStringLiteral("unknown")
                                                      : QString::number(result->statusCode);
        return endWith(QStringLiteral("empty response body (HTTP %1) from %2")
                           .arg(status, result->finalUrl.toString()),
                       result);
    }
    result->ok = true;
    return false;
}

// Leaves the result alone if the client failed: the user sees Qt's failure, not its own.
bool fallBack(const QUrl &current, int timeoutMs, FetchResult *result) {
    if (current.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) != 0)
        return false;
    QByteArray body;
    qint32 status = 0;
    QUrl finalUrl;
    if (!httpsFallback(current, timeoutMs, &body, &status, &finalUrl))
        return false;
    *result = {body, status, finalUrl.isValid() ? finalUrl : current, QString(), true};
    return true;
}

QString failureText(const QNetworkReply &reply, const QUrl &current, int statusCode) {
    const QString text =
        reply.isFinished() ? reply.errorString() : QStringLiteral("network request timed out");
    const QString suffix =
        statusCode >= 1 ? QStringLiteral(" (HTTP %1)").arg(statusCode) : QString();
    return text + suffix + QStringLiteral(" URL: ") + current.toString();
}

// A body as it comes: taken piece by piece, so that it is never held twice.
struct IncomingBody {
    QByteArray bytes;
    bool tooLarge = false;
};

// Straight to its place: to take it as an array of its own would copy every byte twice more.
void append(QNetworkReply &reply, qint64 size, QByteArray *bytes) {
    const int before = bytes->size();
    bytes->resize(before + int(size));
    const qint64 taken = reply.read(bytes->data() + before, size);
    bytes->resize(before + int(qMax<qint64>(0, taken)));
}

// Runs within the event loop, through which no exception may pass.
void takeWhatCame(QNetworkReply &reply, IncomingBody *body) {
    const qint64 size = reply.bytesAvailable();
    try {
        body->tooLarge = size > largestDownload - body->bytes.size();
        if (!body->tooLarge)
            append(reply, size, &body->bytes);
    } catch (const std::bad_alloc &) {
        body->tooLarge = true;
    }
    if (body->tooLarge)
        reply.abort();
}

// One request. True if another hop follows, to the URL that `current` holds then.
bool runHop(QUrl *current, bool mayRedirect, int timeoutMs, const CancelFlag *cancelFlag,
            FetchResult *result) {
    // The manager outlives the reading of the reply, and takes the reply with it: a pool thread has
    // no event loop that would carry out deleteLater.
    QNetworkAccessManager manager;
    QNetworkReply *const reply = manager.get(requestFor(*current));
    // What comes faster than it is taken stays with the server: the library's own thread, which would keep
    // it, ends the process where there is no memory left.
    reply->setReadBufferSize(readAhead);
    IncomingBody body;
    QObject::connect(reply, &QNetworkReply::readyRead, reply,
                     [reply, &body] { takeWhatCame(*reply, &body); });
    QEventLoop loop;
    waitForReply(*reply, loop, timeoutMs, cancelFlag);
    reply->deleteLater();
    if (isCancelled(cancelFlag))
        return endWith(cancelledText(), result);
    const bool isOpen = reply->isOpen(); // an aborted reply is closed, and has no body
    if (isOpen)
        takeWhatCame(*reply, &body);
    if (body.tooLarge)
        return endWith(tooLargeText(*current), result);

    result->statusCode = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result->finalUrl = reply->url();
    result->body = isOpen ? body.bytes : QByteArray();
    if (mayRedirect && result->statusCode >= 300 && result->statusCode <= 399) {
        const QUrl target = redirectTarget(*reply, *current);
        if (!target.isValid()) {
            return endWith(QStringLiteral("redirect (%1) missing Location header from %2")
                               .arg(QString::number(result->statusCode), current->toString()),
                           result);
        }
        *current = target;
        return true;
    }
    if (reply->isFinished() && reply->error() == QNetworkReply::NoError)
        return succeedWithBody(result);
    const QString failure = failureText(*reply, *current, result->statusCode);
    return fallBack(*current, timeoutMs, result) ? false : endWith(failure, result);
}

bool writeBody(const QByteArray &body, const QString &path, QString *error) {
    // A folder that cannot be made shows when the file is opened.
    (void)ensureParentDir(path);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return fail(file.errorString(), error);
    // Only a write of nothing counts as failed; a full disk shows when the hash is checked.
    if (file.write(body) == 0)
        return fail(file.errorString(), error);
    return true;
}

} // namespace

void waitForReply(QNetworkReply &reply, QEventLoop &loop, int timeoutMs,
                  const CancelFlag *cancelFlag) {
    const auto abandon = [&reply, &loop] {
        reply.abort();
        loop.quit();
    };
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, &loop, abandon);
    QObject::connect(&reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer poll;
    if (cancelFlag != nullptr) {
        QObject::connect(&poll, &QTimer::timeout, &loop, [abandon, cancelFlag] {
            if (isCancelled(cancelFlag))
                abandon();
        });
        poll.start(cancelPollMs);
    }
    limit.start(timeoutMs);
    loop.exec();
    poll.stop();
}

FetchResult fetchUrl(const QUrl &url, int timeoutMs, int maxRedirects,
                     const CancelFlag *cancelFlag) {
    FetchResult result;
    if (!url.isValid())
        result.error = QStringLiteral("invalid URL: %1").arg(url.toString());
    else if (isCancelled(cancelFlag))
        result.error = cancelledText();
    else if (maxRedirects < 0)
        result.error = QStringLiteral("too many redirects while requesting %1").arg(url.toString());
    if (!result.error.isEmpty())
        return result;

    QUrl current = url;
    try {
        // The reply of the last allowed hop is taken as it is: nine at most for eight redirects.
        for (int hop = 0; runHop(&current, hop < maxRedirects, timeoutMs, cancelFlag, &result);
             ++hop) {
            if (isCancelled(cancelFlag)) {
                result.error = cancelledText();
                return result;
            }
        }
    } catch (const std::bad_alloc &) {
        result.error = tooLargeText(current);
    }
    return result;
}

bool downloadToFile(const QUrl &url, const QString &path, QString *error,
                    const CancelFlag *cancelFlag) {
    if (isCancelled(cancelFlag))
        return fail(cancelledText(), error);
    const FetchResult result = fetchUrl(url, downloadTimeoutMs, downloadRedirects, cancelFlag);
    if (!result.ok)
        return fail(result.error, error);
    if (isCancelled(cancelFlag))
        return fail(cancelledText(), error);
    return writeBody(result.body, path, error);
}
