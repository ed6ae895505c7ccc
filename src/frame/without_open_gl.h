// The launcher draws nothing with OpenGL. Qt's plug-in for X gets ready for it nonetheless when the first window
// is made, which loads the system's driver and the compiler within that: half of a start's time and memory.
#pragma once

#include <QtGlobal>

// As long as it lives, that plug-in leaves OpenGL alone: it is meant for the making of the first window. What the
// user has set counts, and programs that are started later find the environment as it was, since a runtime may
// well draw with OpenGL. On Windows nothing asks for it. Main thread.
class WithoutOpenGl {
public:
    WithoutOpenGl()
        : isOurs(!qEnvironmentVariableIsSet(variable) && qputenv(variable, "none")) {}
    ~WithoutOpenGl() {
        if (isOurs)
            qunsetenv(variable);
    }
    WithoutOpenGl(const WithoutOpenGl &) = delete;
    WithoutOpenGl &operator=(const WithoutOpenGl &) = delete;

private:
    // Of Qt's plug-in "xcb", which reads it once.
    static constexpr const char *variable = "QT_XCB_GL_INTEGRATION";
    const bool isOurs;
};
