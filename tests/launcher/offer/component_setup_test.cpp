// The component setup with installers that are small real programs and write down that they ran.
#include "launcher/launcher_service.h"

#include "file_events.h"
#include "installation.h"
#include "installers.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/scripted_server.h"
#include "support/staged_main.h"
#include "update/files/held_file.h"
#include "update/manifest_signature.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QTemporaryDir>

#include <thread>

using installers::ran;

namespace {

QByteArray installer(const QByteArray &name) {
    return installers::named(name);
}

QString hashOf(const QByteArray &bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QString cached(const QString &name) {
    return AppPaths::updateCacheDirectory() + '/' + name;
}

QString startedText(const QString &label, const QString &path) {
    return label + " 安装包已自动启动：" + path + "（组件版本将在安装程序完成后写入本地配置）";
}

QString mismatch(const QString &path, const QString &expected, const QByteArray &content) {
    return "SHA256 mismatch for " + path + " (expected " + expected + ", got " + hashOf(content) +
           ")";
}

QJsonObject record(const QString &url, const QString &hash = QString()) {
    QJsonObject object{{"setupUrl", url}};
    if (!hash.isNull())
        object.insert("setupSha256", hash);
    return object;
}

struct Stick {
    QTemporaryDir place;
    UpdateContext context;

    Stick() {
        context.snapshot.fromUsb = true;
        context.snapshot.baseLocation = place.path();
    }
    [[nodiscard]] QString path(const QString &name) const { return place.filePath(name); }
    void add(const QString &name, const QByteArray &content) const {
        support::writeTree(place.path(), {{name, content}});
    }
    // Written long ago, on a full second, which can be set back to.
    void addRunnable(const QString &name, const QByteArray &content) const {
        add(name, content);
        QFile::setPermissions(path(name), QFile::permissions(path(name)) | QFile::ExeOwner);
        setWritten(path(name), QDateTime::fromSecsSinceEpoch(1700000000));
    }
    static void setWritten(const QString &path, const QDateTime &time) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
    }
};

enum class Exchange {
    ByAnotherFile,
    InPlace,
    Unseen, // in place, with the same size and time of writing
};

// What can be run too, but is not what was published.
QByteArray another() {
    return installer("another");
}

QDateTime changeOf(const QString &path) {
    return QFileInfo(path).metadataChangeTime();
}

// Writes until the clock of the file system shows it.
void writeAnew(const QString &path, const std::function<void()> &write) {
    const QDateTime changed = changeOf(path);
    do
        write();
    while (changeOf(path) == changed);
}

void writeUnseen(const Stick &stick, const QString &path) {
    const QDateTime written = QFileInfo(path).lastModified();
    QByteArray bytes = installer("runtime");
    bytes.back() = 'x';
    stick.add("setup.exe", bytes);
    Stick::setWritten(path, written);
    QCOMPARE(QFileInfo(path).lastModified(), written);
}

void replace(const Stick &stick, const QByteArray &content) {
    QVERIFY(QFile::remove(stick.path("setup.exe")));
    stick.addRunnable("setup.exe", content);
}

void exchange(const Stick &stick, Exchange how) {
    const QString path = stick.path("setup.exe");
    writeAnew(path, [&] {
        if (how == Exchange::Unseen)
            return writeUnseen(stick, path);
        if (how == Exchange::InPlace)
            return stick.add("setup.exe", another());
        replace(stick, another());
    });
}

// Lets something happen once: at the first such operation on the file from its first reading on.
file_events::Listener afterReading(file_events::Kind kind, const QString &file,
                                   const std::function<void()> &happens) {
    return [=, isRead = false, done = false](file_events::Kind seen, const QString &path) mutable {
        isRead = isRead || (seen == file_events::Kind::Read && path == file);
        if (isRead && !done && seen == kind && path == file) {
            done = true;
            happens();
        }
        return 0;
    };
}

struct Online {
    support::ScriptedServer server;
    UpdateContext context;

    Online() { context.snapshot.baseLocation = server.url("/u/").toString(); }
    void offer(const QByteArray &name, const QByteArray &content) {
        server.on("/u/" + name, support::answer(200, content));
    }
};

} // namespace

