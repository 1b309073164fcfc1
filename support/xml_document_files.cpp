// Reading and writing document files: UTF-8 with or without a byte-order
// mark, or UTF-16LE with its mark. File names are wide on every platform.
#include "support/xml_document.h"

#include "support/text_encoding.h"

#include <cerrno>
#include <cstring>
#include <memory>

namespace cvas
{
namespace
{

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, FileCloser>;

FilePointer OpenFile(const std::wstring& fileName, bool forWriting)
{
#ifdef _WIN32
    return FilePointer(_wfopen(fileName.c_str(), forWriting ? L"wb" : L"rb"));
#else
    return FilePointer(std::fopen(WideToUtf8(fileName).c_str(), forWriting ? "wb" : "rb"));
#endif
}

// The C runtime's message for an error number.
std::wstring ErrorText(int error)
{
    return Utf8ToWide(std::strerror(error));
}

constexpr std::wstring_view kUtf8Mark = L"UTF-8 BOM + ";
constexpr std::wstring_view kUtf16Mark = L"UTF-16LE BOM + ";

// Files are read in pieces of this many bytes (few enough calls into the
// system for a large file) and written in pieces of this many characters.
constexpr std::size_t kReadPiece = 512 * 1024;
constexpr std::size_t kWritePiece = 32768;

} // namespace

void CXmlDocument::Load(const std::wstring& fileName)
{
    errno = 0;
    FilePointer file = OpenFile(fileName, false);
    if (!file)
    {
        m_result = ErrorText(errno);
        return;
    }
    std::uint32_t flags = m_flags;
    std::wstring description;
    if (!ReadFile(file.get(), m_loadBuffer, flags, description))
    {
        m_result = ErrorText(errno);
        return;
    }
    // The old text's memory waits for the next load.
    m_text.swap(m_loadBuffer);
    m_loadBuffer.clear();
    m_flags = flags & ~kXmlDocModified;
    m_result = std::move(description);
    Parse(m_text, false);
}

bool CXmlDocument::ReadFile(std::FILE* file, std::wstring& text, std::uint32_t& flags,
                            std::wstring& description)
{
    if (std::fseek(file, 0, SEEK_END) != 0)
        return false;
    const long size = std::ftell(file);
    if (size < 0 || std::fseek(file, 0, SEEK_SET) != 0)
        return false;
    unsigned char head[3] = {};
    const std::size_t got = std::fread(head, 1, sizeof head, file);
    if (std::ferror(file))
        return false;
    text.clear();
    flags &= ~(kXmlDocUtf16Le | kXmlDocUtf8Bom);

    if (got >= 2 && head[0] == 0xFF && head[1] == 0xFE)
    {
        // UTF-16LE: the rest of the file as little-endian units as they stand.
        flags |= kXmlDocUtf16Le;
        std::string bytes(static_cast<std::size_t>(size) - 2, '\0');
        if (std::fseek(file, 2, SEEK_SET) != 0)
            return false;
        bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
        if (std::ferror(file))
            return false;
        text = Utf16LeToWide(bytes);
        description = std::wstring(kUtf16Mark) + std::to_wstring(text.size()) + L" wide chars";
        return true;
    }

    std::wstring_view mark;
    long start = 0;
    if (got == 3 && head[0] == 0xEF && head[1] == 0xBB && head[2] == 0xBF)
    {
        flags |= kXmlDocUtf8Bom;
        mark = kUtf8Mark;
        start = 3;
    }
    if (std::fseek(file, start, SEEK_SET) != 0)
        return false;
    text.reserve(static_cast<std::size_t>(size - start));
    // Decoded piece by piece; a sequence cut at the end of a piece is carried
    // to the front of the next.
    const std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(kReadPiece);
    std::size_t carried = 0;
    std::size_t bytesRead = 0;
    for (;;)
    {
        const std::size_t n = std::fread(buffer.get() + carried, 1, kReadPiece - carried, file);
        if (n == 0)
            break;
        bytesRead += n;
        const std::size_t available = carried + n;
        const std::size_t used =
            AppendUtf8AsWidePartial(std::string_view(buffer.get(), available), text);
        carried = available - used;
        std::memmove(buffer.get(), buffer.get() + used, carried);
    }
    if (std::ferror(file))
        return false;
    AppendUtf8AsWide(std::string_view(buffer.get(), carried), text);
    description = std::wstring(mark) + std::to_wstring(bytesRead) + L" bytes to " +
                  std::to_wstring(text.size()) + L" wide chars";
    return true;
}

bool CXmlDocument::Save(const std::wstring& fileName)
{
    errno = 0;
    FilePointer file = OpenFile(fileName, true);
    if (!file)
    {
        m_result = ErrorText(errno);
        return false;
    }
    std::wstring description;
    bool written = WriteFile(file.get(), description);
    if (std::fclose(file.release()) != 0)
        written = false;
    if (!written)
    {
        m_result = ErrorText(errno);
        return false;
    }
    m_result = std::move(description);
    return true;
}

bool CXmlDocument::WriteFile(std::FILE* file, std::wstring& description) const
{
    const bool utf16 = (m_flags & kXmlDocUtf16Le) != 0;
    const bool utf8Mark = !utf16 && (m_flags & kXmlDocUtf8Bom) != 0;
    std::string bytes;
    if (utf16)
        bytes = "\xFF\xFE";
    else if (utf8Mark)
        bytes = "\xEF\xBB\xBF";
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
        return false;

    std::size_t textBytes = 0;
    const std::wstring_view text = m_text;
    for (std::size_t at = 0; at < text.size();)
    {
        // A piece never ends between the two halves of a surrogate pair.
        std::size_t end = std::min(at + kWritePiece, text.size());
        const auto last = static_cast<std::uint32_t>(text[end - 1]);
        if (end < text.size() && end - at > 1 && last >= 0xD800 && last <= 0xDBFF)
            --end;
        bytes.clear();
        if (utf16)
            bytes = WideToUtf16Le(text.substr(at, end - at));
        else
            AppendWideAsUtf8(text.substr(at, end - at), bytes);
        if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
            return false;
        textBytes += bytes.size();
        at = end;
    }

    const std::wstring count = std::to_wstring(text.size());
    if (utf16)
        description = std::wstring(kUtf16Mark) + count + L" wide chars";
    else
        description = count + L" wide chars to " + std::wstring(utf8Mark ? kUtf8Mark : L"") +
                      std::to_wstring(textBytes) + L" bytes";
    return true;
}

} // namespace cvas
