#include "buddies/buddy_fetch.h"

#include "buddies/buddy_feeds.h"
#include "scrobbler/network/open_url.h"
#include "scrobbler/queue/engine_state.h"
#include "settings/settings_values.h"
#include "support/wide_format.h"
#include "ui/dlg_status.h"

#include <memory>

namespace cvas
{
namespace
{

constexpr std::size_t kProgressChars = 1024;

// The feed's URL: the setting with the user name in place of its "%s". The
// setting is not used as a printf format, so that another '%' in it (an
// escape such as %20) stays as it is.
std::wstring FeedUrl(std::wstring format, const std::wstring& user)
{
    const std::size_t mark = format.find(L"%s");
    if (mark != std::wstring::npos)
        format.replace(mark, 2, user);
    return format;
}

// Opens url and reads the whole answer into text; false when either failed
// or was given up on (the transport tells why). The thread owns the
// progress window, whose messages are handled while it waits.
bool Fetch(const CBuddyFetchSettings& settings, const std::wstring& url,
           std::unique_ptr<COpenURL>& transport, std::wstring& text)
{
    return COpenURL::Open(settings.agentName, url, settings.timeoutMs, EventShutdown(),
                          WaitKind::PumpMessages, transport) &&
           transport->ReadAll(settings.timeoutMs, EventShutdown(), WaitKind::PumpMessages, text);
}

} // namespace

CBuddyFetchSettings MakeBuddyFetchSettings(const CSettingsValues& values)
{
    CBuddyFetchSettings settings;
    settings.agentName = values.AgentName;
    settings.buddiesUrl = values.BuddiesUrl;
    settings.userName = values.UserName;
    settings.recentTracksUrl = values.RecentTracksUrl;
    return settings;
}

void FetchBuddies(const CBuddyFetchSettings& settings, CDlgStatus& progress, CBuddyInfo& list)
{
    progress.SetProgressText(L"Fetching buddies ...");
    list.buddies.clear();
    std::unique_ptr<COpenURL> transport;
    std::wstring answer;
    if (!Fetch(settings, FeedUrl(settings.buddiesUrl, settings.userName), transport, answer) ||
        answer.empty())
        return;
    for (std::wstring& name : ParseFriendNames(answer))
    {
        auto buddy = std::make_shared<CBuddy>();
        buddy->name = std::move(name);
        list.buddies.push_back(std::move(buddy));
    }
}

void FetchAll(const CBuddyFetchSettings& settings, CDlgStatus& progress)
{
    auto list = std::make_shared<CBuddyInfo>();
    FetchBuddies(settings, progress, *list);
    bool anyFetched = false;
    for (const CountedHandle<CBuddy>& buddy : list->buddies)
    {
        progress.SetProgressText(
            FormatWide(kProgressChars, L"Processing %ls ...", buddy->name.c_str()));
        std::unique_ptr<COpenURL> transport;
        if (Fetch(settings, FeedUrl(settings.recentTracksUrl, buddy->name), transport,
                  buddy->rawRecentTracks))
        {
            anyFetched = true;
            continue;
        }
        transport->ReportFailure();
        if (transport->ShutdownRequested())
            break;
    }
    if (anyFetched)
        PublishBuddyList(std::move(list));
}

} // namespace cvas
