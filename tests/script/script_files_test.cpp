// Whole scripts, each with its outcome in a comment on its first line: "ok", or the code, the
// position and the text of its finding.
#include "script/script_diagnostics.h"

#include "support/library_file.h"
#include "support/staged_main.h"
#include "update/files/text_file.h"

#include <QCoreApplication>
#include <QDir>

class ScriptFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void files_data();
    void files();
};

void ScriptFilesTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ScriptFilesTest::files_data() {
    QTest::addColumn<QString>("path");
    const QDir folder(QStringLiteral(SCRIPT_FILES));
    const QStringList names = folder.entryList({"*.ys"}, QDir::Files);
    QVERIFY(names.size() > 20);
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << folder.filePath(name);
}

void ScriptFilesTest::files() {
    QFETCH(QString, path);
    const QString text = readTextFile(path);
    const QString firstLine = text.section('\n', 0, 0).remove('\r');
    QVERIFY(firstLine.startsWith("// "));
    ast::ScriptCheckContext context = ast::makeCheckContext(text);
    std::shared_ptr<ast::Program> program;
    const bool passes = ast::checkScript(context, &program);
    QString outcome = "ok";
    if (!passes) {
        const ast::ScriptDiagnostic &finding = context.result.diagnostics.front();
        outcome = QString("%1 %2:%3 %4")
                      .arg(finding.code, QString::number(finding.line),
                           QString::number(finding.column), finding.message);
    }
    QCOMPARE(outcome, firstLine.mid(3));
    QCOMPARE(program != nullptr, passes);
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptFilesTest)
#include "script_files_test.moc"
