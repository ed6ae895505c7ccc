// A project file: the validator over it, and the readers and the stamping of name and version.

#include "project/project_file.h"
#include "project/project_validator.h"
#include "script_language.h"

#include <QDir>

namespace {

void silent(QtMsgType, const QMessageLogContext &, const QString &) {}

// The files that a document can name.
void writeScripts() {
    qInstallMessageHandler(silent); // a path with a NUL is told to the debug log
    fuzz::loadScriptLanguage();
    fuzz::demand(QDir(fuzz::folder().path()).mkpath(QStringLiteral("p/sub")));
    fuzz::write(QStringLiteral("p/a.ys"), "import \"sub/b.ys\";\nglobal int cam1_w = 1;\n");
    fuzz::write(QStringLiteral("p/sub/b.ys"), "import \"../a.ys\";\nglobal int cam1_w;\n");
    fuzz::write(QStringLiteral("p/c.ys"), "global int bad;\n} @\n");
}

} // namespace

// The JSON parser of Qt 5.15 loses the memory of an object or array whose key comes twice. That is
// not ours to mend; leaks of ours show in the tests of src/project.
extern "C" const char *__asan_default_options() { // NOLINT(bugprone-reserved-identifier)
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const bool written = (writeScripts(), true);
    Q_UNUSED(written)
    const QByteArray bytes = fuzz::bytesOf(data, size);
    const QString path = fuzz::write(QStringLiteral("p/line.yslib"), bytes);
    const QVector<ProjectIssue> issues = validateProjectFile(path);
    for (const ProjectIssue &issue : issues) {
        fuzz::demand(issue.severity == 0 || issue.severity == 1);
        fuzz::demand(!issue.message.isEmpty());
    }
    fuzz::demand(formatProjectIssues(issues).isEmpty() == issues.isEmpty());

    static_cast<void>(readProjectName(path));
    static_cast<void>(installedProjectVersion(path));
    fuzz::demand(stampProjectVersion(path, QStringLiteral("1.2.3")));
    fuzz::demand(installedProjectVersion(path) == QLatin1String("1.2.3") ||
                 !readProjectVersion(path).isEmpty());
    return 0;
}
