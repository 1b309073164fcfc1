#pragma once
// Writes a picture to a BMP or a PNG file's bytes. The PNG is stored
// without compression, so that no compression library is needed.

#include <cstdint>
#include <string>
#include <vector>

namespace cvas::player
{

struct CPicture
{
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels; // 0x00RRGGBB, rows from the top
};

std::string BmpBytes(const CPicture& picture);
std::string PngBytes(const CPicture& picture);

} // namespace cvas::player
