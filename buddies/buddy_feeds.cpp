#include "buddies/buddy_feeds.h"

#include "xml/xml_document.h"

#include <ctime>
#include <limits>

namespace cvas
{
namespace
{

// White space as isspace sees it in the "C" locale.
bool IsCSpace(wchar_t c)
{
    return c == L' ' || c == L'\t' || c == L'\n' || c == L'\v' || c == L'\f' || c == L'\r';
}

bool LocalTime(std::time_t time, std::tm& local)
{
#if defined(_WIN32)
    return localtime_s(&local, &time) == 0;
#else
    return localtime_r(&time, &local) != nullptr;
#endif
}

// value as decimal digits, at least width of them (zeros in front).
void AppendNumber(long long value, int width, std::wstring& out)
{
    const std::wstring digits = std::to_wstring(value);
    for (int i = static_cast<int>(digits.size()); i < width; ++i)
        out += L'0';
    out += digits;
}

} // namespace

std::vector<std::wstring> ParseFriendNames(std::wstring_view document)
{
    std::vector<std::wstring> names;
    if (document.empty())
        return names;
    const CountedHandle<CXmlDocument> xml = NewDocument();
    xml->SetDoc(document);
    if (!xml->FindElem(L"friends") || !xml->IntoElem())
        return names;
    while (xml->FindElem(L"user"))
        names.push_back(xml->GetAttrib(L"username"));
    return names;
}

bool IsErrorAnswer(std::wstring_view response)
{
    return response.starts_with(L"Error:");
}

std::vector<CParsedRecentTrack> ParseRecentTracks(std::wstring_view document)
{
    std::vector<CParsedRecentTrack> tracks;
    const CountedHandle<CXmlDocument> xml = NewDocument();
    xml->SetDoc(document);
    if (!xml->FindElem(L"recenttracks") || !xml->IntoElem())
        return tracks;
    while (xml->FindElem(L"track"))
    {
        // Inside the track, each FindElem goes on after the element the one
        // before it found, so the four must come in this order.
        xml->IntoElem();
        CParsedRecentTrack track;
        bool complete = false;
        if (xml->FindElem(L"artist"))
        {
            track.artist = xml->GetData();
            if (xml->FindElem(L"name"))
            {
                track.name = xml->GetData();
                if (xml->FindElem(L"url"))
                {
                    track.url = xml->GetData();
                    if (xml->FindElem(L"date"))
                    {
                        track.uts = xml->GetAttrib(L"uts");
                        complete = true;
                    }
                }
            }
        }
        xml->OutOfElem();
        if (complete)
            tracks.push_back(std::move(track));
    }
    return tracks;
}

long long UtsSeconds(std::wstring_view text)
{
    std::size_t i = 0;
    while (i < text.size() && IsCSpace(text[i]))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == L'+' || text[i] == L'-'))
        negative = text[i++] == L'-';
    // Accumulated as a negative number, whose range is the larger one.
    constexpr long long kMin = std::numeric_limits<long long>::min();
    long long value = 0;
    bool clamped = false;
    for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i)
    {
        const int digit = text[i] - L'0';
        if (clamped)
            continue;
        if (value < (kMin + digit) / 10)
            clamped = true;
        else
            value = value * 10 - digit;
    }
    if (clamped)
        return negative ? kMin : std::numeric_limits<long long>::max();
    if (negative)
        return value;
    return value == kMin ? std::numeric_limits<long long>::max() : -value;
}

std::wstring WhenText(long long utsSeconds)
{
    static constexpr wchar_t kWeekdays[7][4] = {L"Sun", L"Mon", L"Tue", L"Wed",
                                                L"Thu", L"Fri", L"Sat"};
    static constexpr wchar_t kMonths[12][4] = {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun",
                                               L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};
    if (utsSeconds < std::numeric_limits<std::time_t>::min() ||
        utsSeconds > std::numeric_limits<std::time_t>::max())
        return {};
    std::tm local{};
    if (!LocalTime(static_cast<std::time_t>(utsSeconds), local))
        return {};
    if (local.tm_wday < 0 || local.tm_wday > 6 || local.tm_mon < 0 || local.tm_mon > 11)
        return {};
    std::wstring text;
    text.reserve(24);
    text += kWeekdays[local.tm_wday];
    text += L' ';
    text += kMonths[local.tm_mon];
    text += L' ';
    AppendNumber(local.tm_mday, 2, text);
    text += L' ';
    AppendNumber(local.tm_hour, 2, text);
    text += L':';
    AppendNumber(local.tm_min, 2, text);
    text += L':';
    AppendNumber(local.tm_sec, 2, text);
    text += L' ';
    AppendNumber(static_cast<long long>(local.tm_year) + 1900, 0, text);
    return text;
}

} // namespace cvas
