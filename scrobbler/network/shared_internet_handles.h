#pragma once
// The WinINet handles of one exchange with the service, held jointly by the
// thread that makes the blocking calls and by the side that waits for it;
// whichever lets go last frees them. When the waiting side gives up on the
// thread it closes them: on Windows that aborts the blocked call, and the
// thread, which runs on until its call returns, cannot store a handle that
// nobody would close.

#include <windows.h>
#include <wininet.h>

#include "support/critical_section.h"

namespace cvas
{

class CSharedInternetHandles
{
public:
    enum Slot
    {
        kSession,
        kRequest,
        kSlotCount,
    };

    CSharedInternetHandles() = default;
    ~CSharedInternetHandles() { Close(); }
    CSharedInternetHandles(const CSharedInternetHandles&) = delete;
    CSharedInternetHandles& operator=(const CSharedInternetHandles&) = delete;

    // Keeps handle in slot. Once the handles are closed, a handle that comes
    // late is closed at once and false comes back.
    bool Keep(Slot slot, HINTERNET handle);
    // The handle in slot; null when there is none or the handles are closed.
    HINTERNET Get(Slot slot) const;
    // Closes every handle, the request before the session, and refuses
    // later ones.
    void Close();

private:
    mutable CCriticalSection m_lock;
    HINTERNET m_handles[kSlotCount] = {};
    bool m_closed = false;
};

} // namespace cvas
