#include "common/temp_folder.h"
#include "settings/data_folder.h"
#include "settings/plugin_mode.h"

#include <gtest/gtest.h>

#include <windows.h>

using namespace cvas;
using cvas::test::CTempFolder;
using cvas::test::FileExists;
using cvas::test::WriteFileBytes;

TEST(DataFolder, SettingsFileIsInTheDataFolderUnlessTheDocumentsFolderHasOne)
{
    CTempFolder root;
    const std::wstring documents = root.Path() + L"Docs\\Sub";
    const std::wstring appData = root.Path() + L"AppData\\Roaming";
    OverrideSpecialFolders(documents, appData);
    const std::wstring dataFolder = appData + L"\\Ostrana\\last.fm\\";
    EXPECT_EQ(DataFolder(), dataFolder);
    const DWORD attributes = GetFileAttributesW(dataFolder.c_str());
    EXPECT_TRUE(attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
        << "made level by level";

    EXPECT_EQ(SettingsFilePath(), dataFolder + L"Settings.INI");
    EXPECT_FALSE(FileExists(SettingsFilePath())) << "finding it must not create it";

    // Found once and kept: a file that appears later changes nothing until
    // the process looks again.
    CreateFolderLevels(documents + L"\\Ostrana\\last.fm");
    const std::wstring inDocuments = documents + L"\\Ostrana\\last.fm\\Settings.INI";
    WriteFileBytes(inDocuments, "[General]\r\n");
    EXPECT_EQ(SettingsFilePath(), dataFolder + L"Settings.INI");

    OverrideSpecialFolders(documents, appData);
    WriteFileBytes(dataFolder + L"Settings.INI", "[General]\r\n");
    EXPECT_EQ(SettingsFilePath(), inDocuments);
    OverrideSpecialFolders(L"", L"");
}

TEST(PluginMode, OlderHostIsRecognisedByAFileNotAFolder)
{
    CTempFolder folder;
    EXPECT_FALSE(IsOlderHostFolder(folder.Path()));
    CreateDirectoryW(folder.File(L"BX12.XML").c_str(), nullptr);
    EXPECT_FALSE(IsOlderHostFolder(folder.Path()));

    CTempFolder other;
    WriteFileBytes(other.File(L"BX12.XML"), "<x/>");
    EXPECT_TRUE(IsOlderHostFolder(other.Path()));
    // The folder may come without its closing backslash.
    std::wstring bare = other.Path();
    bare.pop_back();
    EXPECT_TRUE(IsOlderHostFolder(bare));
}

TEST(PluginMode, StaysOffAndUnwrittenUntilTheKeyExists)
{
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, PluginRegistryKey());
    EXPECT_FALSE(ReadPluginMode());
    EXPECT_FALSE(WritePluginMode(true));
    EXPECT_FALSE(ReadPluginMode());

    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, PluginRegistryKey(), 0, nullptr, 0,
                              KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_TRUE(WritePluginMode(true));
    EXPECT_TRUE(ReadPluginMode());
    EXPECT_TRUE(WritePluginMode(false));
    EXPECT_FALSE(ReadPluginMode());
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, PluginRegistryKey());
}
