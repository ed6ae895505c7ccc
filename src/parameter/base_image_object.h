// The image counterpart of a parameter: so far nothing but the signal that the family shares.
#pragma once

#include <QObject>

class BaseImageObject : public QObject {
    Q_OBJECT

Q_SIGNALS:
    void SendMessage(QString message);
};
