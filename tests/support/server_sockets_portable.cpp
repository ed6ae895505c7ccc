// The scripted server's sockets as Linux has them; no program that is started inherits them.
#include "support/server_sockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>

namespace support {
namespace sockets {

int listenOnLoopback(quint16 *port) {
    std::signal(SIGPIPE, SIG_IGN); // the TLS library writes to sockets that may be gone
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const plain = reinterpret_cast<sockaddr *>(&address);
    if (::bind(listener, plain, size) != 0 || ::listen(listener, 64) != 0 ||
        ::getsockname(listener, plain, &size) != 0)
        qFatal("scripted server: cannot listen");
    *port = ntohs(address.sin_port);
    return listener;
}

void stopListening(int listener) {
    endBoth(listener);
}

int accept(int listener) {
    return ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
}

qint64 send(int socket, const char *bytes, int size) {
    return ::send(socket, bytes, size_t(size), MSG_NOSIGNAL);
}

qint64 receive(int socket, char *bytes, int size) {
    return ::recv(socket, bytes, size_t(size), 0);
}

void waitForFirstByte(int socket) {
    char byte = 0;
    (void)::recv(socket, &byte, 1, MSG_PEEK);
}

void waitForPeerToLeave(int socket) {
    pollfd poller{socket, POLLIN | POLLRDHUP, 0};
    char ignored[4096];
    while (::poll(&poller, 1, -1) > 0) {
        if ((poller.revents & (POLLHUP | POLLERR | POLLRDHUP)) != 0)
            return;
        if (::recv(socket, ignored, sizeof ignored, 0) <= 0)
            return;
    }
}

void endSending(int socket) {
    ::shutdown(socket, SHUT_WR);
}

void endBoth(int socket) {
    ::shutdown(socket, SHUT_RDWR);
}

void closeWithReset(int socket) {
    const linger now{1, 0};
    (void)::setsockopt(socket, SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

void close(int socket) {
    ::close(socket);
}

} // namespace sockets
} // namespace support
