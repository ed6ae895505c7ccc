// What is read from a project's file and its sidecar, broken ones too, and that a stamp replaces
// the file whole; a second name of the old file shows that nothing was written in it.
#include "project/project_file.h"

#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextCodec>

#include <filesystem>

using support::ProjectFolder;

namespace {

const QString sidecarName = QStringLiteral(".quorvane-installed-version");

constexpr qint64 gigabyte = 1LL << 30;

QByteArray inGbk(const QString &text) {
    return QTextCodec::codecForName("GBK")->fromUnicode(text);
}

QJsonObject rootOf(const QByteArray &json) {
    return QJsonDocument::fromJson(json).object();
}

} // namespace

class ProjectFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void name_data();
    void name();
    void nameOfWhatIsNoFile();
    void version_data();
    void version();
    void versionOfWhatIsNoFile();
    void installedVersion_data();
    void installedVersion();
    void sidecarPath_data();
    void sidecarPath();
    void refusesToStamp_data();
    void refusesToStamp();
    void stamps_data();
    void stamps();
    void stampKeepsTheRestOfTheDocument();
    void stampSucceedsWithoutTheSidecar();
    void stampOfAFileThatCannotBeWrittenGoesToTheSidecar();
    void stampFailsWhereNothingCanBeWritten();
    void stampNeverWritesInTheOldFile();
    void stampReachesAFileThatAReaderHolds();
    void stampKeepsPermissionsAndLeavesNothingElse();
    void stampFollowsALinkToTheFile();
};

void ProjectFileTest::name_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected"); // null where nothing is read
    const QString chinese = QStringLiteral("{\"project\":{\"name\":\"检测线\"}}");
    QTest::newRow("a name") << QByteArray(R"({"project":{"name":"demo"}})") << "demo";
    QTest::newRow("a name with blanks around it stays as it is")
        << QByteArray(R"({"project":{"name":" demo "}})") << " demo ";
    QTest::newRow("behind a byte-order mark")
        << QByteArray("\xEF\xBB\xBF{\"project\":{\"name\":\"demo\"}}") << "demo";
    QTest::newRow("Chinese in UTF-8") << chinese.toUtf8() << QStringLiteral("检测线");
    QTest::newRow("Chinese in GBK") << inGbk(chinese) << QStringLiteral("检测线");
    QTest::newRow("an unknown key at the top is ignored")
        << QByteArray(R"({"name":"no","project":{"name":"demo"},"extra":[1]})") << "demo";
    QTest::newRow("the last of two keys wins")
        << QByteArray(R"({"project":{"name":"first","name":"last"}})") << "last";
    QTest::newRow("an empty name") << QByteArray(R"({"project":{"name":""}})") << "";
    QTest::newRow("no name") << QByteArray(R"({"project":{}})") << QString();
    QTest::newRow("a number for a name") << QByteArray(R"({"project":{"name":5}})") << QString();
    QTest::newRow("an array for the project")
        << QByteArray(R"({"project":[{"name":"demo"}]})") << QString();
    QTest::newRow("an array at the root")
        << QByteArray(R"([{"project":{"name":"demo"}}])") << QString();
    QTest::newRow("no JSON") << QByteArray(R"("name":"demo")") << QString();
    QTest::newRow("a broken end") << QByteArray(R"({"project":{"name":"demo"})") << QString();
    QTest::newRow("an empty file") << QByteArray() << QString();
    QTest::newRow("nested 100,000 deep") << QByteArray(100000, '[') << QString();
}

void ProjectFileTest::name() {
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);
    const ProjectFolder folder;
    const QString found = readProjectName(folder.write("line.yslib", content));
    QCOMPARE(found, expected);
    QCOMPARE(found.isEmpty(), expected.isEmpty());
    QCOMPARE(readProjectIdentity(folder.path("line.yslib")).name, found);
}

void ProjectFileTest::nameOfWhatIsNoFile() {
    const ProjectFolder folder;
    QVERIFY(readProjectName(folder.path("missing.yslib")).isNull());
    QVERIFY(readProjectName(folder.path("")).isNull());
    QVERIFY(readProjectName(QString()).isNull());
    QVERIFY(readProjectName(folder.writeZeros("zeros.yslib", gigabyte)).isNull());
}

