#pragma once
// The members of the player's automation object and of the objects it hands
// out. The player publishes no type library we could bind to, so every call
// goes by these dispatch ids.

#include <oaidl.h>

namespace cvas
{

// The automation object (methods).
constexpr DISPID kAutomationPlayback = 1;         // the playback object
constexpr DISPID kAutomationQueryLibrary = 2;     // (query text) the library files that match
constexpr DISPID kAutomationCurrentPlaylist = 3;  // the current playlist
constexpr DISPID kAutomationPlayRequestList = 23; // the list a play request fills

// The playback object (properties).
constexpr DISPID kPlaybackState = 1;    // kPlaybackPlaying while a file plays
constexpr DISPID kPlaybackPosition = 3; // seconds into the current file
constexpr int kPlaybackPlaying = 2;

// The current playlist.
constexpr DISPID kPlaylistCurrentIndex = 1; // property, from 0
constexpr DISPID kPlaylistCount = 4;        // method
constexpr DISPID kPlaylistItem = 5;         // method (index): a file

// A file of a playlist or of the library.
constexpr DISPID kFileIdentity = 1;     // property: the text that tells files apart
constexpr DISPID kFileName = 3;         // property: the file name with its extension
constexpr DISPID kFileDuration = 6;     // property: seconds, negative when unknown
constexpr DISPID kFileFurtherText = 28; // method
constexpr DISPID kFileLibraryKey = 35;  // method
constexpr DISPID kFileFillTemplate =
    38; // method (template): the template with the fields filled in

// The list of files a library query found (methods).
constexpr DISPID kFileListCount = 1;
constexpr DISPID kFileListItem = 5; // (index from 0): a file

// The automation object: skinning of a thread's windows (method; thread id,
// 1 on or 0 off), in players of major version 12 and later.
constexpr DISPID kAutomationSkinThread = 32;

// The list a play request fills (methods).
constexpr DISPID kPlayListStart = 4;    // (0) start playing
constexpr DISPID kPlayListAddByKey = 9; // (library key)

} // namespace cvas
