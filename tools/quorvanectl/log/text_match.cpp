#include "quorvanectl/log/text_match.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace ctl {
namespace {

using Views = std::vector<std::string_view>;

// A text, cut at its places.
struct Pattern {
    const KnownLine *line = nullptr;
    TableKind table = TableKind::LogLines;
    bool isEnglish = false;
    bool hasFurtherLines = false;
    std::string_view start;               // before the first place
    std::vector<int> places;              // their numbers
    std::vector<std::string_view> pieces; // behind each of them
};

// The row is the first of several lines, whatever they are.
bool hasFurtherLines(LineKind kind) {
    return kind == LineKind::Offer || kind == LineKind::UpdateDone;
}

Pattern makePattern(const KnownTable &table, const KnownLine &line, bool english) {
    Pattern pattern{&line, table.kind, english, hasFurtherLines(line.kind), {}, {}, {}};
    std::string_view rest = english ? line.english : line.text;
    pattern.start = rest.substr(0, rest.find('%'));
    rest.remove_prefix(pattern.start.size());
    while (!rest.empty()) {
        pattern.places.push_back(rest[1] - '0');
        rest.remove_prefix(2);
        pattern.pieces.push_back(rest.substr(0, rest.find('%')));
        rest.remove_prefix(pattern.pieces.back().size());
    }
    return pattern;
}

// Patterns by their first byte; those that begin with a place stand behind all others.
struct Patterns {
    std::array<std::vector<Pattern>, 256> closed;
    std::vector<Pattern> open;

    void add(Pattern pattern) {
        const std::string_view start = pattern.start;
        auto &list = start.empty() ? open : closed.at(static_cast<unsigned char>(start.front()));
        list.push_back(std::move(pattern));
    }
};

bool isOfMessages(TableKind kind) {
    return kind == TableKind::LogLines || kind == TableKind::LoggedTexts;
}

Patterns patternsOf(bool messages) {
    Patterns patterns;
    for (const KnownTable &table : knownTables()) {
        if (messages && !isOfMessages(table.kind))
            continue;
        for (const KnownLine &line : table) {
            if (line.kind == LineKind::Described ||
                (!messages && table.kind == TableKind::LogLines))
                continue;
            patterns.add(makePattern(table, line, false));
            if (*line.english != '\0')
                patterns.add(makePattern(table, line, true));
        }
    }
    return patterns;
}

// Its last byte first: what a log's lines begin with is often alike for a while.
inline bool startsWith(std::string_view text, std::string_view start) {
    return start.empty() ||
           (text.size() >= start.size() && text[start.size() - 1] == start.back() &&
            text.compare(0, start.size(), start) == 0);
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

// Two places without a piece between them are a number and what may follow it.
size_t endOfNumber(std::string_view text) {
    size_t end = 0;
    while (end < text.size() && (text[end] == '-' || (text[end] >= '0' && text[end] <= '9')))
        ++end;
    return end;
}

// Whether `text` is what may stand behind the pattern's start.
bool restFits(const Pattern &pattern, std::string_view text, bool isCut, Views *filled) {
    if (pattern.hasFurtherLines)
        text = text.substr(0, text.find('\n'));
    if (pattern.places.empty())
        return text.empty();
    const auto &pieces = pattern.pieces;
    const bool mayEnd = isCut && !pattern.start.empty();
    for (size_t i = 0; i + 1 < pieces.size(); ++i) {
        size_t at = pieces[i].empty() ? endOfNumber(text) : text.find(pieces[i]);
        if (at == text.npos && !mayEnd)
            return false;
        at = std::min(at, text.size());
        if (filled != nullptr)
            filled->push_back(text.substr(0, at));
        text.remove_prefix(std::min(at + pieces[i].size(), text.size()));
    }
    const bool ends = endsWith(text, pieces.back());
    if (filled != nullptr)
        filled->push_back(text.substr(0, text.size() - (ends ? pieces.back().size() : 0)));
    return ends || mayEnd;
}

const Pattern *findIn(const std::vector<Pattern> &patterns, std::string_view text, bool isCut) {
    for (const Pattern &pattern : patterns) {
        if (startsWith(text, pattern.start) &&
            restFits(pattern, text.substr(pattern.start.size()), isCut, nullptr))
            return &pattern;
    }
    return nullptr;
}

const Pattern *find(const Patterns &patterns, std::string_view text, bool isCut) {
    if (text.empty())
        return nullptr;
    const auto &closed = patterns.closed[static_cast<unsigned char>(text.front())];
    const Pattern *const found = findIn(closed, text, isCut);
    return found != nullptr ? found : findIn(patterns.open, text, isCut);
}

const Patterns &messagePatterns() {
    static const Patterns patterns = patternsOf(true);
    return patterns;
}

// A failed update names its class first.
std::string_view withoutClass(std::string_view message) {
    if (message.empty() || message.front() != '[')
        return message;
    for (const std::string_view name : {"[cancelled] ", "[verify] ", "[network] ", "[hash] "}) {
        if (startsWith(message, name))
            return message.substr(name.size());
    }
    return message;
}

// "[Error] scripts[0].path: " stands before a finding's text.
std::vector<std::string_view> withoutPlaces(std::string_view text) {
    std::vector<std::string_view> candidates{text};
    for (const std::string_view severity : {"[Error] ", "[Warning] "}) {
        if (!startsWith(text, severity))
            continue;
        candidates.push_back(text.substr(severity.size()));
        const size_t colon = text.find(": ");
        if (colon != text.npos)
            candidates.push_back(text.substr(colon + 2));
    }
    return candidates;
}

KnownText textOf(const Pattern *pattern, std::string_view text, bool isCut) {
    KnownText known;
    if (pattern == nullptr)
        return known;
    known.line = pattern->line;
    known.table = pattern->table;
    known.isEnglish = pattern->isEnglish;
    Views filled;
    text.remove_prefix(pattern->start.size());
    (void)restFits(*pattern, text, isCut, &filled); // it was found because it fits
    for (size_t i = 0; i < filled.size(); ++i) {
        const int place = pattern->places[i];
        while (known.filled.size() < place)
            known.filled.append(QString());
        known.filled[place - 1] = QString::fromUtf8(filled[i].data(), int(filled[i].size()));
    }
    return known;
}

} // namespace

const KnownLine *kindOfMessage(std::string_view message, bool isCut) {
    const Pattern *pattern = find(messagePatterns(), withoutClass(message), isCut);
    return pattern == nullptr ? nullptr : pattern->line;
}

KnownText knownMessage(const QString &message, bool isCut) {
    const QByteArray bytes = message.toUtf8();
    const std::string_view text = withoutClass({bytes.constData(), size_t(bytes.size())});
    return textOf(find(messagePatterns(), text, isCut), text, isCut);
}

KnownText knownReason(const QString &reason) {
    static const Patterns patterns = patternsOf(false);
    const QByteArray bytes = reason.toUtf8();
    for (const std::string_view text : withoutPlaces({bytes.constData(), size_t(bytes.size())})) {
        if (const Pattern *pattern = find(patterns, text, false))
            return textOf(pattern, text, false);
    }
    return {};
}

} // namespace ctl
