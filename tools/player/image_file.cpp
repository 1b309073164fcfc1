#include "tools/player/image_file.h"

#include <algorithm>
#include <array>

namespace cvas::player
{

namespace
{

void PutLittle(std::string& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

void PutBig(std::string& out, std::uint32_t value)
{
    for (int i = 3; i >= 0; --i)
        out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

std::uint32_t Crc32(const std::string& bytes, std::size_t from)
{
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> entries{};
        for (std::uint32_t n = 0; n < 256; ++n)
        {
            std::uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            entries[n] = c;
        }
        return entries;
    }();
    std::uint32_t crc = 0xFFFFFFFFu;
    for (std::size_t i = from; i < bytes.size(); ++i)
        crc = table[(crc ^ static_cast<unsigned char>(bytes[i])) & 0xFF] ^ (crc >> 8);
    return crc ^ 0xFFFFFFFFu;
}

void PutChunk(std::string& out, const char* type, const std::string& data)
{
    PutBig(out, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = out.size();
    out += type;
    out += data;
    PutBig(out, Crc32(out, start));
}

// A zlib stream of stored (uncompressed) deflate blocks.
std::string StoredZlib(const std::string& raw)
{
    std::string out("\x78\x01", 2);
    constexpr std::size_t kBlock = 65535;
    std::size_t at = 0;
    do
    {
        const std::size_t length = std::min(kBlock, raw.size() - at);
        out += static_cast<char>(at + length == raw.size() ? 1 : 0);
        PutLittle(out, static_cast<std::uint32_t>(length), 2);
        PutLittle(out, static_cast<std::uint32_t>(~length & 0xFFFF), 2);
        out.append(raw, at, length);
        at += length;
    } while (at < raw.size());
    std::uint32_t a = 1, b = 0;
    for (const char c : raw)
    {
        a = (a + static_cast<unsigned char>(c)) % 65521;
        b = (b + a) % 65521;
    }
    PutBig(out, (b << 16) | a);
    return out;
}

} // namespace

std::string BmpBytes(const CPicture& picture)
{
    const std::uint32_t rowBytes = (static_cast<std::uint32_t>(picture.width) * 3 + 3) & ~3u;
    const std::uint32_t imageBytes = rowBytes * static_cast<std::uint32_t>(picture.height);
    std::string out = "BM";
    PutLittle(out, 54 + imageBytes, 4);
    PutLittle(out, 0, 4);
    PutLittle(out, 54, 4);
    PutLittle(out, 40, 4);
    PutLittle(out, static_cast<std::uint32_t>(picture.width), 4);
    PutLittle(out, static_cast<std::uint32_t>(picture.height), 4); // rows from the bottom
    PutLittle(out, 1, 2);
    PutLittle(out, 24, 2);
    PutLittle(out, 0, 4);
    PutLittle(out, imageBytes, 4);
    PutLittle(out, 2835, 4); // 72 dots per inch
    PutLittle(out, 2835, 4);
    PutLittle(out, 0, 4);
    PutLittle(out, 0, 4);
    for (int y = picture.height - 1; y >= 0; --y)
    {
        const std::size_t start = out.size();
        for (int x = 0; x < picture.width; ++x)
            PutLittle(out, picture.pixels[static_cast<std::size_t>(y * picture.width + x)], 3);
        out.append(rowBytes - (out.size() - start), '\0');
    }
    return out;
}

std::string PngBytes(const CPicture& picture)
{
    std::string out("\x89PNG\r\n\x1A\n", 8);
    std::string header;
    PutBig(header, static_cast<std::uint32_t>(picture.width));
    PutBig(header, static_cast<std::uint32_t>(picture.height));
    header += std::string("\x08\x02\x00\x00\x00", 5); // 8 bits, RGB, no interlace
    PutChunk(out, "IHDR", header);
    std::string raw;
    raw.reserve(static_cast<std::size_t>(picture.height) * (1 + 3 * picture.width));
    for (int y = 0; y < picture.height; ++y)
    {
        raw += '\0'; // no filter
        for (int x = 0; x < picture.width; ++x)
        {
            const std::uint32_t pixel =
                picture.pixels[static_cast<std::size_t>(y * picture.width + x)];
            raw += static_cast<char>((pixel >> 16) & 0xFF);
            raw += static_cast<char>((pixel >> 8) & 0xFF);
            raw += static_cast<char>(pixel & 0xFF);
        }
    }
    PutChunk(out, "IDAT", StoredZlib(raw));
    PutChunk(out, "IEND", {});
    return out;
}

} // namespace cvas::player
