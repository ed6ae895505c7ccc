// Ten thousand edits, one after the other, of a project's files as an editor sends them: what the editor
// shows at any moment is what a check finds that reads the same texts from the disk for the first time.
//
// Between the edits the editor asks where names lead. Whatever it asks, each place that it is told stands in
// the text; and where no script has a mistake, the answers are those of a server that has just begun.
//
// WALK_SEED=<seed> walks the same way again.
#include "quorvanectl/language_server/language_server.h"

#include "quorvanectl/project/project_findings.h"
#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QUrl>
#include <QVector>

#include <algorithm>

using support::ProjectFolder;

namespace {

constexpr int edits = 10000;
constexpr int editsBetweenLooks = 50;
constexpr int longestText = 300;

const QStringList scriptNames{"a.ys", "b.ys", "c.ys"};
constexpr char projectName[] = "line.yslib";

QString document(const QString &scripts) {
    return "{\"schemaVersion\": 1, \"project\": {\"name\": \"高\", \"displayName\": \"d\", "
           "\"createdAt\": \"c\"}, \"scripts\": [" +
           scripts + "], \"tasks\": {\"main\": {\"entryScriptId\": \"a\"}}}\n";
}

QString entry(const QString &name) {
    return "{\"id\": \"" + name + "\", \"path\": \"" + name + ".ys\", \"role\": \"main\"}";
}

// What is typed into scripts: most of it makes declarations and imports, and little of it spoils a text, of
// which nothing else is known then.
const QStringList &pieces() {
    static const QStringList list{"global int x_y;\n",
                                  "global float x_y = 1;\n",
                                  "global int width;\n",
                                  "function f(n) { x_y = n; return g(n) }\n",
                                  "function g(高) {\nfor (int i = 0; i < 高; i++) f(i)\n}\n",
                                  "x_y = f(width) // f\n",
                                  "int n; { n = n + 1; int n; n++ }\n",
                                  "import \"a.ys\";\n",
                                  "import \"b.ys\";\n",
                                  "import \"./c.ys\";\n",
                                  "s = \"高度\";\n",
                                  "// global int w\n",
                                  "\n",
                                  "\r\n",
                                  "if (a) { b = 1; }\n"};
    return list;
}

const QStringList &spoiltPieces() {
    static const QStringList list{
        "{", "}", "(", "\"", "$", ";", "\r", "global int 高;\n", QString("\U0001F600")};
    return list;
}

// What the project's file is made into, mostly the whole project.
QStringList documents() {
    const QString whole = document(entry("a") + ", " + entry("b") + ", " + entry("c"));
    return {whole,
            whole,
            whole,
            whole,
            document(entry("a") + ", " + entry("b")),
            document(entry("c") + ", " + entry("gone")),
            document(""),
            "{\"scripts\": [,",
            "[]"};
}

QString uriOf(const QString &path) {
    return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
}

// What the editor asks at a place of a text, by the name of the method.
struct Question {
    const char *method;
    QJsonObject params;
};

const QVector<Question> &questions() {
    static const QVector<Question> list{
        {"definition", {}},
        {"references", {{"context", QJsonObject{{"includeDeclaration", true}}}}},
        {"documentHighlight", {}},
        {"prepareRename", {}},
        {"rename", {{"newName", "x_z"}}},
        {"documentSymbol", {}},
        {"foldingRange", {}},
        {"semanticTokens/full", {}}};
    return list;
}

// By the protocol's count.
QStringList linesOf(const QString &text) {
    return text.split(QRegularExpression("\r\n|\r|\n"));
}

bool isIn(const QStringList &lines, const QJsonObject &position) {
    const int line = position.value("line").toInt(-1);
    const int column = position.value("character").toInt(-1);
    return line >= 0 && line < lines.size() && column >= 0 && column <= lines.at(line).size();
}

// Five numbers for each word: its line and column from those of the one before it, its length, and more.
bool areWordsIn(const QStringList &lines, const QJsonArray &data) {
    int line = 0;
    int column = 0;
    for (int i = 0; i + 4 < data.size(); i += 5) {
        const int lineStep = data.at(i).toInt(-1);
        line += lineStep;
        column = data.at(i + 1).toInt(-1) + (lineStep == 0 ? column : 0);
        const int end = column + data.at(i + 2).toInt(-1);
        if (!isIn(lines, {{"line", line}, {"character", column}}) || end <= column ||
            end > lines.at(line).size())
            return false;
    }
    return data.size() % 5 == 0;
}

// The editor: its texts, and what it shows.
class Editor {
public:
    explicit Editor(quint32 seed)
        : random(seed) {
        say("initialize", {{"capabilities", QJsonObject()}}, 0);
        for (const QString &name : scriptNames + QStringList(projectName)) {
            saved[name] = name == projectName ? documents().constFirst() : QString("int n;\n");
            disk.write(name, saved.value(name).toUtf8());
        }
        open(projectName);
    }

