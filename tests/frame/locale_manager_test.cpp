// Which language is in force after each saved value, with and without the translation's file, and
// that every widget hears of a change before the call returns.
#include "frame/locale_manager.h"

#include "frame/app_paths.h"
#include "frame/settings_store.h"
#include "support/message_capture.h"
#include "support/staged_main.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QSqlDatabase>

namespace {

LocaleManager &manager() {
    return LocaleManager::instance();
}

QString stored() {
    return SettingsStore::instance().value("ui/locale", "(none)");
}

// The folders in the order in which they are searched; the staged program's folder is the root.
QStringList folders() {
    const QString program = QCoreApplication::applicationDirPath();
    return {program + "/translations", program + "/resources/translations",
            program + "/bin/translations"};
}

QString translationFile(int place) {
    return folders().at(place) + "/quorvane_en.qm";
}

// A translation of its own for each place: "copy 0", "copy 1", "copy 2".
void putTranslation(int place) {
    QFile source(TRANSLATION_FILE);
    QVERIFY(source.open(QIODevice::ReadOnly));
    QByteArray bytes = source.readAll();
    const QByteArray before("\0c\0o\0p\0y\0 \0"
                            "0",
                            12);
    QCOMPARE(bytes.count(before), 1);
    bytes.replace(before, before.left(11) + char('0' + place));
    QVERIFY(QDir().mkpath(folders().at(place)));
    QFile target(translationFile(place));
    QVERIFY(target.open(QIODevice::WriteOnly));
    QCOMPARE(target.write(bytes), qint64(bytes.size()));
}

QString translated() {
    return QCoreApplication::translate("LauncherWindow", "启动");
}

QString notFound() {
    return QString("English translation not found. Checked: (\"%1\", \"%2\", \"%3\")")
        .arg(translationFile(0), translationFile(1), translationFile(2));
}

const QString fallingBack =
    "Failed to load English translation; falling back to Chinese source strings.";

// Notes what was in force whenever it was told of a change.
class Listener : public QLabel {
public:
    using QLabel::QLabel;
    QStringList seen;

protected:
    void changeEvent(QEvent *event) override {
        if (event->type() == QEvent::LanguageChange)
            seen.append(translated() + " " + stored());
        QLabel::changeEvent(event);
    }
};

// Does not pass a change of language on to its children.
class Silent : public QWidget {
protected:
    bool event(QEvent *event) override {
        return event->type() == QEvent::LanguageChange || QWidget::event(event);
    }
};

} // namespace

class LocaleManagerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void takesTheSavedLocale_data();
    void takesTheSavedLocale();
    void givenDefaultIsUsedWhenNoneIsSaved();
    void searchesThreePlacesInOrder_data();
    void searchesThreePlacesInOrder();
    void brokenFileIsPassedOver();
    void togglesBothWays();
    void togglingWithTheFileGoneStaysChinese();
    void everyWidgetIsToldAtOnce();
    void childrenAreToldByThemselves();
    void askingForTheSameAgainTellsAgain();
    void localeIsInForceWithoutADatabase();
};

void LocaleManagerTest::initTestCase() {
    QCOMPARE(manager().currentLocale(), QString("zh_CN"));
    QVERIFY(!manager().isEnglish());
    AppPaths::initialize();
}

void LocaleManagerTest::init() {
    QVERIFY(SettingsStore::instance().open());
    manager().setLocale("zh_CN");
    QSqlDatabase::removeDatabase("quorvane");
    QVERIFY(QFile::remove(AppPaths::databasePath()));
    QVERIFY(SettingsStore::instance().open());
    for (const QString &folder : folders())
        QVERIFY(QDir(folder).removeRecursively());
}

void LocaleManagerTest::takesTheSavedLocale_data() {
    QTest::addColumn<QString>("saved"); // null for none
    QTest::addColumn<bool>("file");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("warnings");
    const QStringList none;
    const QStringList both{notFound(), fallingBack};
    QTest::newRow("a first start with the file is English") << QString() << true << "en" << none;
    QTest::newRow("a first start without the file is Chinese")
        << QString() << false << "zh_CN" << both;
    QTest::newRow("English with the file") << "en" << true << "en" << none;
    QTest::newRow("English without the file") << "en" << false << "zh_CN" << both;
    QTest::newRow("en_US counts as English") << "en_US" << true << "en" << none;
    QTest::newRow("any text that begins with en does") << "entirely" << true << "en" << none;
    QTest::newRow("Chinese never looks for the file") << "zh_CN" << false << "zh_CN" << none;
    QTest::newRow("Chinese with the file") << "zh_CN" << true << "zh_CN" << none;
    QTest::newRow("another language is Chinese without a warning")
        << "de" << true << "zh_CN" << none;
    QTest::newRow("the case matters") << "EN" << true << "zh_CN" << none;
    QTest::newRow("an empty value is none") << "" << true << "en" << none;
}

