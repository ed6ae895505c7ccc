// A project's file while it is typed: which keys and roles are offered at a place, and which key is told of,
// where quotes, braces, colons and commas are missing, doubled or of another kind.
#include "quorvanectl/analysis/name_record.h"
#include "quorvanectl/analysis/proposals.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

class ProposalsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void offers_data();
    void offers();
    void insertions_data();
    void insertions();
    void required();
    void keys_data();
    void keys();
    void anyPlaceOfAnyText();
};

namespace {

int takeBar(QString *text) {
    const int index = text->indexOf('|');
    text->remove(index, 1);
    return index;
}

} // namespace

void ProposalsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// The labels in their order; '|' is the place.
void ProposalsTest::offers_data() {
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *json, const char *expected) {
        QTest::newRow(name) << QString(json) << QString(expected);
    };
    const char *const all = "hardware models processGroups project schemaVersion scripts tasks";
    const char *const roles = "main sub module";
    row("before everything", "|", "");
    row("behind the first brace", "{|", all);
    row("on a line of its own", "{\n  |\n}", all);
    row("a key without quotes", "{pro|}", all);
    row("a key in quotes of the other kind", "{'pro|'}", all);
    row("behind a comma too many", R"({"scripts": [],, |})",
        "hardware models processGroups project schemaVersion tasks");
    row("where the comma is missing", R"({"scripts": [] |"models": []})", "");
    row("behind the whole", R"({"scripts": []} |)", "");
    row("in a list of nothing", R"([{|}])", "");
    row("the keys of the project", R"({"project": {|}})", "createdAt displayName name version");
    row("those that are not there yet", R"({"project": {"name": "n", "version": "1", "|"}})",
        "createdAt displayName");
    row("one that stands behind the place is offered again", R"({"project": {|, "name": "n"}})",
        "createdAt displayName name version");
    row("the keys of a task", R"({"tasks": {"subs": [{|}]}})", "entryScriptId writesGlobals");
    row("the tasks", R"({"tasks": {|}})", "main subs");
    row("the keys of a camera", R"({"hardware": {"cameras": [{"id": "c", |)",
        "calibPath configPath driver roiPath");
    row("of what the schema does not know", R"({"line": {|}})", "");
    row("of an object in the place of the list", R"({"scripts": {|}})", "");
    row("of a list in a list", R"({"scripts": [[{|}]]})", "");
    row("of a key in another case", R"({"Scripts": [{|}]})", "");
    row("of a key that is written with an escape", R"({"s\u0063ripts": [{|}]})", "");
    row("a role in quotes that are open", "{\"scripts\": [{\"role\": \"|\n}]}", roles);
    row("a role as a word", R"({"scripts": [{"role": ma|in}]})", roles);
    row("a role behind other entries", R"({"scripts": [{}, 7, "a", {"role": |)", roles);
    row("no role behind the value", R"({"scripts": [{"role": "main"|}]})", "");
    row("no role in a list", R"({"scripts": [{"role": [|]}]})", "");
    row("no role of a task", R"({"tasks": {"main": {"role": "|"}}})", "");
    row("a role where a brace is missing before it", R"({"scripts": [{"id": "a", {"role": |)", "");
    row("a version that is one number", R"({"schemaVersion": |})", "");
    row("a text before the key is left open", "{\"project\": {\"name\": \"n,\n|}}", "");
}

void ProposalsTest::offers() {
    QFETCH(QString, json);
    const int index = takeBar(&json);
    QStringList labels;
    const ctl::Proposals proposals = ctl::projectProposals(json, index);
    for (const ctl::Proposal &proposal : proposals.list)
        labels.append(proposal.label);
    QTEST(labels.join(' '), "expected");
}

