// quorvanectl update canonical: the bytes that are signed.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/shell/progress.h"
#include "update/canonical_manifest.h"

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declareOut(parser, QStringLiteral(", not to standard output"));
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString canonical = whileTelling(console, QStringLiteral("reading the manifest"), [&] {
        const QString text = readJsonObject(firstArgument(parser), &error);
        return text.isNull() ? QString() : canonicalManifestText(text);
    });
    if (canonical.isNull())
        return refuse(console, error);
    return deliver(canonical.toUtf8(), parser, console);
}

} // namespace

Command updateCanonical() {
    return {QStringLiteral("update"),
            QStringLiteral("canonical"),
            QStringLiteral("manifest.json"),
            QStringLiteral("Prints the bytes that are signed."),
            QStringLiteral("quorvanectl update canonical manifest.json"),
            declare,
            run};
}

} // namespace ctl
