#include "host/bx_tracks.h"

#include "host/automation_call.h"
#include "host/automation_ids.h"
#include "support/critical_section.h"
#include "support/message_box.h"

#include <memory>

namespace cvas
{
namespace
{

// The further text of the file last asked for, keyed by its display name.
// The key starts empty and so does every display name, so the player is
// never actually asked; callers on other threads share it, hence the lock.
struct CFurtherTextCache
{
    CCriticalSection lock;
    std::wstring key;
    std::wstring text;
};

CFurtherTextCache& FurtherTextCache()
{
    static CFurtherTextCache cache;
    return cache;
}

HRESULT ReadFurtherText(CBXTracks& tracks)
{
    CFurtherTextCache& cache = FurtherTextCache();
    CLock lock(cache.lock);
    if (!tracks.Current)
    {
        cache.text.clear();
        return S_OK;
    }
    if (tracks.DisplayName != cache.key)
    {
        const HRESULT hr =
            CallForText(tracks.Current.Get(), kFileFurtherText, CallKind::Method, cache.text);
        if (FAILED(hr))
            return hr;
        cache.key = tracks.DisplayName;
    }
    tracks.FurtherText = cache.text;
    return S_OK;
}

HRESULT ReadFiles(IDispatch* playlist, CBXTracks& tracks, int& count, int& index)
{
    HRESULT hr = CallForInt(playlist, kPlaylistCount, CallKind::Method, count);
    if (SUCCEEDED(hr))
        hr = CallForInt(playlist, kPlaylistCurrentIndex, CallKind::Get, index);
    if (FAILED(hr))
        return hr;
    // Unsigned, so that a negative index (no current file) is out of range.
    if (count != 0 && static_cast<unsigned>(index) < static_cast<unsigned>(count))
    {
        hr = CallForObject(playlist, kPlaylistItem, CallKind::Method, tracks.Current,
                           {IntArgument(index)});
        if (SUCCEEDED(hr) && index > 0)
            hr = CallForObject(playlist, kPlaylistItem, CallKind::Method, tracks.Previous,
                               {IntArgument(index - 1)});
        if (SUCCEEDED(hr) && index < count - 1)
            hr = CallForObject(playlist, kPlaylistItem, CallKind::Method, tracks.Next,
                               {IntArgument(index + 1)});
        if (SUCCEEDED(hr))
            hr = CallForText(tracks.Current.Get(), kFileName, CallKind::Get, tracks.FileName);
        if (FAILED(hr))
            return hr;
        tracks.Position = index + 1;
        tracks.Count = count;
    }
    const std::size_t dot = tracks.DisplayName.rfind(L'.');
    if (dot != std::wstring::npos)
        tracks.Extension.assign(tracks.DisplayName, dot + 1);
    return ReadFurtherText(tracks);
}

} // namespace

void CBXTracks::Clear()
{
    ReleaseFiles();
    DisplayName.clear();
    Extension.clear();
    FileName.clear();
    Position = 0;
    Count = 0;
    FurtherText.clear();
}

void CBXTracks::ReleaseFiles()
{
    Current.Release();
    Previous.Release();
    Next.Release();
}

void MakeTracks(IDispatch* automation, CBXTracks& tracks)
{
    tracks.Clear();
    CComPtr<IDispatch> playlist;
    if (FAILED(CallForObject(automation, kAutomationCurrentPlaylist, CallKind::Method, playlist)))
        FatalMessage(L"Crash while trying to get the current playlist object!");
    int count = 0;
    int index = 0;
    if (FAILED(ReadFiles(playlist.Get(), tracks, count, index)))
        FatalMessage(L"%ls %d %d", L"Crash while trying to get the currently playing now track!a",
                     index, count);
}

CountedHandle<CBXTracks> MakeTracks(IDispatch* automation)
{
    auto tracks = std::make_shared<CBXTracks>();
    MakeTracks(automation, *tracks);
    return tracks;
}

} // namespace cvas
