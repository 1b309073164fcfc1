#include "tools/player/automation_objects.h"

#include "support/com_values.h"

#include <oleauto.h>

#include <memory>
#include <utility>
#include <vector>

namespace cvas::player
{

namespace
{

enum class ECallKind
{
    Method,
    Get,
};

enum class EArguments
{
    None,
    Number,     // I4
    Text,       // BSTR
    TwoNumbers, // I4, I4
};

struct CMember
{
    DISPID id;
    ECallKind kind;
    EArguments arguments;
};

struct CArguments
{
    LONG numbers[2] = {};
    std::wstring text;
};

unsigned ArgumentCount(EArguments arguments)
{
    switch (arguments)
    {
    case EArguments::None:
        return 0;
    case EArguments::Number:
    case EArguments::Text:
        return 1;
    case EArguments::TwoNumbers:
        return 2;
    }
    return 0;
}

std::wstring Describe(const VARIANT& value)
{
    switch (V_VT(&value))
    {
    case VT_I4:
        return std::to_wstring(V_I4(&value));
    case VT_BSTR:
        return L"\"" + std::wstring(V_BSTR(&value), SysStringLen(V_BSTR(&value))) + L"\"";
    case VT_DISPATCH:
        return L"an object";
    case VT_EMPTY:
        return L"nothing";
    default:
        return L"a variant of type " + std::to_wstring(V_VT(&value));
    }
}

std::wstring DescribeArguments(EArguments kind, const CArguments& arguments)
{
    switch (kind)
    {
    case EArguments::None:
        return L"";
    case EArguments::Number:
        return L"(" + std::to_wstring(arguments.numbers[0]) + L")";
    case EArguments::Text:
        return L"(\"" + arguments.text + L"\")";
    case EArguments::TwoNumbers:
        return L"(" + std::to_wstring(arguments.numbers[0]) + L", " +
               std::to_wstring(arguments.numbers[1]) + L")";
    }
    return L"";
}

void PutNumber(VARIANT& result, LONG number)
{
    V_VT(&result) = VT_I4;
    V_I4(&result) = number;
}

void PutText(VARIANT& result, const std::wstring& text)
{
    V_VT(&result) = VT_BSTR;
    V_BSTR(&result) = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

class CDispatchObject : public IDispatch
{
public:
    CDispatchObject(CAutomationContext& context, EObjectKind kind)
        : m_context(context), m_kind(kind)
    {
    }
    virtual ~CDispatchObject() = default;
    CDispatchObject(const CDispatchObject&) = delete;
    CDispatchObject& operator=(const CDispatchObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        if (iid != IID_IUnknown && iid != IID_IDispatch)
        {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        m_context.ledger.Add(m_kind, 1);
        return static_cast<ULONG>(InterlockedIncrement(&m_references));
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        m_context.ledger.Add(m_kind, -1);
        const LONG left = InterlockedDecrement(&m_references);
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        if (count == nullptr)
            return E_POINTER;
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override
    {
        if (info != nullptr)
            *info = nullptr;
        return DISP_E_BADINDEX;
    }
    // The player's members have dispatch ids only.
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT count, LCID,
                                            DISPID* ids) override
    {
        for (UINT i = 0; ids != nullptr && i < count; ++i)
            ids[i] = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO*, UINT* argumentError) override
    {
        const std::wstring name = std::wstring(KindName(m_kind)) + L" " + std::to_wstring(id);
        if (iid != IID_NULL)
            return Refuse(name + L": interface id not IID_NULL", DISP_E_UNKNOWNINTERFACE);
        if (params == nullptr)
            return Refuse(name + L": no parameters", E_POINTER);
        const CMember* member = Find(id);
        if (member == nullptr)
            return Refuse(name + L": no such member", DISP_E_MEMBERNOTFOUND);
        const WORD needed =
            member->kind == ECallKind::Method ? DISPATCH_METHOD : DISPATCH_PROPERTYGET;
        if ((flags & needed) == 0)
            return Refuse(name + L": called with flags " + std::to_wstring(flags) + L", not as a " +
                              (member->kind == ECallKind::Method ? L"method" : L"property get"),
                          DISP_E_MEMBERNOTFOUND);
        if (params->cNamedArgs != 0)
            return Refuse(name + L": named arguments", DISP_E_NONAMEDARGS);
        const unsigned expected = ArgumentCount(member->arguments);
        if (params->cArgs != expected)
            return Refuse(name + L": " + std::to_wstring(params->cArgs) + L" arguments, not " +
                              std::to_wstring(expected),
                          DISP_E_BADPARAMCOUNT);
        CArguments arguments;
        // The first argument is the last in the array.
        for (unsigned i = 0; i < expected; ++i)
        {
            const unsigned slot = expected - 1 - i;
            const VARTYPE type = member->arguments == EArguments::Text ? VT_BSTR : VT_I4;
            CVariant converted;
            if (FAILED(VariantChangeType(converted.Get(), &params->rgvarg[slot], 0, type)))
            {
                if (argumentError != nullptr)
                    *argumentError = slot;
                return Refuse(name + L": argument " + std::to_wstring(i + 1) + L" of type " +
                                  std::to_wstring(V_VT(&params->rgvarg[slot])),
                              DISP_E_TYPEMISMATCH);
            }
            if (type == VT_BSTR)
                arguments.text.assign(V_BSTR(converted.Get()),
                                      SysStringLen(V_BSTR(converted.Get())));
            else
                arguments.numbers[i] = V_I4(converted.Get());
        }
        CVariant discarded;
        VARIANT& answer = result != nullptr ? *result : *discarded.Get();
        VariantInit(&answer);
        auto model = m_context.player.Access();
        const HRESULT outcome = Call(id, arguments, *model, answer);
        const std::wstring call = name + DescribeArguments(member->arguments, arguments);
        if (FAILED(outcome))
            model->RecordRefusal(call + L": " + m_refusal);
        else if (m_context.trace)
            model->Event(L"call " + call + L" = " + Describe(answer));
        return outcome;
    }

protected:
    virtual const std::vector<CMember>& Members() const = 0;
    // Runs a member under the player's lock; on failure says why in m_refusal.
    virtual HRESULT Call(DISPID id, const CArguments& arguments, CPlayerModel& model,
                         VARIANT& result) = 0;

    // Hands out a new object with one reference for the caller.
    void PutObject(VARIANT& result, CDispatchObject* object)
    {
        object->AddRef();
        V_VT(&result) = VT_DISPATCH;
        V_DISPATCH(&result) = object;
    }
    HRESULT Fail(std::wstring why, HRESULT outcome)
    {
        m_refusal = std::move(why);
        return outcome;
    }

    CAutomationContext& m_context;

private:
    const CMember* Find(DISPID id) const
    {
        for (const CMember& member : Members())
        {
            if (member.id == id)
                return &member;
        }
        return nullptr;
    }
    HRESULT Refuse(const std::wstring& what, HRESULT outcome)
    {
        m_context.player.Access()->RecordRefusal(what);
        return outcome;
    }

    EObjectKind m_kind;
    LONG m_references = 0;
    std::wstring m_refusal; // written under the player's lock
};

class CFile : public CDispatchObject
{
public:
    CFile(CAutomationContext& context, std::size_t libraryIndex)
        : CDispatchObject(context, EObjectKind::File), m_index(libraryIndex)
    {
    }

private:
    const std::vector<CMember>& Members() const override
    {
        static const std::vector<CMember> members = {
            {1, ECallKind::Get, EArguments::None},     {3, ECallKind::Get, EArguments::None},
            {6, ECallKind::Get, EArguments::None},     {28, ECallKind::Method, EArguments::None},
            {35, ECallKind::Method, EArguments::None}, {38, ECallKind::Method, EArguments::Text}};
        return members;
    }
    HRESULT Call(DISPID id, const CArguments& arguments, CPlayerModel& model,
                 VARIANT& result) override
    {
        const CLibraryFile& file = model.Library()[m_index];
        switch (id)
        {
        case 1:
            PutText(result, file.identity);
            break;
        case 3:
            PutText(result, file.fileName);
            break;
        case 6:
            PutNumber(result, file.duration);
            break;
        case 28:
            PutText(result, file.further);
            break;
        case 35:
            PutNumber(result, file.key);
            break;
        default:
            PutText(result, FillTemplate(file, arguments.text));
            break;
        }
        return S_OK;
    }

    std::size_t m_index;
};

// Dispatch id 5 on a file list is this player's own addition beside the
// count: the file at an index, as on the playlist.
class CFileList : public CDispatchObject
{
public:
    CFileList(CAutomationContext& context, std::vector<std::size_t> files)
        : CDispatchObject(context, EObjectKind::FileList), m_files(std::move(files))
    {
    }

private:
    const std::vector<CMember>& Members() const override
    {
        static const std::vector<CMember> members = {{1, ECallKind::Method, EArguments::None},
                                                     {5, ECallKind::Method, EArguments::Number}};
        return members;
    }
    HRESULT Call(DISPID id, const CArguments& arguments, CPlayerModel&, VARIANT& result) override
    {
        if (id == 1)
        {
            PutNumber(result, static_cast<LONG>(m_files.size()));
            return S_OK;
        }
        const LONG index = arguments.numbers[0];
        if (index < 0 || static_cast<std::size_t>(index) >= m_files.size())
            return Fail(L"no file at that index", DISP_E_BADINDEX);
        PutObject(result, new CFile(m_context, m_files[static_cast<std::size_t>(index)]));
        return S_OK;
    }

    std::vector<std::size_t> m_files; // library indexes
};

class CPlayback : public CDispatchObject
{
public:
    explicit CPlayback(CAutomationContext& context)
        : CDispatchObject(context, EObjectKind::Playback)
    {
    }

private:
    const std::vector<CMember>& Members() const override
    {
        static const std::vector<CMember> members = {{1, ECallKind::Get, EArguments::None},
                                                     {3, ECallKind::Get, EArguments::None}};
        return members;
    }
    HRESULT Call(DISPID id, const CArguments&, CPlayerModel& model, VARIANT& result) override
    {
        PutNumber(result, id == 1 ? model.State() : model.Position());
        return S_OK;
    }
};

// A view of the player's one playlist as it is at each call.
class CPlaylist : public CDispatchObject
{
public:
    explicit CPlaylist(CAutomationContext& context)
        : CDispatchObject(context, EObjectKind::Playlist)
    {
    }

private:
    const std::vector<CMember>& Members() const override
    {
        static const std::vector<CMember> members = {{4, ECallKind::Method, EArguments::None},
                                                     {1, ECallKind::Get, EArguments::None},
                                                     {5, ECallKind::Method, EArguments::Number}};
        return members;
    }
    HRESULT Call(DISPID id, const CArguments& arguments, CPlayerModel& model,
                 VARIANT& result) override
    {
        if (id == 4)
        {
            PutNumber(result, static_cast<LONG>(model.PlaylistSize()));
            return S_OK;
        }
        if (id == 1)
        {
            PutNumber(result, model.CurrentIndex());
            return S_OK;
        }
        const LONG index = arguments.numbers[0];
        if (index < 0 || static_cast<std::size_t>(index) >= model.PlaylistSize())
            return Fail(L"no entry at that index", DISP_E_BADINDEX);
        PutObject(result,
                  new CFile(m_context, model.PlaylistFile(static_cast<std::size_t>(index))));
        return S_OK;
    }
};

// The list that a play request fills: new and empty from each request.
class CPlayList : public CDispatchObject
{
public:
    explicit CPlayList(CAutomationContext& context)
        : CDispatchObject(context, EObjectKind::PlayList)
    {
    }

private:
    const std::vector<CMember>& Members() const override
    {
        static const std::vector<CMember> members = {{9, ECallKind::Method, EArguments::Number},
                                                     {4, ECallKind::Method, EArguments::Number}};
        return members;
    }
    HRESULT Call(DISPID id, const CArguments& arguments, CPlayerModel& model, VARIANT&) override
    {
        const LONG number = arguments.numbers[0];
        if (id == 9)
        {
            model.RecordPlayRequest(number);
            if (const auto found = model.FindKey(number))
                m_files.push_back(*found);
            return S_OK;
        }
        if (number < 0 || static_cast<std::size_t>(number) >= m_files.size())
            return Fail(L"the list holds " + std::to_wstring(m_files.size()) + L" file(s)",
                        DISP_E_BADINDEX);
        model.PlayLibraryFile(m_files[static_cast<std::size_t>(number)]);
        return S_OK;
    }

    std::vector<std::size_t> m_files; // library indexes
};

class CAutomation : public CDispatchObject
{
public:
    explicit CAutomation(CAutomationContext& context)
        : CDispatchObject(context, EObjectKind::Automation)
    {
    }

private:
    const std::vector<CMember>& Members() const override
    {
        static const std::vector<CMember> members = {
            {1, ECallKind::Method, EArguments::None},
            {2, ECallKind::Method, EArguments::Text},
            {3, ECallKind::Method, EArguments::None},
            {23, ECallKind::Method, EArguments::None},
            {32, ECallKind::Method, EArguments::TwoNumbers}};
        return members;
    }
    HRESULT Call(DISPID id, const CArguments& arguments, CPlayerModel& model,
                 VARIANT& result) override
    {
        switch (id)
        {
        case 1:
            PutObject(result, new CPlayback(m_context));
            break;
        case 2:
            PutObject(result, new CFileList(m_context, model.Query(arguments.text).matches));
            break;
        case 3:
            PutObject(result, new CPlaylist(m_context));
            break;
        case 23:
            PutObject(result, new CPlayList(m_context));
            break;
        default:
            model.RecordSkinning(arguments.numbers[0], arguments.numbers[1]);
            break;
        }
        return S_OK;
    }
};

} // namespace

const wchar_t* KindName(EObjectKind kind)
{
    static const wchar_t* const names[kObjectKinds] = {L"automation", L"playback",  L"playlist",
                                                       L"file",       L"file list", L"play list"};
    return names[static_cast<std::size_t>(kind)];
}

long CRefLedger::Total() const
{
    long total = 0;
    for (const auto& count : m_counts)
        total += count;
    return total;
}

std::wstring CRefLedger::Describe() const
{
    std::wstring text;
    for (std::size_t i = 0; i < kObjectKinds; ++i)
    {
        if (m_counts[i] != 0)
            text += (text.empty() ? L"" : L", ") +
                    std::wstring(KindName(static_cast<EObjectKind>(i))) + L" " +
                    std::to_wstring(m_counts[i]);
    }
    return text.empty() ? L"none" : text;
}

IDispatch* CreateAutomation(CAutomationContext& context)
{
    auto* automation = new CAutomation(context);
    automation->AddRef();
    return automation;
}

} // namespace cvas::player
