// The few socket operations that the scripted server needs, blocking, on loopback.
#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace support {
namespace sockets {

// A listening socket on a port of the system's choice; ends the program if there is none.
[[nodiscard]] int listenOnLoopback(quint16 *port);
// Wakes whoever waits in accept, for ever.
void stopListening(int listener);
// A connection; below 0 once the listener was stopped.
[[nodiscard]] int accept(int listener);

// As the system's calls: the bytes moved, 0 at the other side's end, below 0 on failure.
[[nodiscard]] qint64 send(int socket, const char *bytes, int size);
[[nodiscard]] qint64 receive(int socket, char *bytes, int size);
// Waits for a byte and leaves it there.
void waitForFirstByte(int socket);
// Drops what still comes, until the other side has ended its half or is gone.
void waitForPeerToLeave(int socket);

// Ends this side's half, or both halves, which wakes whoever waits for bytes.
void endSending(int socket);
void endBoth(int socket);
// Lets the close tell the other side of an error.
void closeWithReset(int socket);
void close(int socket);

} // namespace sockets
} // namespace support
