#pragma once
// The least of a container: a client site that lets the control activate in
// place inside a window of the test's own.

#include <ole2.h>
#include <windows.h>

namespace cvas::test
{

class CInPlaceSite final : public IOleClientSite, public IOleInPlaceSite
{
public:
    explicit CInPlaceSite(HWND window) : m_window(window) {}

    int Activations() const { return m_activations; }
    int Deactivations() const { return m_deactivations; }

    // IUnknown: the site lives on the test's stack, longer than the control.
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    // IOleClientSite
    STDMETHODIMP SaveObject() override { return S_OK; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP GetContainer(IOleContainer**) override { return E_NOINTERFACE; }
    STDMETHODIMP ShowObject() override { return S_OK; }
    STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

    // IOleWindow, IOleInPlaceSite
    STDMETHODIMP GetWindow(HWND* window) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP CanInPlaceActivate() override { return S_OK; }
    STDMETHODIMP OnInPlaceActivate() override;
    STDMETHODIMP OnUIActivate() override { return S_OK; }
    // No frame: the control takes the rectangle DoVerb gives it.
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame**, IOleInPlaceUIWindow**, LPRECT, LPRECT,
                                  LPOLEINPLACEFRAMEINFO) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP Scroll(SIZE) override { return E_NOTIMPL; }
    STDMETHODIMP OnUIDeactivate(BOOL) override { return S_OK; }
    STDMETHODIMP OnInPlaceDeactivate() override;
    STDMETHODIMP DiscardUndoState() override { return S_OK; }
    STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
    STDMETHODIMP OnPosRectChange(LPCRECT) override { return S_OK; }

private:
    HWND m_window;
    int m_activations = 0;
    int m_deactivations = 0;
};

} // namespace cvas::test
