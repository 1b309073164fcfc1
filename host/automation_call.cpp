#include "host/automation_call.h"

#include "support/com_values.h"

#include <algorithm>
#include <cstddef>

namespace cvas
{
namespace
{

// No member of the player takes more.
constexpr std::size_t kMostArguments = 4;

HRESULT Invoke(IDispatch* object, DISPID id, CallKind kind,
               std::initializer_list<VARIANT> arguments, CVariant& result)
{
    result.Clear();
    if (object == nullptr)
        return E_POINTER;
    if (arguments.size() > kMostArguments)
        return E_INVALIDARG;
    // Invoke takes the last argument first. The copies borrow what the
    // caller's arguments hold; nothing here frees them.
    VARIANT reversed[kMostArguments];
    std::reverse_copy(arguments.begin(), arguments.end(), reversed);
    DISPPARAMS parameters{reversed, nullptr, static_cast<UINT>(arguments.size()), 0};
    CExceptionInfo exception;
    UINT wrongArgument = 0;
    return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, static_cast<WORD>(kind), &parameters,
                          result.Get(), exception.Get(), &wrongArgument);
}

// A result of the given type; an answer in a kindred type (a short for an
// int) is converted.
HRESULT InvokeFor(VARTYPE type, IDispatch* object, DISPID id, CallKind kind,
                  std::initializer_list<VARIANT> arguments, CVariant& result)
{
    const HRESULT hr = Invoke(object, id, kind, arguments, result);
    return FAILED(hr) ? hr : VariantChangeType(result.Get(), result.Get(), 0, type);
}

} // namespace

VARIANT IntArgument(int value)
{
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_I4;
    argument.lVal = value;
    return argument;
}

VARIANT TextArgument(BSTR text)
{
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_BSTR;
    argument.bstrVal = text;
    return argument;
}

HRESULT Call(IDispatch* object, DISPID id, CallKind kind, std::initializer_list<VARIANT> arguments)
{
    CVariant result;
    return Invoke(object, id, kind, arguments, result);
}

HRESULT CallForInt(IDispatch* object, DISPID id, CallKind kind, int& value,
                   std::initializer_list<VARIANT> arguments)
{
    CVariant result;
    const HRESULT hr = InvokeFor(VT_I4, object, id, kind, arguments, result);
    if (SUCCEEDED(hr))
        value = result->lVal;
    return hr;
}

HRESULT CallForText(IDispatch* object, DISPID id, CallKind kind, std::wstring& text,
                    std::initializer_list<VARIANT> arguments)
{
    CVariant result;
    const HRESULT hr = InvokeFor(VT_BSTR, object, id, kind, arguments, result);
    if (SUCCEEDED(hr))
        text.assign(result->bstrVal != nullptr ? result->bstrVal : L"",
                    SysStringLen(result->bstrVal));
    return hr;
}

HRESULT CallForObject(IDispatch* object, DISPID id, CallKind kind, CComPtr<IDispatch>& result,
                      std::initializer_list<VARIANT> arguments)
{
    result.Release();
    CVariant value;
    HRESULT hr = Invoke(object, id, kind, arguments, value);
    if (SUCCEEDED(hr) && (value->vt == VT_EMPTY || value->vt == VT_NULL))
        hr = E_POINTER;
    if (SUCCEEDED(hr))
        hr = VariantChangeType(value.Get(), value.Get(), 0, VT_DISPATCH);
    if (FAILED(hr))
        return hr;
    if (value->pdispVal == nullptr)
        return E_POINTER;
    // The reference the variant holds becomes the caller's.
    result = CComPtr<IDispatch>::Adopt(value->pdispVal);
    value->vt = VT_EMPTY;
    return S_OK;
}

} // namespace cvas
