#include "scrobbler/network/shared_internet_handles.h"

namespace cvas
{

bool CSharedInternetHandles::Keep(Slot slot, HINTERNET handle)
{
    CLock lock(m_lock);
    if (m_closed)
    {
        if (handle != nullptr)
            InternetCloseHandle(handle);
        return false;
    }
    if (m_handles[slot] != nullptr)
        InternetCloseHandle(m_handles[slot]);
    m_handles[slot] = handle;
    return true;
}

HINTERNET CSharedInternetHandles::Get(Slot slot) const
{
    CLock lock(m_lock);
    return m_handles[slot];
}

void CSharedInternetHandles::Close()
{
    CLock lock(m_lock);
    m_closed = true;
    for (int slot = kSlotCount - 1; slot >= 0; --slot)
    {
        if (m_handles[slot] != nullptr)
            InternetCloseHandle(m_handles[slot]);
        m_handles[slot] = nullptr;
    }
}

} // namespace cvas
