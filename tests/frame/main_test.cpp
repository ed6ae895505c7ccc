// The launcher's own main, run from end to end in this process.
#include "main_recorder.h"

#include "frame/broken_pipe.h"
#include "frame/without_open_gl.h"
#include "support/staged_main.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QSemaphore>
#include <QTimer>
#include <QtConcurrent>

#include <atomic>

namespace recorder {
namespace {

QStringList notes;
bool windowIsShown = false;
QSemaphore serviceHasEnded;
std::atomic<bool> workerHasEnded{false};

// As a fetch that the service did not wait for: it needs a timer of its own to end.
void outliveTheService() {
    serviceHasEnded.acquire();
    QEventLoop loop;
    QTimer::singleShot(50, &loop, &QEventLoop::quit);
    loop.exec();
    workerHasEnded = true;
}

// What Qt's plug-in for X is told of OpenGL.
QString openGl() {
    return QString::fromLocal8Bit(qgetenv("QT_XCB_GL_INTEGRATION"));
}

} // namespace

void note(const QString &step) {
    notes.append(step);
}

void outliveBrokenPipes() {
    note(qApp == nullptr ? "broken pipes before all else" : "broken pipes too late");
    ::outliveBrokenPipes();
}

void Paths::initialize() {
    support::keepScreens(); // at the first moment with an application
    note("folders for " + QCoreApplication::organizationName() + " " +
         QCoreApplication::applicationName());
    AppPaths::initialize();
}

Settings &Settings::instance() {
    static Settings settings;
    return settings;
}

bool Settings::open() {
    note(QDir(AppPaths::dataDirectory()).exists() ? "settings in a folder that exists"
                                                  : "settings without a folder");
    return SettingsStore::instance().open();
}

Locale &Locale::instance() {
    static Locale locale;
    return locale;
}

void Locale::applySavedLocale(const QString &defaultLocale) {
    note("locale " + defaultLocale);
    LocaleManager::instance().applySavedLocale(defaultLocale);
}

Library &Library::instance() {
    static Library library;
    return library;
}

bool Library::load(const QString &path, QString *error) {
    note("library " + QFileInfo(path).fileName() + (error == nullptr ? " without a text" : ""));
    return FunctionLibrary::instance().load(path, error);
}

Parameters::Parameters(bool threaded)
    : SourceParameter(threaded) {
    note(threaded ? "store on a thread" : "store on the main thread");
}

AfterService::~AfterService() {
    serviceHasEnded.release();
}

Service::Service() {
    note("service");
    connect(this, &LauncherService::countdownChanged, this, [](int seconds) {
        note(QString("countdown %1 %2")
                 .arg(QString::number(seconds), windowIsShown ? "seen" : "lost"));
    });
}

Service::~Service() {
    note("service ends");
}

void Service::initialize() {
    note("initialize");
    LauncherService::initialize();
}

void Service::start() {
    note("start with OpenGL: " + openGl());
    LauncherService::start();
    QtConcurrent::run(outliveTheService);
    QTimer::singleShot(0, qApp, &QApplication::closeAllWindows);
}

Window::Window(LauncherService *launcher)
    : LauncherWindow(launcher) {
    note("window");
}

Window::~Window() {
    note("window ends");
}

void Window::showEvent(QShowEvent *event) {
    note("shown with OpenGL: " + openGl());
    windowIsShown = true;
    LauncherWindow::showEvent(event);
}

} // namespace recorder

class MainTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void buildsInOrderAndTearsDownInReverse();
    void highDensityScreensAreAskedFor();
    void whatTheUserSaysOfOpenGlStays();
};

void MainTest::buildsInOrderAndTearsDownInReverse() {
    char program[] = "Quorvaner";
    char *arguments[] = {program, nullptr};
    QCOMPARE(launcherMain(1, arguments), 0);
    QVERIFY(qApp == nullptr);
    QVERIFY(recorder::workerHasEnded);
    const QStringList expected{"broken pipes before all else",
                               "folders for Quorvane Quorvaner",
                               "settings in a folder that exists",
                               "locale en",
                               "library FunctionLib.ini without a text",
                               "store on a thread",
                               "store on the main thread",
                               "service",
                               "initialize",
                               "window",
                               "shown with OpenGL: none",
                               "start with OpenGL: ", // what it starts may draw with it
                               "countdown 5 seen",
                               "countdown 5 seen",
                               "window ends",
                               "service ends"};
    for (int i = 0; i < qMin(expected.size(), recorder::notes.size()); ++i)
        QCOMPARE(recorder::notes[i], expected[i]);
    QCOMPARE(recorder::notes.size(), expected.size());
}

void MainTest::highDensityScreensAreAskedFor() {
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling));
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps));
}

void MainTest::whatTheUserSaysOfOpenGlStays() {
    qputenv("QT_XCB_GL_INTEGRATION", "xcb_egl");
    {
        const WithoutOpenGl without;
        QCOMPARE(recorder::openGl(), QString("xcb_egl"));
    }
    QCOMPARE(recorder::openGl(), QString("xcb_egl"));
    qunsetenv("QT_XCB_GL_INTEGRATION");
}

// The application is launcherMain's to make.
int main(int argc, char **argv) {
    if (!support::isStaged(argc, argv))
        return support::runStaged(argc, argv);
    support::dropStagedMarker(argc, argv);
    MainTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "main_test.moc"
