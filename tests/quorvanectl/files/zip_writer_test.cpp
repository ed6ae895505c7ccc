// Archives that others can read, and what is said where one cannot be written.
#include "quorvanectl/files/zip_writer.h"

#include "quorvanectl/files/interruption.h"
#include "quorvanectl/files/unpack.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtEndian>

#include <csignal>
#include <memory>

using ctl::ZipWriter;
using support::FileTree;

namespace {

// Says that it has more bytes than it gives, as a file does that is cut while it is read.
class ShrinkingFile : public QIODevice {
public:
    explicit ShrinkingFile(qint64 bytes)
        : left(bytes) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    qint64 size() const override { return 3000000; }
    bool isSequential() const override { return false; }

protected:
    qint64 readData(char *data, qint64 most) override {
        const qint64 given = qMin(left, most);
        std::fill(data, data + given, 'x');
        left -= given;
        if (given == 0)
            setErrorString("it has become shorter");
        return given;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    qint64 left;
};

// Takes so many bytes and no more.
class FullDisk : public QIODevice {
public:
    explicit FullDisk(qint64 bytes)
        : room(bytes) {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override {
        room -= size;
        return room < 0 ? -1 : size;
    }

private:
    qint64 room;
};

std::unique_ptr<QIODevice> bufferOf(const QByteArray &bytes) {
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(bytes);
    return buffer;
}

QByteArray zipOf(const FileTree &tree) {
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    ZipWriter writer(&out);
    bool ok = true;
    for (auto entry = tree.begin(); ok && entry != tree.end(); ++entry) {
        ok = entry.key().endsWith('/') ? writer.addFolder(entry.key().chopped(1))
                                       : writer.addFile(entry.key(), bufferOf(entry.value()));
    }
    if (!ok || !writer.finish())
        qFatal("%s", qPrintable(writer.error()));
    return out.data();
}

} // namespace

class ZipWriterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatGoesInComesOut_data();
    void whatGoesInComesOut();
    void equalEntriesGiveEqualBytes();
    void unlessFinishedNothingIsWritten();
    void aContentThatShrinks_data();
    void aContentThatShrinks();
    void aContentThatCannotBeOpened();
    void twoEntriesOfOneName();
    void aFullDisk_data();
    void aFullDisk();
    void anEntryHasNoDateOrOwnRights();
    void anInterruptEndsAFile(); // of whatever is written after it, too
    void afterAFailureNothingMoreGoesIn();
};

void ZipWriterTest::whatGoesInComesOut_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::newRow("one file") << FileTree{{"a.ys", "int a;\n"}};
    QTest::newRow("an empty file") << FileTree{{"a.ys", ""}};
    QTest::newRow("an empty folder") << FileTree{{"results/", ""}};
    QTest::newRow("folders in folders") << FileTree{{"a/b/c/d.txt", "d"}, {"a/b/e/", ""}};
    QTest::newRow("Chinese and blanks") << FileTree{{QStringLiteral("相机/设置 1.json"), "{}"}};
    QTest::newRow("a character of two units")
        << FileTree{{QString::fromUtf8("\xF0\x9F\x98\x80.txt"), "x"}};
    QTest::newRow("a name of a hundred and more characters") << FileTree{{QString(200, 'n'), "x"}};
    QTest::newRow("bytes of all kinds") << FileTree{{"a", QByteArray("\0\xff\r\n\x1a", 5)}};
    QTest::newRow("exactly one piece") << FileTree{{"a", QByteArray(1 << 20, 'a')}};
    QTest::newRow("one byte more than a piece") << FileTree{{"a", QByteArray((1 << 20) + 1, 'a')}};
}

void ZipWriterTest::whatGoesInComesOut() {
    QFETCH(FileTree, tree);
    const QTemporaryDir folder;
    support::writeTree(folder.path(), {{"a.zip", zipOf(tree)}});
    QString error;
    QVERIFY2(ctl::unpack(folder.filePath("a.zip"), folder.filePath("out"), &error),
             qPrintable(error));
    QCOMPARE(support::readTree(folder.filePath("out")), tree);
}

void ZipWriterTest::equalEntriesGiveEqualBytes() {
    const FileTree tree{{"a.ys", "int a;\n"}, {"b/", ""}};
    const QByteArray first = zipOf(tree);
    QVERIFY(first.startsWith("PK\x03\x04"));
    QCOMPARE(zipOf(tree), first);
    QVERIFY(zipOf({{"a.ys", "int b;\n"}, {"b/", ""}}) != first);
}

void ZipWriterTest::unlessFinishedNothingIsWritten() {
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    {
        ZipWriter writer(&out);
        QVERIFY(writer.addFolder("a"));
        QVERIFY(writer.addFile("b", bufferOf("123")));
    }
    QCOMPARE(out.data(), QByteArray());
}

