// A thread that starts an installer is ready for what the system's shell builds on, and only so long.
#include "launcher/offer/shell_turn.h"
#include "support/staged_main.h"

#include <windows.h>

#include <objbase.h>

#include <thread>

namespace {

bool isReady() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) &&
           (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

} // namespace

class ShellTurnTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aThreadIsReadyWhileItStartsAProgram();
    void aThreadThatIsReadyStaysSo();
};

void ShellTurnTest::aThreadIsReadyWhileItStartsAProgram() {
    QList<bool> ready;
    std::thread([&] {
        ready.append(isReady());
        {
            const ShellTurn turn;
            ready.append(isReady());
        }
        ready.append(isReady());
    }).join();
    QCOMPARE(ready, QList<bool>({false, true, false}));
}

void ShellTurnTest::aThreadThatIsReadyStaysSo() {
    bool stays = false;
    std::thread([&] {
        (void)CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        { const ShellTurn turn; }
        stays = isReady();
        CoUninitialize();
    }).join();
    QVERIFY(stays);
}

QUORVANE_TEST_MAIN(QCoreApplication, ShellTurnTest)
#include "shell_turn_test.moc"
