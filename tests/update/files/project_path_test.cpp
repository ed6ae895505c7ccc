// Paths as a project writes them: either kind of separator, their cleaned form, and where their
// files lie.
#include "update/files/project_path.h"

#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

class ProjectPathTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleaned_data();
    void cleaned();
    void located_data();
    void located();
};

void ProjectPathTest::cleaned_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("slashed");
    QTest::addColumn<QString>("cleaned");
    QTest::newRow("a plain name") << "a.ys"
                                  << "a.ys"
                                  << "a.ys";
    QTest::newRow("backslashes separate") << "x\\y\\a.ys"
                                          << "x/y/a.ys"
                                          << "x/y/a.ys";
    QTest::newRow("./ goes") << ".\\a.ys"
                             << "./a.ys"
                             << "a.ys";
    QTest::newRow("../ takes a folder") << "x\\..\\a.ys"
                                        << "x/../a.ys"
                                        << "a.ys";
    QTest::newRow("../ at the front stays") << "../a.ys"
                                            << "../a.ys"
                                            << "../a.ys";
    QTest::newRow("a double slash goes") << "x//a.ys"
                                         << "x//a.ys"
                                         << "x/a.ys";
    QTest::newRow("case stays") << "X/A.YS"
                                << "X/A.YS"
                                << "X/A.YS";
    QTest::newRow("an empty path") << ""
                                   << ""
                                   << "";
}

void ProjectPathTest::cleaned() {
    QFETCH(QString, path);
    QTEST(slashedPath(path), "slashed");
    QTEST(cleanedPath(path), "cleaned");
}

void ProjectPathTest::located_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected"); // in the folder
    QTest::newRow("a file that exists") << "sub/a.ys"
                                        << "sub/a.ys";
    QTest::newRow("not cleaned") << "sub/../sub/a.ys"
                                 << "sub/../sub/a.ys";
    QTest::newRow("a backslash leads to the file") << "sub\\a.ys"
                                                   << "sub/a.ys";
    QTest::newRow("as written where that exists") << "odd\\b.ys"
                                                  << "odd\\b.ys";
    QTest::newRow("a missing file, slashed") << "no\\a.ys"
                                             << "no/a.ys";
    QTest::newRow("a folder exists too") << "sub"
                                         << "sub";
}

void ProjectPathTest::located() {
    QFETCH(QString, path);
    QFETCH(QString, expected);
    if (support::onWindows && path.contains('\\'))
        QSKIP("Windows itself takes a backslash for a separator, so the path is there as written");
    const support::ProjectFolder folder;
    folder.write("sub/a.ys", "");
    folder.write("odd\\b.ys", "");
    folder.write("odd/b.ys", "");
    QCOMPARE(locatedPath(QDir(folder.path("")), path), folder.path(expected));
    // An absolute path counts from nowhere.
    QCOMPARE(locatedPath(QDir("/elsewhere"), folder.path("sub/a.ys")), folder.path("sub/a.ys"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectPathTest)
#include "project_path_test.moc"
