// A text pane that any text may be put into.
#pragma once

class QPlainTextEdit;

// From now on the pane lays out no more than mostShown characters of a paragraph: that much of it is seen,
// while the pane's text, and what is copied of it, stay whole. Takes the place of the pane's document, so
// before a text is put in.
void boundLayout(QPlainTextEdit *pane);
