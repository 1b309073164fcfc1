#pragma once
// One log file: newest lines first, at most a line limit of them, each
// behind a dated and numbered prefix. Every message writes the whole file
// again, from the lines this log keeps in memory; the file is read again
// only when someone else changed it since this log wrote it.

#include <windows.h>

#include <atomic>
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
    void WriteLocked(unsigned number, std::wstring_view text);
    std::vector<std::wstring> ReadOldLines() const;
    // The lines of the file, newest first: those kept in memory while the
    // file is as this log left it, else those read from it.
    std::vector<std::wstring> CurrentLines() const;
    // Keeps the lines of the file just written and notes its size and time.
    void RememberWritten(const std::vector<std::wstring>& newLines,
                         const std::vector<std::wstring>& oldLines);
    // False when the file could not be written whole.
    bool WriteLines(const std::vector<std::wstring>& newLines,
                    const std::vector<std::wstring>& oldLines) const;
    void UpdateView(const std::vector<std::wstring>& newLines,
                    const std::vector<std::wstring>& oldLines);

    const std::wstring m_fileName;
    const int m_lineLimit;
    HWND m_viewWindow = nullptr;
    bool m_viewFilled = false;
    // The file's lines as a read of it would give them, newest first, and
    // the size and time the file had when this log wrote them.
    std::vector<std::wstring> m_written;
    bool m_knowsFile = false;
    WIN32_FILE_ATTRIBUTE_DATA m_writtenFile{};
    mutable CCriticalSection m_lock;
};

} // namespace cvas
