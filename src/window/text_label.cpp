#include "window/text_label.h"

#include "window/shown_part.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextDocument>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

namespace {

// Whether a font made for European scripts may lack some of the characters.
bool needsStandIn(const QString &text) {
    constexpr ushort firstBeyond = 0x0590; // where Latin, Greek and Cyrillic end
    return std::any_of(text.cbegin(), text.cend(), [&](QChar character) {
        const bool punctuation = character.unicode() >= 0x2000 && character.unicode() < 0x2070;
        return character.unicode() >= firstBeyond && !punctuation;
    });
}

// Where the lines of a paragraph begin; the last one of at most `limit` holds all that is left.
QVector<int> lineStarts(const QString &paragraph, const QFont &font, int width, int limit) {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(paragraph, font);
    layout.setTextOption(option);
    layout.beginLayout();
    QVector<int> starts;
    while (starts.size() < limit) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(width);
        starts.append(line.textStart());
    }
    layout.endLayout();
    if (starts.isEmpty())
        starts.append(0);
    return starts;
}

} // namespace

TextLabel::TextLabel(QWidget *parent)
    : QLabel(parent) {
    setTextFormat(Qt::PlainText);
}

void TextLabel::setMaximumLines(int lines) {
    if (lines == maximumLines)
        return;
    maximumLines = lines;
    updateGeometry();
    update();
}

void TextLabel::setElideMode(Qt::TextElideMode mode) {
    elideMode = mode;
    update();
}

bool TextLabel::isElided() const {
    if (lineLimit() == 0)
        return !text().isEmpty();
    return shown() != text() ||
           shownLines(contentsRect().size()) != lines(contentsRect().width(), lineLimit() + 1);
}

// All that the label measures and paints.
QString TextLabel::shown() const {
    return shownPart(text(), wordWrap() ? Qt::ElideRight : elideMode);
}

int TextLabel::lineLimit() const {
    return wordWrap() && text().isEmpty() ? 0
           : wordWrap()                   ? maximumLines
                                          : std::min(maximumLines, 1);
}

// Fonts that stand in for missing characters may be higher than the label's own font: for a text that
// needs one, a Chinese sample gives the height of both. A text without is not measured by it, since
// the first use of such a font reads a large file, which an English start can do without.
int TextLabel::lineHeight() const {
    static const QString sample = QStringLiteral("Ag状态");
    const QFontMetrics metrics = fontMetrics();
    if (!needsStandIn(shown()))
        return metrics.lineSpacing();
    return std::max(metrics.lineSpacing(),
                    metrics.boundingRect(QRect(), Qt::TextSingleLine, sample).height());
}

// Every pass of a layout asks for the same lines several times.
QVector<int> TextLabel::startsIn(const QString &paragraph, int width, int limit) const {
    constexpr int mostKept = 64;
    if (brokenFont != font() || broken.size() > mostKept)
        broken.clear();
    brokenFont = font();
    Breaks &breaks = broken[{paragraph, width}];
    if (breaks.limit < limit) {
        breaks.limit = limit + 1; // painting asks for one line more than measuring
        breaks.starts = lineStarts(paragraph, font(), width, breaks.limit);
    }
    return breaks.starts.mid(0, limit);
}

QStringList TextLabel::lines(int width, int limit) const {
    if (!wordWrap())
        return {shown().replace(QLatin1Char('\n'), QLatin1Char(' '))};
    QStringList all;
    const QStringList paragraphs = shown().split(QLatin1Char('\n'));
    for (int i = 0; i < paragraphs.size() && all.size() < limit; ++i) {
        const QString &paragraph = paragraphs.at(i);
        const QVector<int> starts = startsIn(paragraph, width, limit - all.size());
        for (int line = 0; line < starts.size(); ++line) {
            const int end = line + 1 < starts.size() ? starts.at(line + 1) : paragraph.size();
            all.append(paragraph.mid(starts.at(line), end - starts.at(line)));
        }
    }
    return all;
}

// What is painted: as many lines as the size holds, the last one cut where text is left over.
QStringList TextLabel::shownLines(const QSize &size) const {
    const int limit = std::max(1, std::min(lineLimit(), size.height() / lineHeight()));
    QStringList all = lines(size.width(), limit + 1);
    const bool more = all.size() > limit;
    while (all.size() > limit)
        all.removeLast();
    if (more)
        all.last() = fontMetrics().elidedText(all.last() + ellipsis, Qt::ElideRight, size.width());
    else if (!wordWrap())
        all.last() = fontMetrics().elidedText(all.last(), elideMode, size.width());
    return all;
}

QSize TextLabel::minimumSizeHint() const {
    const QMargins around = contentsMargins();
    return {around.left() + around.right() + fontMetrics().averageCharWidth() * 8,
            around.top() + around.bottom() + std::min(lineLimit(), 1) * lineHeight()};
}

QSize TextLabel::sizeHint() const {
    const QSize least = minimumSizeHint();
    if (wordWrap())
        return {least.width() * 4, heightForWidth(least.width() * 4)};
    const QMargins around = contentsMargins();
    const int whole = around.left() + fontMetrics().horizontalAdvance(shown()) + around.right();
    return {std::max(whole, least.width()), least.height()};
}

int TextLabel::heightForWidth(int width) const {
    if (!wordWrap())
        return -1;
    const QMargins around = contentsMargins();
    const int count = lines(width - around.left() - around.right(), lineLimit()).size();
    return around.top() + around.bottom() + count * lineHeight();
}

bool TextLabel::event(QEvent *event) {
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty())
        return QLabel::event(event);
    const QPoint place = static_cast<QHelpEvent *>(event)->globalPos();
    QToolTip::showText(place, isElided() ? plainToolTip(text()) : QString(), this);
    return true;
}

void TextLabel::paintEvent(QPaintEvent *) {
    const QRect area = contentsRect();
    const QStringList shown = shownLines(area.size());
    const int height = lineHeight();
    int top = area.top() + std::max(0, (area.height() - height * shown.size()) / 2);
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    for (const QString &line : shown) {
        painter.drawText(QRect(area.left(), top, area.width(), height),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, line);
        top += height;
    }
}

QString plainToolTip(const QString &text) {
    const QString part = shownPart(text);
    return Qt::mightBeRichText(part) ? Qt::convertFromPlainText(part) : part;
}
