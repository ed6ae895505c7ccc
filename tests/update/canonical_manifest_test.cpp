// The canonical form, byte for byte. What this table says is what publishers sign.
#include "support/manifest_maker.h"
#include "support/staged_main.h"
#include "update/canonical_manifest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

#include <functional>

namespace {

struct Vector {
    const char *name;
    const char *manifest;
    const char *canonical; // null where there is none
};

const Vector vectors[] = {
    // The root
    {"an empty object", R"({})", R"({})"},
    {"an object of blanks", "  { \t\r\n } \n", R"({})"},
    {"nothing but a signature", R"({"signature":"c2ln"})", R"({})"},
    {"nothing but unlisted keys", R"({"name":"x","Runtime":{},"projects ":[]})", R"({})"},
    {"keys are told apart by case", R"({"SchemaVersion":1,"schemaversion":2})", R"({})"},
    {"an array is no manifest", R"([])", nullptr},
    {"a string is no manifest", R"("x")", nullptr},
    {"a number is no manifest", R"(1)", nullptr},
    {"null is no manifest", R"(null)", nullptr},
    {"no text is no manifest", "", nullptr},
    {"blanks are no manifest", "  \n", nullptr},
    {"a broken object is no manifest", R"({"schemaVersion":1)", nullptr},
    {"a trailing comma is no manifest", R"({"schemaVersion":1,})", nullptr},
    {"single quotes are no manifest", R"({'schemaVersion':1})", nullptr},
    {"a comment is no manifest", "{} // x", nullptr},
    {"text behind the object is no manifest", R"({} {})", nullptr},
    {"the number NaN is no manifest", R"({"schemaVersion":NaN})", nullptr},

    // Order of the listed keys
    {"the list's order, not the file's",
     R"({"projects":[],"plugins":[],"pythonTools":{},"editor":{},"launcher":{},"runtime":{},)"
     R"("publishedAt":"","schemaVersion":1})",
     R"({"schemaVersion":1,"publishedAt":"","runtime":{},"launcher":{},"editor":{},)"
     R"("pythonTools":{},"plugins":[],"projects":[]})"},
    {"a key that is absent leaves no trace", R"({"editor":{},"schemaVersion":1})",
     R"({"schemaVersion":1,"editor":{}})"},
    {"a version outside, a number that is whole",
     R"({"projects":[{"name":"demo","version":"1.2.0"}],)"
     R"("runtime":{"version":"1.2.0","setupUrl":"a/setup-1.2.0.exe"},"schemaVersion":2.0})",
     R"({"schemaVersion":2,"runtime":{"setupUrl":"a/setup-1.2.0.exe"},)"
     R"("projects":[{"name":"demo","version":"1.2.0"}]})"},
    {"the later of two equal keys counts", R"({"publishedAt":"a","publishedAt":"b"})",
     R"({"publishedAt":"b"})"},

    // schemaVersion
    {"a whole number", R"({"schemaVersion":2})", R"({"schemaVersion":2})"},
    {"a whole number with a fraction of zero", R"({"schemaVersion":2.0})",
     R"({"schemaVersion":2})"},
    {"a whole number with an exponent", R"({"schemaVersion":2e0})", R"({"schemaVersion":2})"},
    {"a number close to a whole one", R"({"schemaVersion":2.0000000001})",
     R"({"schemaVersion":2})"},
    {"a number close to a whole one from below is cut, and then too far off",
     R"({"schemaVersion":1.9999999999})", R"({"schemaVersion":1.9999999999})"},
    {"a number just too far from a whole one", R"({"schemaVersion":2.000000002})",
     R"({"schemaVersion":2.000000002})"},
    {"a fraction", R"({"schemaVersion":2.5})", R"({"schemaVersion":2.5})"},
    {"a fraction of fifteen digits", R"({"schemaVersion":0.1234567890123456})",
     R"({"schemaVersion":0.123456789012346})"},
    {"a small fraction has an exponent", R"({"schemaVersion":0.0000125})",
     R"({"schemaVersion":1.25e-05})"},
    {"a fraction too small to count", R"({"schemaVersion":0.0000000001})",
     R"({"schemaVersion":0})"},
    {"zero", R"({"schemaVersion":0})", R"({"schemaVersion":0})"},
    {"minus zero", R"({"schemaVersion":-0})", R"({"schemaVersion":0})"},
    {"minus zero as a fraction", R"({"schemaVersion":-0.0})", R"({"schemaVersion":0})"},
    {"a negative number", R"({"schemaVersion":-3})", R"({"schemaVersion":-3})"},
    {"a negative fraction", R"({"schemaVersion":-2.5})", R"({"schemaVersion":-2.5})"},
    {"the largest exact number", R"({"schemaVersion":9007199254740991})",
     R"({"schemaVersion":9007199254740991})"},
    {"a number beyond 2^63", R"({"schemaVersion":1e19})",
     R"({"schemaVersion":10000000000000000000})"},
    {"a number far beyond 2^63", R"({"schemaVersion":1e25})",
     R"({"schemaVersion":10000000000000000905969664})"},
    {"a negative number beyond 2^63", R"({"schemaVersion":-1e20})",
     R"({"schemaVersion":-100000000000000000000})"},
    {"true", R"({"schemaVersion":true})", R"({"schemaVersion":true})"},
    {"false", R"({"schemaVersion":false})", R"({"schemaVersion":false})"},
    {"a version as a string is quoted", R"({"schemaVersion":"2"})", R"({"schemaVersion":"2"})"},
    {"a version of null", R"({"schemaVersion":null})", R"({"schemaVersion":""})"},
    {"a version of an array", R"({"schemaVersion":[2]})", R"({"schemaVersion":""})"},
    {"a version of an object", R"({"schemaVersion":{"a":2}})", R"({"schemaVersion":""})"},

    // publishedAt and the quoting of strings
    {"a time stands as it is", R"({"publishedAt":"2026-01-02T03:04:05Z"})",
     R"({"publishedAt":"2026-01-02T03:04:05Z"})"},
    {"blanks in a string stay", R"({"publishedAt":"  a  b "})", R"({"publishedAt":"  a  b "})"},
    {"a time as a number", R"({"publishedAt":20260102})", R"({"publishedAt":""})"},
    {"a time of null", R"({"publishedAt":null})", R"({"publishedAt":""})"},
    {"a time of true", R"({"publishedAt":true})", R"({"publishedAt":""})"},
    {"a time of an object", R"({"publishedAt":{}})", R"({"publishedAt":""})"},
    {"quotation mark and backslash", R"({"publishedAt":"a\"b\\c"})",
     R"({"publishedAt":"a\"b\\c"})"},
    {"a slash is not escaped", R"({"publishedAt":"a\/b/c"})", R"({"publishedAt":"a/b/c"})"},
    {"the five short escapes", R"({"publishedAt":"\b\f\n\r\t"})",
     R"({"publishedAt":"\b\f\n\r\t"})"},
    {"other control characters in lower-case hexadecimal",
     R"({"publishedAt":"\u0000\u0001\u001F\u001b"})",
     R"({"publishedAt":"\u0000\u0001\u001f\u001b"})"},
    {"delete is no control character here", R"({"publishedAt":"\u007F"})",
     "{\"publishedAt\":\"\x7F\"}"},
    {"escaped letters come out as letters", R"({"publishedAt":"\u0041\u4ea7"})",
     "{\"publishedAt\":\"A\xE4\xBA\xA7\"}"},
    {"Chinese stays raw", "{\"publishedAt\":\"\xE4\xBA\xA7\xE7\xBA\xBF\"}",
     "{\"publishedAt\":\"\xE4\xBA\xA7\xE7\xBA\xBF\"}"},
    {"a character beyond the first plane stays raw", R"({"publishedAt":"\uD83D\uDE00"})",
     "{\"publishedAt\":\"\xF0\x9F\x98\x80\"}"},
    {"separators of lines stay raw", R"({"publishedAt":"\u2028\u2029"})",
     "{\"publishedAt\":\"\xE2\x80\xA8\xE2\x80\xA9\"}"},
    {"brackets in a string stay", R"({"publishedAt":"[a],{b}"})", R"({"publishedAt":"[a],{b}"})"},
    {"percent signs in a string stay", R"({"publishedAt":"%1 %2 %%"})",
     R"({"publishedAt":"%1 %2 %%"})"},

    // Components
    {"a component of all keys, without its version",
     R"({"runtime":{"version":"9","setupSha256":"ab","setupUrl":"u","minVersion":"1"}})",
     R"({"runtime":{"minVersion":"1","setupUrl":"u","setupSha256":"ab"}})"},
    {"a component with nothing but a version", R"({"launcher":{"version":"1.0.0"}})",
     R"({"launcher":{}})"},
    {"a component with unlisted keys", R"({"editor":{"x":1,"setupURL":"u"}})", R"({"editor":{}})"},
    {"an empty component is written", R"({"pythonTools":{}})", R"({"pythonTools":{}})"},
    {"an empty value in a component is written", R"({"runtime":{"setupUrl":""}})",
     R"({"runtime":{"setupUrl":""}})"},
    {"wrong types inside a component",
     R"({"runtime":{"minVersion":1,"setupUrl":["u"],"setupSha256":null}})",
     R"({"runtime":{"minVersion":"","setupUrl":"","setupSha256":""}})"},
    {"a component as a string", R"({"runtime":"x"})", R"({"runtime":{}})"},
    {"a component as an array", R"({"launcher":[{"setupUrl":"u"}]})", R"({"launcher":{}})"},
    {"a component as null", R"({"editor":null})", R"({"editor":{}})"},
    {"a component as a number", R"({"pythonTools":7})", R"({"pythonTools":{}})"},
    {"all four components",
     R"({"pythonTools":{"setupUrl":"p"},"editor":{"setupUrl":"e"},"launcher":{"setupUrl":"l"},)"
     R"("runtime":{"setupUrl":"r"}})",
     R"({"runtime":{"setupUrl":"r"},"launcher":{"setupUrl":"l"},"editor":{"setupUrl":"e"},)"
     R"("pythonTools":{"setupUrl":"p"}})"},

    // Plug-ins
    {"no plug-ins", R"({"plugins":[]})", R"({"plugins":[]})"},
    {"a plug-in of all keys", R"({"plugins":[{"path":"p","minVersion":"1","id":"i","name":"n"}]})",
     R"({"plugins":[{"id":"i","minVersion":"1","path":"p"}]})"},
    {"plug-ins in the file's order", R"({"plugins":[{"id":"b"},{"id":"a"}]})",
     R"({"plugins":[{"id":"b"},{"id":"a"}]})"},
    {"elements that are no objects", R"({"plugins":[1,"x",null,true,[],{"id":"a"}]})",
     R"({"plugins":[{},{},{},{},{},{"id":"a"}]})"},
    {"a plug-in with wrong types", R"({"plugins":[{"id":1,"minVersion":{},"path":false}]})",
     R"({"plugins":[{"id":"","minVersion":"","path":""}]})"},
    {"plug-ins as an object", R"({"plugins":{"id":"a"}})", R"({"plugins":[]})"},
    {"plug-ins as a string", R"({"plugins":"a"})", R"({"plugins":[]})"},

    // Projects
    {"no projects", R"({"projects":[]})", R"({"projects":[]})"},
    {"a project of all keys",
     R"({"projects":[{"zipSha256":"AB","zipUrl":"a/b.zip","version":"2","name":"n","notes":"x"}]})",
     R"({"projects":[{"name":"n","version":"2","zipUrl":"a/b.zip","zipSha256":"AB"}]})"},
    {"a Chinese project name stays raw",
     "{\"projects\":[{\"name\":\"\xE4\xBA\xA7\xE7\xBA\xBF\xE4\xB8\x89\"}]}",
     "{\"projects\":[{\"name\":\"\xE4\xBA\xA7\xE7\xBA\xBF\xE4\xB8\x89\"}]}"},
    {"two records of one name both stay", R"({"projects":[{"name":"a"},{"name":"a"}]})",
     R"({"projects":[{"name":"a"},{"name":"a"}]})"},
    {"projects as an object are an empty array", R"({"projects":{"name":"a"}})",
     R"({"projects":[]})"},
    {"projects as null", R"({"projects":null})", R"({"projects":[]})"},
    {"a project with wrong types",
     R"({"projects":[{"name":[],"version":1.5,"zipUrl":null,"zipSha256":{}}]})",
     R"({"projects":[{"name":"","version":"","zipUrl":"","zipSha256":""}]})"},
    {"arrays in the array of projects", R"({"projects":[[{"name":"a"}]]})", R"({"projects":[{}]})"},
};

