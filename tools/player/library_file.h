#pragma once
// One file of the simulated player's library: what the automation object
// reports about it, and its named fields for templates and queries.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cvas::player
{

struct CLibraryFile
{
    int key = 0;
    std::wstring identity; // compared by the plug-in between polls
    std::wstring fileName; // with extension; its extension is the file type
    int duration = 0;      // seconds; negative means unknown
    std::wstring further;  // the further text the file reports
    // Fields such as ARTIST, ALBUM, NAME, GENRE, in the order given.
    std::vector<std::pair<std::wstring, std::wstring>> fields;
};

// A song of the library: its file name, which is also its identity, and
// its ARTIST and NAME fields.
CLibraryFile SongFile(int key, std::wstring fileName, std::wstring artist, std::wstring name,
                      int duration = 240);

// Equality of letters regardless of case (ASCII, Latin-1, Greek, Cyrillic).
bool EqualsIgnoringCase(std::wstring_view a, std::wstring_view b);

// The text after the last '.' of the name's last path part, or empty.
std::wstring FileType(std::wstring_view fileName);

// The value of a field by name, regardless of case: the built-in KEY,
// IDENTITY, FILENAME, FILETYPE, DURATION, or one of the file's fields.
std::optional<std::wstring> FieldValue(const CLibraryFile& file, std::wstring_view name);

// The template with every "[WORD]" that names a field replaced by its value;
// brackets around other words stay as they are.
std::wstring FillTemplate(const CLibraryFile& file, std::wstring_view text);

} // namespace cvas::player
