#include "tools/player/control_host.h"

#include "support/com_values.h"

#include <oleauto.h>

#include <cwchar>

namespace cvas::player
{

namespace
{

using AtlAxWinInitProc = BOOL(WINAPI*)();
using AtlAxGetControlProc = HRESULT(WINAPI*)(HWND, IUnknown**);

} // namespace

std::wstring DescribeResult(HRESULT result)
{
    if (result == S_OK)
        return L"S_OK";
    wchar_t code[16];
    std::swprintf(code, 16, L"0x%08lX", static_cast<unsigned long>(result));
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(result), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring described = code;
    if (length > 0 && text != nullptr)
    {
        std::wstring message(text, length);
        while (!message.empty() && (message.back() == L'\n' || message.back() == L'\r' ||
                                    message.back() == L' ' || message.back() == L'.'))
            message.pop_back();
        described += L" (" + message + L")";
    }
    LocalFree(text);
    return described;
}

bool CControlHost::Create(HWND parent, const std::wstring& progId, std::wstring& error)
{
    // The class name carries the library's version: AtlAxWin, AtlAxWin100.
    const wchar_t* const libraries[][2] = {{L"atl.dll", L"AtlAxWin"},
                                           {L"atl100.dll", L"AtlAxWin100"}};
    const wchar_t* className = nullptr;
    for (const auto& [library, windowClass] : libraries)
    {
        m_atl = CUniqueHandle<CLibraryTraits>(LoadLibraryW(library));
        if (m_atl)
        {
            className = windowClass;
            break;
        }
    }
    if (!m_atl)
    {
        error = L"neither atl.dll nor atl100.dll could be loaded";
        return false;
    }
    const auto init = reinterpret_cast<AtlAxWinInitProc>(
        reinterpret_cast<void*>(GetProcAddress(m_atl.Get(), "AtlAxWinInit")));
    const auto getControl = reinterpret_cast<AtlAxGetControlProc>(
        reinterpret_cast<void*>(GetProcAddress(m_atl.Get(), "AtlAxGetControl")));
    if (init == nullptr || getControl == nullptr || !init())
    {
        error = L"the ATL library has no working AtlAxWinInit or AtlAxGetControl";
        return false;
    }
    // The container says nothing when the class is missing; say it here.
    CLSID clsid;
    const HRESULT known = CLSIDFromProgID(progId.c_str(), &clsid);
    if (FAILED(known))
    {
        error = L"the ProgID " + progId + L" is not registered: " + DescribeResult(known);
        return false;
    }
    RECT area;
    GetClientRect(parent, &area);
    m_container = CWindow(CreateWindowExW(
        0, className, progId.c_str(), WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, 0,
        0, area.right, area.bottom, parent, nullptr, GetModuleHandleW(nullptr), nullptr));
    if (!m_container)
    {
        error = L"the container window was not created: " +
                DescribeResult(HRESULT_FROM_WIN32(GetLastError()));
        return false;
    }
    const HRESULT got = getControl(m_container.Get(), m_control.Receive());
    if (FAILED(got) || !m_control)
    {
        error = L"the container holds no control (it could not be created or activated): " +
                DescribeResult(got);
        return false;
    }
    const HRESULT dispatch = m_control.QueryInto(m_dispatch, IID_IDispatch);
    if (FAILED(dispatch))
    {
        error = L"the control has no IDispatch: " + DescribeResult(dispatch);
        return false;
    }
    return true;
}

HWND CControlHost::ControlWindow() const
{
    CComPtr<IOleWindow> window;
    HWND handle = nullptr;
    if (SUCCEEDED(m_control.QueryInto(window, IID_IOleWindow)) &&
        SUCCEEDED(window->GetWindow(&handle)) && handle != nullptr)
        return handle;
    return m_container ? GetWindow(m_container.Get(), GW_CHILD) : nullptr;
}

HRESULT CControlHost::Init(IDispatch* automation, std::wstring& detail)
{
    VARIANT argument;
    VariantInit(&argument);
    V_VT(&argument) = VT_DISPATCH;
    V_DISPATCH(&argument) = automation; // borrowed: not cleared here
    return CallByName(L"Init", &argument, detail);
}

HRESULT CControlHost::Terminate(std::wstring& detail)
{
    return CallByName(L"Terminate", nullptr, detail);
}

HRESULT CControlHost::CallByName(const wchar_t* name, VARIANT* argument, std::wstring& detail)
{
    if (!m_dispatch)
        return E_POINTER;
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    HRESULT result = m_dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(result))
    {
        detail = L"GetIDsOfNames";
        return result;
    }
    DISPPARAMS params = {argument, nullptr, argument != nullptr ? 1u : 0u, 0};
    VARIANT answer;
    VariantInit(&answer);
    CExceptionInfo exception;
    UINT argumentError = 0;
    result = m_dispatch->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params,
                                &answer, exception.Get(), &argumentError);
    VariantClear(&answer);
    detail = exception.Description();
    return result;
}

void CControlHost::Destroy()
{
    m_dispatch.Release();
    m_control.Release();
    m_container.Reset();
    m_atl.Reset();
}

} // namespace cvas::player
