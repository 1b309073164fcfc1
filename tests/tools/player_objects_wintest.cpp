// The simulated player's automation objects, called as the plug-in calls
// them: IDispatch::Invoke by dispatch id, from one thread and from many.

#include <windows.h>

#include <gtest/gtest.h>
#include <oleauto.h>

#include <thread>
#include <vector>

#include "support/com_ptr.h"
#include "support/com_values.h"
#include "tools/player/automation_objects.h"

using namespace cvas;
using namespace cvas::player;

namespace
{

// A call's result, with what the tests read of it.
class CResult : public CVariant
{
public:
    VARTYPE Type() const { return V_VT(Get()); }
    LONG Number() const { return V_I4(Get()); }
    std::wstring Text() const { return Type() == VT_BSTR ? V_BSTR(Get()) : L"<none>"; }
    CComPtr<IDispatch> Object() const
    {
        return Type() == VT_DISPATCH ? CComPtr<IDispatch>(V_DISPATCH(Get())) : CComPtr<IDispatch>();
    }
};

VARIANT Number(LONG value, VARTYPE type = VT_I4)
{
    VARIANT variant;
    VariantInit(&variant);
    V_VT(&variant) = type;
    if (type == VT_I2)
        V_I2(&variant) = static_cast<SHORT>(value);
    else
        V_I4(&variant) = value;
    return variant;
}

// Owns the BSTR of a text argument.
struct CText
{
    explicit CText(const wchar_t* text)
    {
        VariantInit(&value);
        V_VT(&value) = VT_BSTR;
        V_BSTR(&value) = SysAllocString(text);
    }
    ~CText() { VariantClear(&value); }
    CText(const CText&) = delete;
    CText& operator=(const CText&) = delete;
    VARIANT value;
};

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kGet = DISPATCH_PROPERTYGET;

// Arguments in their natural order.
HRESULT Call(IDispatch* object, DISPID id, WORD flags, CResult& result,
             std::vector<VARIANT> arguments = {}, UINT* argumentError = nullptr)
{
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS params = {reversed.empty() ? nullptr : reversed.data(), nullptr,
                         static_cast<UINT>(reversed.size()), 0};
    return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result.Get(), nullptr,
                          argumentError);
}

CComPtr<IDispatch> Object(IDispatch* object, DISPID id, std::vector<VARIANT> arguments = {})
{
    CResult result;
    EXPECT_EQ(Call(object, id, kMethod, result, std::move(arguments)), S_OK) << "id " << id;
    return result.Object();
}

CLibraryFile File(int key, const wchar_t* fileName, int duration, const wchar_t* artist)
{
    CLibraryFile file;
    file.key = key;
    file.fileName = fileName;
    file.identity = std::wstring(L"C:\\Music\\") + fileName;
    file.duration = duration;
    file.further = L"more about " + std::to_wstring(key);
    file.fields = {{L"ARTIST", artist}, {L"NAME", L"Title " + std::to_wstring(key)}};
    return file;
}

class PlayerObjects : public testing::Test
{
protected:
    PlayerObjects()
        : player(CPlayerModel({File(11, L"a.mp3", 200, L"Ann"), File(22, L"b.wav", -1, L"Bo"),
                               File(33, L"c.mid", 40, L"Ann")},
                              {0, 1},
                              [this](double, const std::wstring& text) { events.push_back(text); }),
                 [this] { return realMs; }),
          context{player, ledger, false},
          automation(CComPtr<IDispatch>::Adopt(CreateAutomation(context)))
    {
    }
    ~PlayerObjects() override
    {
        automation.Release();
        EXPECT_EQ(ledger.Total(), 0) << testing::PrintToString(ledger.Describe());
    }

    std::uint64_t realMs = 0;
    std::vector<std::wstring> events;
    CSharedPlayer player;
    CRefLedger ledger;
    CAutomationContext context;
    CComPtr<IDispatch> automation;
};

} // namespace

