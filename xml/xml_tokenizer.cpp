#include "xml/xml_tokenizer.h"

#include <cstdint>
#include <cwchar>
#include <string_view>

namespace cvas
{
namespace
{

std::size_t Find(const wchar_t* text, std::size_t from, std::size_t end, wchar_t c)
{
    if (from >= end)
        return end;
    const wchar_t* found = std::wmemchr(text + from, c, end - from);
    return found ? static_cast<std::size_t>(found - text) : end;
}

constexpr std::size_t kNotFound = std::wstring_view::npos;

// Offset just past the first occurrence of the closing mark at or after
// from, or kNotFound.
std::size_t FindClose(const wchar_t* text, std::size_t from, std::size_t end,
                      std::wstring_view mark)
{
    if (from >= end)
        return kNotFound;
    const std::size_t found = std::wstring_view(text + from, end - from).find(mark);
    return found == kNotFound ? kNotFound : from + found + mark.size();
}

XmlToken Unterminated(XmlToken token, std::size_t end, XmlNodeType kind)
{
    token.type = XmlNodeType::Error;
    token.length = end - token.start;
    token.error = XmlTokenError::Unterminated;
    token.errorOffset = token.start;
    token.unterminatedKind = kind;
    return token;
}

// An error token runs to the next ">" but stops before a "<".
XmlToken Incorrect(XmlToken token, const wchar_t* text, std::size_t end, XmlTokenError error)
{
    std::size_t i = token.start + 1;
    while (i < end && text[i] != L'<' && text[i] != L'>')
        ++i;
    if (i < end && text[i] == L'>')
        ++i;
    token.type = XmlNodeType::Error;
    token.length = i - token.start;
    token.error = error;
    token.errorOffset = token.start;
    return token;
}

std::size_t NameLength(const wchar_t* text, std::size_t from, std::size_t end)
{
    std::size_t i = from;
    while (i < end && !EndsXmlTokenName(text[i]))
        ++i;
    return i - from;
}

XmlToken ElementTag(XmlToken token, const wchar_t* text, std::size_t end)
{
    const std::size_t nameStart = token.start + 1;
    // Quotes of either kind toggle quoted mode, in which ">" does not end the
    // tag; a quote of the other kind inside quotes is plain.
    wchar_t quote = 0;
    std::size_t i = nameStart;
    for (; i < end; ++i)
    {
        const wchar_t c = text[i];
        if (quote != 0)
        {
            if (c == quote)
                quote = 0;
        }
        else if (c == L'>')
        {
            break;
        }
        else if (c == L'"' || c == L'\'')
        {
            quote = c;
        }
    }
    if (i >= end)
        return Unterminated(token, end, XmlNodeType::Element);
    token.type = XmlNodeType::Element;
    token.length = i + 1 - token.start;
    token.nameLength = NameLength(text, nameStart, i);
    token.empty = text[i - 1] == L'/';
    return token;
}

XmlToken EndTag(XmlToken token, const wchar_t* text, std::size_t end)
{
    const std::size_t close = Find(text, token.start + 2, end, L'>');
    if (close >= end)
        return Unterminated(token, end, XmlNodeType::EndTag);
    token.type = XmlNodeType::EndTag;
    token.length = close + 1 - token.start;
    token.nameLength = NameLength(text, token.start + 2, close);
    return token;
}

XmlToken Delimited(XmlToken token, const wchar_t* text, std::size_t end, std::size_t from,
                   std::wstring_view mark, XmlNodeType type)
{
    const std::size_t close = FindClose(text, from, end, mark);
    if (close == kNotFound)
        return Unterminated(token, end, type);
    token.type = type;
    token.length = close - token.start;
    return token;
}

// What follows "<!" at offset i (inside a document type declaration the
// letters E, A and N open its other declarations).
XmlTokenError CheckDeclaration(const wchar_t* text, std::size_t end, std::size_t i, bool inDoctype)
{
    if (i + 2 >= end)
        return XmlTokenError::None; // cut off: reported as unterminated
    const wchar_t c = text[i + 2];
    if (c == L'-')
        return i + 3 < end && text[i + 3] != L'-' ? XmlTokenError::CommentTag : XmlTokenError::None;
    if (c == L'[')
        return i + 3 < end && text[i + 3] != L'C' ? XmlTokenError::Tag : XmlTokenError::None;
    if (c == L'D' || (inDoctype && (c == L'E' || c == L'A' || c == L'N')))
        return XmlTokenError::None;
    return XmlTokenError::BangTag;
}

// A document type declaration: "<" opens nested declarations and the first
// ">" at nesting level zero ends it, so its internal subset is skipped whole.
XmlToken Doctype(XmlToken token, const wchar_t* text, std::size_t end)
{
    std::size_t depth = 0;
    for (std::size_t i = token.start + 2; i < end; ++i)
    {
        if (text[i] == L'<')
        {
            ++depth;
            if (i + 1 < end && text[i + 1] == L'!' && token.error == XmlTokenError::None)
            {
                token.error = CheckDeclaration(text, end, i, true);
                token.errorOffset = i;
            }
        }
        else if (text[i] == L'>')
        {
            if (depth == 0)
            {
                token.type =
                    token.error == XmlTokenError::None ? XmlNodeType::Doctype : XmlNodeType::Error;
                token.length = i + 1 - token.start;
                return token;
            }
            --depth;
        }
    }
    if (token.error != XmlTokenError::None)
    {
        token.type = XmlNodeType::Error;
        token.length = end - token.start;
        return token;
    }
    return Unterminated(token, end, XmlNodeType::Doctype);
}

XmlToken Declaration(XmlToken token, const wchar_t* text, std::size_t end)
{
    const std::size_t at = token.start;
    if (at + 2 >= end || ((text[at + 2] == L'-' || text[at + 2] == L'[') && at + 3 >= end))
        return Unterminated(token, end, XmlNodeType::Error);
    const XmlTokenError error = CheckDeclaration(text, end, at, false);
    if (error != XmlTokenError::None)
        return Incorrect(token, text, end, error);
    switch (text[at + 2])
    {
    case L'-':
        return Delimited(token, text, end, at + 4, L"-->", XmlNodeType::Comment);
    case L'[':
        return Delimited(token, text, end, at + 4, L"]]>", XmlNodeType::Cdata);
    default:
        return Doctype(token, text, end);
    }
}

} // namespace

XmlToken NextXmlToken(const wchar_t* text, std::size_t end, std::size_t offset)
{
    XmlToken token;
    token.start = offset;
    if (offset >= end)
        return token;
    if (text[offset] != L'<')
    {
        // White space turns into text at the first other character; either
        // ends before the next "<".
        std::size_t i = offset;
        while (i < end && IsXmlSpace(text[i]))
            ++i;
        if (i < end && text[i] != L'<')
        {
            token.type = XmlNodeType::Text;
            i = Find(text, i, end, L'<');
        }
        else
        {
            token.type = XmlNodeType::Whitespace;
        }
        token.length = i - offset;
        return token;
    }
    if (offset + 1 >= end)
        return Unterminated(token, end, XmlNodeType::Error);
    const wchar_t next = text[offset + 1];
    if (StartsXmlElementTag(next))
        return ElementTag(token, text, end);
    if (next == L'/')
        return EndTag(token, text, end);
    if (next == L'?')
        return Delimited(token, text, end, offset + 2, L"?>", XmlNodeType::ProcessingInstruction);
    if (next == L'!')
        return Declaration(token, text, end);
    return Incorrect(token, text, end, XmlTokenError::TagNameCharacter);
}

std::wstring XmlTokenErrorText(const XmlToken& token)
{
    const std::wstring offset = std::to_wstring(token.errorOffset);
    switch (token.error)
    {
    case XmlTokenError::TagNameCharacter:
        return L"Incorrect tag name character at offset " + offset;
    case XmlTokenError::BangTag:
        return L"Incorrect ! tag at offset " + offset;
    case XmlTokenError::CommentTag:
        return L"Incorrect comment tag at offset " + offset;
    case XmlTokenError::Tag:
        return L"Incorrect tag at offset " + offset;
    case XmlTokenError::Unterminated:
        break;
    case XmlTokenError::None:
        return {};
    }
    const wchar_t* kind = L"tag";
    switch (token.unterminatedKind)
    {
    case XmlNodeType::Element:
        kind = L"Element tag";
        break;
    case XmlNodeType::EndTag:
        kind = L"Element end tag";
        break;
    case XmlNodeType::Cdata:
        kind = L"CDATA Section";
        break;
    case XmlNodeType::ProcessingInstruction:
        kind = L"Processing instruction";
        break;
    case XmlNodeType::Comment:
        kind = L"Comment";
        break;
    case XmlNodeType::Doctype:
        kind = L"Doctype";
        break;
    default:
        break;
    }
    return std::wstring(kind) + L" at offset " + offset + L" unterminated";
}

} // namespace cvas
