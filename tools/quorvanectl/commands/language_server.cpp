// quorvanectl language-server: tells an editor of scripts and projects what is wrong while one types.
#include "quorvanectl/language_server/serving.h"

#include "quorvanectl/commands/commands.h"
#include "quorvanectl/shell/installation.h"

#include <QFile>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declareLibrary(parser);
    parser.addOption({QStringLiteral("stdio"),
                      QStringLiteral("Speaks over standard input and output, as it always does: "
                                     "many editors add this.")});
}

int run(const QCommandLineParser &parser, Console &console) {
    if (isTerminal(0))
        return refuse(console,
                      QStringLiteral("language-server is started by an editor, which speaks "
                                     "the Language Server Protocol with it over standard "
                                     "input and output"));
    QString error;
    QFile in;
    if (!loadLibrary(parser, console, &error))
        return refuse(console, error);
    // Unbuffered: a buffer would wait for bytes that the editor sends only once it has an answer. By its
    // number: of a stream of C's, Qt switches waiting off and on, which a socket shares with the output.
    if (!in.open(0, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return refuse(console, QStringLiteral("standard input: %1").arg(in.errorString()));
    const ServingEnd end = serve(in, *console.out);
    return end.error.isEmpty()
               ? end.status
               : refuse(console, QStringLiteral("standard input: %1").arg(end.error));
}

} // namespace

Command languageServer() {
    return {
        QStringLiteral("language-server"),
        QString(),
        QString(),
        QStringLiteral("Tells an editor what is wrong with scripts and projects while one types, "
                       "by the Language Server Protocol."),
        QStringLiteral("quorvanectl language-server --library FunctionLib.ini"),
        declare,
        run};
}

} // namespace ctl
