#include "plugin/in_place_site.h"

namespace cvas::test
{

STDMETHODIMP CInPlaceSite::QueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IOleClientSite)
        *object = static_cast<IOleClientSite*>(this);
    else if (iid == IID_IOleWindow || iid == IID_IOleInPlaceSite)
        *object = static_cast<IOleInPlaceSite*>(this);
    else
        return E_NOINTERFACE;
    return S_OK;
}

STDMETHODIMP CInPlaceSite::GetWindow(HWND* window)
{
    *window = m_window;
    return S_OK;
}

STDMETHODIMP CInPlaceSite::OnInPlaceActivate()
{
    ++m_activations;
    return S_OK;
}

STDMETHODIMP CInPlaceSite::OnInPlaceDeactivate()
{
    ++m_deactivations;
    return S_OK;
}

} // namespace cvas::test
