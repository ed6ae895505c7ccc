// The English translation file against the sources.
#include "support/staged_main.h"

#include <QApplication>
#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>

class TranslationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everySourceTextIsTranslated();
    void nothingIsMarkedUnfinishedOrGone();
    void thePlacesOfAPairAgree();
    void aPairBeginsAndEndsAlike();
    void englishHoldsNoChinese();
    void englishHoldsNoWordOfTheTrade_data();
    void englishHoldsNoWordOfTheTrade();
    void cancelledStandsWhereTheEndOfAnUpdateIsToldByIt();
    void noTextIsTakenForAClassOfFailure();
    void aButtonThatATextNamesIsThere();
    void noTextOfTheSourcesIsMissingAndNoneIsStale();
    void textsOutsideTranslationStayOutside_data();
    void textsOutsideTranslationStayOutside();
};

namespace {

struct Message {
    QString context;
    QString source;
    QString translation;
    QString mark; // "unfinished", "vanished", "obsolete" or empty
};

QList<Message> messagesOf(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QXmlStreamReader xml(&file);
    QList<Message> messages;
    QString context;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == "name") {
            context = xml.readElementText();
        } else if (xml.name() == "source") {
            messages.append({context, xml.readElementText(), QString(), QString()});
        } else if (xml.name() == "translation") {
            messages.last().mark = xml.attributes().value("type").toString();
            messages.last().translation = xml.readElementText();
        }
    }
    return xml.hasError() ? QList<Message>() : messages;
}

QStringList keysOf(const QList<Message> &messages) {
    QStringList keys;
    for (const Message &message : messages)
        keys.append(message.context + ": " + message.source);
    keys.sort();
    return keys;
}

QStringList placesOf(const QString &text) {
    static const QRegularExpression place("%[0-9]+");
    QStringList places;
    auto found = place.globalMatch(text);
    while (found.hasNext())
        places.append(found.next().captured());
    places.sort();
    return places;
}

bool holdsChinese(const QString &text) {
    static const QRegularExpression chinese(
        "[\\x{3000}-\\x{303F}\\x{4E00}-\\x{9FFF}\\x{FF00}-\\x{FFEF}]");
    return chinese.match(text).hasMatch();
}

QString translationSource() {
    return QUORVANE_SOURCES "/resources/translations/quorvane_en.ts";
}

// What lupdate makes of an empty file: every text of the sources.
QList<Message> textsOfTheSources() {
    QTemporaryDir folder;
    const QString fresh = folder.filePath("fresh.ts");
    QProcess lupdate;
    const QString sources = QUORVANE_SOURCES "/src";
    lupdate.start(QUORVANE_LUPDATE, {"-silent", "-extensions", "cpp,h", sources, "-ts", fresh});
    if (!lupdate.waitForFinished(60000) || lupdate.exitCode() != 0)
        qWarning() << "lupdate:" << lupdate.errorString() << lupdate.readAllStandardError();
    return messagesOf(fresh);
}

} // namespace

void TranslationTest::initTestCase() {
    QVERIFY(messagesOf(translationSource()).size() > 50);
}

void TranslationTest::everySourceTextIsTranslated() {
    const auto messages = messagesOf(translationSource());
    for (const Message &message : messages)
        QVERIFY2(!message.translation.trimmed().isEmpty(), qPrintable(message.source));
}

void TranslationTest::nothingIsMarkedUnfinishedOrGone() {
    const auto messages = messagesOf(translationSource());
    for (const Message &message : messages)
        QVERIFY2(message.mark.isEmpty(), qPrintable(message.mark + ": " + message.source));
}

void TranslationTest::thePlacesOfAPairAgree() {
    const auto messages = messagesOf(translationSource());
    for (const Message &message : messages)
        QVERIFY2(placesOf(message.source) == placesOf(message.translation),
                 qPrintable(message.source));
}

// Line feeds are laid out by the code that joins the texts: none may be added or lost at an end.
void TranslationTest::aPairBeginsAndEndsAlike() {
    const auto messages = messagesOf(translationSource());
    for (const Message &message : messages) {
        QVERIFY2(message.source.count('\n') == message.translation.count('\n'),
                 qPrintable(message.source));
        QVERIFY2(message.source.endsWith('\n') == message.translation.endsWith('\n'),
                 qPrintable(message.source));
    }
}

