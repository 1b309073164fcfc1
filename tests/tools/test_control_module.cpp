// The test control's DLL: its class factory and its self-registration
// (HKEY_CLASSES_ROOT, as Wine's regsvr32 expects), nothing else.

#include <ole2.h>
#include <olectl.h>
#include <windows.h>

#include <string>

#include "tools/test_control.h"

using namespace cvas::test;

namespace
{

HMODULE g_module = nullptr;

class CClassFactory : public IClassFactory
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (iid != IID_IUnknown && iid != IID_IClassFactory)
        {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    // One factory for the module's life: no count of its own.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (outer != nullptr)
            return CLASS_E_NOAGGREGATION;
        IUnknown* control = CreateTestControl();
        const HRESULT result = control->QueryInterface(iid, object);
        control->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override
    {
        if (lock)
            InterlockedIncrement(&g_liveObjects);
        else
            InterlockedDecrement(&g_liveObjects);
        return S_OK;
    }
};

CClassFactory g_factory;

std::wstring ClsidText()
{
    wchar_t text[64] = {};
    StringFromGUID2(kTestControlClsid, text, 64);
    return text;
}

bool SetKey(const std::wstring& path, const wchar_t* name, const std::wstring& value)
{
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                        nullptr) != ERROR_SUCCESS)
        return false;
    const LONG result =
        RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                       static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
    return result == ERROR_SUCCESS;
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        g_module = instance;
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object)
{
    if (clsid != kTestControlClsid)
        return CLASS_E_CLASSNOTAVAILABLE;
    return g_factory.QueryInterface(iid, object);
}

STDAPI DllCanUnloadNow()
{
    return g_liveObjects == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(g_module, path, MAX_PATH);
    const std::wstring clsidKey = L"CLSID\\" + ClsidText();
    const bool written =
        SetKey(kTestControlProgId, nullptr, L"Player test control") &&
        SetKey(std::wstring(kTestControlProgId) + L"\\CLSID", nullptr, ClsidText()) &&
        SetKey(clsidKey, nullptr, L"Player test control") &&
        SetKey(clsidKey + L"\\ProgID", nullptr, kTestControlProgId) &&
        SetKey(clsidKey + L"\\Control", nullptr, L"") &&
        SetKey(clsidKey + L"\\InprocServer32", nullptr, path) &&
        SetKey(clsidKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
    return written ? S_OK : SELFREG_E_CLASS;
}

STDAPI DllUnregisterServer()
{
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kTestControlProgId);
    RegDeleteTreeW(HKEY_CLASSES_ROOT, (L"CLSID\\" + ClsidText()).c_str());
    return S_OK;
}
