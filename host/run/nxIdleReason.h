#pragma once

#include <string>

#include "host/feed/nxFeedProductTable.h"
#include "host/run/nxJobRunner.h"

// Why no event reached a script that has ended; empty where nothing is to be said. isEarly: it ended before
// the data.
[[nodiscard]] std::string nxGetIdleReason(nxJobRunner& runner, const nxFeedProductTable& products,
                                          bool isEarly);
