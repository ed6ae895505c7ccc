#include "wrapped_steps.h"

#include "launcher/launcher_service.h"
#include "project/project_validator.h"
#include "update/manifest_signature.h"

// The linker gives each caller in another file the __wrap_ symbol in the place of the plain one, and
// the plain one as __real_. The names are those that g++ makes of the declarations.
#define QUORVANE_WRAP(Result, name, symbol, ...)                                                   \
    Result real_##name(__VA_ARGS__) __asm__("__real_" symbol);                                     \
    Result wrap_##name(__VA_ARGS__) __asm__("__wrap_" symbol);

QUORVANE_WRAP(VerifyResult, verifyManifest, "_Z14verifyManifestRK7QStringS1_", const QString &text,
              const QString &keyPath)
QUORVANE_WRAP(VerifyResult, verifyFileSha256, "_Z16verifyFileSha256RK7QStringS1_",
              const QString &path, const QString &expected)
QUORVANE_WRAP(bool, removeDirectory, "_Z15removeDirectoryRK7QStringPS_", const QString &path,
              QString *error)
QUORVANE_WRAP(bool, extractZip, "_Z10extractZipRK7QStringS1_PS_", const QString &zip,
              const QString &target, QString *error)
QUORVANE_WRAP(QVector<ProjectIssue>, validateProjectFile, "_Z19validateProjectFileRK7QString",
              const QString &path)
QUORVANE_WRAP(QString, normalizeProjectPath,
              "_Z21normalizedProjectPathRK7QString", const QString &path)
QUORVANE_WRAP(bool, replaceDirectory, "_Z16replaceDirectoryRK7QStringS1_RK11QStringListS1_PS_",
              const QString &staging, const QString &target, const QStringList &preserved,
              const QString &backup, QString *error)

namespace wrapped_steps {

QStringList calls;
QMap<QString, std::function<void()>> after;
std::function<QString(const QString &target, const QString &backup)> insteadOfReplace;

void reset() {
    calls.clear();
    after.clear();
    insteadOfReplace = nullptr;
}

} // namespace wrapped_steps

namespace {

template<typename Result>
Result noted(const char *name, const Result &result) {
    wrapped_steps::calls << name;
    if (const auto happens = wrapped_steps::after.value(name))
        happens();
    return result;
}

} // namespace

VerifyResult wrap_verifyManifest(const QString &text, const QString &keyPath) {
    return noted("verifyManifest", real_verifyManifest(text, keyPath));
}

VerifyResult wrap_verifyFileSha256(const QString &path, const QString &expected) {
    return noted("verifyFileSha256", real_verifyFileSha256(path, expected));
}

bool wrap_removeDirectory(const QString &path, QString *error) {
    return noted("removeDirectory", real_removeDirectory(path, error));
}

bool wrap_extractZip(const QString &zip, const QString &target, QString *error) {
    return noted("extractZip", real_extractZip(zip, target, error));
}

QVector<ProjectIssue> wrap_validateProjectFile(const QString &path) {
    return noted("validateProjectFile", real_validateProjectFile(path));
}

QString wrap_normalizeProjectPath(const QString &path) {
    return noted("normalizeProjectPath", real_normalizeProjectPath(path));
}

bool wrap_replaceDirectory(const QString &staging, const QString &target,
                           const QStringList &preserved, const QString &backup, QString *error) {
    if (!wrapped_steps::insteadOfReplace)
        return noted("replaceDirectory",
                     real_replaceDirectory(staging, target, preserved, backup, error));
    *error = wrapped_steps::insteadOfReplace(target, backup);
    return noted("replaceDirectory", error->isNull());
}
