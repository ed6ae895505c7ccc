// The reader of the function library: lists, function lines, arguments and call templates, with
// lines that lie about their number of arguments and loads that fail.
#include "library/function_library.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QThread>
#include <QVector>

#include <memory>

Q_DECLARE_METATYPE(FunctionArgument)

namespace {

using support::loadLibraryText;

const FunctionLibrary &library() {
    return FunctionLibrary::instance();
}

const QStringList builtInKeywords{"if",     "else",    "for",       "while",    "switch",
                                  "case",   "default", "break",     "continue", "return",
                                  "end_if", "end_for", "end_switch"};

FunctionArgument argument(const QString &text, int kind, const QStringList &options = {}) {
    FunctionArgument result;
    result.text = text;
    result.kind = kind;
    result.options = options;
    return result;
}

} // namespace

class FunctionLibraryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aNewLibraryIsEmpty();
    void aFileThatIsAbsentFailsAndRegistersNoWord();
    void aFileThatIsAbsentNeedsNoPlaceForTheReason();
    void anEmptyFileLeavesTheBuiltInVocabulary();
    void aFailedLoadKeepsTheSetsAndTheMapOfTheOneBefore();
    void assignments_data();
    void assignments();
    void eachListHasItsSectionAndKey();
    void functionLines_data();
    void functionLines();
    void functionsCountWhereverTheyStand();
    void aLoadForgetsTheFunctionsOfTheOneBefore();
    void theLastOfEqualNamesIsIndexed();
    void callTemplates_data();
    void callTemplates();
    void tooFewFields_data();
    void tooFewFields();
    void aRecordHoldsTheWholeLine();
    void aLineThatEndsWithItsLastArgumentLosesTheList();
    void aCountOfAllBitsDoesNotLoop();
    void arguments_data();
    void arguments();
    void aFileInTheLocalEncodingIsRead();
    void manyThreadsReadAtOnce();
};

// Runs first: nothing has been loaded yet.
void FunctionLibraryTest::aNewLibraryIsEmpty() {
    QVERIFY(library().filePath.isEmpty());
    QVERIFY(library().keywords.isEmpty());
    QVERIFY(library().tokenKindByWord.isEmpty());
    QCOMPARE(&FunctionLibrary::instance(), &FunctionLibrary::instance());
}

void FunctionLibraryTest::aFileThatIsAbsentFailsAndRegistersNoWord() {
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("无法打开函数库文件: /no/such/file .+"));
    QString error;
    QVERIFY(!FunctionLibrary::instance().load("/no/such/file", &error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(library().filePath, QString("/no/such/file"));
    QCOMPARE(library().keywords, builtInKeywords);
    QVERIFY(library().keywordSet.isEmpty());
    QVERIFY(library().tokenKindByWord.isEmpty());
    QCOMPARE(library().tokenKindOf("if"), std::make_pair(false, 0));
}

void FunctionLibraryTest::aFileThatIsAbsentNeedsNoPlaceForTheReason() {
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("无法打开函数库文件"));
    QVERIFY(!FunctionLibrary::instance().load("/no/such/file"));
}

void FunctionLibraryTest::anEmptyFileLeavesTheBuiltInVocabulary() {
    QVERIFY(loadLibraryText(""));
    QCOMPARE(library().keywords, builtInKeywords);
    QCOMPARE(library().snippetOnly, QStringList({"end_if", "end_for", "end_switch"}));
    QCOMPARE(library().typeWords,
             QStringList({"int", "bool", "float", "string", "char", "static", "global"}));
    QCOMPARE(library().otherWords, QStringList({"function", "include"}));
    QCOMPARE(library().libraryWords, QStringList({"ioDrive", "ModbusTCP", "Halcon", "OpenCV"}));
    QCOMPARE(library().pluginFunctions, QStringList({"print", "Print", "SendMessage",
                                                     "QdebugFunction", "Return", "new_object"}));
    QCOMPARE(library().keywordSet.size(), 13);
    QCOMPARE(library().typeSet.size(), 7);
    QCOMPARE(library().otherSet.size(), 2);
    QCOMPARE(library().librarySet.size(), 4);
    QCOMPARE(library().snippetOnlySet.size(), 3);
    QVERIFY(library().functions.isEmpty());
}

