#include "window/box_buttons.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QPushButton>

// A context of their own: for the window "取消" is a word that it looks for in texts.
void nameButtons(QDialogButtonBox *buttons) {
    if (QPushButton *ok = buttons->button(QDialogButtonBox::Ok))
        ok->setText(QCoreApplication::translate("BoxButtons", "确定"));
    if (QPushButton *cancel = buttons->button(QDialogButtonBox::Cancel))
        cancel->setText(QCoreApplication::translate("BoxButtons", "取消"));
}
