#pragma once

#include <string>

// The Lua file of this room.
const std::string& nxTrialCollectText();
