#pragma once
// Asks the player to skin the windows of the current thread, for the life of
// the object: players of major version 12 and later take the thread's id
// with 1, and with 0 at the end. Older players are left alone.

#include <oaidl.h>
#include <windows.h>

namespace cvas
{

class CSkinThread
{
public:
    explicit CSkinThread(IDispatch* automation);
    ~CSkinThread();
    CSkinThread(const CSkinThread&) = delete;
    CSkinThread& operator=(const CSkinThread&) = delete;

private:
    IDispatch* m_automation; // the caller keeps it alive
    bool m_skinned = false;
};

// The major version of the program this module runs in, read once from its
// version block; 0 when it has none.
int HostMajorVersion();

} // namespace cvas
