#include "support/script_generator.h"

namespace support {

QString ScriptGenerator::name() {
    return oneOf({"a", "b", "x", "y1", "total_area", "相机", "计数_2", "_tmp", "Pi", "end_if",
                  "internal", "stringy", "If"});
}

QString ScriptGenerator::type() {
    return oneOf({"int", "bool", "float", "string", "char"});
}

QString ScriptGenerator::literal() {
    return oneOf({"0", "1", "42", "3.14", "1.", "\"text\"", "\"a \\\" b\"", "\"{[(\"", "\"\"",
                  "'c'", "'ab'", "\"第一 行\"", "\"it's\"", "'\"'", "1000000", "\"two\nlines\""});
}

QString ScriptGenerator::arguments(int depth) {
    QStringList list;
    for (int count = below(4); count > 0; --count)
        list.append(expression(depth - 1));
    return list.join(oneOf({",", ", ", " , "}));
}

QString ScriptGenerator::expression(int depth) {
    if (depth <= 0)
        return chance(60) ? name() : literal();
    switch (below(11)) {
    case 0:
        return literal();
    case 1:
        return name();
    case 2:
        return oneOf({"!", "-", "+", "- ", "!!", "- - "}) + expression(depth - 1);
    case 3:
        return "(" + expression(depth - 1) + ")";
    case 4:
        return name() + "(" + arguments(depth) + ")";
    case 5:
        return name() + "[" + expression(depth - 1) + "]";
    case 6:
        return name() + "." + name() + (chance(40) ? "." + name() : QString()) +
               (chance(30) ? "(" + arguments(depth) + ")" : QString());
    case 7:
        return chance(50) ? name() + oneOf({"++", "--"}) : oneOf({"++", "--"}) + name();
    default:
        return expression(depth - 1) +
               oneOf({"+", " - ", "*", " / ", "%", "==", " != ", "<", " > ", "<=", ">=", "&&",
                      " || ", " + ", "-"}) +
               expression(depth - 1);
    }
}

QString ScriptGenerator::gap() {
    return oneOf({" ", "", "", "  ", "\t", " "});
}

QString ScriptGenerator::lineEnd() {
    return oneOf({"\n", "\n", "\n", "\r\n", "\n\n", " // 注释 ) } \"\n", "\n  \n"});
}

QString ScriptGenerator::simple() {
    switch (below(7)) {
    case 0:
        return name() + oneOf({"++", "--", " ++"});
    case 1:
        return oneOf({"++", "--", "++ "}) + name();
    case 2:
        return name() + "(" + arguments(2) + ")";
    case 3:
        return name() + "[" + expression(1) + "]" + gap() + "=" + gap() + expression();
    case 4:
        return name() + "." + name() + " = " + expression();
    default:
        return name() + gap() + "=" + gap() + expression();
    }
}

QString ScriptGenerator::declaration() {
    QString text = oneOf({"", "", "", "static ", "global "}) + type() + " " + name();
    if (chance(20))
        text += "[" + (chance(80) ? expression(1) : QString()) + "]";
    if (chance(60))
        text += gap() + "=" + gap() + expression();
    return text;
}

QString ScriptGenerator::block(int depth) {
    QString text = "{" + oneOf({"", " ", "\n", "\r\n"});
    for (int count = below(4); count > 0; --count)
        text += statement(depth - 1);
    return text + "}";
}

QString ScriptGenerator::body(int depth) {
    if (chance(70))
        return oneOf({"", " ", "\n"}) + block(depth);
    return " " + simple() + ";";
}

QString ScriptGenerator::ifStatement(int depth) {
    QString text = "if" + gap() + "(" + expression() + ")" + body(depth);
    while (chance(30)) {
        text += oneOf({" ", "\n"}) + "else if (" + expression() + ")";
        text += chance(70) ? " " + block(depth) : " " + simple() + ";";
    }
    if (chance(40))
        text += oneOf({" ", "\n"}) + "else " + body(depth);
    return text;
}

QString ScriptGenerator::forStatement(int depth) {
    const QString init = chance(50) ? "x = " + expression(1) : type() + " i = " + expression(1);
    const QString condition = chance(90) ? expression(2) : QString();
    const QString update = chance(80) ? simple() : QString();
    return "for" + gap() + "(" + init + ";" + gap() + condition + "; " + update + ")" + body(depth);
}

QString ScriptGenerator::switchStatement(int depth) {
    QString text = "switch (" + expression(2) + ") {" + lineEnd();
    for (int count = below(4); count > 0; --count) {
        text += (chance(80) ? "case " + expression(1) : QString("default")) + ":" +
                oneOf({"", " ", "\n"});
        for (int statements = below(3); statements > 0; --statements)
            text += statement(depth - 1);
    }
    return text + "}";
}

QString ScriptGenerator::statement(int depth) {
    QString text;
    switch (depth > 0 ? below(14) : 5 + below(9)) {
    case 0:
    case 1:
        text = ifStatement(depth);
        break;
    case 2:
        text = forStatement(depth);
        break;
    case 3:
        text = "while (" + expression() + ")" + body(depth);
        break;
    case 4:
        text = switchStatement(depth);
        break;
    case 5:
        return oneOf({"break", "continue", "return"}) + oneOf({"", ";", " ;"}) + lineEnd();
    case 6:
        return "return " + expression() + oneOf({"", ";"}) + lineEnd();
    case 7:
    case 8:
        return declaration() + oneOf({"", ";"}) + lineEnd();
    case 9:
        return oneOf({"import \"a.ys\";", "import \"../共用/b.ys\" ;", "#include <a/b.ys>",
                      "#include \"c.ys\""}) +
               lineEnd();
    default:
        return simple() + oneOf({"", ";", ";"}) + lineEnd();
    }
    return text + lineEnd();
}

QString ScriptGenerator::function(int depth) {
    QStringList parameters;
    for (int count = below(4); count > 0; --count)
        parameters.append((chance(70) ? type() + " " : QString()) + name());
    return "function " + name() + "(" + parameters.join(", ") + ")" + body(depth) + lineEnd();
}

QString ScriptGenerator::script() {
    QString text;
    for (int count = below(8); count > 0; --count)
        text += chance(25) ? function(3) : statement(3);
    return text;
}

QString ScriptGenerator::noise(int words) {
    QString text;
    for (; words > 0; --words) {
        text +=
            chance(50)
                ? oneOf({"(",  ")",  "[", "]", "{",  "}",  ";",  ",",          ":",    ".",
                         "=",  "==", "<", ">", "\n", "\n", "\"", "'",          "\\",   "#",
                         "++", "--", "!", "-", "*",  "&&", "$",  "\"c:\\\\\"", "'\\'", "\"a b\""})
                : oneOf({"if",       "else",
                         "for",      "while",
                         "switch",   "case",
                         "default",  "break",
                         "continue", "int",
                         "string",   "static",
                         "global",   "include",
                         "import",   "function",
                         "return",   "a",
                         "b",        "1",
                         "2.5",      "Pi",
                         "if (a)",   "{",
                         "}",        "for (i = 0; i < 3; i++)",
                         "internal"});
        text += chance(70) ? " " : "";
    }
    return text;
}

QString ScriptGenerator::mutation(const QString &script) {
    QString text = script;
    for (int count = 1 + below(4); count > 0; --count) {
        const int at = below(text.size() + 1);
        const int length = below(5);
        switch (below(6)) {
        case 0:
            text.remove(at, 1 + length);
            break;
        case 1:
            text.insert(at, noise(1 + below(2)));
            break;
        case 2:
            text.insert(at, text.mid(below(text.size() + 1), below(40)));
            break;
        case 3:
            text.truncate(at);
            break;
        case 4:
            text.replace(at, 1, oneOf({"(", ")", "{", "}", "\"", "'", "\n", ";", " ", "=", "\\"}));
            break;
        default:
            text.remove(at, below(40));
            break;
        }
    }
    return text;
}

} // namespace support
