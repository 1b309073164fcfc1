#pragma once
// One step of a path for FindElem and FindChildElem: a name or "*",
// optionally followed by one bracketed test. Steps are separated by "/".

#include "xml/xml_names.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cvas
{

struct XmlPathStep
{
    enum class Test
    {
        None,
        Position,  // [n]: the n-th matching element, from 1
        Attribute, // [@name]: the element has that attribute
        Child,     // [name]: the element has a child element of that name
    };

    std::wstring_view name; // empty or "*" matches any element
    Test test = Test::None;
    std::uint32_t position = 0;
    std::wstring_view testName;
    std::wstring_view rest; // the steps after this one, empty for the last

    bool MatchesAnyName() const { return name.empty() || (name.size() == 1 && name[0] == L'*'); }
};

// A name in a path ends at one of " =/[]". Letters, the most common
// characters by far, take the first test only.
inline bool EndsXmlPathName(wchar_t c)
{
    return c <= L']' && (c == L' ' || c == L'=' || c == L'/' || c == L'[' || c == L']');
}

// The length of the name at the start of a path.
inline std::size_t XmlPathNameLength(std::wstring_view path)
{
    std::size_t i = 0;
    while (i < path.size() && !EndsXmlPathName(path[i]))
        ++i;
    return i;
}

// What a path is: steps for ParseXmlPathStep, or a single name and nothing
// else, which matches elements by name alone, or such a name that no element
// has (it holds a character that ends tag names).
enum class XmlPathKind
{
    Steps,
    Name,
    NameOfNoElement,
};

inline XmlPathKind KindOfXmlPath(std::wstring_view path)
{
    if (path.empty() || (path.size() == 1 && path[0] == L'*'))
        return XmlPathKind::Steps;
    // One pass for both questions: this runs at every search.
    bool endsTagNames = false;
    for (const wchar_t c : path)
    {
        if (c > L']') // letters, the most common characters, end neither
            continue;
        if (EndsXmlPathName(c))
            return XmlPathKind::Steps;
        endsTagNames = endsTagNames || EndsXmlTagName(c);
    }
    return endsTagNames ? XmlPathKind::NameOfNoElement : XmlPathKind::Name;
}

// Reads the first step of path. A name ends at the end of the path or at
// one of " =/[]"; what follows an attribute name up to "]" is skipped.
XmlPathStep ParseXmlPathStep(std::wstring_view path);

} // namespace cvas
