// The image object has its one signal and nothing else, and the signal carries its text.
#include "parameter/base_image_object.h"

#include "parameter_support.h"
#include "support/staged_main.h"

class BaseImageObjectTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void hasTheOneSignal();
    void itsSignalCarriesTheText();
};

void BaseImageObjectTest::hasTheOneSignal() {
    QCOMPARE(support::ownMethods(BaseImageObject::staticMetaObject),
             QStringList("public signal void SendMessage(QString)"));
    QCOMPARE(BaseImageObject::staticMetaObject.superClass(), &QObject::staticMetaObject);
}

void BaseImageObjectTest::itsSignalCarriesTheText() {
    BaseImageObject image;
    QSignalSpy messages(&image, &BaseImageObject::SendMessage);
    Q_EMIT image.SendMessage(QStringLiteral("文"));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(0).toString(), QStringLiteral("文"));
}

QUORVANE_TEST_MAIN(QCoreApplication, BaseImageObjectTest)
#include "base_image_object_test.moc"