// What becomes of the text with the first of the offers.
void ProposalsTest::insertions_data() {
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *json, const char *expected) {
        QTest::newRow(name) << QString(json) << QString(expected);
    };
    row("a key", R"({"tasks": {|}})", R"({"tasks": {"main": }})");
    row("in quotes", R"({"tasks": {"|"}})", R"({"tasks": {"main": }})");
    row("in open quotes", "{\"tasks\": {\"m|\n}}", "{\"tasks\": {\"main\": \n}}");
    row("a word", R"({"tasks": {ma|}})", R"({"tasks": {"main": }})");
    row("one that has its value", R"({"tasks": {"m|": {}}})", R"({"tasks": {"main": {}}})");
    row("one whose colon stands on the next line", "{\"tasks\": {\"m|\"\n : {}}}",
        "{\"tasks\": {\"main\"\n : {}}}");
    row("a word that has its value", R"({"tasks": {m|: {}}})", R"({"tasks": {"main": {}}})");
    row("a role", R"({"scripts": [{"role": |}]})", R"({"scripts": [{"role": "main"}]})");
    row("a role in quotes", R"({"scripts": [{"role": "su|b"}]})",
        R"({"scripts": [{"role": "main"}]})");
    row("a role in open quotes", "{\"scripts\": [{\"role\": \"su|b\n}]}",
        "{\"scripts\": [{\"role\": \"main\"\n}]}");
}

void ProposalsTest::insertions() {
    QFETCH(QString, json);
    const int index = takeBar(&json);
    const ctl::Proposals proposals = ctl::projectProposals(json, index);
    QVERIFY(!proposals.list.isEmpty());
    json.replace(proposals.from, proposals.to - proposals.from, proposals.list.first().text);
    QTEST(json, "expected");
}

void ProposalsTest::required() {
    QStringList lines;
    const ctl::Proposals proposals = ctl::projectProposals(R"({"project": {)", 13);
    for (const ctl::Proposal &proposal : proposals.list)
        lines.append(proposal.label + '/' + proposal.detail + '/' + proposal.snippet);
    QCOMPARE(lines, QStringList({"createdAt/required/", "displayName/required/", "name/required/",
                                 "version//"}));
}

// "name: what is told of it".
void ProposalsTest::keys_data() {
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *json, const char *expected) {
        QTest::newRow(name) << QString(json) << QString(expected);
    };
    const char *const name = "name: The name that an update is matched with.";
    row("a key", R"({"project": {"na|me": "n"}})", name);
    row("at its first quote", R"({"project": {|"name": "n"}})", "");
    row("right behind it", R"({"project": {"|name": "n"}})", name);
    row("before its last quote", R"({"project": {"name|": "n"}})", name);
    row("behind its last quote", R"({"project": {"name"|: "n"}})", "");
    row("a key without a value", R"({"project": {"na|me"}})", name);
    row("its value", R"({"project": {"name": "na|me"}})", "");
    row("a key of the same name elsewhere", R"({"na|me": "n"})", "");
    row("a key in another case", R"({"project": {"Na|me": "n"}})", "");
    row("an empty key", R"({"project": {"|": "n"}})", "");
    row("a key behind a text that is left open", "{\"a\": \"b\n, \"project\": {\"na|me\": 1}}",
        name);
    row("a key of a list that should be an object", R"({"project": [{"na|me": "n"}]})", "");
    row("a key of an object that should be a list", R"({"scripts": {"ro|le": "main"}})", "");
}

void ProposalsTest::keys() {
    QFETCH(QString, json);
    const int index = takeBar(&json);
    const std::optional<ctl::NameRecord> record = ctl::keyRecord(json, index);
    QTEST(record ? record->signature + ": " + record->description : QString(), "expected");
    if (record)
        QCOMPARE(json.mid(record->from, record->to - record->from),
                 QString('"' + record->signature + '"'));
}

// A text that ends anywhere, asked at each place and outside of it: what is offered takes the place of
// something that is in it.
void ProposalsTest::anyPlaceOfAnyText() {
    const QString whole =
        "{\"scripts\": [{\"id\": \"a\\\"\\\\\", \"role\": mai, }, 1e, \"x\n]} {\"";
    for (int size = 0; size <= whole.size(); ++size) {
        const QString json = whole.left(size);
        for (int index = -1; index <= size + 1; ++index) {
            const ctl::Proposals proposals = ctl::projectProposals(json, index);
            QVERIFY(0 <= proposals.from && proposals.from <= proposals.to && proposals.to <= size);
            QVERIFY(!json.mid(proposals.from, proposals.to - proposals.from).contains('\n'));
            (void)ctl::keyRecord(json, index);
        }
    }
    const QString deep = QString("{\"a\": [").repeated(50000);
    QVERIFY(ctl::projectProposals(deep, deep.size()).list.isEmpty());
}

QUORVANE_TEST_MAIN(QCoreApplication, ProposalsTest)

#include "proposals_test.moc"
