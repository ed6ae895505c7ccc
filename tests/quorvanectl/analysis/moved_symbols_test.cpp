// The names of a script while it is typed: they stay through texts that say nothing, at their places.
#include "quorvanectl/analysis/moved_symbols.h"

#include "quorvanectl/analysis/script_store.h"
#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::ProjectFolder;

namespace {

// The text with every name that is known of it in brackets, a declared one with its number in braces, and
// behind a use the number of what it means: "int {0 a}; [a 0] = [b]".
QString markedText(const QString &text, const ctl::ScriptSymbols &symbols) {
    QString marked = text;
    for (auto use = symbols.uses.rbegin(); use != symbols.uses.rend(); ++use) {
        const QString meant = use->meaning < 0 ? QString() : ' ' + QString::number(use->meaning);
        marked.replace(use->at.from, use->at.to - use->at.from,
                       (use->declares ? "{" : "[") + use->name + meant +
                           (use->declares ? "}" : "]"));
    }
    return marked;
}

// One in which nothing is wrong settles, as the check of a script tells.
QString markedBehind(const QStringList &texts) {
    const ProjectFolder folder;
    ctl::ScriptStore store;
    for (const QString &text : texts) {
        store.open(folder.path("a.ys"), text);
        (void)store.summaryOf(folder.path("a.ys"));
    }
    return markedText(texts.last(), *store.symbolsOf(folder.path("a.ys")));
}

} // namespace

class MovedSymbolsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void edits_data();
    void edits();
    void typed_data();
    void typed();
    void whereALocalIsKnownGrowsWithTheText();
    void manyEditsInATextThatDoesNotParse();
    void whoAskedBeforeATextSettledIsToldAnew();
    void aFileIsReadOnceItsContentIsAnother();
};

void MovedSymbolsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void MovedSymbolsTest::edits_data() {
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the same") << "ab"
                              << "ab"
                              << "2 -0 +0";
    QTest::newRow("from nothing") << ""
                                  << "ab"
                                  << "0 -0 +2";
    QTest::newRow("to nothing") << "ab"
                                << ""
                                << "0 -2 +0";
    QTest::newRow("typed at the start") << "ab"
                                        << "cab"
                                        << "0 -0 +1";
    QTest::newRow("typed at the end") << "ab"
                                      << "abc"
                                      << "2 -0 +1";
    QTest::newRow("one of a row of the same") << "aa"
                                              << "aaa"
                                              << "2 -0 +1";
    QTest::newRow("one less of a row of the same") << "aaa"
                                                   << "aa"
                                                   << "2 -1 +0";
    QTest::newRow("all from the first difference to the last") << "abcd"
                                                               << "axcyd"
                                                               << "1 -2 +3";
}

void MovedSymbolsTest::edits() {
    QFETCH(QString, before);
    QFETCH(QString, after);
    const ctl::TextEdit edit = ctl::editBetween(before, after);
    const QString text = QString("%1 -%2 +%3").arg(edit.from).arg(edit.removed).arg(edit.inserted);
    QTEST(text, "expected");
}

void MovedSymbolsTest::typed_data() {
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QString>("expected");
    const QString begun = "int a; f(a, b)\n";
    QTest::newRow("a text that parses") << QStringList{begun} << "int {a 0}; [f]([a 0], [b])\n";
    QTest::newRow("one that parses anew")
        << QStringList{begun, "int ab; f(ab)\n"} << "int {ab 0}; [f]([ab 0])\n";
    QTest::newRow("spoilt behind its names")
        << QStringList{begun, begun + "import"} << "int {a 0}; [f]([a 0], [b])\nimport";
    QTest::newRow("spoilt before them")
        << QStringList{begun, "import\n" + begun} << "import\nint {a 0}; [f]([a 0], [b])\n";
    QTest::newRow("a text in quotes that takes the rest keeps the names in it")
        << QStringList{begun, "s = \"" + begun} << "s = \"int {a 0}; [f]([a 0], [b])\n";
    QTest::newRow("a brace that takes the rest")
        << QStringList{begun, "if (1) {\n" + begun} << "if (1) {\nint {a 0}; [f]([a 0], [b])\n";
    QTest::newRow("a name that is typed on is none for now")
        << QStringList{begun, "import int a; f(a, b)\n", "import int ac; f(a, b)\n"}
        << "import int ac; [f]([a], [b])\n";
    QTest::newRow("typed into, and back")
        << QStringList{begun, "} int a; f(a, b)\n", "} int a; fx(a, b)\n", "} int a; f(a, b)\n"}
        << "} int {a 0}; [f]([a 0], [b])\n";
    QTest::newRow("a stretch with names is cut out")
        << QStringList{begun, "} " + begun, "} int a; b)\n"} << "} int {a 0}; [b])\n";
    QTest::newRow("it parses once more")
        << QStringList{begun, "} " + begun, begun + "c\n"} << "int {a 0}; [f]([a 0], [b])\n[c]\n";
    QTest::newRow("never one that parses") << QStringList{"int a; }", "int a; }}"} << "int a; }}";
    QTest::newRow("one that says something from the start")
        << QStringList{"int a; (\n"} << "int {a 0}; (\n";
}

