// The simulated player's playback on simulated time, and its clock.

#include <gtest/gtest.h>

#include "tools/player/player_model.h"
#include "tools/player/shared_player.h"

using namespace cvas::player;

namespace
{

CLibraryFile File(int key, int duration)
{
    CLibraryFile file;
    file.key = key;
    file.fileName = L"f" + std::to_wstring(key) + L".mp3";
    file.identity = file.fileName;
    file.duration = duration;
    return file;
}

struct CRecordedModel
{
    std::vector<std::wstring> events;
    CPlayerModel model;

    explicit CRecordedModel(std::vector<int> durations)
        : model(Library(durations), Playlist(durations.size()),
                [this](double time, const std::wstring& text) {
                    events.push_back(std::to_wstring(static_cast<int>(time)) + L" " + text);
                })
    {
    }
    static std::vector<CLibraryFile> Library(const std::vector<int>& durations)
    {
        std::vector<CLibraryFile> files;
        for (std::size_t i = 0; i < durations.size(); ++i)
            files.push_back(File(static_cast<int>(100 + i), durations[i]));
        return files;
    }
    static std::vector<std::size_t> Playlist(std::size_t size)
    {
        std::vector<std::size_t> entries;
        for (std::size_t i = 0; i < size; ++i)
            entries.push_back(i);
        return entries;
    }
};

} // namespace

TEST(PlayerModel, PositionMovesOnlyWhilePlaying)
{
    CRecordedModel recorded({300});
    CPlayerModel& model = recorded.model;
    EXPECT_EQ(model.CurrentIndex(), 0);
    EXPECT_EQ(model.State(), kStopped);
    model.Advance(5);
    EXPECT_EQ(model.Position(), 0);
    model.Play(0);
    model.Advance(10.75);
    EXPECT_EQ(model.State(), kPlaying);
    EXPECT_EQ(model.Position(), 10);
    model.Pause();
    model.Advance(100);
    EXPECT_EQ(model.State(), kPaused);
    EXPECT_EQ(model.Position(), 10);
    model.Resume();
    model.Advance(20);
    EXPECT_EQ(model.Position(), 30);
    model.Seek(250);
    EXPECT_EQ(model.Position(), 250);
    model.Stop();
    EXPECT_EQ(model.Position(), 0);
    EXPECT_DOUBLE_EQ(model.Now(), 135.75);
}

TEST(PlayerModel, AFileThatEndsGivesWayToTheNextAndTheLastStops)
{
    CRecordedModel recorded({30, 40, 50});
    CPlayerModel& model = recorded.model;
    model.Play(0);
    model.Advance(25);
    // One step across the end of two files.
    model.Advance(60);
    EXPECT_EQ(model.CurrentIndex(), 2);
    EXPECT_EQ(model.State(), kPlaying);
    EXPECT_EQ(model.Position(), 15);
    model.Advance(1000);
    EXPECT_EQ(model.CurrentIndex(), 2);
    EXPECT_EQ(model.State(), kStopped);
    EXPECT_EQ(model.Position(), 0);
    EXPECT_EQ(model.History().plays, (std::vector<int>{100, 101, 102}));
    EXPECT_EQ(recorded.events,
              (std::vector<std::wstring>{
                  L"0 play entry 0: key 100, f100.mp3 (30 s)", L"30 end of f100.mp3, next entry",
                  L"30 play entry 1: key 101, f101.mp3 (40 s)", L"70 end of f101.mp3, next entry",
                  L"70 play entry 2: key 102, f102.mp3 (50 s)",
                  L"120 end of f102.mp3, end of the playlist"}));
    EXPECT_DOUBLE_EQ(model.Now(), 1085);
}

TEST(PlayerModel, UnknownAndZeroDurations)
{
    CRecordedModel recorded({-1, 0, 0});
    CPlayerModel& model = recorded.model;
    model.Play(0);
    model.Advance(100000);
    EXPECT_EQ(model.Position(), 100000);
    EXPECT_EQ(model.State(), kPlaying);
    // Files of no length end at the next moment, one after the other.
    model.Play(1);
    model.Advance(0.5);
    EXPECT_EQ(model.CurrentIndex(), 2);
    EXPECT_EQ(model.State(), kStopped);
}

TEST(PlayerModel, PlayRequestUsesTheEntryOfTheFileOrAppendsOne)
{
    CRecordedModel recorded({100, 100});
    CPlayerModel& model = recorded.model;
    model.PlayLibraryFile(1);
    EXPECT_EQ(model.CurrentIndex(), 1);
    EXPECT_EQ(model.PlaylistSize(), 2u);

    CPlayerModel other({File(1, 60), File(2, 60)}, {0}, {});
    other.PlayLibraryFile(1);
    EXPECT_EQ(other.PlaylistSize(), 2u);
    EXPECT_EQ(other.CurrentIndex(), 1);
    EXPECT_EQ(other.CurrentFile()->key, 2);
    EXPECT_EQ(other.State(), kPlaying);
}

TEST(PlayerModel, EmptyPlaylistHasNoCurrentFile)
{
    CPlayerModel model({File(1, 60)}, {}, {});
    EXPECT_EQ(model.CurrentIndex(), -1);
    EXPECT_EQ(model.CurrentFile(), nullptr);
    model.Resume();
    EXPECT_EQ(model.State(), kStopped);
}

TEST(PlayerClock, RunsAtItsSpeedStopsAtZeroAndJumps)
{
    std::uint64_t realMs = 1000;
    CSharedPlayer player(CPlayerModel({File(1, 10000)}, {0}, {}), [&] { return realMs; });
    player.Access()->Play(0);
    realMs += 2000;
    EXPECT_DOUBLE_EQ(player.Access()->Now(), 2);
    player.SetSpeed(10);
    realMs += 500;
    EXPECT_EQ(player.Access()->Position(), 7);
    player.SetSpeed(0);
    realMs += 60000;
    EXPECT_EQ(player.Access()->Position(), 7);
    player.Jump(30);
    EXPECT_EQ(player.Access()->Position(), 37);
    player.SetSpeed(0.5);
    realMs += 4000;
    EXPECT_DOUBLE_EQ(player.Access()->Now(), 39);
}
