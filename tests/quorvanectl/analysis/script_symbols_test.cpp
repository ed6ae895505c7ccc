// The names of a script: what is declared, how far it is known, and what each use of a name means.
#include "quorvanectl/analysis/script_symbols.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QFileInfo>

using ctl::ScriptName;
using ctl::ScriptSymbols;

namespace {

// On a drive, where there are drives.
const QString folder = QFileInfo("/line").absoluteFilePath();
const QString file = folder + "/scripts/a.ys";

QString kindText(ScriptName::Kind kind) {
    switch (kind) {
    case ScriptName::Kind::Function:
        return "function";
    case ScriptName::Kind::Parameter:
        return "parameter";
    case ScriptName::Kind::Local:
        return "local";
    case ScriptName::Kind::Variable:
        return "variable";
    case ScriptName::Kind::Global:
        return "global";
    }
    return {};
}

QString stretchText(const ctl::Stretch &stretch) {
    return QString("%1-%2").arg(stretch.from).arg(stretch.to);
}

// "local int a 3-4 known 4-9", "function f(int a) 9-10 known 0-20 whole 0-20"
QStringList linesOfNames(const ScriptSymbols &symbols) {
    QStringList lines;
    for (const ScriptName &name : symbols.names) {
        const bool isFunction = name.kind == ScriptName::Kind::Function;
        const QString what = isFunction ? name.name + '(' + name.parameters.join(", ") + ')'
                                        : name.type + ' ' + name.name;
        QString line =
            QString("%1 %2 %3 known %4")
                .arg(kindText(name.kind), what, stretchText(name.at), stretchText(name.visible));
        if (isFunction)
            line += " whole " + stretchText(name.whole);
        lines.append(line);
    }
    return lines;
}

// "a@3 declares", "a@9 writes, of 3", "f()@20 of none": each use with the place of what it means.
QStringList linesOfUses(const ScriptSymbols &symbols) {
    QStringList lines;
    for (const ctl::NameUse &use : symbols.uses) {
        const QString meant = use.meaning < 0
                                  ? QString("none")
                                  : QString::number(symbols.names.at(use.meaning).at.from);
        const QString does = use.declares ? "declares" : use.writes ? "writes" : "reads";
        lines.append(
            QString("%1%2@%3 %4 %5")
                .arg(use.name, use.isCall ? "()" : "", QString::number(use.at.from), does, meant));
    }
    return lines;
}

} // namespace

class ScriptSymbolsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void names_data();
    void names();
    void uses_data();
    void uses();
    void imports_data();
    void imports();
    void knownAt_data();
    void knownAt();
    void depthTakesNoStack();
};

void ScriptSymbolsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ScriptSymbolsTest::names_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("none") << "f(1)\n" << QStringList();
    QTest::newRow("of the whole script, however they are stored")
        << "int a; static bool b\nglobal float c_d = 1;"
        << QStringList{"variable int a 4-5 known 0-42", "variable bool b 19-20 known 0-42",
                       "global float c_d 34-37 known 0-42"};
    QTest::newRow("an array") << "char a[3];" << QStringList{"variable char a 5-6 known 0-10"};
    QTest::newRow("a function and its parameters, an int where no type stands")
        << "function f(a, string b)\n{\nint c;\n}\nx = 1;"
        << QStringList{"function f(int a, string b) 9-10 known 0-41 whole 0-34",
                       "parameter int a 11-12 known 12-33", "parameter string b 21-22 known 22-33",
                       "local int c 30-31 known 31-33"};
    QTest::newRow("a function of one statement")
        << "function f(a) g(a,\na)\nx = a"
        << QStringList{"function f(int a) 9-10 known 0-27 whole 0-21",
                       "parameter int a 11-12 known 12-21"};
    QTest::newRow("a function without parameters")
        << "function f() {}" << QStringList{"function f() 9-10 known 0-15 whole 0-15"};
    QTest::newRow("in a loop") << "for (static int i = 0; i < 3; i++) {\nint j;\n}"
                               << QStringList{"local int i 16-17 known 17-44",
                                              "local int j 41-42 known 42-44"};
    QTest::newRow("in a loop of one statement")
        << "for (int i = 0; i < 3; i++)\nf(i)\nint j"
        << QStringList{"local int i 9-10 known 10-32", "variable int j 37-38 known 0-38"};
    QTest::newRow("in a loop whose clause begins on a line of its own")
        << "for (\nint i = 0; i < 3; i++) f(i)" << QStringList{"local int i 10-11 known 11-33"};
    QTest::newRow("in each kind of body")
        << "if (1) { int a; } else if (2) { int b; } else { int c; } while (1) { int d; }"
        << QStringList{"local int a 13-14 known 14-16", "local int b 36-37 known 37-39",
                       "local int c 52-53 known 53-55", "local int d 73-74 known 74-76"};
    QTest::newRow("in a switch, for all arms behind it")
        << "switch (1) {\ncase 1:\nint a;\ndefault:\nint b;\n}"
        << QStringList{"local int a 25-26 known 26-44", "local int b 41-42 known 42-44"};
    QTest::newRow("a global in a function is one of the project too")
        << "function f() { global int a_b; }"
        << QStringList{"function f() 9-10 known 0-32 whole 0-32",
                       "global int a_b 26-29 known 0-32"};
    QTest::newRow("declared twice")
        << "int a; int a;"
        << QStringList{"variable int a 4-5 known 0-13", "variable int a 11-12 known 0-13"};
    QTest::newRow("behind a text over two lines")
        << "s = \"a\nb\"; int c;" << QStringList{"variable int c 15-16 known 0-17"};
    QTest::newRow("a text that does not parse") << "int a; }" << QStringList();
    QTest::newRow("a text with an unknown character") << "int a; $" << QStringList();
}

void ScriptSymbolsTest::names() {
    QFETCH(QString, text);
    QTEST(linesOfNames(ctl::symbolsIn(file, text)), "expected");
}

void ScriptSymbolsTest::uses_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("what the script does not declare")
        << "f(a)" << QStringList{"f()@0 reads none", "a@2 reads none"};
    QTest::newRow("how a variable is used")
        << "int a; a = a; a++; --a; b[a] = 1; a == 2"
        << QStringList{"a@4 declares 4", "a@7 writes 4",    "a@11 reads 4", "a@14 writes 4",
                       "a@21 writes 4",  "b@24 reads none", "a@26 reads 4", "a@34 reads 4"};
    QTest::newRow("in front of what is known in the whole script")
        << "function f() { a = g() }\nint a; function g() { }"
        << QStringList{"f()@9 declares 9", "a@15 writes 29", "g()@19 reads 41", "a@29 declares 29",
                       "g()@41 declares 41"};
    QTest::newRow("an inner one hides an outer one from its declaration on")
        << "int a; if (a) { a; int a; a; { a } } a"
        << QStringList{"a@4 declares 4", "a@11 reads 4",  "a@16 reads 4", "a@23 declares 23",
                       "a@26 reads 23",  "a@31 reads 23", "a@37 reads 4"};
    QTest::newRow("a parameter hides, and is not known elsewhere")
        << "function f(a) { a }\nfunction g() { a }"
        << QStringList{"f()@9 declares 9", "a@11 declares 11", "a@16 reads 11",
                       "g()@29 declares 29", "a@35 reads none"};
    QTest::newRow("each loop has its own")
        << "for (int i = 0; i < 3; i++) { i }\nfor (int i = 0; i < 3; i++) i"
        << QStringList{"i@9 declares 9",   "i@16 reads 9",  "i@23 writes 9",  "i@30 reads 9",
                       "i@43 declares 43", "i@50 reads 43", "i@57 writes 43", "i@62 reads 43"};
    QTest::newRow("a function and a variable of one name")
        << "int f; function f() { f = f(f) }"
        << QStringList{"f@4 declares 4", "f()@16 declares 16", "f@22 writes 4", "f()@26 reads 16",
                       "f@28 reads 4"};
    QTest::newRow("what is declared twice is the first")
        << "int a; int a; a" << QStringList{"a@4 declares 4", "a@11 declares 4", "a@14 reads 4"};
    QTest::newRow("a name behind a dot is none, nor is one in angles")
        << "#include <a.b>\na.b.c" << QStringList{"a@15 reads none"};
    QTest::newRow("in a text and a comment there are none") << "\"a\" 'b' // c" << QStringList();
}

