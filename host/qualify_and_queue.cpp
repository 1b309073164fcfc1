#include "host/qualify_and_queue.h"

#include "host/automation_call.h"
#include "host/automation_ids.h"
#include "host/host_state.h"
#include "scrobbler/queue/submission_queue.h"
#include "settings/live_settings.h"
#include "support/com_values.h"
#include "support/logs.h"
#include "support/wide_format.h"

#include <algorithm>

namespace cvas
{
namespace
{

// Room for the fixed head of the filter with any key.
constexpr std::size_t kFilterHeadChars = 64;

// The library query for this one file and the user's filter. The player
// reads a query as one line, so line breaks in the filter become blanks.
std::wstring FilterText(int key)
{
    std::wstring filter = FormatWide(kFilterHeadChars, L"~d=a [key]=[%d] ", key);
    filter += Settings().Filter;
    std::replace_if(
        filter.begin(), filter.end(), [](wchar_t c) { return c == L'\n' || c == L'\r'; }, L' ');
    return filter;
}

HRESULT FillTemplate(IDispatch* file, const std::wstring& fieldTemplate, std::wstring& text)
{
    const CBstr argument(fieldTemplate);
    if (!argument)
        return E_OUTOFMEMORY;
    return CallForText(file, kFileFillTemplate, CallKind::Method, text,
                       {TextArgument(argument.Get())});
}

HRESULT CountMatches(int key, int& matches)
{
    const std::wstring filter = FilterText(key);
    StatusLog(0, L"Issuing the following filter: %ls", filter.c_str());
    const CBstr query(filter);
    if (!query)
        return E_OUTOFMEMORY;
    CComPtr<IDispatch> files;
    HRESULT hr = CallForObject(HostAutomation(), kAutomationQueryLibrary, CallKind::Method, files,
                               {TextArgument(query.Get())});
    if (SUCCEEDED(hr))
        hr = CallForInt(files.Get(), kFileListCount, CallKind::Method, matches);
    return hr;
}

HRESULT QueueIfMatched(IDispatch* file)
{
    int key = 0;
    HRESULT hr = CallForInt(file, kFileLibraryKey, CallKind::Method, key);
    int matches = 0;
    if (SUCCEEDED(hr))
        hr = CountMatches(key, matches);
    if (FAILED(hr))
        return hr;
    if (matches != 1)
    {
        StatusLog(0, L"File did not qualify (%d) therefore it's not being submitted!", matches);
        return S_OK;
    }
    const CSettingsValues& settings = Settings();
    std::wstring artist, album, name;
    int duration = 0;
    hr = FillTemplate(file, settings.Artist, artist);
    if (SUCCEEDED(hr))
        hr = FillTemplate(file, settings.Album, album);
    if (SUCCEEDED(hr))
        hr = FillTemplate(file, settings.Name, name);
    if (SUCCEEDED(hr))
        hr = CallForInt(file, kFileDuration, CallKind::Get, duration);
    if (SUCCEEDED(hr))
        Enqueue(std::move(artist), std::move(album), std::move(name), duration, settings.UseUTC);
    return hr;
}

} // namespace

void QualifyAndQueue(const CBXTracks& tracks, int position, int duration, bool& submitted)
{
    if (!IsScrobblingEnabled() || submitted || !tracks.Current)
        return;
    // Compared unsigned on purpose: a player that does not know a file's
    // length reports it negative, which reads as huge here, so such a file is
    // not ignored as short and qualifies at the high-water mark.
    const auto length = static_cast<unsigned>(duration);
    const auto played = static_cast<unsigned>(position);
    if (length < kShortestSubmittedSeconds)
    {
        StatusLog(0, L"Ignoring %ls as it's duration is %d seconds.", tracks.DisplayName.c_str(),
                  duration);
        submitted = true;
        return;
    }
    if (played < length / 2 && played < static_cast<unsigned>(Settings().HighWaterMark))
        return;
    const HRESULT hr = QueueIfMatched(tracks.Current.Get());
    if (FAILED(hr))
        StatusLog(0,
                  L"The player did not answer about the current file (0x%08x); it is not being "
                  L"submitted.",
                  static_cast<unsigned>(hr));
    submitted = true;
}

} // namespace cvas
