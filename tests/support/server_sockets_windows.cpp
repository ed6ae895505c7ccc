// The scripted server's sockets as Windows has them; no program that is started inherits them.
#include "support/server_sockets.h"

#include <winsock2.h>
#include <ws2tcpip.h>

namespace support {
namespace sockets {
namespace {

// Socket handles are small numbers.
SOCKET handle(int socket) {
    return static_cast<SOCKET>(socket);
}

} // namespace

int listenOnLoopback(quint16 *port) {
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0)
        qFatal("scripted server: no sockets");
    const SOCKET listener = ::socket(AF_INET, SOCK_STREAM, 0);
    SetHandleInformation(reinterpret_cast<HANDLE>(listener), HANDLE_FLAG_INHERIT, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    auto *const plain = reinterpret_cast<sockaddr *>(&address);
    if (::bind(listener, plain, size) != 0 || ::listen(listener, 64) != 0 ||
        ::getsockname(listener, plain, &size) != 0)
        qFatal("scripted server: cannot listen");
    *port = ntohs(address.sin_port);
    return int(listener);
}

// Only a close wakes a waiting accept here.
void stopListening(int listener) {
    close(listener);
}

int accept(int listener) {
    const SOCKET socket = ::accept(handle(listener), nullptr, nullptr);
    if (socket == INVALID_SOCKET)
        return -1;
    SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
    return int(socket);
}

qint64 send(int socket, const char *bytes, int size) {
    return ::send(handle(socket), bytes, size, 0);
}

qint64 receive(int socket, char *bytes, int size) {
    return ::recv(handle(socket), bytes, size, 0);
}

void waitForFirstByte(int socket) {
    char byte = 0;
    (void)::recv(handle(socket), &byte, 1, MSG_PEEK);
}

void waitForPeerToLeave(int socket) {
    char ignored[4096];
    while (receive(socket, ignored, sizeof ignored) > 0) {
    }
}

void endSending(int socket) {
    ::shutdown(handle(socket), SD_SEND);
}

void endBoth(int socket) {
    ::shutdown(handle(socket), SD_BOTH);
}

void closeWithReset(int socket) {
    const linger now{1, 0};
    (void)::setsockopt(handle(socket), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char *>(&now),
                       sizeof now);
}

void close(int socket) {
    ::closesocket(handle(socket));
}

} // namespace sockets
} // namespace support
