#include "update/files/zip_names.h"

#include <QTextCodec>

#include <algorithm>

namespace {

// Reads a mark of byte order as the character that it is.
QString fromUtf8(const QByteArray &bytes, bool *isUtf8) {
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    *isUtf8 = state.invalidChars == 0 && state.remainingChars == 0;
    return text;
}

} // namespace

QString unsafeNameMark() {
    return QStringLiteral("unsafe zip entry");
}

bool hasControlCharacter(const QString &name) {
    return std::any_of(name.begin(), name.end(), [](QChar character) {
        return character.unicode() < 0x20 || character.unicode() == 0x7F;
    });
}

bool isUtf8Name(const QByteArray &bytes) {
    bool isUtf8 = false;
    (void)fromUtf8(bytes, &isUtf8);
    return isUtf8;
}

QString decodedZipName(const QByteArray &bytes) {
    bool isUtf8 = false;
    QString text = fromUtf8(bytes, &isUtf8);
    QTextCodec *const gbk = QTextCodec::codecForName("GBK");
    if (!isUtf8 && gbk != nullptr)
        text = gbk->toUnicode(bytes);
    return text.replace(QLatin1Char('\\'), QLatin1Char('/'));
}
