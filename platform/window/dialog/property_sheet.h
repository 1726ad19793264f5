// A property sheet while it runs: a dialog with a tab for each page, one page at a time inside it, and the
// buttons OK, Cancel, Apply and Help. Used by the thread that runs it only.
#pragma once

#include <windows.h>
#include <prsht.h>

#include <memory>
#include <vector>

#include "platform/window/dialog/property_page.h"

namespace platform {

class PropertySheetDialog {
public:
    explicit PropertySheetDialog(const PROPSHEETHEADERW& header);
    ~PropertySheetDialog();
    PropertySheetDialog(const PropertySheetDialog&) = delete;
    PropertySheetDialog& operator=(const PropertySheetDialog&) = delete;

    INT_PTR Run();

private:
    struct SheetPage {
        HPROPSHEETPAGE Handle;
        std::shared_ptr<PropertyPage> Page;
        HWND Window = nullptr;  // until the page is first shown
    };

    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second);
    INT_PTR Handle(UINT message, WPARAM first, LPARAM second);
    INT_PTR HandleTabs(UINT notification);
    INT_PTR Answer(LRESULT answer);

    void Open(HWND window);
    void LayOut();
    LRESULT Notify(const SheetPage& page, UINT code, LPARAM parameter = 0) const;
    bool MayLeave() const { return Notify(pages_[active_], PSN_KILLACTIVE) == FALSE; }
    bool Turn(size_t index);
    void Show(size_t index);
    LRESULT AskSiblings(WPARAM first, LPARAM second) const;

    void Press(int button);
    bool Apply(bool closes);
    void Cancel();
    void Finish(INT_PTR result);
    void SetChanged(HWND page);
    void EnableApply(bool enable) const;

    HWND Tabs() const;
    RECT TabsArea() const;

    const std::u16string caption_;
    std::vector<SheetPage> pages_;
    HWND window_ = nullptr;
    size_t active_ = 0;
    bool saved_ = false;    // something has been applied
    bool restart_ = false;  // a page asked for PSM_RESTARTWINDOWS
    bool over_ = false;
    INT_PTR result_ = -1;
};

}  // namespace platform
