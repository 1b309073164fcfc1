#include "scrobbler/network/cancellable_call.h"

namespace cvas
{

CallEnd RunCancellableCall(const std::shared_ptr<CCancellableWork>& work, DWORD timeoutMs,
                           HANDLE shutdown, WaitKind wait, DWORD& error)
{
    const CHandle thread = StartModuleThread(work, error);
    if (!thread)
        return CallEnd::NoThread;
    const HANDLE waits[2] = {thread.Get(), shutdown};
    const DWORD result = WaitForAny(waits, 2, timeoutMs, wait);
    if (result == WAIT_OBJECT_0)
        return CallEnd::Finished;
    work->GiveUp();
    return result == WAIT_OBJECT_0 + 1 ? CallEnd::Shutdown : CallEnd::TimedOut;
}

} // namespace cvas
