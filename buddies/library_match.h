#pragma once
// A friend's track looked up in the player's own library.

#include <oaidl.h>

#include <string>

namespace cvas
{

struct CLibraryMatch
{
    std::wstring fileName;
    int key = 0;
};

// Searches the library for "artist=[%s] name=[%s]", the texts inserted as
// they are; true with the first file's name and key when any file matched.
bool MatchInLibrary(IDispatch* automation, const std::wstring& artist, const std::wstring& name,
                    CLibraryMatch& match);

} // namespace cvas