void ZipWriterTest::aContentThatShrinks_data() {
    QTest::addColumn<qint64>("given");
    QTest::newRow("to nothing") << qint64(0);
    QTest::newRow("within the first piece") << qint64(100);
    QTest::newRow("after the first piece") << qint64(1 << 20);
}

void ZipWriterTest::aContentThatShrinks() {
    QFETCH(qint64, given);
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    ZipWriter writer(&out);
    QVERIFY(writer.addFile("logs/a.log", std::make_unique<ShrinkingFile>(given)));
    QVERIFY(!writer.finish());
    QCOMPARE(writer.error(), QString("cannot read logs/a.log: it has become shorter"));
}

void ZipWriterTest::aContentThatCannotBeOpened() {
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    ZipWriter writer(&out);
    QVERIFY(writer.addFile("a", std::make_unique<QFile>("/nowhere/a")));
    QVERIFY(!writer.finish());
    QCOMPARE(writer.error(), "cannot read a: " + support::systemText("No such file or directory",
                                                                     "Path not found."));
}

void ZipWriterTest::twoEntriesOfOneName() {
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    ZipWriter writer(&out);
    QVERIFY(writer.addFile("a", bufferOf("1")));
    QVERIFY(!writer.addFile("a", bufferOf("2")));
    QCOMPARE(writer.error(), QString("File already exists"));
    QVERIFY(!writer.finish());
    QCOMPARE(out.data(), QByteArray());
}

void ZipWriterTest::aFullDisk_data() {
    QTest::addColumn<qint64>("room");
    QTest::newRow("with no room at all") << qint64(0);
    QTest::newRow("with room for the header alone") << qint64(64);
    QTest::newRow("with room for half of the file") << qint64(150000);
}

void ZipWriterTest::aFullDisk() {
    QFETCH(qint64, room);
    FullDisk out(room);
    ZipWriter writer(&out);
    QByteArray noise(300000, '\0');
    quint32 state = 1; // of bytes that do not shrink
    for (char &byte : noise) {
        state = state * 1664525 + 1013904223;
        byte = char(state >> 24);
    }
    QVERIFY(writer.addFile("a", bufferOf(noise)));
    QVERIFY(!writer.finish());
    QVERIFY(!writer.error().isEmpty());
    QVERIFY(!writer.error().contains('\n'));
}

void ZipWriterTest::anInterruptEndsAFile() {
    if (support::onWindows)
        QSKIP("Ctrl-C comes from a console there: windows/console");
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    ZipWriter writer(&out);
    const ctl::InterruptionWatch watch;
    QVERIFY(writer.addFile("a", bufferOf("123")));
    QCOMPARE(std::raise(SIGINT), 0);
    QVERIFY(!writer.finish());
    QCOMPARE(writer.error(), QString("interrupted"));
}

// Whenever and by whomever it is made, a package is the same.
void ZipWriterTest::anEntryHasNoDateOrOwnRights() {
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    ZipWriter writer(&out);
    QVERIFY(writer.addFile("a", bufferOf("123")) && writer.addFolder("b") && writer.finish());
    const auto *const bytes = reinterpret_cast<const uchar *>(out.data().constData());
    QStringList told;
    for (int at = out.data().indexOf("PK\1\2"); at >= 0; at = out.data().indexOf("PK\1\2", at + 4))
        told.append(
            QString("system %1, time %2, date %3, mode %4")
                .arg(QString::number(bytes[at + 5]),
                     QString::number(qFromLittleEndian<quint16>(bytes + at + 12)),
                     QString::number(qFromLittleEndian<quint16>(bytes + at + 14), 16),
                     QString::number(qFromLittleEndian<quint32>(bytes + at + 38) >> 16, 8)));
    QCOMPARE(told, (QStringList{"system 3, time 0, date 21, mode 100644",
                                "system 3, time 0, date 21, mode 40755"}));
}

void ZipWriterTest::afterAFailureNothingMoreGoesIn() {
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    ZipWriter writer(&out);
    QVERIFY(writer.addFile("a", std::make_unique<ShrinkingFile>(0)));
    QVERIFY(!writer.finish());
    const QByteArray written = out.data();
    QVERIFY(!writer.addFile("b", bufferOf("123")));
    QVERIFY(!writer.addFolder("c"));
    QVERIFY(!writer.finish());
    QCOMPARE(writer.error(), QString("cannot read a: it has become shorter"));
    QCOMPARE(out.data(), written);
}

QUORVANE_TEST_MAIN(QCoreApplication, ZipWriterTest)
#include "zip_writer_test.moc"
