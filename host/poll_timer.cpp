#include "host/poll_timer.h"

#include "host/automation_call.h"
#include "host/automation_ids.h"
#include "host/bx_tracks.h"
#include "host/host_state.h"
#include "host/qualify_and_queue.h"
#include "settings/live_settings.h"
#include "support/callback_boundary.h"
#include "support/message_box.h"

#include <string>

namespace cvas
{
namespace
{

// What the poll remembers between ticks; the UI thread alone touches it.
// The snapshot and the identity text are kept too, only so that their
// buffers are reused and a poll allocates nothing of its own.
struct CPlayTracking
{
    std::wstring lastIdentity;
    bool submitted = false;
    int duration = 0;
    std::wstring identity;
    CBXTracks snapshot;
};

CPlayTracking g_tracking;

// No poll holds on to the player's files past its end, even one that fails.
class CSnapshotFiles
{
public:
    explicit CSnapshotFiles(CBXTracks& tracks) : m_tracks(tracks) {}
    ~CSnapshotFiles() { m_tracks.ReleaseFiles(); }
    CSnapshotFiles(const CSnapshotFiles&) = delete;
    CSnapshotFiles& operator=(const CSnapshotFiles&) = delete;

private:
    CBXTracks& m_tracks;
};

bool SameFile(const std::wstring& first, const std::wstring& second)
{
    return CompareStringOrdinal(first.data(), static_cast<int>(first.size()), second.data(),
                                static_cast<int>(second.size()), TRUE) == CSTR_EQUAL;
}

void PollPlayer()
{
    IDispatch* automation = HostAutomation();
    CComPtr<IDispatch> playback;
    if (FAILED(CallForObject(automation, kAutomationPlayback, CallKind::Method, playback)))
        FatalMessage(L"Crash while trying to get the playback object!");
    int state = 0;
    if (FAILED(CallForInt(playback.Get(), kPlaybackState, CallKind::Get, state)))
        return;

    CPlayTracking& tracking = g_tracking;
    const CSnapshotFiles files(tracking.snapshot);
    MakeTracks(automation, tracking.snapshot);
    IDispatch* current = tracking.snapshot.Current.Get();
    if (current == nullptr)
        return;
    if (FAILED(CallForText(current, kFileIdentity, CallKind::Get, tracking.identity)))
        return;
    if (!SameFile(tracking.identity, tracking.lastIdentity))
    {
        // Taken only once the duration is known, so that a failed read makes
        // the next poll see a new file again.
        int duration = 0;
        if (FAILED(CallForInt(current, kFileDuration, CallKind::Get, duration)))
            return;
        tracking.lastIdentity = tracking.identity;
        tracking.submitted = false;
        tracking.duration = duration;
        return;
    }
    int position = 0;
    if (FAILED(CallForInt(playback.Get(), kPlaybackPosition, CallKind::Get, position)))
        return;
    if (state == kPlaybackPlaying && !tracking.submitted && position >= 0)
        QualifyAndQueue(tracking.snapshot, position, tracking.duration, tracking.submitted);
}

} // namespace

bool StartPollTimer(HWND window)
{
    // A timer without a window gets a new id at each start, and KillTimer
    // with the fixed id would never find it.
    if (window == nullptr)
        return false;
    return SetTimer(window, kPollTimerId, static_cast<UINT>(Settings().PollTimeout),
                    PollProcedure) != 0;
}

void CALLBACK PollProcedure(HWND window, UINT, UINT_PTR, DWORD)
{
    // Entered at every poll and on purpose never left: the lock is
    // re-entrant and only the UI thread takes it, so Terminate still gets it
    // after any number of polls.
    HostLock().Enter();
    KillTimer(window, kPollTimerId);
    if (IsTerminating())
        return;
    // After a CFatalError the plug-in has lost the player, and the timer
    // stays off. Anything else ends this poll only, as a failed call to the
    // player does.
    if (GuardTimerProcedure(L"poll", &PollPlayer) != GuardedEnd::FatalError)
        StartPollTimer(window);
}

void ResetPlayTracking()
{
    g_tracking.lastIdentity.clear();
    g_tracking.submitted = false;
    g_tracking.duration = 0;
    g_tracking.snapshot.Clear();
}

} // namespace cvas
