#include "generated_program.h"

namespace {

// %1 makes the names of each function differ, as they do in a real program.
constexpr char scriptFunction[] = R"(function inspect_%1(int first, int second) {
    int total = 0;
    float limit_%1 = 12.75;
    static int runs;
    for (int i = 0; i < 100; i = i + 1) {
        if (first > second && i != 3) {
            total = total + i * 2 - offset;
        } else if (second == 0 || total >= limit_%1) {
            total = total - lookup(first, second + 1, i % 7);
        } else {
            total = -total;
        }
    }
    while (total > 1000) {
        data[total % 8] = (total + runs) / 2;
        runs = runs + 1;
        if (camera.state == "busy") {
            wait(camera, 20);
        }
    }
    // keep the last value for the report
    print("total of station %1", total, limit_%1);
    result.area_%1 = measure(first, second) * scale[2];
    return total;
}

)";

constexpr char luaFunction[] = R"(function inspect_%1(first, second)
    local total = 0;
    local limit_%1 = 12.75;
    local runs;
    for i = 0, 100 - 1, 1 do
        if first > second and i ~= 3 then
            total = total + i * 2 - offset;
        elseif second == 0 or total >= limit_%1 then
            total = total - lookup(first, second + 1, i % 7);
        else
            total = -total;
        end
    end
    while total > 1000 do
        data[total % 8] = (total + runs) / 2;
        runs = runs + 1;
        if camera.state == "busy" then
            wait(camera, 20);
        end
    end
    -- keep the last value for the report
    print("total of station %1", total, limit_%1);
    result.area_%1 = measure(first, second) * scale[2];
    return total;
end

)";

QString functions(const char *function, int bytes) {
    const QString text = QString::fromLatin1(function);
    const int count = bytes / int(sizeof(scriptFunction)) + 1;
    QString program;
    for (int i = 0; i < count; ++i)
        program += QString(text).replace(QLatin1String("%1"), QString::number(i));
    return program;
}

QString repeated(const char *open, int size, const char *core, const char *close) {
    return QString::fromLatin1(open).repeated(size) + QString::fromLatin1(core) +
           QString::fromLatin1(close).repeated(size);
}

} // namespace

QString scriptProgram(int bytes) {
    return functions(scriptFunction, bytes);
}

QString luaProgram(int bytes) {
    return functions(luaFunction, bytes);
}

const QList<ProgramShape> &programShapes() {
    static const QList<ProgramShape> shapes{
        {"lines", [](int size) { return repeated("a = b + 1\n", size, "", ""); }},
        {"distinct names",
         [](int size) {
             QString text;
             for (int i = 0; i < size; ++i)
                 text += QLatin1Char('n') + QString::number(i) + QLatin1String(" = 1\n");
             return text;
         }},
        {"one statement", [](int size) { return repeated("a + ", size / 2, "a", ""); }},
        {"one assignment",
         [](int size) { return QLatin1String("x = ") + repeated("a * ", size / 2, "a", ""); }},
        {"one string",
         [](int size) { return repeated("\"", 1, "", "") + repeated("x", size, "", ""); }},
        {"one call",
         [](int size) { return repeated("f(", 1, "a", "") + repeated(", a", size / 2, ")", ""); }},
        {"parentheses", [](int size) { return repeated("(", size / 2, "a", ")"); }},
        {"brackets", [](int size) { return repeated("a[", size / 3, "a", "]"); }},
        {"braces", [](int size) { return repeated("{", size / 2, "a", "}"); }},
        {"minus signs", [](int size) { return repeated("- ", size, "a", ""); }},
        {"members",
         [](int size) { return repeated("a", 1, "", "") + repeated(".b", size / 2, "", ""); }},
        {"if in if", [](int size) { return repeated("if (a) {", size / 6, "b", "}"); }},
        {"if in if, open", [](int size) { return repeated("if (a) {", size / 5, "b", ""); }},
        {"else if",
         [](int size) {
             return QLatin1String("if (a) b") + repeated("\nelse if (a) b", size / 7, "", "");
         }},
        {"for in for",
         [](int size) { return repeated("for (int i = 0; i; i++) {", size / 13, "b", "}"); }},
        {"switch in switch",
         [](int size) { return repeated("switch (a) { case 1: ", size / 10, "b\n", "}"); }},
        {"arms",
         [](int size) {
             return QLatin1String("switch (a) {") + repeated("case 1: b; ", size / 5, "}", "");
         }},
        {"failing blocks", [](int size) { return repeated("if (a) {", size / 5, ";", ""); }},
        {"stray brackets", [](int size) { return repeated(") ", size, "a\n", ""); }},
        {"open quotes", [](int size) { return repeated("\"\\\\\"\n", size / 2, "a", ""); }},
    };
    return shapes;
}
