#include "window/bounded_pane.h"

#include "window/shown_part.h"

#include <QPlainTextDocumentLayout>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextOption>

namespace {

class BoundedLayout : public QPlainTextDocumentLayout {
public:
    BoundedLayout(QTextDocument *document, const QPlainTextEdit *shownIn)
        : QPlainTextDocumentLayout(document)
        , pane(shownIn) {}

    // Every reader of a paragraph's lines comes by here first.
    QRectF blockBoundingRect(const QTextBlock &block) const override {
        if (block.isValid() && block.length() > mostShown && block.layout()->lineCount() == 0)
            layOutBeginning(block);
        return QPlainTextDocumentLayout::blockBoundingRect(block);
    }

protected:
    // A change within one paragraph would be laid out at once, and whole. One that reaches beyond the end
    // of the document is only noted.
    void documentChanged(int from, int removed, int) override {
        QPlainTextDocumentLayout::documentChanged(from, removed, document()->characterCount() + 1);
    }

private:
    void layOutBeginning(QTextBlock block) const {
        QTextOption option = document()->defaultTextOption();
        // At words, the first line would be looked at as far as the end of a word of any length.
        option.setWrapMode(QTextOption::WrapAnywhere);
        const qreal margin = document()->documentMargin();
        const qreal width = qMax(qreal(1), pane->viewport()->width() - 2 * margin);
        QTextLayout *layout = block.layout();
        layout->setTextOption(option);
        layout->setCacheEnabled(true); // each painting would look through the whole paragraph anew
        layout->beginLayout();
        int end = 0;
        for (qreal top = 0; end < mostShown;) {
            QTextLine line = layout->createLine();
            if (!line.isValid())
                break;
            line.setLeadingIncluded(true);
            line.setLineWidth(width);
            line.setPosition(QPointF(margin, top));
            top += line.height();
            end = line.textStart() + line.textLength();
        }
        layout->endLayout();
        block.setLineCount(layout->lineCount());
    }

    const QPlainTextEdit *pane;
};

} // namespace

void boundLayout(QPlainTextEdit *pane) {
    auto *document = new QTextDocument(pane);
    document->setDefaultFont(pane->font());
    document->setDocumentLayout(new BoundedLayout(document, pane));
    pane->setDocument(document);
}
