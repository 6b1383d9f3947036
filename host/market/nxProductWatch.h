#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/market/nxFileWatch.h"
#include "host/market/nxProductDescription.h"

// Follows a file of products while a run goes on. Used on the run's thread.
class nxProductWatch
{
public:
    // The interval is real time, between looks at the file.
    nxProductWatch(const std::string& path, std::chrono::milliseconds interval) : _file(path, interval) {}

    // When the file was written anew: takes what may change during a run over into the products and gives
    // lines for the person who watches it, of what changed or why nothing did. False: the products are as
    // they were.
    [[nodiscard]] bool Look(nxProductDescriptions& products, std::vector<std::string>& lines);

private:
    nxFileWatch _file;
};
