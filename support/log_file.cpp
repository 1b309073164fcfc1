#include "support/log_file.h"

#include "support/log_lines.h"
#include "support/text_encoding.h"
#include "support/wide_format.h"

#include <commctrl.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

namespace cvas
{
namespace
{

// The writer's working buffer: a longer message is cut to 2047 characters.
constexpr std::size_t kWorkingBufferChars = 2048;
constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";

struct FileCloser
{
    void operator()(FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<FILE, FileCloser>;

LogTime LocalLogTime()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear,   now.wMonth,  now.wDay,         now.wHour,
            now.wMinute, now.wSecond, now.wMilliseconds};
}

void PostOwnedLine(HWND view, WPARAM wParam, const std::wstring& line)
{
    auto copy = std::make_unique<std::wstring>(line);
    if (PostMessageW(view, kViewAddLineMessage, wParam, reinterpret_cast<LPARAM>(copy.get())))
        copy.release(); // the view window owns it now
}

} // namespace

CLogFile::CLogFile(std::wstring fileName, int lineLimit)
    : m_fileName(std::move(fileName)), m_lineLimit(lineLimit)
{
}

void CLogFile::SetViewWindow(HWND view)
{
    CLock lock(m_lock);
    m_viewWindow = view;
    m_viewFilled = false;
}

void CLogFile::Write(unsigned number, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const std::wstring text = FormatWideV(kWorkingBufferChars, format, args);
    va_end(args);
    WriteText(number, text);
}

void CLogFile::WriteText(unsigned number, std::wstring_view text)
{
    CLock lock(m_lock);
    WriteLocked(number, text);
}

void CLogFile::WriteCounted(std::atomic<unsigned>& counter, std::wstring_view text)
{
    CLock lock(m_lock);
    WriteLocked(++counter, text);
}

std::vector<std::wstring> CLogFile::Lines() const
{
    CLock lock(m_lock);
    return CurrentLines();
}

void CLogFile::WriteLocked(unsigned number, std::wstring_view text)
{
    text = text.substr(0, kWorkingBufferChars - 1);
    const std::wstring prefix = LogLinePrefix(LocalLogTime(), number);
    std::vector<std::wstring> newLines = SplitMessageLines(text);
    for (std::wstring& line : newLines)
        line.insert(0, prefix);
    const std::vector<std::wstring> oldLines = CurrentLines();
    if (WriteLines(newLines, oldLines))
        RememberWritten(newLines, oldLines);
    else
        m_knowsFile = false;
    if (m_viewWindow != nullptr)
        UpdateView(newLines, oldLines);
}

// Old lines are UTF-8 after a three-byte mark; the first three bytes are
// skipped whatever they are. A file that cannot be read counts as empty. The
// file is read and decoded a piece at a time, so that a foreign file with a
// huge line costs no more memory than a small one.
std::vector<std::wstring> CLogFile::ReadOldLines() const
{
    CLogPieceReader reader(static_cast<std::size_t>(m_lineLimit));
    FileHandle file(_wfopen(m_fileName.c_str(), L"rb"));
    if (!file)
        return {};
    char mark[3];
    if (std::fread(mark, 1, sizeof mark, file.get()) < sizeof mark)
        return {};

    // Each byte decodes to at most one unit: a read gives at most a piece.
    char bytes[kLogPieceChars];
    std::size_t carried = 0; // the start of a sequence that the last read cut off
    std::wstring text;
    while (!reader.Done())
    {
        const std::size_t got = std::fread(bytes + carried, 1, sizeof bytes - carried, file.get());
        const std::string_view chunk(bytes, carried + got);
        text.clear();
        if (got == 0)
        {
            AppendUtf8AsWide(chunk, text);
            reader.Feed(text);
            break;
        }
        const std::size_t used = AppendUtf8AsWidePartial(chunk, text);
        reader.Feed(text);
        carried = chunk.size() - used;
        std::memmove(bytes, bytes + used, carried);
    }
    reader.Finish();
    return reader.TakeLines();
}

std::vector<std::wstring> CLogFile::CurrentLines() const
{
    WIN32_FILE_ATTRIBUTE_DATA now{};
    const bool unchanged =
        m_knowsFile && GetFileAttributesExW(m_fileName.c_str(), GetFileExInfoStandard, &now) &&
        now.nFileSizeHigh == m_writtenFile.nFileSizeHigh &&
        now.nFileSizeLow == m_writtenFile.nFileSizeLow &&
        CompareFileTime(&now.ftLastWriteTime, &m_writtenFile.ftLastWriteTime) == 0;
    return unchanged ? m_written : ReadOldLines();
}

// What a read of the file would give: the new lines as the reader cuts and
// trims them (through their UTF-8 form, as the file holds them), then the
// old lines, which are read lines already, up to the limit. Only the new
// lines are looked at, however long the log.
void CLogFile::RememberWritten(const std::vector<std::wstring>& newLines,
                               const std::vector<std::wstring>& oldLines)
{
    m_knowsFile = false;
    if (!GetFileAttributesExW(m_fileName.c_str(), GetFileExInfoStandard, &m_writtenFile))
        return;
    const std::size_t limit = static_cast<std::size_t>(m_lineLimit);
    CLogPieceReader reader(limit);
    std::size_t writtenNew = 0;
    for (const std::wstring& line : newLines)
    {
        if (writtenNew == limit)
            break;
        ++writtenNew;
        std::wstring text;
        AppendUtf8AsWide(WideToUtf8(line), text);
        text += L"\r\n";
        reader.Feed(text);
    }
    reader.Finish();
    m_written = reader.TakeLines();
    for (std::size_t i = 0; i < oldLines.size() && writtenNew + i < limit; ++i)
    {
        if (m_written.size() == limit)
            break;
        m_written.push_back(oldLines[i]);
    }
    m_knowsFile = true;
}

bool CLogFile::WriteLines(const std::vector<std::wstring>& newLines,
                          const std::vector<std::wstring>& oldLines) const
{
    std::string bytes = kUtf8Mark;
    std::size_t written = 0;
    const std::size_t limit = static_cast<std::size_t>(m_lineLimit);
    for (const auto* lines : {&newLines, &oldLines})
    {
        for (const std::wstring& line : *lines)
        {
            if (written == limit)
                break;
            AppendWideAsUtf8(line, bytes);
            bytes += "\r\n"; // what a line feed becomes in a text file
            ++written;
        }
    }
    FileHandle file(_wfopen(m_fileName.c_str(), L"wb"));
    if (!file)
        return false; // this message is lost; a log never reports its own failures
    const bool whole = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    // Closed before its size and time are looked at.
    return std::fclose(file.release()) == 0 && whole;
}

void CLogFile::UpdateView(const std::vector<std::wstring>& newLines,
                          const std::vector<std::wstring>& oldLines)
{
    if (m_viewFilled)
    {
        const auto& lines = newLines.empty() ? oldLines : newLines;
        if (!lines.empty())
            PostOwnedLine(m_viewWindow, static_cast<WPARAM>(m_lineLimit), lines.front());
        return;
    }
    // The clear is sent so that it comes before the posted refill, but never
    // waits for the view's thread: this runs under the log's lock, and a
    // writer may hold other locks that the view's thread wants.
    SendNotifyMessageW(m_viewWindow, LVM_DELETEALLITEMS, 0, 0);
    PostMessageW(m_viewWindow, kViewRefillMessage, 0, 0);
    for (const auto* lines : {&newLines, &oldLines})
        for (const std::wstring& line : *lines)
            PostOwnedLine(m_viewWindow, 0, line);
    PostMessageW(m_viewWindow, kViewRefillMessage, 1, 0);
    m_viewFilled = true;
}

} // namespace cvas
