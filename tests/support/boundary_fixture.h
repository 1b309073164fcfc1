#pragma once
// What the tests of the callback guards share: the exceptions they throw
// from inside a callback, and a status log of their own in which the guards
// write what they caught.

#include "common/temp_folder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace cvas::test
{

// What a callback under test throws.
enum class Thrown
{
    Nothing,
    FatalError,  // through FatalMessage, whose box is captured
    OutOfMemory, // std::bad_alloc
    Other,       // std::runtime_error("broken")
};

constexpr Thrown kEveryThrown[] = {Thrown::Nothing, Thrown::FatalError, Thrown::OutOfMemory,
                                   Thrown::Other};

const char* Describe(Thrown thrown);

// Throws what is asked for; returns only for Thrown::Nothing.
void Throw(Thrown thrown);

// The status line a guard writes for what it caught in the named boundary;
// empty for Thrown::Nothing.
std::wstring CaughtLine(Thrown thrown, const std::wstring& boundary);

class BoundaryTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // The texts of the status lines written since the last look, oldest
    // first, without their prefixes.
    std::vector<std::wstring> TakeStatusTexts();
    // Checks that the only status line since the last look is the one for
    // what was thrown in the boundary, and that the only box is FatalMessage's.
    void ExpectNoted(Thrown thrown, const std::wstring& boundary);

    CTempFolder folder;

private:
    std::size_t m_linesSeen = 0;
};

} // namespace cvas::test