    void edit() {
        const QString &name = scriptNames.at(below(scriptNames.size()));
        const int choice = below(100);
        if (choice == 0)
            replaceAll(projectName, documents().at(below(documents().size())));
        else if (!texts.contains(name))
            open(name);
        else if (choice == 1)
            close(name);
        else if (choice < 10 || texts.value(name).size() > longestText)
            replaceAll(name, QString());
        else
            replaceStretch(name);
    }

    // Asks something of an open script. Gives what is wrong with the answer, if anything is.
    QString ask() {
        const QString &name = scriptNames.at(below(scriptNames.size()));
        if (!texts.contains(name))
            return {};
        const Question &question = questions().at(below(questions().size()));
        const QJsonObject answer = answerOf(server, question, name, somewhereIn(texts.value(name)));
        const bool isRefused = QString(question.method).contains("ename");
        if (answer.contains("error") ? isRefused : arePlacesIn(answer.value("result"), name))
            return {};
        return QString("%1 of %2: %3").arg(question.method, name, jsonOf(answer));
    }

    // Whether no open script has a mistake, which would let it keep the names that it had.
    bool isWhole() const {
        return std::all_of(shows.begin(), shows.end(), [](const QJsonArray &findings) {
            return std::all_of(findings.begin(), findings.end(), isOfProject);
        });
    }

    // What a server that begins now leads to from any place, and this one does not, or otherwise.
    QString otherAnswers() {
        ctl::LanguageServer fresh{[this](const QJsonObject &message) { hear(message); }};
        sayTo(fresh, "initialize", {{"capabilities", QJsonObject()}}, 0);
        for (auto text = texts.begin(); text != texts.end(); ++text)
            sayTo(fresh, "textDocument/didOpen", {{"textDocument", itemOf(text.key())}});
        for (const QString &name : scriptNames) {
            for (int index = 0; texts.contains(name) && index <= texts.value(name).size();
                 index += 1 + below(30)) {
                for (const Question &question : questions()) {
                    const QString expected = jsonOf(answerOf(fresh, question, name, index));
                    const QString answer = jsonOf(answerOf(server, question, name, index));
                    if (answer != expected)
                        return QString("%1 of %2 at %3: %4, not %5")
                            .arg(question.method, name, QString::number(index), answer, expected);
                }
            }
        }
        return {};
    }

    // What a check finds that reads what counts now from a folder of its own. A line for each.
    QStringList expected() {
        const ProjectFolder other;
        for (auto file = saved.begin(); file != saved.end(); ++file)
            other.write(file.key(), texts.value(file.key(), file.value()).toUtf8());
        QStringList lines;
        QString error;
        ctl::ProjectFindings found;
        (void)ctl::findAll(other.path(projectName), QString(), &found, &error);
        for (const ProjectIssue &issue : qAsConst(found.issues))
            lines.append(issue.message);
        for (const QString &name : scriptNames) {
            ctl::ScriptReport report;
            if (!texts.contains(name) || !ctl::checkText(name, texts.value(name), &report, &error))
                continue;
            for (const auto &finding : report.result.diagnostics)
                lines.append(lineOf(name, finding.code, ctl::wordsOf(finding)));
            for (const auto &finding : report.warnings)
                lines.append(lineOf(name, finding.code, finding.message));
        }
        return inOrder(lines);
    }

