#include "xml/xml_escaping.h"

#include "support/text_encoding.h"
#include "xml/xml_char_search.h"

#include <algorithm>
#include <cstdint>

namespace cvas
{
namespace
{

bool IsAsciiLetter(std::uint32_t c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool StartsEntityName(wchar_t c)
{
    const auto u = static_cast<std::uint32_t>(c);
    return IsAsciiLetter(u) || u == '#' || u == '_' || u == ':' || u > 0x7F;
}

bool ContinuesEntityName(wchar_t c)
{
    const auto u = static_cast<std::uint32_t>(c);
    return IsAsciiLetter(u) || (u >= '0' && u <= '9') || u == '_' || u == ':' || u == '-' ||
           u == '.' || u > 0x7F;
}

// Length of the entity reference at value[at] ("&...;"), or 0 if there is none.
std::size_t EntityReferenceLength(std::wstring_view value, std::size_t at)
{
    std::size_t i = at + 1;
    if (i >= value.size() || !StartsEntityName(value[i]))
        return 0;
    ++i;
    while (i < value.size() && ContinuesEntityName(value[i]))
        ++i;
    return i < value.size() && value[i] == L';' ? i + 1 - at : 0;
}

int DigitValue(wchar_t c, bool hex)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (hex && c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (hex && c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

// A character reference at text[at] ("&#65;", "&#x41;"): its length, with
// the code in code; 0 when it is not one. The semicolon must come within
// seven characters of the number's start, and code 0 is no character.
std::size_t CharacterReference(std::wstring_view text, std::size_t at, char32_t& code)
{
    std::size_t i = at + 2;
    const bool hex = i < text.size() && text[i] == L'x';
    if (hex)
        ++i;
    const std::size_t numberStart = i;
    std::uint32_t value = 0;
    while (i < text.size() && i - numberStart < 7)
    {
        const int digit = DigitValue(text[i], hex);
        if (digit < 0)
            break;
        value = value * (hex ? 16 : 10) + static_cast<std::uint32_t>(digit);
        ++i;
    }
    if (i == numberStart || i >= text.size() || text[i] != L';' || value == 0 || value > 0x10FFFF)
        return 0;
    code = value;
    return i + 1 - at;
}

struct NamedEntity
{
    std::wstring_view name;
    wchar_t character;
};

constexpr NamedEntity kNamedEntities[] = {
    {L"&lt;", L'<'}, {L"&amp;", L'&'}, {L"&gt;", L'>'}, {L"&apos;", L'\''}, {L"&quot;", L'"'},
};

} // namespace

void AppendXmlEscaped(std::wstring_view value, bool escapeQuotes, bool keepEntities,
                      std::wstring& out)
{
    const wchar_t* const end = value.data() + value.size();
    const wchar_t* run = value.data(); // the start of what is copied as it is
    for (const wchar_t* at = run;; ++at)
    {
        at = escapeQuotes ? FindXmlCharacter(at, end, L'<', L'>', L'&', L'\'', L'"')
                          : FindXmlCharacter(at, end, L'<', L'>', L'&');
        if (at == end)
            break;
        std::wstring_view replacement;
        switch (*at)
        {
        case L'<':
            replacement = L"&lt;";
            break;
        case L'>':
            replacement = L"&gt;";
            break;
        case L'&':
            if (keepEntities &&
                EntityReferenceLength(value, static_cast<std::size_t>(at - value.data())) != 0)
                continue;
            replacement = L"&amp;";
            break;
        case L'\'':
            replacement = L"&apos;";
            break;
        default:
            replacement = L"&quot;";
            break;
        }
        out.append(run, at);
        out.append(replacement);
        run = at + 1;
    }
    out.append(run, end);
}

std::wstring EscapeXmlText(std::wstring_view value, bool escapeQuotes, bool keepEntities)
{
    std::wstring out;
    out.reserve(value.size() + value.size() / 10 + 7);
    AppendXmlEscaped(value, escapeQuotes, keepEntities, out);
    return out;
}

// Unescaping never lengthens a text (a reference of at least four
// characters gives at most two units), so the result is written straight
// into room made for the whole text and then cut to its length.
void AppendXmlUnescaped(std::wstring_view text, std::wstring& out)
{
    const std::size_t start = out.size();
    out.resize(start + text.size());
    wchar_t* const first = out.data() + start;
    wchar_t* write = first;
    const wchar_t* const end = text.data() + text.size();
    for (const wchar_t* read = text.data(); read < end;)
    {
        const wchar_t* const amp = FindXmlCharacter(read, end, L'&');
        write = std::copy(read, amp, write);
        if (amp == end)
            break;
        const std::size_t at = static_cast<std::size_t>(amp - text.data());
        std::size_t used = 0;
        if (end - amp > 2 && amp[1] == L'#')
        {
            char32_t code = 0;
            used = CharacterReference(text, at, code);
            if (used != 0)
                write += WriteCodePointAsWide(code, write);
        }
        else
        {
            const std::wstring_view rest = text.substr(at);
            for (const NamedEntity& entity : kNamedEntities)
            {
                // The second character tells most of them apart, cheaply.
                if (rest.size() >= entity.name.size() && rest[1] == entity.name[1] &&
                    rest.starts_with(entity.name))
                {
                    *write++ = entity.character;
                    used = entity.name.size();
                    break;
                }
            }
        }
        if (used == 0)
        {
            *write++ = L'&';
            used = 1;
        }
        read = amp + used;
    }
    out.resize(start + static_cast<std::size_t>(write - first));
}

std::wstring UnescapeXmlText(std::wstring_view text)
{
    const wchar_t* const end = text.data() + text.size();
    if (FindXmlCharacter(text.data(), end, L'&') == end)
        return std::wstring(text);
    std::wstring out;
    AppendXmlUnescaped(text, out);
    return out;
}

void AppendXmlCdata(std::wstring_view value, std::wstring& out)
{
    out += L"<![CDATA[";
    std::size_t from = 0;
    for (std::size_t at = value.find(L"]]>"); at != std::wstring_view::npos;
         at = value.find(L"]]>", from))
    {
        out.append(value.substr(from, at - from));
        out += L"]]]]><![CDATA[>";
        from = at + 3;
    }
    out.append(value.substr(from));
    out += L"]]>";
}

} // namespace cvas
