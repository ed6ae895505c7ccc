// Decides whether the Chinese source strings or the English translation are in force.
//
// The choice is kept in the settings under "ui/locale", as "en" or "zh_CN". Main thread only.
#pragma once

#include <QString>
#include <QTranslator>

class LocaleManager {
public:
    static LocaleManager &instance();
    LocaleManager(const LocaleManager &) = delete;
    LocaleManager &operator=(const LocaleManager &) = delete;

    // "en" or "zh_CN".
    [[nodiscard]] QString currentLocale() const;
    [[nodiscard]] bool isEnglish() const;

    // Takes the stored locale, or `defaultLocale` if none is stored.
    void applySavedLocale(const QString &defaultLocale);
    // Anything that begins with "en" asks for English, all else for Chinese; English without its
    // translation file falls back to Chinese with a warning in the debug log. Stores what is then
    // in force and sends QEvent::LanguageChange to every widget before it returns.
    void setLocale(const QString &requested);
    void toggle();

private:
    LocaleManager() = default;
    [[nodiscard]] bool loadEnglish();

    QTranslator translator;
    QString locale = QStringLiteral("zh_CN");
};
