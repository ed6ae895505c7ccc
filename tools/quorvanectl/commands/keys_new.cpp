// quorvanectl keys new: a key pair for a publisher. Not on Windows.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/passphrase_option.h"
#include "quorvanectl/keys/key_files.h"
#include "quorvanectl/shell/progress.h"

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    parser.addOption(
        {QStringLiteral("encrypt"),
         QStringLiteral("Encrypts the private half with a passphrase, asked for at the "
                        "terminal.")});
    declarePassphrase(parser);
}

int run(const QCommandLineParser &parser, Console &console) {
    const bool encrypts = parser.isSet(QStringLiteral("encrypt")) || hasPassphrase(parser);
    Passphrase passphrase;
    QString error;
    if (encrypts && !getPassphrase(parser, QStringLiteral("Passphrase of the new key: "), true,
                                   &passphrase, &error))
        return refuse(console, error);
    const KeyFiles files = whileTelling(console, QStringLiteral("making a key pair"), [&] {
        return makeKeyFiles(firstArgument(parser), encrypts ? &passphrase : nullptr);
    });
    if (!files.ok)
        return refuse(console, files.error);
    printLine(console,
              QStringLiteral("%1: private, %2")
                  .arg(spelledOut(files.privatePath),
                       encrypts ? QStringLiteral("encrypted") : QStringLiteral("not encrypted")));
    printLine(console, QStringLiteral("%1: public, SHA-256 %2")
                           .arg(spelledOut(files.publicPath), files.fingerprint));
    return Clean;
}

} // namespace

Command keysNew() {
    return {QStringLiteral("keys"),
            QStringLiteral("new"),
            QStringLiteral("DIR"),
            QStringLiteral("Makes a key pair; never over another one."),
            QStringLiteral("quorvanectl keys new keys"),
            declare,
            run};
}

} // namespace ctl
