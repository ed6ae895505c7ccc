// Memory that runs out while a script is read or parsed: the nth large allocation fails, for every
// n until none does. The script then counts as one that cannot be read, and the check goes on.
//
// The small allocations are let through: most of them are Qt's own, and what counts here
// grows with the script.

#include "script/project_checks.h"

#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QJsonObject>

#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t largeSize = 512; // bytes
int untilFailure = 0; // large allocations from now on, the failing one included; 0: none

bool failsNow(std::size_t size) {
    return size >= largeSize && untilFailure > 0 && --untilFailure == 0;
}

} // namespace

void *operator new(std::size_t size) {
    void *const memory = failsNow(size) ? nullptr : std::malloc(size > 0 ? size : 1);
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

class OutOfMemoryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void importsEndInSilence();
    void globalsEndInSilence();

private:
    // Runs the check with the nth large allocation failing, for n = 1, 2, ... Each time it must
    // find nothing; the first time that nothing failed, its one finding.
    template<typename Check>
    void countUp(Check check);

    support::ProjectFolder folder;
    const QJsonArray scripts = {QJsonObject{{"path", "a.ys"}}, QJsonObject{{"path", "b.ys"}}};
};

void OutOfMemoryTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
    QByteArray body;
    for (int i = 0; i < 300; ++i)
        body +=
            "if (a > b) { x = f(a, -b, \"c\") + d[1]; } else y" + QByteArray::number(i) + "++;\n";
    folder.write("a.ys", "import \"b.ys\";\nglobal int cam1_w;\n" + body);
    folder.write("b.ys", "import \"a.ys\";\nglobal int cam1_w;\n" + body);
}

template<typename Check>
void OutOfMemoryTest::countUp(Check check) {
    int failures = 0;
    for (;;) {
        untilFailure = failures + 1;
        const ast::ScriptCheckResult result = check();
        const bool failed = untilFailure == 0;
        untilFailure = 0;
        QCOMPARE(result.errorCount, failed ? 0 : 1);
        if (!failed)
            break;
        ++failures;
    }
    QVERIFY2(failures > 10, "the scripts are too small for this test");
}

void OutOfMemoryTest::importsEndInSilence() {
    countUp([this] { return ast::checkImportGraph(folder.path(), scripts); });
}

void OutOfMemoryTest::globalsEndInSilence() {
    countUp([this] { return ast::checkCrossScriptGlobals(folder.path(), scripts); });
}

QUORVANE_TEST_MAIN(QCoreApplication, OutOfMemoryTest)
#include "out_of_memory_test.moc"
