#include "common/temp_folder.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/log_settings.h"
#include "settings/settings_values.h"
#include "support/logs.h"
#include "support/text_encoding.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <utility>
#include <vector>

using namespace cvas;
using cvas::test::CTempFolder;
using cvas::test::ReadFileBytes;
using cvas::test::WriteFileBytes;

namespace
{
using Row = std::pair<std::wstring, std::wstring>; // the value read, what it must be

// The URL after its host: the host is ours to choose, path and query are fixed.
std::wstring PathAndQuery(const std::wstring& url)
{
    return url.substr(url.find(L'/', url.find(L"://") + 3));
}

// Switches as words ("on off "), so that a failure shows which one differs.
std::wstring Switches(std::initializer_list<bool> switches)
{
    std::wstring words;
    for (bool on : switches)
        words += on ? L"on " : L"off ";
    return words;
}

// The lines of a settings file that the plug-in made (UTF-16LE), without
// its section line and empty lines.
std::vector<std::wstring> EntryLines(const std::wstring& path)
{
    std::wistringstream text(Utf16LeToWide(ReadFileBytes(path).substr(2)));
    std::vector<std::wstring> lines;
    for (std::wstring line; std::getline(text, line, L'\n');)
    {
        line = line.substr(0, line.find(L'\r'));
        if (!line.empty() && line[0] != L'[')
            lines.push_back(line);
    }
    return lines;
}

// The settings the options sheet edits, in one text for comparing.
std::wstring EditedSettings(const CSettingsValues& v)
{
    return Switches({v.Enabled, v.ReattemptFailed, v.SubmitTracksOnStartup, v.EnableBuddySystem}) +
           L"|" + v.UserName + L"|" + v.Password + L"|" + v.Artist + L"|" + v.Album + L"|" +
           v.Name + L"|" + v.BuddyHotkey + L"|" + v.Filter;
}
} // namespace

// Only the defaults that users see or the service expects, as texts; the
// others are whatever the options sheet writes back.
TEST(SettingsValues, AMissingFileGivesTheDefaultsUsersSee)
{
    CTempFolder folder;
    OverrideSpecialFolders(folder.Path() + L"Documents", folder.Path() + L"AppData");
    const CIni missing(folder.File(L"Settings.INI"));
    const CSettingsValues v = ReadSettings(missing);
    OpenLogs(missing);
    ASSERT_TRUE(StatusLogFile() && FailedLogFile());
    const Row rows[] = {
        {PathAndQuery(v.Url), L"/?hs=true&p=1.1"},
        {PathAndQuery(v.BuddiesUrl), L"/1.0/user/%s/friends.xml"},
        {PathAndQuery(v.RecentTracksUrl), L"/1.0/user/%s/recenttracks.xml"},
        {v.ClientID + L" " + v.ClientVersion + L" " + v.AgentName,
         L"qzt 0.1 Microsoft Internet Explorer"},
        {v.UserName + v.Password, L""},
        {v.Artist + v.Album + v.Name, L"[ARTIST][ALBUM][NAME]"},
        {v.BuddyHotkey + L" " + v.RecommendationHotkey, L"Alt+Win+B Alt+Win+R"},
        {v.Filter, L"Filetype=[mp3],[wav],[ogg],[flac],[ape],[mpc],[wma],[wv]"},
        {std::to_wstring(v.HighWaterMark) + L" " + std::to_wstring(v.PollTimeout), L"240 333"},
        {std::to_wstring(StatusLogFile()->LineLimit()) + L" " +
             std::to_wstring(FailedLogFile()->LineLimit()),
         L"1024 1024"},
        // Enabled, ReattemptFailed, SubmitTracksOnStartup, UseUTC, buddies, recommendations
        {Switches({v.Enabled, v.ReattemptFailed, v.SubmitTracksOnStartup, v.UseUTC,
                   v.EnableBuddySystem, v.EnableRecommendationSystem}),
         L"off off on on off off "},
    };
    CloseLogs();
    OverrideSpecialFolders(L"", L"");
    for (const Row& row : rows)
        EXPECT_EQ(row.first, row.second);
}