    // A finding across scripts shows at each of its places, and counts once.
    QStringList shown() const {
        QStringList lines;
        for (auto file = shows.begin(); file != shows.end(); ++file) {
            for (const QJsonValue &finding : file.value()) {
                const QString code = finding.toObject().value("code").toString();
                const QString message = finding.toObject().value("message").toString();
                lines.append(isOfProject(finding) ? message
                                                  : lineOf(nameOf(file.key()), code, message));
            }
        }
        return inOrder(lines);
    }

private:
    static bool isOfProject(const QJsonValue &finding) {
        const QString code = finding.toObject().value("code").toString();
        return code.isEmpty() || code == "YS404" || code == "YS408";
    }

    static QString jsonOf(const QJsonObject &object) {
        return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    }

    QJsonObject answerOf(ctl::LanguageServer &asked, const Question &question, const QString &name,
                         int index) {
        QJsonObject params = question.params;
        params.insert("textDocument", identifier(name));
        params.insert("position", positionOf(texts.value(name), index));
        heard = {};
        sayTo(asked, (QByteArray("textDocument/") + question.method).constData(), params, 1);
        return heard;
    }

    // Places stand in the text of the address beside or above them, else in that of `name`.
    bool arePlacesIn(const QJsonValue &value, const QString &name) const {
        if (value.isArray()) {
            const QJsonArray list = value.toArray();
            return std::all_of(list.begin(), list.end(), [&](const QJsonValue &element) {
                return arePlacesIn(element, name);
            });
        }
        const QJsonObject object = value.toObject();
        const QString file = object.contains("uri") ? nameOf(object.value("uri").toString()) : name;
        const QStringList lines = linesOf(texts.value(file, saved.value(file)));
        if (object.contains("start"))
            return isIn(lines, object.value("start").toObject()) &&
                   isIn(lines, object.value("end").toObject());
        if (object.contains("startLine"))
            return object.value("endLine").toInt() < lines.size();
        if (object.contains("data"))
            return areWordsIn(lines, object.value("data").toArray());
        for (auto element = object.constBegin(); element != object.constEnd(); ++element) {
            const bool isFile = element.key().startsWith("file:"); // of the edits of a rename
            if (!arePlacesIn(element.value(), isFile ? nameOf(element.key()) : file))
                return false;
        }
        return true;
    }

    static QString lineOf(const QString &name, const QString &code, const QString &message) {
        return name + ' ' + code + ' ' + message;
    }

    static QStringList inOrder(QStringList lines) {
        lines.removeDuplicates();
        lines.sort();
        return lines;
    }

    static QString nameOf(const QString &uri) { return uri.section('/', -1); }

    int below(int bound) { return int(random.bounded(quint32(bound))); }

    void say(const char *method, const QJsonObject &params, int id = -1) {
        sayTo(server, method, params, id);
    }

    static void sayTo(ctl::LanguageServer &to, const char *method, const QJsonObject &params,
                      int id = -1) {
        QJsonObject message{{"jsonrpc", "2.0"}, {"method", method}, {"params", params}};
        if (id >= 0)
            message.insert("id", id);
        to.take({QJsonDocument(message).toJson(QJsonDocument::Compact)});
    }

    QJsonObject identifier(const QString &name) const {
        return {{"uri", uriOf(disk.path(name))}, {"version", version}};
    }

    void open(const QString &name) {
        texts.insert(name, saved.value(name));
        say("textDocument/didOpen", {{"textDocument", itemOf(name)}});
    }

    QJsonObject itemOf(const QString &name) const {
        QJsonObject item = identifier(name);
        item.insert("text", texts.value(name));
        return item;
    }

    // Answers alone.
    void hear(const QJsonObject &message) {
        if (!message.contains("method"))
            heard = message;
    }

    void close(const QString &name) {
        texts.remove(name);
        say("textDocument/didClose", {{"textDocument", identifier(name)}});
    }

