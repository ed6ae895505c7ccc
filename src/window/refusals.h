// Why items of a dialog are grey, for those who have no mouse to hover with.
#pragma once

#include <QList>

class QCheckBox;
class QLabel;

// The Tab key comes to `note` when there is a grey box with a tool tip: all their texts and reasons then
// show at it, and a screen reader reads them as its description.
void tellRefusalsByKeyboard(QLabel *note, const QList<QCheckBox *> &boxes);
