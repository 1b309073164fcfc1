// Reading and writing document files: UTF-8 with or without a byte-order
// mark, or UTF-16LE with its mark. File names are wide on every platform.
#include "xml/xml_document.h"

#include "support/text_encoding.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

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

// Files are read in pieces of kReadPiece bytes (few calls into the system
// for a large file), decoded and parsed kDecodePiece bytes at a time (so
// that what is decoded is parsed while it is in the cache), and written in
// pieces of kWritePiece characters.
constexpr std::size_t kReadPiece = 512 * 1024;
constexpr std::size_t kDecodePiece = 8 * 1024;
constexpr std::size_t kWritePiece = 32768;

// Reads and decodes a UTF-8 file for the parser. A sequence cut at the end
// of a piece is completed from the next.
class CUtf8FileSupply final : public IXmlTextSupply
{
public:
    explicit CUtf8FileSupply(std::FILE* file)
        : m_file(file), m_buffer(std::make_unique_for_overwrite<char[]>(kReadPiece))
    {
    }

    bool Next(std::wstring& text) override
    {
        for (;;)
        {
            if (m_filled - m_at < kDecodePiece && !m_atEnd)
                Refill();
            if (m_at == m_filled)
                return false;
            const std::size_t length = std::min(kDecodePiece, m_filled - m_at);
            const std::string_view bytes(m_buffer.get() + m_at, length);
            const std::size_t before = text.size();
            if (m_atEnd && m_at + length == m_filled)
            {
                AppendUtf8AsWide(bytes, text);
                m_at += length;
            }
            else
            {
                m_at += AppendUtf8AsWidePartial(bytes, text);
            }
            if (text.size() > before)
                return true;
        }
    }

    std::size_t BytesRead() const { return m_bytesRead; }
    bool Failed() const { return m_failed; }

private:
    void Refill()
    {
        std::memmove(m_buffer.get(), m_buffer.get() + m_at, m_filled - m_at);
        m_filled -= m_at;
        m_at = 0;
        const std::size_t n =
            std::fread(m_buffer.get() + m_filled, 1, kReadPiece - m_filled, m_file);
        m_filled += n;
        m_bytesRead += n;
        if (n == 0)
        {
            m_atEnd = true;
            m_failed = std::ferror(m_file) != 0;
        }
    }

    std::FILE* m_file;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_filled = 0; // bytes in the buffer
    std::size_t m_at = 0;     // the first byte not yet decoded
    std::size_t m_bytesRead = 0;
    bool m_atEnd = false;
    bool m_failed = false;
};

} // namespace

void CXmlDocument::Load(const std::wstring& fileName)
{
    errno = 0;
    m_loaded = false;
    FilePointer file = OpenFile(fileName, false);
    if (!file)
    {
        m_result = ErrorText(errno);
        return;
    }
    std::uint32_t flags = m_flags & ~(kXmlDocUtf16Le | kXmlDocUtf8Bom | kXmlDocModified);
    std::wstring description;
    std::wstring error;
    if (!ReadAndParse(file.get(), flags, description, error))
    {
        m_result = ErrorText(errno);
        return;
    }
    m_text.swap(m_loadBuffer);
    m_loadBuffer.clear();
    std::swap(m_table, m_loadTable);
    m_flags = flags;
    m_result = std::move(description);
    m_loaded = true;
    FinishParse(std::move(error));
}

// Reads the file into m_loadBuffer and parses it into m_loadTable; false if
// it could not be read.
bool CXmlDocument::ReadAndParse(std::FILE* file, std::uint32_t& flags, std::wstring& description,
                                std::wstring& error)
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
    m_loadBuffer.clear();

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
        m_loadBuffer = Utf16LeToWide(bytes);
        description =
            std::wstring(kUtf16Mark) + std::to_wstring(m_loadBuffer.size()) + L" wide chars";
        error =
            m_builder.Build(m_loadBuffer, nullptr, m_loadBuffer.size(), IgnoresCase(), m_loadTable);
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
    const auto expected = static_cast<std::size_t>(size - start);
    m_loadBuffer.reserve(expected);
    CUtf8FileSupply supply(file);
    error = m_builder.Build(m_loadBuffer, &supply, expected, IgnoresCase(), m_loadTable);
    if (supply.Failed())
        return false;
    description = std::wstring(mark) + std::to_wstring(supply.BytesRead()) + L" bytes to " +
                  std::to_wstring(m_loadBuffer.size()) + L" wide chars";
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
