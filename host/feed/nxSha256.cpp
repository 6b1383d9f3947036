#include "host/feed/nxSha256.h"

#include <fmt/format.h>
#include <nettle/sha2.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

namespace {

class Digest
{
public:
    Digest() { sha256_init(&_context); }
    void Add(const char* data, std::size_t size)
    {
        sha256_update(&_context, size, reinterpret_cast<const unsigned char*>(data));
    }
    std::string Finish()
    {
        unsigned char bytes[SHA256_DIGEST_SIZE];
        sha256_digest(&_context, sizeof(bytes), bytes);
        std::string text;
        for (const unsigned char byte : bytes)
            text += fmt::format("{:02x}", byte);
        return text;
    }

private:
    sha256_ctx _context;
};

}  // namespace

std::string nxSha256::GetOfText(std::string_view text)
{
    Digest digest;
    digest.Add(text.data(), text.size());
    return digest.Finish();
}

std::optional<std::string> nxSha256::GetOfFile(const std::string& path)
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return std::nullopt;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (file == nullptr) throw std::system_error(errno, std::generic_category(), path);
    Digest digest;
    std::vector<char> block(1 << 16);
    while (const std::size_t size = std::fread(block.data(), 1, block.size(), file.get()))
        digest.Add(block.data(), size);
    if (std::ferror(file.get()) != 0) throw std::system_error(errno, std::generic_category(), path);
    return digest.Finish();
}
