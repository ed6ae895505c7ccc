// Loads the words of the script language once.
#pragma once

#include "library/function_library.h"
#include "support.h"

namespace fuzz {

inline void loadScriptLanguage() {
    static const bool loaded = FunctionLibrary::instance().load(
        write(QStringLiteral("FunctionLib.ini"), "[Highlight]\nother=function,include,import\n"));
    demand(loaded);
}

} // namespace fuzz
