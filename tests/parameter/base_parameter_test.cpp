// One parameter: legal names, creation, and writes to scalars and elements, with the text of each
// refusal; an array too large for memory meets an allocator that says no.
#include "parameter/base_parameter.h"

#include "parameter/reserved_words.h"
#include "parameter_support.h"
#include "support/staged_main.h"

#include <QSet>

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>
#include <thread>
#include <type_traits>
#include <vector>

// One request for memory above a gibibyte fails here, whatever the machine would have promised.
void *operator new(std::size_t size) {
    void *const memory = size <= (std::size_t(1) << 30) ? std::malloc(size) : nullptr;
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void operator delete(void *memory) noexcept {
    std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using support::cell;

const QString sentinel = QStringLiteral("m_m_nullname");

QString limitMessage(const char *element, const char *limit) {
    return QStringLiteral("修改参数:%1 时,遇到了数组长度超限(%2)问题。")
        .arg(QLatin1String(element), QLatin1String(limit));
}

// A parameter together with the texts that it has sent.
struct Listened {
    BaseParameter parameter;
    QStringList messages;

    Listened() {
        QObject::connect(&parameter, &BaseParameter::SendMessage,
                         [this](const QString &message) { messages << message; });
    }

    QList<int> values() const {
        QList<int> numbers;
        for (const YsDate &element : parameter.m_values)
            numbers.append(element.value.toInt());
        return numbers;
    }
};

} // namespace

class BaseParameterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void hasTheOneSignal();
    void operationsTakeTheirArgumentsByValue();
    void startsUncreated();
    void fieldsStandInTheirOrder();
    void nameIsLegal_data();
    void nameIsLegal();
    void reservedWordsAreNinetySeven();
    void reservedWord_data();
    void reservedWord();
    void namesAreAnsweredOnManyThreads();
    void scalarIsCreatedByItsFirstWrite();
    void arrayIsCreatedWithCopiesOfItsFirstWrite();
    void arrayOfOneElementIsNoScalar();
    void arraySizeBelowOneHoldsNoElements_data();
    void arraySizeBelowOneHoldsNoElements();
    void arrayTooLargeForMemoryStaysUncreated_data();
    void arrayTooLargeForMemoryStaysUncreated();
    void illegalNameCreatesNothing_data();
    void illegalNameCreatesNothing();
    void sentinelIsALegalNameButCountsAsUncreated();
    void modificationBeforeCreationIsRefused();
    void scalarIsReplaced();
    void valueOfTheSameKindMayBeOfAnotherType();
    void scalarOfAnotherKindIsRefused();
    void scalarWriteShrinksAnArray();
    void scalarWriteToAnArrayIsComparedWithItsFirstElement();
    void scalarWriteToAnArrayOfNoElementsIsAccepted();
    void elementIsReplacedAtItsPlace();
    void elementOfAnotherKindIsRefused();
    void indexBeyondTheElementsIsRefused_data();
    void indexBeyondTheElementsIsRefused();
    void elementWriteToAScalar();
    void nameOfAWriteIsNotComparedWithItsOwn();
    void ownElementMayBeWritten();
};

void BaseParameterTest::hasTheOneSignal() {
    QCOMPARE(support::ownMethods(BaseParameter::staticMetaObject),
             QStringList("public signal void SendMessage(QString)"));
    QCOMPARE(BaseParameter::staticMetaObject.superClass(), &QObject::staticMetaObject);
}

void BaseParameterTest::operationsTakeTheirArgumentsByValue() {
    using Create = void (BaseParameter::*)(QString, YsDate);
    using CreateArray = void (BaseParameter::*)(QString, YsDate, qint32);
    using Modify = bool (BaseParameter::*)(QString, YsDate);
    using ModifyElement = bool (BaseParameter::*)(QString, YsDate, qint32);
    QVERIFY((std::is_same_v<decltype(&BaseParameter::ParaCreate), Create>));
    QVERIFY((std::is_same_v<decltype(&BaseParameter::ParaCreateArray), CreateArray>));
    QVERIFY((std::is_same_v<decltype(&BaseParameter::ParaModify), Modify>));
    QVERIFY((std::is_same_v<decltype(&BaseParameter::ParaModifyElement), ModifyElement>));
    QVERIFY((std::is_same_v<decltype(&BaseParameter::ParaNameIsLegal), bool (*)(QString)>));
}

void BaseParameterTest::startsUncreated() {
    const BaseParameter parameter;
    QVERIFY(parameter.m_values.empty());
    QCOMPARE(parameter.m_name, sentinel);
    QCOMPARE(parameter.m_arraySize, 0);
    QCOMPARE(parameter.parent(), nullptr);
}