TEST_F(PlayerObjects, EveryMemberOfTheTableAnswersWithItsKindOfResult)
{
    const CComPtr<IDispatch> playlist = Object(automation.Get(), 3);
    CResult count, index;
    ASSERT_EQ(Call(playlist.Get(), 4, kMethod, count), S_OK);
    ASSERT_EQ(Call(playlist.Get(), 1, kGet, index), S_OK);
    EXPECT_EQ(count.Type(), VT_I4);
    EXPECT_EQ(count.Number(), 2);
    EXPECT_EQ(index.Number(), 0);

    const CComPtr<IDispatch> file = Object(playlist.Get(), 5, {Number(1)});
    ASSERT_TRUE(file);
    const struct
    {
        DISPID id;
        WORD flags;
        const wchar_t* text; // null: a number is expected
        LONG number;
    } members[] = {
        {1, kGet, L"C:\\Music\\b.wav", 0},  {3, kGet, L"b.wav", 0},     {6, kGet, nullptr, -1},
        {28, kMethod, L"more about 22", 0}, {35, kMethod, nullptr, 22},
    };
    for (const auto& member : members)
    {
        CResult result;
        ASSERT_EQ(Call(file.Get(), member.id, member.flags, result), S_OK) << member.id;
        if (member.text != nullptr)
            EXPECT_EQ(result.Text(), member.text) << member.id;
        else
            EXPECT_EQ(result.Type() == VT_I4 ? result.Number() : -999, member.number) << member.id;
    }
    CText pattern(L"[ARTIST] - [NAME] [UNKNOWN] [filetype]");
    CResult filled;
    ASSERT_EQ(Call(file.Get(), 38, kMethod, filled, {pattern.value}), S_OK);
    EXPECT_EQ(filled.Text(), L"Bo - Title 22 [UNKNOWN] wav");

    // Callers that pass both flags, as many do, reach methods and gets alike.
    CResult both;
    EXPECT_EQ(Call(file.Get(), 35, kMethod | kGet, both), S_OK);
    EXPECT_EQ(Call(file.Get(), 3, kMethod | kGet, both), S_OK);
}

TEST_F(PlayerObjects, PlaybackFollowsThePlayerOnItsClock)
{
    const CComPtr<IDispatch> playback = Object(automation.Get(), 1);
    CResult state, position;
    ASSERT_EQ(Call(playback.Get(), 1, kGet, state), S_OK);
    EXPECT_EQ(state.Number(), kStopped);
    player.Access()->Play(0);
    player.SetSpeed(4);
    realMs += 10500;
    CResult playing;
    ASSERT_EQ(Call(playback.Get(), 1, kGet, playing), S_OK);
    ASSERT_EQ(Call(playback.Get(), 3, kGet, position), S_OK);
    EXPECT_EQ(playing.Number(), kPlaying);
    EXPECT_EQ(position.Number(), 42);
    // The playlist object is a view: it sees the next entry once the first ends.
    const CComPtr<IDispatch> playlist = Object(automation.Get(), 3);
    realMs += 50000;
    CResult index;
    ASSERT_EQ(Call(playlist.Get(), 1, kGet, index), S_OK);
    EXPECT_EQ(index.Number(), 1);
}

TEST_F(PlayerObjects, QueriesAnswerWithAFileListAndAreRecorded)
{
    CText query(L"~d=a [key]=[11] Filetype=[mp3],[wav],[ogg]");
    const CComPtr<IDispatch> list = Object(automation.Get(), 2, {query.value});
    CResult count;
    ASSERT_EQ(Call(list.Get(), 1, kMethod, count), S_OK);
    EXPECT_EQ(count.Number(), 1);

    CText byArtist(L"~d=d artist=[ann]");
    const CComPtr<IDispatch> both = Object(automation.Get(), 2, {byArtist.value});
    CResult two, key;
    ASSERT_EQ(Call(both.Get(), 1, kMethod, two), S_OK);
    EXPECT_EQ(two.Number(), 2);
    const CComPtr<IDispatch> first = Object(both.Get(), 5, {Number(0)});
    ASSERT_EQ(Call(first.Get(), 35, kMethod, key), S_OK);
    EXPECT_EQ(key.Number(), 33);

    CText broken(L"~d=a [key]=[11]\r\nFiletype=[mp3]");
    const CComPtr<IDispatch> none = Object(automation.Get(), 2, {broken.value});
    CResult zero;
    ASSERT_EQ(Call(none.Get(), 1, kMethod, zero), S_OK);
    EXPECT_EQ(zero.Number(), 0);

    const auto& queries = player.Access()->History().queries;
    ASSERT_EQ(queries.size(), 3u);
    EXPECT_EQ(queries[0].text, L"~d=a [key]=[11] Filetype=[mp3],[wav],[ogg]");
    EXPECT_FALSE(queries[2].result.error.empty());
}