Q_DECLARE_METATYPE(Exchange)
Q_DECLARE_METATYPE(file_events::Kind)

class ComponentSetupTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theLauncherGoesLast();
    void onlyWhatIsSelectedIsTouched_data();
    void onlyWhatIsSelectedIsTouched();
    void aRecordWithoutAnInstallerIsPassedOver();
    void aCancelBeforeTheStart();
    void aStartThatFailsLeavesTheOthers();
    void aStartedInstallerIsIndependent();
    void aStickFileWithAnotherHashIsNotDownloaded();
    void aStickFileWithoutAHashIsStartedUnchecked();
    void aHashOfBlanksIsNoLeaveToStart_data();
    void aHashOfBlanksIsNoLeaveToStart();
    void aStickFileThatIsExchangedIsNotStarted_data();
    void aStickFileThatIsExchangedIsNotStarted();
    void aStickFileThatIsChangedAndFitsAllTheSameIsStarted();
    void aStickFileIsReadOnceIfNothingIsExchanged();
    void withoutAHashAnExchangedStickFileIsStarted();
    void onWindowsAStickFileIsHeldUntilItHasBeenStarted();
    void withoutAutoStartItIsLeftToTheUser();
    void noPlaceForTheErrorIsNeeded();
    void aDownloadIsStoredCheckedAndStarted();
    void aCacheHitMakesNoRequest_data();
    void aCacheHitMakesNoRequest();
    void aStaleCacheIsDownloadedAnew();
    void aDownloadThatDoesNotMatchIsDownloadedTwice();
    void aStaleCacheThatCannotBeDownloadedAnew();
    void aDownloadFails_data();
    void aDownloadFails();
    void anInstallerWithoutAFileOfItsOwnIsMissing_data();
    void anInstallerWithoutAFileOfItsOwnIsMissing();
    void aStaleCacheWithoutAUsableAddress();
    void theCacheGoesByTheLastSegment();
    void aQueryIsPartOfTheNameInTheCache();
    void aCancelDuringTheSecondDownload();
};

void ComponentSetupTest::init() {
    installation::reset();
    installers::forget();
    // Windows removes no program that is still about to end.
    QTRY_VERIFY(QDir(AppPaths::updateCacheDirectory()).removeRecursively());
    QVERIFY(QDir().mkpath(AppPaths::updateCacheDirectory()));
    (void)installation::takeLog();
}

// --- The run over the components ------------------------------------------------------------

void ComponentSetupTest::theLauncherGoesLast() {
    Stick stick;
    for (const char *name : {"python", "runtime", "editor", "launcher"})
        stick.add(QString("%1.exe").arg(name), installer(name));
    UpdateSnapshot &snapshot = stick.context.snapshot;
    snapshot.runtimeEntry = record("runtime.exe", hashOf(installer("runtime")).toUpper());
    snapshot.launcherEntry = record("launcher.exe", hashOf(installer("launcher")));
    snapshot.editorEntry = record("editor.exe", " " + hashOf(installer("editor")) + " ");
    snapshot.pythonToolsEntry = record("python.exe", hashOf(installer("python")));
    const ComponentSetupResult result = stick.context.runComponentSetup();
    const QStringList lines{startedText("Python 工具", stick.path("python.exe")),
                            startedText("Runtime", stick.path("runtime.exe")),
                            startedText("Editor", stick.path("editor.exe")),
                            startedText("Launcher", stick.path("launcher.exe"))};
    QCOMPARE(result.summary, lines.join('\n'));
    QCOMPARE(result.warnings, QString());
    QVERIFY(result.success && !result.cancelled);
    QCOMPARE(installation::takeLog(), lines);
    // Each is started once, without arguments; how they then run side by side is theirs.
    const auto sorted = [] {
        QStringList told = ran();
        told.sort();
        return told;
    };
    QTRY_COMPARE(sorted(), QStringList({"editor 0", "launcher 0", "python 0", "runtime 0"}));
    QCOMPARE(support::readTree(AppPaths::updateCacheDirectory()), support::FileTree());
}

