#include "buddies/tab_buddy_tracks.h"

#include "host/play_request.h"
#include "resources/resource_ids.h"
#include "ui/list_view.h"
#include "ui/small_icons.h"
#include "ui/wait_cursor.h"

#include <commctrl.h>

namespace cvas
{
namespace
{

constexpr int kEmptyColumnWidth = 100;
constexpr int kColumns = 3;
// The image of a row without a library match.
constexpr int kNoImage = -1;

} // namespace

CTabBuddyTracks::CTabBuddyTracks(IDispatch* automation, HWND playWindow)
    : CDialog(IDD_BUDDY_TRACKS), m_automation(automation), m_playWindow(playWindow)
{
}

bool CTabBuddyTracks::OnInitDialog()
{
    CDialog::OnInitDialog();
    HWND list = Item(IDC_BUDDY_TRACKS);
    m_images = CImageList(MakeSmallImageList({IDI_IN_LIBRARY}));
    ListView_SetImageList(list, m_images.Get(), LVSIL_SMALL);
    const CListView view(list);
    view.SetFullRowSelect();
    view.AddColumn(0, L"Artist", 0);
    view.AddColumn(1, L"Track", 0);
    view.AddColumn(2, L"When", 0);
    for (int column : {2, 0, 1})
        ListView_SetColumnWidth(list, column, LVSCW_AUTOSIZE_USEHEADER);
    return true;
}

void CTabBuddyTracks::SetBuddy(CountedHandle<CBuddy> buddy)
{
    m_buddy = std::move(buddy);
    HWND list = Item(IDC_BUDDY_TRACKS);
    ListView_DeleteAllItems(list);
    if (!m_buddy)
        return;
    {
        const CWaitCursor wait;
        m_buddy->ParseRecentTracks(m_automation);
    }
    const CListView view(list);
    for (const CountedHandle<CRecentTrack>& track : m_buddy->recentTracks)
    {
        LVITEMW item{};
        item.mask = LVIF_TEXT | LVIF_IMAGE;
        item.iItem = view.Count();
        item.pszText = const_cast<wchar_t*>(track->artist.c_str());
        // kNoImage: answered when the list asks (AnswerImage).
        item.iImage = track->libraryFileName.empty() ? kNoImage : 0;
        const int row = ListView_InsertItem(list, &item);
        view.SetText(row, 1, track->name);
        view.SetText(row, 2, track->when);
    }
    const int width = m_buddy->recentTracks.empty() ? kEmptyColumnWidth : LVSCW_AUTOSIZE;
    for (int column = 0; column < kColumns; ++column)
        ListView_SetColumnWidth(list, column, width);
}

const CRecentTrack* CTabBuddyTracks::TrackAt(int row) const
{
    if (!m_buddy || row < 0 || static_cast<std::size_t>(row) >= m_buddy->recentTracks.size())
        return nullptr;
    return m_buddy->recentTracks[static_cast<std::size_t>(row)].get();
}

bool CTabBuddyTracks::OnCommand(int id, int code)
{
    if (id == IDC_PLAY && code == BN_CLICKED)
    {
        Play();
        return true;
    }
    return CDialog::OnCommand(id, code);
}

bool CTabBuddyTracks::OnNotify(const NMHDR& header, LRESULT& result)
{
    if (header.idFrom == IDC_BUDDY_TRACKS && header.code == LVN_GETDISPINFOW)
    {
        AnswerImage(const_cast<NMLVDISPINFOW&>(reinterpret_cast<const NMLVDISPINFOW&>(header)));
        result = 0;
        return true;
    }
    if (header.idFrom != IDC_BUDDY_TRACKS || (header.code != NM_CLICK && header.code != NM_DBLCLK))
        return false;
    const int row = reinterpret_cast<const NMITEMACTIVATE&>(header).iItem;
    const CRecentTrack* track = TrackAt(row);
    // A click beside the rows leaves Play as it was.
    if (header.code == NM_CLICK && row >= 0)
        EnableItem(IDC_PLAY, track != nullptr && track->libraryKey != 0);
    else if (header.code == NM_DBLCLK && track != nullptr && track->libraryKey != 0)
        Play();
    result = 0;
    return true;
}

void CTabBuddyTracks::AnswerImage(NMLVDISPINFOW& request) const
{
    // A row without a match is inserted with image -1, which the list takes
    // as "ask the parent"; left unanswered, the list may draw whatever image
    // the request held. The answer is -1 again: no image of the list has it,
    // so nothing is drawn, and a read of the row (which asks too) gives the
    // row's own value, where I_IMAGENONE would read -2.
    if ((request.item.mask & LVIF_IMAGE) == 0)
        return;
    const CRecentTrack* track = TrackAt(request.item.iItem);
    request.item.iImage = track != nullptr && !track->libraryFileName.empty() ? 0 : kNoImage;
}

void CTabBuddyTracks::Play() const
{
    const CRecentTrack* track = TrackAt(CListView(Item(IDC_BUDDY_TRACKS)).FirstSelected());
    // A track without a match in the library is never played.
    if (track != nullptr && track->libraryKey != 0)
        PostMessageW(m_playWindow, kPlayRequestMessage, static_cast<WPARAM>(track->libraryKey), 0);
}

} // namespace cvas
