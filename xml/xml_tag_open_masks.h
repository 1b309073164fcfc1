#pragma once
// Finds the "<" of every tag in markup text through bit masks of 64
// characters: each block of the text is looked at once (eight characters a
// step where xml_char_search.h has SSE2), and its tags are then taken one
// after the other from the bits, so that text between tags is never looked
// at character by character and finding the next tag does not wait for the
// reading of the one before.

#include "xml/xml_char_search.h"

#include <cstddef>
#include <cstdint>

namespace cvas
{

class CXmlTagOpenMasks
{
public:
    static constexpr std::size_t kBlock = 64;

    CXmlTagOpenMasks(const wchar_t* text, const wchar_t* end)
        : m_text(text), m_size(static_cast<std::size_t>(end - text))
    {
    }

    // The number of blocks, the last one maybe shorter.
    std::size_t Blocks() const { return (m_size + kBlock - 1) / kBlock; }

    // Bit k tells whether character k of the block is "<".
    std::uint64_t Block(std::size_t block) const
    {
        const wchar_t* const p = m_text + block * kBlock;
        const std::size_t count = m_size - block * kBlock;
        std::uint64_t opens = 0;
#ifdef CVAS_XML_SSE2
        if (count >= kBlock)
        {
            using namespace xml_sse2;
            const __m128i open = Splat(L'<');
            for (std::size_t k = 0; k < kBlock; k += 16)
            {
                const __m128i first = _mm_cmpeq_epi16(LoadEight(p + k), open);
                const __m128i second = _mm_cmpeq_epi16(LoadEight(p + k + 8), open);
                const auto sixteen =
                    static_cast<std::uint16_t>(_mm_movemask_epi8(_mm_packs_epi16(first, second)));
                opens |= static_cast<std::uint64_t>(sixteen) << k;
            }
            return opens;
        }
#endif
        for (std::size_t k = 0; k < count && k < kBlock; ++k)
            opens |= static_cast<std::uint64_t>(p[k] == L'<') << k;
        return opens;
    }

private:
    const wchar_t* m_text;
    std::size_t m_size;
};

} // namespace cvas
