// Records all eleven signals of a LauncherService in one sequence.
#pragma once

#include "launcher/launcher_service.h"

#include <QMetaEnum>
#include <QStringList>

#include <utility>

class SignalLog : public QObject {
public:
    explicit SignalLog(LauncherService &service) {
        using Service = LauncherService;
        connect(&service, &Service::stateChanged, this,
                [this](Service::State state) { add("state", name(state)); });
        connect(&service, &Service::statusChanged, this,
                [this](const QString &text) { add("status", text); });
        connect(&service, &Service::countdownChanged, this,
                [this](int seconds) { add("countdown", QString::number(seconds)); });
        connect(&service, &Service::updateSuggestionReady, this,
                [this](const QString &text) { add("suggestion", text); });
        connect(&service, &Service::updatePromptChanged, this,
                [this](Service::UpdatePromptMode mode) { add("prompt", name(mode)); });
        connect(&service, &Service::applyUpdateFinished, this,
                [this](bool success, const QString &text) {
                    add(success ? "applied" : "not applied", text);
                });
        connect(&service, &Service::precheckFailed, this,
                [this](const QString &text) { add("precheckFailed", text); });
        connect(&service, &Service::launchFailed, this,
                [this](const QString &text) { add("launchFailed", text); });
        connect(&service, &Service::targetExited, this, [this](int code, const QString &text) {
            add("exited", QString::number(code) + ' ' + text);
        });
        connect(&service, &Service::updateTaskActiveChanged, this,
                [this](bool active) { add("active", active ? "true" : "false"); });
        connect(&service, &Service::updateTaskProgressChanged, this,
                [this](const QString &, const QString &phase, int percent, const QString &detail) {
                    add("progress", QStringLiteral("%1 %2 %3").arg(phase).arg(percent).arg(detail));
                });
    }

    // What was recorded since the last call.
    [[nodiscard]] QStringList take() { return std::exchange(recorded, {}); }
    [[nodiscard]] const QStringList &entries() const { return recorded; }

    template<typename Enum>
    [[nodiscard]] static QString name(Enum value) {
        return QString::fromLatin1(QMetaEnum::fromType<Enum>().valueToKey(int(value)));
    }

private:
    void add(const char *what, const QString &text) {
        recorded.append(QString::fromLatin1(what) + ' ' + text);
    }

    QStringList recorded;
};
