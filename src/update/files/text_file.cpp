#include "update/files/text_file.h"

#include "frame/pipe_or_device.h"
#include "update/files/failure.h"
#include "update/files/memory_guard.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextCodec>
#include <QTextStream>

#include <cerrno>

namespace {

constexpr int hashPiece = 1048576; // bytes

// What is missing, and a folder, the file itself refuses.
bool openFile(QFile &file, QIODevice::OpenMode mode, QString *error) {
    if (isPipeOrDevice(file.fileName()))
        return fail(QStringLiteral("not a regular file"), error);
    return file.open(mode) || fail(file.errorString(), error);
}

// Given the size, the decoder neither stops at a NUL nor makes a null text of no bytes.
QString fromUtf8(const QByteArray &bytes, int from) {
    return QString::fromUtf8(bytes.constData() + from, bytes.size() - from);
}

// Null for more bytes than one array holds, which Qt reads as none.
QString readOpenFile(QFile &file) {
    const QByteArray bytes = file.readAll();
    return bytes.isEmpty() && file.size() > 0 ? QString() : decodeText(bytes);
}

} // namespace

QString decodeText(const QByteArray &bytes) {
    const QByteArray mark = QByteArrayLiteral("\xEF\xBB\xBF");
    if (bytes.startsWith(mark))
        return fromUtf8(bytes, mark.size()); // stands even if the rest is broken
    const QString text = fromUtf8(bytes, 0);
    // A replacement character that the file really holds is taken for a broken byte too.
    if (!text.contains(QChar::ReplacementCharacter))
        return text;
    QTextCodec *const gbk = QTextCodec::codecForName("GBK");
    return gbk == nullptr ? text : gbk->toUnicode(bytes);
}

QString readTextFile(const QString &path, QString *error) {
    QFile file(path);
    if (!openFile(file, QIODevice::ReadOnly, error))
        return QString();
    const QString text = unlessOutOfMemory([&] { return readOpenFile(file); }, QString());
    if (text.isNull()) {
        const bool told = file.error() != QFileDevice::NoError;
        fail(told ? file.errorString() : qt_error_string(ENOMEM), error);
    }
    return text;
}

bool writeTextFile(const QString &path, const QString &text, QString *error) {
    if (!ensureParentDir(path, error))
        return false;
    QFile file(path);
    if (!openFile(file, QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text, error))
        return false;
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << text;
    return true;
}

bool ensureParentDir(const QString &filePath, QString *error) {
    const QString folder = QFileInfo(filePath).absolutePath();
    if (folder.isEmpty() || QDir().mkpath(folder))
        return true;
    return fail(QStringLiteral("unable to create directory: %1").arg(folder), error);
}

QString fileSha256Hex(const QString &path, QString *error, bool (*isStopped)()) {
    QFile file(path);
    if (!openFile(file, QIODevice::ReadOnly, error))
        return QString();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QByteArray piece(hashPiece, Qt::Uninitialized);
    qint64 got = 0;
    while ((got = file.read(piece.data(), piece.size())) > 0) {
        if (isStopped != nullptr && isStopped()) {
            fail(QStringLiteral("interrupted"), error);
            return QString();
        }
        hash.addData(piece.constData(), int(got));
    }
    if (got < 0) {
        fail(file.errorString(), error);
        return QString();
    }
    return QString::fromLatin1(hash.result().toHex());
}
