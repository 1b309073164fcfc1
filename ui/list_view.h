#pragma once
// The few operations the dialogs make on a report-view list control whose
// rows hold texts in columns.

#include <windows.h>

#include <commctrl.h>

#include <string>

namespace cvas
{

class CListView
{
public:
    explicit CListView(HWND window = nullptr) : m_window(window) {}
    HWND Window() const { return m_window; }

    void SetFullRowSelect() const;
    void AddColumn(int index, const std::wstring& caption, int widthPixels) const;
    int Count() const;
    // Inserts a row at index with its first column's text; returns its index.
    int InsertRow(int index, const std::wstring& text) const;
    void SetText(int row, int column, const std::wstring& text) const;
    std::wstring Text(int row, int column) const;
    void DeleteRow(int row) const;
    // Selects and focuses the row (and only it).
    void Select(int row) const;
    // The first selected row, or -1.
    int FirstSelected() const;
    // The row under a point of the list's client area, or -1.
    int RowAt(POINT clientPoint) const;

private:
    HWND m_window;
};

} // namespace cvas
