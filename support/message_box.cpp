#include "support/message_box.h"

#include "support/text_encoding.h"
#include "support/wide_format.h"

#include <windows.h>

#include <cstdarg>
#include <mutex>

namespace cvas
{
namespace
{

constexpr std::size_t kMessageBufferChars = 1024;
constexpr wchar_t kCaption[] = L"last.fm";

std::mutex g_handlerMutex;
MessageBoxHandler g_handler;

int ShowBox(const std::wstring& text, unsigned style)
{
    MessageBoxHandler handler;
    {
        std::lock_guard<std::mutex> lock(g_handlerMutex);
        handler = g_handler;
    }
    if (handler)
        return handler(text, kCaption, style);
    return MessageBoxW(nullptr, text.c_str(), kCaption, style);
}

int ShowFormatted(unsigned style, const wchar_t* format, va_list args)
{
    return ShowBox(FormatWideV(kMessageBufferChars, format, args), style);
}

} // namespace

CFatalError::CFatalError(const std::wstring& text)
    : std::runtime_error(WideToUtf8(text)), m_text(text)
{
}

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler)
{
    std::lock_guard<std::mutex> lock(g_handlerMutex);
    MessageBoxHandler previous = std::move(g_handler);
    g_handler = std::move(handler);
    return previous;
}

void InfoMessage(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    ShowFormatted(MB_ICONINFORMATION, format, args);
    va_end(args);
}

int WarningMessage(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const int result = ShowFormatted(MB_ICONEXCLAMATION, format, args);
    va_end(args);
    return result;
}

int AskMessage(unsigned flags, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const int result = ShowFormatted(MB_ICONQUESTION | flags, format, args);
    va_end(args);
    return result;
}

void FatalMessage(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const std::wstring text = FormatWideV(kMessageBufferChars, format, args);
    va_end(args);
    ShowBox(text, MB_ICONERROR);
    throw CFatalError(text);
}

} // namespace cvas
