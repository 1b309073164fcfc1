#pragma once
// The user's replacement table: pairs of a text to find and the text put in
// its place, applied to the artist, album and name of every track before it
// goes to the service.

#include <string>
#include <vector>

namespace cvas
{

struct CReplacement
{
    std::wstring lhs; // the text to find
    std::wstring rhs; // the text put in its place
};

// In file order; duplicate lhs values are allowed and all are applied.
using CReplacementTable = std::vector<CReplacement>;

// Applies every entry in table order, the output of one being the input of
// the next. Each replaces every occurrence of its lhs, case-sensitively,
// scanning left to right without looking at text it has put in. An entry
// with an empty lhs is not applied.
std::wstring ApplyReplacements(const CReplacementTable& table, std::wstring text);

} // namespace cvas