using Change = std::function<void(QJsonObject &manifest)>;

// Replaces one value of a nested object.
void setIn(QJsonObject &manifest, const QString &component, const QString &key,
           const QJsonValue &value) {
    QJsonObject record = manifest.value(component).toObject();
    record.insert(key, value);
    manifest.insert(component, record);
}

void setInFirst(QJsonObject &manifest, const QString &list, const QString &key,
                const QJsonValue &value) {
    QJsonArray records = manifest.value(list).toArray();
    QJsonObject record = records.at(0).toObject();
    record.insert(key, value);
    records.replace(0, record);
    manifest.insert(list, records);
}

// Writes an object with its keys shuffled and blanks strewn in; an unlisted key is put in between.
class Scrambler {
public:
    explicit Scrambler(quint32 seed)
        : random(seed) {}

    QString text(const QJsonValue &value) {
        if (value.isObject())
            return object(value.toObject());
        if (value.isArray())
            return array(value.toArray());
        const QByteArray one = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
        return QString::fromUtf8(one.mid(1, one.size() - 2));
    }

private:
    QString blank() {
        static const char *const blanks[] = {"", " ", "\n", "\t", "\r\n", "    "};
        return QLatin1String(blanks[random.bounded(6)]);
    }

    QString object(const QJsonObject &object) {
        QStringList members{
            QStringLiteral("\"unlisted%1\":[1,{\"runtime\":2}]").arg(random.bounded(1000))};
        for (auto it = object.begin(); it != object.end(); ++it)
            members.append(blank() + text(it.key()) + blank() + ":" + blank() + text(it.value()));
        for (int i = members.size() - 1; i > 0; --i)
            members.swapItemsAt(i, random.bounded(i + 1));
        return "{" + members.join(blank() + "," + blank()) + blank() + "}";
    }

