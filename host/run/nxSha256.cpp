#include "host/run/nxSha256.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <cstdio>
#include <memory>
#include <vector>

#include "host/run/nxRunFiles.h"

namespace {

class Digest
{
public:
    Digest() : _context(EVP_MD_CTX_new(), EVP_MD_CTX_free)
    {
        EVP_DigestInit_ex(_context.get(), EVP_sha256(), nullptr);
    }

    void Add(const char* data, std::size_t size) { EVP_DigestUpdate(_context.get(), data, size); }
    std::string Finish()
    {
        unsigned char bytes[EVP_MAX_MD_SIZE];
        unsigned int size = 0;
        EVP_DigestFinal_ex(_context.get(), bytes, &size);
        std::string text;
        for (unsigned int i = 0; i < size; ++i)
            text += fmt::format("{:02x}", bytes[i]);
        return text;
    }

private:
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
    if (!nxRunFiles::CanBeReadAgain(path)) return std::nullopt;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (file == nullptr) return std::nullopt;
    Digest digest;
    std::vector<char> block(1 << 16);
    while (const std::size_t size = std::fread(block.data(), 1, block.size(), file.get()))
        digest.Add(block.data(), size);
    return std::ferror(file.get()) != 0 ? std::nullopt : std::optional(digest.Finish());
}
