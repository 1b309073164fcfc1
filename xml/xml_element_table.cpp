#include "xml/xml_element_table.h"

#include <algorithm>
#include <cstring>

namespace cvas
{

void CXmlElementTable::Reset(std::size_t recordsWanted)
{
    m_nextFree = 1; // nothing but the cleared record 0 is kept when growing
    Grow(std::max<std::size_t>(recordsWanted, 1));
    m_records[0] = XmlElementRecord{};
}

void CXmlElementTable::Grow(std::size_t recordsWanted)
{
    if (recordsWanted <= m_capacity)
        return;
    // Doubling keeps the copying of a growing table linear in its size.
    const std::size_t size = std::max(m_capacity * 2, recordsWanted);
    auto grown = std::make_unique_for_overwrite<XmlElementRecord[]>(size);
    if (m_records)
        std::memcpy(grown.get(), m_records.get(), m_nextFree * sizeof(XmlElementRecord));
    m_records = std::move(grown);
    m_capacity = size;
}

} // namespace cvas