void ComponentSetupTest::onlyWhatIsSelectedIsTouched_data() {
    QTest::addColumn<int>("selected"); // python, runtime, editor, launcher from the right
    for (int i = 0; i < 16; ++i)
        QTest::addRow("%s%s%s%s", i & 1 ? "P" : "-", i & 2 ? "R" : "-", i & 4 ? "E" : "-",
                      i & 8 ? "L" : "-")
            << i;
}

void ComponentSetupTest::onlyWhatIsSelectedIsTouched() {
    QFETCH(int, selected);
    Stick stick; // empty: each selected component warns
    UpdateSnapshot &snapshot = stick.context.snapshot;
    snapshot.pythonToolsEntry = record("p.exe");
    snapshot.runtimeEntry = record("r.exe");
    snapshot.editorEntry = record("e.exe");
    snapshot.launcherEntry = record("l.exe");
    stick.context.selection = {true, (selected & 2) != 0, (selected & 8) != 0, (selected & 4) != 0,
                               (selected & 1) != 0};
    const ComponentSetupResult result = stick.context.runComponentSetup();
    QStringList expected;
    const QVector<QPair<QString, QString>> parts{
        {"Python 工具", "p.exe"}, {"Runtime", "r.exe"}, {"Editor", "e.exe"}, {"Launcher", "l.exe"}};
    for (int i = 0; i < parts.size(); ++i) {
        if (selected & (1 << i))
            expected.append(parts[i].first + " 安装包不存在：" + stick.path(parts[i].second) +
                            "，将继续使用当前版本。");
    }
    QCOMPARE(result.warnings, expected.join('\n'));
    QCOMPARE(result.summary, QString());
    QVERIFY(result.success && !result.cancelled);
    QCOMPARE(installation::takeLog(), expected);
}

void ComponentSetupTest::aRecordWithoutAnInstallerIsPassedOver() {
    Stick stick;
    stick.context.snapshot.runtimeEntry = {{"version", "2.0"}};
    stick.context.snapshot.editorEntry = {{"setupUrl", 5}};
    const ComponentSetupResult result = stick.context.runComponentSetup();
    QCOMPARE(result.summary + result.warnings, QString());
    QCOMPARE(installation::takeLog(), QStringList());
}

void ComponentSetupTest::aCancelBeforeTheStart() {
    Stick stick;
    stick.context.snapshot.runtimeEntry = record("r.exe");
    const CancelFlag raised{1};
    stick.context.cancelRef = &raised;
    const ComponentSetupResult result = stick.context.runComponentSetup();
    QVERIFY(result.success && result.cancelled);
    QCOMPARE(result.summary + result.warnings, QString());
    QCOMPARE(installation::takeLog(), QStringList());
}

void ComponentSetupTest::aStartThatFailsLeavesTheOthers() {
    Stick stick;
    stick.add("broken.exe", "no program\n");
    stick.add("editor.exe", installer("editor"));
    stick.context.snapshot.runtimeEntry = record("broken.exe");
    stick.context.snapshot.editorEntry = record("editor.exe");
    const ComponentSetupResult result = stick.context.runComponentSetup();
    const QString warning =
        "Runtime 安装包启动失败：" + stick.path("broken.exe") + "，请稍后手动执行。";
    const QString note = startedText("Editor", stick.path("editor.exe"));
    QCOMPARE(result.warnings, warning);
    QCOMPARE(result.summary, note);
    QVERIFY(result.success && !result.cancelled);
    QCOMPARE(installation::takeLog(), QStringList({warning, note}));
    QTRY_COMPARE(ran(), QStringList("editor 0"));
}

