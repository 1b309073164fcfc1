// The four exports of the plug-in's DLL and its class factory.

#include "plugin/interface_control.h"
#include "plugin/module_counts.h"
#include "plugin/registration.h"

#include <olectl.h>

#include <new>

namespace cvas
{
namespace
{

class CClassFactory final : public IClassFactory
{
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (iid != IID_IUnknown && iid != IID_IClassFactory)
            return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    // One factory for the life of the module: LockServer keeps the module.
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (outer != nullptr)
            return CLASS_E_NOAGGREGATION;
        CInterfaceControl* control = new (std::nothrow) CInterfaceControl();
        if (control == nullptr)
            return E_OUTOFMEMORY;
        const HRESULT hr = control->QueryInterface(iid, object);
        control->Release(); // the caller's reference is the one left, if any
        return hr;
    }
    STDMETHODIMP LockServer(BOOL lock) override
    {
        LockModule(lock != FALSE);
        return S_OK;
    }
};

CClassFactory g_factory;

} // namespace
} // namespace cvas

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(instance);
    return TRUE;
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow()
{
    return cvas::IsModuleInUse() ? S_FALSE : S_OK;
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (clsid != CLSID_Interface)
        return CLASS_E_CLASSNOTAVAILABLE;
    return cvas::g_factory.QueryInterface(iid, object);
}

extern "C" HRESULT STDAPICALLTYPE DllRegisterServer()
{
    try
    {
        return cvas::RegisterServer();
    }
    catch (...)
    {
        return SELFREG_E_CLASS;
    }
}

extern "C" HRESULT STDAPICALLTYPE DllUnregisterServer()
{
    try
    {
        return cvas::UnregisterServer();
    }
    catch (...)
    {
        return SELFREG_E_CLASS;
    }
}
