#include "resources/resource_ids.h"
#include "support/message_box.h"
#include "ui/options/options_pages.h"
#include "ui/shell_open.h"
#include "ui/small_icons.h"

namespace cvas
{
namespace
{

constexpr int kOpenButtons[] = {IDC_OPEN_QUEUE_FILE, IDC_OPEN_FAILED_LOG, IDC_OPEN_STATUS_LOG};

bool FileExists(const std::wstring& file)
{
    const DWORD attributes = GetFileAttributesW(file.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

} // namespace

COptionsLogging::COptionsLogging() : CPropertyPage(IDD_OPTIONS_LOGGING) {}

void COptionsLogging::DoDataExchange(CDataExchange& exchange)
{
    exchange.Text(IDC_QUEUE_FILE, queueFile);
    exchange.Text(IDC_FAILED_LOG_FILE, failedLogFile);
    exchange.Text(IDC_STATUS_LOG_FILE, statusLogFile);
}

bool COptionsLogging::OnInitDialog()
{
    CPropertyPage::OnInitDialog();
    for (int button : kOpenButtons)
        SetButtonIcon(Item(button), IDI_OPEN_FILE);
    return true;
}

bool COptionsLogging::OnCommand(int id, int code)
{
    const std::wstring* file = id == IDC_OPEN_QUEUE_FILE   ? &queueFile
                               : id == IDC_OPEN_FAILED_LOG ? &failedLogFile
                               : id == IDC_OPEN_STATUS_LOG ? &statusLogFile
                                                           : nullptr;
    if (file == nullptr || code != BN_CLICKED)
        return false;
    if (FileExists(*file))
        ShellOpenFile(shellOwner, *file);
    else
        WarningMessage(L"The filename '%ls' does not exist!", file->c_str());
    return true;
}

} // namespace cvas
