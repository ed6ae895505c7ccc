#include "quorvanectl/analysis/library_records.h"

#include "library/function_library.h"

#include <QHash>

namespace ctl {
namespace {

const QLatin1String callHead("( ");
const QLatin1String callTail("  );"); // with the blank that the last argument leaves

// A template without arguments is the bare name.
QStringList argumentsIn(const QString &callTemplate, const QString &name) {
    QStringList arguments;
    const int head = name.size() + callHead.size();
    const int size = callTemplate.size() - head - callTail.size();
    if (size < 0)
        return arguments;
    // No argument holds a comma: they are fields of the library's line.
    const QStringList pieces = callTemplate.mid(head, size).split(QLatin1Char(','));
    for (const QString &piece : pieces)
        arguments.append(piece.trimmed());
    return arguments;
}

LibraryRecord recordAt(int index, const QString &callTemplate) {
    const FunctionLibrary &library = FunctionLibrary::instance();
    const FunctionRecord &function = library.functions.at(index);
    LibraryRecord record;
    record.name = library.functionNames.at(index);
    record.callTemplate = callTemplate;
    record.arguments = argumentsIn(callTemplate, record.name);
    for (const FunctionArgument &argument : function.arguments)
        record.options.append(argument.options);
    record.options.resize(record.arguments.size());
    // Else the last field is an argument, or the count.
    const int fields = library.rawLines.at(index).split(QLatin1Char(',')).size();
    if (qint64(fields) >= qint64(function.argumentCount) + 4)
        record.description = function.lastField.trimmed();
    return record;
}

QString escaped(QString text) {
    for (const char sign : {'\\', '$', '}'})
        text.replace(QLatin1Char(sign), QLatin1Char('\\') + QString(QLatin1Char(sign)));
    return text;
}

} // namespace

QVector<LibraryRecord> libraryRecords() {
    const FunctionLibrary &library = FunctionLibrary::instance();
    QHash<QString, int> lasts;
    for (int i = 0; i < library.functionNames.size(); ++i)
        lasts.insert(library.functionNames.at(i), i);
    QVector<LibraryRecord> records;
    int next = 0;
    for (int i = 0; i < library.functionNames.size(); ++i) {
        const bool hasTemplate = hasCallTemplate(library.rawLines.at(i));
        const QString callTemplate = hasTemplate ? library.callTemplates.value(next++) : QString();
        if (lasts.value(library.functionNames.at(i)) == i)
            records.append(recordAt(i, callTemplate));
    }
    return records;
}

std::optional<LibraryRecord> libraryRecord(const QString &name) {
    if (!FunctionLibrary::instance().functionNames.contains(name))
        return std::nullopt;
    const QVector<LibraryRecord> records = libraryRecords();
    for (const LibraryRecord &record : records) {
        if (record.name == name)
            return record;
    }
    return std::nullopt;
}

QString snippetOf(const LibraryRecord &function) {
    if (function.arguments.isEmpty())
        return escaped(function.callTemplate);
    QStringList places;
    for (int i = 0; i < function.arguments.size(); ++i)
        places.append(QStringLiteral("${%1:%2}")
                          .arg(QString::number(i + 1), escaped(function.arguments.at(i))));
    return escaped(function.name) + callHead + places.join(QLatin1String(" , ")) + callTail;
}

} // namespace ctl
