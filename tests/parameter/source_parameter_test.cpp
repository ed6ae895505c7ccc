// The store on the thread that creates it: names, writes, deletes, messages. Its life on a thread
// of its own is source_parameter_threads_test.cpp.
#include "parameter/source_parameter.h"

#include "parameter_support.h"
#include "support/staged_main.h"

#include <QRegularExpression>
#include <QThread>

namespace {

using support::cell;

// An unthreaded store with the texts that it has sent, and all the objects that it has ever held:
// the store frees none of them, so this does.
class Store {
public:
    Store() {
        QObject::connect(&store, &SourceParameter::SendMessage,
                         [this](const QString &message) { messages << message; });
    }
    ~Store() { qDeleteAll(made); }

    void write(const QString &name, const YsDate &value) {
        Q_EMIT store.ParaWriteSigDate(name, value);
        settle();
    }
    void write(const QString &name, int value) { write(name, cell(value)); }
    void remove(const QString &name) {
        Q_EMIT store.ParaDeleteSigDate(name);
        settle();
    }
    void settle() {
        QCoreApplication::sendPostedEvents(&store);
        for (BaseParameter *parameter : qAsConst(store.m_parameters))
            made.insert(parameter);
    }
    BaseParameter *parameter(const QString &name) const {
        return store.m_parameters.value(store.m_names.indexOf(name));
    }
    // The elements of a variable, as "1 2 3"; "none" if the store does not hold it.
    QString values(const QString &name) const {
        if (parameter(name) == nullptr)
            return QStringLiteral("none");
        QStringList texts;
        for (const YsDate &element : parameter(name)->m_values)
            texts.append(element.value.toString());
        return texts.join(QLatin1Char(' '));
    }

    SourceParameter store{false};
    QStringList messages;
    QSet<BaseParameter *> made;
};

QStringList caughtLines;

void catchLine(QtMsgType type, const QMessageLogContext &, const QString &line) {
    caughtLines.append(QString::number(type) + ' ' + line);
}

} // namespace

class SourceParameterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void valueThatWasNeverCopiedIsNotCarried();
    void emittingANamedValueRegistersIt();
    void hasItsSignalsAndSlotsInOrder();
    void fieldsStandInTheirOrder();
    void unthreadedStoreLivesWhereItWasMade();
    void writesAndDeletesAreNeverDoneInsideTheEmission();
    void write_data();
    void write();
    void secondWriteReplacesTheValueOfTheSameObject();
    void valueOfAnotherKindIsRefusedThroughTheStore();
    void arrayOfNoElements();
    void limitStaysThatOfTheCreationWhenAnArrayHasShrunk();
    void illegalNameStaysAsAnUncreatedVariable();
    void remove_data();
    void remove();
    void secondDeleteIsRefused();
    void deletedVariableStaysAllocatedAndConnected();
    void endOfTheStoreFreesNoVariable();
    void firstOfEqualNamesIsFound();
    void nameOfAMillionCharactersIsWrittenAndDeletedAtOnce();
    void threadDiagnosticIsPosted();
};

// Stands first, while no cell has been copied in this process.
void SourceParameterTest::valueThatWasNeverCopiedIsNotCarried() {
    SourceParameter store(false);
    QCOMPARE(QMetaType::type("YsDate"), int(QMetaType::UnknownType));
    QTest::ignoreMessage(QtWarningMsg,
                         "QObject::connect: Cannot queue arguments of type 'YsDate'\n(Make sure "
                         "'YsDate' is registered using qRegisterMetaType().)");
    Q_EMIT store.ParaWriteSigDate("speed", YsDate());
    QCoreApplication::sendPostedEvents(&store);
    QCOMPARE(store.m_names, QStringList());
}

void SourceParameterTest::emittingANamedValueRegistersIt() {
    SourceParameter store(false);
    const YsDate named;
    Q_EMIT store.ParaWriteSigDate("speed", named);
    QCoreApplication::sendPostedEvents(&store);
    QCOMPARE(store.m_names, QStringList("speed"));
    qDeleteAll(store.m_parameters);
}

void SourceParameterTest::hasItsSignalsAndSlotsInOrder() {
    QCOMPARE(support::ownMethods(SourceParameter::staticMetaObject),
             QStringList({"public signal void ParaWriteSigDate(QString,YsDate)",
                          "public signal void ParaDeleteSigDate(QString)",
                          "public signal void SendMessage(QString)",
                          "public signal void PrintThreadIDSignals()",
                          "public slot void PrintThreadIDSlots()",
                          "private slot void ParaWriteSloDate(QString,YsDate)",
                          "private slot void ParaDeleteSloDate(QString)"}));
    QCOMPARE(SourceParameter::staticMetaObject.superClass(), &QObject::staticMetaObject);
}

