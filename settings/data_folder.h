#pragma once
// Where the plug-in keeps its files. The settings file is looked for in the
// user's documents folder first; everything else lies in the data folder
// below the application-data folder.

#include <string>

namespace cvas
{

// The data folder, ending with a backslash; every missing level is created.
std::wstring DataFolder();

// The settings file: "<documents>\Ostrana\last.fm\Settings.INI" when that
// file exists, else "Settings.INI" in the data folder. Found once and kept.
std::wstring SettingsFilePath();

// Tests point the documents and application-data folders at folders of
// their own; this also forgets the settings path found so far. An empty
// pair goes back to the user's real folders.
void OverrideSpecialFolders(const std::wstring& documents, const std::wstring& appData);

// Creates every missing level of a folder path (backslashes or slashes).
void CreateFolderLevels(const std::wstring& folder);

} // namespace cvas