    QString array(const QJsonArray &array) {
        QStringList elements;
        for (const QJsonValue &element : array)
            elements.append(text(element));
        return "[" + blank() + elements.join(blank() + "," + blank()) + "]";
    }

    QRandomGenerator random;
};

} // namespace

class CanonicalManifestTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void writesTheExactBytes_data();
    void writesTheExactBytes();
    void orderBlanksAndUnlistedKeysNeverChangeIt();
    void theVersionOfAComponentNeverChangesIt();
    void theSignatureNeverChangesIt();
    void anySignedValueChangesIt_data();
    void anySignedValueChangesIt();
    void halfASurrogatePairStaysEscaped();
    void aHundredThousandProjectsAreWritten();
    void nestingWithoutEndIsNoManifest();
    void aTextOfAHundredMegabytesIsAnswered();
};

void CanonicalManifestTest::writesTheExactBytes_data() {
    QTest::addColumn<QByteArray>("manifest");
    QTest::addColumn<QByteArray>("canonical");
    for (const Vector &vector : vectors)
        QTest::newRow(vector.name) << QByteArray(vector.manifest) << QByteArray(vector.canonical);
}

void CanonicalManifestTest::writesTheExactBytes() {
    QFETCH(QByteArray, manifest);
    QFETCH(QByteArray, canonical);
    const QString text = canonicalManifestText(QString::fromUtf8(manifest));
    QCOMPARE(text.isNull(), canonical.isNull());
    QCOMPARE(text.toUtf8(), canonical.isNull() ? QByteArray("") : canonical);
}

