// What is read out of a manifest: also out of one that somebody wrote by hand, or that names what is not there.
#include "quorvanectl/manifest/update_info.h"

#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

using ctl::ManifestInfo;
using support::FileTree;

namespace {

const QByteArray content = "a package";
const QString base = "https://cdn.example/q";

// Where, how long and whether it is the named one, of each package.
QStringList linesOf(const ManifestInfo &info) {
    QStringList lines;
    for (const ctl::NamedPackage &named : info.packages)
        lines.append(QString("%1 %2 %3")
                         .arg(named.package.where, QString::number(named.bytes),
                              named.isNamedOne ? "named" : "other"));
    return lines;
}

} // namespace

class UpdateInfoTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    ManifestInfo infoOf(QByteArray text) const;

private Q_SLOTS:
    void init();
    void packages_data();
    void packages();
    void signatures_data();
    void signatures();
    void valuesOfAWrongType_data();
    void valuesOfAWrongType();
    void whatIsNotThereIsNullInJson();
    void whatAPlugInLacksIsEmptyInJson();
    void aPackagesFilesInJson();
    void archives_data();
    void archives();
};

void UpdateInfoTest::init() {
    folder.reset(new QTemporaryDir);
    support::writeTree(folder->path(), {{"site/p/a.zip", content},
                                        {"site/empty.zip", ""},
                                        {"site/folder.zip/x", ""},
                                        {"above.zip", content}});
}

// "#" in the text stands for the hash of what lies there.
ManifestInfo UpdateInfoTest::infoOf(QByteArray text) const {
    text.replace("#", QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
    return ctl::manifestInfo(text, folder->filePath("site"), base);
}

void UpdateInfoTest::packages_data() {
    QTest::addColumn<QByteArray>("record"); // of the runtime
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("isAsNamed"); // what the exit status follows
    const auto row = [](const char *name, const QByteArray &url, const QByteArray &hash,
                        const QString &line, bool isAsNamed) {
        QTest::newRow(name) << R"({"setupUrl": ")" + url + R"(", "setupSha256": ")" + hash + "\"}"
                            << "runtime " + line << isAsNamed;
    };
    row("as it is named", "p/a.zip", "#", "9 named", true);
    row("with blanks around its hash", "p/a.zip", " # ", "9 named", true);
    row("with blanks around its address", " p/a.zip ", "#", "9 named", true);
    row("without a hash", "p/a.zip", "", "9 named", true);
    row("with another hash", "p/a.zip", "00", "9 other", false);
    row("with a hash and more", "p/a.zip", "#0", "9 other", false);
    row("an empty file without a hash", "empty.zip", "", "0 named", true);
    row("an empty file with another's hash", "empty.zip", "#", "0 other", false);
    row("one that is missing", "p/b.zip", "#", "-1 other", true);
    row("a folder in its place", "folder.zip", "#", "-1 other", true);
    row("no address", "", "#", "-1 other", true);
    row("behind the base", "https://cdn.example/q/p/a.zip", "#", "9 named", true);
    row("behind the base, with another hash", "https://cdn.example/q/p/a.zip", "1", "9 other",
        false);
    row("on another server", "https://cdn.example/p/a.zip", "#", "-1 other", true);
    row("above the manifest's folder", "../above.zip", "#", "9 named", true);
}

void UpdateInfoTest::packages() {
    QFETCH(QByteArray, record);
    QFETCH(QString, line);
    const ManifestInfo info = infoOf("{\"runtime\": " + record + '}');
    QCOMPARE(linesOf(info), QStringList(line));
    QTEST(ctl::areNamedOnes(info), "isAsNamed");
}

void UpdateInfoTest::signatures_data() {
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("bytes");
    QTest::newRow("none") << QByteArray("\"\"") << 0;
    QTest::newRow("blanks") << QByteArray("\"  \"") << 0;
    QTest::newRow("four bytes") << QByteArray("\"AAECAw==\"") << 4;
    QTest::newRow("with blanks around it") << QByteArray("\" AAECAw== \"") << 4;
    QTest::newRow("letters that are none of base64") << QByteArray("\"产线\"") << 0;
    QTest::newRow("a number") << QByteArray("4") << 0;
    QTest::newRow("a list") << QByteArray("[\"AAECAw==\"]") << 0;
}

void UpdateInfoTest::signatures() {
    QFETCH(QByteArray, value);
    QTEST(infoOf("{\"signature\": " + value + '}').signatureBytes, "bytes");
}

