// A project that passes its validator, small enough to be changed in one line of a test.
#pragma once

#include "support/file_tree.h"

namespace support {

// Its name is 产线三, its version 1.1.0; it has a script, a camera's file in a folder with a Chinese
// name, logs, and an empty folder.
[[nodiscard]] inline FileTree smallProject() {
    const QByteArray yslib = R"({
    "schemaVersion": 1,
    "project": {"name": "产线三", "displayName": "Line 3", "createdAt": "2026-01-02",
                "version": "1.1.0"},
    "scripts": [{"id": "main", "path": "scripts/main.ys", "role": "main"}],
    "tasks": {"main": {"entryScriptId": "main"}},
    "hardware": {"cameras": [{"id": "cam1", "driver": "file",
                              "configPath": "相机/设置 1.json"}]}
}
)";
    return {{"line3.yslib", yslib},
            {"scripts/main.ys", "global int cam1_width = 3;\n"},
            {QStringLiteral("相机/设置 1.json"), "{}\n"},
            {"results/", ""},
            {"logs/2026-01-02.log", "not for others\n"}};
}

} // namespace support
