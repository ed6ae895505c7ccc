#include "parameter/base_parameter.h"

#include "parameter/reserved_words.h"

#include <QRegularExpression>
#include <QSet>

#include <new>
#include <stdexcept>
#include <utility>

namespace {

bool isReserved(const QString &name) {
    static const QSet<QString> words = [] {
        QSet<QString> set;
        for (const char *word : reservedWords)
            set.insert(QLatin1String(word));
        return set;
    }();
    return words.contains(name);
}

// False if memory cannot hold so many.
bool fill(std::vector<YsDate> &elements, const YsDate &value, qint32 number) {
    try {
        elements.assign(number > 0 ? std::size_t(number) : 0, value);
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    } catch (const std::length_error &) {
        return false;
    }
}

QString illegalNameMessage(const QString &name) {
    return QStringLiteral("创建参数:") + name + QStringLiteral(" 时,遇到了参数名非法问题。");
}

QString notCreatedMessage(const QString &name) {
    return QStringLiteral("修改参数:") + name + QStringLiteral(" 时,遇到了参数未创建问题。");
}

// The only one of the messages that ends without a full stop.
QString kindMessage(const QString &name) {
    return QStringLiteral("修改参数:") + name + QStringLiteral(" 时,遇到了参数格式不一致问题");
}

} // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): a copy is meant, everyWriteToAParameterRegisters

bool BaseParameter::ParaNameIsLegal(QString name) {
    // The dollar also matches before a final line feed, so a name may end in one.
    static const QRegularExpression form(QStringLiteral("^[a-zA-Z_][a-zA-Z0-9_]*$"));
    return form.match(name).hasMatch() && !isReserved(name);
}

void BaseParameter::ParaCreate(QString name, YsDate value) {
    if (isCreated()) {
        (void)ParaModify(name, value); // A refusal has been told by its message.
        return;
    }
    if (!ParaNameIsLegal(name)) {
        refuse(illegalNameMessage(name));
        return;
    }
    // The sentinel is a legal name: a variable created under it goes on counting as uncreated.
    m_name = name;
    m_values = {value};
}

void BaseParameter::ParaCreateArray(QString name, YsDate value, qint32 number) {
    if (isCreated()) {
        (void)ParaModifyElement(name, value, number); // As above.
        return;
    }
    if (!ParaNameIsLegal(name)) {
        refuse(illegalNameMessage(name));
        return;
    }
    std::vector<YsDate> elements;
    if (!fill(elements, value, number)) {
        refuse(limitMessage(name, number));
        return;
    }
    m_arraySize = number;
    m_name = name;
    m_values = std::move(elements);
}

bool BaseParameter::ParaModify(QString name, YsDate value) {
    if (!isCreated())
        return refuse(notCreatedMessage(name));
    // An array of no elements holds no kind that could differ. Of the others the first element
    // speaks for all, and what was an array is left with one element.
    if (!m_values.empty() && m_values.front().kind != value.kind)
        return refuse(kindMessage(name));
    m_values = {value};
    return false;
}

bool BaseParameter::ParaModifyElement(QString name, YsDate value, qint32 index) {
    if (!isCreated())
        return refuse(notCreatedMessage(name));
    if (index < 0 || std::size_t(index) >= m_values.size())
        return refuse(limitMessage(name, index));
    YsDate &element = m_values[std::size_t(index)];
    if (element.kind != value.kind)
        return refuse(kindMessage(name));
    element = value;
    return false;
}

// NOLINTEND(performance-unnecessary-value-param)

bool BaseParameter::isCreated() const {
    return m_name != QLatin1String("m_m_nullname");
}

// Always true, so that a modification can return its refusal in one line.
bool BaseParameter::refuse(const QString &message) {
    Q_EMIT SendMessage(message);
    return true;
}

// The limit is that of the creation, which may differ from the number of elements by now. It is
// reckoned in 64 bits: a size below zero is kept as given, down to the least number.
QString BaseParameter::limitMessage(const QString &name, qint32 index) const {
    return QStringLiteral("修改参数:") + name + QLatin1Char('[') + QString::number(index) +
           QStringLiteral("] 时,遇到了数组长度超限(") + QString::number(qint64(m_arraySize) - 1) +
           QStringLiteral(")问题。");
}
