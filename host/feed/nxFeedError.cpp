#include "host/feed/nxFeedError.h"

#include <fmt/format.h>

std::string nxFeedError::GetText() const
{
    if (line == 0) return fmt::format("{}: {}", file, reason);
    if (column == 0) return fmt::format("{}:{}: {}", file, line, reason);
    return fmt::format("{}:{}:{}: {}", file, line, column, reason);
}
