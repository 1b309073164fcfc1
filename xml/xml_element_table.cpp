#include "xml/xml_element_table.h"

#include <algorithm>
#include <cstring>

namespace cvas
{

void CXmlElementTable::Reset(std::size_t recordsWanted)
{
    Grow(std::max<std::size_t>(recordsWanted, 1));
    m_nextFree = 1;
    (*this)[0] = XmlElementRecord{};
}

void CXmlElementTable::Grow(std::size_t recordsWanted)
{
    if (recordsWanted <= m_capacity)
        return;
    if (m_capacity < kSegmentSize)
    {
        // The first segment grows by doubling (keeping what it holds) until
        // it is whole.
        std::size_t size = std::max<std::size_t>(m_capacity * 2, recordsWanted);
        size = std::min<std::size_t>(size, kSegmentSize);
        auto grown = std::make_unique_for_overwrite<XmlElementRecord[]>(size);
        if (m_capacity != 0)
            std::memcpy(grown.get(), m_segments[0].get(), m_capacity * sizeof(XmlElementRecord));
        if (m_segments.empty())
            m_segments.push_back(std::move(grown));
        else
            m_segments[0] = std::move(grown);
        m_capacity = static_cast<std::uint32_t>(size);
    }
    while (recordsWanted > m_capacity)
    {
        m_segments.push_back(std::make_unique_for_overwrite<XmlElementRecord[]>(kSegmentSize));
        m_capacity += kSegmentSize;
    }
}

} // namespace cvas
