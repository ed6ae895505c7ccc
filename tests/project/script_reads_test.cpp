// How often the files of a project are opened: the launcher checks a project at the end of every
// countdown, so one validation opens each file once. The kernel counts.
#include "project/project_validator.h"
#include "script/project_checks.h"

#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include <array>

#include <sys/inotify.h>
#include <unistd.h>

namespace {

using Files = QMap<QString, QByteArray>; // name to content
using Opens = QMap<QString, int>;        // name to how often it was opened

// Counts from its making on, in a folder and in its sub-folder "sub". It is told of each close too,
// since the kernel merges two equal events in a row.
class OpenCounter {
public:
    explicit OpenCounter(const QString &folder)
        : queue(::inotify_init1(IN_NONBLOCK)) {
        for (const QString &name : {QString(), QStringLiteral("sub/")})
            prefixes.insert(::inotify_add_watch(queue,
                                                QFile::encodeName(folder + '/' + name).constData(),
                                                IN_OPEN | IN_CLOSE),
                            name);
    }
    ~OpenCounter() { ::close(queue); }
    OpenCounter(const OpenCounter &) = delete;
    OpenCounter &operator=(const OpenCounter &) = delete;

    // Every open that has returned stands in the queue already.
    Opens opens() {
        Opens counts;
        alignas(inotify_event) std::array<char, 65536> events{};
        ssize_t length = 0;
        while ((length = ::read(queue, events.data(), events.size())) > 0) {
            for (const char *at = events.data(); at < events.data() + length;) {
                const auto &event = *reinterpret_cast<const inotify_event *>(at);
                if ((event.mask & IN_OPEN) != 0 && (event.mask & IN_ISDIR) == 0)
                    ++counts[prefixes.value(event.wd) + QFile::decodeName(event.name)];
                at += sizeof(inotify_event) + event.len;
            }
        }
        return counts;
    }

private:
    int queue;
    QMap<int, QString> prefixes;
};

QJsonArray listOf(const QStringList &paths) {
    QJsonArray scripts;
    for (const QString &path : paths)
        scripts.append(QJsonObject{{"id", path}, {"path", path}, {"role", "main"}});
    return scripts;
}

// Writes the files and a project that lists `paths`; gives the project's path.
QString writeProject(const support::ProjectFolder &folder, const Files &files,
                     const QStringList &paths) {
    folder.write("sub/data.json", "{}");
    for (auto file = files.cbegin(); file != files.cend(); ++file)
        folder.write(file.key(), file.value());
    const QJsonObject root{{"schemaVersion", 1}, {"scripts", listOf(paths)}};
    return folder.write("line.yslib", QJsonDocument(root).toJson());
}

} // namespace

Q_DECLARE_METATYPE(Files)
Q_DECLARE_METATYPE(Opens)

class ScriptReadsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(support::loadScriptVocabulary()); }

    void validation_data();
    void validation();
    void everyCheckByItselfReadsAnew();
    void nothingIsKeptForTheNextValidation();
};

void ScriptReadsTest::validation_data() {
    QTest::addColumn<Files>("files");
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<Opens>("expected");
    const Files ring{{"a.ys", "import \"sub/b.ys\";\nglobal int cam1_w;\n"},
                     {"sub/b.ys", "import \"../c.ys\";\nglobal int cam1_w; global int bad;\n"},
                     {"c.ys", "import \"a.ys\";\nglobal int cam1_w;\n"}};
    QTest::newRow("scripts that import each other and declare the same globals")
        << ring << QStringList({"a.ys", "sub/b.ys", "c.ys"})
        << Opens({{"line.yslib", 1}, {"a.ys", 1}, {"sub/b.ys", 1}, {"c.ys", 1}});
    QTest::newRow("what is imported or lies there but is not listed is not opened")
        << ring << QStringList("a.ys") << Opens({{"line.yslib", 1}, {"a.ys", 1}});
    QTest::newRow("a script listed three times")
        << ring << QStringList({"c.ys", "a.ys", "c.ys", "c.ys"})
        << Opens({{"line.yslib", 1}, {"a.ys", 1}, {"c.ys", 1}});
    QTest::newRow("a backslash leads to the same file")
        << ring << QStringList({"sub/b.ys", "sub\\b.ys"})
        << Opens({{"line.yslib", 1}, {"sub/b.ys", 1}});
    // Its imports count from the path as it is written.
    QTest::newRow("another spelling counts as another file")
        << ring << QStringList({"a.ys", "./a.ys"}) << Opens({{"line.yslib", 1}, {"a.ys", 2}});
    QTest::newRow("scripts that do not parse")
        << Files({{"a.ys", "} global int w;"}, {"c.ys", "global int w; @"}})
        << QStringList({"a.ys", "c.ys"}) << Opens({{"line.yslib", 1}, {"a.ys", 1}, {"c.ys", 1}});
    QTest::newRow("a missing script")
        << Files() << QStringList("a.ys") << Opens({{"line.yslib", 1}});
}

void ScriptReadsTest::validation() {
    QFETCH(Files, files);
    QFETCH(QStringList, listed);
    const support::ProjectFolder folder;
    const QString project = writeProject(folder, files, listed);
    OpenCounter counter(folder.path(""));
    QVERIFY(!validateProjectFile(project).isEmpty());
    QTEST(counter.opens(), "expected");
}

void ScriptReadsTest::everyCheckByItselfReadsAnew() {
    const support::ProjectFolder folder;
    const QStringList listed{"a.ys", "b.ys", "a.ys"};
    const QString project = writeProject(
        folder, {{"a.ys", "import \"b.ys\"; global int w;"}, {"b.ys", "global int w;"}}, listed);
    const Opens once{{"a.ys", 1}, {"b.ys", 1}};
    OpenCounter counter(folder.path(""));
    QVERIFY(ast::checkImportGraph(project, listOf(listed)).passed);
    QCOMPARE(counter.opens(), once);
    QVERIFY(!ast::checkCrossScriptGlobals(project, listOf(listed)).passed);
    QCOMPARE(counter.opens(), once);
    QCOMPARE(ast::collectImports(folder.path("a.ys"), QString()), QStringList(folder.path("b.ys")));
    QCOMPARE(counter.opens(), Opens({{"a.ys", 1}}));
}

void ScriptReadsTest::nothingIsKeptForTheNextValidation() {
    const support::ProjectFolder folder;
    const QString project = writeProject(folder, {{"a.ys", "global int cam1_w;"}}, {"a.ys"});
    const QString before = formatProjectIssues(validateProjectFile(project));
    folder.write("a.ys", "import \"a.ys\"; global int cam;\n");
    QCOMPARE(formatProjectIssues(validateProjectFile(project)),
             before + QStringLiteral("\n[Warning] a.ys: global 变量 'cam' 不符合 {camId}_{metric} "
                                     "命名\n[Error] scripts: 检测到 import 循环依赖"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptReadsTest)
#include "script_reads_test.moc"
