// The program between an editor's pipes: how it begins, what it tells, and how it ends.
#include "quorvanectl/language_server/frames.h"

#include "support/file_tree.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QUrl>

using support::ProjectFolder;

namespace {

constexpr int patience = 60000; // ms

// The program, and what it has sent.
class Editor {
public:
    Editor() {
        folder.write("FunctionLib.ini", "[Highlight]\nother=function,include,import\n");
        program.start(QUORVANE_TOOL,
                      {"language-server", "--stdio", "--library", folder.path("FunctionLib.ini")});
    }

    void say(const QJsonObject &message) {
        QJsonObject whole = message;
        whole.insert("jsonrpc", "2.0");
        sayRaw(ctl::framed(QJsonDocument(whole).toJson(QJsonDocument::Compact)));
    }

    void sayRaw(const QByteArray &bytes) { (void)program.write(bytes); }

    // The next message; empty if none comes.
    QJsonObject hear() {
        for (;;) {
            const int end = heard.indexOf("\r\n\r\n");
            const int length =
                end < 0 ? 0 : heard.left(end).mid(int(qstrlen("Content-Length: "))).toInt();
            if (end >= 0 && heard.size() >= end + 4 + length) {
                const QByteArray body = heard.mid(end + 4, length);
                heard.remove(0, end + 4 + length);
                return QJsonDocument::fromJson(body).object();
            }
            if (!program.waitForReadyRead(patience))
                return {};
            heard += program.readAllStandardOutput();
        }
    }

    // The status it ends with.
    int wait() {
        if (!program.waitForFinished(patience) || program.exitStatus() != QProcess::NormalExit)
            return -1;
        return program.exitCode();
    }

    QProcess program;

private:
    ProjectFolder folder;
    QByteArray heard;
};

QJsonObject initialize() {
    return {{"id", 1},
            {"method", "initialize"},
            {"params", QJsonObject{{"capabilities", QJsonObject()}}}};
}

} // namespace

class LanguageServerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFaultComesAndGoes();
    void itEndsWithItsEditor();
    void whatIsNoMessageEndsIt();
};

// Each message is answered while the input stays open.
void LanguageServerTest::aFaultComesAndGoes() {
    const ProjectFolder project;
    const QString uri =
        QString::fromLatin1(QUrl::fromLocalFile(project.path("产线.ys")).toEncoded());
    Editor editor;
    editor.say(initialize());
    QCOMPARE(editor.hear().value("id").toInt(), 1);
    editor.say({{"method", "initialized"}, {"params", QJsonObject()}});
    const QJsonObject document{
        {"uri", uri}, {"languageId", "ys"}, {"version", 1}, {"text", "s = \"高\r\n\" $;\r\n"}};
    editor.say(
        {{"method", "textDocument/didOpen"}, {"params", QJsonObject{{"textDocument", document}}}});
    const QJsonObject found = editor.hear().value("params").toObject();
    QCOMPARE(found.value("uri").toString(), uri);
    const QJsonArray findings = found.value("diagnostics").toArray();
    QCOMPARE(findings.size(), 1);
    QCOMPARE(findings.at(0).toObject().value("message").toString(), QString("无法识别的字符"));
    editor.say(
        {{"method", "textDocument/didChange"},
         {"params", QJsonObject{{"textDocument", QJsonObject{{"uri", uri}, {"version", 2}}},
                                {"contentChanges", QJsonArray{QJsonObject{{"text", ""}}}}}}});
    QCOMPARE(editor.hear().value("params").toObject().value("diagnostics"),
             QJsonValue(QJsonArray()));
    editor.say({{"id", 2}, {"method", "shutdown"}});
    QCOMPARE(editor.hear().value("id").toInt(), 2);
    editor.say({{"method", "exit"}});
    QCOMPARE(editor.wait(), 0);
    QCOMPARE(editor.program.readAllStandardError(), QByteArray());
    QCOMPARE(support::readTree(project.path("")), support::FileTree());
}

void LanguageServerTest::itEndsWithItsEditor() {
    Editor editor;
    editor.say(initialize());
    QCOMPARE(editor.hear().value("id").toInt(), 1);
    editor.program.closeWriteChannel();
    QCOMPARE(editor.wait(), 1);
    QCOMPARE(editor.program.readAllStandardError(), QByteArray());
}

void LanguageServerTest::whatIsNoMessageEndsIt() {
    Editor editor;
    editor.sayRaw("Content-Length: 99999999999\r\n\r\n");
    QCOMPARE(editor.wait(), 2);
    const QString said = QString::fromUtf8(editor.program.readAllStandardError()).trimmed();
    QCOMPARE(said, QString("quorvanectl: standard input: Content-Length is above 64 MiB"));
}

QUORVANE_TEST_MAIN(QCoreApplication, LanguageServerTest)

#include "language_server_test.moc"
