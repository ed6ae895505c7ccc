#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/shell/command.h"
#include "quorvanectl/shell/force_option.h"

namespace ctl {

void declareOut(QCommandLineParser &parser, const QString &otherwise) {
    parser.addOption({QStringLiteral("out"),
                      QStringLiteral("Writes to this file%1.").arg(otherwise),
                      QStringLiteral("file")});
    declareForce(parser);
}

bool mayDeliver(const QCommandLineParser &parser, const QStringList &inputs, QString *error) {
    const QString path = parser.value(QStringLiteral("out"));
    return path.isEmpty() || mayWrite(path, isForced(parser), error, inputs);
}

int deliver(const QByteArray &bytes, const QCommandLineParser &parser, const Console &console,
            const QStringList &inputs) {
    const QString path = parser.value(QStringLiteral("out"));
    if (path.isEmpty()) {
        print(console, QString::fromUtf8(bytes));
        return Clean;
    }
    QString error;
    if (!mayDeliver(parser, inputs, &error) || !writeFile(path, bytes, isForced(parser), &error))
        return refuse(console, error);
    printLine(console, QStringLiteral("%1: written").arg(spelledOut(path)));
    return Clean;
}

void declarePublicKey(QCommandLineParser &parser, const QString &purpose) {
    parser.addOption({QStringLiteral("key"), purpose, QStringLiteral("update.pub")});
}

void declareBase(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("base"),
                      QStringLiteral("The URL of the manifest's folder, where the packages have "
                                     "absolute addresses."),
                      QStringLiteral("URL")});
}

} // namespace ctl
