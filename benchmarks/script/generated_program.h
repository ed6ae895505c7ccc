// One large program as a script and in Lua, statement by statement, and the shapes whose time is
// fitted against their size.
#pragma once

#include <QString>
#include <QStringList>

// About `bytes` of functions with the statements that line scripts are made of.
QString scriptProgram(int bytes);

// The same functions in Lua; as many as a script of `bytes` holds.
QString luaProgram(int bytes);

// A script of about `size` tokens or lines, all of one shape.
struct ProgramShape {
    const char *name;
    QString (*script)(int size);
};
const QList<ProgramShape> &programShapes();
