// quorvanectl library list: what a FunctionLib.ini says.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

#include "library/function_library.h"
#include "script/printed_form.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declareFormat(parser, textOrJson());
}

struct WordList {
    const char *name;
    QStringList words;
};

std::vector<WordList> wordLists(const FunctionLibrary &library) {
    return {{"keywords", library.keywords},         {"snippetOnly", library.snippetOnly},
            {"typeWords", library.typeWords},       {"otherWords", library.otherWords},
            {"libraryWords", library.libraryWords}, {"pluginFunctions", library.pluginFunctions}};
}

// By kind, which is the order of the language's own table.
QMap<qint32, QString> keywordsByKind(const FunctionLibrary &library) {
    QMap<qint32, QString> keywords;
    for (auto word = library.tokenKindByWord.begin(); word != library.tokenKindByWord.end(); ++word)
        keywords.insert(word.value(), word.key());
    return keywords;
}

// One text for each function, null where there is none.
QStringList templatesOf(const FunctionLibrary &library) {
    QStringList templates;
    int next = 0;
    for (const QString &line : library.rawLines)
        templates.append(hasCallTemplate(line) ? library.callTemplates.value(next++) : QString());
    return templates;
}

// --- text ---------------------------------------------------------------------------------------

void printHeading(const Console &console, const char *title) {
    printLine(console, inked(console, Ink::Heading, QLatin1String(title)));
}

void printFunctions(const Console &console, const FunctionLibrary &library) {
    const QStringList templates = templatesOf(library);
    printHeading(console, "functions");
    for (int i = 0; i < library.functions.size(); ++i) {
        const FunctionRecord &function = library.functions.at(i);
        const QString call =
            templates.at(i).isNull()
                ? QStringLiteral("%1: too few fields for %2 arguments")
                      .arg(function.name.trimmed(), QString::number(function.argumentCount))
                : templates.at(i);
        printLine(console,
                  QStringLiteral("    %1  %2").arg(QString::number(function.id), spelledOut(call)));
    }
}

void printText(const Console &console, const FunctionLibrary &library) {
    printFunctions(console, library);
    for (const WordList &list : wordLists(library)) {
        printHeading(console, list.name);
        printLine(console,
                  QStringLiteral("    %1").arg(spelledOut(list.words.join(QLatin1Char(' ')))));
    }
    printHeading(console, "token kinds");
    const QMap<qint32, QString> keywords = keywordsByKind(library);
    for (auto keyword = keywords.begin(); keyword != keywords.end(); ++keyword)
        printLine(console, QStringLiteral("    %1  %2  %3")
                               .arg(QString::number(keyword.key()), keyword.value(),
                                    ast::tokenKindName(keyword.key())));
}

// --- JSON ---------------------------------------------------------------------------------------

QJsonObject argumentJson(const FunctionArgument &argument) {
    return {{QStringLiteral("text"), argument.text},
            {QStringLiteral("kind"), argument.kind},
            {QStringLiteral("options"), QJsonArray::fromStringList(argument.options)},
            {QStringLiteral("extra"), argument.extra}};
}

QJsonObject functionJson(const FunctionRecord &function, const QString &callTemplate) {
    QJsonArray arguments;
    for (const FunctionArgument &argument : function.arguments)
        arguments.append(argumentJson(argument));
    return {{QStringLiteral("id"), qint64(function.id)},
            {QStringLiteral("name"), function.name},
            {QStringLiteral("argumentCount"), qint64(function.argumentCount)},
            {QStringLiteral("arguments"), arguments},
            {QStringLiteral("lastField"), function.lastField},
            {QStringLiteral("callTemplate"),
             callTemplate.isNull() ? QJsonValue() : QJsonValue(callTemplate)}};
}

QJsonObject libraryJson(const FunctionLibrary &library) {
    const QStringList templates = templatesOf(library);
    QJsonArray functions;
    for (int i = 0; i < library.functions.size(); ++i)
        functions.append(functionJson(library.functions.at(i), templates.at(i)));
    QJsonObject lists;
    for (const WordList &list : wordLists(library))
        lists.insert(QLatin1String(list.name), QJsonArray::fromStringList(list.words));
    QJsonObject kinds;
    for (auto word = library.tokenKindByWord.begin(); word != library.tokenKindByWord.end(); ++word)
        kinds.insert(word.key(), word.value());
    return {{QStringLiteral("library"), library.filePath},
            {QStringLiteral("functions"), functions},
            {QStringLiteral("lists"), lists},
            {QStringLiteral("tokenKinds"), kinds}};
}

int run(const QCommandLineParser &parser, Console &console) {
    const QStringList given = parser.positionalArguments();
    QString error;
    const QString format = chosenFormat(parser, textOrJson(), &error);
    const bool asJson = format == QLatin1String("json");
    QJsonObject json;
    if (format.isEmpty())
        return refuse(console, error);
    const QString path = given.isEmpty() ? standingLibraryPath(console) : given.constFirst();
    const auto read = [&] {
        if (!loadLibrary(path, &error))
            return false;
        if (asJson)
            json = libraryJson(FunctionLibrary::instance());
        return true;
    };
    if (!whileTelling(console, QStringLiteral("reading the library"), read))
        return refuse(console, error);
    if (asJson)
        printJson(console, QJsonDocument(json));
    else
        printText(console, FunctionLibrary::instance());
    return Clean;
}

} // namespace

Command libraryList() {
    return {QStringLiteral("library"),
            QStringLiteral("list"),
            QStringLiteral("[FunctionLib.ini]"),
            QStringLiteral("Lists the functions, words and keywords of the script language."),
            QStringLiteral("quorvanectl library list FunctionLib.ini"),
            declare,
            run};
}

} // namespace ctl
