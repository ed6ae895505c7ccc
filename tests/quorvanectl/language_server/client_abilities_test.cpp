// What an editor says that it can: what is asked of it later goes by that, and what it says in another form
// than the protocol's it cannot.
#include "quorvanectl/language_server/client_abilities.h"

#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>

class ClientAbilitiesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void abilities_data();
    void abilities();
    void columns_data();
    void columns();
};

// Each by a name of its own.
static QString namesOf(const ctl::ClientAbilities &abilities) {
    QStringList names;
    const auto add = [&names](bool can, const char *name) {
        if (can)
            names.append(name);
    };
    add(abilities.showsRelated, "related");
    add(abilities.registersWatchers, "watchers");
    add(abilities.showsProgress, "progress");
    add(abilities.fillsSnippets, "snippets");
    add(abilities.readsMarkdown, "markdown");
    add(abilities.nestsSymbols, "nests");
    add(abilities.asksBeforeRename, "prepares");
    add(abilities.takesOffsets, "offsets");
    return names.join(' ');
}

static ctl::ClientAbilities abilitiesOf(const QByteArray &capabilities) {
    return ctl::abilitiesIn(
        QJsonDocument::fromJson(R"({"capabilities":)" + capabilities + "}").object());
}

void ClientAbilitiesTest::abilities_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QByteArray &capabilities, const char *expected) {
        QTest::newRow(name) << capabilities << QString(expected);
    };
    const auto ofTexts = [](const QByteArray &members) {
        return R"({"textDocument":{)" + members + "}}";
    };
    row("none", "{}", "");
    row("findings with other places",
        ofTexts(R"("publishDiagnostics":{"relatedInformation":true})"), "related");
    row("watchers that are asked for",
        R"({"workspace":{"didChangeWatchedFiles":{"dynamicRegistration":true}}})", "watchers");
    row("progress", R"({"window":{"workDoneProgress":true}})", "progress");
    row("snippets", ofTexts(R"("completion":{"completionItem":{"snippetSupport":true}})"),
        "snippets");
    row("Markdown, though it is not the first",
        ofTexts(R"("hover":{"contentFormat":)"
                R"(["plaintext","markdown"]})"),
        "markdown");
    row("symbols in symbols",
        ofTexts(R"("documentSymbol":{"hierarchicalDocumentSymbolSupport":true})"), "nests");
    row("a question before a rename", ofTexts(R"("rename":{"prepareSupport":true})"), "prepares");
    row("offsets",
        ofTexts(R"("signatureHelp":{"signatureInformation":)"
                R"({"parameterInformation":{"labelOffsetSupport":true}}})"),
        "offsets");

    row("capabilities that are null", "null", "");
    row("capabilities that are a list", R"(["window"])", "");
    row("a group that is no object", R"({"window":true})", "");
    row("a word in the place of true", R"({"window":{"workDoneProgress":"true"}})", "");
    row("a number in the place of true", R"({"window":{"workDoneProgress":1}})", "");
    row("false", R"({"window":{"workDoneProgress":false}})", "");
    row("an ability one step too high", R"({"workDoneProgress":true})", "");
    row("a format that stands in no list", ofTexts(R"("hover":{"contentFormat":"markdown"})"), "");
    row("another format", ofTexts(R"("hover":{"contentFormat":["Markdown","html",3]})"), "");
}

void ClientAbilitiesTest::abilities() {
    QFETCH(QByteArray, capabilities);
    QTEST(namesOf(abilitiesOf(capabilities)), "expected");
}

void ClientAbilitiesTest::columns_data() {
    QTest::addColumn<QByteArray>("encodings");
    QTest::addColumn<bool>("countsBytes");
    QTest::newRow("bytes") << QByteArray(R"(["utf-8"])") << true;
    QTest::newRow("bytes before all else") << QByteArray(R"(["utf-8","utf-16"])") << true;
    QTest::newRow("behind what is not known") << QByteArray(R"([8,"utf-32","utf-8"])") << true;
    QTest::newRow("units before bytes") << QByteArray(R"(["utf-16","utf-8"])") << false;
    QTest::newRow("an empty list") << QByteArray("[]") << false;
    QTest::newRow("nothing that is known") << QByteArray(R"(["utf-32"])") << false;
    QTest::newRow("another spelling") << QByteArray(R"(["UTF-8","utf8"])") << false;
    QTest::newRow("a text in the place of the list") << QByteArray(R"("utf-8")") << false;
    QTest::newRow("a list in the list") << QByteArray(R"([["utf-8"]])") << false;
}

void ClientAbilitiesTest::columns() {
    QFETCH(QByteArray, encodings);
    QFETCH(bool, countsBytes);
    const ctl::ClientAbilities abilities =
        abilitiesOf(R"({"general":{"positionEncodings":)" + encodings + "}}");
    QCOMPARE(abilities.unit == ctl::ColumnUnit::Utf8, countsBytes);
}

QUORVANE_TEST_MAIN(QCoreApplication, ClientAbilitiesTest)

#include "client_abilities_test.moc"
