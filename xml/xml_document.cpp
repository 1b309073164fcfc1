#include "xml/xml_document.h"

#include "xml/xml_char_search.h"
#include "xml/xml_escaping.h"
#include "xml/xml_names.h"

#include <algorithm>
#include <utility>

namespace cvas
{
namespace
{

constexpr std::size_t kParsePiece = 16384;

} // namespace

CXmlDocument::CXmlDocument()
{
    m_table.Reset(8);
}

CXmlDocument::~CXmlDocument() = default;

CountedHandle<CXmlDocument> NewDocument()
{
    auto document = std::make_shared<CXmlDocument>();
    document->m_text = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    document->m_flags = kXmlDocIgnoreCase;
    document->m_table[0].length = static_cast<std::uint32_t>(document->m_text.size());
    return document;
}

bool CXmlDocument::SetDoc(const wchar_t* text)
{
    return SetDoc(text ? std::wstring_view(text) : std::wstring_view());
}

bool CXmlDocument::SetDoc(std::wstring_view text)
{
    const wchar_t* own = m_text.data();
    if (text.data() >= own && text.data() <= own + m_text.size() && !text.empty())
    {
        const std::wstring copy(text); // the document's own text, or part of it
        return SetDoc(std::wstring_view(copy));
    }
    m_result.clear();
    m_flags &= ~kXmlDocModified;
    // The text is copied in pieces, each parsed while it is in the cache.
    m_text.clear();
    m_text.reserve(text.size());
    CXmlTextPieces pieces(text, kParsePiece);
    return FinishParse(m_builder.Build(m_text, &pieces, text.size(), IgnoresCase(), m_table));
}

// The first parse error follows the load description, if any.
bool CXmlDocument::FinishParse(std::wstring error)
{
    if (!error.empty())
    {
        if (!m_result.empty())
            m_result += L", ";
        m_result += error;
    }
    m_parseError = std::move(error);
    ResetPositions();
    return CXmlTreeBuilder::IsWellFormed(m_table);
}

void CXmlDocument::ResetPositions()
{
    m_parent = 0;
    m_current = 0;
    m_child = 0;
}

// The start tag of an element without its "<" and ">", within the text.
std::wstring_view CXmlDocument::StartTag(std::uint32_t element) const
{
    const XmlElementRecord& record = m_table[element];
    const std::size_t begin = std::min<std::size_t>(record.start + 1, m_text.size());
    const std::size_t end = std::min<std::size_t>(
        std::max<std::size_t>(record.start + StartTagLength(record), begin + 1) - 1, m_text.size());
    return std::wstring_view(m_text).substr(begin, std::max(begin, end) - begin);
}

// Paths: a step is a name or "*" with an optional test ("[2]", "[@id]",
// "[artist]"); further steps, after "/", search the children of the element
// found so far. "/" at the start searches from the root element; "//" at
// the start takes one step and searches forward in document order.
bool CXmlDocument::FindElem(std::wstring_view path)
{
    const std::uint32_t first = m_current ? m_table[m_current].next : m_table[m_parent].firstChild;
    const std::uint32_t found = FindPath(path, first, m_current ? m_current : m_parent);
    if (found == 0)
        return false;
    m_current = found;
    m_parent = m_table[found].parent;
    m_child = 0;
    return true;
}

bool CXmlDocument::FindChildElem(std::wstring_view path)
{
    if (m_current == 0 && !FindElem())
        return false;
    const std::uint32_t first = m_child ? m_table[m_child].next : m_table[m_current].firstChild;
    const std::uint32_t found = FindPath(path, first, m_child ? m_child : m_current);
    if (found == 0)
        return false;
    m_child = found;
    return true;
}

bool CXmlDocument::IntoElem()
{
    if (m_current == 0)
        return false;
    m_parent = m_current;
    m_current = m_child;
    m_child = 0;
    return true;
}

bool CXmlDocument::OutOfElem()
{
    if (m_parent == 0)
        return false;
    m_child = m_current;
    m_current = m_parent;
    m_parent = m_table[m_parent].parent;
    return true;
}

std::uint32_t CXmlDocument::FindPath(std::wstring_view path, std::uint32_t firstCandidate,
                                     std::uint32_t searchedFrom) const
{
    // A path that is one name, the common case, is matched without being
    // read as steps.
    const XmlPathKind kind = KindOfXmlPath(path);
    if (kind != XmlPathKind::Steps)
        return kind == XmlPathKind::Name ? NextNamed(path, firstCandidate) : 0;
    const bool fromRoot = !path.empty() && path[0] == L'/';
    if (fromRoot && path.size() > 1 && path[1] == L'/')
    {
        const XmlPathStep step = ParseXmlPathStep(path.substr(2));
        std::uint32_t count = 0;
        for (std::uint32_t element = NextInDocumentOrder(searchedFrom); element != 0;
             element = NextInDocumentOrder(element))
        {
            if (!StepMatches(element, step))
                continue;
            if (step.test != XmlPathStep::Test::Position || ++count == step.position)
                return element;
        }
        return 0;
    }
    if (fromRoot)
        return MatchSteps(path.substr(1), m_table[0].firstChild);
    return MatchSteps(path, firstCandidate);
}

// The first element from firstCandidate on (through its next siblings) that
// matches the first step and, below it, the rest of the path. Each step looks
// only at the children of the elements found by the step before, so every
// element is looked at once per step.
std::uint32_t CXmlDocument::MatchSteps(std::wstring_view path, std::uint32_t firstCandidate) const
{
    const XmlPathStep step = ParseXmlPathStep(path);
    std::uint32_t count = 0;
    for (std::uint32_t element = firstCandidate; element != 0; element = m_table[element].next)
    {
        if (!StepMatches(element, step))
            continue;
        const bool positional = step.test == XmlPathStep::Test::Position;
        if (positional && ++count != step.position)
            continue;
        if (step.rest.empty())
            return element;
        const std::uint32_t found = MatchSteps(step.rest, m_table[element].firstChild);
        if (found != 0 || positional)
            return found;
    }
    return 0;
}

// The first element from firstCandidate on (through its next siblings)
// with the given name, which holds no character that ends tag names.
std::uint32_t CXmlDocument::NextNamed(std::wstring_view name, std::uint32_t firstCandidate) const
{
    for (std::uint32_t element = firstCandidate; element != 0; element = m_table[element].next)
    {
        if (XmlTagNameIsPlainName(StartTag(element), name, IgnoresCase()))
            return element;
    }
    return 0;
}

bool CXmlDocument::StepMatches(std::uint32_t element, const XmlPathStep& step) const
{
    if (!step.MatchesAnyName() && !XmlTagNameIs(StartTag(element), step.name, IgnoresCase()))
        return false;
    switch (step.test)
    {
    case XmlPathStep::Test::Attribute: {
        std::wstring_view value;
        return FindXmlAttribute(TagAttributes(element), step.testName, IgnoresCase(), value);
    }
    case XmlPathStep::Test::Child:
        return HasChildNamed(element, step.testName);
    default:
        return true;
    }
}

bool CXmlDocument::HasChildNamed(std::uint32_t element, std::wstring_view name) const
{
    for (std::uint32_t child = m_table[element].firstChild; child != 0; child = m_table[child].next)
    {
        if (name.empty() || XmlTagNameIs(StartTag(child), name, IgnoresCase()))
            return true;
    }
    return false;
}

std::uint32_t CXmlDocument::NextInDocumentOrder(std::uint32_t element) const
{
    if (m_table[element].firstChild != 0)
        return m_table[element].firstChild;
    while (element != 0)
    {
        if (m_table[element].next != 0)
            return m_table[element].next;
        element = m_table[element].parent;
    }
    return 0;
}

std::wstring_view CXmlDocument::TagName(std::uint32_t element) const
{
    const std::wstring_view tag = StartTag(element);
    return tag.substr(0, XmlTagNameLength(tag));
}

std::wstring_view CXmlDocument::TagAttributes(std::uint32_t element) const
{
    const std::wstring_view tag = StartTag(element);
    return tag.substr(XmlTagNameLength(tag));
}

std::wstring CXmlDocument::GetData() const
{
    std::wstring data;
    GetData(data);
    return data;
}

void CXmlDocument::GetData(std::wstring& data) const
{
    data.clear();
    if (m_current == 0)
        return;
    const XmlElementRecord& record = m_table[m_current];
    const std::size_t endTag = EndTagLength(record);
    if (record.firstChild != 0 || endTag == 0 || endTag > record.length)
        return;
    const std::size_t begin = record.start + StartTagLength(record);
    const std::size_t end =
        std::min<std::size_t>(record.start + record.length - endTag, m_text.size());
    if (begin >= end)
        return;
    // Plain text, the common case, is copied as it stands.
    const wchar_t* text = m_text.data();
    const wchar_t* special = FindXmlCharacter(text + begin, text + end, L'<', L'&');
    if (special == text + end)
        data.assign(text + begin, end - begin);
    else if (FindXmlCharacter(special, text + end, L'<') == text + end)
        AppendXmlUnescaped(std::wstring_view(text + begin, end - begin), data);
    else
        AppendMixedData(begin, end, data);
}

// Mixed content: the pieces of text and the CDATA sections, in order.
void CXmlDocument::AppendMixedData(std::size_t begin, std::size_t end, std::wstring& data) const
{
    const wchar_t* text = m_text.data();
    for (std::size_t offset = begin; offset < end;)
    {
        const XmlToken token = NextXmlToken(text, end, offset);
        if (token.type == XmlNodeType::Text)
        {
            AppendXmlUnescaped(std::wstring_view(text + token.start, token.length), data);
        }
        else if (token.type == XmlNodeType::Cdata)
        {
            const std::size_t from = token.start + 9; // after "<![CDATA["
            const std::size_t to = token.End() - 3;   // before "]]>"
            if (from < to)
                data.append(text + from, to - from);
        }
        offset = token.End();
    }
}

std::wstring CXmlDocument::GetTagName() const
{
    return m_current ? std::wstring(TagName(m_current)) : std::wstring();
}

std::wstring CXmlDocument::GetAttrib(std::wstring_view name) const
{
    std::wstring_view value;
    if (m_current == 0 || name.empty() ||
        !FindXmlAttribute(TagAttributes(m_current), name, IgnoresCase(), value))
        return {};
    return UnescapeXmlText(value);
}

} // namespace cvas
