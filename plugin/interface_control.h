#pragma once
// The control the player creates: the class Interface with its dual
// interface IInterface, and the OLE interfaces a container needs to site it
// and activate it in place with a window of its own. Every method that
// returns an HRESULT and is defined in the .cpp runs inside GuardComMethod;
// those defined here only return a constant. AddRef and Release only count,
// and the destructor that Release may run cannot throw.

#include <ocidl.h>
#include <ole2.h>
#include <windows.h>

#include <atomic>

#include "resources/CVAudioScrobbler_h.h"
#include "support/com_ptr.h"

namespace cvas
{

class CInterfaceControl final : public IInterface,
                                public IOleObject,
                                public IOleInPlaceObject,
                                public IPersistStreamInit,
                                public IProvideClassInfo
{
public:
    CInterfaceControl();
    ~CInterfaceControl();

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // IDispatch, from the embedded type library
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                               DISPID* ids) override;
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override;

    // IInterface
    STDMETHODIMP get_Window(LONG* window) override;
    STDMETHODIMP Init(IDispatch* automation) override;
    STDMETHODIMP Terminate() override;

    // IOleObject
    STDMETHODIMP SetClientSite(IOleClientSite* site) override;
    STDMETHODIMP GetClientSite(IOleClientSite** site) override;
    STDMETHODIMP SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    STDMETHODIMP Close(DWORD saveOption) override;
    STDMETHODIMP SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP GetClipboardData(DWORD, IDataObject**) override { return E_NOTIMPL; }
    STDMETHODIMP DoVerb(LONG verb, LPMSG, IOleClientSite* site, LONG, HWND parent,
                        LPCRECT rect) override;
    STDMETHODIMP EnumVerbs(IEnumOLEVERB**) override { return OLEOBJ_E_NOVERBS; }
    STDMETHODIMP Update() override { return S_OK; }
    STDMETHODIMP IsUpToDate() override { return S_OK; }
    STDMETHODIMP GetUserClassID(CLSID* clsid) override;
    STDMETHODIMP GetUserType(DWORD, LPOLESTR*) override { return OLE_S_USEREG; }
    STDMETHODIMP SetExtent(DWORD aspect, SIZEL* size) override;
    STDMETHODIMP GetExtent(DWORD aspect, SIZEL* size) override;
    STDMETHODIMP Advise(IAdviseSink*, DWORD* connection) override;
    STDMETHODIMP Unadvise(DWORD) override { return S_OK; }
    STDMETHODIMP EnumAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }
    STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;
    STDMETHODIMP SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

    // IOleWindow, IOleInPlaceObject
    STDMETHODIMP GetWindow(HWND* window) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP InPlaceDeactivate() override;
    STDMETHODIMP UIDeactivate() override { return S_OK; }
    STDMETHODIMP SetObjectRects(LPCRECT position, LPCRECT clip) override;
    STDMETHODIMP ReactivateAndUndo() override { return E_NOTIMPL; }

    // IPersist, IPersistStreamInit: nothing to keep
    STDMETHODIMP GetClassID(CLSID* clsid) override;
    STDMETHODIMP IsDirty() override { return S_FALSE; }
    STDMETHODIMP Load(LPSTREAM) override { return S_OK; }
    STDMETHODIMP Save(LPSTREAM, BOOL) override { return S_OK; }
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override;
    STDMETHODIMP InitNew() override { return S_OK; }

    // IProvideClassInfo
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;

private:
    HRESULT ActivateInPlace(IOleClientSite* site, HWND parent, LPCRECT rect);
    // IInterface's type information, loaded on first use.
    HRESULT InterfaceTypeInfo(ITypeInfo*& info);

    std::atomic<ULONG> m_references{1};
    CComPtr<IOleClientSite> m_site;
    CComPtr<IOleInPlaceSite> m_inPlaceSite;
    HWND m_window = nullptr;
    // Between a successful Init and Terminate: the window is the plug-in's.
    bool m_running = false;
    SIZEL m_extent{};
    CComPtr<ITypeInfo> m_typeInfo;
};

} // namespace cvas
