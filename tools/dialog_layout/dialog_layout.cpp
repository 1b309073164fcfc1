#include "tools/dialog_layout/dialog_layout.h"

#include <commctrl.h>

#include <cstring>

namespace cvas::layout
{

HWND CreatePageInside(HINSTANCE module, int templateId, HWND parent, DLGPROC procedure)
{
    HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(templateId), RT_DIALOG);
    HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
    const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    const DWORD size = found != nullptr ? SizeofResource(module, found) : 0;
    // A template is a few kilobytes at most; anything else is no template.
    if (bytes == nullptr || size < sizeof(DLGTEMPLATE) || size > 0x10000)
        return nullptr;
    // A copy in DWORDs keeps the alignment that the dialog manager needs.
    std::vector<DWORD> copy((size + sizeof(DWORD) - 1) / sizeof(DWORD));
    std::memcpy(copy.data(), bytes, size);
    // An extended template has 0xFFFF after its version and its style after
    // the help id and the extended style; a plain one starts with its style.
    const bool extended = reinterpret_cast<const WORD*>(copy.data())[1] == 0xFFFF;
    DWORD& style = copy[extended ? 3 : 0];
    style &= ~static_cast<DWORD>(WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_DISABLED | DS_MODALFRAME);
    style |= WS_CHILD | WS_VISIBLE | DS_CONTROL;
    return CreateDialogIndirectParamW(module, reinterpret_cast<LPCDLGTEMPLATEW>(copy.data()),
                                      parent, procedure, 0);
}

namespace
{

struct CControl
{
    HWND window = nullptr;
    std::wstring className;
    DWORD style = 0;
    RECT rect = {}; // in the dialog's client coordinates
    std::wstring text;
};

std::vector<CControl> Controls(HWND dialog)
{
    // The dialog manager creates the controls in template order, each below
    // the ones before it.
    std::vector<CControl> controls;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT))
    {
        CControl control;
        control.window = child;
        wchar_t name[64] = {};
        GetClassNameW(child, name, 64);
        control.className = name;
        control.style = static_cast<DWORD>(GetWindowLongW(child, GWL_STYLE));
        GetWindowRect(child, &control.rect);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&control.rect), 2);
        std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(child)) + 1, L'\0');
        text.resize(static_cast<std::size_t>(
            GetWindowTextW(child, text.data(), static_cast<int>(text.size()))));
        control.text = text;
        controls.push_back(control);
    }
    return controls;
}

bool IsClass(const CControl& control, const wchar_t* name)
{
    return _wcsicmp(control.className.c_str(), name) == 0;
}

DWORD ButtonType(const CControl& control)
{
    return control.style & BS_TYPEMASK;
}

bool IsGroupBox(const CControl& control)
{
    return IsClass(control, L"Button") && ButtonType(control) == BS_GROUPBOX;
}

bool TakesInput(const CControl& control)
{
    return (IsClass(control, L"Button") && !IsGroupBox(control)) || IsClass(control, L"Edit") ||
           IsClass(control, WC_LISTVIEWW) || IsClass(control, L"ComboBox") ||
           IsClass(control, L"ListBox");
}

int Width(const RECT& rect)
{
    return rect.right - rect.left;
}

int Height(const RECT& rect)
{
    return rect.bottom - rect.top;
}

std::wstring Describe(const CControl& control)
{
    std::wstring name =
        L"control " + std::to_wstring(GetDlgCtrlID(control.window)) + L" (" + control.className;
    if (!control.text.empty())
        name += L" \"" + control.text.substr(0, 40) + (control.text.size() > 40 ? L"...\"" : L"\"");
    return name + L")";
}

std::wstring Size(int width, int height)
{
    return std::to_wstring(width) + L" x " + std::to_wstring(height);
}

// The text's extent in the control's own font, wrapped at wrapWidth when the
// format breaks words.
SIZE TextExtent(const CControl& control, UINT format, int wrapWidth)
{
    HDC dc = GetDC(control.window);
    HGDIOBJ font = reinterpret_cast<HGDIOBJ>(SendMessageW(control.window, WM_GETFONT, 0, 0));
    HGDIOBJ old = font != nullptr ? SelectObject(dc, font) : nullptr;
    RECT bounds = {0, 0, wrapWidth, 0};
    if (control.text.empty())
        DrawTextW(dc, L" ", -1, &bounds, format | DT_CALCRECT);
    else
        DrawTextW(dc, control.text.c_str(), -1, &bounds, format | DT_CALCRECT);
    if (old != nullptr)
        SelectObject(dc, old);
    ReleaseDC(control.window, dc);
    return SIZE{Width(bounds), Height(bounds)};
}

int Scaled(int pixels, int dpi)
{
    return MulDiv(pixels, dpi, 96);
}

