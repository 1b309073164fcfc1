#include "tools/test_control_probe.h"

#include <oleauto.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "support/com_ptr.h"
#include "support/text_encoding.h"
#include "support/win_handle.h"

namespace cvas::test
{

namespace
{

class CVariant
{
public:
    CVariant() { VariantInit(&m_value); }
    explicit CVariant(LONG number) : CVariant()
    {
        V_VT(&m_value) = VT_I4;
        V_I4(&m_value) = number;
    }
    explicit CVariant(const wchar_t* text) : CVariant()
    {
        V_VT(&m_value) = VT_BSTR;
        V_BSTR(&m_value) = SysAllocString(text);
    }
    ~CVariant() { VariantClear(&m_value); }
    CVariant(const CVariant&) = delete;
    CVariant& operator=(const CVariant&) = delete;
    VARIANT* Get() { return &m_value; }
    LONG Number() const { return V_VT(&m_value) == VT_I4 ? V_I4(&m_value) : -999999; }
    std::string Text() const
    {
        return V_VT(&m_value) == VT_BSTR ? WideToUtf8(V_BSTR(&m_value)) : std::string("<not text>");
    }
    CComPtr<IDispatch> Object() const
    {
        return V_VT(&m_value) == VT_DISPATCH ? CComPtr<IDispatch>(V_DISPATCH(&m_value))
                                             : CComPtr<IDispatch>();
    }

private:
    VARIANT m_value;
};

// Arguments in their natural order; DISPPARAMS wants them reversed.
HRESULT Call(IDispatch* object, DISPID id, WORD flags, CVariant& result,
             std::vector<VARIANT> arguments = {})
{
    if (object == nullptr)
        return E_POINTER;
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS params = {reversed.empty() ? nullptr : reversed.data(), nullptr,
                         static_cast<UINT>(reversed.size()), 0};
    return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result.Get(), nullptr,
                          nullptr);
}

VARIANT Number(LONG value)
{
    VARIANT variant;
    VariantInit(&variant);
    V_VT(&variant) = VT_I4;
    V_I4(&variant) = value;
    return variant;
}

CComPtr<IDispatch> GetObject(IDispatch* object, DISPID id, std::vector<VARIANT> arguments = {})
{
    CVariant result;
    const HRESULT hr = Call(object, id, DISPATCH_METHOD, result, std::move(arguments));
    if (FAILED(hr))
        Say("control: call %ld failed: 0x%08lX", id, static_cast<unsigned long>(hr));
    return result.Object();
}

LONG GetNumber(IDispatch* object, DISPID id, WORD flags)
{
    CVariant result;
    Call(object, id, flags, result);
    return result.Number();
}

std::string GetText(IDispatch* object, DISPID id, WORD flags)
{
    CVariant result;
    Call(object, id, flags, result);
    return result.Text();
}

CComPtr<IDispatch> CurrentFile(IDispatch* automation, LONG& index)
{
    const CComPtr<IDispatch> playlist = GetObject(automation, 3);
    index = GetNumber(playlist.Get(), 1, DISPATCH_PROPERTYGET);
    return GetObject(playlist.Get(), 5, {Number(index)});
}

DWORD WINAPI ThreadProbe(void* automation)
{
    auto* dispatch = static_cast<IDispatch*>(automation);
    const LONG thread = static_cast<LONG>(GetCurrentThreadId());
    CVariant ignored;
    Call(dispatch, 32, DISPATCH_METHOD, ignored, {Number(thread), Number(1)});
    CVariant query(L"artist=[Low Roar] name=[Nobody]");
    const CComPtr<IDispatch> files = GetObject(dispatch, 2, {*query.Get()});
    Say("control: thread query finds %ld file(s)", GetNumber(files.Get(), 1, DISPATCH_METHOD));
    Call(dispatch, 32, DISPATCH_METHOD, ignored, {Number(thread), Number(0)});
    return 0;
}

} // namespace

void Say(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::printf("\n");
    std::fflush(stdout);
}

