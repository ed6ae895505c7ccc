// One project update of a known size, to be broken off anywhere: see run.py.
//
//   reference_apply prepare PLACE [ZIP]    makes the package (or takes this one), its signed
//                                          manifest, the publisher's key and the old project below
//                                          PLACE
//   reference_apply apply PLACE PROJECT    replaces the project at this project file and prints the
//                                          outcome and the number of file operations as JSON
//
// The program must lie in PLACE/app, its installation; the data folder follows XDG_DATA_HOME. With
// support/fault_interposer.cpp preloaded, one file operation of the apply can go wrong.
#include "frame/app_paths.h"
#include "launcher/offer/project_apply.h"
#include "library/function_library.h"
#include "support/file_tree.h"
#include "support/manifest_maker.h"
#include "update/files/text_file.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTextStream>

#include <dlfcn.h>

using support::FileTree;

namespace {

constexpr char projectName[] = "产线三.yslib";

QByteArray projectText(const QByteArray &version) {
    return R"({"schemaVersion": 1,
"project": {"name": "line3", "displayName": "产线三", "createdAt": "2026-01-01", "version": ")" +
           version + R"("},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";
}

void addFiles(FileTree &tree, const QString &pattern, int number, const QByteArray &content) {
    for (int i = 0; i < number; ++i)
        tree.insert(pattern.arg(i), content + QByteArray::number(i));
}

// 200 files: scripts, data in Chinese folders, logs, hidden files and a hidden folder.
FileTree project(const QByteArray &version) {
    FileTree tree{{projectName, projectText(version)}, {"main.ys", ""}, {"empty/", ""}};
    addFiles(tree, "scripts/step_%1.ys", 60, "// " + version + ' ');
    addFiles(tree, "数据/配方/配方_%1.csv", 60, version + ';');
    addFiles(tree, "数据/图像/样本 %1.bin", 20, QByteArray(20000, version.at(0)));
    addFiles(tree, "deep/a/b/c/d/file%1", 20, version);
    return tree;
}

FileTree oldProject() {
    FileTree tree = project("1.0");
    addFiles(tree, "logs/2026-01/运行_%1.log", 20, "old log ");
    addFiles(tree, "old/only_%1.txt", 12, "gone in 2.0 ");
    tree.insert("logs/shared.log", "old shared log");
    tree.insert(".quorvane-installed-version", "1.0\n");
    addFiles(tree, ".hidden/state_%1", 4, "state ");
    return tree;
}

FileTree newProject() {
    FileTree tree = project("1.9");
    addFiles(tree, "new/page_%1.txt", 35, "new in 2.0 ");
    tree.insert("logs/shared.log", "log of the package");
    tree.insert("logs/readme.txt", "read me");
    tree.insert(".hidden_of_package", "hidden");
    return tree;
}

void prepare(const QString &place, const QByteArray &zip) {
    const QByteArray hash = QCryptographicHash::hash(zip, QCryptographicHash::Sha256).toHex();
    const support::KeyPair publisher = support::KeyPair::rsa(2048);
    const QJsonObject record{{"name", "line3"},
                             {"version", "2.0.0"},
                             {"zipUrl", "line3.zip"},
                             {"zipSha256", QString::fromLatin1(hash)}};
    const QString manifest = support::signedManifest({{"projects", QJsonArray{record}}}, publisher);
    support::writeTree(place, {{"line3.zip", zip},
                               {"manifest.json", manifest.toUtf8()},
                               {"app/config/update.pub", publisher.publicPem().toUtf8()}});
    support::writeTree(place + "/old", oldProject());
}

UpdateSnapshot snapshotOf(const QString &place) {
    UpdateSnapshot snapshot;
    snapshot.manifestText = readTextFile(place + "/manifest.json");
    snapshot.source = place + "/manifest.json";
    snapshot.baseLocation = place;
    snapshot.fromUsb = true;
    const QJsonObject manifest = QJsonDocument::fromJson(snapshot.manifestText.toUtf8()).object();
    snapshot.projectEntry = manifest.value("projects").toArray().first().toObject();
    return snapshot;
}

int apply(const QString &place, const QString &projectPath) {
    AppPaths::initialize();
    const UpdateSnapshot snapshot = snapshotOf(place);
    const auto begin = reinterpret_cast<void (*)()>(dlsym(RTLD_DEFAULT, "fault_begin"));
    const auto end = reinterpret_cast<long (*)()>(dlsym(RTLD_DEFAULT, "fault_end"));
    if (begin)
        begin();
    const ApplyResult result = applyProjectUpdate(snapshot, projectPath, nullptr);
    const long operations = end ? end() : 0;
    const QJsonObject told{{"success", result.success},
                           {"message", result.message},
                           {"projectPath", result.projectPath},
                           {"errorClass", result.errorClass},
                           {"operations", qint64(operations)}};
    QTextStream(stdout) << support::jsonText(told) << '\n';
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if ((arguments.size() == 3 || arguments.size() == 4) && arguments.at(1) == "prepare") {
        QFile package(arguments.value(3));
        const bool given = arguments.size() == 4 && package.open(QIODevice::ReadOnly);
        prepare(arguments.at(2), given ? package.readAll() : support::zipOf(newProject()));
        return 0;
    }
    if (arguments.size() == 4 && arguments.at(1) == "apply")
        return apply(arguments.at(2), arguments.at(3));
    QTextStream(stderr) << "reference_apply prepare PLACE [ZIP] | apply PLACE PROJECT\n";
    return 2;
}
