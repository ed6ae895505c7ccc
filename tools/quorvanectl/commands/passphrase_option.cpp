#include "quorvanectl/commands/passphrase_option.h"

#include <QCommandLineParser>

namespace ctl {
namespace {

const QLatin1String option("passphrase-fd");

} // namespace

void declarePassphrase(QCommandLineParser &parser) {
    parser.addOption(
        {option,
         QStringLiteral("Reads the passphrase from this open file descriptor, up to the "
                        "first line feed."),
         QStringLiteral("number")});
}

bool hasPassphrase(const QCommandLineParser &parser) {
    return parser.isSet(option);
}

bool getPassphrase(const QCommandLineParser &parser, const QString &prompt, bool twice,
                   Passphrase *passphrase, QString *error) {
    if (!hasPassphrase(parser))
        return passphrase->ask(prompt, twice, error);
    bool isNumber = false;
    const int descriptor = parser.value(option).toInt(&isNumber);
    if (isNumber && descriptor >= 0)
        return passphrase->readFrom(descriptor, error);
    *error = QStringLiteral("--passphrase-fd %1: is no number of a descriptor")
                 .arg(parser.value(option));
    return false;
}

} // namespace ctl
