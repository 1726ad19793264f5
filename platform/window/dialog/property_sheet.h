// A property sheet while it runs: a dialog with a tab for each page, one page at a time inside it, and the
// buttons below. Used by the thread that runs it only.
#pragma once

#include <windows.h>
#include <prsht.h>

#include <memory>
#include <vector>

#include "platform/window/dialog/property_page.h"

namespace platform {

class PropertySheetDialog {
public:
    // Of the sheet's own controls.
    static constexpr DWORD TabControl = 0x3020;
    static constexpr DWORD ApplyButton = 0x3021;

    explicit PropertySheetDialog(const PROPSHEETHEADERW& header);
    ~PropertySheetDialog();
    PropertySheetDialog(const PropertySheetDialog&) = delete;
    PropertySheetDialog& operator=(const PropertySheetDialog&) = delete;

    INT_PTR Run();

private:
    static constexpr size_t NoPage = SIZE_MAX;

    struct SheetPage {
        HPROPSHEETPAGE Handle;
        std::shared_ptr<PropertyPage> Page;
        HWND Window = nullptr;  // until the page is first shown
        bool Dirty = false;
    };

    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second);
    INT_PTR Handle(UINT message, WPARAM first, LPARAM second);
    INT_PTR HandleSheetMessage(UINT message, WPARAM first, LPARAM second);
    bool TakesKey(MSG* message);

    void Open(HWND window);
    void AddTabs();
    void LayOut();
    RECT LargestPage() const;

    LRESULT Notify(const SheetPage& page, UINT code, LPARAM parameter = 0) const;
    bool MayLeave() const;
    bool Switch(size_t index);
    bool Turn(size_t index);
    bool EnsureCreated(SheetPage& page);
    void Show(size_t index);
    void TabChanged();
    LRESULT AskSiblings(WPARAM first, LPARAM second) const;
    size_t FindPage(HPROPSHEETPAGE handle) const;

    // property_sheet_buttons.cpp
    void Press(int button);
    bool Apply(bool closes);
    void Accept();
    void Cancel();
    void Finish(INT_PTR result);
    void SetChanged(HWND page, bool changed);

    HWND Tabs() const { return GetDlgItem(window_, TabControl); }

    const PROPSHEETHEADERW header_;
    std::vector<SheetPage> pages_;
    HWND window_ = nullptr;
    size_t active_ = NoPage;
    bool saved_ = false;   // something has been applied
    INT_PTR restart_ = 0;  // ID_PSRESTARTWINDOWS or ID_PSREBOOTSYSTEM, as a page asked for
    bool over_ = false;
    INT_PTR result_ = -1;
};

}  // namespace platform
