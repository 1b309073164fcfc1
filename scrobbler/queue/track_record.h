#pragma once
// One play waiting for submission: the five texts as the player gave them
// and, built once when the record is made, the form each is sent in
// (replacements applied to artist, album and name; UTF-8; percent-escaped).

#include "scrobbler/queue/replacements.h"

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace cvas
{

enum class TrackField
{
    Artist,
    Album,
    Name,
    Duration,
    Time,
};

// "artist", "album", "name", "duration" or "time", as log lines name them.
const wchar_t* TrackFieldName(TrackField field);

// A field whose wire form would not fit a request field: only its first
// characters (code points) are sent.
struct CWireCut
{
    TrackField field;
    std::size_t charactersSent;
    std::size_t characters;
};

class CTrackRecord
{
public:
    // The replacements act on the wire forms of artist, album and name only;
    // the texts are kept as given, so the queue file always holds what the
    // player said and the table current at each load is applied again.
    CTrackRecord(std::wstring artist, std::wstring album, std::wstring name, std::wstring duration,
                 std::wstring time, const CReplacementTable& replacements);

    const std::wstring& Artist() const { return m_artist; }
    const std::wstring& Album() const { return m_album; }
    const std::wstring& Name() const { return m_name; }
    const std::wstring& Duration() const { return m_duration; }
    const std::wstring& Time() const { return m_time; }

    const std::string& ArtistBytes() const { return m_artistBytes; }
    const std::string& AlbumBytes() const { return m_albumBytes; }
    const std::string& NameBytes() const { return m_nameBytes; }
    const std::string& DurationBytes() const { return m_durationBytes; }
    const std::string& TimeBytes() const { return m_timeBytes; }

    // The sixth text: empty when the record is made and never saved. The copy
    // handed to the submitted-tracks list carries the submission's status in
    // it.
    const std::wstring& Extra() const { return m_extra; }
    void SetExtra(std::wstring extra) { m_extra = std::move(extra); }

    // The fields that were too long for the wire, empty for nearly every
    // record.
    const std::vector<CWireCut>& WireCuts() const { return m_wireCuts; }

private:
    std::string WireForm(TrackField field, const std::wstring& text,
                         const CReplacementTable& replacements);

    std::wstring m_artist, m_album, m_name, m_duration, m_time, m_extra;
    std::string m_artistBytes, m_albumBytes, m_nameBytes, m_durationBytes, m_timeBytes;
    std::vector<CWireCut> m_wireCuts;
};

// The incoming list and the submission queue hold records in arrival order.
using TrackList = std::list<std::unique_ptr<CTrackRecord>>;

// "%04d-%02d-%02d %02d:%02d:%02d": the time text of a record.
std::wstring FormatTrackTime(int year, int month, int day, int hour, int minute, int second);

} // namespace cvas