void LocaleManagerTest::takesTheSavedLocale() {
    QFETCH(QString, saved);
    QFETCH(bool, file);
    QFETCH(QString, expected);
    if (!saved.isNull())
        SettingsStore::instance().setValue("ui/locale", saved);
    if (file)
        putTranslation(0);
    const support::MessageCapture capture;
    manager().applySavedLocale("en");
    QCOMPARE(manager().currentLocale(), expected);
    QCOMPARE(manager().isEnglish(), expected == "en");
    QCOMPARE(stored(), expected);
    QCOMPARE(translated(), expected == "en" ? QString("copy 0") : QString("启动"));
    QTEST(capture.messages(), "warnings");
}

void LocaleManagerTest::givenDefaultIsUsedWhenNoneIsSaved() {
    putTranslation(0);
    manager().applySavedLocale("zh_CN");
    QCOMPARE(manager().currentLocale(), QString("zh_CN"));
}

void LocaleManagerTest::searchesThreePlacesInOrder_data() {
    QTest::addColumn<QList<int>>("places");
    QTest::addColumn<QString>("expected");
    QTest::newRow("beside the program") << QList<int>{0} << "copy 0";
    QTest::newRow("the root's resources") << QList<int>{1} << "copy 1";
    QTest::newRow("the root's bin") << QList<int>{2} << "copy 2";
    QTest::newRow("beside the program wins") << QList<int>{0, 1, 2} << "copy 0";
    QTest::newRow("the resources win over bin") << QList<int>{1, 2} << "copy 1";
}

void LocaleManagerTest::searchesThreePlacesInOrder() {
    QFETCH(QList<int>, places);
    for (const int place : places)
        putTranslation(place);
    manager().setLocale("en");
    QTEST(translated(), "expected");
}

void LocaleManagerTest::brokenFileIsPassedOver() {
    putTranslation(1);
    QVERIFY(QDir().mkpath(folders().at(0)));
    QFile broken(translationFile(0));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("this is no translation");
    broken.close();
    manager().setLocale("en");
    QCOMPARE(translated(), QString("copy 1"));
}

void LocaleManagerTest::togglesBothWays() {
    putTranslation(0);
    manager().toggle();
    QCOMPARE(manager().currentLocale(), QString("en"));
    QCOMPARE(translated(), QString("copy 0"));
    manager().toggle();
    QCOMPARE(manager().currentLocale(), QString("zh_CN"));
    QCOMPARE(translated(), QString("启动"));
    QCOMPARE(stored(), QString("zh_CN"));
}

void LocaleManagerTest::togglingWithTheFileGoneStaysChinese() {
    const support::MessageCapture capture;
    manager().toggle();
    QCOMPARE(manager().currentLocale(), QString("zh_CN"));
    QCOMPARE(stored(), QString("zh_CN"));
    QCOMPARE(capture.messages(), QStringList({notFound(), fallingBack}));
}

// Before setLocale() returns, with the locale in force and stored; shown or not, child or not.
// A window passes what it is told on to its children, so these hear of it more than once.
void LocaleManagerTest::everyWidgetIsToldAtOnce() {
    putTranslation(0);
    QDialog dialog;
    Listener hidden;
    Listener *const child = new Listener(&dialog);
    Listener *const grandchild = new Listener(child);
    dialog.show();
    for (const QString expected : {"copy 0 en", "启动 zh_CN"}) {
        manager().toggle();
        QCOMPARE(hidden.seen, QStringList(expected));
        for (Listener *listener : {child, grandchild}) {
            QVERIFY(listener->seen.removeAll(expected) > 0);
            QCOMPARE(listener->seen, QStringList());
        }
        QCoreApplication::processEvents(); // the application tells the windows once more
        for (Listener *listener : {&hidden, child, grandchild})
            listener->seen.clear();
    }
}

void LocaleManagerTest::childrenAreToldByThemselves() {
    putTranslation(0);
    Silent parent;
    Listener *const child = new Listener(&parent);
    manager().toggle();
    QCOMPARE(child->seen, QStringList("copy 0 en"));
}

void LocaleManagerTest::askingForTheSameAgainTellsAgain() {
    Listener listener;
    manager().setLocale("zh_CN");
    manager().setLocale("zh_CN");
    QCOMPARE(listener.seen.size(), 2);
}

void LocaleManagerTest::localeIsInForceWithoutADatabase() {
    putTranslation(0);
    QSqlDatabase::removeDatabase("quorvane");
    const support::MessageCapture capture;
    manager().applySavedLocale("en");
    QCOMPARE(manager().currentLocale(), QString("en"));
}

QUORVANE_TEST_MAIN(QApplication, LocaleManagerTest)
#include "locale_manager_test.moc"
