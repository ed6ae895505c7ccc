// How the file is read: its sections, which fill the word lists, and its function lines.
#include "library/function_library.h"

#include "update/files/text_file.h"

#include <QDebug>

namespace {

bool isBlankOrComment(const QString &line) {
    return line.isEmpty() || line.startsWith(QLatin1Char('#')) ||
           line.startsWith(QLatin1String("//"));
}

bool isSectionHead(const QString &line) {
    return line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'));
}

QStringList trimmedLines(const QString &text) {
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString &line : lines)
        line = line.trimmed();
    return lines;
}

// The words of an assignment's value.
QStringList words(const QString &value) {
    QStringList result;
    for (const QString &piece : value.split(QLatin1Char(','))) {
        const QString word = piece.trimmed();
        if (!word.isEmpty())
            result.append(word);
    }
    return result;
}

QSet<QString> setOf(const QStringList &list) {
    QSet<QString> set;
    set.reserve(list.size());
    for (const QString &word : list)
        set.insert(word);
    return set;
}

bool isFunctionLine(const QString &line, const QStringList &fields) {
    if (isBlankOrComment(line) || line.startsWith(QLatin1Char('[')) || fields.size() < 3)
        return false;
    bool isNumber = false;
    fields.at(0).trimmed().toUInt(&isNumber);
    return isNumber;
}

qint32 argumentKind(const QString &letter) {
    static const QStringList letters{QStringLiteral("C"), QStringLiteral("O"), QStringLiteral("S"),
                                     QStringLiteral("I")};
    return letters.indexOf(letter);
}

FunctionArgument argumentFrom(const QString &descriptor) {
    const QStringList parts = descriptor.split(QLatin1Char('#'));
    FunctionArgument argument;
    argument.text = parts.at(0);
    if (parts.size() < 2)
        return argument;
    argument.kind = argumentKind(parts.at(1));
    if (argument.kind == 2)
        argument.options = parts.mid(2);
    return argument;
}

FunctionRecord recordFrom(const QStringList &fields) {
    FunctionRecord record;
    record.id = fields.at(0).trimmed().toUInt();
    record.name = fields.at(1);
    record.argumentCount = fields.at(2).trimmed().toUInt();
    record.lastField = fields.last();
    // The last field stands behind the arguments, so a line that ends with its last argument keeps
    // its count and loses the list; the call template still gets the arguments. Counted in 64 bits:
    // a line of three fields makes the right side negative.
    if (qint64(record.argumentCount) <= qint64(fields.size()) - 4) {
        for (quint32 i = 0; i < record.argumentCount; ++i)
            record.arguments.append(argumentFrom(fields.at(3 + int(i))));
    }
    return record;
}

// The field in the place of the count, and 0 for one that is no number.
int templateArguments(const QStringList &fields) {
    return fields.value(2).trimmed().toInt();
}

bool hasEveryArgument(const QStringList &fields) {
    return templateArguments(fields) <= fields.size() - 3;
}

// "foo( a , b  );": the cut after the last argument leaves one blank of its separator. A function
// without arguments is its bare name.
QString callTemplate(const QStringList &fields) {
    QString text = fields.at(1).trimmed();
    const int count = templateArguments(fields);
    for (int i = 0; i < count; ++i) {
        if (i == 0)
            text += QLatin1String("( ");
        text += fields.at(i + 3).section(QLatin1Char('#'), 0, 0).trimmed();
        text += QLatin1String(" , ");
        if (i == count - 1) {
            text.chop(2);
            text += QLatin1String(" );");
        }
    }
    return text;
}

} // namespace

bool hasCallTemplate(const QString &functionLine) {
    return hasEveryArgument(functionLine.split(QLatin1Char(',')));
}

FunctionLibrary &FunctionLibrary::instance() {
    static FunctionLibrary library;
    return library;
}

bool FunctionLibrary::load(const QString &path, QString *error) {
    filePath = path;
    functions.clear();
    rawLines.clear();
    functionNames.clear();
    functionIds.clear();
    callTemplates.clear();
    functionIndexByName.clear();
    fillBuiltInWords();

    QString readError;
    const QString text = readTextFile(path, &readError);
    if (text.isEmpty() && !readError.isEmpty()) {
        if (error != nullptr)
            *error = readError;
        qWarning().noquote() << QStringLiteral("无法打开函数库文件:") << path << readError;
        return false;
    }
    const QStringList lines = trimmedLines(text);
    readSections(lines);
    readFunctions(lines);
    buildSets();
    buildKeywordMap();
    return true;
}

void FunctionLibrary::readSections(const QStringList &lines) {
    const QHash<QString, QStringList *> listOf{
        {QStringLiteral("controlflow/keywords"), &keywords},
        {QStringLiteral("completion/snippet_only"), &snippetOnly},
        {QStringLiteral("highlight/type"), &typeWords},
        {QStringLiteral("highlight/other"), &otherWords},
        {QStringLiteral("highlight/library"), &libraryWords},
        {QStringLiteral("plugin/functions"), &pluginFunctions},
    };
    QString section;
    for (const QString &line : lines) {
        if (isBlankOrComment(line))
            continue;
        if (isSectionHead(line)) {
            section = line.mid(1, line.size() - 2).trimmed().toLower();
            continue;
        }
        const int equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0)
            continue;
        const QString key = line.left(equals).trimmed().toLower();
        QStringList *const list = listOf.value(section + QLatin1Char('/') + key);
        if (list != nullptr)
            *list = words(line.mid(equals + 1));
    }
}

void FunctionLibrary::readFunctions(const QStringList &lines) {
    for (const QString &line : lines) {
        const QStringList fields = line.split(QLatin1Char(','));
        if (isFunctionLine(line, fields))
            addFunction(line, fields);
    }
}

void FunctionLibrary::addFunction(const QString &line, const QStringList &fields) {
    rawLines.append(line);
    functionNames.append(fields.at(1).trimmed());
    functionIds.append(fields.at(0).trimmed());
    functions.append(recordFrom(fields));

    if (!hasEveryArgument(fields)) {
        qWarning().noquote() << QStringLiteral("函数列表出现错误，访问：") << fields.at(1)
                             << QStringLiteral("函数的时候参数数量错误");
        return;
    }
    callTemplates.append(callTemplate(fields));
    functionIndexByName.insert(functionNames.last().toLower(), functionNames.size() - 1);
}

void FunctionLibrary::buildSets() {
    keywordSet = setOf(keywords);
    typeSet = setOf(typeWords);
    otherSet = setOf(otherWords);
    librarySet = setOf(libraryWords);
    snippetOnlySet = setOf(snippetOnly);
}
