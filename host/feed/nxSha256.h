#pragma once

#include <optional>
#include <string>
#include <string_view>

// SHA-256 in lower hexadecimal digits.
namespace nxSha256 {
std::string GetOfText(std::string_view text);
// As it lies on the disk. None for what is missing or can be read only once; throws std::system_error where
// the file cannot be read.
std::optional<std::string> GetOfFile(const std::string& path);
}  // namespace nxSha256
