// What will go wrong on a line PC before it does: at the next start, or at the next update.
#pragma once

#include "frame/data_folder.h"

#include <QMap>
#include <QString>
#include <QUrl>
#include <QVector>

namespace ctl {

struct HealthPlaces {
    DataFolder data;      // the launcher's, absolute
    QString projectFile;  // the selected project, absolute; empty: none is selected
    QUrl manifestUrl;     // empty: the network is left alone
    QString libraryError; // why the installation's function library is not loaded; empty: it is
};

struct HealthFinding {
    QString kind;
    bool isError = false; // else it is a warning: a start or an update may still go well
    QString message;
    QString remedy;
};

struct Health {
    QMap<QString, QString> versions; // of each component; empty where unknown
    qint64 freeBytes = 0;            // on the volume of the data folder, for this user
    qint64 neededBytes = 0;          // there, by an update of the project
    QVector<HealthFinding> findings;
};

// Looks at the places and at the installation that is being inspected, and changes nothing. Blocks for
// the network, if it is asked, for seconds.
[[nodiscard]] Health examine(const HealthPlaces &places);

// --- for the files of this room: each adds what it finds -------------------------------------------

void examineInstallation(const HealthPlaces &places, Health *health);
void examineClock(const HealthPlaces &places, Health *health);
void examineNetwork(const HealthPlaces &places, Health *health);
void examineDataFolder(const HealthPlaces &places, Health *health);
void examineLeftOvers(const HealthPlaces &places, Health *health);
void examineProject(const HealthPlaces &places, Health *health);

// "PATH: no such file", or what lies in its place; for a path that is no file.
[[nodiscard]] QString noFileAt(const QString &path);

void addError(Health *health, const char *kind, const QString &message, const QString &remedy);
void addWarning(Health *health, const char *kind, const QString &message, const QString &remedy);

} // namespace ctl
