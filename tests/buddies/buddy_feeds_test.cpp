// The buddy feeds read from their texts: which friends and which tracks
// come out, in which order, and the times written the C library's way.
#include "buddies/buddy_feeds.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

using namespace cvas;

namespace
{

using Names = std::vector<std::wstring>;

// One track element with the children given as markup.
std::wstring Feed(std::initializer_list<std::wstring_view> tracks)
{
    std::wstring text = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<recenttracks user=\"u\">";
    for (std::wstring_view track : tracks)
        text.append(L"<track>").append(track).append(L"</track>\n");
    return text + L"</recenttracks>";
}

std::wstring Fields(std::wstring_view artist, std::wstring_view name, std::wstring_view uts)
{
    return std::wstring(L"<artist mbid=\"\">") + std::wstring(artist) + L"</artist><name>" +
           std::wstring(name) + L"</name><mbid/><album mbid=\"\">X</album><url>http://u/" +
           std::wstring(uts) + L"</url><date uts=\"" + std::wstring(uts) + L"\">d</date>";
}

// The artists and names of the tracks read, as "artist|name".
std::vector<std::wstring> Titles(std::wstring_view document)
{
    std::vector<std::wstring> titles;
    for (const CParsedRecentTrack& track : ParseRecentTracks(document))
        titles.push_back(track.artist + L"|" + track.name);
    return titles;
}

// Sets TZ for the life of the object and takes the old value back after.
class ScopedTimeZone
{
public:
    explicit ScopedTimeZone(const char* zone)
    {
        if (const char* old = std::getenv("TZ"))
            m_old = old;
        Set(zone);
    }
    ~ScopedTimeZone() { Set(m_old ? m_old->c_str() : nullptr); }
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

private:
    static void Set(const char* zone)
    {
#if defined(_WIN32)
        _putenv_s("TZ", zone ? zone : "");
        _tzset();
#else
        if (zone)
            setenv("TZ", zone, 1);
        else
            unsetenv("TZ");
        tzset();
#endif
    }

    std::optional<std::string> m_old;
};

} // namespace

TEST(FriendNames, EveryUserChildInDocumentOrderAndNothingElse)
{
    const std::wstring document =
        L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        L"<friends user=\"tester\">\n"
        L"  <user username=\"zed\"><url>http://x/zed</url></user>\n"
        L"  <note username=\"not-a-user\"/>\n"
        L"  <user username=\"Sigur R\u00f3s &amp; co\"><user username=\"nested\"/></user>\n"
        L"  <user><url>http://x/none</url></user>\n"
        L"  <USER UserName=\"\u041a\u0438\u043d\u043e\"/>\n"
        L"  <user username=\"alice\"/>\n"
        L"</friends>";
    EXPECT_EQ(ParseFriendNames(document),
              (Names{L"zed", L"Sigur R\u00f3s & co", L"", L"\u041a\u0438\u043d\u043e", L"alice"}));
}

TEST(FriendNames, NoNamesWithoutATopLevelFriendsElement)
{
    EXPECT_TRUE(ParseFriendNames(L"").empty());
    EXPECT_TRUE(ParseFriendNames(L"<friends user=\"loner\">\n</friends>").empty());
    EXPECT_TRUE(ParseFriendNames(L"<lfm><friends><user username=\"a\"/></friends></lfm>").empty());
    EXPECT_TRUE(ParseFriendNames(L"Error: no such user").empty());
    EXPECT_TRUE(ParseFriendNames(L"<user username=\"a\"/>").empty());
}

TEST(ErrorAnswer, ExactlyErrorColonAtTheStart)
{
    EXPECT_TRUE(IsErrorAnswer(L"Error: no such user\n"));
    EXPECT_TRUE(IsErrorAnswer(L"Error:"));
    EXPECT_FALSE(IsErrorAnswer(L"Error"));
    EXPECT_FALSE(IsErrorAnswer(L"error: x"));
    EXPECT_FALSE(IsErrorAnswer(L" Error: x"));
    EXPECT_FALSE(IsErrorAnswer(L"\ufeffError: x"));
    EXPECT_FALSE(IsErrorAnswer(L""));
    EXPECT_TRUE(ParseRecentTracks(L"Error: Invalid user").empty());
}

TEST(RecentTracks, CompleteTracksInDocumentOrderWithTheirTexts)
{
    const std::wstring document =
        Feed({Fields(L"Bj\u00f6rk", L"J\u00f3ga", L"1700000000"),
              Fields(L"Sigur R\u00f3s", L"Hopp\u00edpolla", L"1700000100"),
              Fields(L"\u041a\u0438\u043d\u043e", L"\u0413\u0440\u0443\u043f\u043f\u0430", L"3"),
              Fields(L"The [Bracket] Band", L"Artist [Live]", L"4"),
              Fields(L"A &amp; B &lt;&#65;&#x42;&gt;", L"<![CDATA[<b>&amp;</b>]]> x", L"5"),
              Fields(L"\U0001F3B5 Notes", L"  spaced  ", L"6")});
    const std::vector<CParsedRecentTrack> tracks = ParseRecentTracks(document);
    ASSERT_EQ(tracks.size(), 6u);
    EXPECT_EQ(tracks[0].artist, L"Bj\u00f6rk");
    EXPECT_EQ(tracks[0].name, L"J\u00f3ga");
    EXPECT_EQ(tracks[0].url, L"http://u/1700000000");
    EXPECT_EQ(tracks[0].uts, L"1700000000");
    EXPECT_EQ(tracks[1].uts, L"1700000100");
    EXPECT_EQ(tracks[2].artist, L"\u041a\u0438\u043d\u043e");
    EXPECT_EQ(tracks[3].artist, L"The [Bracket] Band");
    EXPECT_EQ(tracks[3].name, L"Artist [Live]");
    EXPECT_EQ(tracks[4].artist, L"A & B <AB>");
    EXPECT_EQ(tracks[4].name, L"<b>&amp;</b> x");
    EXPECT_EQ(tracks[5].artist, L"\U0001F3B5 Notes");
    EXPECT_EQ(tracks[5].name, L"  spaced  ");
}

