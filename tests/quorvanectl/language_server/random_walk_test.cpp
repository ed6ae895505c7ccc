// Ten thousand edits, one after the other, of a project's files as an editor sends them: what the editor
// shows at any moment is what a check finds that reads the same texts from the disk for the first time.
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
#include <QUrl>

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
        const QString name = scriptNames.at(below(scriptNames.size()));
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
                const bool isOfProject = code.isEmpty() || code == "YS404" || code == "YS408";
                lines.append(isOfProject ? message : lineOf(nameOf(file.key()), code, message));
            }
        }
        return inOrder(lines);
    }

private:
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
        QJsonObject message{{"jsonrpc", "2.0"}, {"method", method}, {"params", params}};
        if (id >= 0)
            message.insert("id", id);
        server.take({QJsonDocument(message).toJson(QJsonDocument::Compact)});
    }

    QJsonObject identifier(const QString &name) const {
        return {{"uri", uriOf(disk.path(name))}, {"version", version}};
    }

    void open(const QString &name) {
        texts.insert(name, saved.value(name));
        QJsonObject item = identifier(name);
        item.insert("text", texts.value(name));
        say("textDocument/didOpen", {{"textDocument", item}});
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
    int version = 1;
    ctl::LanguageServer server{[this](const QJsonObject &message) {
        const QJsonObject params = message.value("params").toObject();
        if (message.value("method") == "textDocument/publishDiagnostics")
            shows.insert(params.value("uri").toString(), params.value("diagnostics").toArray());
        else if (message.contains("method"))
            qFatal("%s", QJsonDocument(message).toJson().constData());
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
    for (int i = 1; i <= edits; ++i) {
        editor.edit();
        if (i % editsBetweenLooks != 0)
            continue;
        const QStringList expected = editor.expected();
        QCOMPARE(editor.shown(), expected);
        looksAcross += expected.filter("重复定义").isEmpty() ? 0 : 1;
    }
    QVERIFY(looksAcross > 0); // else the texts were spoilt all the way
}

QUORVANE_TEST_MAIN(QCoreApplication, RandomWalkTest)

#include "random_walk_test.moc"