void FunctionLibraryTest::aFailedLoadKeepsTheSetsAndTheMapOfTheOneBefore() {
    QVERIFY(loadLibraryText("[ControlFlow]\nkeywords=if\n1,foo,0\n"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("无法打开函数库文件"));
    QVERIFY(!FunctionLibrary::instance().load("/no/such/file"));
    QCOMPARE(library().keywords, builtInKeywords);
    QCOMPARE(library().keywordSet, QSet<QString>({"if"}));
    QVERIFY(library().tokenKindOf("if").first);
    QVERIFY(!library().tokenKindOf("else").first);
    QVERIFY(library().functions.isEmpty());
    QVERIFY(library().functionIndexByName.isEmpty());
}

void FunctionLibraryTest::assignments_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("keywords");
    const QStringList two{"if", "else"};
    QTest::newRow("an assignment replaces the list")
        << QByteArray("[ControlFlow]\nkeywords=if,else") << two;
    QTest::newRow("lines may end in carriage return and line feed")
        << QByteArray("[ControlFlow]\r\nkeywords=if,else\r\n") << two;
    QTest::newRow("the section's name ignores case")
        << QByteArray("[controlflow]\nkeywords=if,else") << two;
    QTest::newRow("the key ignores case and blanks")
        << QByteArray("[ControlFlow]\nKEYWORDS = if, else") << two;
    QTest::newRow("the section's name is trimmed")
        << QByteArray("[ ControlFlow ]\nkeywords=if,else") << two;
    QTest::newRow("a line is trimmed before it is looked at")
        << QByteArray("  [ControlFlow]  \n\t keywords=if,else  ") << two;
    QTest::newRow("empty pieces are dropped")
        << QByteArray("[ControlFlow]\nkeywords=if,,else, ,for")
        << QStringList({"if", "else", "for"});
    QTest::newRow("an assignment without a value empties the list")
        << QByteArray("[ControlFlow]\nkeywords=") << QStringList();
    QTest::newRow("the last of two assignments stands")
        << QByteArray("[ControlFlow]\nkeywords=for\nkeywords=if,else") << two;
    QTest::newRow("the value goes on behind a second equals sign")
        << QByteArray("[ControlFlow]\nkeywords=a=b,c") << QStringList({"a=b", "c"});
    QTest::newRow("the key in another section has no effect")
        << QByteArray("[Highlight]\nkeywords=if,else") << builtInKeywords;
    QTest::newRow("an assignment before the first section has no effect")
        << QByteArray("keywords=if\n[ControlFlow]") << builtInKeywords;
    QTest::newRow("an unknown key has no effect")
        << QByteArray("[ControlFlow]\nkeyword=if") << builtInKeywords;
    QTest::newRow("a line that begins with the equals sign is no assignment")
        << QByteArray("[ControlFlow]\n=x") << builtInKeywords;
    QTest::newRow("a comment is passed over")
        << QByteArray("[ControlFlow]\n#keywords=if\n//keywords=if") << builtInKeywords;
    QTest::newRow("a section head without its closing bracket is no section head")
        << QByteArray("[Highlight]\n[ControlFlow\nkeywords=if") << builtInKeywords;
    QTest::newRow("a line with an opening bracket alone can still be an assignment")
        << QByteArray("[ControlFlow]\n[keywords=if\nkeywords=if,else") << two;
    QTest::newRow("an empty section head ends the section before it")
        << QByteArray("[ControlFlow]\n[]\nkeywords=if") << builtInKeywords;
}

void FunctionLibraryTest::assignments() {
    QFETCH(QByteArray, text);
    QVERIFY(loadLibraryText(text));
    QTEST(library().keywords, "keywords");
    QCOMPARE(library().keywordSet.size(), library().keywords.size());
}

void FunctionLibraryTest::eachListHasItsSectionAndKey() {
    QVERIFY(loadLibraryText("[ControlFlow]\nkeywords=a\n[Completion]\nsnippet_only=b\n"
                            "[Highlight]\ntype=c\nother=d\nlibrary=e\n[Plugin]\nfunctions=f\n"));
    QCOMPARE(library().keywords, QStringList("a"));
    QCOMPARE(library().snippetOnly, QStringList("b"));
    QCOMPARE(library().typeWords, QStringList("c"));
    QCOMPARE(library().otherWords, QStringList("d"));
    QCOMPARE(library().libraryWords, QStringList("e"));
    QCOMPARE(library().pluginFunctions, QStringList("f"));
    QCOMPARE(library().keywordSet, QSet<QString>({"a"}));
    QCOMPARE(library().snippetOnlySet, QSet<QString>({"b"}));
    QCOMPARE(library().typeSet, QSet<QString>({"c"}));
    QCOMPARE(library().otherSet, QSet<QString>({"d"}));
    QCOMPARE(library().librarySet, QSet<QString>({"e"}));
}