void ProbeAtInit(IDispatch* automation)
{
    const CComPtr<IDispatch> playlist = GetObject(automation, 3);
    const LONG count = GetNumber(playlist.Get(), 4, DISPATCH_METHOD);
    LONG index = 0;
    const CComPtr<IDispatch> file = CurrentFile(automation, index);
    Say("control: playlist count %ld, current index %ld", count, index);
    const LONG key = GetNumber(file.Get(), 35, DISPATCH_METHOD);
    Say("control: file identity \"%s\", file name \"%s\", duration %ld, further \"%s\", key %ld",
        GetText(file.Get(), 1, DISPATCH_PROPERTYGET).c_str(),
        GetText(file.Get(), 3, DISPATCH_PROPERTYGET).c_str(),
        GetNumber(file.Get(), 6, DISPATCH_PROPERTYGET),
        GetText(file.Get(), 28, DISPATCH_METHOD).c_str(), key);
    CVariant filled;
    CVariant pattern(L"[ARTIST] - [NAME] ([ALBUM], [GENRE]) [NOPE]");
    Call(file.Get(), 38, DISPATCH_METHOD, filled, {*pattern.Get()});
    Say("control: template gives \"%s\"", filled.Text().c_str());
    const std::wstring text =
        L"~d=a [key]=[" + std::to_wstring(key) + L"] Filetype=[mp3],[wav],[ogg]";
    CVariant query(text.c_str());
    const CComPtr<IDispatch> files = GetObject(automation, 2, {*query.Get()});
    Say("control: query finds %ld file(s)", GetNumber(files.Get(), 1, DISPATCH_METHOD));
}

void ReportPlayback(IDispatch* automation)
{
    const CComPtr<IDispatch> playback = GetObject(automation, 1);
    LONG index = 0;
    const CComPtr<IDispatch> file = CurrentFile(automation, index);
    Say("control: state %ld, position %ld, index %ld, identity \"%s\"",
        GetNumber(playback.Get(), 1, DISPATCH_PROPERTYGET),
        GetNumber(playback.Get(), 3, DISPATCH_PROPERTYGET), index,
        GetText(file.Get(), 1, DISPATCH_PROPERTYGET).c_str());
}

void RequestPlay(IDispatch* automation, LONG key)
{
    const CComPtr<IDispatch> list = GetObject(automation, 23);
    CVariant added, started;
    const HRESULT add = Call(list.Get(), 9, DISPATCH_METHOD, added, {Number(key)});
    const HRESULT start = Call(list.Get(), 4, DISPATCH_METHOD, started, {Number(0)});
    Say("control: play request for key %ld: add 0x%08lX, start 0x%08lX", key,
        static_cast<unsigned long>(add), static_cast<unsigned long>(start));
}

void ProbeRefusals(IDispatch* automation)
{
    CVariant result;
    const HRESULT unknown = Call(automation, 99, DISPATCH_METHOD, result);
    const CComPtr<IDispatch> playlist = GetObject(automation, 3);
    const HRESULT count = Call(playlist.Get(), 5, DISPATCH_METHOD, result);
    const HRESULT kind = Call(playlist.Get(), 4, DISPATCH_PROPERTYGET, result);
    Say("control: refusals: unknown id 0x%08lX, no argument 0x%08lX, get of a method 0x%08lX",
        static_cast<unsigned long>(unknown), static_cast<unsigned long>(count),
        static_cast<unsigned long>(kind));
}

void ProbeFromThread(IDispatch* automation)
{
    CHandle thread(CreateThread(nullptr, 0, ThreadProbe, automation, 0, nullptr));
    if (!thread || WaitForSingleObject(thread.Get(), 30000) != WAIT_OBJECT_0)
        Say("control: the thread did not run or did not end");
}

IDispatch* TakeFileForever(IDispatch* automation)
{
    LONG index = 0;
    return CurrentFile(automation, index).Detach();
}

} // namespace cvas::test
