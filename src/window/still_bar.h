// A bar that moves as long as it does not know how far its work has come.
#pragma once

class QProgressBar;

// From now on the bar stands still where the user wants less motion. Its range stays what it is.
void moveOnlyIfWanted(QProgressBar *bar);
