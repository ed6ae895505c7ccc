#include "parameter/source_parameter.h"

#include <QDebug>
#include <QThread>

namespace {

// The name of a write, taken apart: "name" or "name[index]".
struct Target {
    QString plainName;
    bool isElement = false;
    bool isValid = true;
    qint32 index = 0;
};

QString plainNameOf(const QString &name) {
    return name.left(name.indexOf(QLatin1Char('['))); // All of it if there is no bracket.
}

// The index ends at the first bracket of either form or with the text, so "a[1", "a[1]b" and
// "a[1][2]" are all "a[1]".
Target parseTarget(const QString &name) {
    Target target;
    target.plainName = plainNameOf(name);
    target.isElement = target.plainName.size() < name.size();
    if (target.isElement) {
        const QString rest = name.mid(target.plainName.size() + 1);
        const QString index = plainNameOf(rest);
        target.index = index.left(index.indexOf(QLatin1Char(']'))).toInt(&target.isValid, 10);
    }
    return target;
}

} // namespace

SourceParameter::SourceParameter(bool threaded)
    : m_threaded(threaded) {
    if (threaded)
        startThread();
    connect(this, &SourceParameter::ParaWriteSigDate, this, &SourceParameter::ParaWriteSloDate,
            Qt::QueuedConnection);
    connect(this, &SourceParameter::ParaDeleteSigDate, this, &SourceParameter::ParaDeleteSloDate,
            Qt::QueuedConnection);
    connect(this, &SourceParameter::PrintThreadIDSignals, this,
            &SourceParameter::PrintThreadIDSlots);
}

void SourceParameter::startThread() {
    m_thread = new QThread;
    moveToThread(m_thread);
    m_thread->start();
    connect(m_thread, &QThread::finished, this, &QObject::deleteLater);
}

SourceParameter::~SourceParameter() {
    if (m_thread == nullptr)
        return;
    if (QThread::currentThread() == m_thread)
        leaveThread();
    else
        endThread();
}

// On another thread. The deletion that the thread's end asks for is cut off first: the store is
// being deleted already.
void SourceParameter::endThread() {
    disconnect(m_thread, &QThread::finished, this, &QObject::deleteLater);
    m_thread->quit();
    m_thread->wait();
    delete m_thread;
}

// On the store's own thread, which cannot wait for itself: the thread's object is deleted by the
// event loop of the thread that created the store. If this thread has finished but for its last
// steps, to which this deletion belongs, the deletion of its object waits for them.
void SourceParameter::leaveThread() {
    if (m_thread->isFinished()) {
        m_thread->deleteLater();
        return;
    }
    connect(m_thread, &QThread::finished, m_thread, &QObject::deleteLater);
    m_thread->quit();
}

void SourceParameter::PrintThreadIDSlots() {
    QMetaObject::invokeMethod(
        this,
        [] { qDebug() << "SourceParameter在新线程槽函数中的ID:" << QThread::currentThreadId(); },
        Qt::QueuedConnection);
}

void SourceParameter::ParaWriteSloDate(const QString &name, const YsDate &value) {
    const Target target = parseTarget(name);
    if (!target.isValid) {
        Q_EMIT SendMessage(QStringLiteral("写入变量：") + name +
                           QStringLiteral(" 时，参数名数组定位获取失败"));
        return;
    }
    const int position = m_names.indexOf(target.plainName);
    BaseParameter *parameter = position < 0 ? newParameter() : m_parameters.at(position);
    if (target.isElement)
        parameter->ParaCreateArray(target.plainName, value, target.index);
    else
        parameter->ParaCreate(target.plainName, value);
    // Also when the creation was refused: the name stays, every write tries again, a delete ends
    // it.
    if (position < 0) {
        m_parameters.append(parameter);
        m_names.append(target.plainName);
    }
}

void SourceParameter::ParaDeleteSloDate(const QString &name) {
    const int position = m_names.indexOf(plainNameOf(name));
    if (position < 0) {
        Q_EMIT SendMessage(QStringLiteral("删除变量：") + name + QStringLiteral(" 时，变量未创建"));
        return;
    }
    m_parameters.removeAt(position);
    m_names.removeAt(position);
}

BaseParameter *SourceParameter::newParameter() {
    auto *parameter = new BaseParameter;
    connect(parameter, &BaseParameter::SendMessage, this, &SourceParameter::SendMessage);
    return parameter;
}
