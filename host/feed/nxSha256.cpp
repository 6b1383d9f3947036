#include "host/feed/nxSha256.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>
#include <vector>

namespace {

class Digest
{
public:
    Digest() : _context(EVP_MD_CTX_new(), EVP_MD_CTX_free)
    {
        _Check(_context != nullptr && EVP_DigestInit_ex(_context.get(), EVP_sha256(), nullptr) == 1);
    }

    void Add(const char* data, std::size_t size)
    {
        _Check(EVP_DigestUpdate(_context.get(), data, size) == 1);
    }
    std::string Finish()
    {
        unsigned char bytes[EVP_MAX_MD_SIZE];
        unsigned int size = 0;
        _Check(EVP_DigestFinal_ex(_context.get(), bytes, &size) == 1);
        std::string text;
        for (unsigned int i = 0; i < size; ++i)
            text += fmt::format("{:02x}", bytes[i]);
        return text;
    }

private:
    // All that it lacks ever is memory.
    static void _Check(bool succeeded)
    {
        if (!succeeded) throw std::bad_alloc();
    }

    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> _context;
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
