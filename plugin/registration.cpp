#include "plugin/registration.h"

#include "resources/CVAudioScrobbler_h.h"
#include "settings/plugin_mode.h"
#include "support/message_box.h"
#include "support/registry_key.h"
#include "support/this_module.h"
#include "support/version_info.h"

#include <oleauto.h>

namespace cvas
{
namespace
{

std::wstring g_moduleVersionText;

std::wstring GuidText(REFGUID guid)
{
    wchar_t text[64] = L"";
    StringFromGUID2(guid, text, 64);
    return text;
}

// The player's values under the plug-in key, in the order it has always had
// them; PluginMode keeps what is there.
void WriteHostValues(const CVersionTexts& version)
{
    CRegistryKey key;
    if (key.Create(HKEY_LOCAL_MACHINE, PluginRegistryKey()) != ERROR_SUCCESS)
    {
        g_moduleVersionText = L"UNABLE TO QUERY VERSION";
        return;
    }
    key.SetText(L"CLSID", GuidText(CLSID_Interface));
    key.SetNumber(L"IVersion", 1);
    key.SetText(L"Company", version.companyName);
    key.SetText(L"Version", version.productVersion);
    key.SetText(L"URL", L"");
    key.SetText(L"Copyright", version.legalCopyright);
    DWORD pluginMode = 0;
    if (!key.GetNumber(L"PluginMode", pluginMode))
        pluginMode = 0;
    key.SetNumber(L"PluginMode", pluginMode);
    g_moduleVersionText = version.productVersion;
}

LONG RegisterClassKeys(const std::wstring& modulePath)
{
    const std::wstring clsid = GuidText(CLSID_Interface);
    const std::wstring classKey = L"CLSID\\" + clsid;
    struct CKeyText
    {
        std::wstring path;
        const wchar_t* text;
    };
    const std::wstring bitmap = modulePath + L", " + std::to_wstring(kToolboxBitmapId);
    const std::wstring libid = GuidText(LIBID_CVAUDIOSCROBBLERLib);
    const CKeyText keys[] = {
        {kProgId, kClassName},
        {std::wstring(kProgId) + L"\\CLSID", clsid.c_str()},
        {kVersionIndependentProgId, kClassName},
        {std::wstring(kVersionIndependentProgId) + L"\\CLSID", clsid.c_str()},
        {std::wstring(kVersionIndependentProgId) + L"\\CurVer", kProgId},
        {classKey, kClassName},
        {classKey + L"\\ProgID", kProgId},
        {classKey + L"\\VersionIndependentProgID", kVersionIndependentProgId},
        {classKey + L"\\Programmable", nullptr},
        {classKey + L"\\InprocServer32", modulePath.c_str()},
        {classKey + L"\\Control", nullptr},
        {classKey + L"\\Insertable", nullptr},
        {classKey + L"\\ToolboxBitmap32", bitmap.c_str()},
        {classKey + L"\\MiscStatus", L"0"},
        {classKey + L"\\MiscStatus\\1", L"131473"},
        {classKey + L"\\TypeLib", libid.c_str()},
        {classKey + L"\\Version", L"1.0"},
    };
    for (const CKeyText& key : keys)
    {
        if (const LONG result = CreateKeyWithText(HKEY_CLASSES_ROOT, key.path, key.text);
            result != ERROR_SUCCESS)
            return result;
    }
    CRegistryKey server;
    LONG result = server.Open(HKEY_CLASSES_ROOT, classKey + L"\\InprocServer32", KEY_WRITE);
    if (result == ERROR_SUCCESS)
        result = server.SetText(L"ThreadingModel", L"Apartment");
    return result;
}

} // namespace

HRESULT RegisterServer()
{
    const std::wstring modulePath = ThisModulePath();
    CVersionTexts version;
    if (!ReadVersionTexts(modulePath, version))
        FatalMessage(L"FAILED TO GET VERSION INFORMATION FROM DLL!");
    WriteHostValues(version);
    if (const LONG result = RegisterClassKeys(modulePath); result != ERROR_SUCCESS)
        return HRESULT_FROM_WIN32(result);
    ITypeLib* library = nullptr;
    HRESULT hr = LoadTypeLibEx(modulePath.c_str(), REGKIND_REGISTER, &library);
    if (library != nullptr)
        library->Release();
    return hr;
}

HRESULT UnregisterServer()
{
    RegDeleteTreeW(HKEY_CLASSES_ROOT, (L"CLSID\\" + GuidText(CLSID_Interface)).c_str());
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kProgId);
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kVersionIndependentProgId);
    const SYSKIND kind = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;
    const HRESULT hr = UnRegisterTypeLib(LIBID_CVAUDIOSCROBBLERLib, 1, 0, LANG_NEUTRAL, kind);
    // A type library that is not registered is as good as removed.
    return hr == TYPE_E_REGISTRYACCESS || hr == TYPE_E_CANTLOADLIBRARY ? S_OK : hr;
}

const std::wstring& ModuleVersionText()
{
    return g_moduleVersionText;
}

} // namespace cvas
