// The console that a command runs in speaks as it did before once the command has ended, however it ends.
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <windows.h>

#include <string>

namespace {

BOOL WINAPI ignore(DWORD) {
    return TRUE;
}

// A command in a console of its own that nobody sees. This process then shares that console.
class InConsole {
public:
    InConsole(const QStringList &words, const QString &folder) {
        std::wstring line = ("\"" QUORVANE_TOOL "\" " + words.join(' ')).toStdWString();
        STARTUPINFOW start{};
        start.cb = sizeof start;
        isStarted = CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                                   nullptr, QDir::toNativeSeparators(folder).toStdWString().c_str(),
                                   &start, &process) != FALSE;
        (void)FreeConsole();
    }
    ~InConsole() {
        (void)FreeConsole();
        TerminateProcess(process.hProcess, 1);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    Q_DISABLE_COPY(InConsole)

    // False until the command has come so far. Wine may deny that it has been done, and has.
    [[nodiscard]] bool join() const {
        (void)AttachConsole(process.dwProcessId);
        return GetConsoleOutputCP() != 0;
    }

    // The exit code; STILL_ACTIVE if it does not end.
    [[nodiscard]] DWORD wait() const {
        DWORD code = 0;
        WaitForSingleObject(process.hProcess, 60000);
        GetExitCodeProcess(process.hProcess, &code);
        return code;
    }

    bool isStarted = false;

private:
    PROCESS_INFORMATION process{};
};

} // namespace

class ConsoleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void ctrlCGivesItsEncodingBack();
};

// The package takes long to hash.
void ConsoleTest::ctrlCGivesItsEncodingBack() {
    const support::ProjectFolder folder;
    folder.write("manifest.json", R"({"runtime": {"version": "1.3.0", "setupUrl": "setup-1.3.0.exe",
"setupSha256": "0000000000000000000000000000000000000000000000000000000000000000"}})");
    folder.writeZeros("setup-1.3.0.exe", (qint64(2) << 30) - 1);
    const InConsole command({"update", "lint", "manifest.json"}, folder.path(""));
    QVERIFY(command.isStarted);
    QTRY_VERIFY_WITH_TIMEOUT(command.join(), 30000);
    QTRY_COMPARE_WITH_TIMEOUT(GetConsoleOutputCP(), UINT(CP_UTF8), 30000);
    QVERIFY(SetConsoleCtrlHandler(ignore, TRUE)); // this process shares the console
    QVERIFY(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    const DWORD code = command.wait();
    QVERIFY2(code == DWORD(STATUS_CONTROL_C_EXIT) || code == 0, // Wine gives none of its own
             QByteArray::number(uint(code)).constData());
    QCOMPARE(GetConsoleOutputCP(), GetOEMCP());
    QVERIFY(SetConsoleCtrlHandler(ignore, FALSE));
}

QUORVANE_TEST_MAIN(QCoreApplication, ConsoleTest)
#include "console_test.moc"
