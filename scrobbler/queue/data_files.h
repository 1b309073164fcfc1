#pragma once
// The paths of the files the engine keeps in the data folder, each built on
// first use and kept.

#include <string>

namespace cvas
{

std::wstring QueueFilePath();        // data folder + "Queue.xml"
std::wstring ReplacementsFilePath(); // data folder + "Replacements.xml"

// Forgets the kept paths, for tests that move the data folder.
void ForgetDataFilePaths();

} // namespace cvas