// Whether the control's text fits beside what the control draws around it.
void CheckText(const CControl& control, int dpi, std::vector<std::wstring>& faults)
{
    int room = 0;
    UINT format = DT_EXPANDTABS;
    if (IsClass(control, L"Static"))
    {
        const DWORD type = control.style & SS_TYPEMASK;
        if (type == SS_LEFT || type == SS_CENTER || type == SS_RIGHT)
            format |= DT_WORDBREAK;
        else if (type == SS_SIMPLE || type == SS_LEFTNOWORDWRAP)
            format |= DT_SINGLELINE;
        else
            return; // icons, bitmaps, frames and lines
        if (control.style & SS_NOPREFIX)
            format |= DT_NOPREFIX;
        if (control.text.empty())
            return;
    }
    else if (IsClass(control, L"Button"))
    {
        if (control.style & (BS_ICON | BS_BITMAP))
            return;
        format |= (control.style & BS_MULTILINE) ? DT_WORDBREAK : DT_SINGLELINE;
        const DWORD type = ButtonType(control);
        if (type == BS_GROUPBOX)
            room = Scaled(16, dpi); // the frame's corner and the gaps beside the text
        else if (type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_RADIOBUTTON ||
                 type == BS_AUTORADIOBUTTON || type == BS_3STATE || type == BS_AUTO3STATE)
            room = Scaled(20, dpi); // the box and the gap after it
        else
            room = Scaled(10, dpi); // the edges and the focus rectangle
    }
    else if (IsClass(control, L"Edit"))
    {
        // An edit must show a whole line of its font inside its borders.
        const SIZE line = TextExtent(control, DT_SINGLELINE, 0);
        RECT client;
        GetClientRect(control.window, &client);
        if (line.cy + 2 > Height(client))
            faults.push_back(Describe(control) + L": a line of " + std::to_wstring(line.cy) +
                             L" pixels does not fit its height of " +
                             std::to_wstring(Height(client)));
        return;
    }
    else
    {
        return;
    }
    const int width = Width(control.rect) - room;
    const SIZE need = TextExtent(control, format, width);
    const int height = IsGroupBox(control) ? need.cy : Height(control.rect);
    if (need.cx > width || need.cy > height)
        faults.push_back(Describe(control) + L": its text needs " + Size(need.cx, need.cy) +
                         L" pixels, it has " + Size(width, height));
}

bool Inside(const RECT& inner, const RECT& outer)
{
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

bool Overlap(const RECT& a, const RECT& b)
{
    RECT common;
    return IntersectRect(&common, &a, &b) != FALSE;
}

void CheckPlaces(HWND dialog, const std::vector<CControl>& controls,
                 std::vector<std::wstring>& faults)
{
    RECT client;
    GetClientRect(dialog, &client);
    for (std::size_t i = 0; i < controls.size(); ++i)
    {
        const CControl& control = controls[i];
        if (!Inside(control.rect, client))
            faults.push_back(Describe(control) + L" reaches outside the dialog");
        if (IsGroupBox(control))
        {
            // Whatever lies on the group box lies inside its frame, below its text.
            RECT inner = control.rect;
            inner.top += TextExtent(control, DT_SINGLELINE, 0).cy;
            InflateRect(&inner, -1, 0);
            inner.bottom -= 1;
            for (const CControl& other : controls)
                if (&other != &control && Overlap(other.rect, control.rect) &&
                    !Inside(other.rect, inner))
                    faults.push_back(Describe(other) + L" crosses the frame of " +
                                     Describe(control));
            continue;
        }
        for (std::size_t j = i + 1; j < controls.size(); ++j)
            if (!IsGroupBox(controls[j]) && Overlap(control.rect, controls[j].rect))
                faults.push_back(Describe(control) + L" overlaps " + Describe(controls[j]));
    }
}

void CheckTabOrder(const std::vector<CControl>& controls, std::vector<std::wstring>& faults)
{
    const CControl* previous = nullptr;
    for (const CControl& control : controls)
    {
        if (TakesInput(control) && !(control.style & WS_TABSTOP))
            faults.push_back(Describe(control) + L" takes input but has no tab stop");
        if (!(control.style & WS_TABSTOP))
            continue;
        // The next stop is below the last one, or on the same row to its right.
        if (previous != nullptr)
        {
            const RECT& a = previous->rect;
            const RECT& b = control.rect;
            const bool below = b.top >= a.bottom;
            const bool sameRowRight = b.top < a.bottom && a.top < b.bottom && b.left >= a.right;
            if (!below && !sameRowRight)
                faults.push_back(L"the tab order goes back from " + Describe(*previous) + L" to " +
                                 Describe(control));
        }
        previous = &control;
    }
}

} // namespace

std::vector<std::wstring> CheckDialogLayout(HWND dialog)
{
    std::vector<std::wstring> faults;
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    const std::vector<CControl> controls = Controls(dialog);
    for (const CControl& control : controls)
        CheckText(control, dpi, faults);
    CheckPlaces(dialog, controls, faults);
    CheckTabOrder(controls, faults);
    return faults;
}

} // namespace cvas::layout