void ScriptSymbolsTest::uses() {
    QFETCH(QString, text);
    QTEST(linesOfUses(ctl::symbolsIn(file, text)), "expected");
}

void ScriptSymbolsTest::imports_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("one beside it")
        << "import \"b.ys\";" << QStringList{folder + "/scripts/b.ys \"b.ys\" 7-13"};
    QTest::newRow("one elsewhere, with the other divider")
        << "import \"..\\sub\\.\\b.ys\";"
        << QStringList{folder + "/sub/b.ys \"..\\sub\\.\\b.ys\" 7-22"};
    QTest::newRow("a rooted one is not followed")
        << "import \"/b.ys\";" << QStringList{" \"/b.ys\" 7-14"};
    QTest::newRow("in a function too, in the order of the text")
        << "import \"b.ys\";\nfunction f() { import \"c.ys\"; }\nimport \"d.ys\";"
        << QStringList{folder + "/scripts/b.ys \"b.ys\" 7-13",
                       folder + "/scripts/c.ys \"c.ys\" 37-43",
                       folder + "/scripts/d.ys \"d.ys\" 54-60"};
}

void ScriptSymbolsTest::imports() {
    QFETCH(QString, text);
    QStringList lines;
    const ScriptSymbols symbols = ctl::symbolsIn(file, text);
    for (const ctl::NamedImport &import : symbols.imports)
        lines.append(import.path + ' ' + import.written + ' ' + stretchText(import.at));
    QTEST(lines, "expected");
}

// The cursor stands at the bar.
void ScriptSymbolsTest::knownAt_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << "|"
                             << "";
    QTest::newRow("all of the script, wherever it stands") << "|int a; function f() {}\n"
                                                           << "a f";
    QTest::newRow("within, the latest first") << "int a; function f(b) { int c; int d; |}\n"
                                              << "d c b a f";
    QTest::newRow("before its declaration a local is not known") << "function f() { | int c; }\n"
                                                                 << "f";
    QTest::newRow("right behind its name it is") << "function f() { int c| }\n"
                                                 << "c f";
    QTest::newRow("behind its braces it is not") << "function f() { int c }|\n"
                                                 << "f";
    QTest::newRow("one that is hidden is told once") << "int a; function f(a) { int a; | }\n"
                                                     << "a f";
    QTest::newRow("a function is not hidden by a variable") << "int f; function f() { | }\n"
                                                            << "f f";
}

void ScriptSymbolsTest::knownAt() {
    QFETCH(QString, text);
    const int cursor = text.indexOf('|');
    text.remove(cursor, 1);
    const ScriptSymbols symbols = ctl::symbolsIn(file, text);
    QStringList names;
    const QVector<int> known = ctl::namesKnownAt(symbols, cursor);
    for (const int name : known)
        names.append(symbols.names.at(name).name);
    QTEST(names.join(' '), "expected");
}

void ScriptSymbolsTest::depthTakesNoStack() {
    constexpr int depth = 100000;
    const QString text =
        QString("if (a) {\n").repeated(depth) + "int a;\n" + QString("}\n").repeated(depth);
    const ScriptSymbols symbols = ctl::symbolsIn(file, text);
    QCOMPARE(symbols.names.size(), 1);
    QCOMPARE(symbols.uses.size(), depth + 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptSymbolsTest)

#include "script_symbols_test.moc"
