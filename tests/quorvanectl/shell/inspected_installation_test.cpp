// Which folder counts as an installation, and that looking at one leaves it as it was.
#include "quorvanectl/shell/inspected_installation.h"

#include "frame/app_paths.h"
#include "run_tool.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QTemporaryDir>

using support::Answer;
using support::FileTree;

class InspectedInstallationTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const;

private Q_SLOTS:
    void init();
    void installations_data();
    void installations();
    void noInstallations_data();
    void noInstallations();
    void aRefusedFolderIsNotLookedAt();
    void aCommandRefusesIt();
    void aCommandRunsOnABareOne();
};

QString InspectedInstallationTest::path(const QString &name) const {
    return folder->filePath(name);
}

void InspectedInstallationTest::init() {
    folder.reset(new QTemporaryDir);
}

void InspectedInstallationTest::installations_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("named");
    QTest::addColumn<QString>("program");
    QTest::newRow("its folder") << FileTree{{"pc/bin/config/update.pub", ""}} << "pc"
                                << "pc/bin";
    QTest::newRow("its program's folder") << FileTree{{"pc/bin/config/update.pub", ""}} << "pc/bin"
                                          << "pc/bin";
    QTest::newRow("with a slash behind") << FileTree{{"pc/bin/config/update.pub", ""}} << "pc/"
                                         << "pc/bin";
    QTest::newRow("a way round") << FileTree{{"pc/bin/config/update.pub", ""}} << "pc/bin/../bin/."
                                 << "pc/bin";
    QTest::newRow("a folder with a blank in a Chinese name")
        << FileTree{{QStringLiteral("产线 三/bin/config/update.pub"), ""}}
        << QStringLiteral("产线 三") << QStringLiteral("产线 三/bin");
    QTest::newRow("with nothing in its config") << FileTree{{"pc/bin/config/", ""}} << "pc"
                                                << "pc/bin";
    QTest::newRow("of two the one in bin")
        << FileTree{{"pc/config/a", ""}, {"pc/bin/config/a", ""}} << "pc"
        << "pc/bin";
    QTest::newRow("one without bin") << FileTree{{"pc/config/a", ""}} << "pc"
                                     << "pc";
}

void InspectedInstallationTest::installations() {
    QFETCH(FileTree, tree);
    QFETCH(QString, named);
    QFETCH(QString, program);
    support::writeTree(folder->path(), tree);
    QString error;
    QVERIFY2(ctl::inspectInstallation(path(named), &error), qPrintable(error));
    QCOMPARE(QDir::cleanPath(AppPaths::applicationDirectory()), path(program));
    QCOMPARE(error, QString());
    QCOMPARE(support::readTree(folder->path()), tree);
}

void InspectedInstallationTest::noInstallations_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::newRow("nothing is there") << FileTree{{"other/a", ""}};
    QTest::newRow("a file") << FileTree{{"pc", "x"}};
    QTest::newRow("an empty folder") << FileTree{{"pc/", ""}};
    QTest::newRow("a folder whose bin has no config") << FileTree{{"pc/bin/Quorvaner", "x"}};
    QTest::newRow("a folder whose config is a file") << FileTree{{"pc/bin/config", "x"}};
    QTest::newRow("a folder above one") << FileTree{{"pc/line3/bin/config/a", ""}};
    QTest::newRow("only the user's folder") << FileTree{{"pc/USER/config/a", ""}};
}

void InspectedInstallationTest::noInstallations() {
    QFETCH(FileTree, tree);
    support::writeTree(folder->path(), tree);
    QString error;
    QVERIFY(!ctl::inspectInstallation(path("pc"), &error));
    QCOMPARE(error,
             path("pc") + ": no installation is there: it has no folder bin/config or config");
    QCOMPARE(support::readTree(folder->path()), tree);
}

void InspectedInstallationTest::aRefusedFolderIsNotLookedAt() {
    support::writeTree(folder->path(), {{"pc/config/a", ""}});
    QString error;
    QVERIFY(ctl::inspectInstallation(path("pc"), &error));
    QVERIFY(!ctl::inspectInstallation(path("none"), &error));
    QCOMPARE(AppPaths::applicationDirectory(), path("pc"));
}

void InspectedInstallationTest::aCommandRefusesIt() {
    support::writeTree(folder->path(), {{"m.json", "{}"}});
    const Answer answer =
        support::runTool({"update", "explain", path("m.json"), "--install", path("no\nne")});
    QCOMPARE(answer.err, "quorvanectl: " + path("no\\nne") +
                             ": no installation is there: it has no folder bin/config or config\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
}

// One without FunctionLib.ini, key and versions is explained all the same, and nothing is made there.
void InspectedInstallationTest::aCommandRunsOnABareOne() {
    const FileTree tree{{"m.json", "{}"}, {"pc/bin/config/", ""}};
    support::writeTree(folder->path(), tree);
    const Answer answer =
        support::runTool({"update", "explain", path("m.json"), "--install", path("pc")});
    QCOMPARE(answer.err, QString());
    QVERIFY2(answer.out.startsWith("Signature\n"), qPrintable(answer.out));
    QVERIFY2(answer.out.contains("\nWhat the launcher says\n"), qPrintable(answer.out));
    QCOMPARE(answer.status, 1);
    QCOMPARE(support::readTree(folder->path()), tree);
}

QUORVANE_TEST_MAIN(QCoreApplication, InspectedInstallationTest)
#include "inspected_installation_test.moc"
