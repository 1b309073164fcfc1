#include "tools/player/player_model.h"

#include <algorithm>
#include <cmath>

namespace cvas::player
{

CPlayerModel::CPlayerModel(std::vector<CLibraryFile> library, std::vector<std::size_t> playlist,
                           CEventSink events)
    : m_library(std::move(library)), m_playlist(std::move(playlist)), m_events(std::move(events)),
      m_current(m_playlist.empty() ? -1 : 0)
{
}

void CPlayerModel::Advance(double seconds)
{
    // One pass per file that ends, so the loop is bounded by the playlist.
    while (seconds > 0)
    {
        const CLibraryFile* file = CurrentFile();
        if (m_state != kPlaying || file == nullptr || file->duration < 0 ||
            m_position + seconds < file->duration)
        {
            m_now += seconds;
            if (m_state == kPlaying)
                m_position += seconds;
            return;
        }
        const double step = std::max(0.0, file->duration - m_position);
        m_now += step;
        seconds -= step;
        const std::size_t next = static_cast<std::size_t>(m_current) + 1;
        if (next < m_playlist.size())
        {
            Event(L"end of " + file->fileName + L", next entry");
            Play(next);
        }
        else
        {
            Event(L"end of " + file->fileName + L", end of the playlist");
            m_state = kStopped;
            m_position = 0;
            m_now += seconds;
            return;
        }
    }
}

void CPlayerModel::Play(std::size_t playlistIndex)
{
    m_current = static_cast<long>(playlistIndex);
    m_state = kPlaying;
    m_position = 0;
    m_history.plays.push_back(m_library[m_playlist.at(playlistIndex)].key);
    Event(L"play " + Describe(playlistIndex));
}

void CPlayerModel::Pause()
{
    if (m_state == kPlaying)
        m_state = kPaused;
    Event(L"pause at " + std::to_wstring(Position()) + L" s");
}

void CPlayerModel::Resume()
{
    if (CurrentFile() != nullptr)
        m_state = kPlaying;
    Event(L"resume at " + std::to_wstring(Position()) + L" s");
}

void CPlayerModel::Seek(double seconds)
{
    m_position = seconds;
    Event(L"seek to " + std::to_wstring(Position()) + L" s");
}

void CPlayerModel::Stop()
{
    m_state = kStopped;
    m_position = 0;
    Event(L"stop");
}

void CPlayerModel::PlayLibraryFile(std::size_t libraryIndex)
{
    auto entry = std::find(m_playlist.begin(), m_playlist.end(), libraryIndex);
    if (entry == m_playlist.end())
        entry = m_playlist.insert(m_playlist.end(), libraryIndex);
    Play(static_cast<std::size_t>(entry - m_playlist.begin()));
}

int CPlayerModel::Position() const
{
    return static_cast<int>(std::floor(m_position));
}

const CLibraryFile* CPlayerModel::CurrentFile() const
{
    if (m_current < 0 || static_cast<std::size_t>(m_current) >= m_playlist.size())
        return nullptr;
    return &m_library[m_playlist[static_cast<std::size_t>(m_current)]];
}

std::optional<std::size_t> CPlayerModel::FindKey(int key) const
{
    for (std::size_t i = 0; i < m_library.size(); ++i)
    {
        if (m_library[i].key == key)
            return i;
    }
    return std::nullopt;
}

const CQueryResult& CPlayerModel::Query(const std::wstring& text)
{
    CQueryRecord record{text, RunQuery(m_library, text)};
    std::wstring line = L"query \"" + text + L"\": ";
    if (!record.result.error.empty())
    {
        line += L"not understood (" + record.result.error + L")";
    }
    else
    {
        line += std::to_wstring(record.result.matches.size()) + L" file(s)";
        for (std::size_t i = 0; i < record.result.matches.size() && i < 5; ++i)
            line += (i == 0 ? L": key " : L", ") +
                    std::to_wstring(m_library[record.result.matches[i]].key);
    }
    Event(line);
    m_history.queries.push_back(std::move(record));
    return m_history.queries.back().result;
}

void CPlayerModel::RecordPlayRequest(int key)
{
    m_history.playRequests.push_back(key);
    const auto found = FindKey(key);
    Event(L"play request: add key " + std::to_wstring(key) +
          (found ? L" (" + m_library[*found].fileName + L")" : L" (no such file)"));
}

void CPlayerModel::RecordSkinning(long thread, long flag)
{
    m_history.skinning.emplace_back(thread, flag);
    Event(L"skinning of thread " + std::to_wstring(thread) + (flag != 0 ? L" on" : L" off"));
}

void CPlayerModel::RecordRefusal(const std::wstring& what)
{
    ++m_history.refusedCalls;
    Event(L"refused: " + what);
}

void CPlayerModel::Event(const std::wstring& text) const
{
    if (m_events)
        m_events(m_now, text);
}

std::wstring CPlayerModel::Describe(std::size_t playlistIndex) const
{
    const CLibraryFile& file = m_library[m_playlist[playlistIndex]];
    return L"entry " + std::to_wstring(playlistIndex) + L": key " + std::to_wstring(file.key) +
           L", " + file.fileName + L" (" + std::to_wstring(file.duration) + L" s)";
}

} // namespace cvas::player