void ProjectFileTest::version_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a plain text") << QByteArray(R"({"project":{"version":"1.2.3"}})") << "1.2.3";
    QTest::newRow("a v in front goes")
        << QByteArray(R"({"project":{"version":"v1.2.3"}})") << "1.2.3";
    QTest::newRow("blanks and a capital V go")
        << QByteArray(R"({"project":{"version":"  V 1.2.3 "}})") << "1.2.3";
    QTest::newRow("the number 2 has eight decimals")
        << QByteArray(R"({"project":{"version":2}})") << "2.00000000";
    QTest::newRow("the number 1.5 has eight decimals")
        << QByteArray(R"({"project":{"version":1.5}})") << "1.50000000";
    QTest::newRow("a bool is no version") << QByteArray(R"({"project":{"version":true}})") << "";
    QTest::newRow("null is no version") << QByteArray(R"({"project":{"version":null}})") << "";
    QTest::newRow("no version") << QByteArray(R"({"project":{"name":"demo"}})") << "";
    QTest::newRow("a file that is no JSON still yields one")
        << QByteArray("{ \"project\": { \"version\" : \"1.0.0\" ") << "1.0.0";
    QTest::newRow("the search of a broken file takes white space and line feeds")
        << QByteArray("\"version\" \n\t:\r\n \"v1.0.0\"") << "1.0.0";
    QTest::newRow("a version of a script counts where the project has none")
        << QByteArray(R"({"project":{"name":"demo"},"scripts":[{"version":"9"}]})") << "9";
    QTest::newRow("the first version in the text counts")
        << QByteArray(R"({"scripts":[{"version":"9"},{"version":"8"}]})") << "9";
    QTest::newRow("the project's version wins over an earlier one")
        << QByteArray(R"({"a":{"version":"9"},"project":{"version":"1.0"}})") << "1.0";
    QTest::newRow("a blank version falls to the search, which finds it again")
        << QByteArray(R"({"project":{"version":"  "},"z":{"version":"7"}})") << "";
    QTest::newRow("an empty version falls to the search, which passes it over")
        << QByteArray(R"({"project":{"version":""},"z":{"version":"7"}})") << "7";
    QTest::newRow("a version of an array at the root counts")
        << QByteArray(R"([{"version":"3"}])") << "3";
    QTest::newRow("behind a byte-order mark")
        << QByteArray("\xEF\xBB\xBF{\"project\":{\"version\":\"1.2\"}}") << "1.2";
    QTest::newRow("beside Chinese in GBK")
        << inGbk(QStringLiteral("{\"project\":{\"displayName\":\"检测线\",\"version\":\"1.2\"}}"))
        << "1.2";
    QTest::newRow("an empty file") << QByteArray() << "";
    QTest::newRow("nested 100,000 deep") << QByteArray(100000, '[') << "";
    QTest::newRow("NUL bytes") << QByteArray(1000, '\0') << "";
    QTest::newRow("UTF-16 is not recognised")
        << QByteArray("\xFF\xFE\"\0v\0e\0r\0s\0i\0o\0n\0\"\0:\0\"\0001\0\"\0", 28) << "";
}

void ProjectFileTest::version() {
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);
    const ProjectFolder folder;
    QCOMPARE(readProjectVersion(folder.write("line.yslib", content)), expected);
}

void ProjectFileTest::versionOfWhatIsNoFile() {
    const ProjectFolder folder;
    QCOMPARE(readProjectVersion(folder.path("missing.yslib")), QString());
    QCOMPARE(readProjectVersion(folder.path("")), QString());
    QCOMPARE(readProjectVersion(QString()), QString());
}

void ProjectFileTest::installedVersion_data() {
    QTest::addColumn<QByteArray>("project");
    QTest::addColumn<QByteArray>("sidecar");
    QTest::addColumn<QString>("expected");
    const QByteArray without(R"({"project":{"name":"demo"}})");
    QTest::newRow("the file's version stands")
        << QByteArray(R"({"project":{"version":"1.0"}})") << QByteArray("2.0\n") << "1.0";
    QTest::newRow("the sidecar's version comes second") << without << QByteArray("2.0\n") << "2.0";
    QTest::newRow("the sidecar's text is trimmed and not normalised")
        << without << QByteArray(" v2.0 \r\n") << "v2.0";
    QTest::newRow("a damaged file leaves it to the sidecar")
        << QByteArray("{") << QByteArray("2.0") << "2.0";
    QTest::newRow("a sidecar behind a byte-order mark") << without
                                                        << QByteArray("\xEF\xBB\xBF"
                                                                      "2.0\n")
                                                        << "2.0";
    QTest::newRow("a blank sidecar") << without << QByteArray(" \n") << QString();
}

