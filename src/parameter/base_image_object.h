// The image counterpart of a parameter: so far nothing but the signal that the family shares.
#pragma once

#include <QObject>

class BaseImageObject : public QObject {
    Q_OBJECT

signals:
    void SendMessage(QString message);
};