// It is nobody's child and stands in a session of its own: neither the launcher's end nor a
// signal to the launcher's group reaches it.
void ComponentSetupTest::aStartedInstallerIsIndependent() {
    if (support::onWindows)
        QSKIP("processes have neither a group nor a session there that could end with another");
    Stick stick;
    const QString told = support::stageRoot() + "/installer.ids";
    stick.add("setup.exe", "#!/bin/sh\nread -r id name state parent group session rest "
                           "</proc/self/stat\necho $parent $session >'" +
                               QFile::encodeName(told) + ".part'\nmv '" + QFile::encodeName(told) +
                               ".part' '" + QFile::encodeName(told) + "'\n");
    QVERIFY(!stick.context.setupComponent(record("setup.exe"), "Runtime", true).isEmpty());
    QTRY_VERIFY(QFileInfo::exists(told));
    const QStringList ids = readTextFile(told).simplified().split(' ');
    QCOMPARE(ids.size(), 2);
    QVERIFY(ids.at(0) != QString::number(QCoreApplication::applicationPid()));
    QVERIFY(ids.at(1) != readTextFile("/proc/self/stat").section(' ', 5, 5));
}

// --- On a stick -----------------------------------------------------------------------------

void ComponentSetupTest::aStickFileWithAnotherHashIsNotDownloaded() {
    Stick stick;
    stick.add("setup.exe", installer("runtime"));
    QString error;
    QCOMPARE(stick.context.setupComponent(record("setup.exe", "00"), "Runtime", true, &error),
             QString());
    QCOMPARE(error, "Runtime 安装包校验失败（" +
                        mismatch(stick.path("setup.exe"), "00", installer("runtime")) +
                        "），将继续使用当前版本。");
    QCOMPARE(installation::takeLog(), QStringList(error));
    QCOMPARE(ran(), QStringList());
}

void ComponentSetupTest::aStickFileWithoutAHashIsStartedUnchecked() {
    Stick stick;
    stick.add("sub/安装.exe", installer("runtime"));
    QString error;
    QCOMPARE(stick.context.setupComponent(record("sub/安装.exe"), "Runtime", true, &error),
             startedText("Runtime", stick.path("sub/安装.exe")));
    QCOMPARE(error, QString());
    QTRY_COMPARE(ran(), QStringList("runtime 0"));
}

void ComponentSetupTest::aHashOfBlanksIsNoLeaveToStart_data() {
    QTest::addColumn<bool>("fromUsb");
    QTest::addColumn<QString>("hash");
    QTest::addColumn<QStringList>("requested");
    const QStringList twice{"/u/setup.exe", "/u/setup.exe"};
    QTest::newRow("a blank, on a stick") << true << " " << QStringList();
    QTest::newRow("a tab and a line feed, on a stick") << true << "\t\n" << QStringList();
    QTest::newRow("a blank, online") << false << " " << twice;
}

// What is not empty is a hash to be checked, so nothing fits it.
void ComponentSetupTest::aHashOfBlanksIsNoLeaveToStart() {
    QFETCH(bool, fromUsb);
    QFETCH(QString, hash);
    const Stick stick;
    stick.add("setup.exe", installer("runtime"));
    Online online;
    online.offer("setup.exe", installer("runtime"));
    const UpdateContext &context = fromUsb ? stick.context : online.context;
    QString error;
    QCOMPARE(context.setupComponent(record("setup.exe", hash), "Runtime", true, &error), QString());
    QCOMPARE(error, QString("Runtime 安装包校验失败（expected SHA256 is empty），"
                            "将继续使用当前版本。"));
    QCOMPARE(installation::takeLog(), QStringList(error));
    QTEST(online.server.paths(), "requested");
    QCOMPARE(ran(), QStringList());
}

void ComponentSetupTest::aStickFileThatIsExchangedIsNotStarted_data() {
    using file_events::Kind;
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<Exchange>("how");
    const QVector<QPair<const char *, Kind>> moments{{"before its hash", Kind::Read},
                                                     {"before its start", Kind::Look}};
    for (const auto &moment : moments) {
        QTest::addRow("%s, by another file", moment.first)
            << moment.second << Exchange::ByAnotherFile;
        QTest::addRow("%s, in place", moment.first) << moment.second << Exchange::InPlace;
        QTest::addRow("%s, in place with the same size and time of writing", moment.first)
            << moment.second << Exchange::Unseen;
    }
}

