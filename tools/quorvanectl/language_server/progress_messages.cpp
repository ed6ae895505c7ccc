// How far the first read of a project is. The editor grants a name for each time that something is shown, and
// is asked for it beforehand: once the read has begun, no answer is looked at.
#include "quorvanectl/language_server/language_server.h"

#include <QFileInfo>

namespace ctl {
namespace {

constexpr int step = 10; // per cent between two reports

QString nameOf(int number) {
    return QStringLiteral("reading-%1").arg(number);
}

} // namespace

void LanguageServer::askForProgress() {
    if (!abilities.showsProgress)
        return;
    progress = {progress.number + 1, false, 0};
    const QString name = nameOf(progress.number);
    send(request(name, QStringLiteral("window/workDoneProgress/create"),
                 {{QStringLiteral("token"), name}}));
    workspace.reading = [this](const QString &projectPath, int read, int all) {
        tellReading(projectPath, read, all);
    };
}

void LanguageServer::takeAnswer(const Message &message) {
    if (progress.number > 0 && message.id == nameOf(progress.number))
        progress.isGranted = !message.isRefused;
}

void LanguageServer::tellReading(const QString &projectPath, int read, int all) {
    if (!progress.isGranted)
        return;
    const int percentage = 100 * read / all;
    if (read == 0) {
        sendProgress({{QStringLiteral("kind"), QStringLiteral("begin")},
                      {QStringLiteral("title"),
                       QStringLiteral("Reading %1").arg(QFileInfo(projectPath).fileName())},
                      {QStringLiteral("percentage"), 0}});
    } else if (read == all) {
        sendProgress({{QStringLiteral("kind"), QStringLiteral("end")}});
        askForProgress();
    } else if (percentage >= progress.percentage + step) {
        progress.percentage = percentage;
        sendProgress(
            {{QStringLiteral("kind"), QStringLiteral("report")},
             {QStringLiteral("message"),
              QStringLiteral("%1/%2 scripts").arg(QString::number(read), QString::number(all))},
             {QStringLiteral("percentage"), percentage}});
    }
}

void LanguageServer::sendProgress(const QJsonObject &value) {
    send(notification(
        QStringLiteral("$/progress"),
        {{QStringLiteral("token"), nameOf(progress.number)}, {QStringLiteral("value"), value}}));
}

} // namespace ctl
