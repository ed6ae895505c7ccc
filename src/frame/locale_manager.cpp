#include "frame/locale_manager.h"

#include "frame/app_paths.h"
#include "frame/settings_schema.h"
#include "frame/settings_store.h"

#include <QApplication>
#include <QDebug>
#include <QEvent>
#include <QStringList>
#include <QWidget>

namespace {

QString localeKey() {
    return QLatin1String(settings_schema::localeKey);
}

bool asksForEnglish(const QString &locale) {
    return locale.startsWith(QLatin1String("en"));
}

// What is in force, not what was asked for: without its file a later start does not look for English.
// A value that stands already is left alone, since a write waits for the disk and this one would hold
// up every start.
void storeLocale(const QString &locale) {
    SettingsStore &settings = SettingsStore::instance();
    if (settings.value(localeKey(), QString()) != locale)
        settings.setValue(localeKey(), locale);
}

void announceToWidgets() {
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        QEvent change(QEvent::LanguageChange);
        QCoreApplication::sendEvent(widget, &change);
    }
}

} // namespace

LocaleManager &LocaleManager::instance() {
    static LocaleManager manager;
    return manager;
}

QString LocaleManager::currentLocale() const {
    return locale;
}

bool LocaleManager::isEnglish() const {
    return asksForEnglish(locale);
}

void LocaleManager::applySavedLocale(const QString &defaultLocale) {
    const QString saved = SettingsStore::instance().value(localeKey(), QString());
    setLocale(saved.isEmpty() ? defaultLocale : saved);
}

void LocaleManager::setLocale(const QString &requested) {
    QCoreApplication::removeTranslator(&translator);
    if (asksForEnglish(requested) && loadEnglish()) {
        locale = QStringLiteral("en");
    } else {
        if (asksForEnglish(requested))
            qWarning("Failed to load English translation; falling back to Chinese source strings.");
        locale = QStringLiteral("zh_CN");
    }
    storeLocale(locale);
    announceToWidgets();
}

void LocaleManager::toggle() {
    setLocale(isEnglish() ? QStringLiteral("zh_CN") : QStringLiteral("en"));
}

bool LocaleManager::loadEnglish() {
    const QStringList files = AppPaths::translationFiles();
    for (const QString &file : files) {
        if (translator.load(file)) {
            QCoreApplication::installTranslator(&translator);
            return true;
        }
    }
    qWarning() << "English translation not found. Checked:" << files;
    return false;
}
