// The language server's input: envelopes, messages, and the texts and edits in them.

#include "quorvanectl/language_server/frames.h"
#include "quorvanectl/language_server/serving.h"
#include "script_language.h"

#include <QBuffer>
#include <QJsonDocument>

namespace {

void silent(QtMsgType, const QMessageLogContext &, const QString &) {}

// A path with a NUL is told to the debug log.
void prepare() {
    qInstallMessageHandler(silent);
    fuzz::loadScriptLanguage();
}

} // namespace

// The JSON parser of Qt 5.15 loses the memory of an object or array whose key comes twice. That is
// not ours to mend; leaks of ours show in the tests of the server.
extern "C" const char *__asan_default_options() { // NOLINT(bugprone-reserved-identifier)
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const bool prepared = (prepare(), true);
    Q_UNUSED(prepared)
    QByteArray input = fuzz::bytesOf(data, size);
    QByteArray output;
    QBuffer in(&input);
    QBuffer out(&output);
    fuzz::demand(in.open(QIODevice::ReadOnly) && out.open(QIODevice::ReadWrite));
    const ctl::ServingEnd end = ctl::serve(in, out);
    fuzz::demand(end.status >= 0 && end.status <= 2);
    fuzz::demand((end.status == 2) == !end.error.isEmpty());
    // Whatever comes in, what goes out is messages, each an object.
    fuzz::demand(out.seek(0));
    ctl::Frame frame = ctl::readFrame(out);
    for (; frame.kind == ctl::Frame::Kind::Message; frame = ctl::readFrame(out))
        fuzz::demand(QJsonDocument::fromJson(frame.body).isObject());
    fuzz::demand(frame.kind == ctl::Frame::Kind::End);
    return 0;
}
