// library list: one small library as text and as JSON, whole, and the installation's own where none
// is given.
#include "run_tool.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using support::Answer;

namespace {

constexpr char library[] = "12,foo,2,a#C,b#S#x#y,help\n"
                           "13, bar ,3,a\n"
                           "14,baz,0,\n"
                           "[ControlFlow]\nkeywords=if,else\n"
                           "[Completion]\nsnippet_only=\n"
                           "[Highlight]\ntype=int\nother=import\nlibrary=A,B\n"
                           "[Plugin]\nfunctions=print\n";

} // namespace

class LibraryListTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void asText();
    void asJson();
    void theInstallationsOwnLibrary();
};

void LibraryListTest::asText() {
    const support::ProjectFolder folder;
    folder.write("lib.ini", library);
    const Answer answer = support::runProgram({"library", "list", "lib.ini"}, folder.path(""));
    QCOMPARE(answer.status, 0);
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.out, QString("functions\n"
                                 "    12  foo( a , b  );\n"
                                 "    13  bar: too few fields for 3 arguments\n"
                                 "    14  baz\n"
                                 "keywords\n"
                                 "    if else\n"
                                 "snippetOnly\n"
                                 "    \n"
                                 "typeWords\n"
                                 "    int\n"
                                 "otherWords\n"
                                 "    import\n"
                                 "libraryWords\n"
                                 "    A B\n"
                                 "pluginFunctions\n"
                                 "    print\n"
                                 "token kinds\n"
                                 "    7  if  KwIf\n"
                                 "    8  else  KwElse\n"
                                 "    16  int  KwInt\n"
                                 "    24  import  KwImport\n"));
}

void LibraryListTest::asJson() {
    const support::ProjectFolder folder;
    folder.write("lib.ini", library);
    const Answer answer =
        support::runProgram({"library", "list", "lib.ini", "--format", "json"}, folder.path(""));
    QCOMPARE(answer.status, 0);
    const QByteArray expected = R"({
            "library": "lib.ini",
            "functions": [
                {"id": 12, "name": "foo", "argumentCount": 2, "lastField": "help",
                 "callTemplate": "foo( a , b  );",
                 "arguments": [{"text": "a", "kind": 0, "options": [], "extra": ""},
                               {"text": "b", "kind": 2, "options": ["x", "y"], "extra": ""}]},
                {"id": 13, "name": " bar ", "argumentCount": 3, "lastField": "a",
                 "callTemplate": null, "arguments": []},
                {"id": 14, "name": "baz", "argumentCount": 0, "lastField": "",
                 "callTemplate": "baz", "arguments": []}],
            "lists": {"keywords": ["if", "else"], "snippetOnly": [], "typeWords": ["int"],
                      "otherWords": ["import"], "libraryWords": ["A", "B"],
                      "pluginFunctions": ["print"]},
            "tokenKinds": {"if": 7, "else": 8, "int": 16, "import": 24}})";
    QCOMPARE(QJsonDocument::fromJson(answer.out.toUtf8()), QJsonDocument::fromJson(expected));
}

void LibraryListTest::theInstallationsOwnLibrary() {
    const support::ProjectFolder folder;
    const Answer answer =
        support::runProgram({"library", "list", "--format", "json"}, folder.path(""));
    QCOMPARE(answer.status, 0);
    const QJsonObject json = QJsonDocument::fromJson(answer.out.toUtf8()).object();
    QCOMPARE(json["library"].toString(),
             support::rooted(QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini"));
    QCOMPARE(json["tokenKinds"].toObject()["import"].toInt(), 24);
    QVERIFY(!json["functions"].toArray().isEmpty());
}

QUORVANE_TEST_MAIN(QCoreApplication, LibraryListTest)
#include "library_list_test.moc"