void SourceParameterTest::fieldsStandInTheirOrder() {
    const SourceParameter store(false);
    const auto address = [](const auto &field) { return reinterpret_cast<quintptr>(&field); };
    QVERIFY(address(store.m_parameters) < address(store.m_names));
    QVERIFY(address(store.m_names) < address(store.m_thread));
    QVERIFY(address(store.m_thread) < address(store.m_threaded));
}

void SourceParameterTest::unthreadedStoreLivesWhereItWasMade() {
    const SourceParameter store(false);
    QCOMPARE(store.m_thread, nullptr);
    QVERIFY(!store.m_threaded);
    QCOMPARE(store.thread(), QThread::currentThread());
    QCOMPARE(store.parent(), nullptr);
    QVERIFY(store.m_parameters.isEmpty());
    QVERIFY(store.m_names.isEmpty());
}

void SourceParameterTest::writesAndDeletesAreNeverDoneInsideTheEmission() {
    Store s;
    Q_EMIT s.store.ParaWriteSigDate("speed", cell(1));
    QCOMPARE(s.store.m_names, QStringList());
    s.settle();
    QCOMPARE(s.store.m_names, QStringList("speed"));
    Q_EMIT s.store.ParaDeleteSigDate("speed");
    QCOMPARE(s.store.m_names, QStringList("speed"));
    s.settle();
    QCOMPARE(s.store.m_names, QStringList());
}

// Where a write goes: after a[3] has made an array of three and speed a scalar.

void SourceParameterTest::write_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("array");
    QTest::addColumn<QString>("scalar");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("messages");
    const QStringList names{"a", "speed"};
    const auto row = [](const char *title, const QString &name, const QString &array,
                        const QString &scalar, const QStringList &held,
                        const QStringList &messages) {
        QTest::newRow(title) << name << array << scalar << held << messages;
    };
    const auto limit = [](const QString &element, const QString &greatest) {
        return QStringList(
            QStringLiteral("修改参数:%1 时,遇到了数组长度超限(%2)问题。").arg(element, greatest));
    };
    const auto unparsed = [](const QString &name) {
        return QStringList(QStringLiteral("写入变量：%1 时，参数名数组定位获取失败").arg(name));
    };
    const auto illegal = [](const QString &name) {
        return QStringList(QStringLiteral("创建参数:%1 时,遇到了参数名非法问题。").arg(name));
    };
    row("the same name replaces the value", "speed", "1 1 1", "9", names, {});
    row("an index replaces the element", "a[1]", "1 9 1", "2", names, {});
    row("index zero is the first element", "a[0]", "9 1 1", "2", names, {});
    row("the plain name shrinks the array", "a", "9", "2", names, {});
    row("an index on a scalar is its element", "speed[0]", "1 1 1", "9", names, {});
    row("without a closing bracket", "a[1", "1 9 1", "2", names, {});
    row("with text after the bracket", "a[1]b", "1 9 1", "2", names, {});
    row("with a second index", "a[1][2]", "1 9 1", "2", names, {});
    row("with an index inside the index", "a[1[2]]", "1 9 1", "2", names, {});
    row("with a second closing bracket", "a[1]]", "1 9 1", "2", names, {});
    row("with blanks around the index", "a[ 1 ]", "1 9 1", "2", names, {});
    row("with a sign and zeros", "a[+01]", "1 9 1", "2", names, {});
    row("the size as the index", "a[3]", "1 1 1", "2", names, limit("a[3]", "2"));
    row("a negative index", "a[-1]", "1 1 1", "2", names, limit("a[-1]", "2"));
    row("an index on a scalar beyond it", "speed[1]", "1 1 1", "2", names, limit("speed[1]", "-1"));
    row("letters as the index", "a[x]", "1 1 1", "2", names, unparsed("a[x]"));
    row("no index", "a[]", "1 1 1", "2", names, unparsed("a[]"));
    row("no index and no closing bracket", "a[", "1 1 1", "2", names, unparsed("a["));
    row("a second bracket at once", "a[[1]]", "1 1 1", "2", names, unparsed("a[[1]]"));
    row("a fraction", "a[1.0]", "1 1 1", "2", names, unparsed("a[1.0]"));
    row("a hexadecimal index", "a[0x1]", "1 1 1", "2", names, unparsed("a[0x1]"));
    row("an index beyond 32 bits", "a[2147483648]", "1 1 1", "2", names, unparsed("a[2147483648]"));
    row("letters as the index of a new name", "b[x]", "1 1 1", "2", names, unparsed("b[x]"));
    row("a placeholder in a broken index", "%1[%2]", "1 1 1", "2", names, unparsed("%1[%2]"));
    row("a closing bracket alone is a plain name", "a]", "1 1 1", "2", names + QStringList("a]"),
        illegal("a]"));
    row("the closing bracket before the opening one", "a][1]", "1 1 1", "2",
        names + QStringList("a]"), illegal("a]"));
    row("an illegal name with an index is told without it", "1a[3]", "1 1 1", "2",
        names + QStringList("1a"), illegal("1a"));
    row("an empty name", "", "1 1 1", "2", names + QStringList(""), illegal(""));
    row("an index alone", "[3]", "1 1 1", "2", names + QStringList(""), illegal(""));
    row("a name in another case", "A", "1 1 1", "2", names + QStringList("A"), {});
}

