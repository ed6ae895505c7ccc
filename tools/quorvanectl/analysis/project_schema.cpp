#include "quorvanectl/analysis/project_schema.h"

#include <QFile>
#include <QJsonDocument>

// Of a resource in a static library somebody has to ask; the macro wants no namespace around it.
static void initializeSchema() {
    Q_INIT_RESOURCE(project_schema);
}

namespace ctl {
namespace {

QJsonObject readSchema() {
    initializeSchema();
    QFile file(QStringLiteral(":/schemas/yslib.schema.json"));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
}

} // namespace

QJsonObject projectSchemaAt(const QStringList &path) {
    static const QJsonObject whole = readSchema();
    QJsonObject schema = whole;
    for (const QString &step : path) {
        schema = step == QLatin1String("[]")
                     ? schema.value(QLatin1String("items")).toObject()
                     : schema.value(QLatin1String("properties")).toObject().value(step).toObject();
    }
    return schema;
}

} // namespace ctl
