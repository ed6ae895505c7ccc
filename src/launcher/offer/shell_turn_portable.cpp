#include "launcher/offer/shell_turn.h"

ShellTurn::ShellTurn() = default;
ShellTurn::~ShellTurn() = default;