void BaseParameterTest::fieldsStandInTheirOrder() {
    const BaseParameter parameter;
    const auto address = [](const auto &field) { return reinterpret_cast<quintptr>(&field); };
    QVERIFY(address(parameter.m_values) < address(parameter.m_name));
    QVERIFY(address(parameter.m_name) < address(parameter.m_arraySize));
}

// The names.

void BaseParameterTest::nameIsLegal_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("legal");
    const auto row = [](const char *title, const QString &name, bool legal) {
        QTest::newRow(title) << name << legal;
    };
    row("a letter", "a", true);
    row("an underscore", "_", true);
    row("underscore, letter, digit", "_a1", true);
    row("both cases and digits", "aZ09_", true);
    row("a reserved word in another case", "Class", true);
    row("a reserved word as a part", "classes", true);
    row("the sentinel", sentinel, true);
    row("a final line feed", "a\n", true);
    row("a reserved word and a final line feed", "class\n", true);
    row("a million letters", QString(1000000, 'a'), true);
    row("empty", "", false);
    row("null", QString(), false);
    row("a leading digit", "1a", false);
    row("a hyphen", "a-b", false);
    row("a blank", "a b", false);
    row("a leading blank", " a", false);
    row("a final blank", "a ", false);
    row("a final carriage return", "a\r", false);
    row("two final line feeds", "a\n\n", false);
    row("a line feed alone", "\n", false);
    row("a line feed inside", "a\nb", false);
    row("a closing bracket", "a]", false);
    row("an index", "a[1]", false);
    row("a letter beyond ASCII first", QStringLiteral("é"), false);
    row("a letter beyond ASCII later", QStringLiteral("aé"), false);
    row("a Chinese name", QStringLiteral("速度"), false);
    row("a digit beyond ASCII", QStringLiteral("a٣"), false);
    row("a full-width letter", QStringLiteral("ａ"), false);
    row("a NUL inside", QStringLiteral("a") + QChar(0) + QStringLiteral("b"), false);
    row("half of a surrogate pair", QStringLiteral("a") + QChar(0xD800), false);
    row("a million letters and a hyphen", QString(1000000, 'a') + '-', false);
    row("a million digits", QString(1000000, '1'), false);
    row("a reserved word", "class", false);
}

void BaseParameterTest::nameIsLegal() {
    QFETCH(QString, name);
    QFETCH(bool, legal);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(BaseParameter::ParaNameIsLegal(name), legal);
    QVERIFY2(timer.elapsed() < 1000, "a name is answered at once, however long it is");
}

void BaseParameterTest::reservedWordsAreNinetySeven() {
    QSet<QString> distinct;
    for (const char *word : reservedWords)
        distinct.insert(QLatin1String(word));
    QCOMPARE(int(std::size(reservedWords)), 97);
    QCOMPARE(distinct.size(), 97);
}

void BaseParameterTest::reservedWord_data() {
    QTest::addColumn<QString>("word");
    const QString all = QStringLiteral(
        "alignas alignof and and_eq asm atomic_cancel atomic_commit atomic_noexcept auto "
        "bitand "
        "bitor bool break case catch char char8_t char16_t char32_t class compl concept const "
        "consteval constexpr constinit const_cast continue co_await co_return co_yield "
        "decltype "
        "default delete do double dynamic_cast else enum explicit export extern false float "
        "for "
        "friend goto if inline int long mutable namespace new noexcept not not_eq nullptr "
        "operator or or_eq private protected public reflexpr register reinterpret_cast "
        "requires "
        "return short signed sizeof static static_assert static_cast struct switch "
        "synchronized "
        "template this thread_local throw true try typedef typeid typename union unsigned "
        "using "
        "virtual void volatile wchar_t while xor xor_eq");
    for (const QString &word : all.split(' '))
        QTest::newRow(qPrintable(word)) << word;
}

void BaseParameterTest::reservedWord() {
    QFETCH(QString, word);
    QVERIFY(!BaseParameter::ParaNameIsLegal(word));
    QVERIFY(BaseParameter::ParaNameIsLegal(word + '_'));
    QVERIFY(BaseParameter::ParaNameIsLegal(word.toUpper()));
}

void BaseParameterTest::namesAreAnsweredOnManyThreads() {
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&right] {
            right += !BaseParameter::ParaNameIsLegal(QStringLiteral("xor"));
            right += BaseParameter::ParaNameIsLegal(QStringLiteral("speed"));
        });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(right.load(), 16);
}

// Creation.

