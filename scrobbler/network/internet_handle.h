#pragma once
// Owns a WinINet handle and closes it when it goes.

#include <windows.h>
#include <wininet.h>

#include "support/unique_handle.h"

namespace cvas
{

struct CInternetHandleTraits
{
    using Handle = HINTERNET;
    static bool IsHandle(HINTERNET) { return true; }
    static void Close(HINTERNET handle) { InternetCloseHandle(handle); }
};

using CInternetHandle = CUniqueHandle<CInternetHandleTraits>;

} // namespace cvas
