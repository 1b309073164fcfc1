#pragma once
// How tag and attribute names are delimited and compared.

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

// Whether two names have the same characters; with ignoreCase the ASCII
// letters match without regard to case (other characters must be equal, so
// the result is the same whatever the C runtime's locale).
bool XmlNamesEqual(std::wstring_view a, std::wstring_view b, bool ignoreCase);

// Writes into key a text that is the same for two names exactly when
// XmlNamesEqual holds for them.
void XmlNameKey(std::wstring_view name, bool ignoreCase, std::wstring& key);

// Looks for the named attribute in the text of a tag after its name
// (attributes are name="value", name='value', name=value or a bare name);
// on success gives the value as written, without its quotes.
bool FindXmlAttribute(std::wstring_view attributes, std::wstring_view name, bool ignoreCase,
                      std::wstring_view& value);

} // namespace cvas
