#include "host/play_request.h"

#include "host/automation_call.h"
#include "host/automation_ids.h"
#include "host/host_state.h"

namespace cvas
{

HRESULT PlayLibraryFile(int key)
{
    CComPtr<IDispatch> list;
    HRESULT hr =
        CallForObject(HostAutomation(), kAutomationPlayRequestList, CallKind::Method, list);
    if (SUCCEEDED(hr))
        hr = Call(list.Get(), kPlayListAddByKey, CallKind::Method, {IntArgument(key)});
    if (SUCCEEDED(hr))
        hr = Call(list.Get(), kPlayListStart, CallKind::Method, {IntArgument(0)});
    return hr;
}

} // namespace cvas
