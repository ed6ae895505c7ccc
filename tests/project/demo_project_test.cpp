// The demo project, as it ships, under the function library, as it ships.

#include "library/function_library.h"
#include "project/project_file.h"
#include "project/project_validator.h"
#include "script/project_checks.h"

#include "support/staged_main.h"

class DemoProjectTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void drawsNeitherErrorNorWarning();
    void importsAreReal();
    void hasANameAndAVersion();

private:
    const QString tree = QStringLiteral(QUORVANE_SOURCE_TREE);
    const QString folder = tree + "/examples/projects/demo";
    const QString project = folder + "/demo.yslib";
};

void DemoProjectTest::initTestCase() {
    QVERIFY(FunctionLibrary::instance().load(tree + "/resources/config/FunctionLib.ini"));
}

void DemoProjectTest::drawsNeitherErrorNorWarning() {
    QCOMPARE(formatProjectIssues(validateProjectFile(project)), QString());
}

// With `import` among the words of the shipped library, the graph has edges to look at.
void DemoProjectTest::importsAreReal() {
    QVERIFY(!ast::collectImports(folder + "/scripts/main.ys", folder).isEmpty());
}

void DemoProjectTest::hasANameAndAVersion() {
    QVERIFY(!readProjectName(project).isEmpty());
    QVERIFY(!readProjectVersion(project).isEmpty());
}

QUORVANE_TEST_MAIN(QCoreApplication, DemoProjectTest)
#include "demo_project_test.moc"