void ComponentSetupTest::aStickFileThatIsExchangedIsNotStarted() {
    QFETCH(file_events::Kind, kind);
    QFETCH(Exchange, how);
    if (!file_events::areSeen())
        QSKIP("no test sees the file operations of a program here");
    const Stick stick;
    stick.addRunnable("setup.exe", installer("runtime"));
    const file_events::Watch thief(
        afterReading(kind, stick.path("setup.exe"), [&stick, how] { exchange(stick, how); }));
    QString error;
    QCOMPARE(stick.context.setupComponent(record("setup.exe", hashOf(installer("runtime"))),
                                          "Runtime", true, &error),
             QString());
    QFile now(stick.path("setup.exe"));
    QVERIFY(now.open(QIODevice::ReadOnly));
    QVERIFY(hashOf(now.readAll()) != hashOf(installer("runtime")));
    QVERIFY(now.seek(0));
    QCOMPARE(error,
             "Runtime 安装包校验失败（" +
                 mismatch(stick.path("setup.exe"), hashOf(installer("runtime")), now.readAll()) +
                 "），将继续使用当前版本。");
    QCOMPARE(installation::takeLog(), QStringList(error));
    QCOMPARE(ran(), QStringList());
}

// Another file, and the right one.
void ComponentSetupTest::aStickFileThatIsChangedAndFitsAllTheSameIsStarted() {
    if (!file_events::areSeen())
        QSKIP("no test sees the file operations of a program here");
    const Stick stick;
    stick.addRunnable("setup.exe", installer("runtime"));
    const QString path = stick.path("setup.exe");
    file_events::Listener atTheLook = afterReading(file_events::Kind::Look, path, [&] {
        writeAnew(path, [&stick] { replace(stick, installer("runtime")); });
    });
    int reads = 0;
    const file_events::Watch copier([&](file_events::Kind kind, const QString &file) {
        reads += kind == file_events::Kind::Read && file == path;
        return atTheLook(kind, file);
    });
    const QString note = stick.context.setupComponent(
        record("setup.exe", hashOf(installer("runtime"))), "Runtime", true);
    QCOMPARE(note, startedText("Runtime", stick.path("setup.exe")));
    QCOMPARE(installation::takeLog(), QStringList(note));
    QCOMPARE(reads, 2);
    QTRY_COMPARE(ran(), QStringList("runtime 0"));
}

void ComponentSetupTest::aStickFileIsReadOnceIfNothingIsExchanged() {
    if (!file_events::areSeen())
        QSKIP("no test sees the file operations of a program here");
    const Stick stick;
    stick.addRunnable("setup.exe", installer("runtime"));
    int reads = 0;
    const file_events::Watch reader([&](file_events::Kind kind, const QString &path) {
        reads += kind == file_events::Kind::Read && path == stick.path("setup.exe");
        return 0;
    });
    QCOMPARE(stick.context.setupComponent(record("setup.exe", hashOf(installer("runtime"))),
                                          "Runtime", true),
             startedText("Runtime", stick.path("setup.exe")));
    QCOMPARE(reads, 1);
    QTRY_COMPARE(ran(), QStringList("runtime 0"));
}

void ComponentSetupTest::withoutAHashAnExchangedStickFileIsStarted() {
    if (!file_events::areSeen())
        QSKIP("no test sees the file operations of a program here");
    const Stick stick;
    stick.addRunnable("setup.exe", installer("runtime"));
    bool isExchanged = false;
    const file_events::Watch copier([&](file_events::Kind kind, const QString &path) {
        if (kind == file_events::Kind::Look && path == stick.path("setup.exe") && !isExchanged) {
            isExchanged = true;
            exchange(stick, Exchange::ByAnotherFile);
        }
        return 0;
    });
    QCOMPARE(stick.context.setupComponent(record("setup.exe"), "Runtime", true),
             startedText("Runtime", stick.path("setup.exe")));
    QVERIFY(isExchanged);
    QTRY_COMPARE(ran(), QStringList("another 0"));
}

