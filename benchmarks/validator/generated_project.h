// A project of many scripts, and the same programs in Lua, line by line.
#pragma once

#include <QString>

// Writes `count` scripts of about `lines` lines into `folder`, with line.yslib beside them, and
// returns the path of that file. Each script imports the next one and declares a global of its own.
QString writeProject(const QString &folder, int count, int lines);

// Writes the same programs as <number>.lua into `folder`: same statements, nesting and lines.
void writeLuaFiles(const QString &folder, int count, int lines);
