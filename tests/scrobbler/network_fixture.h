#pragma once
// What every network test under Wine starts from: a data folder of its own
// with fresh logs, the engine's events, empty track lists, and a stand-in
// service that has forgotten earlier tests.

#include "common/temp_folder.h"
#include "scrobbler/network/submission_settings.h"
#include "scrobbler/worker/submission_pass.h"

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace cvas::test
{

// One outcome handed to the submitted-tracks list.
struct CReportedOutcome
{
    bool succeeded;
    std::wstring name;
    std::wstring status;
};

class NetworkTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // The settings of the user "tester" against the stand-in.
    CSubmissionSettings TesterSettings(bool reattemptFailed = false) const;
    // Scripts the stand-in ("handshake=…&submit=…").
    void Script(const std::wstring& actions);
    // Three plays, "One", "Two" and "Three", moved into the submission queue.
    void QueueThreePlays();

    // The texts of the status log (without the prefixes), newest line first;
    // a message of several lines keeps its lines in order.
    std::vector<std::wstring> StatusTexts() const;
    std::vector<std::wstring> FailedTexts() const;
    bool StatusLogHas(const std::wstring& text) const;
    // The names of the tracks in Queue.xml, in order.
    std::vector<std::wstring> QueueFileNames() const;
    std::vector<CReportedOutcome> Outcomes() const;
    SubmissionReport Reporter();

    // Waits, at most limitMs, until every thread that the module started has
    // ended; returns how long that took, or -1 when it did not happen.
    static long WaitForNoLiveThreads(unsigned limitMs);
    // Polls until the condition holds or limitMs pass; returns the condition.
    static bool WaitFor(const std::function<bool()>& condition, unsigned limitMs);

    CTempFolder root;

private:
    mutable std::mutex m_outcomesMutex;
    std::vector<CReportedOutcome> m_outcomes;
};

} // namespace cvas::test
