#include "quorvanectl/package/version_in_text.h"

#include "quorvanectl/files/json_places.h"
#include "update/files/text_file.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTextCodec>

namespace ctl {
namespace {

QJsonObject objectIn(const QByteArray &file) {
    return QJsonDocument::fromJson(decodeText(file).toUtf8()).object();
}

// Where the place lies in the text.
int offsetOf(const TextPlace &place, const QString &text) {
    int start = 0;
    for (int line = 1; line < place.line; ++line)
        start = text.indexOf(QLatin1Char('\n'), start) + 1;
    return start + place.column - 1;
}

// Behind the value that begins there, a text, a number or a word; -1 for any other.
int endOfScalar(const QString &text, int start) {
    const QChar first = text.at(start);
    if (first == QLatin1Char('{') || first == QLatin1Char('['))
        return -1;
    int end = start + 1;
    if (first == QLatin1Char('"')) {
        for (; text.at(end) != QLatin1Char('"'); ++end)
            end += text.at(end) == QLatin1Char('\\') ? 1 : 0;
        return end + 1;
    }
    while (!QStringLiteral(",}] \t\r\n").contains(text.at(end)))
        ++end;
    return end;
}

QString quoted(const QString &version) {
    return QLatin1Char('"') + version + QLatin1Char('"');
}

// Null if there is no place for it.
QString changed(const QString &text, const QString &version) {
    const QJsonObject project =
        QJsonDocument::fromJson(text.toUtf8()).object().value(QStringLiteral("project")).toObject();
    if (project.isEmpty())
        return QString();
    const bool isSaid = project.contains(QStringLiteral("version"));
    const TextPlace place =
        placesInJson(text, {isSaid ? QStringLiteral("project.version") : QStringLiteral("project")})
            .constFirst();
    const int start = offsetOf(place, text);
    if (isSaid) {
        const int end = endOfScalar(text, start);
        return end < 0 ? QString() : text.left(start) + quoted(version) + text.mid(end);
    }
    int first = start + 1; // the member that comes first now, behind the blanks that all get
    while (text.at(first).isSpace())
        ++first;
    const QString blanks = text.mid(start + 1, first - start - 1);
    return text.left(start + 1) + blanks + QStringLiteral("\"version\": ") + quoted(version) +
           (blanks.isEmpty() ? QStringLiteral(", ") : QStringLiteral(",") + blanks) +
           text.mid(first);
}

// In the encoding that the bytes have; null if it does not give them back.
QByteArray encodedAs(const QByteArray &file, const QString &text) {
    const QByteArray mark = QByteArrayLiteral("\xEF\xBB\xBF");
    const QByteArray utf8 = text.toUtf8();
    if (file.startsWith(mark))
        return mark + utf8;
    if (!QString::fromUtf8(file).contains(QChar::ReplacementCharacter))
        return utf8;
    const QTextCodec *const gbk = QTextCodec::codecForName("GBK");
    return gbk == nullptr ? QByteArray() : gbk->fromUnicode(text);
}

} // namespace

QByteArray withVersion(const QByteArray &projectFile, const QString &version) {
    const QString text = decodeText(projectFile);
    if (jsonFault(text) || encodedAs(projectFile, text) != projectFile)
        return QByteArray();
    const QString made = changed(text, version);
    const QByteArray bytes = made.isNull() ? QByteArray() : encodedAs(projectFile, made);
    // A key that stands twice, or is written by its numbers, may have led to another place.
    QJsonObject expected = objectIn(projectFile);
    QJsonObject project = expected.value(QStringLiteral("project")).toObject();
    project.insert(QStringLiteral("version"), version);
    expected.insert(QStringLiteral("project"), project);
    return objectIn(bytes) == expected ? bytes : QByteArray();
}

} // namespace ctl