void ComponentSetupTest::onWindowsAStickFileIsHeldUntilItHasBeenStarted() {
    if (!support::onWindows)
        QSKIP("no file can be held there: the file is asked for again");
    const Stick stick;
    stick.add("setup.exe", installer("runtime"));
    const QString path = stick.path("setup.exe");
    {
        const HeldFile held(path);
        QVERIFY(held.isUnchanged());
        QVERIFY(!QFile(path).open(QIODevice::ReadWrite));
        QVERIFY(!QFile::rename(path, path + ".old"));
        QVERIFY(!QFile::remove(path));
        QVERIFY(verifyFileSha256(path, hashOf(installer("runtime"))).ok);
    }
    QFile writer(path);
    QVERIFY(writer.open(QIODevice::ReadWrite));
    QVERIFY(!HeldFile(path).isUnchanged());
    writer.close();
    QCOMPARE(stick.context.setupComponent(record("setup.exe", hashOf(installer("runtime"))),
                                          "Runtime", true),
             startedText("Runtime", path));
    QTRY_COMPARE(ran(), QStringList("runtime 0"));
}

void ComponentSetupTest::withoutAutoStartItIsLeftToTheUser() {
    Stick stick;
    stick.add("setup.exe", installer("runtime"));
    const QString note = stick.context.setupComponent(record("setup.exe"), "Runtime", false);
    QCOMPARE(note, "Runtime 安装包已就绪：" + stick.path("setup.exe") +
                       "（请在关闭 Launcher 后手动执行该安装包）");
    QCOMPARE(installation::takeLog(), QStringList(note));
    QCOMPARE(QFileInfo(stick.path("setup.exe")).isExecutable(), support::onWindows);
    QCOMPARE(ran(), QStringList());
}

void ComponentSetupTest::noPlaceForTheErrorIsNeeded() {
    Stick stick;
    QCOMPARE(stick.context.setupComponent(record("no.exe"), "Runtime", true), QString());
    const CancelFlag raised{1};
    stick.context.cancelRef = &raised;
    QCOMPARE(stick.context.setupComponent(record("no.exe"), "Runtime", true), QString());
}

// --- Online ---------------------------------------------------------------------------------

void ComponentSetupTest::aDownloadIsStoredCheckedAndStarted() {
    Online online;
    online.offer("pkg/setup.exe", installer("runtime"));
    QString error;
    const QString note = online.context.setupComponent(
        record("pkg/setup.exe", hashOf(installer("runtime"))), "Runtime", true, &error);
    QCOMPARE(error, QString());
    QCOMPARE(note, startedText("Runtime", cached("setup.exe")));
    QCOMPARE(online.server.paths(), QStringList("/u/pkg/setup.exe"));
    QTRY_COMPARE(ran(), QStringList("runtime 0"));
    QVERIFY(QFile::permissions(cached("setup.exe")) & QFile::ExeOwner);
}

void ComponentSetupTest::aCacheHitMakesNoRequest_data() {
    QTest::addColumn<bool>("hashed");
    QTest::newRow("with its hash") << true;
    QTest::newRow("unchecked, without one") << false;
}

void ComponentSetupTest::aCacheHitMakesNoRequest() {
    QFETCH(bool, hashed);
    Online online;
    support::writeTree(AppPaths::updateCacheDirectory(), {{"setup.exe", installer("cached")}});
    const QString hash = hashed ? hashOf(installer("cached")) : QString();
    QCOMPARE(online.context.setupComponent(record("setup.exe", hash), "Runtime", true),
             startedText("Runtime", cached("setup.exe")));
    QCOMPARE(online.server.paths(), QStringList());
    QTRY_COMPARE(ran(), QStringList("cached 0"));
}

void ComponentSetupTest::aStaleCacheIsDownloadedAnew() {
    Online online;
    online.offer("setup.exe", installer("fresh"));
    support::writeTree(AppPaths::updateCacheDirectory(), {{"setup.exe", "stale"}});
    QString error;
    const QString note = online.context.setupComponent(
        record("setup.exe", hashOf(installer("fresh"))), "Runtime", true, &error);
    QCOMPARE(note, startedText("Runtime", cached("setup.exe")));
    QCOMPARE(error, QString());
    QCOMPARE(online.server.paths(), QStringList("/u/setup.exe"));
    QCOMPARE(installation::takeLog(),
             QStringList({"Runtime 安装包缓存命中但校验不一致，已自动重下并通过校验：" +
                              cached("setup.exe"),
                          note}));
    QTRY_COMPARE(ran(), QStringList("fresh 0"));
}

