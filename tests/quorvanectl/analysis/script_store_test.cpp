// Scripts as they count while an editor and others change them: what is read again, what is forgotten, and
// what lies where a script should.
#include "quorvanectl/analysis/script_store.h"

#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QFile>

using support::ProjectFolder;

namespace {

// "f: a b; findings: 1", the globals and how many findings there are.
QString summaryText(ctl::ScriptStore *store, const QString &path) {
    const auto summary = store->summaryOf(path);
    QStringList globals;
    for (const ast::GlobalDeclaration &global : summary->facts.globals)
        globals.append(global.name);
    return QString("%1; %2").arg(globals.join(' '), QString::number(int(summary->findings.size())));
}

QString symbolText(ctl::ScriptStore *store, const QString &path) {
    QStringList names;
    const auto symbols = store->symbolsOf(path);
    for (const ctl::ScriptName &name : symbols->names)
        names.append(name.name);
    return names.join(' ');
}

// With a time of the last change that is always the same, as some tools leave it that copy files.
void writeWithOneTime(const ProjectFolder &folder, const QString &name, const QByteArray &text) {
    QFile file(folder.write(name, text));
    const QDateTime always(QDate(2026, 1, 2), QTime(3, 4, 5));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(always, QFileDevice::FileModificationTime));
}

} // namespace

class ScriptStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void whatLiesThere_data();
    void whatLiesThere();
    void aFileIsReadOnce();
    void aChangeThatNothingShowsHasToBeTold();
    void anOpenTextComesBeforeTheFile();
    void aTextThatIsOpenedTwice();
    void aFileThatGrowsTooLargeAndShrinks();
    void aFileThatGoesAndComes();
    void whatIsNotKeptIsReadAgain();
    void oneScriptWithATree();
};

void ScriptStoreTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// The bytes of a file, however they came about.
void ScriptStoreTest::whatLiesThere_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("summary");
    QTest::addColumn<QString>("symbols");
    const auto row = [](const char *name, const QByteArray &bytes, const char *summary,
                        const char *symbols) {
        QTest::newRow(name) << bytes << QString(summary) << QString(symbols);
    };
    const QByteArray text = "global int x_y;";
    const QString plain = QString::fromLatin1(text);
    const auto utf16 = [&plain](bool bigEnd) {
        QByteArray bytes = bigEnd ? "\xfe\xff" : "\xff\xfe";
        for (const QChar unit : plain) {
            bytes += bigEnd ? '\0' : unit.toLatin1();
            bytes += bigEnd ? unit.toLatin1() : '\0';
        }
        return bytes;
    };
    row("a plain text", text, "x_y; 0", "x_y");
    row("nothing", "", "; 0", "");
    row("with a mark of UTF-8", "\xef\xbb\xbf" + text, "x_y; 0", "x_y");
    row("in UTF-16, which no script is in", utf16(false), "; 1", "");
    row("in UTF-16, the large end first", utf16(true), "; 1", "");
    row("in GB 18030", "// \xb8\xdf\xb6\xc8\n" + text, "x_y; 0", "x_y");
    row("lines that end in both", "// a\r\n" + text + "\r\n", "x_y; 0", "x_y");
    row("a text that is cut off in a sign", text + " // \xe9\xab", "x_y; 0", "x_y");
    row("zeros", QByteArray(100, '\0'), "; 1", "");
    row("a zero in the text", text + QByteArray(1, '\0'), "; 1", "");
    row("a program's bytes", QByteArray("MZ\x90\0\x03\0\0\0\x04", 9), "; 1", "");
    row("one that does not parse", text + "}", "; 1", "");
}

void ScriptStoreTest::whatLiesThere() {
    QFETCH(QByteArray, bytes);
    const ProjectFolder folder;
    const QString path = folder.write("a.ys", bytes);
    ctl::ScriptStore store;
    QTEST(summaryText(&store, path), "summary");
    QTEST(symbolText(&store, path), "symbols");
    QCOMPARE(folder.read("a.ys"), bytes);
}

