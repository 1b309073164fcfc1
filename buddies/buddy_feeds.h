#pragma once
// The buddy feeds of the web service, read from their texts: the user's
// friends and each friend's recent tracks, and the times the tracks carry.
// The Windows layer fetches the texts; everything here is plain text work.
//
// Tag and attribute names compare without regard to ASCII case, as in every
// document of the system (NewDocument).

#include <string>
#include <string_view>
#include <vector>

namespace cvas
{

// The "username" attribute of every "user" child of the top-level element
// "friends", in document order; a user without one gives an empty name,
// which is kept. An empty text, or one without "friends", gives no names.
std::vector<std::wstring> ParseFriendNames(std::wstring_view document);

// Whether the service answered with an error text instead of a feed: the
// text begins with exactly "Error:".
bool IsErrorAnswer(std::wstring_view response);

struct CParsedRecentTrack
{
    std::wstring artist;
    std::wstring name;
    std::wstring url;
    std::wstring uts; // the "uts" attribute of "date", as written
};

// The "track" children of the top-level element "recenttracks", in
// document order. Within a track, "artist", "name", "url" and "date" are
// searched among its children in that order, each search going on after
// the element the one before it found; a track where one of them is not
// found is left out. The first three give their text, "date" its "uts"
// attribute. Error answers are the caller's to filter out first.
std::vector<CParsedRecentTrack> ParseRecentTracks(std::wstring_view document);

// The whole number that text starts with, read the way atoi reads: leading
// white space, an optional sign, decimal digits up to the first other
// character; no digits give 0, and a number out of range is clamped.
long long UtsSeconds(std::wstring_view text);

// The local time of the instant as the Windows C library's asctime writes
// it, "Www Mmm dd hh:mm:ss yyyy" (the day with a leading zero, "Jan 01"),
// without trailing white space; empty when the C library cannot convert the
// time. The fields are written here, so a native build gives the same text.
std::wstring WhenText(long long utsSeconds);

} // namespace cvas
