#include "scrobbler/queue/track_record.h"

#include "scrobbler/queue/wire_escaping.h"
#include "support/text_encoding.h"
#include "support/wide_format.h"

#include <algorithm>

namespace cvas
{
namespace
{

std::size_t CountUtf8Characters(std::string_view utf8)
{
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

} // namespace

const wchar_t* TrackFieldName(TrackField field)
{
    switch (field)
    {
    case TrackField::Artist:
        return L"artist";
    case TrackField::Album:
        return L"album";
    case TrackField::Name:
        return L"name";
    case TrackField::Duration:
        return L"duration";
    case TrackField::Time:
        return L"time";
    }
    return L"";
}

CTrackRecord::CTrackRecord(std::wstring artist, std::wstring album, std::wstring name,
                           std::wstring duration, std::wstring time,
                           const CReplacementTable& replacements)
    : m_artist(std::move(artist)), m_album(std::move(album)), m_name(std::move(name)),
      m_duration(std::move(duration)), m_time(std::move(time))
{
    // Duration and time go through an empty table: replacements never touch
    // them, even where an lhs matches their digits or dashes.
    const CReplacementTable none;
    m_artistBytes = WireForm(TrackField::Artist, m_artist, replacements);
    m_albumBytes = WireForm(TrackField::Album, m_album, replacements);
    m_nameBytes = WireForm(TrackField::Name, m_name, replacements);
    m_durationBytes = WireForm(TrackField::Duration, m_duration, none);
    m_timeBytes = WireForm(TrackField::Time, m_time, none);
}

std::string CTrackRecord::WireForm(TrackField field, const std::wstring& text,
                                   const CReplacementTable& replacements)
{
    const std::string utf8 = WideToUtf8(ApplyReplacements(replacements, text));
    CWireText wire = EscapeForWire(utf8);
    if (wire.cut)
        m_wireCuts.push_back(
            {field, CountUtf8Characters(std::string_view(utf8).substr(0, wire.sourceUsed)),
             CountUtf8Characters(utf8)});
    return std::move(wire.bytes);
}

std::wstring FormatTrackTime(int year, int month, int day, int hour, int minute, int second)
{
    return FormatWide(80, L"%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour, minute, second);
}

} // namespace cvas
