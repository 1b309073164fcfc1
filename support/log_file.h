#pragma once
// One log file: newest lines first, at most a line limit of them, each
// behind a dated and numbered prefix. Every message writes the whole file
// again, from the lines this log keeps in memory; the file is read again
// only when someone else changed it since this log wrote it.

#include <windows.h>

#include <atomic>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "support/critical_section.h"

namespace cvas
{

// Messages posted to a log's view window; each line travels as a heap
// std::wstring whose ownership passes to the window.
constexpr UINT kViewRefillMessage = WM_USER + 3;  // wParam 0: refill begins, 1: complete
constexpr UINT kViewAddLineMessage = WM_USER + 4; // wParam 0 or the line limit

class CLogFile
{
public:
    CLogFile(std::wstring fileName, int lineLimit);
    virtual ~CLogFile() = default;
    CLogFile(const CLogFile&) = delete;
    CLogFile& operator=(const CLogFile&) = delete;

    const std::wstring& FileName() const { return m_fileName; }
    int LineLimit() const { return m_lineLimit; }

    // The window that shows this log, or null; it is filled on the next write.
    void SetViewWindow(HWND view);

    // Formats printf-style (use %ls for wide strings) and writes the text
    // with the given number in its prefix.
    void Write(unsigned number, const wchar_t* format, ...);
    void WriteText(unsigned number, std::wstring_view text);
    // Writes the text numbered with the counter's next value, taken under
    // this log's lock so that the file's numbers follow the order of writing.
    void WriteCounted(std::atomic<unsigned>& counter, std::wstring_view text);
    // The lines in the file, newest first, read under this log's lock so that
    // a reader never meets the file half rewritten.
    std::vector<std::wstring> Lines() const;

private:
    // A line of the file as a read of it gives it, with the bytes a write
    // puts in the file for it (UTF-8 and CR LF).
    struct CKeptLine
    {
        std::wstring text;
        std::string bytes;
    };

    static CKeptLine MakeKeptLine(const std::wstring& text);
    void WriteLocked(unsigned number, std::wstring_view text);
    std::vector<std::wstring> ReadOldLines() const;
    // Whether the file still has the size and time this log's last write
    // left it with.
    bool FileIsAsLeft() const;
    // Keeps lines read from the file.
    void Keep(const std::vector<std::wstring>& lines);
    // After a write of newLines above writtenOld kept lines: the kept lines
    // become what a read of the new file gives, and its size and time are
    // noted.
    void KeepWritten(const std::vector<std::wstring>& newLines, std::size_t writtenNew,
                     std::size_t writtenOld);
    // Replaces the file with bytes; false when they are not all written.
    bool ReplaceFile(const std::string& bytes) const;
    void UpdateView(const std::vector<std::wstring>& newLines);

    const std::wstring m_fileName;
    const int m_lineLimit;
    HWND m_viewWindow = nullptr;
    bool m_viewFilled = false;
    // The file's lines, newest first, at most the limit of them; they stand
    // for the file while it has the size and time noted with them.
    std::deque<CKeptLine> m_kept;
    bool m_keptFromThisLog = false;
    WIN32_FILE_ATTRIBUTE_DATA m_leftFile{};
    mutable CCriticalSection m_lock;
};

} // namespace cvas
