#include "scrobbler/queue/wire_escaping.h"

#include <algorithm>

namespace cvas
{

bool IsWireSafeByte(unsigned char byte)
{
    if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
        (byte >= '0' && byte <= '9'))
        return true;
    constexpr std::string_view kSafeMarks = "!$'()*,-.:;=@_~";
    return kSafeMarks.find(static_cast<char>(byte)) != std::string_view::npos;
}

CWireText EscapeForWire(std::string_view utf8, std::size_t maxBytes)
{
    constexpr char kHexDigits[] = "0123456789ABCDEF";
    CWireText wire;
    wire.bytes.reserve(std::min(utf8.size() * 3, maxBytes));
    // Where the character being escaped began, in the input and the output:
    // a character that does not fit is taken back whole.
    std::size_t characterStart = 0;
    std::size_t escapedStart = 0;
    for (std::size_t i = 0; i < utf8.size(); ++i)
    {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if ((byte & 0xC0) != 0x80)
        {
            characterStart = i;
            escapedStart = wire.bytes.size();
        }
        const bool safe = IsWireSafeByte(byte);
        if (wire.bytes.size() + (safe ? 1 : 3) > maxBytes)
        {
            wire.bytes.resize(escapedStart);
            wire.sourceUsed = characterStart;
            wire.cut = true;
            return wire;
        }
        if (safe)
        {
            wire.bytes.push_back(static_cast<char>(byte));
        }
        else
        {
            wire.bytes.push_back('%');
            wire.bytes.push_back(kHexDigits[byte >> 4]);
            wire.bytes.push_back(kHexDigits[byte & 0x0F]);
        }
    }
    wire.sourceUsed = utf8.size();
    return wire;
}

} // namespace cvas
