#include "xml/xml_tree_builder.h"

#include "xml/xml_char_search.h"
#include "xml/xml_names.h"
#include "xml/xml_tag_open_masks.h"

#include <algorithm>
#include <array>
#include <bit>

namespace cvas
{

namespace
{

// How a character reads inside a tag name on the fast path: a plain name
// character, one that ends the name, or a quote, which needs the tokenizer
// (its quoted mode starts inside the name).
constexpr unsigned char kNameGoesOn = 0;
constexpr unsigned char kNameEnds = 1;
constexpr unsigned char kNameNeedsTokenizer = 2;

constexpr std::array<unsigned char, 128> kNameCharacters = [] {
    std::array<unsigned char, 128> classes{};
    for (std::size_t c = 0; c < classes.size(); ++c)
        classes[c] = EndsXmlTagName(static_cast<wchar_t>(c)) ? kNameEnds : kNameGoesOn;
    classes['"'] = kNameNeedsTokenizer;
    classes['\''] = kNameNeedsTokenizer;
    return classes;
}();

unsigned NameCharacterClass(wchar_t c)
{
    const auto u = static_cast<std::uint32_t>(c);
    return u < 128 ? kNameCharacters[u] : kNameGoesOn;
}

// The end of the start tag at tag when its name holds no quote (the
// tokenizer's quoted mode would start inside the name); null when it is not
// such a tag or end cuts it off. Gives the name's length as start tags and
// end tags match it.
const wchar_t* PlainStartTagEnd(const wchar_t* tag, const wchar_t* end, std::size_t& nameLength)
{
    if (!StartsXmlElementTag(tag[1]))
        return nullptr;
    // Every character that ends a name is below "@" or is "\"; the others
    // found that way (digits, "-", ".", ":" and so on) go on with the name.
    const wchar_t* at = tag + 1;
    for (;;)
    {
        at = FindXmlCharacterBelow(at, end, L'@', L'\\');
        if (at == end)
            return nullptr;
        if (*at == L'>') // the name ends the tag: the common case
        {
            nameLength = static_cast<std::size_t>(at - (tag + 1));
            return at + 1;
        }
        const unsigned kind = NameCharacterClass(*at);
        if (kind == kNameNeedsTokenizer)
            return nullptr;
        if (kind == kNameEnds)
            break;
        ++at;
    }
    nameLength = static_cast<std::size_t>(at - (tag + 1));
    // Quotes of either kind open quoted mode, in which ">" does not end the
    // tag, up to the next quote of the same kind.
    for (;;)
    {
        at = FindXmlCharacter(at, end, L'>', L'"', L'\'');
        if (at == end)
            return nullptr;
        if (*at == L'>')
            return at + 1;
        at = FindXmlCharacter(at + 1, end, *at);
        if (at == end)
            return nullptr;
        ++at;
    }
}

// The end of the end tag at tag when it is "</" name ">"; null otherwise.
const wchar_t* PlainEndTagEnd(const wchar_t* tag, const wchar_t* end, const wchar_t* name,
                              std::size_t nameLength, bool ignoreCase)
{
    const wchar_t* const close = tag + 2 + nameLength;
    if (close >= end || *close != L'>' || !SameXmlName(name, tag + 2, nameLength, ignoreCase))
        return nullptr;
    return close + 1;
}

} // namespace

bool CXmlTextPieces::Next(std::wstring& text)
{
    if (m_given >= m_source.size())
        return false;
    const std::size_t length = std::min(m_pieceLength, m_source.size() - m_given);
    text.append(m_source.data() + m_given, length);
    m_given += length;
    return true;
}

std::wstring CXmlTreeBuilder::Build(std::wstring& text, IXmlTextSupply* supply,
                                    std::size_t expectedLength, bool ignoreCase,
                                    CXmlElementTable& table)
{
    m_growing = &text;
    m_supply = supply;
    m_text = text;
    m_ignoreCase = ignoreCase;
    m_table = &table;
    m_firstError.clear();
    m_haveError = false;
    table.Reset(std::max(expectedLength, text.size()) / 64 + 8);
    m_open.clear();
    m_open.push_back({0, 0, 0, 0});
    m_openNames.Reset();
    m_levelsMoved = false;

    for (std::size_t offset = 0;;)
    {
        if (offset >= m_text.size())
        {
            if (MoreText())
                continue;
            break;
        }
        offset = ReadCommon(offset);
        const wchar_t* data = m_text.data();
        const std::size_t end = m_text.size();
        if (offset >= end)
            continue;
        const XmlToken token = NextXmlToken(data, end, offset);
        // A token that reaches the end of what is there may run on into
        // the next piece: read it again with more text.
        if (token.End() >= end && MoreText())
        {
            // Read on until what follows the token's start has at least
            // doubled, so that a long token is read only a few times over.
            while (m_text.size() < end + (end - offset) && MoreText())
            {
            }
            continue;
        }
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
    table[0].length = static_cast<std::uint32_t>(m_text.size());

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
    LinkLastChild(m_open[0]);
    if (m_levelsMoved)
        RecomputeLevels();
    m_openNames.Reset();
    const std::uint32_t root = table[0].firstChild;
    if (m_text.empty())
        NoteError(L"Empty document");
    else if (root == 0)
        NoteError(L"No root element");
    else if (table[root].next != 0)
        NoteError(L"Root element has sibling");
    m_table = nullptr;
    m_growing = nullptr;
    m_supply = nullptr;
    return std::move(m_firstError);
}

bool CXmlTreeBuilder::MoreText()
{
    if (!m_supply || !m_supply->Next(*m_growing))
    {
        m_supply = nullptr;
        return false;
    }
    m_text = *m_growing;
    return true;
}

bool CXmlTreeBuilder::IsWellFormed(const CXmlElementTable& table)
{
    const std::uint32_t root = table[0].firstChild;
    return root != 0 && table[root].next == 0 &&
           (table[0].flagsAndLevel & (kXmlIllFormed | kXmlIllFormedBelow)) == 0;
}

// Reads on from offset through text, white space and the tags of the
// common shapes, up to the end of what has been supplied or to a tag that
// the tokenizer must read; returns where it stopped.
std::size_t CXmlTreeBuilder::ReadCommon(std::size_t offset)
{
    const wchar_t* const data = m_text.data();
    const wchar_t* const end = data + m_text.size();
    if (m_tokenizerOnly)
    {
        const wchar_t* const tag = FindXmlCharacter(data + offset, end, L'<');
        return static_cast<std::size_t>(tag - data);
    }
    // Every "<" from offset on, in order, one block of bits at a time. A "<"
    // inside a tag already read (in a quoted value) is passed over.
    const CXmlTagOpenMasks masks(data, end);
    std::size_t at = offset;
    for (std::size_t block = offset / masks.kBlock; block < masks.Blocks(); ++block)
    {
        for (std::uint64_t opens = masks.Block(block); opens != 0; opens &= opens - 1)
        {
            const std::size_t tag =
                block * masks.kBlock + static_cast<std::size_t>(std::countr_zero(opens));
            if (tag < at)
                continue;
            const wchar_t* const where = data + tag;
            if (end - where < 2)
                return tag;
            const wchar_t* after;
            if (where[1] == L'/')
            {
                const OpenElement& open = m_open.back();
                after = PlainEndTagEnd(where, end, data + open.nameStart, open.nameLength,
                                       m_ignoreCase);
                if (after == nullptr || m_open.size() < 2)
                    return tag;
                CloseOpen(m_open.size() - 1, tag, static_cast<std::size_t>(after - where));
            }
            else
            {
                std::size_t nameLength = 0;
                after = PlainStartTagEnd(where, end, nameLength);
                if (after == nullptr)
                    return tag;
                AddElement(tag, static_cast<std::size_t>(after - where), nameLength,
                           after[-2] == L'/');
            }
            at = static_cast<std::size_t>(after - data);
        }
    }
    return m_text.size();
}

void CXmlTreeBuilder::OpenTag(const XmlToken& token)
{
    const std::size_t nameLength =
        XmlTagNameLength(m_text.substr(token.start + 1, token.length - 1));
    AddElement(token.start, token.length, nameLength, token.empty);
}

// A new element, the last child of the innermost open element.
inline void CXmlTreeBuilder::AddElement(std::size_t start, std::size_t length,
                                        std::size_t nameLength, bool empty)
{
    CXmlElementTable& table = *m_table;
    OpenElement& parent = m_open.back();
    const std::uint32_t index = table.End();
    std::uint32_t flagsAndLevel = static_cast<std::uint32_t>(m_open.size() - 1) & kXmlLevelMask;
    std::uint32_t previous;
    if (parent.lastChild == 0)
    {
        table[parent.index].firstChild = index;
        previous = index;
        flagsAndLevel |= kXmlFirstChild;
    }
    else
    {
        table[parent.lastChild].next = index;
        previous = parent.lastChild;
    }
    table.Add({static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(length),
               PackTagLengths(length, 0), flagsAndLevel, parent.index, 0, 0, previous});
    parent.lastChild = index;
    if (!empty)
    {
        m_open.push_back({index, static_cast<std::uint32_t>(start + 1),
                          static_cast<std::uint32_t>(nameLength), 0});
        if (m_openNames.Active())
            m_openNames.Push(m_text.substr(start + 1, nameLength));
    }
}

void CXmlTreeBuilder::CloseTag(const XmlToken& token)
{
    CXmlElementTable& table = *m_table;
    // Messages show the name as the tokenizer delimits it; it is matched by
    // the same rule as start tags, which may end it sooner.
    const std::wstring_view shown = m_text.substr(token.start + 2, token.nameLength);
    const std::wstring_view name = shown.substr(0, XmlTagNameLength(shown));
    // The innermost open element of that name; 0 (the document) when none.
    std::size_t match = m_open.size() - 1;
    if (match > 0 &&
        !XmlNamesEqual(m_text.substr(m_open[match].nameStart, m_open[match].nameLength), name,
                       m_ignoreCase))
    {
        if (!m_openNames.Active())
        {
            m_openNames.Activate(m_ignoreCase);
            for (std::size_t i = 1; i < m_open.size(); ++i)
                m_openNames.Push(m_text.substr(m_open[i].nameStart, m_open[i].nameLength));
        }
        match = m_openNames.Innermost(name);
    }
    if (match == 0)
    {
        if (!m_haveError)
            NoteError(L"No start tag for end tag '" + std::wstring(shown) + L"' at offset " +
                      std::to_wstring(token.start));
        MarkIllFormed();
        return;
    }
    if (match + 1 < m_open.size())
    {
        const std::uint32_t innerStart = table[m_open.back().index].start;
        if (!m_haveError)
            NoteError(L"End tag '" + std::wstring(shown) + L"' at offset " +
                      std::to_wstring(token.start) + L" does not match start tag '" +
                      std::wstring(TagName(innerStart)) + L"' at offset " +
                      std::to_wstring(innerStart));
        MarkIllFormed();
        CloseNotEnded(match);
    }
    CloseOpen(match, token.start, token.length);
}

// Ends the open element at position (the innermost one left) with the end
// tag at endTag.
void CXmlTreeBuilder::CloseOpen(std::size_t position, std::size_t endTag, std::size_t endTagLength)
{
    const OpenElement& open = m_open[position];
    XmlElementRecord& record = (*m_table)[open.index];
    record.length = static_cast<std::uint32_t>(endTag + endTagLength - record.start);
    record.tagLengths = PackTagLengths(StartTagLength(record), endTagLength);
    LinkLastChild(open);
    if (m_openNames.Active())
        PopOpenTo(m_open.size() - 1);
    else
        m_open.pop_back();
}

void CXmlTreeBuilder::PopOpenTo(std::size_t count)
{
    m_open.resize(count);
    if (m_openNames.Active())
        m_openNames.PopTo(count);
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

    // Moves one element (with what is below it) to the end of the adopter's
    // children.
    std::uint32_t tail = m_open[keep + 1].index; // already the adopter's last child
    auto adopt = [&](std::uint32_t node) {
        XmlElementRecord& record = table[node];
        record.parent = adopter;
        record.flagsAndLevel &= ~kXmlFirstChild;
        table[tail].next = node;
        record.prev = tail;
        tail = node;
    };
    m_levelsMoved = true;

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
    m_open[keep].lastChild = tail;
    if (illFormedBelow)
        table[adopter].flagsAndLevel |= kXmlIllFormedBelow;
    PopOpenTo(keep + 1);
}

// Gives every element the depth it has now, walking the tree once.
void CXmlTreeBuilder::RecomputeLevels()
{
    CXmlElementTable& table = *m_table;
    std::uint32_t level = 0;
    for (std::uint32_t at = table[0].firstChild; at != 0;)
    {
        XmlElementRecord& record = table[at];
        record.flagsAndLevel = (record.flagsAndLevel & ~kXmlLevelMask) | (level & kXmlLevelMask);
        if (record.firstChild != 0)
        {
            at = record.firstChild;
            ++level;
            continue;
        }
        while (at != 0 && table[at].next == 0)
        {
            at = table[at].parent;
            --level;
        }
        if (at != 0)
            at = table[at].next;
    }
}

void CXmlTreeBuilder::LinkLastChild(const OpenElement& element)
{
    if (element.lastChild != 0)
        (*m_table)[(*m_table)[element.index].firstChild].prev = element.lastChild;
}

// The name of the tag at start as messages show it: up to the first of
// " \t\n\r/>".
std::wstring_view CXmlTreeBuilder::TagName(std::uint32_t start) const
{
    std::size_t end = start + 1;
    while (end < m_text.size() && !EndsXmlTokenName(m_text[end]))
        ++end;
    return m_text.substr(start + 1, end - (start + 1));
}

} // namespace cvas
