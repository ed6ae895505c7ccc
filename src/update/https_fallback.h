// A second way to an https URL: an external client, started for one request.
//
// Windows runs PowerShell, other systems the `curl` program. The command lines and the reading of
// the outcome are common code; a platform only says which of the clients it uses. All calls block
// and may run on any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>

// Gets `url` with at most 8 redirects by this platform's client. The client is given `timeoutMs` in
// whole seconds, at least one, and is killed 5 seconds after them; nothing else interrupts it.
// On success the body is not empty, `status` is 2 or more, and `finalUrl` is `url`. On failure the
// outputs stay as they are and `error` says why.
[[nodiscard]] bool httpsFallback(const QUrl &url, int timeoutMs, QByteArray *body, qint32 *status,
                                 QUrl *finalUrl, QString *error = nullptr);

// The same by PowerShell, whose exit code carries the status.
[[nodiscard]] bool powershellFetch(const QUrl &url, int timeoutMs, QByteArray *body, qint32 *status,
                                   QUrl *finalUrl, QString *error = nullptr);

// The same by curl, which writes the status to its standard output: an exit code cannot hold it.
[[nodiscard]] bool curlFetch(const QUrl &url, int timeoutMs, QByteArray *body, qint32 *status,
                             QUrl *finalUrl, QString *error = nullptr);

// The text as PowerShell's literal string: in single quotes, each single quote in it doubled.
[[nodiscard]] QString powershellQuote(const QString &text);

// PowerShell's own place below the Windows folder, if it is there, else its bare name.
[[nodiscard]] QString powershellProgram();

// The clients' arguments for getting `url` into the file `target`.
[[nodiscard]] QStringList powershellFetchArguments(const QUrl &url, int timeoutMs,
                                                   const QString &target);
[[nodiscard]] QStringList curlFetchArguments(const QUrl &url, int timeoutMs, const QString &target);

// How long a client is waited for that was given `timeoutMs`, before it is killed.
[[nodiscard]] int clientWaitMs(int timeoutMs);

// What a client left when it ended.
struct ClientEnd {
    bool normal = false; // false if it crashed
    int exitCode = 0;
    QByteArray output; // standard output
};

// One run of a client: what to start, where it puts the body, and what status its end stands for.
struct FetchClient {
    QString name; // as in messages
    QString program;
    QStringList arguments;
    QString target;
    qint32 (*statusOf)(const ClientEnd &end) = nullptr; // below 2 for a failure
};

// Runs the client and waits `waitMs` for it. The target file is gone when this returns.
[[nodiscard]] bool runFetchClient(const FetchClient &client, const QUrl &url, int waitMs,
                                  QByteArray *body, qint32 *status, QUrl *finalUrl,
                                  QString *error = nullptr);
