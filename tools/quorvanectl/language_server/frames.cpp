#include "quorvanectl/language_server/frames.h"

#include <QIODevice>

#include <algorithm>

namespace ctl {
namespace {

constexpr int longestLine = 4096; // bytes
constexpr int mostLines = 64;
constexpr qint64 piece = 1048576; // bytes that are taken at a time

Frame faulty(const QString &fault) {
    return {Frame::Kind::Fault, {}, fault};
}

// A line without its end, which is a line feed, with a carriage return or without. False at the end of
// the stream or where the line is too long.
bool readLine(QIODevice &in, QByteArray *line) {
    line->clear();
    char byte = 0;
    while (in.getChar(&byte)) {
        if (byte == '\n') {
            if (line->endsWith('\r'))
                line->chop(1);
            return true;
        }
        if (line->size() == longestLine)
            return false;
        line->append(byte);
    }
    return false;
}

// The announced length; -1, with the reason, if it is none.
qint64 lengthOf(const QByteArray &value, QString *fault) {
    const bool isNumber = !value.isEmpty() && std::all_of(value.begin(), value.end(), [](char it) {
        return it >= '0' && it <= '9';
    });
    bool fits = false;
    const qint64 length = value.toLongLong(&fits);
    if (!isNumber)
        *fault = QStringLiteral("Content-Length is no number");
    else if (!fits || length > largestMessage)
        *fault = QStringLiteral("Content-Length is above %1 MiB").arg(largestMessage / piece);
    else
        return length;
    return -1;
}

Frame readBody(QIODevice &in, qint64 length) {
    QByteArray body;
    while (body.size() < length) {
        const QByteArray next = in.read(qMin(piece, length - body.size()));
        if (next.isEmpty())
            return faulty(QStringLiteral("the input ends inside a message"));
        body += next;
    }
    return {Frame::Kind::Message, body, {}};
}

} // namespace

Frame readFrame(QIODevice &in) {
    qint64 length = -1;
    QByteArray line;
    for (int count = 0; count < mostLines; ++count) {
        if (!readLine(in, &line)) {
            if (line.isEmpty() && count == 0)
                return {};
            return faulty(line.size() == longestLine
                              ? QStringLiteral("a line of a header is too long")
                              : QStringLiteral("the input ends inside a header"));
        }
        if (line.isEmpty())
            return length < 0 ? faulty(QStringLiteral("a header without Content-Length"))
                              : readBody(in, length);
        const int colon = line.indexOf(':');
        if (colon < 0)
            return faulty(QStringLiteral("a line of a header has no colon"));
        if (line.left(colon).trimmed().toLower() != "content-length")
            continue; // the other one says that the text is UTF-8, as it always is
        QString fault;
        length = lengthOf(line.mid(colon + 1).trimmed(), &fault);
        if (length < 0)
            return faulty(fault);
    }
    return faulty(QStringLiteral("a header has too many lines"));
}

QByteArray framed(const QByteArray &body) {
    return "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

} // namespace ctl
