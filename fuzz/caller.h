#pragma once

#include <string>

// The script caller.lua, put in at build time.
const std::string& nxFuzzCallerText();