TEST_F(PlayerObjects, PlayRequestAddsByKeyAndStartsTheEntry)
{
    const CComPtr<IDispatch> list = Object(automation.Get(), 23);
    CResult none;
    ASSERT_EQ(Call(list.Get(), 9, kMethod, none, {Number(33)}), S_OK);
    EXPECT_EQ(none.Type(), VT_EMPTY);
    EXPECT_EQ(player.Access()->State(), kStopped);
    ASSERT_EQ(Call(list.Get(), 4, kMethod, none, {Number(0)}), S_OK);
    {
        auto model = player.Access();
        EXPECT_EQ(model->State(), kPlaying);
        EXPECT_EQ(model->CurrentFile()->key, 33);
        EXPECT_EQ(model->PlaylistSize(), 3u);
        EXPECT_EQ(model->History().playRequests, std::vector<int>{33});
    }
    // Each request gets a new, empty list; an unknown key adds nothing.
    const CComPtr<IDispatch> fresh = Object(automation.Get(), 23);
    EXPECT_EQ(Call(fresh.Get(), 9, kMethod, none, {Number(99)}), S_OK);
    EXPECT_EQ(Call(fresh.Get(), 4, kMethod, none, {Number(0)}), DISP_E_BADINDEX);
    EXPECT_EQ(player.Access()->CurrentFile()->key, 33);
}

TEST_F(PlayerObjects, SkinningCallsAreRecorded)
{
    CResult none;
    ASSERT_EQ(Call(automation.Get(), 32, kMethod, none, {Number(1234), Number(1)}), S_OK);
    ASSERT_EQ(Call(automation.Get(), 32, kMethod, none, {Number(1234), Number(0)}), S_OK);
    EXPECT_EQ(player.Access()->History().skinning,
              (std::vector<std::pair<long, long>>{{1234, 1}, {1234, 0}}));
}

TEST_F(PlayerObjects, WrongCallsAreRefusedWithTheirDispatchErrors)
{
    const CComPtr<IDispatch> playlist = Object(automation.Get(), 3);
    const CComPtr<IDispatch> file = Object(playlist.Get(), 5, {Number(0)});
    CText text(L"abc");
    CText digits(L"1");
    const struct
    {
        IDispatch* object;
        DISPID id;
        WORD flags;
        std::vector<VARIANT> arguments;
        HRESULT expected;
    } cases[] = {
        {automation.Get(), 99, kMethod, {}, DISP_E_MEMBERNOTFOUND},
        {automation.Get(), 0, kMethod, {}, DISP_E_MEMBERNOTFOUND},
        {file.Get(), 2, kGet, {}, DISP_E_MEMBERNOTFOUND},
        {automation.Get(), 3, kGet, {}, DISP_E_MEMBERNOTFOUND}, // a method read as a get
        {file.Get(), 1, kMethod, {}, DISP_E_MEMBERNOTFOUND},    // a get called as a method
        {file.Get(), 1, DISPATCH_PROPERTYPUT, {}, DISP_E_MEMBERNOTFOUND}, // a put
        {automation.Get(), 2, kMethod, {}, DISP_E_BADPARAMCOUNT},
        {automation.Get(), 1, kMethod, {Number(1)}, DISP_E_BADPARAMCOUNT},
        {automation.Get(), 32, kMethod, {Number(1)}, DISP_E_BADPARAMCOUNT},
        {playlist.Get(), 5, kMethod, {text.value}, DISP_E_TYPEMISMATCH},
        {playlist.Get(), 5, kMethod, {Number(2)}, DISP_E_BADINDEX},
        {playlist.Get(), 5, kMethod, {Number(-1)}, DISP_E_BADINDEX},
        // Arguments that convert to the member's type are taken.
        {playlist.Get(), 5, kMethod, {Number(1, VT_I2)}, S_OK},
        {playlist.Get(), 5, kMethod, {digits.value}, S_OK},
    };
    int refusals = 0;
    for (std::size_t i = 0; i < std::size(cases); ++i)
    {
        CResult result;
        EXPECT_EQ(Call(cases[i].object, cases[i].id, cases[i].flags, result, cases[i].arguments),
                  cases[i].expected)
            << "case " << i;
        refusals += cases[i].expected != S_OK;
    }
    EXPECT_EQ(player.Access()->History().refusedCalls, refusals);

    // The argument at fault is named by its place in the array (reversed).
    UINT argumentError = 99;
    CResult result;
    EXPECT_EQ(Call(automation.Get(), 32, kMethod, result, {Number(1), text.value}, &argumentError),
              DISP_E_TYPEMISMATCH);
    EXPECT_EQ(argumentError, 0u);
    // Named arguments and other interface ids are not for this player.
    VARIANT argument = Number(0);
    DISPID named = 0;
    DISPPARAMS params = {&argument, &named, 1, 1};
    EXPECT_EQ(playlist->Invoke(5, IID_NULL, 0, kMethod, &params, result.Get(), nullptr, nullptr),
              DISP_E_NONAMEDARGS);
    EXPECT_EQ(
        playlist->Invoke(5, IID_IDispatch, 0, kMethod, &params, result.Get(), nullptr, nullptr),
        DISP_E_UNKNOWNINTERFACE);
}

