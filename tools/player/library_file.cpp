#include "tools/player/library_file.h"

#include <utility>

namespace cvas::player
{

namespace
{

// Folding enough of Unicode for test libraries; a real player would use the
// system's rules, which this tool need not copy.
wchar_t FoldCase(wchar_t c)
{
    if (c >= L'A' && c <= L'Z')
        return static_cast<wchar_t>(c + 32);
    if ((c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3AB && c != 0x3A2) ||
        (c >= 0x410 && c <= 0x42F))
        return static_cast<wchar_t>(c + 32);
    if (c >= 0x400 && c <= 0x40F)
        return static_cast<wchar_t>(c + 80);
    return c;
}

} // namespace

CLibraryFile SongFile(int key, std::wstring fileName, std::wstring artist, std::wstring name,
                      int duration)
{
    CLibraryFile file;
    file.key = key;
    file.identity = fileName;
    file.fileName = std::move(fileName);
    file.duration = duration;
    file.fields = {{L"ARTIST", std::move(artist)}, {L"NAME", std::move(name)}};
    return file;
}

bool EqualsIgnoringCase(std::wstring_view a, std::wstring_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        if (FoldCase(a[i]) != FoldCase(b[i]))
            return false;
    }
    return true;
}

std::wstring FileType(std::wstring_view fileName)
{
    const std::size_t dot = fileName.rfind(L'.');
    const std::size_t separator = fileName.find_last_of(L"\\/");
    if (dot == std::wstring_view::npos || (separator != std::wstring_view::npos && separator > dot))
        return {};
    return std::wstring(fileName.substr(dot + 1));
}

std::optional<std::wstring> FieldValue(const CLibraryFile& file, std::wstring_view name)
{
    if (EqualsIgnoringCase(name, L"KEY"))
        return std::to_wstring(file.key);
    if (EqualsIgnoringCase(name, L"IDENTITY"))
        return file.identity;
    if (EqualsIgnoringCase(name, L"FILENAME"))
        return file.fileName;
    if (EqualsIgnoringCase(name, L"FILETYPE"))
        return FileType(file.fileName);
    if (EqualsIgnoringCase(name, L"DURATION"))
        return std::to_wstring(file.duration);
    for (const auto& [field, value] : file.fields)
    {
        if (EqualsIgnoringCase(field, name))
            return value;
    }
    return std::nullopt;
}

std::wstring FillTemplate(const CLibraryFile& file, std::wstring_view text)
{
    std::wstring filled;
    std::size_t at = 0;
    while (at < text.size())
    {
        const std::size_t open = text.find(L'[', at);
        const std::size_t close = open == std::wstring_view::npos ? open : text.find(L']', open);
        if (close == std::wstring_view::npos)
            break;
        // "[[ARTIST]" keeps its first bracket: the word starts at the last '['.
        const std::size_t wordStart = text.rfind(L'[', close) + 1;
        filled.append(text.substr(at, wordStart - 1 - at));
        const std::wstring_view word = text.substr(wordStart, close - wordStart);
        if (auto value = FieldValue(file, word))
            filled += *value;
        else
            filled.append(text.substr(wordStart - 1, close - wordStart + 2));
        at = close + 1;
    }
    filled.append(text.substr(at));
    return filled;
}

} // namespace cvas::player