void UpdateInfoTest::valuesOfAWrongType_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("components that are texts, lists and numbers")
        << QByteArray(R"({"runtime": "1.0.0", "launcher": [{}], "editor": 7})") << QStringList();
    QTest::newRow("a project that stands alone")
        << QByteArray(R"({"projects": {"zipUrl": "p/a.zip"}})") << QStringList();
    QTest::newRow("projects that are none keep their numbers")
        << QByteArray(R"({"projects": [1, "a", {"zipUrl": "p/a.zip"}, null]})")
        << QStringList("projects[2] 9 named");
    QTest::newRow("an address that is a list")
        << QByteArray(R"({"projects": [{"zipUrl": ["p/a.zip"]}]})")
        << QStringList("projects[0] -1 other");
    QTest::newRow("a hash that is a number")
        << QByteArray(R"({"projects": [{"zipUrl": "p/a.zip", "zipSha256": 7}]})")
        << QStringList("projects[0] 9 named");
    QTest::newRow("a component with the keys of a project")
        << QByteArray(R"({"runtime": {"zipUrl": "p/a.zip"}})") << QStringList("runtime -1 other");
    QTest::newRow("no object at all") << QByteArray("[]") << QStringList();
}

void UpdateInfoTest::valuesOfAWrongType() {
    QFETCH(QByteArray, text);
    const ManifestInfo info = infoOf(text);
    QTEST(linesOf(info), "lines");
    QVERIFY(ctl::areNamedOnes(info));
    QCOMPARE(info.bytes, qint64(text.size()));
}

void UpdateInfoTest::whatIsNotThereIsNullInJson() {
    const QJsonObject json =
        ctl::toJson(infoOf(R"({"publishedAt": 5, "projects": [{"name": "a", "version": "v1.2.0",
"zipUrl": "none.zip", "zipSha256": "00"}]})"));
    QCOMPARE(
        QString::fromUtf8(QJsonDocument(json["packages"].toArray()).toJson(QJsonDocument::Compact)),
        QString(R"([{"address":"none.zip","bytes":null,"isNamedOne":null,"minVersion":"",)"
                R"("name":"a","sha256":"00","version":"1.2.0","where":"projects[0]"}])"));
    QCOMPARE(json["publishedAt"], QJsonValue(""));
    QCOMPARE(json["kind"], QJsonValue("manifest"));
    QCOMPARE(json["sig_bytes"], QJsonValue(0));
    const QJsonArray there = ctl::toJson(infoOf(
        R"({"runtime": {"setupUrl": "p/a.zip", "setupSha256": "0"}})"))["packages"]
                                 .toArray();
    QCOMPARE(there[0].toObject()["bytes"], QJsonValue(9));
    QCOMPARE(there[0].toObject()["isNamedOne"], QJsonValue(false));
    QCOMPARE(there[0].toObject()["name"], QJsonValue("runtime"));
}

void UpdateInfoTest::whatAPlugInLacksIsEmptyInJson() {
    const QJsonObject json = ctl::toJson(
        infoOf(R"({"plugins": [{"id": "camera", "more": 1}, 7, {"path": 3, "minVersion": "1"}]})"));
    QCOMPARE(json["plugins"].toArray(),
             (QJsonArray{QJsonObject{{"id", "camera"}, {"minVersion", ""}, {"path", ""}},
                         QJsonObject{{"id", ""}, {"minVersion", "1"}, {"path", ""}}}));
}

void UpdateInfoTest::aPackagesFilesInJson() {
    ctl::ProjectPackage package;
    package.name = "a";
    package.files = QStringList{"b.ys", "x/c.csv"};
    package.sizes = {4, qint64(5000000000)};
    QCOMPARE(ctl::toJson(package),
             (QJsonObject{{"kind", "package"},
                          {"name", "a"},
                          {"version", ""},
                          {"files", QJsonArray{QJsonObject{{"path", "b.ys"}, {"bytes", 4}},
                                               QJsonObject{{"path", "x/c.csv"},
                                                           {"bytes", 5000000000.0}}}}}));
}

void UpdateInfoTest::archives_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<bool>("is");
    QTest::newRow("by its first two letters") << FileTree{{"a", "PK"}} << true;
    QTest::newRow("whatever follows") << FileTree{{"a", "PK{}"}} << true;
    QTest::newRow("in small letters") << FileTree{{"a", "pk"}} << false;
    QTest::newRow("cut off behind the first") << FileTree{{"a", "P"}} << false;
    QTest::newRow("behind something else") << FileTree{{"a", " PK"}} << false;
    QTest::newRow("empty") << FileTree{{"a", ""}} << false;
    QTest::newRow("a folder") << FileTree{{"a/PK", "PK"}} << false;
    QTest::newRow("missing") << FileTree() << false;
}

void UpdateInfoTest::archives() {
    QFETCH(FileTree, tree);
    support::writeTree(folder->path(), tree);
    QTEST(ctl::isArchive(folder->filePath("a")), "is");
}

QUORVANE_TEST_MAIN(QCoreApplication, UpdateInfoTest)
#include "update_info_test.moc"
