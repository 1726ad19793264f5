// A page of the configuration sheet as text: what a user would see of it.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/system/wide_text.h"

namespace kestvox {

struct TreeItemText {
    std::string Text;
    std::vector<TreeItemText> Items;  // below it
};

// What does not belong to the kind of control is not set.
struct ControlText {
    int Number = 0;  // 0: it has none of its own
    std::string Kind;
    bool Enabled = true;
    std::optional<std::string> Text;
    std::optional<bool> Checked;
    struct Slider {
        int Position, Lowest, Highest;
    };
    std::optional<Slider> Scale;
    std::optional<std::vector<std::string>> Entries;
    int Chosen = -1;  // of the entries; -1: none
    std::vector<TreeItemText> Items;
};

struct PageText {
    std::string Title;
    std::vector<ControlText> Controls;
};

// The titles of a sheet's pages. Cards that share a name are told apart: "Monitor: 'NAME (card 1)'".
std::vector<std::string> TellApart(const std::vector<WideText>& titles);

// `titles` as TellApart gave them.
PageText ReadPage(HWND page, const std::string& title, const std::vector<std::string>& titles);

std::string LinesOf(const PageText& page);
std::string JsonOf(const PageText& page);

// The page's first control of that class; null: none.
HWND FindControl(HWND page, const WCHAR* className);

}  // namespace kestvox
