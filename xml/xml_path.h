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

    bool MatchesAnyName() const { return name.empty() || name == L"*"; }
};

// Reads the first step of path. A name ends at the end of the path or at
// one of " =/[]"; what follows an attribute name up to "]" is skipped.
XmlPathStep ParseXmlPathStep(std::wstring_view path);

} // namespace cvas
