#pragma once
// Finding characters in wide text several at a time: with SSE2 where the
// compiler offers it (every x86-64 target), 16 bytes a step, which is four
// characters where wchar_t is 32 bits and eight where it is 16. Elsewhere
// the plain loops below the vector ones do all the work.

#include <cstddef>
#include <cstdint>
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

constexpr std::ptrdiff_t kLanes = 16 / sizeof(wchar_t);

inline __m128i Load(const wchar_t* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline __m128i Splat(std::uint32_t c)
{
    if constexpr (sizeof(wchar_t) == 2)
        return _mm_set1_epi16(static_cast<short>(c));
    else
        return _mm_set1_epi32(static_cast<int>(c));
}

inline __m128i Equal(__m128i a, __m128i b)
{
    if constexpr (sizeof(wchar_t) == 2)
        return _mm_cmpeq_epi16(a, b);
    else
        return _mm_cmpeq_epi32(a, b);
}

// Lanes whose character, taken as unsigned, is below limit. SSE2 compares
// only signed lanes: flipping the top bit of both sides orders them as
// unsigned.
inline __m128i Below(__m128i v, std::uint32_t limit)
{
    constexpr std::uint32_t top = sizeof(wchar_t) == 2 ? 0x8000u : 0x80000000u;
    const __m128i flip = Splat(top);
    const __m128i bound = Splat(limit ^ top);
    if constexpr (sizeof(wchar_t) == 2)
        return _mm_cmplt_epi16(_mm_xor_si128(v, flip), bound);
    else
        return _mm_cmplt_epi32(_mm_xor_si128(v, flip), bound);
}

// The lane of the first set byte of a non-zero byte mask.
inline std::ptrdiff_t FirstLane(int mask)
{
    return __builtin_ctz(static_cast<unsigned>(mask)) / static_cast<int>(sizeof(wchar_t));
}

} // namespace xml_sse2
#endif

// The first character in [p, end) equal to any of wanted, or end.
template <typename... Characters>
inline const wchar_t* FindXmlCharacter(const wchar_t* p, const wchar_t* end, Characters... wanted)
{
    static_assert((std::is_same_v<Characters, wchar_t> && ...));
#ifdef CVAS_XML_SSE2
    using namespace xml_sse2;
    const __m128i splats[] = {Splat(static_cast<std::uint32_t>(wanted))...};
    for (; end - p >= kLanes; p += kLanes)
    {
        const __m128i v = Load(p);
        __m128i found = Equal(v, splats[0]);
        for (std::size_t k = 1; k < sizeof...(wanted); ++k)
            found = _mm_or_si128(found, Equal(v, splats[k]));
        const int mask = _mm_movemask_epi8(found);
        if (mask != 0)
            return p + FirstLane(mask);
    }
#endif
    while (p < end && ((*p != wanted) && ...))
        ++p;
    return p;
}

// The first character in [p, end) below limit (as unsigned), or equal to
// also; end if there is none. Every character that ends a tag name is one
// of these with limit "@" and also "\", so a name is passed over to the
// first such character and only that one needs a closer look.
inline const wchar_t* FindXmlCharacterBelow(const wchar_t* p, const wchar_t* end, wchar_t limit,
                                            wchar_t also)
{
    const auto bound = static_cast<std::uint32_t>(limit);
#ifdef CVAS_XML_SSE2
    using namespace xml_sse2;
    const __m128i other = Splat(static_cast<std::uint32_t>(also));
    for (; end - p >= kLanes; p += kLanes)
    {
        const __m128i v = Load(p);
        const int mask = _mm_movemask_epi8(_mm_or_si128(Below(v, bound), Equal(v, other)));
        if (mask != 0)
            return p + FirstLane(mask);
    }
#endif
    using Unsigned = std::conditional_t<sizeof(wchar_t) == 2, std::uint16_t, std::uint32_t>;
    while (p < end && static_cast<Unsigned>(*p) >= bound && *p != also)
        ++p;
    return p;
}

} // namespace cvas