void SourceParameterTest::write() {
    QFETCH(QString, name);
    QFETCH(QString, array);
    QFETCH(QString, scalar);
    QFETCH(QStringList, names);
    QFETCH(QStringList, messages);
    Store s;
    s.write("a[3]", 1);
    s.write("speed", 2);
    QCOMPARE(s.values("a"), QStringLiteral("1 1 1"));
    s.write(name, 9);
    QCOMPARE(s.values("a"), array);
    QCOMPARE(s.values("speed"), scalar);
    QCOMPARE(s.store.m_names, names);
    QCOMPARE(s.store.m_parameters.size(), names.size());
    QCOMPARE(s.messages, messages);
}

void SourceParameterTest::secondWriteReplacesTheValueOfTheSameObject() {
    Store s;
    s.write("speed", 1);
    BaseParameter *const first = s.parameter("speed");
    s.write("speed", 2);
    QCOMPARE(s.parameter("speed"), first);
    QCOMPARE(first->m_values.size(), std::size_t(1));
    QCOMPARE(first->parent(), nullptr);
    QCOMPARE(s.values("speed"), QStringLiteral("2"));
}

void SourceParameterTest::valueOfAnotherKindIsRefusedThroughTheStore() {
    Store s;
    s.write("speed", cell(1, 3));
    s.write("speed", cell(2, 4));
    QCOMPARE(s.values("speed"), QStringLiteral("1"));
    QCOMPARE(s.messages, QStringList(QStringLiteral("修改参数:speed 时,遇到了参数格式不一致问题")));
}

void SourceParameterTest::arrayOfNoElements() {
    Store s;
    s.write("a[0]", 1);
    s.write("a[0]", 2);
    QCOMPARE(s.messages,
             QStringList(QStringLiteral("修改参数:a[0] 时,遇到了数组长度超限(-1)问题。")));
    s.write("a", cell(3, 8));
    QCOMPARE(s.values("a"), QStringLiteral("3"));
}

void SourceParameterTest::limitStaysThatOfTheCreationWhenAnArrayHasShrunk() {
    Store s;
    s.write("a[3]", 1);
    s.write("a", 2);
    s.write("a[1]", 3);
    QCOMPARE(s.values("a"), QStringLiteral("2"));
    QCOMPARE(s.messages,
             QStringList(QStringLiteral("修改参数:a[1] 时,遇到了数组长度超限(2)问题。")));
}

// The name stays in the lists, every write tries the creation again, a delete removes it.
void SourceParameterTest::illegalNameStaysAsAnUncreatedVariable() {
    Store s;
    s.write("class", 1);
    s.write("class", 2);
    s.write("class[2]", 3);
    const QString illegal = QStringLiteral("创建参数:class 时,遇到了参数名非法问题。");
    QCOMPARE(s.messages, QStringList({illegal, illegal, illegal}));
    QCOMPARE(s.store.m_names, QStringList("class"));
    QCOMPARE(s.parameter("class")->m_name, QStringLiteral("m_m_nullname"));
    QCOMPARE(s.values("class"), QString());
    s.remove("class");
    QCOMPARE(s.store.m_names, QStringList());
    QCOMPARE(s.store.m_parameters.size(), 0);
    QCOMPARE(s.messages.size(), 3);
}

