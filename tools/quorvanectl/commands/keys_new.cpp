// quorvanectl keys new: a key pair for a publisher.
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
                        "terminal: so it is without this option too.")});
    parser.addOption(
        {QStringLiteral("no-encrypt"),
         QStringLiteral("Leaves the private half open to whoever gets the file, for trials.")});
    declarePassphrase(parser);
}

// Where nobody can be asked, a key without a passphrase is a choice, and not what happens by itself.
QString withWayOut(const QString &error) {
    return error.endsWith(QLatin1String("--passphrase-fd"))
               ? error + QStringLiteral(", or take --no-encrypt for a key without one")
               : error;
}

int run(const QCommandLineParser &parser, Console &console) {
    const bool encrypts = !parser.isSet(QStringLiteral("no-encrypt"));
    if (!encrypts && (parser.isSet(QStringLiteral("encrypt")) || hasPassphrase(parser)))
        return refuse(console, QStringLiteral("--no-encrypt goes with no passphrase"));
    Passphrase passphrase;
    QString error;
    if (!isFreeForKeys(firstArgument(parser), &error))
        return refuse(console, error);
    if (encrypts && !getPassphrase(parser, QStringLiteral("Passphrase of the new key: "), true,
                                   &passphrase, &error))
        return refuse(console, withWayOut(error));
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
            QStringLiteral("quorvanectl keys new keys --no-encrypt"),
            declare,
            run};
}

} // namespace ctl
