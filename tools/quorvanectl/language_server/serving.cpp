#include "quorvanectl/language_server/serving.h"

#include "quorvanectl/language_server/frames.h"
#include "quorvanectl/language_server/language_server.h"

#include <QFileDevice>
#include <QJsonDocument>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace ctl {
namespace {

// The messages that have come and were not taken yet, between the thread that reads and the one that
// answers. Who reads waits while more than largestMessage bytes lie here.
class Inbox {
public:
    void put(const QByteArray &body) {
        std::unique_lock<std::mutex> lock(mutex);
        change.wait(lock, [this] { return bytes <= largestMessage; });
        bodies.append(body);
        bytes += body.size();
        change.notify_all();
    }

    void end(const Frame &frame) {
        const std::lock_guard<std::mutex> lock(mutex);
        last = frame;
        hasEnded = true;
        change.notify_all();
    }

    // Waits for one, and takes all; none once the input has ended.
    QList<QByteArray> takeAll() {
        std::unique_lock<std::mutex> lock(mutex);
        change.wait(lock, [this] { return hasEnded || !bodies.isEmpty(); });
        QList<QByteArray> taken;
        taken.swap(bodies);
        bytes = 0;
        change.notify_all();
        return taken;
    }

    // What ended the input. Only once takeAll() has given none.
    Frame ending() {
        const std::lock_guard<std::mutex> lock(mutex);
        return last;
    }

private:
    std::mutex mutex;
    std::condition_variable change;
    QList<QByteArray> bodies;
    qint64 bytes = 0;
    Frame last;
    bool hasEnded = false;
};

// Nothing comes behind it, and who waited for more would wait for the editor to close the stream.
bool isLast(const QByteArray &body) {
    if (!body.contains("\"exit\""))
        return false;
    const Message message = parsedMessage(body);
    return message.kind == Message::Kind::Notification && message.method == QLatin1String("exit");
}

void readAll(QIODevice &in, Inbox &inbox) {
    for (;;) {
        const Frame frame = readFrame(in);
        if (frame.kind != Frame::Kind::Message)
            return inbox.end(frame);
        inbox.put(frame.body);
        if (isLast(frame.body))
            return inbox.end({});
    }
}

void write(QIODevice &out, const QJsonObject &message) {
    const QByteArray body = QJsonDocument(message).toJson(QJsonDocument::Compact);
    // An editor that is gone reads no more and sends no more: the input ends too.
    (void)out.write(framed(body));
    if (auto *const file = qobject_cast<QFileDevice *>(&out))
        (void)file->flush();
}

} // namespace

ServingEnd serve(QIODevice &in, QIODevice &out) {
    Inbox inbox;
    LanguageServer server([&out](const QJsonObject &message) { write(out, message); });
    std::thread reader([&in, &inbox] { readAll(in, inbox); });
    for (QList<QByteArray> bodies = inbox.takeAll(); !bodies.isEmpty(); bodies = inbox.takeAll())
        server.take(bodies);
    reader.join();
    const Frame ending = inbox.ending();
    if (server.exitStatus())
        return {*server.exitStatus(), {}};
    if (ending.kind == Frame::Kind::Fault)
        return {2, ending.fault};
    return {1, {}};
}

} // namespace ctl
