// The version stamp on a disk that takes no more of a file than a few bytes.
#include "project/project_file.h"

#include "support/project_folder.h"
#include "support/size_limit.h"
#include "support/staged_main.h"

#include <QDir>

using support::ProjectFolder;

class StampFullDiskTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFileStaysAsItIsAndTheSidecarTellsTheVersion_data();
    void theFileStaysAsItIsAndTheSidecarTellsTheVersion();
};

namespace {

bool stampWithLimit(const QString &file, rlim_t bytes) {
    const support::SizeLimit limit(bytes);
    return stampProjectVersion(file, "1.0");
}

QStringList everythingIn(const ProjectFolder &folder) {
    return QDir(folder.path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

// A short text fails when it leaves the buffer, a long one when it enters.
void StampFullDiskTest::theFileStaysAsItIsAndTheSidecarTellsTheVersion_data() {
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("a short file") << QByteArray("{}");
    QTest::newRow("a long file") << "{\"notes\": \"" + QByteArray(100000, 'x') + "\"}";
}

void StampFullDiskTest::theFileStaysAsItIsAndTheSidecarTellsTheVersion() {
    QFETCH(QByteArray, before);
    const ProjectFolder folder;
    const QString file = folder.write("line.yslib", before);
    QVERIFY(stampWithLimit(file, 8));
    QCOMPARE(folder.read("line.yslib"), before);
    QCOMPARE(folder.read(".quorvane-installed-version"), QByteArray("1.0\n"));
    QCOMPARE(everythingIn(folder), (QStringList{".quorvane-installed-version", "line.yslib"}));
}

QUORVANE_TEST_MAIN(QCoreApplication, StampFullDiskTest)
#include "stamp_full_disk_test.moc"
