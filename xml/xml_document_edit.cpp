// Adding elements: the new element's markup is inserted into the text, one
// element a line (each line ended by CR LF, no indentation), and the records
// behind the insertion point are moved along.
#include "xml/xml_document.h"

#include "xml/xml_escaping.h"

#include <algorithm>

namespace cvas
{
namespace
{

constexpr std::wstring_view kLineBreak = L"\r\n";

} // namespace

bool CXmlDocument::AddElem(std::wstring_view name, std::wstring_view value, int flags)
{
    return Insert(name, value, flags);
}

bool CXmlDocument::AddChildElem(std::wstring_view name, std::wstring_view value, int flags)
{
    return Insert(name, value, flags | kXmlAddChild);
}

bool CXmlDocument::Insert(std::wstring_view name, std::wstring_view value, int flags)
{
    const bool asChild = (flags & kXmlAddChild) != 0;
    if (name.empty() || ((flags & kXmlAddNotEnded) && !value.empty()))
        return false;
    if (asChild && m_current == 0)
        return false;
    const std::uint32_t parent = asChild ? m_current : m_parent;
    std::uint32_t after = asChild ? m_child : m_current;
    if (after == 0 && m_table[parent].firstChild != 0)
        after = m_table[m_table[parent].firstChild].prev; // the last child

    // The element's own markup, built where the memory of the last one is.
    std::wstring& markup = m_markup;
    markup.clear();
    markup += L'<';
    markup += name;
    std::size_t startTag = 0;
    std::size_t endTag = 0;
    if (flags & kXmlAddNotEnded)
    {
        markup += L'>';
        startTag = markup.size();
    }
    else if (value.empty())
    {
        markup += (flags & kXmlAddSpacedEmpty) ? L" />" : L"/>";
        startTag = markup.size();
    }
    else
    {
        markup += L'>';
        startTag = markup.size();
        if (flags & kXmlAddCdata)
            AppendXmlCdata(value, markup);
        else
            AppendXmlEscaped(value, (flags & kXmlAddEscapeQuotes) != 0,
                             (flags & kXmlAddKeepEntities) != 0, markup);
        markup += L"</";
        markup += name;
        markup += L'>';
        endTag = name.size() + 3;
    }
    const std::size_t elementLength = markup.size();
    markup += kLineBreak;

    std::size_t newStart;
    const XmlElementRecord parentRecord = m_table[parent];
    if (after != 0)
    {
        // After the element it follows and the line break that ends its line.
        const XmlElementRecord& previous = m_table[after];
        std::size_t at = std::min<std::size_t>(previous.start + previous.length, m_text.size());
        if (at + 1 < m_text.size() && m_text[at] == L'\r' && m_text[at + 1] == L'\n')
            at += kLineBreak.size();
        else if (at < m_text.size() && m_text[at] == L'\n')
            at += 1;
        ShiftFollowing(parent, after, markup.size());
        ReplaceText(at, 0, markup);
        newStart = at;
    }
    else if (parent == 0)
    {
        // The first element of the document goes at its end, on a line of
        // its own.
        const bool breakFirst = !m_text.empty() && m_text.back() != L'\n';
        if (breakFirst)
            markup.insert(0, kLineBreak);
        const std::size_t at = m_text.size();
        ShiftFollowing(parent, 0, markup.size());
        ReplaceText(at, 0, markup);
        newStart = at + (breakFirst ? kLineBreak.size() : 0);
    }
    else if (EndTagLength(parentRecord) == 0 && !(parentRecord.flagsAndLevel & kXmlNotEnded) &&
             parentRecord.length >= 3 &&
             parentRecord.start + parentRecord.length <= m_text.size() &&
             m_text[parentRecord.start + parentRecord.length - 2] == L'/' &&
             m_text[parentRecord.start + parentRecord.length - 1] == L'>')
    {
        // An empty parent "<p/>" becomes "<p>", line break, the child, "</p>",
        // written around the child's markup.
        // "<p />" loses its space too; a "/" left last keeps a space after it,
        // or the tag would read as empty again.
        std::wstring_view open =
            std::wstring_view(m_text).substr(parentRecord.start, parentRecord.length - 2);
        while (open.size() > 1 && IsXmlSpace(open.back()))
            open.remove_suffix(1);
        const std::size_t markupLength = markup.size();
        markup.insert(0, kLineBreak);
        markup.insert(0, 1, L'>');
        if (open.back() == L'/')
            markup.insert(0, 1, L' ');
        markup.insert(0, open);
        const std::size_t openLength = markup.size() - markupLength - kLineBreak.size();
        markup += L"</";
        markup += TagName(parent);
        markup += L'>';
        const std::size_t closeLength =
            markup.size() - openLength - kLineBreak.size() - markupLength;
        ShiftFollowing(parent, 0, markup.size() - parentRecord.length);
        ReplaceText(parentRecord.start, parentRecord.length, markup);
        XmlElementRecord& rewritten = m_table[parent];
        rewritten.length = static_cast<std::uint32_t>(markup.size());
        rewritten.tagLengths = PackTagLengths(openLength, closeLength);
        newStart = parentRecord.start + openLength + kLineBreak.size();
    }
    else
    {
        // Directly after the parent's start tag; when the parent holds text,
        // the child starts a line of its own.
        const std::size_t contentStart =
            std::min<std::size_t>(parentRecord.start + StartTagLength(parentRecord), m_text.size());
        const bool hasContent =
            parentRecord.length > StartTagLength(parentRecord) + EndTagLength(parentRecord);
        if (hasContent)
            markup.insert(0, kLineBreak);
        ShiftFollowing(parent, 0, markup.size());
        ReplaceText(contentStart, 0, markup);
        newStart = contentStart + (hasContent ? kLineBreak.size() : 0);
    }

    const std::uint32_t index = m_table.Allocate();
    XmlElementRecord& record = m_table[index];
    record.start = static_cast<std::uint32_t>(newStart);
    record.length = static_cast<std::uint32_t>(elementLength);
    record.tagLengths = PackTagLengths(startTag, endTag);
    const std::uint32_t level = parent == 0 ? 0 : LevelOf(m_table[parent]) + 1;
    record.flagsAndLevel = (level & kXmlLevelMask) | ((flags & kXmlAddNotEnded) ? kXmlNotEnded : 0);
    record.parent = parent;
    if (after == 0)
    {
        m_table[parent].firstChild = index;
        record.prev = index;
        record.flagsAndLevel |= kXmlFirstChild;
    }
    else
    {
        const std::uint32_t following = m_table[after].next;
        record.prev = after;
        record.next = following;
        m_table[after].next = index;
        const std::uint32_t first = m_table[parent].firstChild;
        if (following != 0)
            m_table[following].prev = index;
        else
            m_table[first].prev = index;
    }

    m_flags |= kXmlDocModified;
    if (asChild)
    {
        m_child = index;
    }
    else
    {
        m_current = index;
        m_child = 0;
    }
    return true;
}

// Replaces part of the text; when it must grow, its capacity becomes the
// needed length plus half of that plus 128 characters.
void CXmlDocument::ReplaceText(std::size_t at, std::size_t removed, std::wstring_view inserted)
{
    const std::size_t needed = m_text.size() - removed + inserted.size();
    if (needed > m_text.capacity())
        m_text.reserve(needed + needed / 2 + 128);
    m_text.replace(at, removed, inserted.data(), inserted.size());
}

// Moves every element behind an insertion into parent (after the child
// after, or at its start) by delta characters, and grows the parent and its
// ancestors. Only the elements that follow in document order are visited, so
// adding at the end of a long document costs no more than its depth.
void CXmlDocument::ShiftFollowing(std::uint32_t parent, std::uint32_t after, std::int64_t delta)
{
    const auto shift = static_cast<std::uint32_t>(delta); // modular: negative deltas work
    auto shiftSubtree = [this, shift](std::uint32_t root) {
        for (std::uint32_t at = root;;)
        {
            m_table[at].start += shift;
            if (m_table[at].firstChild != 0)
            {
                at = m_table[at].firstChild;
                continue;
            }
            while (at != root && m_table[at].next == 0)
                at = m_table[at].parent;
            if (at == root)
                break;
            at = m_table[at].next;
        }
    };
    for (std::uint32_t sibling = after ? m_table[after].next : m_table[parent].firstChild;
         sibling != 0; sibling = m_table[sibling].next)
        shiftSubtree(sibling);
    for (std::uint32_t ancestor = parent;; ancestor = m_table[ancestor].parent)
    {
        m_table[ancestor].length += shift;
        if (ancestor == 0)
            break;
        for (std::uint32_t sibling = m_table[ancestor].next; sibling != 0;
             sibling = m_table[sibling].next)
            shiftSubtree(sibling);
    }
}

} // namespace cvas
