#include "script/recent_texts.h"

#include <algorithm>

namespace ast {
namespace {

constexpr std::size_t places = 1024;

} // namespace

QString RecentTexts::find(const QChar *units, int length, quint32 hash) {
    if (texts.empty())
        texts.resize(places);
    QString &text = texts[(hash ^ (hash >> 15)) % places];
    if (text.size() != length || !std::equal(text.cbegin(), text.cend(), units))
        text = QString(units, length);
    return text;
}

} // namespace ast
