#include "quorvanectl/manifest/manifest_attach.h"

#include "update/manifest_keys.h"
#include "update/manifest_signature.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTextCodec>

#include <algorithm>

namespace ctl {
namespace {

bool isBase64OrBlank(char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
           (byte >= '0' && byte <= '9') || byte == '+' || byte == '/' || byte == '=' ||
           byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

bool isText(const QByteArray &bytes) {
    const auto isControl = [](char byte) {
        return static_cast<unsigned char>(byte) < ' ' && byte != '\t' && byte != '\r' &&
               byte != '\n';
    };
    return std::none_of(bytes.begin(), bytes.end(), isControl) &&
           !QString::fromUtf8(bytes).contains(QChar::ReplacementCharacter);
}

} // namespace

QByteArray signatureIn(const QByteArray &fileContent) {
    // Some shells write all text in UTF-16. The bytes of a true signature may begin like its mark, but
    // do not go on as letters.
    const QTextCodec *const marked = QTextCodec::codecForUtfText(fileContent, nullptr);
    if (marked != nullptr) {
        const QByteArray text = marked->toUnicode(fileContent).toUtf8();
        if (std::all_of(text.begin(), text.end(), isBase64OrBlank))
            return decodeSignature(QString::fromLatin1(text));
    }
    // The bytes of a true signature are never all letters: it has hundreds of them.
    if (std::all_of(fileContent.begin(), fileContent.end(), isBase64OrBlank))
        return decodeSignature(QString::fromLatin1(fileContent));
    return isText(fileContent) ? QByteArray() : fileContent;
}

QString withSignature(const QString &manifestText, const QByteArray &signature) {
    const QJsonDocument document = QJsonDocument::fromJson(manifestText.toUtf8());
    if (!document.isObject())
        return QString();
    QJsonObject root = document.object();
    root.insert(manifest_keys::signature, QString::fromLatin1(signature.toBase64()));
    return QString::fromUtf8(QJsonDocument(root).toJson(QJsonDocument::Indented));
}

} // namespace ctl