void CanonicalManifestTest::orderBlanksAndUnlistedKeysNeverChangeIt() {
    const QJsonObject manifest = support::fullManifest();
    const QString expected = canonicalManifestText(support::jsonText(manifest));
    for (quint32 seed = 0; seed < 500; ++seed)
        QCOMPARE(canonicalManifestText(Scrambler(seed).text(manifest)), expected);
}

void CanonicalManifestTest::theVersionOfAComponentNeverChangesIt() {
    const QString expected = canonicalManifestText(support::jsonText(support::fullManifest()));
    for (const char *component : {"runtime", "launcher", "editor", "pythonTools"}) {
        for (const QJsonValue &value : {QJsonValue("9.9.9"), QJsonValue(9), QJsonValue()}) {
            QJsonObject manifest = support::fullManifest();
            setIn(manifest, component, "version", value);
            QCOMPARE(canonicalManifestText(support::jsonText(manifest)), expected);
        }
    }
}

void CanonicalManifestTest::theSignatureNeverChangesIt() {
    QJsonObject manifest = support::fullManifest();
    const QString expected = canonicalManifestText(support::jsonText(manifest));
    for (const QJsonValue &value : {QJsonValue("c2ln"), QJsonValue(1), QJsonValue(QJsonArray())}) {
        manifest.insert("signature", value);
        QCOMPARE(canonicalManifestText(support::jsonText(manifest)), expected);
    }
}

