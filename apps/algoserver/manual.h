#pragma once

#include <string>

#include "apps/algoserver/commandTree.h"

// The manual page of one command, for man(1): roff with the macros of man(7).
std::string MakeManualPage(const CommandTree& command);