TEST(RecentTracks, EachSearchGoesOnAfterTheElementFoundBefore)
{
    const std::wstring document = Feed({
        // Dropped: no url, although artist and name are there.
        L"<artist>NoUrl</artist><name>n</name><date uts=\"1\"/>",
        // Dropped: date comes before name, and the search for it starts after name.
        L"<artist>Late</artist><date uts=\"2\"/><name>n</name><url>u</url>",
        // Dropped: url before artist is not seen.
        L"<url>u</url><artist>Early</artist><name>n</name><date uts=\"3\"/>",
        // Dropped: no date at all.
        L"<artist>NoDate</artist><name>n</name><url>u</url>",
        // Kept: the name before the artist is passed over, the later one taken.
        L"<name>first</name><artist>Second</artist><extra/><name>second</name>"
        L"<url>u</url><date uts=\"5\"/>",
        // Kept: the first artist is taken, the second passed over.
        L"<artist>One</artist><artist>Two</artist><name>n</name><url>u</url><date uts=\"6\"/>",
        // Dropped: the fields are grandchildren, not children.
        L"<wrap><artist>Deep</artist><name>n</name><url>u</url><date uts=\"7\"/></wrap>",
        // Kept, with an empty artist text (it has children) and an empty uts.
        L"<artist><b>x</b></artist><name>n</name><url>u</url><date>no uts</date>",
    });
    EXPECT_EQ(Titles(document), (std::vector<std::wstring>{L"Second|second", L"One|n", L"|n"}));
    EXPECT_EQ(ParseRecentTracks(document).back().uts, L"");
}

TEST(RecentTracks, OnlyTrackChildrenOfTheTopLevelElement)
{
    const std::wstring track = Fields(L"A", L"N", L"1");
    EXPECT_EQ(Titles(L"<recenttracks user=\"carol\"></recenttracks>").size(), 0u);
    EXPECT_EQ(
        Titles(L"<lfm><recenttracks><track>" + track + L"</track></recenttracks></lfm>").size(),
        0u);
    EXPECT_EQ(Titles(L"<recenttracks><page><track>" + track +
                     L"</track></page>"
                     L"<TRACK nowplaying=\"true\">" +
                     track + L"</TRACK><other>" + track + L"</other></recenttracks>"),
              (std::vector<std::wstring>{L"A|N"}));
    EXPECT_TRUE(ParseRecentTracks(L"").empty());
}

TEST(UtsSeconds, ReadsAsAtoiDoesAndClamps)
{
    EXPECT_EQ(UtsSeconds(L"1700000000"), 1700000000LL);
    EXPECT_EQ(UtsSeconds(L" \t\n\v\f\r+42 and more"), 42);
    EXPECT_EQ(UtsSeconds(L"-17x"), -17);
    EXPECT_EQ(UtsSeconds(L"0012"), 12);
    EXPECT_EQ(UtsSeconds(L"0x10"), 0);
    EXPECT_EQ(UtsSeconds(L"12 34"), 12);
    EXPECT_EQ(UtsSeconds(L"-0"), 0);
    // No digits: a blank that is not C white space, digits of other scripts.
    for (const wchar_t* none :
         {L"", L"   ", L"+", L"-", L"- 5", L"+-5", L"x5", L"\u00a05", L"\u0663", L"\uff15"})
        EXPECT_EQ(UtsSeconds(none), 0) << testing::PrintToString(std::wstring(none));
    EXPECT_EQ(UtsSeconds(L"9223372036854775807"), LLONG_MAX);
    EXPECT_EQ(UtsSeconds(L"9223372036854775808"), LLONG_MAX);
    EXPECT_EQ(UtsSeconds(L"99999999999999999999999999999"), LLONG_MAX);
    EXPECT_EQ(UtsSeconds(L"-9223372036854775808"), LLONG_MIN);
    EXPECT_EQ(UtsSeconds(L"-9223372036854775809"), LLONG_MIN);
    EXPECT_EQ(UtsSeconds(L"-00000000000000000000000000009"), -9);
}

// The Windows C library's asctime writes the day with a leading zero.
TEST(WhenText, LocalTimeAsTheWindowsCLibraryWritesIt)
{
    {
        ScopedTimeZone zone("UTC0");
        EXPECT_EQ(WhenText(0), L"Thu Jan 01 00:00:00 1970");
        EXPECT_EQ(WhenText(1700000000), L"Tue Nov 14 22:13:20 2023");
        EXPECT_EQ(WhenText(1000000000), L"Sun Sep 09 01:46:40 2001");
    }
    {
        // 5 h 45 min east of UTC.
        ScopedTimeZone zone("XST-5:45");
        EXPECT_EQ(WhenText(0), L"Thu Jan 01 05:45:00 1970");
        EXPECT_EQ(WhenText(1700000000), L"Wed Nov 15 03:58:20 2023");
        EXPECT_EQ(WhenText(1699000000), L"Fri Nov 03 14:11:40 2023");
        EXPECT_EQ(WhenText(UtsSeconds(L"1700000000")).size(), 24u);
    }
    EXPECT_EQ(WhenText(LLONG_MAX), L"");
    EXPECT_EQ(WhenText(LLONG_MIN), L"");
}
