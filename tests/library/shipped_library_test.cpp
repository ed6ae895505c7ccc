// The library file as it ships.
#include "library/function_library.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

QSet<QString> setOf(const QStringList &list) {
    QSet<QString> set;
    for (const QString &text : list)
        set.insert(text);
    return set;
}

} // namespace

class ShippedLibraryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void itsWordsAreTheBuiltInOnesAndImport();
    void everyFunctionIsWhole();
    void namesAndIdsAreUnique();
    void everyPluginFunctionIsDescribed();
};

void ShippedLibraryTest::initTestCase() {
    QVERIFY(FunctionLibrary::instance().load(QStringLiteral(SHIPPED_LIBRARY)));
}

void ShippedLibraryTest::itsWordsAreTheBuiltInOnesAndImport() {
    const FunctionLibrary &library = FunctionLibrary::instance();
    const QStringList lists[] = {library.keywords, library.snippetOnly, library.typeWords,
                                 library.libraryWords, library.pluginFunctions};
    QCOMPARE(library.otherWords, QStringList({"function", "include", "import"}));
    QCOMPARE(library.tokenKindOf("import"), std::make_pair(true, 24));
    QCOMPARE(library.tokenKindByWord.size(), 20);
    QVERIFY(support::loadLibraryText(""));
    QCOMPARE(library.keywords, lists[0]);
    QCOMPARE(library.snippetOnly, lists[1]);
    QCOMPARE(library.typeWords, lists[2]);
    QCOMPARE(library.libraryWords, lists[3]);
    QCOMPARE(library.pluginFunctions, lists[4]);
    initTestCase();
}

void ShippedLibraryTest::everyFunctionIsWhole() {
    const FunctionLibrary &library = FunctionLibrary::instance();
    QVERIFY(library.functions.size() > 50);
    QCOMPARE(library.callTemplates.size(), library.functions.size());
    for (const FunctionRecord &record : library.functions) {
        QVERIFY2(quint32(record.arguments.size()) == record.argumentCount, qPrintable(record.name));
        QVERIFY2(!record.lastField.trimmed().isEmpty(), qPrintable(record.name));
        for (const FunctionArgument &argument : record.arguments) {
            QVERIFY2(argument.kind >= 0, qPrintable(record.name));
            QVERIFY2((argument.kind == 2) != argument.options.isEmpty(), qPrintable(record.name));
        }
    }
}

void ShippedLibraryTest::namesAndIdsAreUnique() {
    const FunctionLibrary &library = FunctionLibrary::instance();
    QCOMPARE(setOf(library.functionNames).size(), library.functions.size());
    QCOMPARE(setOf(library.functionIds).size(), library.functions.size());
}

void ShippedLibraryTest::everyPluginFunctionIsDescribed() {
    const FunctionLibrary &library = FunctionLibrary::instance();
    for (const QString &name : library.pluginFunctions)
        QVERIFY2(library.functionNames.contains(name), qPrintable(name));
}

QUORVANE_TEST_MAIN(QCoreApplication, ShippedLibraryTest)
#include "shipped_library_test.moc"
