#include "support/text_encoding.h"

#include <cstdint>

namespace cvas
{
namespace
{

constexpr char32_t kReplacement = 0xFFFD;
constexpr bool kWide16 = sizeof(wchar_t) == 2;

bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

void AppendCodePointAsUtf8(char32_t c, std::string& out)
{
    if (c < 0x80)
    {
        out.push_back(static_cast<char>(c));
    }
    else if (c < 0x800)
    {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
    else if (c < 0x10000)
    {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
    else
    {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

void AppendCodePointAsWide(char32_t c, std::wstring& out)
{
    if (kWide16 && c >= 0x10000)
    {
        c -= 0x10000;
        out.push_back(static_cast<wchar_t>(0xD800 + (c >> 10)));
        out.push_back(static_cast<wchar_t>(0xDC00 + (c & 0x3FF)));
    }
    else
    {
        out.push_back(static_cast<wchar_t>(c));
    }
}

// Decodes one well-formed UTF-8 sequence of two or more bytes starting at
// p[0]; returns its length, or 0 when the bytes there are not one.
std::size_t DecodeMultiByte(const unsigned char* p, std::size_t left, char32_t& c)
{
    const unsigned char b0 = p[0];
    std::size_t length;
    char32_t min;
    if (b0 >= 0xC2 && b0 <= 0xDF)
    {
        length = 2, c = b0 & 0x1F, min = 0x80;
    }
    else if (b0 >= 0xE0 && b0 <= 0xEF)
    {
        length = 3, c = b0 & 0x0F, min = 0x800;
    }
    else if (b0 >= 0xF0 && b0 <= 0xF4)
    {
        length = 4, c = b0 & 0x07, min = 0x10000;
    }
    else
    {
        return 0;
    }
    if (left < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i)
    {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        c = (c << 6) | (p[i] & 0x3F);
    }
    if (c < min || c > 0x10FFFF || IsHighSurrogate(c) || IsLowSurrogate(c))
        return 0;
    return length;
}

} // namespace

void AppendWideAsUtf8(std::wstring_view text, std::string& out)
{
    out.reserve(out.size() + text.size());
    const std::size_t n = text.size();
    for (std::size_t i = 0; i < n; ++i)
    {
        char32_t c = static_cast<char32_t>(text[i]);
        if (c < 0x80)
        {
            out.push_back(static_cast<char>(c));
            continue;
        }
        if (IsHighSurrogate(c) && kWide16 && i + 1 < n &&
            IsLowSurrogate(static_cast<char32_t>(text[i + 1])))
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[i + 1]) - 0xDC00);
            ++i;
        }
        else if (IsHighSurrogate(c) || IsLowSurrogate(c) || c > 0x10FFFF)
        {
            c = kReplacement;
        }
        AppendCodePointAsUtf8(c, out);
    }
}

std::string WideToUtf8(std::wstring_view text)
{
    std::string out;
    AppendWideAsUtf8(text, out);
    return out;
}

void AppendUtf8AsWide(std::string_view bytes, std::wstring& out)
{
    out.reserve(out.size() + bytes.size());
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t n = bytes.size();
    std::size_t i = 0;
    while (i < n)
    {
        if (p[i] < 0x80)
        {
            out.push_back(static_cast<wchar_t>(p[i]));
            ++i;
            continue;
        }
        char32_t c = 0;
        const std::size_t length = DecodeMultiByte(p + i, n - i, c);
        if (length == 0)
        {
            out.push_back(static_cast<wchar_t>(p[i]));
            ++i;
            continue;
        }
        AppendCodePointAsWide(c, out);
        i += length;
    }
}

std::wstring Utf8ToWide(std::string_view bytes)
{
    std::wstring out;
    AppendUtf8AsWide(bytes, out);
    return out;
}

std::string WideToUtf16Le(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size() * 2);
    auto put = [&out](char32_t unit) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>((unit >> 8) & 0xFF));
    };
    for (wchar_t w : text)
    {
        char32_t c = static_cast<char32_t>(w);
        if (!kWide16 && c >= 0x10000)
        {
            if (c > 0x10FFFF)
            {
                put(kReplacement);
                continue;
            }
            c -= 0x10000;
            put(0xD800 + (c >> 10));
            put(0xDC00 + (c & 0x3FF));
        }
        else
        {
            put(c);
        }
    }
    return out;
}

std::wstring Utf16LeToWide(std::string_view bytes)
{
    std::wstring out;
    const std::size_t units = bytes.size() / 2;
    out.reserve(units);
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    for (std::size_t i = 0; i < units; ++i)
    {
        char32_t c = p[2 * i] | (static_cast<char32_t>(p[2 * i + 1]) << 8);
        if (!kWide16 && (IsHighSurrogate(c) || IsLowSurrogate(c)))
        {
            if (IsHighSurrogate(c) && i + 1 < units)
            {
                const char32_t low = p[2 * i + 2] | (static_cast<char32_t>(p[2 * i + 3]) << 8);
                if (IsLowSurrogate(low))
                {
                    out.push_back(
                        static_cast<wchar_t>(0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00)));
                    ++i;
                    continue;
                }
            }
            c = kReplacement;
        }
        out.push_back(static_cast<wchar_t>(c));
    }
    return out;
}

std::wstring Latin1ToWide(std::string_view bytes)
{
    std::wstring out;
    out.reserve(bytes.size());
    for (char b : bytes)
        out.push_back(static_cast<wchar_t>(static_cast<unsigned char>(b)));
    return out;
}

std::string WideToLatin1(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size());
    for (wchar_t w : text)
    {
        const auto c = static_cast<std::uint32_t>(w);
        out.push_back(c <= 0xFF ? static_cast<char>(c) : '?');
    }
    return out;
}

} // namespace cvas