void ProjectFileTest::installedVersion() {
    QFETCH(QByteArray, project);
    QFETCH(QByteArray, sidecar);
    QFETCH(QString, expected);
    const ProjectFolder folder;
    folder.write("line.yslib", project);
    folder.write(sidecarName, sidecar);
    const QString found = installedProjectVersion(folder.path("line.yslib"));
    QCOMPARE(found, expected);
    QCOMPARE(found.isNull(), expected.isNull());
    const ProjectIdentity both = readProjectIdentity(folder.path("line.yslib"));
    QCOMPARE(both.version, found);
    QCOMPARE(both.version.isNull(), found.isNull());
    QCOMPARE(both.name, readProjectName(folder.path("line.yslib")));
    QVERIFY(installedProjectVersion(ProjectFolder().path("line.yslib")).isNull());
}

void ProjectFileTest::sidecarPath_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    QTest::newRow("beside the file") << "/a/b/line.yslib"
                                     << "/a/b/" + sidecarName;
    QTest::newRow("in the root") << "/line.yslib"
                                 << "/" + sidecarName;
    QTest::newRow("a relative path counts from the current folder")
        << "line.yslib" << QDir::currentPath() + "/" + sidecarName;
    QTest::newRow("an empty path") << "" << QString();
    QTest::newRow("a blank path") << " \t" << QString();
}

void ProjectFileTest::sidecarPath() {
    QFETCH(QString, path);
    QFETCH(QString, expected);
    QCOMPARE(versionSidecarPath(support::rooted(path)), support::rooted(expected));
    QCOMPARE(versionSidecarPath(path).isNull(), expected.isNull());
}

void ProjectFileTest::refusesToStamp_data() {
    QTest::addColumn<QString>("name"); // in the project's folder; null for an empty path
    QTest::addColumn<QString>("version");
    QTest::newRow("an empty version") << "line.yslib"
                                      << "";
    QTest::newRow("a blank version") << "line.yslib"
                                     << " \n";
    QTest::newRow("an empty path") << QString() << "1.0";
}

void ProjectFileTest::refusesToStamp() {
    QFETCH(QString, name);
    QFETCH(QString, version);
    const ProjectFolder folder;
    const QByteArray before("{\"project\":{}}");
    folder.write("line.yslib", before);
    QVERIFY(!stampProjectVersion(name.isNull() ? QString() : folder.path(name), version));
    QVERIFY(!stampProjectVersion(QStringLiteral("  "), version));
    QCOMPARE(folder.read("line.yslib"), before);
    QVERIFY(!QFileInfo::exists(folder.path(sidecarName)));
}

void ProjectFileTest::stamps_data() {
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("a project without a version gets one")
        << QByteArray(R"({"project":{"name":"demo"}})") << "1.2"
        << QByteArray("{\n    \"project\": {\n        \"name\": \"demo\",\n"
                      "        \"version\": \"1.2\"\n    }\n}\n");
    QTest::newRow("a file without a project gets one that holds the version alone")
        << QByteArray("{}") << "1.2"
        << QByteArray("{\n    \"project\": {\n        \"version\": \"1.2\"\n    }\n}\n");
    QTest::newRow("a project that is no object is replaced")
        << QByteArray(R"({"project":"demo"})") << "1.2"
        << QByteArray("{\n    \"project\": {\n        \"version\": \"1.2\"\n    }\n}\n");
    QTest::newRow("a number becomes a text")
        << QByteArray(R"({"project":{"version":2}})") << "3"
        << QByteArray("{\n    \"project\": {\n        \"version\": \"3\"\n    }\n}\n");
    QTest::newRow("the version is neither trimmed nor normalised")
        << QByteArray("{}") << " v1 "
        << QByteArray("{\n    \"project\": {\n        \"version\": \" v1 \"\n    }\n}\n");
    QTest::newRow("keys come back sorted")
        << QByteArray(R"({"z":1,"project":{},"a":2})") << "1"
        << QByteArray("{\n    \"a\": 2,\n    \"project\": {\n        \"version\": \"1\"\n    },\n"
                      "    \"z\": 1\n}\n");
    QTest::newRow("GBK becomes UTF-8")
        << inGbk(QStringLiteral("{\"project\":{\"name\":\"检测线\"}}")) << "1"
        << QStringLiteral("{\n    \"project\": {\n        \"name\": \"检测线\",\n"
                          "        \"version\": \"1\"\n    }\n}\n")
               .toUtf8();
    QTest::newRow("a damaged file is left alone")
        << QByteArray("{\"project\":") << "1" << QByteArray("{\"project\":");
    QTest::newRow("an array at the root is left alone")
        << QByteArray("[1]") << "1" << QByteArray("[1]");
    QTest::newRow("an empty file is left alone") << QByteArray() << "1" << QByteArray();
}

