// Exceptions thrown inside the system's callbacks, through the guards that
// every entry point of the plug-in uses: a window procedure reached through
// SendMessage and DispatchMessage, a module thread's work, and a COM method
// called through its vtable, directly and by COM itself. Each time the
// callback answers its boundary's value, the process goes on, and the guard
// notes what it caught in the status log and nowhere else. (The poll's real
// timer is in host_wintests, dialog procedures in dialog_procedure_wintest.)
#include "common/captured_messages.h"
#include "support/boundary_fixture.h"
#include "support/callback_boundary.h"
#include "support/logs.h"
#include "support/module_thread.h"
#include "ui/test_window.h"
#include "ui/ui_handles.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <memory>

using namespace cvas;
using namespace cvas::test;

namespace
{

constexpr UINT kThrowMessage = WM_APP + 1;
constexpr LRESULT kAnswered = 42;
constexpr LRESULT kHandled = 7;

// What the window procedure's handler of kThrowMessage throws (wParam).
LRESULT CALLBACK GuardedProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != kThrowMessage)
        return DefWindowProcW(window, message, wParam, lParam);
    return GuardWindowProcedure(L"test window", kHandled, [&] {
        Throw(static_cast<Thrown>(wParam));
        return kAnswered;
    });
}

using WindowProcedure = BoundaryTest;

TEST_F(WindowProcedure, AnswersHandledWhateverItsHandlerThrows)
{
    const CWindow window(CreateTestWindow(L"CvasGuardedWindow", &GuardedProcedure));
    ASSERT_TRUE(window);
    for (const Thrown thrown : kEveryThrown)
    {
        SCOPED_TRACE(Describe(thrown));
        const LRESULT expected = thrown == Thrown::Nothing ? kAnswered : kHandled;
        const auto wParam = static_cast<WPARAM>(thrown);
        EXPECT_EQ(SendMessageW(window.Get(), kThrowMessage, wParam, 0), expected);
        ExpectNoted(thrown, L"test window");

        ASSERT_TRUE(PostMessageW(window.Get(), kThrowMessage, wParam, 0));
        MSG message;
        ASSERT_TRUE(PeekMessageW(&message, window.Get(), kThrowMessage, kThrowMessage, PM_REMOVE));
        EXPECT_EQ(DispatchMessageW(&message), expected);
        ExpectNoted(thrown, L"test window");
    }
}

TEST_F(WindowProcedure, ShowsNoBoxWithoutAStatusLog)
{
    const CWindow window(CreateTestWindow(L"CvasGuardedWindow", &GuardedProcedure));
    ASSERT_TRUE(window);
    CloseLogs();
    for (const Thrown thrown : {Thrown::OutOfMemory, Thrown::Other})
        EXPECT_EQ(SendMessageW(window.Get(), kThrowMessage, static_cast<WPARAM>(thrown), 0),
                  kHandled);
    EXPECT_TRUE(TakeCapturedMessages().empty());
}

class CThrowingWork : public CThreadWork
{
public:
    explicit CThrowingWork(Thrown thrown) : m_thrown(thrown) {}
    void Run() override { Throw(m_thrown); }

private:
    const Thrown m_thrown;
};

using ModuleThread = BoundaryTest;

TEST_F(ModuleThread, EndsAndLetsGoWhateverItsWorkThrows)
{
    for (const Thrown thrown : kEveryThrown)
    {
        SCOPED_TRACE(Describe(thrown));
        const long live = LiveModuleThreads();
        auto work = std::make_shared<CThrowingWork>(thrown);
        const std::weak_ptr<CThrowingWork> watch = work;
        DWORD error = 0;
        const CHandle thread = StartModuleThread(std::move(work), error);
        ASSERT_TRUE(thread) << error;
        ASSERT_EQ(WaitForSingleObject(thread.Get(), 60000), WAIT_OBJECT_0) << "the thread ended";
        DWORD exitCode = STILL_ACTIVE;
        EXPECT_TRUE(GetExitCodeThread(thread.Get(), &exitCode));
        EXPECT_EQ(exitCode, 0u);
        EXPECT_EQ(LiveModuleThreads(), live);
        EXPECT_TRUE(watch.expired()) << "the thread let go of its work";
        ExpectNoted(thrown, L"module thread");
    }
}

// COM for the life of a test, in this thread's own apartment.
class CApartment
{
public:
    CApartment() : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~CApartment()
    {
        if (SUCCEEDED(m_result))
            CoUninitialize();
    }
    CApartment(const CApartment&) = delete;
    CApartment& operator=(const CApartment&) = delete;
    HRESULT Result() const { return m_result; }

private:
    const HRESULT m_result;
};

// A class factory whose CreateInstance throws what it is told to, or makes
// nothing.
class CThrowingFactory final : public IClassFactory
{
public:
    Thrown thrown = Thrown::Nothing;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override
    {
        *object = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID, void** object) override
    {
        return GuardComMethod(L"test factory", [&]() -> HRESULT {
            *object = nullptr;
            Throw(thrown);
            return CLASS_E_CLASSNOTAVAILABLE;
        });
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

// {4A1D5E0C-7B0E-4C55-9E3A-0C2B8F6D1A77}: this test's own class.
constexpr CLSID kTestClass = {
    0x4a1d5e0c, 0x7b0e, 0x4c55, {0x9e, 0x3a, 0x0c, 0x2b, 0x8f, 0x6d, 0x1a, 0x77}};

HRESULT Expected(Thrown thrown)
{
    switch (thrown)
    {
    case Thrown::Nothing:
        return CLASS_E_CLASSNOTAVAILABLE;
    case Thrown::OutOfMemory:
        return E_OUTOFMEMORY;
    default:
        return E_UNEXPECTED;
    }
}

using ComMethod = BoundaryTest;

TEST_F(ComMethod, AnswersAFailureWhateverItThrows)
{
    const CApartment apartment;
    ASSERT_TRUE(SUCCEEDED(apartment.Result()));
    CThrowingFactory factory;
    DWORD cookie = 0;
    ASSERT_EQ(CoRegisterClassObject(kTestClass, &factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                    &cookie),
              S_OK);
    for (const Thrown thrown : kEveryThrown)
    {
        SCOPED_TRACE(Describe(thrown));
        factory.thrown = thrown;
        IClassFactory* const vtable = &factory;
        void* object = &factory;
        EXPECT_EQ(vtable->CreateInstance(nullptr, IID_IUnknown, &object), Expected(thrown));
        EXPECT_EQ(object, nullptr);
        ExpectNoted(thrown, L"test factory");

        // By COM, which calls the factory from its own code.
        object = &factory;
        EXPECT_EQ(
            CoCreateInstance(kTestClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object),
            Expected(thrown));
        EXPECT_EQ(object, nullptr);
        ExpectNoted(thrown, L"test factory");
    }
    EXPECT_EQ(CoRevokeClassObject(cookie), S_OK);
}

} // namespace
