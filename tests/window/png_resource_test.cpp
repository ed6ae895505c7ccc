// The pictures that are compiled in: whole, and read without the image plug-ins.
#include "support/platform.h"
#include "support/staged_main.h"
#include "window/png_resource.h"
#include "window_scene.h"

#include <QApplication>
#include <QFile>

class PngResourceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theWindowLoadsNoImagePlugin(); // before anything else does
    void aPictureHasItsSize_data();
    void aPictureHasItsSize();
    void nothingIsReadFromElsewhere();
};

void PngResourceTest::theWindowLoadsNoImagePlugin() {
    if (support::onWindows)
        QSKIP("no list of what a process has loaded that could be read like a file");
    WindowScene scene;
    scene.window.show();
    QVERIFY(!scene.window.windowIcon().isNull());
    QFile maps("/proc/self/maps");
    QVERIFY(maps.open(QIODevice::ReadOnly));
    const QByteArray loaded = maps.readAll();
    QVERIFY(loaded.contains("libQt5Gui"));
    QVERIFY(!loaded.contains("/imageformats/"));
}

void PngResourceTest::aPictureHasItsSize_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<double>("ratio");
    for (const int size : {16, 32, 48, 64})
        QTest::newRow(qPrintable(QString("the program's icon of %1").arg(size)))
            << QString(":/quorvaner-%1.png").arg(size) << size << 1.0;
    for (const char *name : {"CH", "EN"}) {
        QTest::newRow(name) << QString(":/%1.png").arg(name) << 28 << 1.0;
        QTest::newRow(qPrintable(QString("%1 for a dense screen").arg(name)))
            << QString(":/%1@2x.png").arg(name) << 56 << 2.0;
    }
}

void PngResourceTest::aPictureHasItsSize() {
    QFETCH(QString, path);
    QFETCH(int, pixels);
    QFETCH(double, ratio);
    const QPixmap picture = pngResource(path);
    QCOMPARE(picture.size(), QSize(pixels, pixels));
    QCOMPARE(picture.devicePixelRatio(), ratio);
    QCOMPARE(picture.toImage(), QPixmap(path, "PNG").toImage());
}

void PngResourceTest::nothingIsReadFromElsewhere() {
    QVERIFY(pngResource(":/none.png").isNull());
}

QUORVANE_TEST_MAIN(QApplication, PngResourceTest)
#include "png_resource_test.moc"
