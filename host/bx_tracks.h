#pragma once
// A snapshot of the player's current playlist around the file it is on.

#include <oaidl.h>

#include <string>

#include "support/com_ptr.h"
#include "support/counted_handle.h"

namespace cvas
{

struct CBXTracks
{
    // Empty at the playlist's ends; Current is empty when the playlist is
    // empty or its index points at no file.
    CComPtr<IDispatch> Current;
    CComPtr<IDispatch> Previous;
    CComPtr<IDispatch> Next;
    // The display name is left empty on purpose and the player's file name
    // goes into FileName: messages that name the file show an empty name,
    // and the extension, taken from the display name, stays empty too.
    std::wstring DisplayName;
    std::wstring Extension;
    std::wstring FileName;
    int Position = 0; // the current file's index plus 1; 0 with no current file
    int Count = 0;    // the playlist's length; 0 with no current file
    std::wstring FurtherText;

    // Empties every field; the texts keep their buffers for the next use.
    void Clear();
    // Drops the references to the player's files.
    void ReleaseFiles();
};

// Fills tracks afresh from the automation object. A failure to reach the
// player raises CFatalError after its message box: the current playlist
// ("Crash while trying to get the current playlist object!") or the files
// in it ("Crash while trying to get the currently playing now track!a"
// with the index and the count).
void MakeTracks(IDispatch* automation, CBXTracks& tracks);
// A new snapshot to hand around.
CountedHandle<CBXTracks> MakeTracks(IDispatch* automation);

} // namespace cvas
