#include "tools/test_control.h"

#include <oleauto.h>

#include "support/com_ptr.h"
#include "tools/test_control_probe.h"

namespace cvas::test
{

LONG g_liveObjects = 0;

namespace
{

constexpr DISPID kInitId = 1;
constexpr DISPID kTerminateId = 2;
constexpr wchar_t kWindowClass[] = L"CvasPlayerTestControl";
// The control's colour, which the container test looks for on the screen.
constexpr COLORREF kControlColour = RGB(0x33, 0x99, 0x66);

// The messages a scenario sends to make the control act.
constexpr UINT kPlayRequest = WM_USER + 6; // wParam: library key
constexpr UINT kReport = WM_USER + 50;
constexpr UINT kKeepFile = WM_USER + 51;
constexpr UINT kRefusals = WM_USER + 52;
constexpr UINT kFromThread = WM_USER + 53;

HMODULE ThisModule()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                           GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ThisModule), &module);
    return module;
}

class CTestControl : public IDispatch, public IOleObject, public IOleInPlaceObject
{
public:
    CTestControl() { InterlockedIncrement(&g_liveObjects); }
    virtual ~CTestControl()
    {
        DestroyOwnWindow();
        InterlockedDecrement(&g_liveObjects);
    }
    CTestControl(const CTestControl&) = delete;
    CTestControl& operator=(const CTestControl&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        if (iid == IID_IUnknown || iid == IID_IDispatch)
            *object = static_cast<IDispatch*>(this);
        else if (iid == IID_IOleObject)
            *object = static_cast<IOleObject*>(this);
        else if (iid == IID_IOleWindow || iid == IID_IOleInPlaceObject)
            *object = static_cast<IOleInPlaceObject*>(this);
        else
        {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return static_cast<ULONG>(InterlockedIncrement(&m_references));
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const LONG left = InterlockedDecrement(&m_references);
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }

    // IDispatch: Init and Terminate, by name or by id.
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override
    {
        HRESULT result = S_OK;
        for (UINT i = 0; i < count; ++i)
        {
            ids[i] = lstrcmpiW(names[i], L"Init") == 0        ? kInitId
                     : lstrcmpiW(names[i], L"Terminate") == 0 ? kTerminateId
                                                              : DISPID_UNKNOWN;
            if (ids[i] == DISPID_UNKNOWN)
                result = DISP_E_UNKNOWNNAME;
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                                     VARIANT*, EXCEPINFO*, UINT*) override
    {
        if ((flags & DISPATCH_METHOD) == 0 || params == nullptr)
            return DISP_E_MEMBERNOTFOUND;
        if (id == kInitId)
        {
            if (params->cArgs != 1)
                return DISP_E_BADPARAMCOUNT;
            if (V_VT(&params->rgvarg[0]) != VT_DISPATCH ||
                V_DISPATCH(&params->rgvarg[0]) == nullptr)
                return DISP_E_TYPEMISMATCH;
            m_automation = CComPtr<IDispatch>(V_DISPATCH(&params->rgvarg[0]));
            Say("control: Init with an object; window %s",
                m_window != nullptr ? "present" : "missing");
            ProbeAtInit(m_automation.Get());
            return S_OK;
        }
        if (id == kTerminateId)
        {
            if (params->cArgs != 0)
                return DISP_E_BADPARAMCOUNT;
            Say("control: Terminate");
            m_automation.Release();
            return S_OK;
        }
        return DISP_E_MEMBERNOTFOUND;
    }

    // IOleObject: what a container needs for in-place activation.
    HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* site) override
    {
        m_site = CComPtr<IOleClientSite>(site);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetClientSite(IOleClientSite** site) override
    {
        *site = CComPtr<IOleClientSite>(m_site).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Close(DWORD) override { return InPlaceDeactivate(); }
    HRESULT STDMETHODCALLTYPE SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetClipboardData(DWORD, IDataObject**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DoVerb(LONG, LPMSG, IOleClientSite* site, LONG, HWND parent,
                                     LPCRECT position) override
    {
        if (site != nullptr && !m_site)
            m_site = CComPtr<IOleClientSite>(site);
        return Activate(parent, position);
    }
    HRESULT STDMETHODCALLTYPE EnumVerbs(IEnumOLEVERB**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Update() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE IsUpToDate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetUserClassID(CLSID* clsid) override
    {
        *clsid = kTestControlClsid;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetUserType(DWORD, LPOLESTR*) override { return OLE_S_USEREG; }
    HRESULT STDMETHODCALLTYPE SetExtent(DWORD, SIZEL* size) override
    {
        m_extent = *size;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD, SIZEL* size) override
    {
        *size = m_extent;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Advise(IAdviseSink*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD, DWORD* status) override
    {
        *status = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_INSIDEOUT | OLEMISC_ACTIVATEWHENVISIBLE |
                  OLEMISC_SETCLIENTSITEFIRST;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

    // IOleInPlaceObject
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override
    {
        *window = m_window;
        return m_window != nullptr ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override
    {
        if (m_window == nullptr)
            return S_OK;
        DestroyOwnWindow();
        if (m_inPlaceSite)
            m_inPlaceSite->OnInPlaceDeactivate();
        m_inPlaceSite.Release();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE UIDeactivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT position, LPCRECT) override
    {
        if (m_window != nullptr && position != nullptr)
            MoveWindow(m_window, position->left, position->top, position->right - position->left,
                       position->bottom - position->top, TRUE);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ReactivateAndUndo() override { return E_NOTIMPL; }

private:
    HRESULT Activate(HWND parent, LPCRECT position)
    {
        if (m_window != nullptr)
            return S_OK;
        if (!m_site || FAILED(m_site.QueryInto(m_inPlaceSite, IID_IOleInPlaceSite)) ||
            m_inPlaceSite->CanInPlaceActivate() != S_OK)
            return E_FAIL;
        m_inPlaceSite->OnInPlaceActivate();
        HWND siteWindow = nullptr;
        if (SUCCEEDED(m_inPlaceSite->GetWindow(&siteWindow)) && siteWindow != nullptr)
            parent = siteWindow;
        RECT area = {0, 0, 100, 100};
        if (position != nullptr)
            area = *position;
        m_window = CreateWindowExW(0, kWindowClass, L"Test control", WS_CHILD | WS_VISIBLE,
                                   area.left, area.top, area.right - area.left,
                                   area.bottom - area.top, parent, nullptr, ThisModule(), this);
        return m_window != nullptr ? S_OK : E_FAIL;
    }

    void DestroyOwnWindow()
    {
        if (m_window != nullptr)
        {
            SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
            DestroyWindow(m_window);
            m_window = nullptr;
        }
    }

    LRESULT OnMessage(UINT message, WPARAM wParam)
    {
        IDispatch* automation = m_automation.Get();
        switch (message)
        {
        case kPlayRequest:
            RequestPlay(automation, static_cast<LONG>(wParam));
            return 1;
        case kReport:
            ReportPlayback(automation);
            return 1;
        case kKeepFile:
            m_keptForever = TakeFileForever(automation);
            Say("control: keeping a file object for ever");
            return 1;
        case kRefusals:
            ProbeRefusals(automation);
            return 1;
        case kFromThread:
            ProbeFromThread(automation);
            return 1;
        default:
            return 0;
        }
    }

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message == WM_NCCREATE)
            SetWindowLongPtrW(window, GWLP_USERDATA,
                              reinterpret_cast<LONG_PTR>(
                                  reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams));
        auto* self = reinterpret_cast<CTestControl*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == WM_PAINT)
        {
            PAINTSTRUCT paint;
            HDC dc = BeginPaint(window, &paint);
            RECT area;
            GetClientRect(window, &area);
            HBRUSH brush = CreateSolidBrush(kControlColour);
            FillRect(dc, &area, brush);
            DeleteObject(brush);
            SetBkMode(dc, TRANSPARENT);
            SetTextColor(dc, RGB(255, 255, 255));
            DrawTextW(dc, L"Test control", -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
            EndPaint(window, &paint);
            return 0;
        }
        if (self != nullptr && message >= WM_USER)
            return self->OnMessage(message, wParam);
        return DefWindowProcW(window, message, wParam, lParam);
    }

public:
    static void RegisterWindowClass()
    {
        WNDCLASSEXW windowClass = {};
        windowClass.cbSize = sizeof(windowClass);
        windowClass.lpfnWndProc = Procedure;
        windowClass.hInstance = ThisModule();
        windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
        windowClass.lpszClassName = kWindowClass;
        RegisterClassExW(&windowClass);
    }

private:
    LONG m_references = 0;
    CComPtr<IOleClientSite> m_site;
    CComPtr<IOleInPlaceSite> m_inPlaceSite;
    CComPtr<IDispatch> m_automation;
    IDispatch* m_keptForever = nullptr; // never released: the leak under test
    HWND m_window = nullptr;
    SIZEL m_extent = {2540, 2540};
};

} // namespace

IUnknown* CreateTestControl()
{
    CTestControl::RegisterWindowClass();
    auto* control = new CTestControl;
    control->AddRef();
    return static_cast<IDispatch*>(control);
}

} // namespace cvas::test