// Nothing tells a cached file from one that was downloaded just now.
void ComponentSetupTest::aDownloadThatDoesNotMatchIsDownloadedTwice() {
    Online online;
    online.offer("setup.exe", "wrong");
    QString error;
    QCOMPARE(online.context.setupComponent(record("setup.exe", "00"), "Runtime", true, &error),
             QString());
    QCOMPARE(error, "Runtime 安装包校验失败（" + mismatch(cached("setup.exe"), "00", "wrong") +
                        "），将继续使用当前版本。");
    QCOMPARE(online.server.paths(), QStringList({"/u/setup.exe", "/u/setup.exe"}));
    QCOMPARE(installation::takeLog(), QStringList(error));
    QVERIFY(QFileInfo::exists(cached("setup.exe")));
}

void ComponentSetupTest::aStaleCacheThatCannotBeDownloadedAnew() {
    Online online;
    support::writeTree(AppPaths::updateCacheDirectory(), {{"setup.exe", "stale"}});
    QString error;
    QCOMPARE(online.context.setupComponent(record("setup.exe", "00"), "Runtime", true, &error),
             QString());
    const QString start = "Runtime 安装包校验失败且重下失败（校验：" +
                          mismatch(cached("setup.exe"), "00", "stale") + "；重下：";
    QVERIFY2(error.startsWith(start), qPrintable(error));
    QVERIFY2(error.contains(" (HTTP 404) URL: ") && error.endsWith("），将继续使用当前版本。"),
             qPrintable(error));
    QCOMPARE(installation::takeLog(), QStringList(error));
}

void ComponentSetupTest::aDownloadFails_data() {
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("why");
    QTest::newRow("the server has none") << "SERVER"
                                         << " (HTTP 404) URL: ";
    QTest::newRow("the address is no URL") << "http://["
                                           << "invalid URL: ";
}

void ComponentSetupTest::aDownloadFails() {
    QFETCH(QString, base);
    QFETCH(QString, why);
    Online online;
    if (base != "SERVER")
        online.context.snapshot.baseLocation = base;
    QString error;
    QCOMPARE(online.context.setupComponent(record("setup.exe", "00"), "Runtime", true, &error),
             QString());
    QVERIFY2(error.startsWith("Runtime 安装包下载失败（") && error.contains(why) &&
                 error.endsWith("），将继续使用当前版本。"),
             qPrintable(error));
    QCOMPARE(installation::takeLog(), QStringList(error));
    QVERIFY(!QFileInfo::exists(cached("setup.exe")));
}

void ComponentSetupTest::anInstallerWithoutAFileOfItsOwnIsMissing_data() {
    QTest::addColumn<QString>("setupUrl");
    QTest::addColumn<bool>("fromUsb");
    QTest::addColumn<QString>("path");
    const QString cache = AppPaths::updateCacheDirectory();
    QTest::newRow("an address that ends in a slash") << "pkg/" << false << cache;
    QTest::newRow("this folder") << "pkg/." << false << cache + "/.";
    QTest::newRow("the folder above") << "pkg/.." << false << cache + "/..";
    QTest::newRow("a folder in the cache") << "folder" << false << cache + "/folder";
    QTest::newRow("a folder on a stick") << "folder" << true << "STICK/folder";
    QTest::newRow("the stick itself") << "." << true << "STICK/.";
}

void ComponentSetupTest::anInstallerWithoutAFileOfItsOwnIsMissing() {
    QFETCH(QString, setupUrl);
    QFETCH(bool, fromUsb);
    QFETCH(QString, path);
    const Stick stick;
    const Online online;
    QVERIFY(QDir(stick.place.path()).mkdir("folder"));
    QVERIFY(QDir(AppPaths::updateCacheDirectory()).mkdir("folder"));
    const UpdateContext &context = fromUsb ? stick.context : online.context;
    for (const QString &hash : {QString(), QString("00")}) {
        QString error;
        QCOMPARE(context.setupComponent(record(setupUrl, hash), "Runtime", true, &error),
                 QString());
        QCOMPARE(error, "Runtime 安装包不存在：" + path.replace("STICK", stick.place.path()) +
                            "，将继续使用当前版本。");
    }
    QCOMPARE(online.server.paths(), QStringList());
}

