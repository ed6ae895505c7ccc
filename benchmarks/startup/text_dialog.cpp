// The least that a program can be which shows a text in a dialog, keeps settings in a database and can
// fetch over TLS: what the launcher cannot leave out before its first frame.
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace {

QString openSettings() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    QDir().mkpath(folder);
    QSqlDatabase settings = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    settings.setDatabaseName(QDir(folder).filePath(QStringLiteral("text_dialog.db")));
    settings.open();
    QSqlQuery query(settings);
    query.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS settings (key TEXT, value TEXT)"));
    query.exec(QStringLiteral("SELECT value FROM settings"));
    return query.next() ? query.value(0).toString() : QStringLiteral("None");
}

} // namespace

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    const QString text = openSettings();
    const QLatin1String library(QNetworkAccessManager::staticMetaObject.className());
    QDialog dialog;
    QVBoxLayout layout(&dialog);
    // In both languages, as the launcher's notice is: two fonts.
    layout.addWidget(new QLabel(QStringLiteral("启动器 ") + text + library, &dialog));
    dialog.resize(640, 360);
    dialog.show();
    return QApplication::exec();
}
