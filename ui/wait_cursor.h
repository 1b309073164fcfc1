#pragma once
// The wait cursor for the life of the object, then the cursor there was.

#include <windows.h>

namespace cvas
{

class CWaitCursor
{
public:
    CWaitCursor() : m_previous(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}
    ~CWaitCursor() { SetCursor(m_previous); }
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;

private:
    HCURSOR m_previous;
};

} // namespace cvas
