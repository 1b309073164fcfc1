#pragma once
// The library's query language, as the simulated player understands it.
//
// A query is a list of terms separated by blanks (spaces or tabs), all of
// which a file must match:
//   FIELD=VALUE,VALUE...  the file's field equals one of the values, letters
//                         compared regardless of case (KEY and DURATION as
//                         whole numbers); FIELD may be written [FIELD], a
//                         VALUE [VALUE], which may then hold blanks and ends
//                         at the first ']' followed by a blank, ',' or the end
//   ~d=a, ~d=d            an option: order the result by key, ascending or
//                         descending; it matches every file
// A field that a file lacks has the empty text. Anything else, a line break
// included, is a syntax error, and the query then matches no file.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/player/library_file.h"

namespace cvas::player
{

struct CQueryResult
{
    std::wstring error;               // empty when the query was understood
    std::vector<std::size_t> matches; // indexes into the library, in result order
};

CQueryResult RunQuery(const std::vector<CLibraryFile>& library, std::wstring_view query);

} // namespace cvas::player
