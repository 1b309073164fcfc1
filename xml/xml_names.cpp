#include "xml/xml_names.h"

#include <algorithm>

#include "xml/xml_tokenizer.h"

namespace cvas
{
namespace
{

bool EndsAttributeName(wchar_t c)
{
    return IsXmlSpace(c) || c == L'=' || c == L'/' || c == L'>' || c == L'"' || c == L'\'';
}

} // namespace

std::size_t XmlTagNameLength(std::wstring_view tagText)
{
    std::size_t i = 0;
    while (i < tagText.size() && !EndsXmlTagName(tagText[i]))
        ++i;
    return i;
}

bool XmlNamesEqual(std::wstring_view a, std::wstring_view b, bool ignoreCase)
{
    if (a.size() != b.size())
        return false;
    if (!ignoreCase)
        return a == b;
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        if (!SameXmlNameCharacter(a[i], b[i], true))
            return false;
    }
    return true;
}

void XmlNameKey(std::wstring_view name, bool ignoreCase, std::wstring& key)
{
    key.assign(name);
    if (ignoreCase)
        std::transform(key.begin(), key.end(), key.begin(), FoldXmlNameCharacter);
}

bool FindXmlAttribute(std::wstring_view attributes, std::wstring_view name, bool ignoreCase,
                      std::wstring_view& value)
{
    const std::wstring_view a = attributes;
    const std::size_t n = a.size();
    std::size_t i = 0;
    while (i < n)
    {
        while (i < n && IsXmlSpace(a[i]))
            ++i;
        const std::size_t nameStart = i;
        while (i < n && !EndsAttributeName(a[i]))
            ++i;
        const std::wstring_view found = a.substr(nameStart, i - nameStart);
        while (i < n && IsXmlSpace(a[i]))
            ++i;
        if (i >= n)
        {
            if (!found.empty() && XmlNamesEqual(found, name, ignoreCase))
            {
                value = {};
                return true;
            }
            break;
        }
        std::wstring_view foundValue;
        if (a[i] == L'=')
        {
            ++i;
            while (i < n && IsXmlSpace(a[i]))
                ++i;
            if (i < n && (a[i] == L'"' || a[i] == L'\''))
            {
                const std::size_t close = a.find(a[i], i + 1);
                const std::size_t end = close == std::wstring_view::npos ? n : close;
                foundValue = a.substr(i + 1, end - (i + 1));
                i = end < n ? end + 1 : n;
            }
            else
            {
                const std::size_t valueStart = i;
                while (i < n && !IsXmlSpace(a[i]) && a[i] != L'>')
                    ++i;
                foundValue = a.substr(valueStart, i - valueStart);
            }
        }
        else if (found.empty())
        {
            ++i; // a stray quote, "/" or ">"
            continue;
        }
        if (!found.empty() && XmlNamesEqual(found, name, ignoreCase))
        {
            value = foundValue;
            return true;
        }
    }
    return false;
}

} // namespace cvas
