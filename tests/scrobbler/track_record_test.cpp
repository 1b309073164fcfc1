// Replacements and the track record: which texts they change, in what order,
// and the wire forms the record builds.
#include "scrobbler/queue/replacements.h"
#include "scrobbler/queue/track_record.h"
#include "scrobbler/queue/wire_escaping.h"

#include <gtest/gtest.h>

using namespace cvas;

TEST(Replacements, ApplyInTableOrderWithoutLookingAtReplacedText)
{
    EXPECT_EQ(ApplyReplacements({{L"A", L"B A"}, {L"B", L"C"}}, L"A"), L"C A");
    EXPECT_EQ(ApplyReplacements({{L"B", L"C"}, {L"A", L"B A"}}, L"A"), L"B A");
    // Every occurrence, left to right; the rhs holding the lhs does not loop.
    EXPECT_EQ(ApplyReplacements({{L"aa", L"aab"}}, L"aaaaa"), L"aabaaba");
    // Case-sensitive; an empty lhs is skipped; duplicates all apply.
    EXPECT_EQ(ApplyReplacements({{L"Beatles", L"X"}}, L"the beatles"), L"the beatles");
    EXPECT_EQ(ApplyReplacements({{L"", L"x"}, {L"b", L""}}, L"abc"), L"ac");
    EXPECT_EQ(ApplyReplacements({{L"a", L"b"}, {L"a", L"c"}, {L"b", L"d"}}, L"a"), L"d");
    EXPECT_EQ(ApplyReplacements({}, L"unchanged"), L"unchanged");
}

TEST(TrackRecord, ReplacementsChangeOnlyTheWireFormsOfArtistAlbumAndName)
{
    const CReplacementTable table = {{L"0", L"zero"}, {L"-", L"dash"}, {L"The ", L""}};
    const CTrackRecord record(L"The Band 0", L"Album-1", L"Song 0", L"240", L"2024-01-02 00:00:00",
                              table);
    EXPECT_EQ(record.Artist(), L"The Band 0");
    EXPECT_EQ(record.Album(), L"Album-1");
    EXPECT_EQ(record.ArtistBytes(), "Band%20zero");
    EXPECT_EQ(record.AlbumBytes(), "Albumdash1");
    EXPECT_EQ(record.NameBytes(), "Song%20zero");
    EXPECT_EQ(record.DurationBytes(), "240");
    EXPECT_EQ(record.TimeBytes(), "2024-01-02%2000:00:00");
    EXPECT_TRUE(record.Extra().empty());
    EXPECT_TRUE(record.WireCuts().empty());
}

TEST(TrackRecord, NonAsciiTextsAreKeptAndSentAsEscapedUtf8)
{
    const std::wstring artist = L"\x5742\x672C\x9F8D\x4E00";           // 坂本龍一
    const std::wstring name = L"\x0417\x0432\x0435\x0437\x0434\x0430"; // Звезда
    const CTrackRecord record(artist, L"\x0152uvres \x20AC", name, L"300", L"2024-05-06 07:08:09",
                              {});
    EXPECT_EQ(record.Artist(), artist);
    EXPECT_EQ(record.ArtistBytes(), "%E5%9D%82%E6%9C%AC%E9%BE%8D%E4%B8%80");
    EXPECT_EQ(record.AlbumBytes(), "%C5%92uvres%20%E2%82%AC");
    EXPECT_EQ(record.NameBytes(), "%D0%97%D0%B2%D0%B5%D0%B7%D0%B4%D0%B0");
}

TEST(TrackRecord, OverLongFieldIsCutAtACharacterAndReported)
{
    // 3,000 Cyrillic letters take 6,000 UTF-8 bytes and 18,000 escaped: only
    // 8,191 / 6 = 1,365 whole letters fit.
    const std::wstring longName(3000, L'\x0416');
    const CTrackRecord record(L"Artist", L"", longName, L"200", L"2024-01-01 00:00:00", {});
    EXPECT_EQ(record.Name(), longName) << "the text itself is kept whole";
    EXPECT_EQ(record.NameBytes().size(), 1365u * 6);
    EXPECT_EQ(record.NameBytes().substr(0, 6), "%D0%96");
    ASSERT_EQ(record.WireCuts().size(), 1u);
    EXPECT_EQ(record.WireCuts()[0].field, TrackField::Name);
    EXPECT_EQ(record.WireCuts()[0].charactersSent, 1365u);
    EXPECT_EQ(record.WireCuts()[0].characters, 3000u);
    EXPECT_EQ(record.ArtistBytes(), "Artist");

    // Replacements count: a short text that replacements make too long is cut.
    const CTrackRecord grown(L"ab", L"a", L"n", L"1", L"t", {{L"a", std::wstring(9000, L'x')}});
    EXPECT_EQ(grown.ArtistBytes().size(), kWireFieldBufferBytes - 1);
    EXPECT_EQ(grown.WireCuts().size(), 2u);
}