void MovedSymbolsTest::typed() {
    QFETCH(QStringList, texts);
    QTEST(markedBehind(texts), "expected");
}

void MovedSymbolsTest::whereALocalIsKnownGrowsWithTheText() {
    ctl::MovedSymbols moved("/a.ys");
    moved.change("function f() { int a; }\nfunction g() {}");
    moved.settle();
    moved.change("function f() { int a; ( }\nfunction g() {}");
    moved.change("function f() { int a; (x }\nfunction g() {}");
    const auto symbols = moved.symbols();
    QCOMPARE(symbols->names.at(0).whole, (ctl::Stretch{0, 26}));
    QCOMPARE(symbols->names.at(1).visible, (ctl::Stretch{20, 25}));
    QCOMPARE(symbols->names.at(2).whole, (ctl::Stretch{27, 42}));
    QCOMPARE(symbols->names.at(2).visible, (ctl::Stretch{0, 42}));
    QCOMPARE(moved.symbols(), symbols); // kept until the text changes
    moved.change("function f() { ");
    QCOMPARE(moved.symbols()->names.at(0).whole, (ctl::Stretch{0, 15}));
    QCOMPARE(moved.symbols()->names.size(), 1);
}

void MovedSymbolsTest::manyEditsInATextThatDoesNotParse() {
    const ProjectFolder folder;
    ctl::MovedSymbols moved(folder.path("a.ys"));
    QString text = "import \"b.ys\"; int a;";
    moved.change(text);
    moved.settle();
    for (int i = 0; i < 250; ++i)
        moved.change(text.prepend('('));
    const auto symbols = moved.symbols();
    QCOMPARE(symbols->imports.at(0).path, folder.path("b.ys"));
    QCOMPARE(symbols->imports.at(0).at, (ctl::Stretch{257, 263}));
    QCOMPARE(markedText(text, *symbols),
             QString("(").repeated(250) + QString("import \"b.ys\"; int {a 0};"));
    moved.change(text.replace("b.ys", "c.ys"));
    QVERIFY(moved.symbols()->imports.isEmpty());
}

void MovedSymbolsTest::whoAskedBeforeATextSettledIsToldAnew() {
    const ProjectFolder folder;
    ctl::MovedSymbols moved(folder.path("a.ys"));
    moved.change("int a;");
    moved.settle();
    const QString text = "int a; int b;";
    moved.change(text);
    QCOMPARE(markedText(text, *moved.symbols()), QString("int {a 0}; int b;"));
    moved.settle();
    QCOMPARE(markedText(text, *moved.symbols()), QString("int {a 0}; int {b 1};"));
}

void MovedSymbolsTest::aFileIsReadOnceItsContentIsAnother() {
    const ProjectFolder folder;
    const QString path = folder.write("a.ys", "int a;");
    ctl::ScriptStore store;
    const auto first = store.symbolsOf(path);
    QCOMPARE(first->names.value(0).name, QString("a"));
    store.fileChanged(path);
    QCOMPARE(store.symbolsOf(path), first);
    folder.write("a.ys", "int b;");
    store.fileChanged(path);
    QCOMPARE(store.symbolsOf(path)->names.value(0).name, QString("b"));
    store.open(path, "int c;");
    QCOMPARE(store.symbolsOf(path)->names.value(0).name, QString("c"));
    store.close(path);
    QCOMPARE(store.symbolsOf(path)->names.value(0).name, QString("b"));
    QVERIFY(store.symbolsOf(folder.path("none.ys"))->names.isEmpty());
}

QUORVANE_TEST_MAIN(QCoreApplication, MovedSymbolsTest)

#include "moved_symbols_test.moc"