void ScriptStoreTest::aFileIsReadOnce() {
    const ProjectFolder folder;
    const QString path = folder.write("a.ys", "global int x_y;");
    ctl::ScriptStore store;
    const auto first = store.summaryOf(path);
    QCOMPARE(store.summaryOf(path), first);
    (void)store.symbolsOf(path);
    QCOMPARE(store.summaryCount(), 1);
    // Told of a change that is none, it looks at the bytes and keeps what it knows.
    store.fileChanged(path);
    QCOMPARE(store.summaryOf(path), first);
    QCOMPARE(store.summaryCount(), 1);
    // One of another size need not be told.
    (void)folder.write("a.ys", "global int x_yz;");
    QCOMPARE(summaryText(&store, path), QString("x_yz; 0"));
    QCOMPARE(symbolText(&store, path), QString("x_yz"));
    QCOMPARE(store.summaryCount(), 2);
}

void ScriptStoreTest::aChangeThatNothingShowsHasToBeTold() {
    const ProjectFolder folder;
    const QString path = folder.path("a.ys");
    ctl::ScriptStore store;
    writeWithOneTime(folder, "a.ys", "global int x_y;");
    QCOMPARE(summaryText(&store, path), QString("x_y; 0"));
    writeWithOneTime(folder, "a.ys", "global int x_z;");
    QCOMPARE(summaryText(&store, path), QString("x_y; 0"));
    store.fileChanged(path);
    QCOMPARE(summaryText(&store, path), QString("x_z; 0"));
    QCOMPARE(symbolText(&store, path), QString("x_z"));
    // What an editor had open may have been saved meanwhile.
    store.open(path, "global int x_a;");
    writeWithOneTime(folder, "a.ys", "global int x_a;");
    store.close(path);
    QCOMPARE(summaryText(&store, path), QString("x_a; 0"));
    QCOMPARE(symbolText(&store, path), QString("x_a"));
}

void ScriptStoreTest::anOpenTextComesBeforeTheFile() {
    const ProjectFolder folder;
    const QString path = folder.write("a.ys", "global int x_disk;");
    ctl::ScriptStore store;
    store.open(path, "global int x_open;");
    QVERIFY(store.isOpen(path));
    QCOMPARE(summaryText(&store, path), QString("x_open; 0"));
    (void)folder.write("a.ys", "global int x_saved_elsewhere;");
    store.fileChanged(path);
    QCOMPARE(summaryText(&store, path), QString("x_open; 0"));
    store.open(path, "global int x_open; }");
    QCOMPARE(summaryText(&store, path), QString("; 1"));
    QCOMPARE(symbolText(&store, path), QString("x_open"));
    store.open(path, "function f() { }\nfunction g() { }");
    (void)store.symbolsOf(path);
    store.open(path, "}\nfunction f() { }\nfunction g() { }");
    QCOMPARE(store.exportsOf(path).functions.size(), 2);
    QCOMPARE(store.exportsOf(path).functions.last().line, 3);
    store.close(path);
    QVERIFY(!store.isOpen(path));
    QCOMPARE(summaryText(&store, path), QString("x_saved_elsewhere; 0"));
    QCOMPARE(symbolText(&store, path), QString("x_saved_elsewhere"));
    store.close(path); // once more is no matter
    store.close(folder.path("none.ys"));
    QCOMPARE(summaryText(&store, path), QString("x_saved_elsewhere; 0"));
}

// The names of the text before it are those of a text that was spoilt meanwhile.
void ScriptStoreTest::aTextThatIsOpenedTwice() {
    ctl::ScriptStore store;
    store.open("untitled:1", "int a;");
    QCOMPARE(symbolText(&store, "untitled:1"), QString("a"));
    store.open("untitled:1", "int a; }");
    QCOMPARE(symbolText(&store, "untitled:1"), QString("a"));
    store.close("untitled:1");
    store.open("untitled:1", "int a; }");
    QCOMPARE(symbolText(&store, "untitled:1"), QString());
    QCOMPARE(symbolText(&store, "untitled:2"), QString());
}