void FunctionLibraryTest::functionLines_data() {
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("isFunction");
    QTest::newRow("an id, a name and a count are enough") << QByteArray("1,foo,0") << true;
    QTest::newRow("a last field may be empty") << QByteArray("12,foo,0,") << true;
    QTest::newRow("blanks around the id") << QByteArray(" 12 ,foo,0") << true;
    QTest::newRow("a sign before the id") << QByteArray("+12,foo,0") << true;
    QTest::newRow("the largest id") << QByteArray("4294967295,foo,0") << true;
    QTest::newRow("a count that is no number") << QByteArray("1,foo,x") << true;
    QTest::newRow("an equals sign") << QByteArray("1,foo,0,a=b") << true;
    QTest::newRow("an id that overflows") << QByteArray("4294967296,foo,0") << false;
    QTest::newRow("a negative id") << QByteArray("-1,foo,0") << false;
    QTest::newRow("an id with a letter") << QByteArray("x1,foo,0") << false;
    QTest::newRow("an empty id") << QByteArray(",foo,0") << false;
    QTest::newRow("two fields") << QByteArray("1,foo") << false;
    QTest::newRow("a comment") << QByteArray("#1,foo,0") << false;
    QTest::newRow("a comment of slashes") << QByteArray("//1,foo,0") << false;
    QTest::newRow("an opening bracket") << QByteArray("[1,foo,0") << false;
}

void FunctionLibraryTest::functionLines() {
    QFETCH(QByteArray, line);
    QFETCH(bool, isFunction);
    QVERIFY(loadLibraryText(line));
    QCOMPARE(library().functions.size(), isFunction ? 1 : 0);
    QCOMPARE(library().rawLines.size(), isFunction ? 1 : 0);
}

void FunctionLibraryTest::functionsCountWhereverTheyStand() {
    QVERIFY(loadLibraryText("1,a,0\n[Highlight]\n  2, b ,0 \r\n[Plugin]\n3,c,0\n"));
    QCOMPARE(library().functionNames, QStringList({"a", "b", "c"}));
    QCOMPARE(library().functionIds, QStringList({"1", "2", "3"}));
    QCOMPARE(library().rawLines, QStringList({"1,a,0", "2, b ,0", "3,c,0"}));
    QCOMPARE(library().functions.at(1).name, QString(" b "));
    QCOMPARE(library().callTemplates, QStringList({"a", "b", "c"}));
}

void FunctionLibraryTest::aLoadForgetsTheFunctionsOfTheOneBefore() {
    QVERIFY(loadLibraryText("1,a,0"));
    QVERIFY(loadLibraryText("2,b,0"));
    QCOMPARE(library().functionNames, QStringList("b"));
    QCOMPARE(library().functionIndexByName, (QHash<QString, qint32>{{"b", 0}}));
}

void FunctionLibraryTest::theLastOfEqualNamesIsIndexed() {
    QVERIFY(loadLibraryText("1,Foo,0\n2,foo,0\n"));
    QCOMPARE(library().functionNames, QStringList({"Foo", "foo"}));
    QCOMPARE(library().functionIndexByName, (QHash<QString, qint32>{{"foo", 1}}));
}

void FunctionLibraryTest::callTemplates_data() {
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("text");
    QTest::newRow("no arguments, no parentheses") << QByteArray("12,foo,0,") << "foo";
    QTest::newRow("one argument") << QByteArray("1,foo,1,a#C,help") << "foo( a  );";
    QTest::newRow("two arguments leave two blanks")
        << QByteArray("12,foo,2,a#C,b#S#x#y,help") << "foo( a , b  );";
    QTest::newRow("no field behind the arguments") << QByteArray("1,foo,1,a") << "foo( a  );";
    QTest::newRow("names are trimmed") << QByteArray("1, foo , 1 , a #C,h") << "foo( a  );";
    QTest::newRow("a count that is no number is none") << QByteArray("1,foo,x,a,b") << "foo";
    QTest::newRow("a negative count is none") << QByteArray("1,foo,-1,a,b") << "foo";
    QTest::newRow("a count beyond 32 bits is none") << QByteArray("1,foo,4294967295,a,b") << "foo";
    QTest::newRow("an empty name") << QByteArray("1,,0") << "";
}

void FunctionLibraryTest::callTemplates() {
    QFETCH(QByteArray, line);
    QVERIFY(loadLibraryText(line));
    QCOMPARE(library().callTemplates.size(), 1);
    QTEST(library().callTemplates.first(), "text");
    QVERIFY(hasCallTemplate(library().rawLines.first()));
}

void FunctionLibraryTest::tooFewFields_data() {
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("no field for the first argument") << QByteArray("7,foo,1");
    QTest::newRow("no field for the last argument") << QByteArray("7,foo,2,a");
    QTest::newRow("a count of two thousand million") << QByteArray("7,foo,2147483647,a,b");
}

