#pragma once
// The pages of the options sheet. Each edits copies of the settings in its
// public members; only the sheet's "OK" takes them back (open_options.h).

#include <windows.h>

#include <string>

#include "scrobbler/queue/replacements.h"
#include "ui/property_page.h"
#include "ui/ui_handles.h"

namespace cvas
{

class COptionsMain : public CPropertyPage
{
public:
    COptionsMain();

    bool enabled = false;
    bool reattempt = false;
    bool runAtStart = false;
    bool submitAtStart = false;
    std::wstring userName;
    std::wstring password;

protected:
    void DoDataExchange(CDataExchange& exchange) override;
    bool OnApply() override;

private:
    // The run-at-start box is exchanged twice, this flag first: shown, the
    // second value wins; taken, both get the box's state.
    bool m_spare = false;
};

class COptionsLogging : public CPropertyPage
{
public:
    COptionsLogging();

    // The sheet's owner, which also owns what the Open buttons start.
    HWND shellOwner = nullptr;
    // Shown only.
    std::wstring queueFile;
    std::wstring failedLogFile;
    std::wstring statusLogFile;

protected:
    void DoDataExchange(CDataExchange& exchange) override;
    bool OnInitDialog() override;
    bool OnCommand(int id, int code) override;
};

class COptionsReplace : public CPropertyPage
{
public:
    COptionsReplace();

    CReplacementTable replacements;

protected:
    bool OnInitDialog() override;
    bool OnCommand(int id, int code) override;
    bool OnNotify(const NMHDR& header, LRESULT& result) override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& answer) override;
    bool OnApply() override;

private:
    void ShowButtonsFor(int row) const;
    void Add();
    void Modify();
    void Delete();
    void Move(int step);
};

class COptionsAdvancedFilter : public CPropertyPage
{
public:
    COptionsAdvancedFilter();

    std::wstring filter;

protected:
    void DoDataExchange(CDataExchange& exchange) override;
};

class COptionsBuddy : public CPropertyPage
{
public:
    COptionsBuddy();

    bool buddyEnabled = false;
    std::wstring buddyHotkey;

protected:
    void DoDataExchange(CDataExchange& exchange) override;
    bool OnInitDialog() override;
    bool OnCommand(int id, int code) override;
};

class COptionsAdvanced : public CPropertyPage
{
public:
    COptionsAdvanced();

    std::wstring artist;
    std::wstring album;
    std::wstring name;

protected:
    void DoDataExchange(CDataExchange& exchange) override;
};

class COptionsAbout : public CPropertyPage
{
public:
    COptionsAbout();

protected:
    bool OnInitDialog() override;

private:
    CFont m_titleFont;
    CFont m_versionFont;
    CFont m_legalFont;
    CFont m_commentsFont;
};

} // namespace cvas
