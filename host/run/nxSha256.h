#pragma once

#include <optional>
#include <string>
#include <string_view>

// SHA-256 in lower hexadecimal digits.
namespace nxSha256 {
std::string GetOfText(std::string_view text);
// As it lies on the disk. None for what can be read only once, or not at all.
std::optional<std::string> GetOfFile(const std::string& path);
}  // namespace nxSha256
