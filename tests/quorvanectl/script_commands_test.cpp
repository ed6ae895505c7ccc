#include "run_tool.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Answer;

namespace {

// The words of the shipped file.
const char library[] = "[Highlight]\nother=function,include,import\n";

} // namespace

class ScriptCommandsTest : public QObject {
    Q_OBJECT

private slots:
    void check_data() {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("text");

        QTest::newRow("a clean script") << QByteArray("int a = 1;\n") << 0 << "a.ys: clean\n";
        QTest::newRow("an empty script") << QByteArray() << 0 << "a.ys: clean\n";
        QTest::newRow("a bad character")
            << QByteArray("int a;\nb = 1 $ 2;\n") << 1
            << "a.ys:2:7: YS100 无法识别的字符\n    b = 1 $ 2;\n          ^\n";
        QTest::newRow("behind wide characters and a tab")
            << QByteArray("\t名 = $\r\n") << 1
            << "a.ys:1:6: YS100 无法识别的字符\n    \t名 = $\n    \t     ^\n";
        QTest::newRow("a stray brace has no text")
            << QByteArray("}\n") << 1 << "a.ys:1:1: YS200\n    }\n    ^\n";
        QTest::newRow("a control character does not reach the terminal")
            << QByteArray("a\x1b[31m\n") << 1
            << QString("a.ys:1:2: YS100 无法识别的字符\n    a\uFFFD[31m\n     ^\n");
        QTest::newRow("the middle of a long line")
            << QByteArray(100, 'a') + '$' + QByteArray(100, 'b') << 1
            << "a.ys:1:101: YS100 无法识别的字符\n    ..." + QString(60, 'a') + '$' +
                   QString(59, 'b') + "...\n       " + QString(60, ' ') + "^\n";
    }

    void check() {
        QFETCH(QByteArray, script);
        QFETCH(int, status);
        QFETCH(QString, text);
        const support::ProjectFolder folder;
        folder.write("a.ys", script);
        folder.write("lib.ini", library);
        const Answer answer = support::runProgram(
            {"script", "check", "a.ys", "--library", "lib.ini"}, folder.path(""));
        QCOMPARE(answer.out, text);
        QCOMPARE(answer.err, QString());
        QCOMPARE(answer.status, status);
    }

    void checkAsJson() {
        const support::ProjectFolder folder;
        folder.write("a.ys", "if a { }\n");
        const Answer answer =
            support::runProgram({"script", "check", "a.ys", "--format", "json"}, folder.path(""));
        QCOMPARE(answer.status, 1);
        QCOMPARE(answer.out, QString(R"({
    "diagnostics": [
        {
            "code": "YS200",
            "column": 4,
            "endColumn": 8,
            "line": 1,
            "message": "if 语句不完整，应为 if(条件) { ... }",
            "severity": 0
        }
    ],
    "passed": false,
    "path": "a.ys"
}
)"));
    }

    void theLibraryDecides() {
        const support::ProjectFolder folder;
        // Without its word in the library, import is a name like any other.
        folder.write("a.ys", "import \"b.ys\"\n");
        folder.write("lib.ini", "[Highlight]\nother=\n");
        QCOMPARE(support::runProgram({"script", "check", "a.ys"}, folder.path("")).status, 1);
        QCOMPARE(support::runProgram({"script", "check", "a.ys", "--library", "lib.ini"},
                                     folder.path(""))
                     .status,
                 0);
    }
};

QUORVANE_TEST_MAIN(QCoreApplication, ScriptCommandsTest)
#include "script_commands_test.moc"
