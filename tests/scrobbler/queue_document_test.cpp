// The layout of Queue.xml and Replacements.xml, read back whole and with
// fields missing. Files cut short are tested with the files themselves.
#include "scrobbler/queue/queue_document.h"
#include "scrobbler/queue/replacements_document.h"

#include <gtest/gtest.h>

using namespace cvas;

namespace
{

TrackList SampleTracks()
{
    TrackList tracks;
    const auto add = [&](const wchar_t* artist, const wchar_t* album, const wchar_t* name) {
        tracks.push_back(std::make_unique<CTrackRecord>(
            artist, album, name, L"215", L"2024-03-04 05:06:07", CReplacementTable{}));
    };
    add(L"\x5742\x672C\x9F8D\x4E00", L"B-2 Unit", L"Riot in Lagos"); // 坂本龍一
    add(L"Simon & Garfunkel", L"<Bookends>", L"Mrs. Robinson + \"Old Friends\"");
    add(L"\x0414\x0414\x0422", L"\x0152uvres \x20AC", L"  spaced  "); // ДДТ, Œuvres €
    return tracks;
}

std::wstring Texts(const CTrackRecord& r)
{
    return r.Artist() + L"|" + r.Name() + L"|" + r.Album() + L"|" + r.Duration() + L"|" + r.Time();
}

TrackList ReadText(const std::wstring& text, const CReplacementTable& table = {})
{
    CXmlDocument document;
    document.SetDoc(text);
    TrackList read;
    ReadQueueDocument(document, table, read);
    return read;
}

} // namespace

TEST(QueueDocument, LayoutIsFixed)
{
    TrackList one;
    one.push_back(std::make_unique<CTrackRecord>(L"A&B", L"Al", L"N", L"99", L"2024-01-01 00:00:00",
                                                 CReplacementTable{{L"A", L"Z"}}));
    EXPECT_EQ(BuildQueueDocument(one)->GetDoc(),
              L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<queue>\r\n<track>\r\n"
              L"<artist>A&amp;B</artist>\r\n<name>N</name>\r\n<album>Al</album>\r\n"
              L"<duration>99</duration>\r\n<time>2024-01-01 00:00:00</time>\r\n"
              L"</track>\r\n</queue>\r\n")
        << "the texts are saved, never the wire forms";
    EXPECT_EQ(BuildQueueDocument({})->GetDoc(),
              L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<queue/>\r\n");
}

TEST(QueueDocument, RoundTripKeepsTextsAndAppliesTheTableGivenAtLoad)
{
    const TrackList tracks = SampleTracks();
    const std::wstring text = BuildQueueDocument(tracks)->GetDoc();
    const TrackList read = ReadText(text, {{L"Lagos", L"Tokyo"}, {L"2", L"two"}});
    ASSERT_EQ(read.size(), tracks.size());
    auto original = tracks.begin();
    for (const auto& record : read)
        EXPECT_EQ(Texts(*record), Texts(**original++));
    EXPECT_EQ(read.front()->NameBytes(), "Riot%20in%20Tokyo");
    EXPECT_EQ(read.front()->AlbumBytes(), "B-two%20Unit");
    EXPECT_EQ(read.front()->TimeBytes(), "2024-03-04%2005:06:07") << "the time is never replaced";
    EXPECT_EQ(read.front()->ArtistBytes(), "%E5%9D%82%E6%9C%AC%E9%BE%8D%E4%B8%80");
}

TEST(QueueDocument, TracksLackingAFieldAreSkipped)
{
    const std::wstring text = L"<queue>"
                              L"<track><artist>A</artist><name>N</name><album>B</album></track>"
                              L"<track><time>T</time><duration>1</duration><album>B</album>"
                              L"<name>N</name><artist>In any order</artist></track>"
                              L"<track><artist>A</artist><name>N</name><album/>"
                              L"<duration>1</duration><time>T</time><extra>x</extra></track>"
                              L"</queue>";
    const TrackList read = ReadText(text);
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(read.front()->Artist(), L"In any order");
    EXPECT_EQ(read.back()->Album(), L"") << "an empty field is there, only empty";

    EXPECT_TRUE(ReadText(L"<queue/>").empty());
    CXmlDocument noQueue;
    noQueue.SetDoc(L"<list><track/></list>");
    TrackList none;
    EXPECT_FALSE(ReadQueueDocument(noQueue, {}, none));
}

TEST(ReplacementsDocument, RoundTripAndIncompleteEntries)
{
    const CReplacementTable table = {
        {L"a&b", L"<c>"}, {L"\x00E9", L""}, {L"x", L"y"}, {L"x", L"z"}};
    CXmlDocument document;
    document.SetDoc(BuildReplacementsDocument(table)->GetDoc());
    CReplacementTable read;
    ASSERT_TRUE(ReadReplacementsDocument(document, read));
    ASSERT_EQ(read.size(), table.size());
    for (std::size_t i = 0; i < table.size(); ++i)
        EXPECT_TRUE(read[i].lhs == table[i].lhs && read[i].rhs == table[i].rhs) << i;

    document.SetDoc(L"<replacements><replacement><lhs>only</lhs></replacement>"
                    L"<replacement><rhs>y</rhs><lhs>x</lhs></replacement></replacements>");
    read.clear();
    ASSERT_TRUE(ReadReplacementsDocument(document, read));
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].lhs, L"x");
}
