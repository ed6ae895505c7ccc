#include "script/script_diagnostics.h"

#include "script/text_parser.h"

#include <QRegularExpression>

#include <limits>
#include <utility>

namespace ast {
namespace {

// `message` may be empty: the position then stays 1:1.
ScriptDiagnostic locatedError(const QString &code, const QString &message) {
    ScriptDiagnostic finding;
    extractPosition(message, &finding.line, &finding.column);
    finding.code = code;
    finding.message = friendlyMessage(message);
    return finding;
}

// 1 for a position outside the text.
qint32 lineLength(const ScriptCheckContext &context, qint32 line) {
    if (line < 1 || line > context.lines.size())
        return 1;
    return context.lines.at(line - 1).size();
}

bool refuse(const ScriptDiagnostic &finding, ScriptCheckResult *result) {
    result->diagnostics.push_back(finding);
    ++result->errorCount;
    result->passed = false;
    return false;
}

// A bad character is marked alone.
bool refuseCharacter(ScriptCheckContext &context, const QString &error) {
    ScriptDiagnostic finding = locatedError(QLatin1String(lexicalErrorCode), error);
    const qint32 behind =
        finding.column < std::numeric_limits<qint32>::max() ? finding.column + 1 : finding.column;
    finding.endColumn = qMin(lineLength(context, finding.line), behind);
    return refuse(finding, &context.result);
}

// A syntax error is marked to the end of its line.
bool refuseSyntax(ScriptCheckContext &context, const QString &error) {
    ScriptDiagnostic finding = locatedError(QLatin1String(syntaxErrorCode), error);
    finding.endColumn = lineLength(context, finding.line);
    return refuse(finding, &context.result);
}

struct FriendlyText {
    QLatin1String pattern;
    QString text;
};

// The first pattern that a message holds decides. Many messages hold two, so the order matters:
// "expected ';' after import" speaks of the semicolon, and "expected '{' after switch" of the
// switch. The lexer never complains of an open string; its row stays for a reader of the table.
const std::vector<FriendlyText> &friendlyTexts() {
    static const QString whileText = QStringLiteral("while 语句不完整，应为 while(条件) { ... }");
    static const QString switchText =
        QStringLiteral("switch 语句不完整，应为 switch(表达式) { ... }");
    static const QString caseText =
        QStringLiteral("case/default 分支不完整，应为 case 值: 或 default:");
    static const QString ifText = QStringLiteral("if 语句不完整，应为 if(条件) { ... }");
    static const QString forText =
        QStringLiteral("for 语句不完整，应为 for(初始化; 条件; 更新) { ... }");
    static const std::vector<FriendlyText> texts = {
        {QLatin1String("after while"), whileText},
        {QLatin1String("while condition"), whileText},
        {QLatin1String("after switch"), switchText},
        {QLatin1String("in switch"), switchText},
        {QLatin1String("after case"), caseText},
        {QLatin1String("after default"), caseText},
        {QLatin1String("after if"), ifText},
        {QLatin1String("dangling else"), ifText},
        {QLatin1String("after for"), forText},
        {QLatin1String("for init"), forText},
        {QLatin1String("expected ';'"), QStringLiteral("此处缺少分号 ';'")},
        {QLatin1String("expected '}'"), QStringLiteral("缺少匹配的 '}'")},
        {QLatin1String("expected '{'"), QStringLiteral("缺少 '{' 或函数体/代码块")},
        {QLatin1String("include"), QStringLiteral("#include 语法错误")},
        {QLatin1String("import"), QStringLiteral("import 语法错误，应为 import \"相对路径.ys\";")},
        {QLatin1String("Unknown character"), QStringLiteral("无法识别的字符")},
        {QLatin1String("Unterminated string"), QStringLiteral("字符串字面量未闭合")},
    };
    return texts;
}

} // namespace

ScriptCheckContext makeCheckContext(const QString &text) {
    return {text, text.split(QLatin1Char('\n')), {}};
}

bool checkScript(ScriptCheckContext &context, std::shared_ptr<Program> *program,
                 QString *leftBehind) {
    // Where nobody asks for the tree, its outline finds the same.
    ParsedText parsed =
        parseText(context.text, program != nullptr ? Detail::Whole : Detail::Outline);
    if (!parsed.lexicalError.isEmpty())
        return refuseCharacter(context, parsed.lexicalError);
    if (!parsed.program)
        return refuseSyntax(context, parsed.syntaxError);
    // syntaxError may hold what a failed block left behind; it is no finding.
    if (program != nullptr)
        *program = std::move(parsed.program);
    if (leftBehind != nullptr)
        *leftBehind = parsed.syntaxError;
    return true;
}

QString friendlyMessage(const QString &message) {
    for (const FriendlyText &row : friendlyTexts()) {
        if (message.contains(row.pattern))
            return row.text;
    }
    return message;
}

bool extractPosition(const QString &message, qint32 *line, qint32 *column) {
    static const QRegularExpression position(QStringLiteral("(?:\\(at|at)\\s+(\\d+):(\\d+)\\)?"));
    // An unknown character may be half of a surrogate pair, and a text with such a half matches
    // nothing. On the way through UTF-8 a question mark or the like takes its place. Given the size,
    // the decoder does not stop at a NUL, which may be the unknown character too.
    const QByteArray utf8 = message.toUtf8();
    const QRegularExpressionMatch match =
        position.match(QString::fromUtf8(utf8.constData(), utf8.size()));
    if (!match.hasMatch())
        return false;
    if (line != nullptr)
        *line = match.captured(1).toInt();
    if (column != nullptr)
        *column = match.captured(2).toInt();
    return true;
}

QString diagnosticText(const ScriptDiagnostic &diagnostic) {
    const QString severity =
        diagnostic.severity == 0 ? QStringLiteral("error") : QStringLiteral("warning");
    return QStringLiteral("%1:%2-%3 %4 %5: %6")
        .arg(QString::number(diagnostic.line), QString::number(diagnostic.column),
             QString::number(diagnostic.endColumn), diagnostic.code, severity, diagnostic.message);
}

QJsonObject diagnosticJson(const ScriptDiagnostic &diagnostic) {
    return {{QStringLiteral("line"), diagnostic.line},
            {QStringLiteral("column"), diagnostic.column},
            {QStringLiteral("endColumn"), diagnostic.endColumn},
            {QStringLiteral("severity"), diagnostic.severity},
            {QStringLiteral("code"), diagnostic.code},
            {QStringLiteral("message"), diagnostic.message}};
}

} // namespace ast
