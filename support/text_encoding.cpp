#include "support/text_encoding.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace cvas
{
namespace
{

constexpr char32_t kReplacement = 0xFFFD;
constexpr bool kWide16 = sizeof(wchar_t) == 2;

bool IsHighSurrogate(char32_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}
bool IsLowSurrogate(char32_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}

// Writes the UTF-8 form of a code point (at most U+10FFFF) and returns its length.
std::size_t EncodeUtf8(char32_t c, char* out)
{
    if (c < 0x80)
    {
        out[0] = static_cast<char>(c);
        return 1;
    }
    if (c < 0x800)
    {
        out[0] = static_cast<char>(0xC0 | (c >> 6));
        out[1] = static_cast<char>(0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000)
    {
        out[0] = static_cast<char>(0xE0 | (c >> 12));
        out[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out[2] = static_cast<char>(0x80 | (c & 0x3F));
        return 3;
    }
    out[0] = static_cast<char>(0xF0 | (c >> 18));
    out[1] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out[2] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out[3] = static_cast<char>(0x80 | (c & 0x3F));
    return 4;
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

// Whether the bytes from p to the end could still become a well-formed
// sequence if more bytes followed.
bool IsCutOffSequence(const unsigned char* p, std::size_t left)
{
    const unsigned char b0 = p[0];
    const std::size_t length = b0 >= 0xF0 ? 4 : b0 >= 0xE0 ? 3 : 2;
    if (b0 < 0xC2 || b0 > 0xF4 || left >= length)
        return false;
    for (std::size_t i = 1; i < left; ++i)
    {
        if ((p[i] & 0xC0) != 0x80)
            return false;
    }
    return true;
}

// Widens the run of ASCII at the start of bytes[0, n), sixteen or eight
// bytes at a time, and returns its length; the end of a run shorter than
// eight bytes may be left to the caller. Sixteen bytes are written to out
// even when fewer of them are ASCII.
std::size_t WidenAscii(const unsigned char* bytes, std::size_t n, wchar_t* out)
{
    std::size_t i = 0;
#ifdef __SSE2__
    const __m128i zero = _mm_setzero_si128();
    for (; i + 16 <= n; i += 16)
    {
        const __m128i sixteen = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
        const int other = _mm_movemask_epi8(sixteen); // the bytes that are not ASCII
        const __m128i low = _mm_unpacklo_epi8(sixteen, zero);
        const __m128i high = _mm_unpackhi_epi8(sixteen, zero);
        auto* to = reinterpret_cast<__m128i*>(out + i);
        if constexpr (sizeof(wchar_t) == 2)
        {
            _mm_storeu_si128(to, low);
            _mm_storeu_si128(to + 1, high);
        }
        else
        {
            _mm_storeu_si128(to, _mm_unpacklo_epi16(low, zero));
            _mm_storeu_si128(to + 1, _mm_unpackhi_epi16(low, zero));
            _mm_storeu_si128(to + 2, _mm_unpacklo_epi16(high, zero));
            _mm_storeu_si128(to + 3, _mm_unpackhi_epi16(high, zero));
        }
        if (other != 0)
            return i + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(other)));
    }
#endif
    for (; i + 8 <= n; i += 8)
    {
        std::uint64_t word;
        std::memcpy(&word, bytes + i, 8);
        if (word & 0x8080808080808080ull)
            break;
        for (std::size_t k = 0; k < 8; ++k)
            out[i + k] = static_cast<wchar_t>(bytes[i + k]);
    }
    return i;
}

// Narrows the run of ASCII at the start of text[0, n), eight characters at a
// time with SSE2, and returns its length; the end of a run shorter than
// eight characters may be left to the caller. Eight bytes are written to
// out even when fewer of the characters are ASCII.
std::size_t NarrowAscii(const wchar_t* text, std::size_t n, char* out)
{
    std::size_t i = 0;
#ifdef __SSE2__
    const __m128i high = sizeof(wchar_t) == 2 ? _mm_set1_epi16(static_cast<short>(0xFF80))
                                              : _mm_set1_epi32(static_cast<int>(0xFFFFFF80));
    const __m128i zero = _mm_setzero_si128();
    for (; i + 8 <= n; i += 8)
    {
        const auto* from = reinterpret_cast<const __m128i*>(text + i);
        __m128i eight; // as 16-bit lanes
        __m128i ascii; // a 16-bit lane of ones for each ASCII character
        if constexpr (sizeof(wchar_t) == 2)
        {
            eight = _mm_loadu_si128(from);
            ascii = _mm_cmpeq_epi16(_mm_and_si128(eight, high), zero);
        }
        else
        {
            const __m128i first = _mm_loadu_si128(from);
            const __m128i second = _mm_loadu_si128(from + 1);
            eight = _mm_packs_epi32(first, second);
            ascii = _mm_packs_epi32(_mm_cmpeq_epi32(_mm_and_si128(first, high), zero),
                                    _mm_cmpeq_epi32(_mm_and_si128(second, high), zero));
        }
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(eight, eight));
        const auto other = static_cast<unsigned>(~_mm_movemask_epi8(ascii)) & 0xFFFFu;
        if (other != 0)
            return i + static_cast<std::size_t>(std::countr_zero(other)) / 2;
    }
#else
    (void)text, (void)n, (void)out; // the caller's loop does it all
#endif
    return i;
}

// Decodes bytes onto out through a small buffer that stays in cache. Unless
// final, a sequence cut off by the end of bytes is left for the next piece.
// Returns the number of bytes decoded.
std::size_t DecodeUtf8(std::string_view bytes, std::wstring& out, bool final)
{
    constexpr std::size_t kBlock = 4096;
    wchar_t buffer[kBlock + 2];
    out.reserve(out.size() + bytes.size());
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t n = bytes.size();
    std::size_t used = 0;
    std::size_t i = 0;
    while (i < n)
    {
        if (used >= kBlock)
        {
            out.append(buffer, used);
            used = 0;
        }
        const std::size_t ascii = WidenAscii(p + i, std::min(n - i, kBlock - used), buffer + used);
        used += ascii;
        i += ascii;
        if (i >= n || used >= kBlock)
            continue;
        if (p[i] < 0x80)
        {
            buffer[used++] = static_cast<wchar_t>(p[i++]);
            continue;
        }
        char32_t c = 0;
        const std::size_t length = DecodeMultiByte(p + i, n - i, c);
        if (length == 0)
        {
            if (!final && IsCutOffSequence(p + i, n - i))
                break;
            buffer[used++] = static_cast<wchar_t>(p[i++]);
            continue;
        }
        used += WriteCodePointAsWide(c, buffer + used);
        i += length;
    }
    out.append(buffer, used);
    return i;
}

} // namespace

std::size_t WriteCodePointAsWide(char32_t c, wchar_t* out)
{
    if (kWide16 && c >= 0x10000)
    {
        c -= 0x10000;
        out[0] = static_cast<wchar_t>(0xD800 + (c >> 10));
        out[1] = static_cast<wchar_t>(0xDC00 + (c & 0x3FF));
        return 2;
    }
    out[0] = static_cast<wchar_t>(c);
    return 1;
}

void AppendWideAsUtf8(std::wstring_view text, std::string& out)
{
    // Encodes through a small buffer that stays in cache and is appended in
    // one piece: much faster on long texts than growing out byte by byte.
    constexpr std::size_t kBlock = 4096;
    char buffer[kBlock + 4];
    out.reserve(out.size() + text.size());
    const std::size_t n = text.size();
    std::size_t used = 0;
    std::size_t i = 0;
    while (i < n)
    {
        if (used >= kBlock)
        {
            out.append(buffer, used);
            used = 0;
        }
        const std::size_t ascii =
            NarrowAscii(text.data() + i, std::min(n - i, kBlock - used), buffer + used);
        used += ascii;
        i += ascii;
        if (i >= n || used >= kBlock)
            continue;
        char32_t c = static_cast<char32_t>(text[i++]);
        if (c < 0x80)
        {
            buffer[used++] = static_cast<char>(c);
            continue;
        }
        if (IsHighSurrogate(c) && kWide16 && i < n &&
            IsLowSurrogate(static_cast<char32_t>(text[i])))
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[i]) - 0xDC00);
            ++i;
        }
        else if (IsHighSurrogate(c) || IsLowSurrogate(c) || c > 0x10FFFF)
        {
            c = kReplacement;
        }
        used += EncodeUtf8(c, buffer + used);
    }
    out.append(buffer, used);
}

std::string WideToUtf8(std::wstring_view text)
{
    std::string out;
    AppendWideAsUtf8(text, out);
    return out;
}

std::size_t AppendUtf8AsWidePartial(std::string_view bytes, std::wstring& out)
{
    return DecodeUtf8(bytes, out, false);
}

void AppendUtf8AsWide(std::string_view bytes, std::wstring& out)
{
    DecodeUtf8(bytes, out, true);
}

bool IsWellFormedUtf8(std::string_view bytes)
{
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t size = bytes.size();
    char32_t c = 0;
    for (std::size_t i = 0; i < size;)
    {
        if (p[i] < 0x80)
        {
            ++i;
            continue;
        }
        const std::size_t length = DecodeMultiByte(p + i, size - i, c);
        if (length == 0)
            return false;
        i += length;
    }
    return true;
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
