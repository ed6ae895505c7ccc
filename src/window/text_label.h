// A label for text from outside: paths, status lines, findings, release notes.
//
// The text is always plain. However long it is, it asks for little room at least: a label of one line
// would like the width of its text, one with word wrap breaks its text anywhere and takes the height
// for its width up to a number of lines. What finds no room ends in an ellipsis, and the tool tip
// then holds more of it. Of a text beyond all measure only the shownPart() is measured and painted;
// text(), which a screen reader is told, is always the whole text.
#pragma once

#include <QFont>
#include <QHash>
#include <QLabel>
#include <QPair>
#include <QString>
#include <QVector>

class TextLabel : public QLabel {
public:
    explicit TextLabel(QWidget *parent);

    // How many lines a word-wrapped label may show. Without word wrap it is one line; at 0 either takes
    // no height at all, as a word-wrapped label without a text does.
    void setMaximumLines(int lines);
    // Where a label of one line is cut; at its end unless set.
    void setElideMode(Qt::TextElideMode mode);

    [[nodiscard]] bool isElided() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // Where the lines of a paragraph begin, as far as `limit` lines.
    struct Breaks {
        QVector<int> starts;
        int limit = 0;
    };

    [[nodiscard]] QString shown() const;
    [[nodiscard]] int lineLimit() const;
    [[nodiscard]] int lineHeight() const;
    [[nodiscard]] QVector<int> startsIn(const QString &paragraph, int width, int limit) const;
    [[nodiscard]] QStringList lines(int width, int limit) const;
    [[nodiscard]] QStringList shownLines(const QSize &size) const;

    int maximumLines = 1000;
    Qt::TextElideMode elideMode = Qt::ElideRight;
    mutable QHash<QPair<QString, int>, Breaks> broken; // by paragraph and width
    mutable QFont brokenFont;
};

// The shownPart() of `text` as a tool tip that shows it letter by letter, also where it looks like rich
// text.
[[nodiscard]] QString plainToolTip(const QString &text);
