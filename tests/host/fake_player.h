#pragma once
// A player made of hand-written automation objects. They answer the player's
// dispatch ids from a scripted playlist, record every call, and count the
// objects they hand out, so that a test sees every reference released.

#include <oaidl.h>
#include <oleauto.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <string>
#include <vector>

namespace cvas::test
{

struct FakeFile
{
    std::wstring identity;
    int duration = 0;
    int key = 0;
};

struct CFakePlayer
{
    // The script, read at every call.
    std::vector<FakeFile> playlist;
    int currentIndex = 0;
    int state = 2; // playing
    int position = 0;
    int matches = 1; // files a library query finds
    // A member, as "object id" ("playlist 5"), that raises an error, one
    // that hands back no object, and one during whose call memory runs out
    // (std::bad_alloc, as from the caller's own allocations).
    std::wstring failing, answersNoObject, outOfMemory;

    // Every call as "object id" and its arguments in declared order.
    std::vector<std::wstring> calls;
    int openObjects = 0; // the automation object included

    // The argument texts of the calls of one member ("automation 2").
    std::vector<std::wstring> ArgumentsOf(const std::wstring& member) const
    {
        std::vector<std::wstring> arguments;
        for (const std::wstring& call : calls)
            if (call.rfind(member + L" ", 0) == 0)
                arguments.push_back(call.substr(member.size() + 1));
        return arguments;
    }
};

class CFakeObject final : public IDispatch
{
public:
    CFakeObject(CFakePlayer& player, std::wstring object, int file = -1)
        : m_player(player), m_object(std::move(object)), m_file(file)
    {
        ++m_player.openObjects;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        *out = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
        if (*out == nullptr)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
        {
            --m_player.openObjects;
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO*, UINT*) override
    {
        struct Member
        {
            const wchar_t* call;
            WORD kind;
            UINT arguments;
            VARTYPE argumentType, resultType;
        };
        // The members as the player has them, with their ids written out here.
        constexpr WORD M = DISPATCH_METHOD, G = DISPATCH_PROPERTYGET;
        static constexpr Member kMembers[] = {
            {L"automation 1", M, 0, VT_EMPTY, VT_DISPATCH},
            {L"automation 2", M, 1, VT_BSTR, VT_DISPATCH},
            {L"automation 3", M, 0, VT_EMPTY, VT_DISPATCH},
            {L"automation 23", M, 0, VT_EMPTY, VT_DISPATCH},
            {L"automation 32", M, 2, VT_I4, VT_EMPTY},
            {L"playback 1", G, 0, VT_EMPTY, VT_I4},
            {L"playback 3", G, 0, VT_EMPTY, VT_I4},
            {L"playlist 1", G, 0, VT_EMPTY, VT_I4},
            {L"playlist 4", M, 0, VT_EMPTY, VT_I4},
            {L"playlist 5", M, 1, VT_I4, VT_DISPATCH},
            {L"file 1", G, 0, VT_EMPTY, VT_BSTR},
            {L"file 3", G, 0, VT_EMPTY, VT_BSTR},
            {L"file 6", G, 0, VT_EMPTY, VT_I4},
            {L"file 28", M, 0, VT_EMPTY, VT_BSTR},
            {L"file 35", M, 0, VT_EMPTY, VT_I4},
            {L"file 38", M, 1, VT_BSTR, VT_BSTR},
            {L"files 1", M, 0, VT_EMPTY, VT_I4},
            {L"play list 4", M, 1, VT_I4, VT_EMPTY},
            {L"play list 9", M, 1, VT_I4, VT_EMPTY},
        };
        const std::wstring call = m_object + L" " + std::to_wstring(id);
        const Member* member = std::find_if(std::begin(kMembers), std::end(kMembers),
                                            [&](const Member& m) { return call == m.call; });
        if (member == std::end(kMembers) || member->kind != kind || result == nullptr)
            return DISP_E_MEMBERNOTFOUND;
        if (parameters->cArgs != member->arguments)
            return DISP_E_BADPARAMCOUNT;
        std::wstring record = call;
        for (UINT i = parameters->cArgs; i-- > 0;) // the last argument comes first
        {
            const VARIANT& argument = parameters->rgvarg[i];
            if (argument.vt != member->argumentType)
                return DISP_E_TYPEMISMATCH;
            record += L" " + (argument.vt == VT_I4 ? std::to_wstring(argument.lVal)
                                                   : std::wstring(argument.bstrVal));
        }
        m_player.calls.push_back(record);
        if (call == m_player.outOfMemory)
            throw std::bad_alloc();
        VariantInit(result);
        if (call == m_player.failing)
            return DISP_E_EXCEPTION;
        result->vt = member->resultType;
        result->pdispVal = nullptr;
        if (member->resultType == VT_I4)
            result->lVal = Number(call);
        if (member->resultType == VT_BSTR)
            result->bstrVal = SysAllocString(Text(call, parameters->rgvarg).c_str());
        if (member->resultType != VT_DISPATCH || call == m_player.answersNoObject)
            return S_OK;
        if (call != L"playlist 5")
            result->pdispVal = new CFakeObject(m_player, id == 1   ? L"playback"
                                                         : id == 2 ? L"files"
                                                         : id == 3 ? L"playlist"
                                                                   : L"play list");
        else if (const int index = parameters->rgvarg[0].lVal;
                 index >= 0 && index < static_cast<int>(m_player.playlist.size()))
            result->pdispVal = new CFakeObject(m_player, L"file", index);
        else
            result->vt = VT_EMPTY;
        return result->vt == VT_EMPTY ? DISP_E_BADINDEX : S_OK;
    }

private:
    int Number(const std::wstring& call) const
    {
        const CFakePlayer& p = m_player;
        return call == L"playback 1"   ? p.state
               : call == L"playback 3" ? p.position
               : call == L"playlist 1" ? p.currentIndex
               : call == L"playlist 4" ? static_cast<int>(p.playlist.size())
               : call == L"files 1"    ? p.matches
               : call == L"file 6"     ? File().duration
                                       : File().key;
    }
    std::wstring Text(const std::wstring& call, const VARIANT* arguments) const
    {
        return call == L"file 3"    ? L"name of " + File().identity
               : call == L"file 28" ? L"further"
               : call == L"file 38" ? L"<" + File().identity + L" " + arguments[0].bstrVal + L">"
                                    : File().identity;
    }
    const FakeFile& File() const { return m_player.playlist.at(m_file); }

    CFakePlayer& m_player;
    const std::wstring m_object;
    const int m_file;
    ULONG m_references = 1;
};

} // namespace cvas::test
