// No TLS for the scripted server: the first to ask for it ends the program.
#include "support/server_tls.h"

namespace support {
namespace tls {

ssl_ctx_st *makeContext(const TlsSetup &) {
    qFatal("scripted server: no TLS in Windows builds");
    return nullptr;
}

void freeContext(ssl_ctx_st *) {}

ssl_st *handshake(ssl_ctx_st *, int) {
    return nullptr;
}

qint64 send(ssl_st *, const char *, int) {
    return -1;
}

qint64 receive(ssl_st *, char *, int) {
    return -1;
}

void sayFarewell(ssl_st *) {}

void freeConnection(ssl_st *) {}

} // namespace tls
} // namespace support
