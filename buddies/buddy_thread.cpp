#include "buddies/buddy_thread.h"

#include "buddies/buddy_fetch.h"
#include "buddies/dlg_buddies.h"
#include "buddies/recommendation.h"
#include "buddies/skin_thread.h"
#include "host/host_state.h"
#include "settings/live_settings.h"
#include "support/com_ptr.h"
#include "support/message_box.h"
#include "support/module_thread.h"
#include "ui/dlg_status.h"

#include <objbase.h>

#include <utility>

namespace cvas
{
namespace
{

// The player's automation object, handed from the UI thread to a thread of
// ours: marshalled there, unmarshalled here, so that every call reaches the
// object in its own apartment.
class CMarshalledAutomation
{
public:
    // On the UI thread.
    CMarshalledAutomation()
    {
        if (HostAutomation() != nullptr && FAILED(CoMarshalInterThreadInterfaceInStream(
                                               IID_IDispatch, HostAutomation(), &m_stream)))
            m_stream = nullptr;
    }
    ~CMarshalledAutomation()
    {
        if (m_stream != nullptr)
            m_stream->Release();
    }
    CMarshalledAutomation(const CMarshalledAutomation&) = delete;
    CMarshalledAutomation& operator=(const CMarshalledAutomation&) = delete;

    // On the thread, once: the proxy, or null.
    CComPtr<IDispatch> Take()
    {
        IDispatch* automation = nullptr;
        IStream* stream = std::exchange(m_stream, nullptr);
        if (stream == nullptr || FAILED(CoGetInterfaceAndReleaseStream(
                                     stream, IID_IDispatch, reinterpret_cast<void**>(&automation))))
            return {};
        return CComPtr<IDispatch>::Adopt(automation);
    }

private:
    IStream* m_stream = nullptr;
};

// COM for the life of a thread of ours, in an apartment of its own, as its
// windows need.
class CThreadApartment
{
public:
    CThreadApartment() : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~CThreadApartment()
    {
        if (SUCCEEDED(m_result))
            CoUninitialize();
    }
    CThreadApartment(const CThreadApartment&) = delete;
    CThreadApartment& operator=(const CThreadApartment&) = delete;

private:
    HRESULT m_result;
};

// A thread of the hot keys: in an apartment of its own, with the player's
// automation object and its windows skinned by the player.
class CPlayerThreadWork : public CThreadWork
{
public:
    void Run() override
    {
        const CThreadApartment apartment;
        const CComPtr<IDispatch> automation = m_automation.Take();
        const CSkinThread skin(automation.Get());
        RunWith(automation.Get());
    }

protected:
    virtual void RunWith(IDispatch* automation) = 0;

private:
    CMarshalledAutomation m_automation;
};

class CBuddyThread : public CPlayerThreadWork
{
public:
    // On the UI thread, where the options sheet changes the settings.
    explicit CBuddyThread(HWND window)
        : m_settings(MakeBuddyFetchSettings(Settings())), m_window(window)
    {
    }

private:
    void RunWith(IDispatch* automation) override
    {
        CDlgStatus progress;
        progress.Create(nullptr);
        FetchAll(m_settings, progress);
        // The current list, which after a fetch that got nothing is that of
        // an earlier one.
        const CountedHandle<CBuddyInfo> list = CurrentBuddyList();
        if (!list)
        {
            InfoMessage(L"No buddy information found!");
            return;
        }
        progress.Destroy();
        CDlgBuddies dialog(list, automation, m_window);
        dialog.DoModal(m_window);
    }

    const CBuddyFetchSettings m_settings;
    const HWND m_window;
};

class CRecommendationThread : public CPlayerThreadWork
{
    void RunWith(IDispatch* automation) override { RecommendForCurrentTrack(automation); }
};

} // namespace

void StartBuddyThread(HWND window)
{
    DWORD error = 0;
    if (!StartModuleThread(std::make_shared<CBuddyThread>(window), error))
        WarningMessage(L"Failed to start the background AudioScrobbler buddy thread!");
}

void StartRecommendationThread()
{
    DWORD error = 0;
    if (!StartModuleThread(std::make_shared<CRecommendationThread>(), error))
        WarningMessage(L"Failed to start the background AudioScrobbler recommendation thread!");
}

} // namespace cvas
