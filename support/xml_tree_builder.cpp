#include "support/xml_tree_builder.h"

#include "support/xml_names.h"

namespace cvas
{

std::wstring CXmlTreeBuilder::Build(std::wstring_view text, bool ignoreCase,
                                    CXmlElementTable& table)
{
    m_text = text;
    m_ignoreCase = ignoreCase;
    m_table = &table;
    m_firstError.clear();
    m_haveError = false;
    table.Reset(text.size() / 64 + 8);
    table[0].length = static_cast<std::uint32_t>(text.size());
    m_open.clear();
    m_open.push_back({0, 0, 0});

    const wchar_t* data = text.data();
    const std::size_t end = text.size();
    for (std::size_t offset = 0;;)
    {
        const XmlToken token = NextXmlToken(data, end, offset);
        if (token.type == XmlNodeType::EndOfDocument)
            break;
        if (token.type == XmlNodeType::Element)
        {
            OpenTag(token);
        }
        else if (token.type == XmlNodeType::EndTag)
        {
            CloseTag(token);
        }
        else if (token.type == XmlNodeType::Error)
        {
            NoteError(token);
            MarkIllFormed();
        }
        offset = token.End();
    }

    if (m_open.size() > 1)
    {
        const OpenElement& inner = m_open.back();
        const std::uint32_t start = table[inner.index].start;
        if (!m_haveError)
            NoteError(L"Element '" + std::wstring(TagName(start)) + L"' at offset " +
                      std::to_wstring(start) + L" not ended");
        MarkIllFormed();
        CloseNotEnded(0);
    }
    const std::uint32_t root = table[0].firstChild;
    if (text.empty())
        NoteError(L"Empty document");
    else if (root == 0)
        NoteError(L"No root element");
    else if (table[root].next != 0)
        NoteError(L"Root element has sibling");
    m_table = nullptr;
    return std::move(m_firstError);
}

bool CXmlTreeBuilder::IsWellFormed(const CXmlElementTable& table)
{
    const std::uint32_t root = table[0].firstChild;
    return root != 0 && table[root].next == 0 &&
           (table[0].flagsAndLevel & (kXmlIllFormed | kXmlIllFormedBelow)) == 0;
}

void CXmlTreeBuilder::OpenTag(const XmlToken& token)
{
    CXmlElementTable& table = *m_table;
    const std::uint32_t parent = m_open.back().index;
    const std::uint32_t index = table.Allocate();
    XmlElementRecord& record = table[index];
    record.start = static_cast<std::uint32_t>(token.start);
    record.length = static_cast<std::uint32_t>(token.length);
    record.tagLengths = PackTagLengths(token.length, 0);
    record.flagsAndLevel = static_cast<std::uint32_t>(m_open.size() - 1) & kXmlLevelMask;
    record.parent = parent;
    AppendChild(parent, index);
    if (!token.empty)
    {
        const std::size_t nameStart = token.start + 1;
        const std::size_t nameLength = XmlTagNameLength(m_text.substr(nameStart, token.length - 1));
        m_open.push_back(
            {index, static_cast<std::uint32_t>(nameStart), static_cast<std::uint32_t>(nameLength)});
    }
}

void CXmlTreeBuilder::CloseTag(const XmlToken& token)
{
    CXmlElementTable& table = *m_table;
    const std::wstring_view name = m_text.substr(token.start + 2, token.nameLength);
    // Match the open elements from the innermost outwards.
    std::size_t match = m_open.size() - 1;
    while (match > 0 &&
           !XmlNamesEqual(m_text.substr(m_open[match].nameStart, m_open[match].nameLength), name,
                          m_ignoreCase))
        --match;
    if (match == 0)
    {
        if (!m_haveError)
            NoteError(L"No start tag for end tag '" + std::wstring(name) + L"' at offset " +
                      std::to_wstring(token.start));
        MarkIllFormed();
        return;
    }
    if (match + 1 < m_open.size())
    {
        const std::uint32_t innerStart = table[m_open.back().index].start;
        if (!m_haveError)
            NoteError(L"End tag '" + std::wstring(name) + L"' at offset " +
                      std::to_wstring(token.start) + L" does not match start tag '" +
                      std::wstring(TagName(innerStart)) + L"' at offset " +
                      std::to_wstring(innerStart));
        MarkIllFormed();
        CloseNotEnded(match);
    }
    XmlElementRecord& record = table[m_open[match].index];
    record.length = static_cast<std::uint32_t>(token.End() - record.start);
    record.tagLengths = PackTagLengths(StartTagLength(record), token.length);
    m_open.pop_back();
}

void CXmlTreeBuilder::NoteError(const XmlToken& token)
{
    if (!m_haveError)
        NoteError(XmlTokenErrorText(token));
}

void CXmlTreeBuilder::NoteError(std::wstring message)
{
    if (m_haveError)
        return;
    m_firstError = std::move(message);
    m_haveError = true;
}

// An error marks the document (the element whose content is parsed) as
// ill-formed and the innermost open element as ill-formed below.
void CXmlTreeBuilder::MarkIllFormed()
{
    CXmlElementTable& table = *m_table;
    table[0].flagsAndLevel |= kXmlIllFormed;
    table[m_open.back().index].flagsAndLevel |= kXmlIllFormedBelow;
}

// Closes every open element above m_open[keep] as not ended: each keeps only
// its start tag, and its children move up to follow it. Done in one pass, so
// that in a chain of such elements every child moves once: the elements and
// their children all become children of m_open[keep], in document order.
void CXmlTreeBuilder::CloseNotEnded(std::size_t keep)
{
    CXmlElementTable& table = *m_table;
    const std::uint32_t adopter = m_open[keep].index;
    const std::uint32_t level = adopter == 0 ? 0 : (LevelOf(table[adopter]) + 1) & kXmlLevelMask;

    // Moves one element (with what is below it) to the end of the adopter's
    // children, at the adopter's children's level.
    std::uint32_t tail = m_open[keep + 1].index; // already the adopter's last child
    auto adopt = [&](std::uint32_t node) {
        XmlElementRecord& record = table[node];
        const std::uint32_t shift = (LevelOf(record) - level) & kXmlLevelMask;
        record.parent = adopter;
        record.flagsAndLevel &= ~kXmlFirstChild;
        table[tail].next = node;
        record.prev = tail;
        tail = node;
        for (std::uint32_t at = node;;)
        {
            XmlElementRecord& below = table[at];
            below.flagsAndLevel =
                (below.flagsAndLevel & ~kXmlLevelMask) | ((LevelOf(below) - shift) & kXmlLevelMask);
            if (below.firstChild != 0)
            {
                at = below.firstChild;
                continue;
            }
            while (at != node && table[at].next == 0)
                at = table[at].parent;
            if (at == node)
                break;
            at = table[at].next;
        }
    };

    bool illFormedBelow = false;
    for (std::size_t j = keep + 1; j < m_open.size(); ++j)
    {
        const std::uint32_t element = m_open[j].index;
        XmlElementRecord& record = table[element];
        illFormedBelow = illFormedBelow || (record.flagsAndLevel & kXmlIllFormedBelow) != 0;
        record.flagsAndLevel = (record.flagsAndLevel & ~kXmlIllFormedBelow) | kXmlNotEnded;
        std::uint32_t child = record.firstChild;
        record.firstChild = 0;
        if (j > keep + 1)
            adopt(element);
        // The next open element, if any, is this one's last child.
        const std::uint32_t nextOpen = j + 1 < m_open.size() ? m_open[j + 1].index : 0;
        while (child != 0 && child != nextOpen)
        {
            const std::uint32_t following = table[child].next;
            adopt(child);
            child = following;
        }
    }
    table[tail].next = 0;
    table[table[adopter].firstChild].prev = tail;
    if (illFormedBelow)
        table[adopter].flagsAndLevel |= kXmlIllFormedBelow;
    m_open.resize(keep + 1);
}

void CXmlTreeBuilder::AppendChild(std::uint32_t parent, std::uint32_t child)
{
    CXmlElementTable& table = *m_table;
    XmlElementRecord& record = table[child];
    record.next = 0;
    const std::uint32_t first = table[parent].firstChild;
    if (first == 0)
    {
        table[parent].firstChild = child;
        record.prev = child;
        record.flagsAndLevel |= kXmlFirstChild;
        return;
    }
    const std::uint32_t last = table[first].prev;
    table[last].next = child;
    record.prev = last;
    table[first].prev = child;
}

// The name of the tag at start as messages show it: up to the first of
// " \t\n\r/>".
std::wstring_view CXmlTreeBuilder::TagName(std::uint32_t start) const
{
    std::size_t end = start + 1;
    while (end < m_text.size() && !IsXmlSpace(m_text[end]) && m_text[end] != L'/' &&
           m_text[end] != L'>')
        ++end;
    return m_text.substr(start + 1, end - (start + 1));
}

} // namespace cvas
