// The version stamp in a folder whose files only their owners may replace.
#include "project/project_file.h"

#include "support/ordinary_user.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QDir>

#include <sys/stat.h>
#include <unistd.h>

using support::OrdinaryUser;
using support::ProjectFolder;

class StampRightsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileThatCannotBeReplacedIsWrittenOver_data();
    void aFileThatCannotBeReplacedIsWrittenOver();
    void aFileThatMayNotBeWrittenEitherStaysAsItIs();
    void theStampFailsWhereNeitherFileNorFolderMayBeWritten();
};

namespace {

// Root's own, and open to all: whoever comes may add files and write in this one, but not replace it.
QString writeInStickyFolder(const ProjectFolder &folder, const QByteArray &content, mode_t mode) {
    const QString file = folder.write("shared/line.yslib", content);
    if (::chmod(QFile::encodeName(file).constData(), mode) != 0 ||
        ::chmod(QFile::encodeName(folder.path("shared")).constData(), 01777) != 0)
        qFatal("no sticky folder can be made");
    return file;
}

QStringList everythingIn(const QString &folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

void StampRightsTest::aFileThatCannotBeReplacedIsWrittenOver_data() {
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("a shorter one") << QByteArray("{}");
    QTest::newRow("a longer one") << "{" + QByteArray(1000, ' ') + "}";
}

void StampRightsTest::aFileThatCannotBeReplacedIsWrittenOver() {
    QFETCH(QByteArray, before);
    if (::geteuid() != 0)
        QSKIP("only root can have a file that is somebody else's");
    const ProjectFolder folder;
    const QString file = writeInStickyFolder(folder, before, 0666);
    QCOMPARE(::link(QFile::encodeName(file).constData(),
                    QFile::encodeName(folder.path("same")).constData()),
             0);
    const OrdinaryUser user(folder.path(""));
    if (!user.isOne)
        QSKIP("root cannot become anybody else here");
    QVERIFY(stampProjectVersion(file, "1.0"));
    QCOMPARE(folder.read("shared/line.yslib"),
             QByteArray("{\n    \"project\": {\n        \"version\": \"1.0\"\n    }\n}\n"));
    QCOMPARE(folder.read("same"), folder.read("shared/line.yslib"));
    QCOMPARE(everythingIn(folder.path("shared")),
             (QStringList{".quorvane-installed-version", "line.yslib"}));
}

void StampRightsTest::aFileThatMayNotBeWrittenEitherStaysAsItIs() {
    if (::geteuid() != 0)
        QSKIP("only root can have a file that is somebody else's");
    const ProjectFolder folder;
    const QString file = writeInStickyFolder(folder, "{}", 0644);
    const OrdinaryUser user(folder.path(""));
    if (!user.isOne)
        QSKIP("root cannot become anybody else here");
    QVERIFY(stampProjectVersion(file, "1.0"));
    QCOMPARE(folder.read("shared/line.yslib"), QByteArray("{}"));
    QCOMPARE(folder.read("shared/.quorvane-installed-version"), QByteArray("1.0\n"));
}

void StampRightsTest::theStampFailsWhereNeitherFileNorFolderMayBeWritten() {
    if (::geteuid() != 0)
        QSKIP("only root can have a file that is somebody else's");
    const ProjectFolder folder;
    const QString file = writeInStickyFolder(folder, "{}", 0644);
    QCOMPARE(::chmod(QFile::encodeName(folder.path("shared")).constData(), 0755), 0);
    const OrdinaryUser user(folder.path(""));
    if (!user.isOne)
        QSKIP("root cannot become anybody else here");
    QVERIFY(!stampProjectVersion(file, "1.0"));
    QCOMPARE(folder.read("shared/line.yslib"), QByteArray("{}"));
    QCOMPARE(everythingIn(folder.path("shared")), QStringList("line.yslib"));
}

QUORVANE_TEST_MAIN(QCoreApplication, StampRightsTest)
#include "stamp_rights_test.moc"
