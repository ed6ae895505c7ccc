// The box that reports one thing to the user.
#pragma once

#include <QMessageBox>

// Shows `text` with one OK button over `parent` and returns when the user has closed the box. The
// text is never read as rich text, since paths and texts from servers stand in it; one of many
// lines can be scrolled. Runs a nested event loop: the caller's state may have moved on.
void showReport(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text);
