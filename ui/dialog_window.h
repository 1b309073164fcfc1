#pragma once
// The part that dialogs and property pages share: a window made from a
// dialog template of this module, its controls by identifier, and the
// exchange of member values with the controls. Handlers run on the thread
// that made the window; the dialog procedures guard them, so that no
// exception gets out into the system's dialog code.

#include <windows.h>

#include <string>

namespace cvas
{

class CDialogWindow;

// One exchange of values between a window's controls and its members.
class CDataExchange
{
public:
    CDataExchange(CDialogWindow& window, bool saving) : m_window(window), m_saving(saving) {}
    // True: from the controls into the members.
    bool Saving() const { return m_saving; }
    void Text(int id, std::wstring& value);
    void Check(int id, bool& value);

private:
    CDialogWindow& m_window;
    bool m_saving;
};

class CDialogWindow
{
public:
    CDialogWindow(const CDialogWindow&) = delete;
    CDialogWindow& operator=(const CDialogWindow&) = delete;

    HWND Window() const { return m_window; }
    int TemplateId() const { return m_templateId; }
    HWND Item(int id) const { return GetDlgItem(m_window, id); }
    std::wstring ItemText(int id) const;
    void SetItemText(int id, const std::wstring& text) const;
    bool IsChecked(int id) const;
    void SetChecked(int id, bool checked) const;
    void EnableItem(int id, bool enabled) const;

    // Exchanges every member with its control: saving takes the controls'
    // values into the members, otherwise the members are shown.
    void UpdateData(bool saving);

protected:
    explicit CDialogWindow(int templateId) : m_templateId(templateId) {}
    virtual ~CDialogWindow() = default;

    virtual void DoDataExchange(CDataExchange& /*exchange*/) {}
    // Shows the members; returns whether the system should set the focus.
    virtual bool OnInitDialog();
    // A command from a control or a button; true when handled.
    virtual bool OnCommand(int /*id*/, int /*code*/) { return false; }
    // A notification from a control; true when handled, with its result.
    virtual bool OnNotify(const NMHDR& /*header*/, LRESULT& /*result*/) { return false; }
    // Any other message; true when handled, with the dialog procedure's answer.
    virtual bool OnMessage(UINT /*message*/, WPARAM, LPARAM, INT_PTR& /*answer*/) { return false; }

    // The message dispatch of the dialog procedures. The window is attached
    // by WM_INITDIALOG before anything else is passed on.
    INT_PTR Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
    void Attach(HWND window);
    // At the window's last message: from then on its handle may name another
    // window, so the object forgets it.
    void Detach();

private:
    const int m_templateId;
    HWND m_window = nullptr;
};

// The object attached to a dialog window, or null.
CDialogWindow* AttachedDialog(HWND window);

} // namespace cvas
