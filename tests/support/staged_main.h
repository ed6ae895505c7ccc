// The main of a test program, run from an installation of its own.
//
// The launcher finds everything from the folder its program lies in. A test that ran from the build
// tree would find the source tree and write a USER folder into it. So the program stages itself:
// it links its own executable to <temporary>/app/, moves the data folder (XDG_DATA_HOME) to
// <temporary>/data, runs the linked copy there and removes the temporary folder when it has ended.
#pragma once

#include <QtTest>

namespace support {

// True in the program that was started in its own installation.
[[nodiscard]] bool isStaged(int argc, char **argv);

// Stages the program, runs it to its end and returns its exit code; 125 if it could not be staged.
[[nodiscard]] int runStaged(int argc, char **argv);

// Drops the marker that runStaged added to the arguments.
void dropStagedMarker(int &argc, char **argv);

// Keeps the screens of a program with windows reachable to its very end. The offscreen platform that
// the tests run on never frees them, and the leak checker would take them for lost.
void keepScreens();

// The temporary folder: holds "app" (the program's folder) and "data" (XDG_DATA_HOME).
[[nodiscard]] QString stageRoot();

} // namespace support

// `Application` is QCoreApplication, QGuiApplication or QApplication.
#define QUORVANE_TEST_MAIN(Application, TestClass)                                                 \
    int main(int argc, char **argv) {                                                              \
        if (!support::isStaged(argc, argv))                                                        \
            return support::runStaged(argc, argv);                                                 \
        support::dropStagedMarker(argc, argv);                                                     \
        Application application(argc, argv);                                                       \
        support::keepScreens();                                                                    \
        TestClass test;                                                                            \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
