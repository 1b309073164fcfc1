#pragma once
// Reports the messages of the application's own range (WM_USER and up, below
// WM_APP) that are posted to the hosted control's windows as the player's
// thread takes them: the control's requests to itself (the options on a first
// start, plays, rows of the submitted list) show in the player's report.

#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>

namespace cvas::player
{

class CPostedMessageReport
{
public:
    using Reporter = std::function<void(const std::wstring&)>;

    // container: the window whose descendants are the control's.
    CPostedMessageReport(HWND container, Reporter report);
    ~CPostedMessageReport();
    CPostedMessageReport(const CPostedMessageReport&) = delete;
    CPostedMessageReport& operator=(const CPostedMessageReport&) = delete;

private:
    static LRESULT CALLBACK OnMessage(int code, WPARAM removal, LPARAM message);

    Reporter m_report;
    HHOOK m_hook = nullptr;
};

// How many messages of this number the control's windows have taken since
// the report began (the player's thread only). WM_TIMER is counted too.
std::size_t PostedToControlCount(UINT message);

} // namespace cvas::player
