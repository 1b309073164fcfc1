#include "tools/player/screenshot.h"

#include <cwctype>

#include "support/unique_handle.h"
#include "support/win_handle.h"

namespace cvas::player
{

namespace
{

struct CScreenDcTraits
{
    using Handle = HDC;
    static bool IsHandle(HDC dc) { return dc != nullptr; }
    static void Close(HDC dc) { ReleaseDC(nullptr, dc); }
};

struct CMemoryDcTraits
{
    using Handle = HDC;
    static bool IsHandle(HDC dc) { return dc != nullptr; }
    static void Close(HDC dc) { DeleteDC(dc); }
};

struct CBitmapTraits
{
    using Handle = HBITMAP;
    static bool IsHandle(HBITMAP bitmap) { return bitmap != nullptr; }
    static void Close(HBITMAP bitmap) { DeleteObject(bitmap); }
};

// Selects an object into a DC and puts the old one back when it goes.
class CSelection
{
public:
    CSelection(HDC dc, HGDIOBJ object) : m_dc(dc), m_old(SelectObject(dc, object)) {}
    ~CSelection() { SelectObject(m_dc, m_old); }
    CSelection(const CSelection&) = delete;
    CSelection& operator=(const CSelection&) = delete;

private:
    HDC m_dc;
    HGDIOBJ m_old;
};

} // namespace

bool CaptureWindow(HWND window, CPicture& picture)
{
    RECT bounds;
    if (!GetWindowRect(window, &bounds))
        return false;
    const int width = bounds.right - bounds.left;
    const int height = bounds.bottom - bounds.top;
    if (width <= 0 || height <= 0)
        return false;
    CUniqueHandle<CScreenDcTraits> screen(GetDC(nullptr));
    CUniqueHandle<CMemoryDcTraits> memory(CreateCompatibleDC(screen.Get()));
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height; // rows from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    CUniqueHandle<CBitmapTraits> bitmap(
        CreateDIBSection(screen.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!screen || !memory || !bitmap || bits == nullptr)
        return false;
    {
        CSelection selection(memory.Get(), bitmap.Get());
        if (!BitBlt(memory.Get(), 0, 0, width, height, screen.Get(), bounds.left, bounds.top,
                    SRCCOPY | CAPTUREBLT))
            return false;
    }
    GdiFlush();
    const auto* pixels = static_cast<const std::uint32_t*>(bits);
    picture.width = width;
    picture.height = height;
    picture.pixels.assign(pixels, pixels + static_cast<std::size_t>(width) * height);
    for (std::uint32_t& pixel : picture.pixels)
        pixel &= 0x00FFFFFF;
    return true;
}

bool SavePicture(const std::wstring& path, const CPicture& picture)
{
    std::wstring extension = path.size() >= 4 ? path.substr(path.size() - 4) : L"";
    for (wchar_t& c : extension)
        c = static_cast<wchar_t>(std::towlower(c));
    const std::string bytes = extension == L".png" ? PngBytes(picture) : BmpBytes(picture);
    CHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                             FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file &&
           WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                     nullptr) &&
           written == bytes.size();
}

} // namespace cvas::player
