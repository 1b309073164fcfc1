#include "scrobbler/cancellable_call.h"

namespace cvas
{

CallEnd RunCancellableCall(const std::shared_ptr<CCancellableWork>& work, DWORD timeoutMs,
                           HANDLE shutdown, DWORD& error)
{
    const CHandle thread = StartModuleThread(work, error);
    if (!thread)
        return CallEnd::NoThread;
    const HANDLE waits[2] = {thread.Get(), shutdown};
    const DWORD result = WaitForMultipleObjects(2, waits, FALSE, timeoutMs);
    if (result == WAIT_OBJECT_0)
        return CallEnd::Finished;
    work->GiveUp();
    return result == WAIT_OBJECT_0 + 1 ? CallEnd::Shutdown : CallEnd::TimedOut;
}

} // namespace cvas
