#include "buddies/skin_thread.h"

#include "host/automation_call.h"
#include "host/automation_ids.h"

#include <vector>

namespace cvas
{
namespace
{

constexpr int kFirstSkinningVersion = 12;

int ReadHostMajorVersion()
{
    wchar_t path[MAX_PATH] = {};
    if (GetModuleFileNameW(nullptr, path, MAX_PATH) == 0)
        return 0;
    DWORD ignored = 0;
    std::vector<char> block(GetFileVersionInfoSizeW(path, &ignored));
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (block.empty() ||
        !GetFileVersionInfoW(path, 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&info), &length) ||
        info == nullptr || length < sizeof(VS_FIXEDFILEINFO))
        return 0;
    return static_cast<int>(HIWORD(info->dwFileVersionMS));
}

void SkinThread(IDispatch* automation, int on)
{
    Call(automation, kAutomationSkinThread, CallKind::Method,
         {IntArgument(static_cast<int>(GetCurrentThreadId())), IntArgument(on)});
}

} // namespace

int HostMajorVersion()
{
    static const int version = ReadHostMajorVersion();
    return version;
}

CSkinThread::CSkinThread(IDispatch* automation) : m_automation(automation)
{
    if (m_automation == nullptr || HostMajorVersion() < kFirstSkinningVersion)
        return;
    SkinThread(m_automation, 1);
    m_skinned = true;
}

CSkinThread::~CSkinThread()
{
    if (m_skinned)
        SkinThread(m_automation, 0);
}

} // namespace cvas
