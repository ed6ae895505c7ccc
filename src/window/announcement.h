// Texts that a screen reader says by itself when they come.
#pragma once

class QLabel;

// From now on the label is an alert to screen readers, named by its text. Before anything asks for it.
void makeAlert(QLabel *label);

// Tells screen readers of the label's text now. Without a screen reader nothing happens.
void announce(QLabel *label);
