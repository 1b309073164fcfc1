#pragma once
// Every setting of section "General" in Settings.INI with its default, read
// once at start-up and written back when the options are confirmed.

#include <string>

namespace cvas
{

class CIni;

constexpr wchar_t kGeneralSection[] = L"General";

constexpr wchar_t kDefaultHandshakeUrl[] = L"http://post.audioscrobbler.com/?hs=true&p=1.1";
constexpr wchar_t kDefaultBuddiesUrl[] = L"http://ws.audioscrobbler.com/1.0/user/%s/friends.xml";
constexpr wchar_t kDefaultRecentTracksUrl[] =
    L"http://ws.audioscrobbler.com/1.0/user/%s/recenttracks.xml";
constexpr wchar_t kDefaultFilter[] = L"Filetype=[mp3],[wav],[ogg],[flac],[ape],[mpc],[wma],[wv]";

// A HighWaterMark of this or less is taken as the default.
constexpr int kSmallestHighWaterMark = 5;

struct CSettingsValues
{
    bool Enabled = false;
    int PollTimeout = 333;
    std::wstring ClientID = L"qzt";
    std::wstring ClientVersion = L"0.1";
    std::wstring BuddiesUrl = kDefaultBuddiesUrl;
    std::wstring RecentTracksUrl = kDefaultRecentTracksUrl;
    std::wstring AgentName = L"Microsoft Internet Explorer";
    int HighWaterMark = 240;
    std::wstring UserName;
    std::wstring Password; // in clear; the file holds its stored form
    std::wstring Url = kDefaultHandshakeUrl;
    std::wstring Artist = L"[ARTIST]";
    std::wstring Album = L"[ALBUM]";
    std::wstring Name = L"[NAME]";
    bool ReattemptFailed = false;
    bool SubmitTracksOnStartup = true;
    bool UseUTC = true;
    bool EnableBuddySystem = false;
    std::wstring BuddyHotkey = L"Alt+Win+B";
    bool EnableRecommendationSystem = false;
    std::wstring RecommendationHotkey = L"Alt+Win+R";
    std::wstring Filter = kDefaultFilter; // line breaks as CR LF
};

// Reads Enabled first, then the others in start-up order (the log settings
// are read by the logs themselves).
CSettingsValues ReadSettings(const CIni& ini);

// Writes back the settings the options sheet edits, in this order: Enabled,
// ReattemptFailed, SubmitTracksOnStartup, UserName, Password (stored form),
// Artist, Album, Name, EnableBuddySystem, BuddyHotkey, Filter (line breaks
// as tabs). Returns whether every write succeeded.
bool WriteBackSettings(const CIni& ini, const CSettingsValues& values);

} // namespace cvas
