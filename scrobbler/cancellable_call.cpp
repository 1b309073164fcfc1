#include "scrobbler/cancellable_call.h"

#include "support/win_handle.h"

namespace cvas
{
namespace
{

// TerminateThread returns before the thread is gone; its argument must
// outlive it.
constexpr DWORD kTerminationWaitMs = 5000;

} // namespace

CallEnd RunCancellableCall(LPTHREAD_START_ROUTINE work, void* argument, DWORD timeoutMs,
                           HANDLE shutdown, DWORD& error)
{
    const CHandle thread(CreateThread(nullptr, 0, work, argument, 0, nullptr));
    if (!thread)
    {
        error = GetLastError();
        return CallEnd::NoThread;
    }
    const HANDLE waits[2] = {thread.Get(), shutdown};
    const DWORD result = WaitForMultipleObjects(2, waits, FALSE, timeoutMs);
    if (result == WAIT_OBJECT_0)
        return CallEnd::Finished;
    TerminateThread(thread.Get(), 0);
    WaitForSingleObject(thread.Get(), kTerminationWaitMs);
    return result == WAIT_OBJECT_0 + 1 ? CallEnd::Shutdown : CallEnd::TimedOut;
}

} // namespace cvas
