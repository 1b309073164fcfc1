#include "common/temp_folder.h"
#include "settings/ini_file.h"
#include "settings/settings_values.h"
#include "support/text_encoding.h"

#include <gtest/gtest.h>

using namespace cvas;
using cvas::test::CTempFolder;
using cvas::test::ReadFileBytes;
using cvas::test::WriteFileBytes;

namespace
{
std::wstring FileText(const std::wstring& path)
{
    const std::string bytes = ReadFileBytes(path);
    if (bytes.substr(0, 2) == "\xFF\xFE")
        return Utf16LeToWide(bytes.substr(2));
    return Utf8ToWide(bytes);
}
} // namespace

TEST(SettingsValues, AMissingFileGivesEveryDefault)
{
    CTempFolder folder;
    const CSettingsValues v = ReadSettings(CIni(folder.File(L"Settings.INI")));
    EXPECT_FALSE(v.Enabled);
    EXPECT_EQ(v.PollTimeout, 333);
    EXPECT_EQ(v.ClientID, L"qzt");
    EXPECT_EQ(v.ClientVersion, L"0.1");
    EXPECT_EQ(v.AgentName, L"Microsoft Internet Explorer");
    EXPECT_EQ(v.HighWaterMark, 240);
    EXPECT_EQ(v.UserName, L"");
    EXPECT_EQ(v.Password, L"");
    EXPECT_NE(v.Url.find(L"/?hs=true&p=1.1"), std::wstring::npos);
    EXPECT_NE(v.BuddiesUrl.find(L"/1.0/user/%s/friends.xml"), std::wstring::npos);
    EXPECT_NE(v.RecentTracksUrl.find(L"/1.0/user/%s/recenttracks.xml"), std::wstring::npos);
    EXPECT_EQ(v.Artist, L"[ARTIST]");
    EXPECT_EQ(v.Album, L"[ALBUM]");
    EXPECT_EQ(v.Name, L"[NAME]");
    EXPECT_FALSE(v.ReattemptFailed);
    EXPECT_TRUE(v.SubmitTracksOnStartup);
    EXPECT_TRUE(v.UseUTC);
    EXPECT_FALSE(v.EnableBuddySystem);
    EXPECT_EQ(v.BuddyHotkey, L"Alt+Win+B");
    EXPECT_FALSE(v.EnableRecommendationSystem);
    EXPECT_EQ(v.RecommendationHotkey, L"Alt+Win+R");
    EXPECT_EQ(v.Filter, L"Filetype=[mp3],[wav],[ogg],[flac],[ape],[mpc],[wma],[wv]");
}

TEST(SettingsValues, ReadsHandEditedValues)
{
    CTempFolder folder;
    WriteFileBytes(folder.File(L"Settings.INI"),
                   "[General]\r\nEnabled=Y\r\nHighWaterMark=3\r\nPollTimeout=500\r\n"
                   "Password==414243\r\nUseUTC=0\r\nFilter=a=[1]\tb=[2]\r\n"
                   "url=http://127.0.0.1:8080/?hs=true&p=1.1\r\n");
    const CSettingsValues v = ReadSettings(CIni(folder.File(L"Settings.INI")));
    EXPECT_TRUE(v.Enabled);
    EXPECT_EQ(v.HighWaterMark, 240) << "a value of 5 or less is the default";
    EXPECT_EQ(v.PollTimeout, 500);
    EXPECT_EQ(v.Password, L"ABC");
    EXPECT_FALSE(v.UseUTC);
    EXPECT_EQ(v.Filter, L"a=[1]\r\nb=[2]");
    EXPECT_EQ(v.Url, L"http://127.0.0.1:8080/?hs=true&p=1.1");

    WriteFileBytes(folder.File(L"Settings.INI"), "[General]\r\nHighWaterMark=6\r\n");
    EXPECT_EQ(ReadSettings(CIni(folder.File(L"Settings.INI"))).HighWaterMark, 6);
}

TEST(SettingsValues, WriteBackStoresTheEditedKeysInOrderAndReadsBack)
{
    CTempFolder folder;
    const CIni ini(folder.File(L"Settings.INI"));
    CSettingsValues v;
    v.Enabled = true;
    v.UserName = L"\x0418\x0432\x0430\x043D";
    v.Password = L"p\x00E4ss w\x5742rd";
    v.Artist = L"[ARTIST] (live)";
    v.EnableBuddySystem = true;
    v.BuddyHotkey = L"Ctrl+Alt+F5";
    v.Filter = L"Filetype=[mp3]\r\nArtist=[\x5742\x672C]";
    v.PollTimeout = 999; // not one of the keys the options write
    ASSERT_TRUE(WriteBackSettings(ini, v));

    const std::wstring text = FileText(ini.Path());
    const wchar_t* order[] = {L"Enabled=True",
                              L"ReattemptFailed=False",
                              L"SubmitTracksOnStartup=True",
                              L"UserName=",
                              L"Password=!",
                              L"Artist=",
                              L"Album=",
                              L"Name=",
                              L"EnableBuddySystem=True",
                              L"BuddyHotkey=",
                              L"Filter=Filetype=[mp3]\tArtist="};
    std::size_t at = 0;
    for (const wchar_t* key : order)
    {
        const std::size_t found = text.find(key, at);
        ASSERT_NE(found, std::wstring::npos) << "missing or out of order: " << WideToUtf8(key);
        at = found;
    }
    EXPECT_EQ(text.find(L"PollTimeout"), std::wstring::npos);
    EXPECT_EQ(text.find(v.Password), std::wstring::npos) << "never in clear text";

    const CSettingsValues back = ReadSettings(ini);
    EXPECT_TRUE(back.Enabled);
    EXPECT_EQ(back.UserName, v.UserName);
    EXPECT_EQ(back.Password, v.Password);
    EXPECT_EQ(back.Artist, v.Artist);
    EXPECT_TRUE(back.EnableBuddySystem);
    EXPECT_EQ(back.BuddyHotkey, v.BuddyHotkey);
    EXPECT_EQ(back.Filter, v.Filter);
    EXPECT_EQ(back.PollTimeout, 333);
}

TEST(SettingsValues, ALongPasswordSurvivesTheSettingsFile)
{
    CTempFolder folder;
    const CIni ini(folder.File(L"Settings.INI"));
    for (const std::wstring& password : {std::wstring(24, L'x'), std::wstring(40, L'y')})
    {
        CSettingsValues v;
        v.Password = password;
        ASSERT_TRUE(WriteBackSettings(ini, v));
        EXPECT_EQ(ReadSettings(ini).Password, password);
    }
}