void SourceParameterTest::remove_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("messages");
    const QStringList none;
    const auto absent = [](const QString &name) {
        return QStringList(QStringLiteral("删除变量：%1 时，变量未创建").arg(name));
    };
    QTest::newRow("the first") << "a" << QStringList{"b", "c"} << none;
    QTest::newRow("the middle one") << "b" << QStringList{"a", "c"} << none;
    QTest::newRow("the last") << "c" << QStringList{"a", "b"} << none;
    QTest::newRow("an index is ignored") << "b[2]" << QStringList{"a", "c"} << none;
    QTest::newRow("a broken index too") << "b[x" << QStringList{"a", "c"} << none;
    QTest::newRow("an unknown name") << "d" << QStringList{"a", "b", "c"} << absent("d");
    QTest::newRow("an unknown name with its index")
        << "d[2]" << QStringList{"a", "b", "c"} << absent("d[2]");
    QTest::newRow("an empty name") << "" << QStringList{"a", "b", "c"} << absent("");
    QTest::newRow("a placeholder") << "%1" << QStringList{"a", "b", "c"} << absent("%1");
}

void SourceParameterTest::remove() {
    QFETCH(QString, name);
    QFETCH(QStringList, names);
    QFETCH(QStringList, messages);
    Store s;
    s.write("a", 1);
    s.write("b[3]", 2);
    s.write("c", 3);
    s.remove(name);
    QCOMPARE(s.store.m_names, names);
    QCOMPARE(s.messages, messages);
    QStringList inOrder;
    for (const BaseParameter *parameter : qAsConst(s.store.m_parameters))
        inOrder.append(parameter->m_name);
    QCOMPARE(inOrder, names);
}

void SourceParameterTest::secondDeleteIsRefused() {
    Store s;
    s.write("a", 1);
    s.remove("a");
    QCOMPARE(s.messages, QStringList());
    s.remove("a");
    QCOMPARE(s.messages, QStringList(QStringLiteral("删除变量：a 时，变量未创建")));
}

void SourceParameterTest::deletedVariableStaysAllocatedAndConnected() {
    Store s;
    s.write("a", cell(1, 1));
    const QPointer<BaseParameter> first = s.parameter("a");
    s.remove("a");
    QVERIFY(!first.isNull());
    s.write("a", cell(2, 2)); // Another kind: this is a new variable.
    QVERIFY(s.parameter("a") != first.data());
    QCOMPARE(s.values("a"), QStringLiteral("2"));
    QCOMPARE(s.messages, QStringList());
    Q_EMIT first->SendMessage("from the old one");
    QCOMPARE(s.messages, QStringList("from the old one"));
}

void SourceParameterTest::endOfTheStoreFreesNoVariable() {
    QPointer<BaseParameter> parameter;
    {
        SourceParameter store(false);
        Q_EMIT store.ParaWriteSigDate("a", cell(1));
        QCoreApplication::sendPostedEvents(&store);
        parameter = store.m_parameters.value(0);
    }
    QVERIFY(!parameter.isNull());
    delete parameter.data();
}

void SourceParameterTest::firstOfEqualNamesIsFound() {
    Store s;
    s.write("a", 1);
    s.write("b", 2);
    s.store.m_names[1] = "a";
    s.write("a", 3);
    QCOMPARE(s.store.m_parameters.at(0)->m_values.front().value, QVariant(3));
    QCOMPARE(s.store.m_parameters.at(1)->m_values.front().value, QVariant(2));
}

void SourceParameterTest::nameOfAMillionCharactersIsWrittenAndDeletedAtOnce() {
    Store s;
    const QString name(1000000, 'n');
    QElapsedTimer timer;
    timer.start();
    s.write(name, 1);
    s.write(name + "[7]", 2);
    s.remove(name);
    s.write(name + "-", 3);
    QVERIFY(timer.elapsed() < 2000);
    QCOMPARE(s.messages.size(), 2);
    QCOMPARE(s.messages.at(0), QStringLiteral("修改参数:") + name +
                                   QStringLiteral("[7] 时,遇到了数组长度超限(-1)问题。"));
    QCOMPARE(s.messages.at(1),
             QStringLiteral("创建参数:") + name + QStringLiteral("- 时,遇到了参数名非法问题。"));
}

// Asked by the signal (at once) or by the slot: one debug line, from the event loop.
void SourceParameterTest::threadDiagnosticIsPosted() {
    SourceParameter store(false);
    caughtLines.clear();
    const QtMessageHandler before = qInstallMessageHandler(catchLine);
    Q_EMIT store.PrintThreadIDSignals();
    store.PrintThreadIDSlots();
    const int duringTheCalls = caughtLines.size();
    QCoreApplication::sendPostedEvents(&store);
    qInstallMessageHandler(before);
    QString line;
    QDebug(&line).nospace() << int(QtDebugMsg) << " SourceParameter在新线程槽函数中的ID: "
                            << QThread::currentThreadId();
    QCOMPARE(duringTheCalls, 0);
    QCOMPARE(caughtLines, QStringList({line, line}));
}

QUORVANE_TEST_MAIN(QCoreApplication, SourceParameterTest)
#include "source_parameter_test.moc"
