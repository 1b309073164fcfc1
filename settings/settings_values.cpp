#include "settings/settings_values.h"

#include "settings/ini_file.h"
#include "settings/password_forms.h"
#include "settings/setting_texts.h"

namespace cvas
{

CSettingsValues ReadSettings(const CIni& ini)
{
    const wchar_t* const s = kGeneralSection;
    CSettingsValues v;
    v.Enabled = ini.GetBool(s, L"Enabled", v.Enabled);
    v.PollTimeout = ini.GetInt(s, L"PollTimeout", v.PollTimeout);
    v.ClientID = ini.GetString(s, L"ClientID", v.ClientID.c_str());
    v.ClientVersion = ini.GetString(s, L"ClientVersion", v.ClientVersion.c_str());
    v.BuddiesUrl = ini.GetString(s, L"BuddiesUrl", v.BuddiesUrl.c_str());
    v.RecentTracksUrl = ini.GetString(s, L"RecentTracksUrl", v.RecentTracksUrl.c_str());
    v.AgentName = ini.GetString(s, L"AgentName", v.AgentName.c_str());
    const int defaultHighWaterMark = v.HighWaterMark;
    v.HighWaterMark = ini.GetInt(s, L"HighWaterMark", defaultHighWaterMark);
    if (v.HighWaterMark <= kSmallestHighWaterMark)
        v.HighWaterMark = defaultHighWaterMark;
    v.UserName = ini.GetString(s, L"UserName", L"");
    v.Password = DecodePassword(ini.GetString(s, L"Password", L""));
    v.Url = ini.GetString(s, L"url", v.Url.c_str());
    v.Artist = ini.GetString(s, L"Artist", v.Artist.c_str());
    v.Album = ini.GetString(s, L"Album", v.Album.c_str());
    v.Name = ini.GetString(s, L"Name", v.Name.c_str());
    v.ReattemptFailed = ini.GetBool(s, L"ReattemptFailed", v.ReattemptFailed);
    v.SubmitTracksOnStartup = ini.GetBool(s, L"SubmitTracksOnStartup", v.SubmitTracksOnStartup);
    v.UseUTC = ini.GetBool(s, L"UseUTC", v.UseUTC);
    v.EnableBuddySystem = ini.GetBool(s, L"EnableBuddySystem", v.EnableBuddySystem);
    v.BuddyHotkey = ini.GetString(s, L"BuddyHotkey", v.BuddyHotkey.c_str());
    v.EnableRecommendationSystem =
        ini.GetBool(s, L"EnableRecommendationSystem", v.EnableRecommendationSystem);
    v.RecommendationHotkey =
        ini.GetString(s, L"RecommendationHotkey", v.RecommendationHotkey.c_str());
    v.Filter = FilterFromStored(ini.GetString(s, L"Filter", v.Filter.c_str()));
    return v;
}

bool WriteBackSettings(const CIni& ini, const CSettingsValues& v)
{
    const wchar_t* const s = kGeneralSection;
    bool ok = true;
    ok &= ini.WriteBool(s, L"Enabled", v.Enabled);
    ok &= ini.WriteBool(s, L"ReattemptFailed", v.ReattemptFailed);
    ok &= ini.WriteBool(s, L"SubmitTracksOnStartup", v.SubmitTracksOnStartup);
    ok &= ini.WriteString(s, L"UserName", v.UserName);
    ok &= ini.WriteString(s, L"Password", EncodePasswordForSettingsFile(v.Password));
    ok &= ini.WriteString(s, L"Artist", v.Artist);
    ok &= ini.WriteString(s, L"Album", v.Album);
    ok &= ini.WriteString(s, L"Name", v.Name);
    ok &= ini.WriteBool(s, L"EnableBuddySystem", v.EnableBuddySystem);
    ok &= ini.WriteString(s, L"BuddyHotkey", v.BuddyHotkey);
    ok &= ini.WriteString(s, L"Filter", FilterToStored(v.Filter));
    return ok;
}

} // namespace cvas
