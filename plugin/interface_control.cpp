#include "plugin/interface_control.h"

#include "plugin/control_window.h"
#include "plugin/module_counts.h"
#include "plugin/plugin_lifecycle.h"
#include "support/callback_boundary.h"
#include "support/this_module.h"

#include <oleauto.h>

namespace cvas
{
namespace
{

constexpr DWORD kMiscStatus = 131473; // as registered under MiscStatus\1

// The type information of IInterface (or of the class), from the type
// library in this module's resources.
HRESULT LoadTypeInfo(REFGUID guid, ITypeInfo** info)
{
    CComPtr<ITypeLib> library;
    const HRESULT hr = LoadTypeLibEx(ThisModulePath().c_str(), REGKIND_NONE, library.Receive());
    if (FAILED(hr))
        return hr;
    return library->GetTypeInfoOfGuid(guid, info);
}

void NoteUnknownInterface(REFIID iid)
{
    wchar_t text[64] = L"";
    StringFromGUID2(iid, text, 64);
    OutputDebugStringW((std::wstring(L"CVAudioScrobbler: no interface ") + text + L"\n").c_str());
}

} // namespace

CInterfaceControl::CInterfaceControl()
{
    AddModuleObject();
}

CInterfaceControl::~CInterfaceControl()
{
    if (m_window != nullptr)
        DestroyWindow(m_window);
    ReleaseModuleObject();
}

STDMETHODIMP CInterfaceControl::QueryInterface(REFIID iid, void** object)
{
    return GuardComMethod(L"control's QueryInterface", [&]() -> HRESULT {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IInterface)
            *object = static_cast<IInterface*>(this);
        else if (iid == IID_IOleObject)
            *object = static_cast<IOleObject*>(this);
        else if (iid == IID_IOleWindow || iid == IID_IOleInPlaceObject)
            *object = static_cast<IOleInPlaceObject*>(this);
        else if (iid == IID_IPersist || iid == IID_IPersistStreamInit)
            *object = static_cast<IPersistStreamInit*>(this);
        else if (iid == IID_IProvideClassInfo)
            *object = static_cast<IProvideClassInfo*>(this);
        else
        {
            NoteUnknownInterface(iid);
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    });
}

STDMETHODIMP_(ULONG) CInterfaceControl::AddRef()
{
    return ++m_references;
}

STDMETHODIMP_(ULONG) CInterfaceControl::Release()
{
    const ULONG left = --m_references;
    if (left == 0)
        delete this;
    return left;
}

STDMETHODIMP CInterfaceControl::GetTypeInfoCount(UINT* count)
{
    return GuardComMethod(L"control's GetTypeInfoCount", [&]() -> HRESULT {
        if (count == nullptr)
            return E_POINTER;
        *count = 1;
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetTypeInfo(UINT index, LCID, ITypeInfo** info)
{
    return GuardComMethod(L"control's GetTypeInfo", [&]() -> HRESULT {
        if (info == nullptr)
            return E_POINTER;
        *info = nullptr;
        if (index != 0)
            return DISP_E_BADINDEX;
        ITypeInfo* held = nullptr;
        if (const HRESULT hr = InterfaceTypeInfo(held); FAILED(hr))
            return hr;
        held->AddRef();
        *info = held;
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                              DISPID* ids)
{
    return GuardComMethod(L"control's GetIDsOfNames", [&]() -> HRESULT {
        ITypeInfo* info = nullptr;
        if (const HRESULT hr = InterfaceTypeInfo(info); FAILED(hr))
            return hr;
        return DispGetIDsOfNames(info, names, count, ids);
    });
}

STDMETHODIMP CInterfaceControl::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                       VARIANT* result, EXCEPINFO* exception, UINT* argumentError)
{
    return GuardComMethod(L"control's Invoke", [&]() -> HRESULT {
        ITypeInfo* info = nullptr;
        if (const HRESULT hr = InterfaceTypeInfo(info); FAILED(hr))
            return hr;
        return DispInvoke(static_cast<IInterface*>(this), info, id, flags, parameters, result,
                          exception, argumentError);
    });
}

HRESULT CInterfaceControl::InterfaceTypeInfo(ITypeInfo*& info)
{
    if (!m_typeInfo)
    {
        if (const HRESULT hr = LoadTypeInfo(IID_IInterface, m_typeInfo.Receive()); FAILED(hr))
            return hr;
    }
    info = m_typeInfo.Get();
    return S_OK;
}

STDMETHODIMP CInterfaceControl::get_Window(LONG* window)
{
    return GuardComMethod(L"control's get_Window", [&]() -> HRESULT {
        if (window == nullptr)
            return E_POINTER;
        // A window handle carries 32 significant bits on both bitnesses.
        *window = static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_window));
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::Init(IDispatch* automation)
{
    return GuardComMethod(L"control's Init", [&]() -> HRESULT {
        // A container may call Init before it activates the control. Timer,
        // hot keys and posted messages need the window at once, so it is
        // made now, out of sight, and the activation gives it its place.
        if (m_window == nullptr)
            m_window = CreateControlWindow(HWND_MESSAGE, RECT{});
        if (m_window == nullptr)
            return E_FAIL;
        const HRESULT result = PluginInit(automation, m_window);
        m_running = SUCCEEDED(result);
        return result;
    });
}

STDMETHODIMP CInterfaceControl::Terminate()
{
    return GuardComMethod(L"control's Terminate", [&]() -> HRESULT {
        m_running = false;
        PluginTerminate(); // swallows whatever goes wrong
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::SetClientSite(IOleClientSite* site)
{
    return GuardComMethod(L"control's SetClientSite", [&]() -> HRESULT {
        m_site = CComPtr<IOleClientSite>(site);
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetClientSite(IOleClientSite** site)
{
    return GuardComMethod(L"control's GetClientSite", [&]() -> HRESULT {
        if (site == nullptr)
            return E_POINTER;
        *site = CComPtr<IOleClientSite>(m_site).Detach();
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::Close(DWORD)
{
    return GuardComMethod(L"control's Close", [&]() -> HRESULT {
        InPlaceDeactivate();
        m_site.Release();
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::DoVerb(LONG verb, LPMSG, IOleClientSite* site, LONG, HWND parent,
                                       LPCRECT rect)
{
    return GuardComMethod(L"control's DoVerb", [&]() -> HRESULT {
        switch (verb)
        {
        case OLEIVERB_PRIMARY:
        case OLEIVERB_SHOW:
        case OLEIVERB_INPLACEACTIVATE:
        case OLEIVERB_UIACTIVATE:
            return ActivateInPlace(site != nullptr ? site : m_site.Get(), parent, rect);
        case OLEIVERB_HIDE:
            if (m_window != nullptr)
                ShowWindow(m_window, SW_HIDE);
            return S_OK;
        default:
            return OLEOBJ_S_INVALIDVERB;
        }
    });
}

HRESULT CInterfaceControl::ActivateInPlace(IOleClientSite* site, HWND parent, LPCRECT rect)
{
    if (m_inPlaceSite)
    {
        ShowWindow(m_window, SW_SHOW);
        return S_OK;
    }
    if (site == nullptr)
        return E_INVALIDARG;
    CComPtr<IOleInPlaceSite> inPlaceSite;
    if (FAILED(site->QueryInterface(IID_IOleInPlaceSite, inPlaceSite.ReceiveVoid())))
        return E_NOINTERFACE;
    if (inPlaceSite->CanInPlaceActivate() != S_OK)
        return E_FAIL;
    inPlaceSite->OnInPlaceActivate();
    HWND siteWindow = parent;
    inPlaceSite->GetWindow(&siteWindow);
    RECT position{};
    RECT clip{};
    CComPtr<IOleInPlaceFrame> frame;
    CComPtr<IOleInPlaceUIWindow> document;
    OLEINPLACEFRAMEINFO frameInfo{};
    frameInfo.cb = sizeof frameInfo;
    if (FAILED(inPlaceSite->GetWindowContext(frame.Receive(), document.Receive(), &position, &clip,
                                             &frameInfo)) &&
        rect != nullptr)
        position = *rect;
    if (m_window != nullptr)
    {
        // Made by an Init before this activation.
        SetParent(m_window, siteWindow);
        MoveWindow(m_window, position.left, position.top, position.right - position.left,
                   position.bottom - position.top, TRUE);
    }
    else
        m_window = CreateControlWindow(siteWindow, position);
    if (m_window == nullptr)
    {
        inPlaceSite->OnInPlaceDeactivate();
        return E_FAIL;
    }
    m_inPlaceSite = inPlaceSite;
    ShowWindow(m_window, SW_SHOW);
    return S_OK;
}

STDMETHODIMP CInterfaceControl::GetUserClassID(CLSID* clsid)
{
    return GuardComMethod(L"control's GetUserClassID",
                          [&]() -> HRESULT { return GetClassID(clsid); });
}

STDMETHODIMP CInterfaceControl::SetExtent(DWORD aspect, SIZEL* size)
{
    return GuardComMethod(L"control's SetExtent", [&]() -> HRESULT {
        if (aspect != DVASPECT_CONTENT || size == nullptr)
            return E_INVALIDARG;
        m_extent = *size;
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetExtent(DWORD aspect, SIZEL* size)
{
    return GuardComMethod(L"control's GetExtent", [&]() -> HRESULT {
        if (aspect != DVASPECT_CONTENT || size == nullptr)
            return E_INVALIDARG;
        *size = m_extent;
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::Advise(IAdviseSink*, DWORD* connection)
{
    return GuardComMethod(L"control's Advise", [&]() -> HRESULT {
        if (connection == nullptr)
            return E_POINTER;
        *connection = 1;
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetMiscStatus(DWORD, DWORD* status)
{
    return GuardComMethod(L"control's GetMiscStatus", [&]() -> HRESULT {
        if (status == nullptr)
            return E_POINTER;
        *status = kMiscStatus;
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetWindow(HWND* window)
{
    return GuardComMethod(L"control's GetWindow", [&]() -> HRESULT {
        if (window == nullptr)
            return E_POINTER;
        *window = m_window;
        return m_window != nullptr ? S_OK : E_FAIL;
    });
}

STDMETHODIMP CInterfaceControl::InPlaceDeactivate()
{
    return GuardComMethod(L"control's InPlaceDeactivate", [&]() -> HRESULT {
        if (m_window == nullptr)
            return S_OK;
        if (m_running)
        {
            // The plug-in still runs on its window: it is only put out of
            // sight until a new activation or the control's end.
            ShowWindow(m_window, SW_HIDE);
            SetParent(m_window, HWND_MESSAGE);
        }
        else
        {
            DestroyWindow(m_window);
            m_window = nullptr;
        }
        if (m_inPlaceSite)
            m_inPlaceSite->OnInPlaceDeactivate();
        m_inPlaceSite.Release();
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::SetObjectRects(LPCRECT position, LPCRECT)
{
    return GuardComMethod(L"control's SetObjectRects", [&]() -> HRESULT {
        if (position == nullptr)
            return E_POINTER;
        if (m_window != nullptr)
            MoveWindow(m_window, position->left, position->top, position->right - position->left,
                       position->bottom - position->top, TRUE);
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetClassID(CLSID* clsid)
{
    return GuardComMethod(L"control's GetClassID", [&]() -> HRESULT {
        if (clsid == nullptr)
            return E_POINTER;
        *clsid = CLSID_Interface;
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetSizeMax(ULARGE_INTEGER* size)
{
    return GuardComMethod(L"control's GetSizeMax", [&]() -> HRESULT {
        if (size == nullptr)
            return E_POINTER;
        size->QuadPart = 0;
        return S_OK;
    });
}

STDMETHODIMP CInterfaceControl::GetClassInfo(ITypeInfo** info)
{
    return GuardComMethod(L"control's GetClassInfo", [&]() -> HRESULT {
        if (info == nullptr)
            return E_POINTER;
        *info = nullptr;
        return LoadTypeInfo(CLSID_Interface, info);
    });
}

} // namespace cvas
