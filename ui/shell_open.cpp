#include "ui/shell_open.h"

#include <shellapi.h>

#include <utility>

namespace cvas
{
namespace
{

ShellOpenHandler& Handler()
{
    static ShellOpenHandler handler;
    return handler;
}

} // namespace

bool ShellOpenFile(HWND owner, const std::wstring& file)
{
    if (Handler())
        return Handler()(owner, file);
    // ShellExecute answers a value above 32 on success.
    return reinterpret_cast<INT_PTR>(
               ShellExecuteW(owner, L"open", file.c_str(), nullptr, nullptr, SW_SHOWNORMAL)) > 32;
}

ShellOpenHandler SetShellOpenHandler(ShellOpenHandler handler)
{
    return std::exchange(Handler(), std::move(handler));
}

} // namespace cvas
