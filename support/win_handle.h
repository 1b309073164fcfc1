#pragma once
// Owns a kernel handle and closes it when it goes.

#include <windows.h>

#include "support/unique_handle.h"

namespace cvas
{

struct CKernelHandleTraits
{
    using Handle = HANDLE;
    // Some calls give INVALID_HANDLE_VALUE for no handle, others nullptr.
    static bool IsHandle(HANDLE handle) { return handle != INVALID_HANDLE_VALUE; }
    static void Close(HANDLE handle) { CloseHandle(handle); }
};

using CHandle = CUniqueHandle<CKernelHandleTraits>;

} // namespace cvas
