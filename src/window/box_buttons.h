// The buttons of boxes and dialogs, in the language in force also where Qt's own translation is missing.
#pragma once

class QDialogButtonBox;

// Names the OK and the Cancel that a box of buttons has.
void nameButtons(QDialogButtonBox *buttons);
