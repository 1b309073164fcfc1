#pragma once
// The MD5 message digest (RFC 1321). The password digest and the session
// response of the handshake are its lowercase hexadecimal form.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace cvas
{

class CMD5Checksum
{
public:
    using Digest = std::array<std::uint8_t, 16>;

    CMD5Checksum();
    void Update(const void* data, std::size_t length);
    void Update(std::string_view bytes) { Update(bytes.data(), bytes.size()); }
    // Ends the message; the object must not be updated afterwards.
    Digest Final();

    // The digest of the bytes as 32 lowercase hexadecimal digits.
    static std::string GetMD5(std::string_view bytes);
    static std::string ToHex(const Digest& digest);

private:
    void Transform(const std::uint8_t block[64]);

    std::array<std::uint32_t, 4> m_state;
    std::uint64_t m_bitCount = 0;
    std::array<std::uint8_t, 64> m_buffer{};
};

} // namespace cvas
