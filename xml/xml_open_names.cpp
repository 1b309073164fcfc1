#include "xml/xml_open_names.h"

#include "xml/xml_names.h"

namespace cvas
{

void CXmlOpenNames::Activate(bool ignoreCase)
{
    Reset();
    m_active = true;
    m_ignoreCase = ignoreCase;
    m_lists.push_back(nullptr);
}

void CXmlOpenNames::Reset()
{
    m_active = false;
    m_byName.clear();
    m_lists.clear();
}

void CXmlOpenNames::Push(std::wstring_view name)
{
    XmlNameKey(name, m_ignoreCase, m_key);
    Positions& positions = m_byName[m_key];
    positions.push_back(static_cast<std::uint32_t>(m_lists.size()));
    m_lists.push_back(&positions);
}

void CXmlOpenNames::PopTo(std::size_t count)
{
    // Positions only grow along each list, so the closed ones are at the ends.
    while (m_lists.size() > count && m_lists.size() > 1)
    {
        m_lists.back()->pop_back();
        m_lists.pop_back();
    }
}

std::size_t CXmlOpenNames::Innermost(std::wstring_view name)
{
    XmlNameKey(name, m_ignoreCase, m_key);
    const auto found = m_byName.find(m_key);
    return found == m_byName.end() || found->second.empty() ? 0 : found->second.back();
}

} // namespace cvas