void BaseParameterTest::scalarIsCreatedByItsFirstWrite() {
    Listened l;
    l.parameter.ParaCreate("speed", cell(7, 3));
    QCOMPARE(l.values(), QList<int>{7});
    QCOMPARE(l.parameter.m_values.front().kind, 3);
    QCOMPARE(l.parameter.m_name, QStringLiteral("speed"));
    QCOMPARE(l.parameter.m_arraySize, 0);
    QCOMPARE(l.messages, QStringList());
}

void BaseParameterTest::arrayIsCreatedWithCopiesOfItsFirstWrite() {
    Listened l;
    l.parameter.ParaCreateArray("a", cell(9, 3), 3);
    QCOMPARE(l.values(), (QList<int>{9, 9, 9}));
    for (const YsDate &element : l.parameter.m_values)
        QCOMPARE(element.kind, 3);
    QCOMPARE(l.parameter.m_name, QStringLiteral("a"));
    QCOMPARE(l.parameter.m_arraySize, 3);
    l.parameter.ParaCreateArray("a", cell(1, 3), 3);
    QCOMPARE(l.messages, QStringList(limitMessage("a[3]", "2")));
}

void BaseParameterTest::arrayOfOneElementIsNoScalar() {
    Listened l;
    l.parameter.ParaCreateArray("a", cell(9), 1);
    QCOMPARE(l.values(), QList<int>{9});
    QCOMPARE(l.parameter.m_arraySize, 1);
    l.parameter.ParaCreateArray("a", cell(8), 0);
    QCOMPARE(l.values(), QList<int>{8});
    QCOMPARE(l.messages, QStringList());
}

void BaseParameterTest::arraySizeBelowOneHoldsNoElements_data() {
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("message");
    QTest::newRow("zero") << 0 << limitMessage("a[0]", "-1");
    QTest::newRow("minus one") << -1 << limitMessage("a[0]", "-2");
    QTest::newRow("the least") << std::numeric_limits<int>::min()
                               << limitMessage("a[0]", "-2147483649");
}

void BaseParameterTest::arraySizeBelowOneHoldsNoElements() {
    QFETCH(int, size);
    QFETCH(QString, message);
    Listened l;
    l.parameter.ParaCreateArray("a", cell(1), size);
    QCOMPARE(l.parameter.m_name, QStringLiteral("a"));
    QCOMPARE(l.parameter.m_arraySize, size);
    QVERIFY(l.parameter.m_values.empty());
    QCOMPARE(l.messages, QStringList());
    l.parameter.ParaCreateArray("a", cell(1), 0);
    QVERIFY(l.parameter.ParaModifyElement("a", cell(1), 0));
    QCOMPARE(l.messages, QStringList({message, message}));
    QVERIFY(l.parameter.m_values.empty());
}

void BaseParameterTest::arrayTooLargeForMemoryStaysUncreated_data() {
    QTest::addColumn<int>("size");
    QTest::newRow("the greatest size") << std::numeric_limits<int>::max();
    QTest::newRow("a hundred million") << 100000000;
}

void BaseParameterTest::arrayTooLargeForMemoryStaysUncreated() {
    QFETCH(int, size);
    Listened l;
    l.parameter.ParaCreateArray("a", cell(1), size);
    QCOMPARE(l.parameter.m_name, sentinel);
    QCOMPARE(l.parameter.m_arraySize, 0);
    QVERIFY(l.parameter.m_values.empty());
    QCOMPARE(l.messages, QStringList(limitMessage(qPrintable(QString("a[%1]").arg(size)), "-1")));
    l.parameter.ParaCreateArray("a", cell(1), 2);
    QCOMPARE(l.values(), (QList<int>{1, 1}));
    QCOMPARE(l.messages.size(), 1);
}

void BaseParameterTest::illegalNameCreatesNothing_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("message");
    QTest::newRow("a hyphen") << "a-b" << QStringLiteral("创建参数:a-b 时,遇到了参数名非法问题。");
    QTest::newRow("a reserved word")
        << "class" << QStringLiteral("创建参数:class 时,遇到了参数名非法问题。");
    QTest::newRow("empty") << "" << QStringLiteral("创建参数: 时,遇到了参数名非法问题。");
    QTest::newRow("a placeholder")
        << "%1%2" << QStringLiteral("创建参数:%1%2 时,遇到了参数名非法问题。");
}

void BaseParameterTest::illegalNameCreatesNothing() {
    QFETCH(QString, name);
    QFETCH(QString, message);
    Listened l;
    l.parameter.ParaCreate(name, cell(1));
    l.parameter.ParaCreateArray(name, cell(1), 3);
    QCOMPARE(l.messages, QStringList({message, message}));
    QCOMPARE(l.parameter.m_name, sentinel);
    QCOMPARE(l.parameter.m_arraySize, 0);
    QVERIFY(l.parameter.m_values.empty());
}

