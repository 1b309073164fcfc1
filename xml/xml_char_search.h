#pragma once
// Finding characters in wide text eight at a time: with SSE2 where the
// compiler offers it (every x86-64 target), eight characters are looked at
// as 16-bit lanes of one register. Where wchar_t is 32 bits, two loads are
// packed into one with signed saturation, which keeps every character below
// U+7FFF as it is and turns the others into 0x7FFF or 0x8000; the characters
// looked for are all ASCII, so what matches is the same. Elsewhere, and for
// texts of fewer than eight characters, the plain loops do the work.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#define CVAS_XML_SSE2 1
#endif

namespace cvas
{

#ifdef CVAS_XML_SSE2
namespace xml_sse2
{

constexpr std::ptrdiff_t kStep = 8;

inline __m128i LoadEight(const wchar_t* p)
{
    const auto* at = reinterpret_cast<const __m128i*>(p);
    if constexpr (sizeof(wchar_t) == 2)
        return _mm_loadu_si128(at);
    else
        return _mm_packs_epi32(_mm_loadu_si128(at), _mm_loadu_si128(at + 1));
}

inline __m128i Splat(wchar_t c)
{
    return _mm_set1_epi16(static_cast<short>(c));
}

// Lanes below limit, taken as unsigned: SSE2 compares only signed lanes, and
// flipping the top bit of both sides orders them as unsigned.
inline __m128i Below(__m128i lanes, wchar_t limit)
{
    const __m128i flip = _mm_set1_epi16(static_cast<short>(0x8000));
    return _mm_cmplt_epi16(_mm_xor_si128(lanes, flip), _mm_xor_si128(Splat(limit), flip));
}

// The lane of the first set byte of a non-zero byte mask.
inline std::ptrdiff_t FirstLane(int mask)
{
    return std::countr_zero(static_cast<unsigned>(mask)) / 2;
}

// The first character in [p, end), which holds at least eight, for which
// matches (eight characters to a byte mask) sets a lane; or end. The last
// few characters are looked at in one more step that ends at the end and
// looks again at some already passed, none of which matched.
template <typename Matches>
inline const wchar_t* FindByEights(const wchar_t* p, const wchar_t* end, Matches matches)
{
    for (; end - p >= kStep; p += kStep)
    {
        if (const int mask = matches(p))
            return p + FirstLane(mask);
    }
    if (p == end)
        return end;
    p = end - kStep;
    const int mask = matches(p);
    return mask != 0 ? p + FirstLane(mask) : end;
}

} // namespace xml_sse2
#endif

// The first character in [p, end) equal to any of wanted (all ASCII), or end.
template <typename... Characters>
inline const wchar_t* FindXmlCharacter(const wchar_t* p, const wchar_t* end, Characters... wanted)
{
    static_assert((std::is_same_v<Characters, wchar_t> && ...));
#ifdef CVAS_XML_SSE2
    using namespace xml_sse2;
    const __m128i splats[] = {Splat(wanted)...};
    const auto matches = [&splats](const wchar_t* eight) {
        const __m128i lanes = LoadEight(eight);
        __m128i found = _mm_cmpeq_epi16(lanes, splats[0]);
        for (std::size_t k = 1; k < sizeof...(wanted); ++k)
            found = _mm_or_si128(found, _mm_cmpeq_epi16(lanes, splats[k]));
        return _mm_movemask_epi8(found);
    };
    if (end - p >= kStep)
        return FindByEights(p, end, matches);
#endif
    while (p < end && ((*p != wanted) && ...))
        ++p;
    return p;
}

// The first character in [p, end) below limit (as unsigned) or equal to
// also (both ASCII), or end. Every character that ends a tag name is below
// "@" or is "\", so a name is passed over to the first such character and
// only that one needs a closer look.
inline const wchar_t* FindXmlCharacterBelow(const wchar_t* p, const wchar_t* end, wchar_t limit,
                                            wchar_t also)
{
#ifdef CVAS_XML_SSE2
    using namespace xml_sse2;
    const __m128i other = Splat(also);
    const auto matches = [limit, &other](const wchar_t* eight) {
        const __m128i lanes = LoadEight(eight);
        return _mm_movemask_epi8(_mm_or_si128(Below(lanes, limit), _mm_cmpeq_epi16(lanes, other)));
    };
    if (end - p >= kStep)
        return FindByEights(p, end, matches);
#endif
    using Unsigned = std::make_unsigned_t<wchar_t>;
    const auto bound = static_cast<Unsigned>(limit);
    while (p < end && static_cast<Unsigned>(*p) >= bound && *p != also)
        ++p;
    return p;
}

// Whether a[0, n) and b[0, n) hold the same characters, eight bytes a
// step. Up to 32 bytes (most names) take four fixed steps, overlapping as
// needed, without a branch that depends on the length.
inline bool SameXmlCharacters(const wchar_t* a, const wchar_t* b, std::size_t n)
{
    const std::size_t bytes = n * sizeof(wchar_t);
    if (bytes < 8)
    {
        for (std::size_t i = 0; i < n; ++i)
        {
            if (a[i] != b[i])
                return false;
        }
        return true;
    }
    const auto differs = [a, b](std::size_t offset) {
        std::uint64_t x;
        std::uint64_t y;
        std::memcpy(&x, reinterpret_cast<const char*>(a) + offset, sizeof x);
        std::memcpy(&y, reinterpret_cast<const char*>(b) + offset, sizeof y);
        return x ^ y;
    };
    const std::size_t last = bytes - 8;
    std::size_t offset = 0;
    for (; offset + 32 < bytes; offset += 8)
    {
        if (differs(offset) != 0)
            return false;
    }
    const std::size_t second = offset + 8 < last ? offset + 8 : last;
    const std::size_t third = offset + 16 < last ? offset + 16 : last;
    return (differs(offset) | differs(second) | differs(third) | differs(last)) == 0;
}

} // namespace cvas
