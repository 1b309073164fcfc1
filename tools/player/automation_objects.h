#pragma once
// The simulated player's automation object and the objects it hands out
// (playback, playlist, file, file list, play list), answered by dispatch id
// only. Every object counts its live references in a shared ledger, so that
// the player can tell at the end what the plug-in still holds. The objects
// may be called from any thread.

#include <oaidl.h>
#include <windows.h>

#include <array>
#include <atomic>
#include <string>

#include "tools/player/shared_player.h"

namespace cvas::player
{

enum class EObjectKind
{
    Automation,
    Playback,
    Playlist,
    File,
    FileList,
    PlayList,
};
constexpr std::size_t kObjectKinds = 6;

const wchar_t* KindName(EObjectKind kind);

class CRefLedger
{
public:
    void Add(EObjectKind kind, long delta) { m_counts[static_cast<std::size_t>(kind)] += delta; }
    long Held(EObjectKind kind) const { return m_counts[static_cast<std::size_t>(kind)]; }
    long Total() const;
    // "none", or the kinds held with their counts: "file 2, playback 1".
    std::wstring Describe() const;

private:
    std::array<std::atomic<long>, kObjectKinds> m_counts{};
};

struct CAutomationContext
{
    CSharedPlayer& player;
    CRefLedger& ledger;
    bool trace = false; // report every call, not only the refused ones
};

// The automation object, with one reference for the caller. The context
// must outlive every object made from it.
IDispatch* CreateAutomation(CAutomationContext& context);

} // namespace cvas::player
