// The bytes of a text file of unknown encoding.

#include "update/files/text_file.h"
#include "support.h"
#include "support/platform.h"

namespace {

QString readBytes(const QByteArray &bytes) {
    return readTextFile(fuzz::write(QStringLiteral("input"), bytes));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const QByteArray bytes = fuzz::bytesOf(data, size);
    const QString text = readBytes(bytes);
    fuzz::demand(!text.isNull());
    const QByteArray mark = QByteArrayLiteral("\xEF\xBB\xBF");
    const QByteArray content = bytes.startsWith(mark) ? bytes.mid(mark.size()) : bytes;
    const QString asUtf8 = QString::fromUtf8(content.constData(), content.size());
    // Valid UTF-8 is what it is; behind a mark the broken kind is as well.
    if (content.size() < bytes.size() || !asUtf8.contains(QChar::ReplacementCharacter))
        fuzz::demand(text == asUtf8);
    // What was read can be written and read again, with the line ends of the platform.
    const QString copy = fuzz::folder().filePath(QStringLiteral("copy"));
    fuzz::demand(writeTextFile(copy, text));
    if (!text.contains(QChar::ReplacementCharacter) && !text.startsWith(QChar(0xFEFF)))
        fuzz::demand(readTextFile(copy).toUtf8() == support::textLines(text.toUtf8()));
    return 0;
}
