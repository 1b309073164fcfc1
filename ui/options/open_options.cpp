#include "ui/options/open_options.h"

#include "settings/live_settings.h"
#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/replacements_file.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/plugin_mode.h"
#include "settings/settings_values.h"
#include "support/log_file.h"
#include "support/logs.h"
#include "ui/options/my_property_sheet.h"

namespace cvas
{
namespace
{

std::wstring LogFileName(const CountedHandle<CLogFile>& log)
{
    return log ? log->FileName() : std::wstring();
}

void FillPages(CMyPropertySheet& sheet, const CSettingsValues& values, bool forceEnable)
{
    sheet.main.enabled = forceEnable || values.Enabled;
    sheet.main.userName = values.UserName;
    sheet.main.password = values.Password;
    sheet.main.reattempt = values.ReattemptFailed;
    sheet.main.runAtStart = ReadPluginMode();
    sheet.main.submitAtStart = values.SubmitTracksOnStartup;
    sheet.logging.queueFile = QueueFilePath();
    sheet.logging.failedLogFile = LogFileName(FailedLogFile());
    sheet.logging.statusLogFile = LogFileName(StatusLogFile());
    sheet.replace.replacements = CurrentReplacements();
    sheet.buddy.buddyEnabled = values.EnableBuddySystem;
    sheet.buddy.buddyHotkey = values.BuddyHotkey;
    sheet.advanced.artist = values.Artist;
    sheet.advanced.album = values.Album;
    sheet.advanced.name = values.Name;
    sheet.filter.filter = values.Filter;
}

// The file names are shown only and never taken back.
void TakeBack(const CMyPropertySheet& sheet, CSettingsValues& values)
{
    values.UserName = sheet.main.userName;
    values.Password = sheet.main.password;
    WritePluginMode(sheet.main.runAtStart);
    SetCurrentReplacements(sheet.replace.replacements);
    values.EnableBuddySystem = sheet.buddy.buddyEnabled;
    values.BuddyHotkey = sheet.buddy.buddyHotkey;
    values.Artist = sheet.advanced.artist;
    values.Album = sheet.advanced.album;
    values.Name = sheet.advanced.name;
    values.Filter = sheet.filter.filter;
    values.ReattemptFailed = sheet.main.reattempt;
    values.SubmitTracksOnStartup = sheet.main.submitAtStart;
}

} // namespace

bool OpenOptionsSheet(HWND owner, bool forceEnable, const ApplyEnabledState& applyEnabled)
{
    CMyPropertySheet sheet;
    FillPages(sheet, Settings(), forceEnable);
    sheet.logging.shellOwner = owner;
    if (sheet.DoModal(owner) != IDOK)
        return false;
    CSettingsValues& values = Settings();
    TakeBack(sheet, values);
    values.Enabled = sheet.main.enabled;
    applyEnabled(values.Enabled);
    WriteBackSettings(CIni(SettingsFilePath()), values);
    SaveReplacements();
    return true;
}

} // namespace cvas
