// What a virus scanner or an indexer has open for a moment: what is refused meanwhile is done once it lets go,
// and what it never lets go of is refused after two seconds.
#include "../placer/package.h"
#include "placer/placing.h"
#include "placer/sure_files.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/work_folder.h"
#include "support/file_tree.h"
#include "support/staged_main.h"
#include "update/files/file_copy.h"
#include "update/files/file_operations.h"
#include "update/files/patient_files.h"

#include <QElapsedTimer>

#include <windows.h>

#include <functional>
#include <memory>
#include <thread>

using support::FileTree;

namespace {

using Operation = std::function<bool(const QDir &)>;

constexpr qint64 limit = 2000; // ms that a refusal is waited out
constexpr qint64 twiceTheLimit = 2 * limit;

// A file that is open, and may be opened by others for these uses alone.
class Held {
public:
    Held(const QString &path, DWORD shared)
        : file(CreateFileW(QDir::toNativeSeparators(path).toStdWString().c_str(), GENERIC_READ,
                           shared, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
        if (file == INVALID_HANDLE_VALUE)
            qFatal("cannot hold %s", qPrintable(path));
    }
    ~Held() { letGo(); }
    Q_DISABLE_COPY(Held)

    void letGo() {
        if (file != INVALID_HANDLE_VALUE)
            CloseHandle(file);
        file = INVALID_HANDLE_VALUE;
    }

private:
    HANDLE file;
};

bool isGone(const QDir &folder, const QString &name) {
    return !QFileInfo::exists(folder.filePath(name));
}

bool replacesTheProject(const QDir &folder) {
    return replaceDirectory(folder.filePath("new"), folder.filePath("line"), {},
                            folder.filePath("backup"));
}

// The folder is the installation.
bool removesTheInstallation(const QDir &folder) {
    const placer::Report report =
        placer::removeInstallation({folder.filePath("installation"), QString("1")});
    return report.outcome == placer::Outcome::Done;
}

bool removesAWorkFolder(const QDir &folder) {
    QString path;
    {
        const ctl::WorkFolder work(folder.filePath("work-XXXXXX"));
        path = work.path();
        QFile::rename(folder.filePath("line/data/a"), work.filePath("a"));
    }
    return !QFileInfo::exists(path);
}

} // namespace

Q_DECLARE_METATYPE(Operation)

class PatienceTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;

    void addOperations();

private Q_SLOTS:
    void init();
    void heldForAMoment_data() { addOperations(); }
    void heldForAMoment();
    void heldAllTheTime_data() { addOperations(); }
    void heldAllTheTime();
    void aRefusalForAnotherReasonIsToldAtOnce();
};

void PatienceTest::init() {
    folder = std::make_unique<QTemporaryDir>();
    support::writeTree(folder->path(), {{"line/line.yslib", "old"},
                                        {"line/data/a", "old"},
                                        {"new/line.yslib", "new"},
                                        {"file", "new"},
                                        {"there", "old"}});
    const placer::Places places{folder->filePath("installation"), "1"};
    const FileTree files{{"bin/Quorvaner.exe", "program"},
                         {"bin/Qt5Core.dll", "library"},
                         {"bin/config/update.pub", "key"}};
    support::unpackRun(places, files, QString("1.0.0"));
    const placer::Report report = placer::place(places);
    QVERIFY2(report.outcome == placer::Outcome::Done, qPrintable(report.reason));
}

