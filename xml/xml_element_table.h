#pragma once
// The element index of a markup document: one record of eight 32-bit fields
// per element, in one array. Records are found by index, so the table can be
// reallocated freely, and reading one is a single step from the array's
// start. Index 0 stands for the document itself; its first child is the root
// element.

#include <cstddef>
#include <cstdint>
#include <memory>

namespace cvas
{

struct XmlElementRecord
{
    std::uint32_t start;         // offset of the "<" of the start tag
    std::uint32_t length;        // from that "<" through the ">" of the end tag
    std::uint32_t tagLengths;    // end tag length in the top 10 bits, start tag below
    std::uint32_t flagsAndLevel; // nesting level in the low 16 bits, flags above
    std::uint32_t parent;
    std::uint32_t firstChild;
    std::uint32_t next; // 0 for the last child
    std::uint32_t prev; // the first child's prev is the last child
};

// The start tag length is always read and kept with this mask. It leaves bit
// 20 out, so a start tag of a million characters or more is recorded short.
constexpr std::uint32_t kXmlStartTagMask = 0x2FFFFF;
constexpr int kXmlEndTagShift = 22;
constexpr std::uint32_t kXmlEndTagMax = 0x3FF;
constexpr std::uint32_t kXmlLevelMask = 0xFFFF;
constexpr std::uint32_t kXmlFirstChild = 1u << 19;
constexpr std::uint32_t kXmlNotEnded = 1u << 20;
constexpr std::uint32_t kXmlIllFormedBelow = 1u << 21;
constexpr std::uint32_t kXmlIllFormed = 1u << 23;

inline std::uint32_t StartTagLength(const XmlElementRecord& record)
{
    return record.tagLengths & kXmlStartTagMask;
}

inline std::uint32_t EndTagLength(const XmlElementRecord& record)
{
    return record.tagLengths >> kXmlEndTagShift;
}

inline std::uint32_t PackTagLengths(std::size_t startTag, std::size_t endTag)
{
    return ((static_cast<std::uint32_t>(endTag) & kXmlEndTagMax) << kXmlEndTagShift) |
           (static_cast<std::uint32_t>(startTag) & kXmlStartTagMask);
}

inline std::uint32_t LevelOf(const XmlElementRecord& record)
{
    return record.flagsAndLevel & kXmlLevelMask;
}

class CXmlElementTable
{
public:
    // Forgets every element but index 0 (cleared) and makes room for at
    // least the given number of records. Memory already held is kept.
    void Reset(std::size_t recordsWanted);

    // A fresh, cleared record at the next unused index. Elements are never
    // removed from a document, so no index is ever handed back.
    std::uint32_t Allocate() { return Add(XmlElementRecord{}); }
    // The given record at the next unused index, End() before the call.
    std::uint32_t Add(const XmlElementRecord& record)
    {
        if (m_nextFree >= m_capacity)
            Grow(m_nextFree + 1);
        const std::size_t index = m_nextFree++;
        m_records[index] = record;
        return static_cast<std::uint32_t>(index);
    }

    XmlElementRecord& operator[](std::uint32_t index) { return m_records[index]; }
    const XmlElementRecord& operator[](std::uint32_t index) const { return m_records[index]; }

    std::uint32_t Capacity() const { return static_cast<std::uint32_t>(m_capacity); }
    // One past the highest index handed out.
    std::uint32_t End() const { return static_cast<std::uint32_t>(m_nextFree); }

private:
    void Grow(std::size_t recordsWanted);

    std::unique_ptr<XmlElementRecord[]> m_records;
    // Of another type than the records' fields, so that the compiler knows
    // that writing a record leaves them as they were.
    std::size_t m_capacity = 0;
    std::size_t m_nextFree = 1;
};

} // namespace cvas