void CanonicalManifestTest::anySignedValueChangesIt_data() {
    QTest::addColumn<QJsonObject>("changed");
    const auto row = [](const QString &name, const Change &change) {
        QJsonObject manifest = support::fullManifest();
        change(manifest);
        QTest::newRow(qPrintable(name)) << manifest;
    };
    row("schemaVersion", [](QJsonObject &m) { m.insert("schemaVersion", 2); });
    row("publishedAt", [](QJsonObject &m) { m.insert("publishedAt", "2026-01-02"); });
    for (const char *component : {"runtime", "launcher", "editor", "pythonTools"}) {
        for (const char *key : {"minVersion", "setupUrl", "setupSha256"}) {
            row(QStringLiteral("%1 of %2").arg(key, component),
                [=](QJsonObject &m) { setIn(m, component, key, "x"); });
        }
        row(QStringLiteral("%1 taken away").arg(component),
            [=](QJsonObject &m) { m.remove(component); });
    }
    for (const char *key : {"id", "minVersion", "path"})
        row(QStringLiteral("%1 of a plug-in").arg(key),
            [=](QJsonObject &m) { setInFirst(m, "plugins", key, "x"); });
    for (const char *key : {"name", "version", "zipUrl", "zipSha256"})
        row(QStringLiteral("%1 of a project").arg(key),
            [=](QJsonObject &m) { setInFirst(m, "projects", key, "x"); });
    row("a project taken away", [](QJsonObject &m) {
        QJsonArray projects = m.value("projects").toArray();
        projects.removeLast();
        m.insert("projects", projects);
    });
    row("two projects exchanged", [](QJsonObject &m) {
        const QJsonArray projects = m.value("projects").toArray();
        m.insert("projects", QJsonArray{projects.at(1), projects.at(0)});
    });
}

void CanonicalManifestTest::anySignedValueChangesIt() {
    QFETCH(QJsonObject, changed);
    QVERIFY(canonicalManifestText(support::jsonText(changed)) !=
            canonicalManifestText(support::jsonText(support::fullManifest())));
}

// Half a pair cannot be UTF-8; Qt keeps it apart from any other text by escaping it.
void CanonicalManifestTest::halfASurrogatePairStaysEscaped() {
    QCOMPARE(canonicalManifestText(R"({"publishedAt":"a\ud800b"})"),
             QStringLiteral(R"({"publishedAt":"a\ud800b"})"));
}

void CanonicalManifestTest::aHundredThousandProjectsAreWritten() {
    const QString canonical =
        canonicalManifestText(support::jsonText(support::manifestOfProjects(100000)));
    QVERIFY(canonical.startsWith("{\"schemaVersion\":1,\"projects\":[{\"name\":\"line_0\","));
    QCOMPARE(canonical.count("\"name\":"), 100000);
}

void CanonicalManifestTest::nestingWithoutEndIsNoManifest() {
    const QString nested = "{\"projects\":" + QString(100000, '[') + QString(100000, ']') + "}";
    QVERIFY(canonicalManifestText(nested).isNull());
}

void CanonicalManifestTest::aTextOfAHundredMegabytesIsAnswered() {
    const QString manifest =
        "{\"unlisted\":\"" + QString(100 * 1024 * 1024, 'x') + "\",\"schemaVersion\":1}";
    QCOMPARE(canonicalManifestText(manifest), QStringLiteral("{\"schemaVersion\":1}"));
}

QUORVANE_TEST_MAIN(QCoreApplication, CanonicalManifestTest)
#include "canonical_manifest_test.moc"
