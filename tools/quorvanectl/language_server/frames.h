// The envelope of each message between an editor and the server: a few header lines, of which
// Content-Length counts, an empty line, and so many bytes.
#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

namespace ctl {

// More than any editor sends, and than is ever waited for.
inline constexpr qint64 largestMessage = 67108864; // bytes, 64 MiB

struct Frame {
    enum class Kind {
        Message, // `body` holds it
        End,     // the stream has ended, between two messages
        Fault,   // nothing behind this can be read; `fault` tells why
    };
    Kind kind = Kind::End;
    QByteArray body;
    QString fault;
};

// Waits for the next message. Memory is taken as its bytes come, not as they are announced.
[[nodiscard]] Frame readFrame(QIODevice &in);

// The message with its header.
[[nodiscard]] QByteArray framed(const QByteArray &body);

} // namespace ctl
