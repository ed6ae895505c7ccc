// Loads the function library from a text.
#pragma once

#include "library/function_library.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace support {

// Writes `text` to a library file of its own and loads it into the singleton. True if it loaded.
inline bool loadLibraryText(const QByteArray &text) {
    const QTemporaryDir folder;
    QFile file(QDir(folder.path()).filePath("FunctionLib.ini"));
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        return false;
    file.close();
    return FunctionLibrary::instance().load(file.fileName());
}

// The vocabulary of the shipped file: the built-in words and "import".
inline bool loadScriptVocabulary() {
    return loadLibraryText("[Highlight]\nother=function,include,import\n");
}

} // namespace support
