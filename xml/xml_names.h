#pragma once
// How tag and attribute names are delimited and compared.

#include "xml/xml_char_search.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace cvas
{

// A tag's name, as paths, start tags and end tags alike match it, starts
// after "<" or "</" and ends at white space or one of "<>=\/?!".
constexpr bool EndsXmlTagName(wchar_t c)
{
    switch (c)
    {
    case L' ':
    case L'\t':
    case L'\n':
    case L'\r':
    case L'<':
    case L'>':
    case L'=':
    case L'\\':
    case L'/':
    case L'?':
    case L'!':
        return true;
    default:
        return false;
    }
}
std::size_t XmlTagNameLength(std::wstring_view tagText);

// Names compare with the ASCII letters folded to lower case when case is
// ignored (other characters must be equal, so the result is the same
// whatever the C runtime's locale).
inline wchar_t FoldXmlNameCharacter(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}

inline bool SameXmlNameCharacter(wchar_t a, wchar_t b, bool ignoreCase)
{
    return a == b || (ignoreCase && FoldXmlNameCharacter(a) == FoldXmlNameCharacter(b));
}

// Whether two names have the same characters, as above.
bool XmlNamesEqual(std::wstring_view a, std::wstring_view b, bool ignoreCase);

// Whether a name holds a character that ends tag names, so that no
// element can have it.
inline bool HoldsXmlTagNameEnd(std::wstring_view name)
{
    for (const wchar_t c : name)
    {
        if (c <= L'\\' && EndsXmlTagName(c)) // every such character is "\" or below
            return true;
    }
    return false;
}

// Whether the length characters at a and b are the same name. Names nearly
// always match exactly, which one comparison of the memory finds; only a
// difference is looked at letter by letter.
inline bool SameXmlName(const wchar_t* a, const wchar_t* b, std::size_t length, bool ignoreCase)
{
    if (SameXmlCharacters(a, b, length))
        return true;
    if (!ignoreCase)
        return false;
    for (std::size_t i = 0; i < length; ++i)
    {
        if (!SameXmlNameCharacter(a[i], b[i], true))
            return false;
    }
    return true;
}

// Whether the tag name at the start of tagText (as XmlTagNameLength ends it)
// is name, which holds no character that ends tag names: XmlNamesEqual on
// the name where it stands.
inline bool XmlTagNameIsPlainName(std::wstring_view tagText, std::wstring_view name,
                                  bool ignoreCase)
{
    const std::size_t n = name.size();
    if (tagText.size() < n || (tagText.size() > n && !EndsXmlTagName(tagText[n])))
        return false;
    return SameXmlName(tagText.data(), name.data(), n, ignoreCase);
}

// The same for any name.
inline bool XmlTagNameIs(std::wstring_view tagText, std::wstring_view name, bool ignoreCase)
{
    return !HoldsXmlTagNameEnd(name) && XmlTagNameIsPlainName(tagText, name, ignoreCase);
}

// Writes into key a text that is the same for two names exactly when
// XmlNamesEqual holds for them.
void XmlNameKey(std::wstring_view name, bool ignoreCase, std::wstring& key);

// Looks for the named attribute in the text of a tag after its name
// (attributes are name="value", name='value', name=value or a bare name);
// on success gives the value as written, without its quotes.
bool FindXmlAttribute(std::wstring_view attributes, std::wstring_view name, bool ignoreCase,
                      std::wstring_view& value);

} // namespace cvas
