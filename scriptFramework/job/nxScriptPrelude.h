#pragma once

#include <string>

// The text of prelude.lua, put in at build time.
const std::string& nxScriptPreludeText();
