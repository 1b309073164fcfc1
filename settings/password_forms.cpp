#include "settings/password_forms.h"

#include "support/text_encoding.h"

#include <cstdint>

namespace cvas
{
namespace
{

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kMaxDecodedPasswordBytes = 8190;

int Base64Value(wchar_t c)
{
    if (c >= L'A' && c <= L'Z')
        return c - L'A';
    if (c >= L'a' && c <= L'z')
        return c - L'a' + 26;
    if (c >= L'0' && c <= L'9')
        return c - L'0' + 52;
    if (c == L'+')
        return 62;
    if (c == L'/')
        return 63;
    return -1;
}

int HexValue(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

// The legacy "=" form: each pair of hex digits is one character code.
// Decoding stops at the first pair that is not hex.
std::wstring DecodeHexPassword(std::wstring_view hex)
{
    std::wstring out;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    {
        const int high = HexValue(hex[i]);
        const int low = HexValue(hex[i + 1]);
        if (high < 0 || low < 0)
            break;
        out.push_back(static_cast<wchar_t>(high * 16 + low));
    }
    return out;
}

} // namespace

std::string EncodeBase64Lines(std::string_view bytes)
{
    std::string out = "\r\n";
    std::size_t lineLength = 0;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t n = bytes.size();
    for (std::size_t i = 0; i < n; i += 3)
    {
        const std::size_t left = n - i;
        const std::uint32_t group = (static_cast<std::uint32_t>(p[i]) << 16) |
                                    (left > 1 ? static_cast<std::uint32_t>(p[i + 1]) << 8 : 0) |
                                    (left > 2 ? static_cast<std::uint32_t>(p[i + 2]) : 0);
        out.push_back(kAlphabet[(group >> 18) & 0x3F]);
        out.push_back(kAlphabet[(group >> 12) & 0x3F]);
        out.push_back(left > 1 ? kAlphabet[(group >> 6) & 0x3F] : '=');
        out.push_back(left > 2 ? kAlphabet[group & 0x3F] : '=');
        lineLength += 4;
        const bool padded = left < 3;
        if (lineLength == 64 || padded)
        {
            out += "\r\n";
            lineLength = 0;
        }
    }
    return out;
}

std::string DecodeBase64(std::string_view text, std::size_t maxBytes)
{
    std::string out;
    std::uint32_t bits = 0;
    int bitCount = 0;
    for (char ch : text)
    {
        if (ch == '=')
            break;
        const int value = Base64Value(static_cast<unsigned char>(ch));
        if (value < 0)
            continue;
        bits = (bits << 6) | static_cast<std::uint32_t>(value);
        bitCount += 6;
        if (bitCount >= 8)
        {
            bitCount -= 8;
            if (out.size() == maxBytes)
                break;
            out.push_back(static_cast<char>((bits >> bitCount) & 0xFF));
        }
    }
    return out;
}

std::wstring EncodePassword(std::wstring_view password)
{
    if (password.empty())
        return {};
    const std::string lines = EncodeBase64Lines(WideToUtf16Le(password));
    return L"!" + Latin1ToWide(std::string_view(lines).substr(2));
}

std::wstring EncodePasswordForSettingsFile(std::wstring_view password)
{
    const std::wstring stored = EncodePassword(password);
    std::wstring oneLine;
    oneLine.reserve(stored.size());
    for (std::size_t i = 0; i < stored.size(); ++i)
    {
        const bool innerBreak = stored.compare(i, 2, L"\r\n") == 0 && i + 2 < stored.size();
        if (innerBreak)
            ++i;
        else
            oneLine.push_back(stored[i]);
    }
    return oneLine;
}

std::wstring DecodePassword(std::wstring_view stored)
{
    if (stored.empty())
        return {};
    if (stored[0] == L'!')
    {
        // Only base64 characters matter; anything else is skipped.
        std::string bytes = DecodeBase64(WideToLatin1(stored.substr(1)), kMaxDecodedPasswordBytes);
        // An odd last byte pairs with the terminating zero, as a C string of
        // wide characters would read it; the text ends at the first zero unit.
        bytes.append(2, '\0');
        std::wstring text = Utf16LeToWide(bytes);
        return text.substr(0, text.find(L'\0'));
    }
    if (stored[0] == L'=')
        return DecodeHexPassword(stored.substr(1));
    return std::wstring(stored);
}

} // namespace cvas
