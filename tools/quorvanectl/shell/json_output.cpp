#include "quorvanectl/shell/json_output.h"

#include <QCommandLineParser>
#include <QJsonDocument>

namespace ctl {
namespace {

const QLatin1String option("format");

} // namespace

QStringList textOrJson() {
    return {QStringLiteral("text"), QStringLiteral("json")};
}

void declareFormat(QCommandLineParser &parser, const QStringList &formats) {
    parser.addOption({option,
                      QStringLiteral("Form of the output: %1 (default: %2).")
                          .arg(formats.join(QStringLiteral(", ")), formats.first()),
                      QStringLiteral("name"), formats.first()});
}

QString chosenFormat(const QCommandLineParser &parser, const QStringList &formats, QString *error) {
    const QString chosen = parser.value(option);
    if (formats.contains(chosen))
        return chosen;
    if (error != nullptr)
        *error = QStringLiteral("no format '%1'; there are: %2")
                     .arg(chosen, formats.join(QStringLiteral(", ")));
    return {};
}

void printJson(const Console &console, const QJsonDocument &document) {
    print(console, QString::fromUtf8(document.toJson(QJsonDocument::Indented)));
}

} // namespace ctl