TEST_F(PlayerObjects, TheLedgerCountsEveryLiveReferenceByKind)
{
    EXPECT_EQ(ledger.Total(), 1);
    EXPECT_EQ(ledger.Held(EObjectKind::Automation), 1);
    {
        const CComPtr<IDispatch> playlist = Object(automation.Get(), 3);
        const CComPtr<IDispatch> file = Object(playlist.Get(), 5, {Number(0)});
        const CComPtr<IDispatch> again(file.Get());
        EXPECT_EQ(ledger.Held(EObjectKind::Playlist), 1);
        EXPECT_EQ(ledger.Held(EObjectKind::File), 2);
        CComPtr<IUnknown> unknown;
        ASSERT_EQ(file.QueryInto(unknown, IID_IUnknown), S_OK);
        EXPECT_EQ(ledger.Held(EObjectKind::File), 3);
        CComPtr<IUnknown> other;
        EXPECT_EQ(file.QueryInto(other, IID_IOleWindow), E_NOINTERFACE);
        EXPECT_EQ(ledger.Held(EObjectKind::File), 3);
        EXPECT_EQ(ledger.Describe(), L"automation 1, playlist 1, file 3");
    }
    EXPECT_EQ(ledger.Describe(), L"automation 1");
    // A result the caller does not take is released at once.
    CText query(L"");
    VARIANT argument = query.value;
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    ASSERT_EQ(automation->Invoke(2, IID_NULL, 0, kMethod, &params, nullptr, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(ledger.Total(), 1);
    // A reference the caller keeps shows.
    IDispatch* kept = Object(automation.Get(), 1).Detach();
    EXPECT_EQ(ledger.Describe(), L"automation 1, playback 1");
    kept->Release();
}

TEST_F(PlayerObjects, CallsFromManyThreadsAtOnceKeepCountsAndRecords)
{
    player.SetSpeed(100);
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
    {
        threads.emplace_back([this, t] {
            for (int round = 0; round < kRounds; ++round)
            {
                CText query(L"artist=[Ann]");
                CResult list, position, count, none;
                if (Call(automation.Get(), 2, kMethod, list, {query.value}) == S_OK)
                    Call(list.Object().Get(), 1, kMethod, count);
                const CComPtr<IDispatch> playback = Object(automation.Get(), 1);
                Call(playback.Get(), 3, kGet, position);
                Call(automation.Get(), 32, kMethod, none, {Number(t), Number(round % 2)});
            }
        });
    }
    for (int round = 0; round < kRounds; ++round)
    {
        realMs += 10;
        player.Access()->Play(static_cast<std::size_t>(round % 2));
    }
    for (std::thread& thread : threads)
        thread.join();
    auto model = player.Access();
    EXPECT_EQ(model->History().queries.size(), static_cast<std::size_t>(kThreads * kRounds));
    EXPECT_EQ(model->History().skinning.size(), static_cast<std::size_t>(kThreads * kRounds));
    EXPECT_EQ(model->History().refusedCalls, 0);
    EXPECT_EQ(ledger.Total(), 1);
}
