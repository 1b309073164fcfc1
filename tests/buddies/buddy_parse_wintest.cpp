// One buddy shown by two threads at once (two buddy dialogs of two presses
// of the hot key show the same list): it is parsed and matched in the
// library once, by one thread, and the other finds the tracks.
#include "buddies/buddy_info.h"
#include "host/automation_ids.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

using namespace cvas;

namespace
{

// Bound of every wait that is meant to end: far beyond what it needs.
constexpr std::chrono::seconds kStepLimit{60};

// A library that counts its queries by their text and finds nothing. The
// first query is held until LetGo(); any other is answered at once.
class CHeldLibrary final : public IDispatch
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        *out = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
        return *out != nullptr ? S_OK : E_NOINTERFACE;
    }
    // On the test's stack, which outlives every caller.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters,
                                     VARIANT*, EXCEPINFO*, UINT*) override
    {
        if (id != kAutomationQueryLibrary || parameters->cArgs != 1 ||
            parameters->rgvarg[0].vt != VT_BSTR)
            return DISP_E_MEMBERNOTFOUND;
        std::unique_lock<std::mutex> lock(m_mutex);
        ++m_queries[parameters->rgvarg[0].bstrVal];
        ++m_count;
        m_changed.notify_all();
        if (m_count == 1)
            m_changed.wait_for(lock, kStepLimit, [this] { return m_released; });
        return DISP_E_EXCEPTION; // no file matched
    }

    // Lets the held query go.
    void LetGo()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_released = true;
        m_changed.notify_all();
    }
    // Waits, at most limit, until count queries have come.
    bool AwaitQueries(int count, std::chrono::milliseconds limit)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, limit, [&] { return m_count >= count; });
    }
    std::map<std::wstring, int> Queries()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_queries;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::wstring, int> m_queries;
    int m_count = 0;
    bool m_released = false;
};

std::wstring Track(const std::wstring& artist)
{
    return L"<track><artist>" + artist +
           L"</artist><name>Song</name><url>u</url>"
           L"<date uts=\"1700000000\"/></track>";
}

// Runs work on a thread of its own; Join() waits for it at most kStepLimit.
class CBoundedThread
{
public:
    explicit CBoundedThread(std::function<void()> work)
        : m_thread([this, work = std::move(work)] {
              work();
              m_done = true;
          })
    {
    }
    ~CBoundedThread() { Join(); }
    bool Done() const { return m_done; }
    void Join()
    {
        if (!m_thread.joinable())
            return;
        const auto end = std::chrono::steady_clock::now() + kStepLimit;
        while (!m_done && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (!m_done)
        {
            // Nothing is ever killed: the run ends here.
            ADD_FAILURE() << "a parsing thread did not end";
            std::fflush(nullptr);
            std::_Exit(1);
        }
        m_thread.join();
    }

private:
    std::atomic<bool> m_done{false};
    std::thread m_thread;
};

} // namespace

TEST(BuddyParse, TwoThreadsShowingOneBuddyParseItOnce)
{
    CHeldLibrary library;
    auto buddy = std::make_shared<CBuddy>();
    buddy->rawRecentTracks =
        L"<recenttracks>" + Track(L"One") + Track(L"Two") + Track(L"Three") + L"</recenttracks>";
    CBoundedThread first([&] { buddy->ParseRecentTracks(&library); });
    ASSERT_TRUE(library.AwaitQueries(1, kStepLimit)) << "the first parse reached the library";
    std::atomic<bool> secondStarted{false};
    CBoundedThread second([&] {
        secondStarted = true;
        buddy->ParseRecentTracks(&library);
    });
    while (!secondStarted)
        std::this_thread::yield();
    // A second parse of the buddy would reach the library within moments;
    // parsed once, the buddy keeps the second thread waiting meanwhile. (A
    // slow machine can only hide a second parse here, never fail the test.)
    EXPECT_FALSE(library.AwaitQueries(2, std::chrono::seconds(2)))
        << "the second thread matched tracks while the first parsed";
    EXPECT_FALSE(second.Done()) << "the second thread did not wait for the first's parse";
    library.LetGo();
    first.Join();
    second.Join();

    EXPECT_EQ(library.Queries(), (std::map<std::wstring, int>{{L"artist=[One] name=[Song]", 1},
                                                              {L"artist=[Two] name=[Song]", 1},
                                                              {L"artist=[Three] name=[Song]", 1}}))
        << "each track matched once";
    ASSERT_EQ(buddy->recentTracks.size(), 3u) << "the tracks, once";
    EXPECT_EQ(buddy->recentTracks[2]->artist, L"Three");
    EXPECT_TRUE(buddy->rawRecentTracks.empty());
}

// An error answer stays for the next showing, whichever thread shows it.
TEST(BuddyParse, AnErrorAnswerRaisesEachTimeAndStaysRaw)
{
    auto buddy = std::make_shared<CBuddy>();
    buddy->rawRecentTracks = L"Error: User not found";
    EXPECT_THROW(buddy->ParseRecentTracks(nullptr), CBuddyFeedError);
    CBoundedThread other([&] { EXPECT_THROW(buddy->ParseRecentTracks(nullptr), CBuddyFeedError); });
    other.Join();
    EXPECT_EQ(buddy->rawRecentTracks, L"Error: User not found");
    EXPECT_TRUE(buddy->recentTracks.empty());
}
