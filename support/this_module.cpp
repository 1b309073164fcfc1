#include "support/this_module.h"

#include <vector>

namespace cvas
{

namespace
{

HMODULE ModuleOfThisCode(DWORD flags)
{
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags,
                            reinterpret_cast<LPCWSTR>(&ModuleOfThisCode), &module))
        return nullptr;
    return module;
}

} // namespace

HMODULE ThisModule()
{
    return ModuleOfThisCode(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
}

HMODULE ReferenceThisModule()
{
    return ModuleOfThisCode(0);
}

std::wstring ThisModulePath()
{
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;)
    {
        const DWORD length =
            GetModuleFileNameW(ThisModule(), buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0)
            return {};
        if (length < buffer.size())
            return std::wstring(buffer.data(), length);
        buffer.resize(buffer.size() * 2);
    }
}

} // namespace cvas