void FunctionLibraryTest::tooFewFields() {
    QFETCH(QByteArray, line);
    QTest::ignoreMessage(QtWarningMsg, "函数列表出现错误，访问： foo 函数的时候参数数量错误");
    QVERIFY(loadLibraryText("1,first,0\n" + line + "\n2,last,0\n"));
    // The names and the templates no longer run parallel.
    QCOMPARE(library().functionNames, QStringList({"first", "foo", "last"}));
    QCOMPARE(library().callTemplates, QStringList({"first", "last"}));
    QCOMPARE(library().functionIndexByName, (QHash<QString, qint32>{{"first", 0}, {"last", 2}}));
    QVERIFY(library().functions.at(1).arguments.isEmpty());
    QVERIFY(hasCallTemplate(library().rawLines.at(0)));
    QVERIFY(!hasCallTemplate(library().rawLines.at(1)));
}

void FunctionLibraryTest::aRecordHoldsTheWholeLine() {
    QVERIFY(loadLibraryText("12,foo,2,a#C,b#S#x#y,help"));
    const FunctionRecord &record = library().functions.first();
    QCOMPARE(record.id, 12U);
    QCOMPARE(record.name, QString("foo"));
    QCOMPARE(record.argumentCount, 2U);
    QCOMPARE(record.arguments.size(), 2);
    QCOMPARE(record.lastField, QString("help"));
    QCOMPARE(record.arguments.at(0).kind, 0);
    QCOMPARE(record.arguments.at(1).kind, 2);
    QCOMPARE(record.arguments.at(1).options, QStringList({"x", "y"}));
}

// The call template of the same line gets its arguments.
void FunctionLibraryTest::aLineThatEndsWithItsLastArgumentLosesTheList() {
    QVERIFY(loadLibraryText("12,foo,2,a#C,b#O"));
    const FunctionRecord &record = library().functions.first();
    QCOMPARE(record.argumentCount, 2U);
    QVERIFY(record.arguments.isEmpty());
    QCOMPARE(record.lastField, QString("b#O"));
    QCOMPARE(library().callTemplates, QStringList("foo( a , b  );"));
}

void FunctionLibraryTest::aCountOfAllBitsDoesNotLoop() {
    QVERIFY(loadLibraryText("1,foo,4294967295,a"));
    QCOMPARE(library().functions.first().argumentCount, 4294967295U);
    QVERIFY(library().functions.first().arguments.isEmpty());
}

void FunctionLibraryTest::arguments_data() {
    QTest::addColumn<QByteArray>("descriptor");
    QTest::addColumn<FunctionArgument>("expected");
    QTest::newRow("C") << QByteArray("a#C") << argument("a", 0);
    QTest::newRow("O") << QByteArray("a#O") << argument("a", 1);
    QTest::newRow("S with options") << QByteArray("a#S#x##y") << argument("a", 2, {"x", "", "y"});
    QTest::newRow("S without options") << QByteArray("a#S") << argument("a", 2);
    QTest::newRow("I") << QByteArray("a#I") << argument("a", 3);
    QTest::newRow("options of another kind are dropped") << QByteArray("a#I#x") << argument("a", 3);
    QTest::newRow("no letter") << QByteArray("a") << argument("a", -1);
    QTest::newRow("an unknown letter") << QByteArray("a#X#x") << argument("a", -1);
    QTest::newRow("a lower-case letter") << QByteArray("a#c") << argument("a", -1);
    QTest::newRow("a letter with a blank") << QByteArray("a# C") << argument("a", -1);
    QTest::newRow("an empty descriptor") << QByteArray("") << argument("", -1);
    QTest::newRow("the text is not trimmed") << QByteArray(" a #C") << argument(" a ", 0);
}

void FunctionLibraryTest::arguments() {
    QFETCH(QByteArray, descriptor);
    QFETCH(FunctionArgument, expected);
    QVERIFY(loadLibraryText("1,foo,1," + descriptor + ",help"));
    QCOMPARE(library().functions.first().arguments.size(), 1);
    const FunctionArgument &actual = library().functions.first().arguments.first();
    QCOMPARE(actual.text, expected.text);
    QCOMPARE(actual.kind, expected.kind);
    QCOMPARE(actual.options, expected.options);
    QCOMPARE(actual.extra, QString());
}

void FunctionLibraryTest::aFileInTheLocalEncodingIsRead() {
    QVERIFY(loadLibraryText("1,\xb2\xc9\xbc\xaf,0\n"));
    QCOMPARE(library().functionNames, QStringList("采集"));
}

void FunctionLibraryTest::manyThreadsReadAtOnce() {
    QVERIFY(support::loadScriptVocabulary());
    std::vector<std::unique_ptr<QThread>> threads;
    QAtomicInt found = 0;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(QThread::create([&found] {
            for (int round = 0; round < 1000; ++round)
                found += int(library().tokenKindOf("import").first);
        }));
        threads.back()->start();
    }
    for (const auto &thread : threads)
        thread->wait();
    QCOMPARE(found.loadAcquire(), 4000);
}

QUORVANE_TEST_MAIN(QCoreApplication, FunctionLibraryTest)
#include "function_library_test.moc"
