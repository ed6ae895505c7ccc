// The file with the versions of all components: the launcher's key changes, and nothing else is lost.
#include "placer/release_version.h"

#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QTemporaryDir>

using support::FileTree;

Q_DECLARE_METATYPE(support::FileTree)

namespace {

constexpr char name[] = "release_version.json";

QByteArray lines(const QByteArray &members) {
    return "{\n" + members + "\n}\n";
}

placer::VersionFiles filesIn(const QTemporaryDir &folder) {
    return {folder.filePath(name), folder.filePath("setup/next.json")};
}

} // namespace

class ReleaseVersionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void writes_data();
    void writes();
    void whatIsPreparedIsNotWrittenAgain();
    void whatOthersWriteMeanwhileIsKept();
    void whatCannotBeReplacedIsAnError();
    void removes_data();
    void removes();
};

void ReleaseVersionTest::writes_data() {
    QTest::addColumn<FileTree>("before");
    QTest::addColumn<FileTree>("after");
    QTest::addColumn<QString>("setAside");

    const QByteArray own = lines("    \"launcherPackageVersion\": \"1.1.0\"");
    QTest::newRow("no file") << FileTree{} << FileTree{{name, own}} << QString();
    QTest::newRow("the old version") << FileTree{{name, R"({"launcherPackageVersion": "1.0.0"})"}}
                                     << FileTree{{name, own}} << QString();
    QTest::newRow("this version already: the file is left as it is")
        << FileTree{{name, R"({"launcherPackageVersion":"1.1.0"})"}}
        << FileTree{{name, R"({"launcherPackageVersion":"1.1.0"})"}} << QString();
    QTest::newRow("other keys, of whatever kind")
        << FileTree{{name, R"({"runtimePackageVersion": "3.1.4", "n": [1, {"a": null}]})"}}
        << FileTree{{name, lines("    \"launcherPackageVersion\": \"1.1.0\",\n"
                                 "    \"n\": [\n        1,\n        {\n            \"a\": null\n"
                                 "        }\n    ],\n    \"runtimePackageVersion\": \"3.1.4\"")}}
        << QString();
    QTest::newRow("behind a byte-order mark")
        << FileTree{{name, "\xEF\xBB\xBF{\"a\": \"b\"}"}}
        << FileTree{{name, lines("    \"a\": \"b\",\n    \"launcherPackageVersion\": \"1.1.0\"")}}
        << QString();
    QTest::newRow("in GBK, as the launcher reads it")
        << FileTree{{name, "{\"a\": \"\xD6\xD0\"}"}}
        << FileTree{{name, lines("    \"a\": \"中\",\n    \"launcherPackageVersion\": \"1.1.0\"")}}
        << QString();
    for (const char *const text : {"", "1.0.0", "[]", "{\"a\":", "\"text\""})
        QTest::addRow("no object: %s", text)
            << FileTree{{name, text}} << FileTree{{name, own}, {QString(name) + ".bad", text}}
            << QString(name) + ".bad";
    QTest::newRow("one that was put aside before stays")
        << FileTree{{name, "x"}, {QString(name) + ".bad", "first"}}
        << FileTree{{name, own}, {QString(name) + ".bad", "first"}, {QString(name) + ".bad2", "x"}}
        << QString(name) + ".bad2";
}

void ReleaseVersionTest::writes() {
    QFETCH(const FileTree, before);
    QFETCH(const FileTree, after);
    const QTemporaryDir folder;
    support::writeTree(folder.path(), before);
    QString setAside = "untouched";
    QString error;
    QVERIFY2(placer::writeLauncherVersion(filesIn(folder), "1.1.0", &setAside, &error),
             qPrintable(error));
    FileTree found = support::readTree(folder.path());
    found.remove("setup/");
    QCOMPARE(found, after);
    QTEST(setAside, "setAside");
}

// A full disk, here a folder that is no folder, is then no hindrance.
void ReleaseVersionTest::whatIsPreparedIsNotWrittenAgain() {
    const QTemporaryDir folder;
    support::writeTree(folder.path(), {{name, R"({"a": "b"})"}});
    const placer::VersionFiles files = filesIn(folder);
    QVERIFY(placer::prepareLauncherVersion(files, "1.1.0", nullptr));
    QVERIFY(QDir().mkpath(files.prepared + ".part/taken"));
    QString setAside;
    QString error;
    QVERIFY2(placer::writeLauncherVersion(files, "1.1.0", &setAside, &error), qPrintable(error));
    QCOMPARE(support::readTree(folder.path()).value(name),
             lines("    \"a\": \"b\",\n    \"launcherPackageVersion\": \"1.1.0\""));
}

void ReleaseVersionTest::whatOthersWriteMeanwhileIsKept() {
    const QTemporaryDir folder;
    support::writeTree(folder.path(), {{name, R"({"runtimePackageVersion": "1"})"}});
    QVERIFY(placer::prepareLauncherVersion(filesIn(folder), "1.1.0", nullptr));
    support::writeTree(folder.path(), {{name, R"({"runtimePackageVersion": "2"})"}});
    QString setAside;
    QVERIFY(placer::writeLauncherVersion(filesIn(folder), "1.1.0", &setAside, nullptr));
    QCOMPARE(support::readTree(folder.path()).value(name),
             lines("    \"launcherPackageVersion\": \"1.1.0\",\n"
                   "    \"runtimePackageVersion\": \"2\""));
}

void ReleaseVersionTest::whatCannotBeReplacedIsAnError() {
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(name));
    QString setAside;
    QString error;
    QVERIFY(!placer::writeLauncherVersion(filesIn(folder), "1.1.0", &setAside, &error));
    QVERIFY2(error.startsWith(folder.filePath(name) + ": "), qPrintable(error));
}

void ReleaseVersionTest::removes_data() {
    QTest::addColumn<FileTree>("before");
    QTest::addColumn<FileTree>("after");
    QTest::newRow("no file") << FileTree{} << FileTree{};
    QTest::newRow("the only key: the file goes too")
        << FileTree{{name, R"({"launcherPackageVersion": "1.0.0"})"}} << FileTree{};
    QTest::newRow("other keys stay")
        << FileTree{{name, R"({"launcherPackageVersion": "1.0.0", "a": "b"})"}}
        << FileTree{{name, lines("    \"a\": \"b\"")}};
    QTest::newRow("a file without the key stays as it is")
        << FileTree{{name, R"({"a":"b"})"}} << FileTree{{name, R"({"a":"b"})"}};
    QTest::newRow("what is no JSON stays") << FileTree{{name, "x"}} << FileTree{{name, "x"}};
}

void ReleaseVersionTest::removes() {
    QFETCH(const FileTree, before);
    const QTemporaryDir folder;
    support::writeTree(folder.path(), before);
    QVERIFY(placer::removeLauncherVersion(folder.filePath(name), nullptr));
    QTEST(support::readTree(folder.path()), "after");
}

QUORVANE_TEST_MAIN(QCoreApplication, ReleaseVersionTest)
#include "release_version_test.moc"