void ScriptStoreTest::aFileThatGrowsTooLargeAndShrinks() {
    const ProjectFolder folder;
    const QByteArray text = "global int x_y;";
    const QString path = folder.write("a.ys", text);
    ctl::ScriptStore store;
    QCOMPARE(summaryText(&store, path), QString("x_y; 0"));
    QCOMPARE(symbolText(&store, path), QString("x_y"));
    const QByteArray full = text + QByteArray(int(ctl::largestScript) - text.size(), ' ');
    (void)folder.write("a.ys", full + ' ');
    QCOMPARE(summaryText(&store, path), QString("; 1"));
    QCOMPARE(symbolText(&store, path), QString());
    QCOMPARE(store.summaryCount(), 1); // it was not looked into
    (void)folder.write("a.ys", text);  // the same as before
    QCOMPARE(summaryText(&store, path), QString("x_y; 0"));
    QCOMPARE(symbolText(&store, path), QString("x_y"));
    (void)folder.write("a.ys", full);
    QCOMPARE(summaryText(&store, path), QString("x_y; 0"));
    (void)folder.writeZeros("a.ys", qint64(1) << 30);
    QCOMPARE(summaryText(&store, path), QString("; 1"));
    (void)folder.write("a.ys", text);
    QCOMPARE(summaryText(&store, path), QString("x_y; 0"));
    QCOMPARE(symbolText(&store, path), QString("x_y"));
}

void ScriptStoreTest::aFileThatGoesAndComes() {
    const ProjectFolder folder;
    const QString path = folder.path("a.ys");
    ctl::ScriptStore store;
    QCOMPARE(summaryText(&store, path), QString("; 0"));
    (void)folder.write("a.ys", "global int x_y;");
    QCOMPARE(summaryText(&store, path), QString("x_y; 0"));
    QCOMPARE(symbolText(&store, path), QString("x_y"));
    QVERIFY(QFile::remove(path));
    QCOMPARE(summaryText(&store, path), QString("; 0"));
    QCOMPARE(symbolText(&store, path), QString());
    (void)folder.write("a.ys/b.ys", "global int x_z;"); // a folder of its name
    QCOMPARE(summaryText(&store, path), QString("; 0"));
    QCOMPARE(summaryText(&store, folder.path("a.ys/b.ys")), QString("x_z; 0"));
}

void ScriptStoreTest::whatIsNotKeptIsReadAgain() {
    const ProjectFolder folder;
    const QString a = folder.write("a.ys", "int a;");
    const QString b = folder.write("b.ys", "int b;");
    ctl::ScriptStore store;
    store.open(folder.path("c.ys"), "int c;");
    for (const QString &path : {a, b, folder.path("c.ys")})
        (void)store.summaryOf(path);
    QCOMPARE(store.summaryCount(), 3);
    store.keepOnly({a});
    for (const QString &path : {a, folder.path("c.ys")})
        (void)store.summaryOf(path);
    QCOMPARE(store.summaryCount(), 3);
    (void)store.summaryOf(b);
    QCOMPARE(store.summaryCount(), 4);
}

// The tree of a script is let go when another one is whole; its names are read once more then.
void ScriptStoreTest::oneScriptWithATree() {
    ctl::ScriptStore store;
    store.open("untitled:1", "int a; function f(p) { int q; }");
    store.open("untitled:2", "int b;");
    (void)store.summaryOf("untitled:1");
    (void)store.summaryOf("untitled:2");
    store.open("untitled:1", "int a; function f(p) { int q; } }");
    QCOMPARE(symbolText(&store, "untitled:1"), QString("a f p q"));
    QCOMPARE(symbolText(&store, "untitled:2"), QString("b"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptStoreTest)

#include "script_store_test.moc"