void BaseParameterTest::sentinelIsALegalNameButCountsAsUncreated() {
    Listened l;
    l.parameter.ParaCreateArray(sentinel, cell(1, 1), 2);
    QCOMPARE(l.values(), (QList<int>{1, 1}));
    QCOMPARE(l.parameter.m_arraySize, 2);
    QVERIFY(l.parameter.ParaModify(sentinel, cell(2, 1)));
    QCOMPARE(l.messages,
             QStringList(QStringLiteral("修改参数:m_m_nullname 时,遇到了参数未创建问题。")));
    l.parameter.ParaCreate(sentinel, cell(3, 2)); // Another kind: it is created anew.
    QCOMPARE(l.values(), QList<int>{3});
    QCOMPARE(l.parameter.m_arraySize, 2);
    l.parameter.ParaCreate("speed", cell(4, 3));
    QCOMPARE(l.values(), QList<int>{4});
    QCOMPARE(l.parameter.m_name, QStringLiteral("speed"));
    QCOMPARE(l.messages.size(), 1);
}

// Modification.

void BaseParameterTest::modificationBeforeCreationIsRefused() {
    Listened l;
    const QString message = QStringLiteral("修改参数:speed 时,遇到了参数未创建问题。");
    QVERIFY(l.parameter.ParaModify("speed", cell(1)));
    QVERIFY(l.parameter.ParaModifyElement("speed", cell(1), 0));
    QCOMPARE(l.messages, QStringList({message, message}));
    QCOMPARE(l.parameter.m_name, sentinel);
    QVERIFY(l.parameter.m_values.empty());
}

void BaseParameterTest::scalarIsReplaced() {
    Listened l;
    l.parameter.ParaCreate("speed", cell(1));
    l.parameter.ParaCreate("speed", cell(2));
    QCOMPARE(l.values(), QList<int>{2});
    QVERIFY(!l.parameter.ParaModify("speed", cell(3)));
    QCOMPARE(l.values(), QList<int>{3});
    QCOMPARE(l.messages, QStringList());
}

// Also for values that are told apart by nothing else: the value itself is never looked at.
void BaseParameterTest::valueOfTheSameKindMayBeOfAnotherType() {
    Listened l;
    l.parameter.ParaCreate("speed", cell(1, 4));
    QVERIFY(!l.parameter.ParaModify("speed", cell(QStringLiteral("fast"), 4)));
    QCOMPARE(l.parameter.m_values.front().value, QVariant(QStringLiteral("fast")));
}

void BaseParameterTest::scalarOfAnotherKindIsRefused() {
    Listened l;
    const QString message = QStringLiteral("修改参数:speed 时,遇到了参数格式不一致问题");
    l.parameter.ParaCreate("speed", cell(1, 3));
    l.parameter.ParaCreate("speed", cell(2, 4));
    QVERIFY(l.parameter.ParaModify("speed", cell(2, 5)));
    QCOMPARE(l.messages, QStringList({message, message}));
    QCOMPARE(l.values(), QList<int>{1});
    QCOMPARE(l.parameter.m_values.front().kind, 3);
}

void BaseParameterTest::scalarWriteShrinksAnArray() {
    Listened l;
    l.parameter.ParaCreateArray("a", cell(1), 3);
    QVERIFY(!l.parameter.ParaModify("a", cell(2)));
    QCOMPARE(l.values(), QList<int>{2});
    QCOMPARE(l.parameter.m_arraySize, 3);
    QVERIFY(l.parameter.ParaModifyElement("a", cell(3), 1));
    QCOMPARE(l.messages, QStringList(limitMessage("a[1]", "2")));
    QVERIFY(!l.parameter.ParaModifyElement("a", cell(4), 0));
    QCOMPARE(l.values(), QList<int>{4});
}

void BaseParameterTest::scalarWriteToAnArrayIsComparedWithItsFirstElement() {
    Listened l;
    l.parameter.ParaCreateArray("a", cell(1, 3), 2);
    l.parameter.m_values[1].kind = 4;
    QVERIFY(l.parameter.ParaModify("a", cell(2, 4)));
    QCOMPARE(l.values(), (QList<int>{1, 1}));
    QVERIFY(!l.parameter.ParaModify("a", cell(2, 3)));
    QCOMPARE(l.values(), QList<int>{2});
}

