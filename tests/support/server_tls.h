// TLS on the scripted server's connections. Windows builds have no library for that side of it: there
// a server with TLS ends the program.
#pragma once

#include "support/scripted_server.h"

namespace support {
namespace tls {

[[nodiscard]] ssl_ctx_st *makeContext(const TlsSetup &setup);
void freeContext(ssl_ctx_st *context);
// A connection after its handshake; null if that failed.
[[nodiscard]] ssl_st *handshake(ssl_ctx_st *context, int socket);
// As the socket's own.
[[nodiscard]] qint64 send(ssl_st *connection, const char *bytes, int size);
[[nodiscard]] qint64 receive(ssl_st *connection, char *bytes, int size);
void sayFarewell(ssl_st *connection);
void freeConnection(ssl_st *connection);

} // namespace tls
} // namespace support