    void change(const QString &name, const QJsonObject &made) {
        ++version;
        say("textDocument/didChange",
            {{"textDocument", identifier(name)}, {"contentChanges", QJsonArray{made}}});
    }

    void replaceAll(const QString &name, const QString &text) {
        texts.insert(name, text);
        change(name, {{"text", text}});
    }

    // As an editor counts: a line ends at a feed, at a return, or at both together. Never between those,
    // nor within a pair, where no editor puts a cursor.
    static QJsonObject positionOf(const QString &text, int index) {
        int line = 0;
        int start = 0;
        for (int i = 0; i < index; ++i) {
            const bool isPair = text.at(i) == '\r' && text.mid(i + 1, 1) == "\n";
            if (text.at(i) == '\n' || (text.at(i) == '\r' && !isPair)) {
                ++line;
                start = i + 1;
            }
        }
        return {{"line", line}, {"character", index - start}};
    }

    int somewhereIn(const QString &text) {
        int index = below(text.size() + 1);
        while (index > 0 && index < text.size() &&
               (text.at(index).isLowSurrogate() ||
                (text.at(index) == '\n' && text.at(index - 1) == '\r')))
            --index;
        return index;
    }

    void replaceStretch(const QString &name) {
        QString &text = texts[name];
        // At its start mostly, where what stands behind it stays whole.
        const int one = below(4) != 0 ? 0 : somewhereIn(text);
        const int other = below(15) == 0 ? somewhereIn(text) : one;
        const int from = qMin(one, other);
        const int to = qMin(qMax(one, other), from + 20);
        const int end = to < text.size() && text.at(to).isLowSurrogate() ? to + 1 : to;
        const int last = end > from && end < text.size() && text.at(end) == '\n' ? end + 1 : end;
        const QStringList &list = below(30) == 0 ? spoiltPieces() : pieces();
        const QString piece = list.at(below(list.size()));
        const QJsonObject range{{"start", positionOf(text, from)}, {"end", positionOf(text, last)}};
        text.replace(from, last - from, piece);
        change(name, {{"range", range}, {"text", piece}});
    }

    QRandomGenerator random;
    ProjectFolder disk;
    QMap<QString, QString> saved;
    QMap<QString, QString> texts;
    QMap<QString, QJsonArray> shows;
    QJsonObject heard; // the last answer
    int version = 1;
    ctl::LanguageServer server{[this](const QJsonObject &message) {
        const QJsonObject params = message.value("params").toObject();
        if (message.value("method") == "textDocument/publishDiagnostics")
            shows.insert(params.value("uri").toString(), params.value("diagnostics").toArray());
        else if (message.contains("method"))
            qFatal("%s", QJsonDocument(message).toJson().constData());
        hear(message);
    }};
};

} // namespace

class RandomWalkTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsShownIsWhatACheckFinds();
};

void RandomWalkTest::whatIsShownIsWhatACheckFinds() {
    QVERIFY(support::loadScriptVocabulary());
    const bool isGiven = qEnvironmentVariableIsSet("WALK_SEED");
    const quint32 seed = isGiven ? qEnvironmentVariable("WALK_SEED").toUInt()
                                 : QRandomGenerator::global()->generate();
    qInfo("WALK_SEED=%u", seed);
    Editor editor(seed);
    int looksAcross = 0;
    int looksAtWholeTexts = 0;
    for (int i = 1; i <= edits; ++i) {
        editor.edit();
        const QString wrong = editor.ask();
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        if (i % editsBetweenLooks != 0)
            continue;
        const QStringList expected = editor.expected();
        QCOMPARE(editor.shown(), expected);
        if (editor.isWhole()) {
            const QString others = editor.otherAnswers();
            QVERIFY2(others.isEmpty(), qPrintable(others));
            ++looksAtWholeTexts;
        }
        looksAcross += expected.filter("重复定义").isEmpty() ? 0 : 1;
    }
    QVERIFY(looksAcross > 0); // else the texts were spoilt all the way
    QVERIFY(looksAtWholeTexts > 0);
}

QUORVANE_TEST_MAIN(QCoreApplication, RandomWalkTest)

#include "random_walk_test.moc"
