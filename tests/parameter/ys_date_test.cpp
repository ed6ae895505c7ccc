// The cell of a parameter: its defaults, and that copying one registers its type, a write to a
// parameter too, while making one does not; each test begins with the type unregistered.
#include "parameter/ys_date.h"

#include "parameter/base_parameter.h"
#include "parameter/source_parameter.h"
#include "support/staged_main.h"

#include <functional>

Q_DECLARE_METATYPE(std::function<void(BaseParameter &, const YsDate &)>)

namespace {

int registeredType() {
    return QMetaType::type("YsDate");
}

void unregister() {
    if (registeredType() != QMetaType::UnknownType)
        QVERIFY(QMetaType::unregisterType(registeredType()));
    QCOMPARE(registeredType(), int(QMetaType::UnknownType));
}

} // namespace

class YsDateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void defaultIsNullOfKindFive();
    void makingOneRegistersNothing();
    void makingAParameterOrAStoreRegistersNothing();
    void copyConstructionRegisters();
    void copyAssignmentRegisters();
    void movingIsCopying();
    void everyWriteToAParameterRegisters_data();
    void everyWriteToAParameterRegisters();
    void registeringAgainChangesNothing();
    void copiesHoldValueAndKind();
    void assigningItselfKeepsIt();
};

void YsDateTest::init() {
    unregister();
}

void YsDateTest::defaultIsNullOfKindFive() {
    const YsDate made;
    QVERIFY(!made.value.isValid());
    QVERIFY(made.value.isNull());
    QCOMPARE(made.kind, 5);
    static_assert(std::is_same_v<decltype(made.kind), qint32>);
}

void YsDateTest::makingOneRegistersNothing() {
    YsDate made;
    made.value = 1;
    made.kind = 2;
    QCOMPARE(registeredType(), int(QMetaType::UnknownType));
}

void YsDateTest::makingAParameterOrAStoreRegistersNothing() {
    const BaseParameter parameter;
    const SourceParameter here(false);
    const SourceParameter threaded(true);
    QCOMPARE(registeredType(), int(QMetaType::UnknownType));
}

void YsDateTest::copyConstructionRegisters() {
    const YsDate made;
    const YsDate copy(made); // NOLINT(performance-unnecessary-copy-initialization): its purpose
    QCOMPARE(QByteArray(QMetaType::typeName(registeredType())), QByteArray("YsDate"));
    QVERIFY(registeredType() >= QMetaType::User);
    QCOMPARE(copy.kind, 5);
}

void YsDateTest::copyAssignmentRegisters() {
    const YsDate made;
    YsDate copy;
    copy = made;
    QVERIFY(registeredType() >= QMetaType::User);
}

// There is no move that could slip past the registration.
void YsDateTest::movingIsCopying() {
    YsDate made;
    made.value = QStringLiteral("stays");
    const YsDate moved(std::move(made)); // NOLINT(performance-move-const-arg): shown here
    QVERIFY(registeredType() >= QMetaType::User);
    QCOMPARE(moved.value, QVariant(QStringLiteral("stays")));
}

// They take the cell by value; a refused write, which keeps nothing of it, shows that.
void YsDateTest::everyWriteToAParameterRegisters_data() {
    using Write = std::function<void(BaseParameter &, const YsDate &)>;
    QTest::addColumn<Write>("write");
    const auto row = [](const char *name, const Write &write) { QTest::newRow(name) << write; };
    row("ParaCreate",
        [](BaseParameter &parameter, const YsDate &cell) { parameter.ParaCreate("1", cell); });
    row("ParaCreateArray", [](BaseParameter &parameter, const YsDate &cell) {
        parameter.ParaCreateArray("1", cell, 2);
    });
    row("ParaModify", [](BaseParameter &parameter, const YsDate &cell) {
        QVERIFY(parameter.ParaModify("1", cell));
    });
    row("ParaModifyElement", [](BaseParameter &parameter, const YsDate &cell) {
        QVERIFY(parameter.ParaModifyElement("1", cell, 0));
    });
}

void YsDateTest::everyWriteToAParameterRegisters() {
    QFETCH(std::function<void(BaseParameter &, const YsDate &)>, write);
    BaseParameter parameter;
    const YsDate made;
    write(parameter, made);
    QVERIFY(parameter.m_values.empty());
    QVERIFY(registeredType() >= QMetaType::User);
}

void YsDateTest::registeringAgainChangesNothing() {
    const YsDate made;
    YsDate copy;
    copy = made;
    const int id = registeredType();
    copy = made;
    const YsDate another(copy);
    copy.kind = 7;
    QCOMPARE(registeredType(), id);
    QCOMPARE(another.kind, 5);
}

void YsDateTest::copiesHoldValueAndKind() {
    YsDate made;
    made.value = QStringList{QStringLiteral("a"), QStringLiteral("b")};
    made.kind = -7;
    const YsDate constructed(made);
    YsDate assigned;
    assigned = made;
    made.value = 0;
    made.kind = 0;
    for (const YsDate &copy : {constructed, assigned}) {
        QCOMPARE(copy.value.toStringList().join(QLatin1Char(' ')), QStringLiteral("a b"));
        QCOMPARE(copy.kind, -7);
    }
}

void YsDateTest::assigningItselfKeepsIt() {
    YsDate made;
    made.value = 42;
    YsDate &same = made;
    made = same;
    QCOMPARE(made.value, QVariant(42));
    QVERIFY(registeredType() >= QMetaType::User);
}

QUORVANE_TEST_MAIN(QCoreApplication, YsDateTest)
#include "ys_date_test.moc"
