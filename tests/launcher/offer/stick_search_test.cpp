// The search for a stick's manifest: what an answer brings, and that one which does not come, or comes
// late, holds nobody up. The walks are this test's, so that they hang for as long as it wants.
#include "launcher/offer/stick_search.h"

#include "support/project_folder.h"
#include "support/staged_main.h"
#include "update/files/text_file.h"

#include <QElapsedTimer>
#include <QSemaphore>

#include <atomic>
#include <memory>
#include <new>
#include <thread>

namespace {

constexpr int forGood = 1000 * 60 * 60;

StickManifest onStick() {
    StickManifest manifest;
    manifest.path = "/stick/QuorvanerUpdate/manifest.json";
    manifest.text = "{}";
    manifest.hash = "00";
    return manifest;
}

// A walk that hangs until the test lets it go, and tells when it is over.
class HangingWalk {
public:
    ~HangingWalk() { letGo(); }

    [[nodiscard]] std::function<StickManifest()> walk() const {
        return [gates = gates] {
            gates->begun.release();
            gates->mayEnd.acquire();
            gates->ended.release();
            return onStick();
        };
    }

    void waitForStart() const { gates->begun.acquire(); }
    [[nodiscard]] bool hasEnded() const { return gates->ended.available() > 0; }

    void letGo() const {
        gates->mayEnd.release();
        gates->ended.acquire();
        gates->ended.release(); // for whoever asks again
    }

private:
    struct Gates {
        QSemaphore begun, mayEnd, ended;
    };
    const std::shared_ptr<Gates> gates = std::make_shared<Gates>();
};

} // namespace

class StickSearchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anAnswerInTimeIsTaken_data();
    void anAnswerInTimeIsTaken();
    void aWalkThatThrowsHasFoundNothing();
    void aWalkThatHangsIsLeftBehindAtTheLimit();
    void aCancelEndsTheWait();
    void theLimitsAreThose();
    void aManifestIsReadWhole_data();
    void aManifestIsReadWhole();
};

void StickSearchTest::anAnswerInTimeIsTaken_data() {
    QTest::addColumn<bool>("withFlag");
    QTest::addColumn<int>("flag");
    QTest::newRow("without a flag") << false << 0;
    QTest::newRow("with one that is down") << true << 0;
    QTest::newRow("with one that is up already") << true << 1;
}

// Stands first, while nobody has been left behind in this process.
void StickSearchTest::anAnswerInTimeIsTaken() {
    QFETCH(bool, withFlag);
    QFETCH(int, flag);
    const CancelFlag cancel{flag};
    const StickSearch search = searchStick(onStick, forGood, withFlag ? &cancel : nullptr);
    QCOMPARE(search.manifest.path, onStick().path);
    QCOMPARE(search.manifest.text, onStick().text);
    QCOMPARE(search.manifest.hash, onStick().hash);
    QCOMPARE(search.manifest.error, QString());
    QVERIFY(!search.outOfTime);
    QVERIFY(!isStickSearchLeftBehind());
}

void StickSearchTest::aWalkThatThrowsHasFoundNothing() {
    const StickSearch search =
        searchStick([]() -> StickManifest { throw std::bad_alloc(); }, forGood, nullptr);
    QCOMPARE(search.manifest.path, QString());
    QVERIFY(!search.outOfTime);
    QVERIFY(!isStickSearchLeftBehind());
}

void StickSearchTest::aWalkThatHangsIsLeftBehindAtTheLimit() {
    const HangingWalk hanging;
    QElapsedTimer waited;
    waited.start();
    const StickSearch search = searchStick(hanging.walk(), 250, nullptr);
    QVERIFY2(waited.elapsed() >= 250, qPrintable(QString::number(waited.elapsed())));
    QVERIFY(!hanging.hasEnded());
    QVERIFY(search.outOfTime);
    QVERIFY(isStickSearchLeftBehind());
    hanging.letGo(); // the late answer has nowhere to go
    QCOMPARE(search.manifest.path, QString());
}

void StickSearchTest::aCancelEndsTheWait() {
    const HangingWalk hanging;
    CancelFlag cancel{0};
    std::thread user([&] {
        hanging.waitForStart();
        cancel = 1;
    });
    const StickSearch search = searchStick(hanging.walk(), forGood, &cancel);
    user.join();
    QVERIFY(!hanging.hasEnded());
    QCOMPARE(search.manifest.path, QString());
    QVERIFY(!search.outOfTime); // nothing to tell: the user knows
    QVERIFY(isStickSearchLeftBehind());
}

void StickSearchTest::theLimitsAreThose() {
    QCOMPARE(stickLimitMs, 5000);
    QVERIFY(stickPollMs <= 100); // of the 200 ms that a cancel may take
}

void StickSearchTest::aManifestIsReadWhole_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("a text") << QByteArray("{\"a\": \"\xE6\x96\x87\"}");
    QTest::newRow("no bytes") << QByteArray();
}

void StickSearchTest::aManifestIsReadWhole() {
    QFETCH(QByteArray, content);
    const support::ProjectFolder folder;
    const QString path = folder.write("manifest.json", content);
    const StickManifest manifest = readStickManifest(path);
    QCOMPARE(manifest.path, path);
    QCOMPARE(manifest.text, QString::fromUtf8(content));
    QCOMPARE(manifest.hash, content.isEmpty() ? QString() : fileSha256Hex(path));
    QCOMPARE(manifest.error, QString());
    QString error;
    QVERIFY(readTextFile(folder.path("none"), &error).isNull());
    QCOMPARE(readStickManifest(folder.path("none")).error, error);
    QCOMPARE(readStickManifest(QString()).error, QString()); // nothing is read
}

QUORVANE_TEST_MAIN(QCoreApplication, StickSearchTest)
#include "stick_search_test.moc"