// The address is unusable, so what lies in the cache cannot be renewed.
void ComponentSetupTest::aStaleCacheWithoutAUsableAddress() {
    Online online;
    online.context.snapshot.baseLocation = "http://[";
    support::writeTree(AppPaths::updateCacheDirectory(), {{"setup.exe", "stale"}});
    QString error;
    QCOMPARE(online.context.setupComponent(record("setup.exe", "00"), "Runtime", true, &error),
             QString());
    QCOMPARE(error, "Runtime 安装包校验失败（" + mismatch(cached("setup.exe"), "00", "stale") +
                        "），将继续使用当前版本。");
}

// Two packages with one last segment share one file of the cache.
void ComponentSetupTest::theCacheGoesByTheLastSegment() {
    Online online;
    online.offer("1/setup.exe", installer("one"));
    online.offer("2/setup.exe", installer("two"));
    const UpdateContext &context = online.context;
    QVERIFY(!context.setupComponent(record("1/setup.exe", hashOf(installer("one"))), "A", true)
                 .isEmpty());
    QTRY_COMPARE(ran(), QStringList("one 0"));
    // Windows writes to no program that is still about to end.
    QTRY_VERIFY(QFile(cached("setup.exe")).open(QIODevice::ReadWrite));
    QVERIFY(!context.setupComponent(record("2/setup.exe", hashOf(installer("two"))), "B", true)
                 .isEmpty());
    QTRY_COMPARE(ran(), QStringList({"one 0", "two 0"}));
    // Without a hash the first that came would have been started again.
    QCOMPARE(online.server.paths(), QStringList({"/u/1/setup.exe", "/u/2/setup.exe"}));
}

// What stands behind the last slash is the name, a query included: another query, another package.
void ComponentSetupTest::aQueryIsPartOfTheNameInTheCache() {
    if (support::onWindows)
        QSKIP("no file can have such a name there");
    Online online;
    for (const QByteArray name : {"one", "two"}) {
        const QByteArray address = "setup.exe?v=" + name;
        online.offer(address, installer(name));
        const QString told = QString::fromUtf8(address);
        QCOMPARE(online.context.setupComponent(record(told), "Runtime", true),
                 startedText("Runtime", cached(told)));
        QTRY_VERIFY(ran().contains(name + " 0"));
    }
    QCOMPARE(online.server.paths(), QStringList({"/u/setup.exe?v=one", "/u/setup.exe?v=two"}));
    QCOMPARE(support::readTree(AppPaths::updateCacheDirectory()),
             (support::FileTree{{"setup.exe?v=one", installer("one")},
                                {"setup.exe?v=two", installer("two")}}));
}

void ComponentSetupTest::aCancelDuringTheSecondDownload() {
    Online online;
    online.offer("python.exe", installer("python"));
    online.server.on("/u/runtime.exe", {support::stall()});
    UpdateSnapshot &snapshot = online.context.snapshot;
    snapshot.pythonToolsEntry = record("python.exe");
    snapshot.runtimeEntry = record("runtime.exe");
    snapshot.editorEntry = record("editor.exe");
    snapshot.launcherEntry = record("launcher.exe");
    CancelFlag flag{0};
    online.context.cancelRef = &flag;
    std::thread user([&] {
        while (online.server.paths().size() < 2)
            std::this_thread::yield();
        flag = 1;
    });
    const ComponentSetupResult result = online.context.runComponentSetup();
    user.join();
    QVERIFY(result.success && result.cancelled);
    QCOMPARE(result.summary, startedText("Python 工具", cached("python.exe")));
    const QString failed = "Runtime 安装包下载失败（cancelled），将继续使用当前版本。";
    QCOMPARE(result.warnings, failed + "\ncancelled\ncancelled");
    QCOMPARE(installation::takeLog(), QStringList({result.summary, failed}));
    QTRY_COMPARE(ran(), QStringList("python 0"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ComponentSetupTest)
#include "component_setup_test.moc"
