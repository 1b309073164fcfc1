#pragma once
// One step of a path for FindElem and FindChildElem: a name or "*",
// optionally followed by one bracketed test. Steps are separated by "/".

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

// The length of the name at the start of a path: up to the end or to the
// first of " =/[]".
inline std::size_t XmlPathNameLength(std::wstring_view path)
{
    std::size_t i = 0;
    for (; i < path.size(); ++i)
    {
        const wchar_t c = path[i];
        // Letters, the most common characters by far, take the first test only.
        if (c <= L']' && (c == L' ' || c == L'=' || c == L'/' || c == L'[' || c == L']'))
            break;
    }
    return i;
}

// Whether a path is a single name and nothing else, which matches elements
// by their name alone.
inline bool IsPlainXmlPathName(std::wstring_view path)
{
    return !path.empty() && XmlPathNameLength(path) == path.size() &&
           !(path.size() == 1 && path[0] == L'*');
}

// Reads the first step of path. A name ends at the end of the path or at
// one of " =/[]"; what follows an attribute name up to "]" is skipped.
XmlPathStep ParseXmlPathStep(std::wstring_view path);

} // namespace cvas