void BaseParameterTest::scalarWriteToAnArrayOfNoElementsIsAccepted() {
    Listened l;
    l.parameter.ParaCreateArray("a", cell(1, 1), 0);
    QVERIFY(!l.parameter.ParaModify("a", cell(2, 9)));
    QCOMPARE(l.values(), QList<int>{2});
    QCOMPARE(l.parameter.m_values.front().kind, 9);
    QCOMPARE(l.parameter.m_arraySize, 0);
    QCOMPARE(l.messages, QStringList());
}

void BaseParameterTest::elementIsReplacedAtItsPlace() {
    Listened l;
    l.parameter.ParaCreateArray("a", cell(1), 3);
    l.parameter.ParaCreateArray("a", cell(2), 1);
    QCOMPARE(l.values(), (QList<int>{1, 2, 1}));
    QVERIFY(!l.parameter.ParaModifyElement("a", cell(3), 2));
    QVERIFY(!l.parameter.ParaModifyElement("a", cell(4), 0));
    QCOMPARE(l.values(), (QList<int>{4, 2, 3}));
    QCOMPARE(l.messages, QStringList());
}

// The kind is compared at the element, and the message names the variable without the index.
void BaseParameterTest::elementOfAnotherKindIsRefused() {
    Listened l;
    l.parameter.ParaCreateArray("a", cell(1, 3), 3);
    l.parameter.m_values[1].kind = 4;
    QVERIFY(l.parameter.ParaModifyElement("a", cell(2, 4), 0));
    QVERIFY(l.parameter.ParaModifyElement("a", cell(2, 3), 1));
    QVERIFY(!l.parameter.ParaModifyElement("a", cell(2, 4), 1));
    const QString message = QStringLiteral("修改参数:a 时,遇到了参数格式不一致问题");
    QCOMPARE(l.messages, QStringList({message, message}));
    QCOMPARE(l.values(), (QList<int>{1, 2, 1}));
}

void BaseParameterTest::indexBeyondTheElementsIsRefused_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("message");
    QTest::newRow("the size") << 3 << limitMessage("a[3]", "2");
    QTest::newRow("the greatest") << std::numeric_limits<int>::max()
                                  << limitMessage("a[2147483647]", "2");
    QTest::newRow("minus one") << -1 << limitMessage("a[-1]", "2");
    QTest::newRow("the least") << std::numeric_limits<int>::min()
                               << limitMessage("a[-2147483648]", "2");
}

void BaseParameterTest::indexBeyondTheElementsIsRefused() {
    QFETCH(int, index);
    QFETCH(QString, message);
    Listened l;
    l.parameter.ParaCreateArray("a", cell(1), 3);
    QVERIFY(l.parameter.ParaModifyElement("a", cell(2), index));
    l.parameter.ParaCreateArray("a", cell(2), index);
    QCOMPARE(l.messages, QStringList({message, message}));
    QCOMPARE(l.values(), (QList<int>{1, 1, 1}));
}

void BaseParameterTest::elementWriteToAScalar() {
    Listened l;
    l.parameter.ParaCreate("speed", cell(1));
    QVERIFY(!l.parameter.ParaModifyElement("speed", cell(2), 0));
    QVERIFY(l.parameter.ParaModifyElement("speed", cell(3), 1));
    QCOMPARE(l.values(), QList<int>{2});
    QCOMPARE(l.messages, QStringList(limitMessage("speed[1]", "-1")));
}

// The name of a later call only serves its message.
void BaseParameterTest::nameOfAWriteIsNotComparedWithItsOwn() {
    Listened l;
    l.parameter.ParaCreate("speed", cell(1, 1));
    l.parameter.ParaCreate("a-b", cell(2, 1));
    QCOMPARE(l.values(), QList<int>{2});
    QCOMPARE(l.parameter.m_name, QStringLiteral("speed"));
    QVERIFY(l.parameter.ParaModify("a-b", cell(3, 2)));
    QCOMPARE(l.messages, QStringList(QStringLiteral("修改参数:a-b 时,遇到了参数格式不一致问题")));
}

void BaseParameterTest::ownElementMayBeWritten() {
    Listened l;
    l.parameter.ParaCreateArray("a", cell(8), 3);
    l.parameter.m_values[2].value = 9;
    QVERIFY(!l.parameter.ParaModifyElement("a", l.parameter.m_values[2], 0));
    QCOMPARE(l.values(), (QList<int>{9, 8, 9}));
    QVERIFY(!l.parameter.ParaModify("a", l.parameter.m_values[2]));
    QCOMPARE(l.values(), QList<int>{9});
}

QUORVANE_TEST_MAIN(QCoreApplication, BaseParameterTest)
#include "base_parameter_test.moc"
