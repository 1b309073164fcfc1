#pragma once
// Message boxes captured instead of shown.

#include <string>
#include <vector>

namespace cvas::test
{

struct CapturedMessage
{
    std::wstring text;
    std::wstring caption;
    unsigned style;
};

// The box as a person sees it: "icon, buttons: text", with the icon
// "information", "exclamation", "question", "stop" or "no icon" and the
// buttons "OK", "OK/Cancel", "Yes/No", "Yes/No/Cancel" or the type's
// number; any other style bit follows as "+0x…".
std::wstring Seen(const CapturedMessage& message);

// Installs the capturing handler (the test main does this first of all).
void InstallMessageCapture();
// Takes the boxes captured so far, oldest first, and forgets them.
std::vector<CapturedMessage> TakeCapturedMessages();
// What the next captured boxes answer (IDOK until changed).
void SetCapturedAnswer(int answer);

} // namespace cvas::test
