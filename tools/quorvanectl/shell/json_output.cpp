#include "quorvanectl/shell/json_output.h"

#include "frame/steering_characters.h"

#include <QCommandLineParser>
#include <QJsonDocument>

namespace ctl {
namespace {

const QLatin1String formatOption("format");

} // namespace

QStringList textOrJson() {
    return {QStringLiteral("text"), QStringLiteral("json")};
}

void declareFormat(QCommandLineParser &parser, const QStringList &formats) {
    parser.addOption({formatOption,
                      QStringLiteral("Form of the output: %1 (default: %2).")
                          .arg(formats.join(QStringLiteral(", ")), formats.first()),
                      QStringLiteral("name"), formats.first()});
}

QString chosenFormat(const QCommandLineParser &parser, const QStringList &formats, QString *error) {
    const QString chosen = parser.value(formatOption);
    if (formats.contains(chosen))
        return chosen;
    if (error != nullptr)
        *error = QStringLiteral("no format '%1'; there are: %2")
                     .arg(chosen, formats.join(QStringLiteral(", ")));
    return {};
}

// Qt escapes some of what steers a terminal. The rest can only stand in strings, where it may be escaped
// too; line feeds stand between them.
QString jsonText(const QJsonDocument &document) {
    QString escaped;
    const QString json = QString::fromUtf8(document.toJson(QJsonDocument::Indented));
    for (const QChar unit : json) {
        if (steersDisplay(unit) && unit != QLatin1Char('\n'))
            escaped += unicodeEscape(unit);
        else
            escaped += unit;
    }
    return escaped;
}

void printJson(const Console &console, const QJsonDocument &document) {
    print(console, jsonText(document));
}

} // namespace ctl
