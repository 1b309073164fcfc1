#pragma once
// Hosts an ActiveX control by its ProgID in Wine's own ActiveX container
// (the AtlAxWin window class of atl.dll), and calls the control's Init and
// Terminate methods by name, as the player does with its interface plug-ins.

#include <oaidl.h>
#include <windows.h>

#include <string>

#include "support/com_ptr.h"
#include "support/unique_handle.h"

namespace cvas::player
{

struct CLibraryTraits
{
    using Handle = HMODULE;
    static bool IsHandle(HMODULE module) { return module != nullptr; }
    static void Close(HMODULE module) { FreeLibrary(module); }
};

struct CWindowTraits
{
    using Handle = HWND;
    static bool IsHandle(HWND window) { return window != nullptr; }
    static void Close(HWND window) { DestroyWindow(window); }
};

using CWindow = CUniqueHandle<CWindowTraits>;

class CControlHost
{
public:
    CControlHost() = default;
    ~CControlHost() { Destroy(); }
    CControlHost(const CControlHost&) = delete;
    CControlHost& operator=(const CControlHost&) = delete;

    // The container window, a child of parent, with the control created in it.
    bool Create(HWND parent, const std::wstring& progId, std::wstring& error);
    HWND Container() const { return m_container.Get(); }
    // The control's own window, or null when it has none.
    HWND ControlWindow() const;

    // Init with the automation object as its one argument; Terminate with none.
    // detail gets the exception text a failing call gave.
    HRESULT Init(IDispatch* automation, std::wstring& detail);
    HRESULT Terminate(std::wstring& detail);

    // Lets go of the control: this host's references first, then the
    // container window, which closes the control and releases its own.
    void Destroy();

private:
    HRESULT CallByName(const wchar_t* name, VARIANT* argument, std::wstring& detail);

    CUniqueHandle<CLibraryTraits> m_atl;
    CWindow m_container;
    CComPtr<IUnknown> m_control;
    CComPtr<IDispatch> m_dispatch;
};

// "S_OK", or the HRESULT in hexadecimal with the system's text for it.
std::wstring DescribeResult(HRESULT result);

} // namespace cvas::player
