#pragma once
// Late-bound calls on the player's automation objects, by dispatch id only.
// Every failure comes back as the HRESULT: the member's own failure as
// Invoke gave it (DISP_E_EXCEPTION for one the member raised), E_POINTER
// for a call on no object or for no object where one was to come back.

#include <oaidl.h>

#include <initializer_list>
#include <string>

#include "support/com_ptr.h"

namespace cvas
{

enum class CallKind : WORD
{
    Method = DISPATCH_METHOD,
    Get = DISPATCH_PROPERTYGET,
};

// Arguments that borrow their value: the caller keeps a BSTR alive for the
// call.
VARIANT IntArgument(int value);
VARIANT TextArgument(BSTR text);

// The arguments are given in the order the member declares them.
HRESULT Call(IDispatch* object, DISPID id, CallKind kind,
             std::initializer_list<VARIANT> arguments = {});
HRESULT CallForInt(IDispatch* object, DISPID id, CallKind kind, int& value,
                   std::initializer_list<VARIANT> arguments = {});
// Assigns into text, so a text kept between calls keeps its buffer.
HRESULT CallForText(IDispatch* object, DISPID id, CallKind kind, std::wstring& text,
                    std::initializer_list<VARIANT> arguments = {});
HRESULT CallForObject(IDispatch* object, DISPID id, CallKind kind, CComPtr<IDispatch>& result,
                      std::initializer_list<VARIANT> arguments = {});

} // namespace cvas
