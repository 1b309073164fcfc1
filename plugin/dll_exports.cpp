// The four exports of the plug-in's DLL and its class factory.

#include "plugin/interface_control.h"
#include "plugin/module_counts.h"
#include "plugin/registration.h"
#include "support/callback_boundary.h"

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
        return GuardComMethod(L"class factory's QueryInterface", [&]() -> HRESULT {
            if (object == nullptr)
                return E_POINTER;
            *object = nullptr;
            if (iid != IID_IUnknown && iid != IID_IClassFactory)
                return E_NOINTERFACE;
            *object = static_cast<IClassFactory*>(this);
            return S_OK;
        });
    }
    // One factory for the life of the module: LockServer keeps the module.
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override
    {
        return GuardComMethod(L"class factory's CreateInstance", [&]() -> HRESULT {
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
        });
    }
    STDMETHODIMP LockServer(BOOL lock) override
    {
        return GuardComMethod(L"class factory's LockServer", [&]() -> HRESULT {
            LockModule(lock != FALSE);
            return S_OK;
        });
    }
};

CClassFactory g_factory;

} // namespace
} // namespace cvas

// The exports answer a failure after any exception. DllMain and
// DllCanUnloadNow answer the safe way: a module that cannot be set up is not
// loaded, and one that cannot tell is kept.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    return cvas::GuardExport<BOOL>(FALSE, [&]() -> BOOL {
        if (reason == DLL_PROCESS_ATTACH)
            DisableThreadLibraryCalls(instance);
        return TRUE;
    });
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow()
{
    return cvas::GuardExport<HRESULT>(
        S_FALSE, []() -> HRESULT { return cvas::IsModuleInUse() ? S_FALSE : S_OK; });
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, void** object)
{
    return cvas::GuardExport<HRESULT>(E_UNEXPECTED, [&]() -> HRESULT {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (clsid != CLSID_Interface)
            return CLASS_E_CLASSNOTAVAILABLE;
        return cvas::g_factory.QueryInterface(iid, object);
    });
}

// A CFatalError here has shown its box already.
extern "C" HRESULT STDAPICALLTYPE DllRegisterServer()
{
    return cvas::GuardExport<HRESULT>(SELFREG_E_CLASS, [] { return cvas::RegisterServer(); });
}

extern "C" HRESULT STDAPICALLTYPE DllUnregisterServer()
{
    return cvas::GuardExport<HRESULT>(SELFREG_E_CLASS, [] { return cvas::UnregisterServer(); });
}
