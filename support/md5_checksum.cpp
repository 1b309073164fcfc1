#include "support/md5_checksum.h"

#include <algorithm>
#include <cstring>

namespace cvas
{
namespace
{

constexpr std::uint32_t RotateLeft(std::uint32_t x, int n)
{
    return (x << n) | (x >> (32 - n));
}

// Per-step additive constants: floor(abs(sin(i + 1)) * 2^32).
constexpr std::uint32_t kSine[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr int kShift[64] = {7, 12, 17, 22, 7, 12, 17, 22, 7, 12, 17, 22, 7, 12, 17, 22,
                            5, 9,  14, 20, 5, 9,  14, 20, 5, 9,  14, 20, 5, 9,  14, 20,
                            4, 11, 16, 23, 4, 11, 16, 23, 4, 11, 16, 23, 4, 11, 16, 23,
                            6, 10, 15, 21, 6, 10, 15, 21, 6, 10, 15, 21, 6, 10, 15, 21};

} // namespace

CMD5Checksum::CMD5Checksum() : m_state{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476} {}

void CMD5Checksum::Transform(const std::uint8_t block[64])
{
    std::uint32_t x[16];
    for (int i = 0; i < 16; ++i)
    {
        x[i] = static_cast<std::uint32_t>(block[4 * i]) |
               (static_cast<std::uint32_t>(block[4 * i + 1]) << 8) |
               (static_cast<std::uint32_t>(block[4 * i + 2]) << 16) |
               (static_cast<std::uint32_t>(block[4 * i + 3]) << 24);
    }
    std::uint32_t a = m_state[0], b = m_state[1], c = m_state[2], d = m_state[3];
    for (int i = 0; i < 64; ++i)
    {
        std::uint32_t f;
        int g;
        if (i < 16)
            f = (b & c) | (~b & d), g = i;
        else if (i < 32)
            f = (d & b) | (~d & c), g = (5 * i + 1) % 16;
        else if (i < 48)
            f = b ^ c ^ d, g = (3 * i + 5) % 16;
        else
            f = c ^ (b | ~d), g = (7 * i) % 16;
        const std::uint32_t rotated = RotateLeft(a + f + kSine[i] + x[g], kShift[i]);
        a = d;
        d = c;
        c = b;
        b = b + rotated;
    }
    m_state[0] += a;
    m_state[1] += b;
    m_state[2] += c;
    m_state[3] += d;
}

void CMD5Checksum::Update(const void* data, std::size_t length)
{
    const auto* input = static_cast<const std::uint8_t*>(data);
    std::size_t used = static_cast<std::size_t>((m_bitCount / 8) % 64);
    m_bitCount += static_cast<std::uint64_t>(length) * 8;
    if (used != 0)
    {
        const std::size_t take = std::min(length, 64 - used);
        std::memcpy(m_buffer.data() + used, input, take);
        used += take;
        input += take;
        length -= take;
        if (used < 64)
            return;
        Transform(m_buffer.data());
    }
    for (; length >= 64; input += 64, length -= 64)
        Transform(input);
    if (length != 0)
        std::memcpy(m_buffer.data(), input, length);
}

CMD5Checksum::Digest CMD5Checksum::Final()
{
    const std::uint64_t bits = m_bitCount;
    std::uint8_t padding[72] = {0x80};
    const std::size_t used = static_cast<std::size_t>((bits / 8) % 64);
    const std::size_t padLength = used < 56 ? 56 - used : 120 - used;
    Update(padding, padLength);
    std::uint8_t lengthBytes[8];
    for (int i = 0; i < 8; ++i)
        lengthBytes[i] = static_cast<std::uint8_t>(bits >> (8 * i));
    Update(lengthBytes, 8);

    Digest digest;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            digest[4 * i + j] = static_cast<std::uint8_t>(m_state[i] >> (8 * j));
    return digest;
}

std::string CMD5Checksum::ToHex(const Digest& digest)
{
    static const char kHex[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(32);
    for (std::uint8_t byte : digest)
    {
        hex.push_back(kHex[byte >> 4]);
        hex.push_back(kHex[byte & 0x0F]);
    }
    return hex;
}

std::string CMD5Checksum::GetMD5(std::string_view bytes)
{
    CMD5Checksum md5;
    md5.Update(bytes);
    return ToHex(md5.Final());
}

} // namespace cvas
