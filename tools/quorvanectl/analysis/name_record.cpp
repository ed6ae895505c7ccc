#include "quorvanectl/analysis/name_record.h"

#include "quorvanectl/analysis/json_cursor.h"
#include "quorvanectl/analysis/library_records.h"
#include "quorvanectl/analysis/project_schema.h"

namespace ctl {

std::optional<NameRecord> libraryFunctionRecord(const QString &name) {
    const std::optional<LibraryRecord> function = libraryRecord(name);
    if (!function)
        return std::nullopt;
    NameRecord record;
    record.signature = function->callTemplate.isNull() ? function->name : function->callTemplate;
    record.description = function->description;
    for (int i = 0; i < function->arguments.size(); ++i)
        record.parameters.append(
            {function->arguments.at(i), function->options.at(i).join(QLatin1String(", "))});
    return record;
}

std::optional<NameRecord> keyRecord(const QString &json, int index) {
    const JsonCursor cursor = cursorInJson(json, index);
    if (!cursor.isKey || cursor.to - cursor.from < 2)
        return std::nullopt;
    NameRecord record;
    record.signature = json.mid(cursor.from + 1, cursor.to - cursor.from - 2);
    record.description = projectSchemaAt(cursor.path + QStringList(record.signature))
                             .value(QLatin1String("description"))
                             .toString();
    record.from = cursor.from;
    record.to = cursor.to;
    return record.description.isEmpty() ? std::nullopt : std::make_optional(record);
}

} // namespace ctl
