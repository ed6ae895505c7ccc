// Addresses, hashes and the packages themselves.
#include "quorvanectl/manifest/manifest_lint_rules.h"

#include "quorvanectl/package/package_names.h"
#include "quorvanectl/package/project_package.h"
#include "update/files/text_file.h"
#include "update/files/version_text.h"
#include "update/manifest_keys.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QUrl>

namespace ctl {
namespace {

struct AddressRule {
    const char *kind;
    bool (*isBroken)(const QString &address);
    const char *message;
};

bool hasQuery(const QString &address) {
    return address.contains(QLatin1Char('?')) || address.contains(QLatin1Char('#'));
}

bool hasQuote(const QString &address) {
    return address.contains(QLatin1Char('\'')) || address.contains(QLatin1Char('"'));
}

bool isLocalPath(const QString &address) {
    return !isUrl(address) && (QDir::isAbsolutePath(address) ||
                               (address.size() > 1 && address.at(1) == QLatin1Char(':')));
}

bool leadsOut(const QString &address) {
    return !isUrl(address) && QDir::cleanPath(address).startsWith(QLatin1String(".."));
}

bool isInsecure(const QString &address) {
    return isUrl(address) && QUrl(address).scheme() != QLatin1String("https");
}

bool hasNoHost(const QString &address) {
    return isUrl(address) && QUrl(address).host().isEmpty();
}

bool hasCredentials(const QString &address) {
    return isUrl(address) && !QUrl(address).userInfo().isEmpty();
}

bool hasBackslash(const QString &address) {
    return address.contains(QLatin1Char('\\'));
}

bool hasNoFileName(const QString &address) {
    return packageFileName(address).isEmpty();
}

bool hasPercent(const QString &address) {
    return address.contains(QLatin1Char('%'));
}

bool hasBadFileName(const QString &address) {
    const QString name =
        address.section(QLatin1Char('/'), -1); // with a drive before it, on Windows too
    return !name.isEmpty() && !hasQuery(address) && !hasQuote(address) && !hasBackslash(address) &&
           !nameFault(name).isEmpty();
}

const AddressRule addressRules[] = {
    {"query", hasQuery, "a query or fragment becomes part of the file's name on the line PC"},
    {"quote", hasQuote, "a quote in the path keeps Windows from unpacking it"},
    {"backslash", hasBackslash, "a backslash is no divider in a URL; use slashes"},
    {"local-path", isLocalPath, "a path of this one machine"},
    {"leads-out", leadsOut, "leads out of the manifest's folder"},
    {"not-https", isInsecure, "is not fetched over https"},
    {"no-host", hasNoHost, "names no server"},
    {"credentials", hasCredentials, "a name or password in an address is shown to everybody"},
    {"percent", hasPercent, "a per cent sign reads differently on a stick and on a server"},
    {"no-file-name", hasNoFileName, "ends without a file's name"},
    {"bad-file-name", hasBadFileName, "Windows has no file of that name"},
};

LintFinding atUrl(const QString &kind, const PackageRecord &package, const QString &message) {
    return {kind, QStringLiteral("%1.%2").arg(package.where, package.urlKey()), message};
}

QString withoutHash(const PackageRecord &package) {
    if (package.isProject)
        return QStringLiteral("is missing: nobody is offered the project");
    return package.record.value(package.hashKey()).toString().isEmpty()
               ? QStringLiteral("is missing: the installer is started unchecked")
               : QStringLiteral("is blank: the installer is never started");
}

// An installer is started as it is: neither unpacked nor handed to another program.
bool isNoProgram(const PackageRecord &package) {
    static const QRegularExpression other(
        QStringLiteral("\\.(msi|msix|msp|zip|7z|rar|tar|gz|iso)$"),
        QRegularExpression::CaseInsensitiveOption);
    return !package.isProject && other.match(packageFileName(package.url())).hasMatch();
}

QVector<LintFinding> lintHash(const PackageRecord &package) {
    static const QRegularExpression hexadecimal(QStringLiteral("^[0-9A-Fa-f]{64}$"));
    const QString where = QStringLiteral("%1.%2").arg(package.where, package.hashKey());
    if (package.hash().isEmpty())
        return {{QStringLiteral("missing-hash"), where, withoutHash(package)}};
    if (!hexadecimal.match(package.hash()).hasMatch()) {
        return {{QStringLiteral("bad-hash"), where,
                 QStringLiteral("is no SHA-256, which has 64 hexadecimal digits")}};
    }
    return {};
}

QVector<LintFinding> lintProjectFiles(const ProjectPackage &zip, const PackageRecord &package) {
    QVector<LintFinding> findings;
    if (zip.projectFiles.isEmpty()) {
        findings.append(atUrl(QStringLiteral("no-project-file"), package,
                              QStringLiteral("the package holds no project file (.yslib)")));
    } else if (zip.projectFiles.size() > 1) {
        findings.append(
            atUrl(QStringLiteral("several-project-files"), package,
                  QStringLiteral("the package holds several project files, of which the "
                                 "launcher takes any: %1")
                      .arg(zip.projectFiles.join(QStringLiteral(", ")))));
    } else if (zip.projectFiles.first().contains(QLatin1Char('/'))) {
        findings.append(
            atUrl(QStringLiteral("project-in-subfolder"), package,
                  QStringLiteral("the project file is not at the top: %1 would move there")
                      .arg(zip.projectFiles.first())));
    }
    if (zip.hasLogs) {
        findings.append(
            atUrl(QStringLiteral("brings-logs"), package,
                  QStringLiteral("the package brings a folder `logs`, which belongs to the "
                                 "line PC")));
    }
    return findings;
}

QVector<LintFinding> lintNames(const ProjectPackage &zip, const PackageRecord &package) {
    QVector<LintFinding> findings;
    for (const QString &name : zip.files) {
        const QString fault = nameFault(name);
        if (!fault.isEmpty()) {
            findings.append(atUrl(QStringLiteral("bad-entry"), package,
                                  QStringLiteral("%1: %2").arg(name, fault)));
        }
    }
    for (const QString &fault : sameNameFaults(zip.files))
        findings.append(atUrl(QStringLiteral("bad-entry"), package, fault));
    return findings;
}

QVector<LintFinding> lintProject(const ProjectPackage &zip, const PackageRecord &package) {
    QVector<LintFinding> findings;
    const QString name = package.record.value(manifest_keys::name).toString();
    if (!zip.name.isEmpty() && !name.isEmpty() &&
        zip.name.compare(name, Qt::CaseInsensitive) != 0) {
        findings +=
            {QStringLiteral("name-disagrees"), package.where + QStringLiteral(".name"),
             QStringLiteral("says '%1', the package's project is '%2'").arg(name, zip.name)};
    }
    if (!zip.version.isEmpty() && !package.version().isEmpty() &&
        compareVersions(zip.version, package.version()) != 0) {
        findings +=
            {QStringLiteral("version-disagrees"), package.where + QStringLiteral(".version"),
             QStringLiteral("says %1, the package's project is %2")
                 .arg(package.version(), zip.version)};
    }
    for (const QString &line : errorLines(zip.issues)) {
        findings.append(atUrl(QStringLiteral("broken-project"), package,
                              QStringLiteral("the launcher would refuse it: %1").arg(line)));
    }
    return findings;
}

QVector<LintFinding> lintZip(const QString &path, const PackageRecord &package) {
    const ProjectPackage zip = inspectPackage(path);
    if (!zip.unpacked) {
        return {atUrl(zip.isUnsafe ? QStringLiteral("unsafe-entry") : QStringLiteral("bad-package"),
                      package, zip.error)};
    }
    return lintProjectFiles(zip, package) + lintNames(zip, package) + lintProject(zip, package);
}

} // namespace

QVector<LintFinding> lintAddress(const PackageRecord &package) {
    if (package.url().isEmpty()) {
        return {{QStringLiteral("no-address"), package.where,
                 QStringLiteral("`%1` is missing: nobody is offered it").arg(package.urlKey())}};
    }
    QVector<LintFinding> findings;
    if (package.record.value(package.urlKey()).toString() != package.url()) {
        findings.append(atUrl(QStringLiteral("blanks"), package,
                              QStringLiteral("blanks around the address become part of it")));
    }
    for (const AddressRule &rule : addressRules) {
        if (rule.isBroken(package.url())) {
            findings +=
                atUrl(QLatin1String(rule.kind), package,
                      QStringLiteral("%1: %2").arg(package.url(), QLatin1String(rule.message)));
        }
    }
    if (isNoProgram(package)) {
        findings.append(
            atUrl(QStringLiteral("no-program"), package,
                  QStringLiteral("the launcher starts an installer as it is, and %1 is no "
                                 "program")
                      .arg(packageFileName(package.url()))));
    }
    return findings + lintHash(package);
}

QVector<LintFinding> lintPackageFile(const PackageRecord &package, const LintSubject &subject) {
    const QString ahead = subject.ahead.isEmpty()
                              ? QString()
                              : localPackage(package.url(), subject.ahead, subject.base);
    const QString path = QFileInfo(ahead).isFile()
                             ? ahead
                             : localPackage(package.url(), subject.folder, subject.base);
    if (path.isEmpty() || hasQuery(package.url()) || isLocalPath(package.url()))
        return {};
    if (!QFileInfo(path).isFile()) {
        return {atUrl(QStringLiteral("missing-package"), package,
                      QStringLiteral("there is no file %1").arg(path))};
    }
    const QString unfit = sizeFault(QFileInfo(path).size());
    if (!unfit.isEmpty())
        return {atUrl(QStringLiteral("bad-size"), package, QStringLiteral("the package ") + unfit)};
    QVector<LintFinding> findings;
    QString reason;
    const QString actual = fileSha256Hex(path, &reason);
    if (actual.isEmpty()) {
        return {atUrl(QStringLiteral("bad-package"), package,
                      QStringLiteral("%1 cannot be read: %2").arg(path, reason))};
    }
    if (!package.hash().isEmpty() && package.hash().compare(actual, Qt::CaseInsensitive) != 0) {
        findings.append({QStringLiteral("hash-disagrees"),
                         QStringLiteral("%1.%2").arg(package.where, package.hashKey()),
                         QStringLiteral("the file's hash is %1").arg(actual)});
    }
    return package.isProject ? findings + lintZip(path, package) : findings;
}

QVector<LintFinding> lintTogether(const QVector<PackageRecord> &packages) {
    QVector<LintFinding> findings;
    QHash<QString, QString> namedIn;
    QHash<QString, QString> projectAt;
    for (const PackageRecord &package : packages) {
        const QString file = packageFileName(package.url()).toCaseFolded();
        if (!file.isEmpty() && namedIn.contains(file)) {
            findings.append(
                atUrl(QStringLiteral("same-file-name"), package,
                      QStringLiteral("has the file name of %1: on a line PC one overwrites "
                                     "the other")
                          .arg(namedIn.value(file))));
        }
        namedIn.insert(file, package.where);
        if (!package.isProject)
            continue;
        const QString where = package.where + QStringLiteral(".name");
        const QString name = package.record.value(manifest_keys::name).toString();
        if (name.trimmed() != name) {
            findings.append(
                {QStringLiteral("blanks"), where,
                 QStringLiteral("blanks around the name belong to it: '%1'").arg(name)});
        }
        if (name.isEmpty()) {
            findings.append({QStringLiteral("no-name"), where,
                             QStringLiteral("a project without a name matches no project")});
        } else if (projectAt.contains(package.identity())) {
            findings.append({QStringLiteral("same-project"), where,
                             QStringLiteral("is that of %1, and only the first is looked at")
                                 .arg(projectAt.value(package.identity()))});
        }
        projectAt.insert(package.identity(), package.where);
    }
    return findings;
}

} // namespace ctl
