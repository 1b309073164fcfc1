#include "support/log_file.h"

#include "support/log_lines.h"
#include "support/text_encoding.h"
#include "support/wide_format.h"

#include <commctrl.h>

#include <algorithm>
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
    if (!FileIsAsLeft())
        return ReadOldLines();
    std::vector<std::wstring> lines;
    lines.reserve(m_kept.size());
    for (const CKeptLine& line : m_kept)
        lines.push_back(line.text);
    return lines;
}

void CLogFile::WriteLocked(unsigned number, std::wstring_view text)
{
    text = text.substr(0, kWorkingBufferChars - 1);
    const std::wstring prefix = LogLinePrefix(LocalLogTime(), number);
    std::vector<std::wstring> newLines = SplitMessageLines(text);
    for (std::wstring& line : newLines)
        line.insert(0, prefix);
    if (!FileIsAsLeft())
        Keep(ReadOldLines());

    // The new lines, then the kept ones, at most the limit of them in all.
    const std::size_t limit = static_cast<std::size_t>(m_lineLimit);
    const std::size_t writtenNew = std::min(newLines.size(), limit);
    const std::size_t writtenOld = std::min(m_kept.size(), limit - writtenNew);
    std::string bytes = kUtf8Mark;
    for (std::size_t i = 0; i < writtenNew; ++i)
    {
        AppendWideAsUtf8(newLines[i], bytes);
        bytes += "\r\n"; // what a line feed becomes in a text file
    }
    for (std::size_t i = 0; i < writtenOld; ++i)
        bytes += m_kept[i].bytes;

    m_keptFromThisLog = false;
    // A message that cannot be written is lost: a log never reports its own
    // failures.
    const bool written = ReplaceFile(bytes);
    if (m_viewWindow != nullptr)
        UpdateView(newLines);
    if (written)
        KeepWritten(newLines, writtenNew, writtenOld);
}

bool CLogFile::ReplaceFile(const std::string& bytes) const
{
    FileHandle file(_wfopen(m_fileName.c_str(), L"wb"));
    if (!file)
        return false;
    const bool whole = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    // Closed before its size and time are looked at.
    return std::fclose(file.release()) == 0 && whole;
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

CLogFile::CKeptLine CLogFile::MakeKeptLine(const std::wstring& text)
{
    CKeptLine kept{text, {}};
    AppendWideAsUtf8(text, kept.bytes);
    kept.bytes += "\r\n";
    return kept;
}

bool CLogFile::FileIsAsLeft() const
{
    WIN32_FILE_ATTRIBUTE_DATA now{};
    return m_keptFromThisLog &&
           GetFileAttributesExW(m_fileName.c_str(), GetFileExInfoStandard, &now) &&
           now.nFileSizeHigh == m_leftFile.nFileSizeHigh &&
           now.nFileSizeLow == m_leftFile.nFileSizeLow &&
           CompareFileTime(&now.ftLastWriteTime, &m_leftFile.ftLastWriteTime) == 0;
}

void CLogFile::Keep(const std::vector<std::wstring>& lines)
{
    m_kept.clear();
    for (const std::wstring& line : lines)
        m_kept.push_back(MakeKeptLine(line));
}

// A read of the new file gives the new lines as the reader cuts and trims
// them (read through their UTF-8 form, as the file holds them), then the old
// lines, which are read lines already; at most the limit of them. Only the
// new lines are looked at, however long the log.
void CLogFile::KeepWritten(const std::vector<std::wstring>& newLines, std::size_t writtenNew,
                           std::size_t writtenOld)
{
    if (!GetFileAttributesExW(m_fileName.c_str(), GetFileExInfoStandard, &m_leftFile))
        return;
    const std::size_t limit = static_cast<std::size_t>(m_lineLimit);
    CLogPieceReader reader(limit);
    for (std::size_t i = 0; i < writtenNew; ++i)
    {
        std::wstring text;
        AppendUtf8AsWide(WideToUtf8(newLines[i]), text);
        text += L"\r\n";
        reader.Feed(text);
    }
    reader.Finish();
    const std::vector<std::wstring> pieces = reader.TakeLines();
    m_kept.resize(writtenOld);
    for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece)
        m_kept.push_front(MakeKeptLine(*piece));
    while (m_kept.size() > limit)
        m_kept.pop_back();
    m_keptFromThisLog = true;
}

// Called while the kept lines are still the old ones.
void CLogFile::UpdateView(const std::vector<std::wstring>& newLines)
{
    if (m_viewFilled)
    {
        if (!newLines.empty())
            PostOwnedLine(m_viewWindow, static_cast<WPARAM>(m_lineLimit), newLines.front());
        else if (!m_kept.empty())
            PostOwnedLine(m_viewWindow, static_cast<WPARAM>(m_lineLimit), m_kept.front().text);
        return;
    }
    // The clear is sent so that it comes before the posted refill, but never
    // waits for the view's thread: this runs under the log's lock, and a
    // writer may hold other locks that the view's thread wants.
    SendNotifyMessageW(m_viewWindow, LVM_DELETEALLITEMS, 0, 0);
    PostMessageW(m_viewWindow, kViewRefillMessage, 0, 0);
    for (const std::wstring& line : newLines)
        PostOwnedLine(m_viewWindow, 0, line);
    for (const CKeptLine& line : m_kept)
        PostOwnedLine(m_viewWindow, 0, line.text);
    PostMessageW(m_viewWindow, kViewRefillMessage, 1, 0);
    m_viewFilled = true;
}

} // namespace cvas