// Every key that is only ever edited by hand, each under its own name.
TEST(SettingsValues, ReadsHandEditedValues)
{
    CTempFolder folder;
    const CIni ini(folder.File(L"Settings.INI"));
    WriteFileBytes(ini.Path(), "[General]\r\nEnabled=Y\r\nPollTimeout=500\r\nClientID=tst\r\n"
                               "ClientVersion=2.5\r\nBuddiesUrl=http://b/%s\r\nAgentName=agent\r\n"
                               "RecentTracksUrl=http://r/%s\r\nHighWaterMark=3\r\nUseUTC=0\r\n"
                               "Password==414243\r\nurl=http://127.0.0.1:8080/?hs=true&p=1.1\r\n"
                               "SubmitTracksOnStartup=\r\nEnableRecommendationSystem=yes\r\n"
                               "RecommendationHotkey=Ctrl+F9\r\nFilter=a=[1]\tb=[2]\r\n");
    const CSettingsValues v = ReadSettings(ini);
    const Row rows[] = {
        {v.Url, L"http://127.0.0.1:8080/?hs=true&p=1.1"},
        {v.ClientID + L" " + v.ClientVersion + L" " + v.AgentName, L"tst 2.5 agent"},
        {v.BuddiesUrl + L" " + v.RecentTracksUrl, L"http://b/%s http://r/%s"},
        {v.RecommendationHotkey, L"Ctrl+F9"},
        {v.Password, L"ABC"},
        {v.Filter, L"a=[1]\r\nb=[2]"},
        // A HighWaterMark of 5 or less is the default.
        {std::to_wstring(v.PollTimeout) + L" " + std::to_wstring(v.HighWaterMark), L"500 240"},
        // An empty value is the default (SubmitTracksOnStartup: on).
        {Switches({v.Enabled, v.SubmitTracksOnStartup, v.UseUTC, v.EnableRecommendationSystem}),
         L"on on off on "},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.first, row.second);

    WriteFileBytes(ini.Path(), "[General]\r\nHighWaterMark=6\r\n");
    EXPECT_EQ(ReadSettings(ini).HighWaterMark, 6);
}

// Two passes whose switches differ pairwise and from their defaults in one
// pass at least, and whose texts all differ: a key written under another
// name, a swapped value, a lost or a stray write shows.
TEST(SettingsValues, WriteBackStoresEachEditedValueUnderItsKeyInOrder)
{
    CTempFolder folder;
    for (int pass = 0; pass < 2; ++pass)
    {
        SCOPED_TRACE(pass);
        const std::wstring n = std::to_wstring(pass);
        const CIni ini(folder.File(L"Settings" + n + L".INI"));
        CSettingsValues v;
        v.Enabled = pass == 0;
        v.ReattemptFailed = pass == 1;
        v.SubmitTracksOnStartup = false;
        v.EnableBuddySystem = true;
        v.UserName = L"\x0418\x0432\x0430\x043D" + n;
        // The second password is longer than one line of the encoder.
        v.Password = pass == 0 ? L"p\x00E4ss w\x5742rd" : std::wstring(40, L'\x5742');
        v.Artist = L"[ARTIST] (live) " + n;
        v.Album = L"[ALBUM] " + n;
        v.Name = L"[NAME] " + n;
        v.BuddyHotkey = L"Ctrl+Alt+F" + n;
        v.Filter = L"Filetype=[mp3]\r\nArtist=[\x5742\x672C]" + n;
        ASSERT_TRUE(WriteBackSettings(ini, v));

        const std::vector<std::wstring> lines = EntryLines(ini.Path());
        std::vector<std::wstring> keys;
        for (const std::wstring& line : lines)
            keys.push_back(line.substr(0, line.find(L'=')));
        EXPECT_EQ(keys, (std::vector<std::wstring>{
                            L"Enabled", L"ReattemptFailed", L"SubmitTracksOnStartup", L"UserName",
                            L"Password", L"Artist", L"Album", L"Name", L"EnableBuddySystem",
                            L"BuddyHotkey", L"Filter"}));
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back(), L"Filter=Filetype=[mp3]\tArtist=[\x5742\x672C]" + n);
        for (const std::wstring& line : lines)
            EXPECT_EQ(line.find(v.Password), std::wstring::npos) << "never in clear text";

        EXPECT_EQ(EditedSettings(ReadSettings(ini)), EditedSettings(v));
    }
}
