#pragma once

#include <string>

// What a script may name, as statements of a Lua text over two tables: `checker.bound`, written out of the
// tables of the bound classes, and `environment`, which a job on the real engine found out about its globals.
// Made anew on each call; empty when that job failed.
std::string nxScriptNamesText();
