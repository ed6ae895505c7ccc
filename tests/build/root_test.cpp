// The root that a launcher finds in each place it is run from.
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

class RootTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rootOfEachPlace_data();
    void rootOfEachPlace();
    void buildTreeOfThisSourceTree();
};

namespace {

const QString tellRoot = QStringLiteral(QUORVANE_TELL_ROOT);

// What the program says from where it lies.
QString answerOf(const QString &program) {
    QProcess process;
    process.start(program, QStringList());
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

QString expectedAnswer(const QString &root, const QString &layout, const QString &user) {
    return QStringLiteral("root=%1\nlayout=%2\nuser=%3\n").arg(root, layout, user);
}

} // namespace

void RootTest::rootOfEachPlace_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("programFolder");
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QString>("user");

    const QStringList none;
    const QStringList project("tree/Quorvane.pro");
    QTest::newRow("bin at the root of a source tree finds the tree, and USER beside itself")
        << QStringList{"tree/src", "tree/examples/projects", "tree/USER"} << project << "tree/bin"
        << "tree"
        << "repository"
        << "tree/USER";
    QTest::newRow("a build tree finds the source tree above it, and USER in the source tree")
        << QStringList{"tree/src", "tree/examples/projects"} << project << "tree/build/dev/bin"
        << "tree"
        << "repository"
        << "tree/USER";
    QTest::newRow("a build tree with a folder src is taken for the root")
        << QStringList{"tree/src", "tree/build/dev/src"} << project << "tree/build/dev/bin"
        << "tree/build/dev"
        << "installation"
        << "tree/build/dev/USER";
    QTest::newRow("an installation is its own root, with USER one level up")
        << QStringList{"Quorvaner/bin/examples/projects", "Quorvaner/USER"} << none
        << "Quorvaner/bin"
        << "Quorvaner/bin"
        << "installation"
        << "Quorvaner/USER";
    QTest::newRow("an installation with the examples and without USER is taken for a source tree")
        << QStringList{"Quorvaner/bin/examples/projects"} << none << "Quorvaner/bin"
        << "Quorvaner/bin"
        << "installation"
        << "Quorvaner/bin/USER";
    QTest::newRow("an installation below a folder that holds a src takes that folder")
        << QStringList{"home/src", "home/apps/Quorvaner/USER"} << none << "home/apps/Quorvaner/bin"
        << "home"
        << "installation"
        << "home/apps/Quorvaner/USER";
    QTest::newRow("a src six levels up is out of reach")
        << QStringList{"src", "1/2/3/4/Quorvaner/USER"} << none << "1/2/3/4/Quorvaner/bin"
        << "1/2/3/4/Quorvaner/bin"
        << "installation"
        << "1/2/3/4/Quorvaner/USER";
}

void RootTest::rootOfEachPlace() {
    QFETCH(const QStringList, folders);
    QFETCH(const QStringList, files);
    QFETCH(const QString, programFolder);
    QFETCH(const QString, root);
    QFETCH(const QString, layout);
    QFETCH(const QString, user);

    // Deep enough that the six folders of the search never leave it.
    const QTemporaryDir temporary;
    const QDir base(QDir(temporary.path()).canonicalPath() + "/a/b/c/d/e");
    for (const QString &folder : folders + QStringList(programFolder))
        QVERIFY(base.mkpath(folder));
    for (const QString &name : files)
        QVERIFY(QFile(base.filePath(name)).open(QIODevice::WriteOnly));
    const QString program = base.filePath(programFolder + "/tell_root");
    QVERIFY(QFile::copy(tellRoot, program));

    QCOMPARE(answerOf(program), expectedAnswer(base.filePath(root), layout, base.filePath(user)));
}

// The program in its place in the build tree, where the launcher lies too.
void RootTest::buildTreeOfThisSourceTree() {
    const QString tree = QDir(QStringLiteral(QUORVANE_SOURCE_TREE)).absolutePath();
    if (!tellRoot.startsWith(tree + "/"))
        QSKIP("the build tree lies outside of the source tree");
    const QString beside = QDir(QFileInfo(tellRoot).path() + "/../USER").absolutePath();
    QVERIFY2(!QFileInfo::exists(beside), "something made a USER folder in the build tree");
    QCOMPARE(answerOf(tellRoot), expectedAnswer(tree, "repository", tree + "/USER"));
}

QUORVANE_TEST_MAIN(QCoreApplication, RootTest)

#include "root_test.moc"