// Whatever becomes of the file, the sidecar holds the version afterwards.
void ProjectFileTest::stamps() {
    QFETCH(QByteArray, before);
    QFETCH(QString, version);
    QFETCH(QByteArray, after);
    const ProjectFolder folder;
    QVERIFY(stampProjectVersion(folder.write("line.yslib", before), version));
    QCOMPARE(support::linesOf(folder.read("line.yslib")), after);
    QCOMPARE(folder.read(sidecarName), support::textLines(version.toUtf8() + '\n'));
}

void ProjectFileTest::stampKeepsTheRestOfTheDocument() {
    const QByteArray before(R"({"schemaVersion":1,"scripts":[{"id":"a"},5,null],"x":{"y":[]}})");
    const ProjectFolder folder;
    QVERIFY(stampProjectVersion(folder.write("line.yslib", before), "1.0"));
    QJsonObject root = rootOf(folder.read("line.yslib"));
    root.remove("project");
    QCOMPARE(root, rootOf(before));
}

void ProjectFileTest::stampSucceedsWithoutTheSidecar() {
    const ProjectFolder folder;
    folder.write(sidecarName + "/in the way", "");
    QVERIFY(stampProjectVersion(folder.write("line.yslib", "{}"), "1.0"));
    QCOMPARE(readProjectVersion(folder.path("line.yslib")), QStringLiteral("1.0"));
}

void ProjectFileTest::stampOfAFileThatCannotBeWrittenGoesToTheSidecar() {
    const ProjectFolder folder;
    folder.write("line.yslib/in the way", "");
    QVERIFY(stampProjectVersion(folder.path("line.yslib"), "1.0"));
    QCOMPARE(folder.read(sidecarName), support::textLines("1.0\n"));
    QVERIFY(stampProjectVersion(folder.path("new/line.yslib"), "2.0"));
    QCOMPARE(folder.read("new/" + sidecarName), support::textLines("2.0\n"));
    QVERIFY(!QFileInfo::exists(folder.path("new/line.yslib")));
}

void ProjectFileTest::stampFailsWhereNothingCanBeWritten() {
    const ProjectFolder folder;
    folder.write(sidecarName + "/in the way", "");
    QVERIFY(!stampProjectVersion(folder.path("missing.yslib"), "1.0"));
}

// What another name of the old file shows is what would be there after a kill halfway.
void ProjectFileTest::stampNeverWritesInTheOldFile() {
    const ProjectFolder folder;
    const QString file = folder.write("line.yslib", "{}");
    const auto inUtf8 = [](const QString &path) {
        return std::filesystem::u8path(path.toUtf8().constData());
    };
    std::filesystem::create_hard_link(inUtf8(file), inUtf8(folder.path("old.yslib")));
    QVERIFY(stampProjectVersion(file, "1.0"));
    QCOMPARE(folder.read("old.yslib"), QByteArray("{}"));
    QCOMPARE(readProjectVersion(file), QStringLiteral("1.0"));
}

// On Windows nothing can take the place of a file that is open.
void ProjectFileTest::stampReachesAFileThatAReaderHolds() {
    const ProjectFolder folder;
    QFile reader(folder.write("line.yslib", "{}"));
    QVERIFY(reader.open(QIODevice::ReadOnly));
    QVERIFY(stampProjectVersion(reader.fileName(), "1.0"));
    QCOMPARE(readProjectVersion(reader.fileName()), QStringLiteral("1.0"));
    QCOMPARE(
        QDir(folder.path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        (QStringList{sidecarName, "line.yslib"}));
}

void ProjectFileTest::stampKeepsPermissionsAndLeavesNothingElse() {
    const ProjectFolder folder;
    const QString file = folder.write("line.yslib", "{}");
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser |
                             QFile::WriteUser | QFile::ReadGroup;
    QVERIFY(QFile::setPermissions(file, permissions));
    const auto before = QFile::permissions(file); // Windows knows no groups of this kind
    QVERIFY(support::onWindows || before == permissions);
    QVERIFY(stampProjectVersion(file, "1.0"));
    QCOMPARE(QFile::permissions(file), before);
    QCOMPARE(QDir(QFileInfo(file).absolutePath())
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             (QStringList{sidecarName, "line.yslib"}));
}

void ProjectFileTest::stampFollowsALinkToTheFile() {
    if (support::onWindows)
        QSKIP("Qt makes shortcuts there, which are no links");
    const ProjectFolder folder;
    const QString file = folder.write("real.yslib", "{}");
    QVERIFY(QFile::link(file, folder.path("line.yslib")));
    QVERIFY(stampProjectVersion(folder.path("line.yslib"), "1.0"));
    QVERIFY(QFileInfo(folder.path("line.yslib")).isSymLink());
    QCOMPARE(readProjectVersion(file), QStringLiteral("1.0"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectFileTest)
#include "project_file_test.moc"
