#pragma once
// The four message boxes of the plug-in, all with the caption "last.fm" and
// no owner window. Texts are formatted printf-style into 1,024 characters.

#include <functional>
#include <stdexcept>
#include <string>

namespace cvas
{

// What FatalMessage raises after its box: a state that must not occur.
class CFatalError : public std::runtime_error
{
public:
    explicit CFatalError(const std::wstring& text);
    const std::wstring& Text() const { return m_text; }

private:
    std::wstring m_text;
};

void InfoMessage(const wchar_t* format, ...);
int WarningMessage(const wchar_t* format, ...);
int AskMessage(unsigned flags, const wchar_t* format, ...);
[[noreturn]] void FatalMessage(const wchar_t* format, ...);

// The one seam between these functions and the screen: a handler given the
// text, the caption and the box style that returns what the box would have
// returned. Tests install one so that nothing ever waits on a modal box.
// An empty handler restores the real box. Returns the previous handler.
using MessageBoxHandler =
    std::function<int(const std::wstring& text, const wchar_t* caption, unsigned style)>;
MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler);

} // namespace cvas
