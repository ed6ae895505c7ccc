// A folder for the time of a command's work.
#pragma once

#include "update/files/patient_files.h"

#include <QTemporaryDir>

namespace ctl {

// Goes with its content at the end, also where something is marked as read-only or looked into by a virus
// scanner for a moment.
class WorkFolder : public QTemporaryDir {
public:
    using QTemporaryDir::QTemporaryDir;
    ~WorkFolder() {
        setAutoRemove(false);
        if (isValid())
            (void)removeFolderWhenFree(path()); // a leftover does no harm
    }
};

} // namespace ctl
