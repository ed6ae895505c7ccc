// The core plug-in is found in its folder, and a missing one is named with its path.
#include "project/core_plugin.h"

#include "support/project_folder.h"
#include "support/staged_main.h"

class CorePluginTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void foundInTheFolder();
    void missingOneIsNamed();
};

void CorePluginTest::foundInTheFolder() {
    const support::ProjectFolder folder;
    folder.write("CoreOperators.dll", "");
    QString error = "untouched";
    QVERIFY(hasCorePlugin(folder.path(""), &error));
    QCOMPARE(error, QString("untouched"));
}

void CorePluginTest::missingOneIsNamed() {
    QString error;
    QVERIFY(!hasCorePlugin("no/100%1 folder", &error));
    QCOMPARE(error, QString("Core plugin missing: no/100%1 folder/CoreOperators.dll"));
    QVERIFY(!hasCorePlugin("no/folder"));
}

QUORVANE_TEST_MAIN(QCoreApplication, CorePluginTest)
#include "core_plugin_test.moc"