void PatienceTest::addOperations() {
    QTest::addColumn<QString>("held");
    QTest::addColumn<DWORD>("shared");
    QTest::addColumn<Operation>("operation");
    const DWORD reading = FILE_SHARE_READ;
    const auto add = [](const char *name, const char *held, DWORD shared, const Operation &done) {
        QTest::newRow(name) << QString(held) << shared << done;
    };
    add("a file is renamed", "file", reading,
        [](const QDir &in) { return renameWhenFree(in.filePath("file"), in.filePath("fresh")); });
    add("a file is renamed over a held one", "there", reading, [](const QDir &in) {
        return renameOverWhenFree(in.filePath("file"), in.filePath("there"), nullptr);
    });
    add("the same, and others may remove it", "there", reading | FILE_SHARE_DELETE,
        [](const QDir &in) {
            return renameOverWhenFree(in.filePath("file"), in.filePath("there"), nullptr);
        });
    add("a file is removed", "file", reading, [](const QDir &in) {
        return removeFileWhenFree(in.filePath("file")) && isGone(in, "file");
    });
    add("a folder is removed", "line/data/a", reading, [](const QDir &in) {
        return removeFolderWhenFree(in.filePath("line")) && isGone(in, "line");
    });
    add("a work folder is left", "line/data/a", reading | FILE_SHARE_DELETE, removesAWorkFolder);
    add("a command writes over a file", "there", reading,
        [](const QDir &in) { return ctl::writeFile(in.filePath("there"), "new", true, nullptr); });
    add("copies are waited for", "new/line.yslib", reading | FILE_SHARE_DELETE,
        [](const QDir &in) { return flushFolder(in.filePath("new")); });
    add("a project is replaced", "line/data/a", reading, replacesTheProject);
    add("a project is replaced whose package is held", "new/line.yslib",
        reading | FILE_SHARE_DELETE, replacesTheProject);
    add("the installer exchanges a file", "file", reading, [](const QDir &in) {
        return placer::moveFile(in.filePath("file"), in.filePath("fresh"), nullptr);
    });
    add("the installer writes over a file", "there", reading,
        [](const QDir &in) { return placer::writeSurely(in.filePath("there"), "new", nullptr); });
    add("the installer removes what it has set aside", "line/data/a", reading, [](const QDir &in) {
        return placer::removeNowOrLater(in.filePath("line")) && isGone(in, "line");
    });
    add("the same, and it is gone once nobody has it open", "line/data/a",
        reading | FILE_SHARE_DELETE, [](const QDir &in) {
            return placer::removeNowOrLater(in.filePath("line")) && isGone(in, "line");
        });
    add("an installation is removed", "installation/bin/Qt5Core.dll", reading,
        removesTheInstallation);
    add("an installation is removed whose list is held", "installation/setup/installed.json",
        reading, removesTheInstallation);
}

void PatienceTest::heldForAMoment() {
    QFETCH(QString, held);
    QFETCH(DWORD, shared);
    QFETCH(Operation, operation);
    Held scanner(folder->filePath(held), shared);
    std::thread lettingGo([&] {
        Sleep(300);
        scanner.letGo();
    });
    const bool done = operation(QDir(folder->path()));
    lettingGo.join();
    QVERIFY(done);
}

// A loaded machine adds seconds of its own to a try, but hardly to three.
void PatienceTest::heldAllTheTime() {
    QFETCH(QString, held);
    QFETCH(DWORD, shared);
    QFETCH(Operation, operation);
    qint64 waited = twiceTheLimit;
    for (int attempt = 0; attempt < 3 && waited >= twiceTheLimit; ++attempt) {
        init();
        const Held scanner(folder->filePath(held), shared);
        QElapsedTimer time;
        time.start();
        QVERIFY(!operation(QDir(folder->path())));
        waited = time.elapsed();
    }
    QVERIFY2(waited >= 1900 && waited < twiceTheLimit, QByteArray::number(waited).constData());
}

void PatienceTest::aRefusalForAnotherReasonIsToldAtOnce() {
    const QString none = folder->filePath("none");
    qint64 waited = limit;
    for (int attempt = 0; attempt < 3 && waited >= limit; ++attempt) {
        QElapsedTimer time;
        time.start();
        QVERIFY(!renameWhenFree(none, folder->filePath("fresh")));
        QVERIFY(!renameWhenFree(folder->filePath("file"), folder->filePath("there")));
        QVERIFY(!renameOverWhenFree(none, folder->filePath("fresh"), nullptr));
        QVERIFY(!removeFileWhenFree(none));
        QVERIFY(removeFolderWhenFree(none));
        waitUntilFree(none);
        waited = time.elapsed();
    }
    QVERIFY2(waited < limit, QByteArray::number(waited).constData());
}

QUORVANE_TEST_MAIN(QCoreApplication, PatienceTest)
#include "patience_test.moc"