void TranslationTest::englishHoldsNoChinese() {
    const auto messages = messagesOf(translationSource());
    for (const Message &message : messages) {
        // For those who read Chinese, while English is in force.
        if (message.source == "切换到中文")
            QCOMPARE(message.translation, message.source);
        else
            QVERIFY2(!holdsChinese(message.translation), qPrintable(message.translation));
    }
}

void TranslationTest::englishHoldsNoWordOfTheTrade_data() {
    QTest::addColumn<QString>("word");
    for (const char *word : {"manifest", "dump", "target", "yslib", "precheck", "setupUrl",
                             "zipUrl", "zipSha256", "parse", "offline", "process"})
        QTest::newRow(word) << word;
}

// Who reads them runs a line and has not seen the inside of the program. Names of files stay.
void TranslationTest::englishHoldsNoWordOfTheTrade() {
    QFETCH(QString, word);
    const auto messages = messagesOf(translationSource());
    for (const Message &message : messages) {
        QString told = message.translation;
        told.remove("QuorvanerUpdate/manifest.json").remove("*.yslib");
        QVERIFY2(!told.contains(word, Qt::CaseInsensitive), qPrintable(told));
    }
}

// The title of the box at the end is found by this word, so it stands in the texts of a cancel that
// are shown there and in no other, the title itself aside.
void TranslationTest::cancelledStandsWhereTheEndOfAnUpdateIsToldByIt() {
    QStringList awaited{"LauncherService: 更新任务已取消。",
                        "LauncherService: 组件更新任务已取消。", "LauncherWindow: 取消",
                        "LauncherWindow: 已取消"};
    QStringList found;
    const auto messages = messagesOf(translationSource());
    for (const Message &message : messages) {
        if (message.translation.contains("cancelled", Qt::CaseInsensitive))
            found.append(message.context + ": " + message.source);
        // A box's button of that name is a text of its own.
        if (message.source == "取消" && message.context != "BoxButtons")
            QCOMPARE(message.translation, QString("cancelled"));
    }
    awaited.sort();
    found.sort();
    QCOMPARE(found, awaited);
}

// The same box looks for these first.
void TranslationTest::noTextIsTakenForAClassOfFailure() {
    static const QRegularExpression failure("\\[(network|hash|verify|cancel)\\]",
                                            QRegularExpression::CaseInsensitiveOption);
    const auto messages = messagesOf(translationSource());
    for (const Message &message : messages)
        QVERIFY2(!failure.match(message.translation).hasMatch(), qPrintable(message.translation));
}

// Letter by letter, the mark of a key aside.
void TranslationTest::aButtonThatATextNamesIsThere() {
    static const QRegularExpression named("\"([^\"]*)\"");
    const auto messages = messagesOf(translationSource());
    QStringList labels;
    for (const Message &message : messages)
        labels.append(QString(message.translation).remove('&'));
    int count = 0;
    for (const Message &message : messages) {
        auto found = named.globalMatch(message.translation);
        for (; found.hasNext(); ++count) {
            const QString label = found.next().captured(1);
            QVERIFY2(labels.contains(label), qPrintable(message.translation));
        }
    }
    QVERIFY(count > 0);
}

void TranslationTest::noTextOfTheSourcesIsMissingAndNoneIsStale() {
    const QStringList inSources = keysOf(textsOfTheSources());
    const QStringList inFile = keysOf(messagesOf(translationSource()));
    QVERIFY(!inSources.isEmpty());
    for (const QString &key : inSources)
        QVERIFY2(inFile.contains(key), qPrintable("run scripts/translations: missing " + key));
    for (const QString &key : inFile)
        QVERIFY2(inSources.contains(key), qPrintable("run scripts/translations: stale " + key));
}

// These folders speak one language: English, or Chinese in the case of the two listed last.
void TranslationTest::textsOutsideTranslationStayOutside_data() {
    QTest::addColumn<QString>("folder");
    for (const char *folder : {"frame", "update", "library", "project", "script", "parameter"})
        QTest::newRow(folder) << folder;
}

void TranslationTest::textsOutsideTranslationStayOutside() {
    QFETCH(QString, folder);
    static const QRegularExpression translated("\\b(tr|translate|QT_TR_NOOP|QT_TRANSLATE_NOOP)\\(");
    QDirIterator files(QUORVANE_SOURCES "/src/" + folder, {"*.cpp", "*.h"}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY2(!translated.match(QString::fromUtf8(file.readAll())).hasMatch(),
                 qPrintable(file.fileName()));
    }
}

QUORVANE_TEST_MAIN(QApplication, TranslationTest)
#include "translation_test.moc"
