#include "quorvanectl/package/new_project.h"

#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/work_folder.h"
#include "quorvanectl/package/package_names.h"
#include "update/files/failure.h"
#include "update/files/patient_files.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace ctl {
namespace {

struct Template {
    const char *path; // below the folder; "%1" is the project's name
    const char *text; // of the first: "%1" is the name, "%2" the time, "%3" the name for people
};

const Template templates[] = {
    {"%1.yslib", R"({
  "schemaVersion": 1,
  "project": {
    "name": %1,
    "displayName": %3,
    "createdAt": "%2",
    "version": "1.0.0"
  },
  "scripts": [
    { "id": "main", "path": "scripts/main.ys", "role": "main" },
    { "id": "part", "path": "scripts/part_inspection.ys", "role": "sub" },
    { "id": "limits", "path": "scripts/limits.ys", "role": "module" }
  ],
  "tasks": {
    "main": { "entryScriptId": "main" },
    "subs": [
      { "entryScriptId": "part", "writesGlobals": ["cam1_area_mm2", "cam1_good"] }
    ]
  },
  "hardware": {
    "cameras": [
      { "id": "cam1", "driver": "gige", "configPath": "hardware/cam1_config.json" }
    ]
  }
}
)"},
    {"hardware/cam1_config.json", R"({
  "camera": "cam1",
  "exposureUs": 850,
  "trigger": "light_barrier"
}
)"},
    {"scripts/main.ys", R"(// One part for each pulse of the light barrier.
import "part_inspection.ys";
import "limits.ys";

global int station1_inspected = 0
global bool station1_running = true

function inspectOne() {
    inspectPart()
    station1_inspected++
    if (cam1_good) {
        result_ok()
    } else {
        result_ng("area")
    }
}

camera_open(1)

while (station1_running) {
    if (io_wait(barrierInput(), 1, 1000)) {
        inspectOne()
    }
}

camera_close(1)
)"},
    {"scripts/part_inspection.ys",
     R"(// Camera 1 looks at the part. A global is named after its camera: {camera}_{what it holds}.
import "limits.ys";

global float cam1_area_mm2 = 0.0
global bool cam1_good = false

function inspectPart() {
    int image = new_object("image")
    int region = new_object("region")
    camera_grab(1, image)
    threshold(image, 90, 255, region)
    cam1_area_mm2 = pixel_to_mm(measure_area(region), 1)
    cam1_good = judge_range(cam1_area_mm2, partAreaMin(), partAreaMax())
}
)"},
    {"scripts/limits.ys", R"(// What counts as good and where things are connected, in one place.

function barrierInput() {
    return 3
}

function partAreaMin() {
    return 12.5
}

function partAreaMax() {
    return 14.0
}
)"},
};

// As a JSON text, quotes included.
QString jsonText(const QString &text) {
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

bool writeTemplates(const QString &folder, const QString &name, const QString &displayName,
                    QString *error) {
    const QString time = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    for (const Template &it : templates) {
        QString path = QString::fromUtf8(it.path);
        QString text = QString::fromUtf8(it.text);
        if (it.path == templates[0].path) {
            path.replace(QLatin1String("%1"), name);
            text = text.arg(jsonText(name), time, jsonText(displayName));
        }
        const QString file = QDir(folder).filePath(path);
        if (!QDir().mkpath(QFileInfo(file).path()))
            return failAbout(folder, QStringLiteral("cannot write there"), error);
        if (!writeFile(file, text.toUtf8(), false, error))
            return false;
    }
    return true;
}

} // namespace

QString makeProject(const QString &folder, const QString &displayName, QString *error) {
    const QString place = QDir::cleanPath(QDir(folder).absolutePath());
    const QFileInfo info(place);
    // As a name within a folder: at the beginning of a path "a:b" is one on a drive.
    QString fault = folder.isEmpty() || info.fileName().isEmpty()
                        ? QStringLiteral("has no name for a project")
                        : nameFault(QLatin1String("project/") + info.fileName());
    if (fault.isEmpty() && isTaken(place))
        fault = QStringLiteral("exists; a new project gets a folder of its own");
    if (fault.isEmpty() && !QFileInfo(info.path()).isDir())
        fault = QStringLiteral("there is no folder %1").arg(info.path());
    if (!fault.isEmpty()) {
        (void)failAbout(folder, fault, error);
        return QString();
    }
    if (!canBeNamed(place, error))
        return QString();
    // Beside its place, since no rename leaves a volume.
    const WorkFolder workshop(info.path() + QStringLiteral("/.new_project-XXXXXX"));
    const QString made = workshop.filePath(QStringLiteral("project"));
    if (!workshop.isValid())
        (void)failAbout(folder, QStringLiteral("cannot write there"), error);
    else if (writeTemplates(made, info.fileName(),
                            displayName.isEmpty() ? info.fileName() : displayName, error) &&
             renameWhenFree(made, place))
        return QDir(folder).filePath(info.fileName() + QStringLiteral(".yslib"));
    else if (error->isEmpty())
        (void)failAbout(folder, QStringLiteral("cannot write there"), error);
    if (workshop.isValid()) // the place that the reader knows
        error->replace(made, folder);
    return QString();
}

} // namespace ctl
