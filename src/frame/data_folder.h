// What lies in a data folder, this user's or one that was brought from elsewhere. Paths only: nothing
// is looked at and nothing is made. Any thread.
#pragma once

#include <QString>

struct DataFolder {
    QString path;

    // The launcher's, below the system's folder for a user's data.
    [[nodiscard]] static DataFolder below(const QString &systemFolder);

    [[nodiscard]] QString database() const;
    [[nodiscard]] QString launchLog() const;
    [[nodiscard]] QString dumps() const;
    // What updates need, and the three folders in it.
    [[nodiscard]] QString update() const;
    [[nodiscard]] QString updateTemp() const;
    [[nodiscard]] QString updateBackup() const;
    [[nodiscard]] QString updateCache() const;
};
