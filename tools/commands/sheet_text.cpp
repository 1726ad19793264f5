#include "tools/commands/sheet_text.h"

#include <commctrl.h>

#include <algorithm>
#include <string_view>

#include "report/json_text.h"
#include "tools/system/sheet_window.h"

namespace kestvox {
namespace {

constexpr std::string_view FirstPageOfACard = "Configuration: '";

// The name stands between the first and the last quote.
std::string NameIn(const std::string& title) {
    const size_t begin = title.find('\'');
    return begin == std::string::npos ? "" : title.substr(begin + 1, title.rfind('\'') - begin - 1);
}

std::vector<std::string> CardNames(const std::vector<std::string>& titles) {
    std::vector<std::string> names;
    for (const std::string& title : titles) {
        if (title.starts_with(FirstPageOfACard)) {
            names.push_back(NameIn(title));
        }
    }
    return names;
}

std::string Numbered(const std::string& name, size_t card) {
    return name + " (card " + std::to_string(card) + ")";
}

DWORD StyleOf(HWND control) {
    return static_cast<DWORD>(GetWindowLongPtrW(control, GWL_STYLE));
}

int Ask(HWND control, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return static_cast<int>(SendMessageW(control, message, wParam, lParam));
}

std::string OneLine(HWND control) {
    std::string text = Narrow(WindowText(control));
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

void ReadButton(HWND button, ControlText& control) {
    const DWORD type = StyleOf(button) & BS_TYPEMASK;
    control.Kind = type == BS_GROUPBOX          ? "group"
                   : type == BS_AUTORADIOBUTTON ? "radio"
                   : type == BS_AUTOCHECKBOX    ? "check"
                                                : "button";
    control.Text = OneLine(button);
    if (type == BS_AUTORADIOBUTTON || type == BS_AUTOCHECKBOX) {
        control.Checked = Ask(button, BM_GETCHECK) == BST_CHECKED;
    }
}

void ReadStatic(HWND label, ControlText& control) {
    const bool picture = (StyleOf(label) & SS_TYPEMASK) == SS_BITMAP;
    control.Kind = picture ? "picture" : "label";
    if (!picture) {
        control.Text = OneLine(label);
    }
}

void ReadEdit(HWND edit, ControlText& control) {
    control.Kind = (StyleOf(edit) & ES_READONLY) != 0 ? "value" : "edit";
    control.Text = OneLine(edit);
}

void ReadList(HWND list, ControlText& control) {
    control.Kind = "list";
    control.Entries.emplace();
    control.Chosen = Ask(list, CB_GETCURSEL);
    for (int entry = 0; entry < Ask(list, CB_GETCOUNT); ++entry) {
        const auto index = static_cast<WPARAM>(entry);
        WideText name(static_cast<size_t>(Ask(list, CB_GETLBTEXTLEN, index)) + 1, 0);
        Ask(list, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(name.data()));
        name.pop_back();
        control.Entries->push_back(Narrow(name));
    }
}

void ReadSlider(HWND slider, ControlText& control) {
    control.Kind = "slider";
    control.Scale = {Ask(slider, TBM_GETPOS), Ask(slider, TBM_GETRANGEMIN), Ask(slider, TBM_GETRANGEMAX)};
}

// A tree's items, with what each has as its data: 0, or something of the card's own that is larger the later
// the card comes in the machine's list.
struct DataItem {
    std::string Text;
    LPARAM Data;
    std::vector<DataItem> Items;
};

std::vector<DataItem> ReadItems(HWND tree, UINT relation, HTREEITEM from, std::vector<LPARAM>& cards) {
    std::vector<DataItem> items;
    auto item = reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(from)));
    while (item != nullptr) {
        WCHAR text[256] = {};
        TVITEMW wanted = {};
        wanted.mask = TVIF_HANDLE | TVIF_TEXT | TVIF_PARAM;
        wanted.hItem = item;
        wanted.pszText = text;
        wanted.cchTextMax = 256;
        SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&wanted));
        if (wanted.lParam != 0) {
            cards.push_back(wanted.lParam);
        }
        items.push_back({Narrow(text), wanted.lParam, ReadItems(tree, TVGN_CHILD, item, cards)});
        item = reinterpret_cast<HTREEITEM>(
            SendMessageW(tree, TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(item)));
    }
    return items;
}

std::vector<TreeItemText> NameItems(const std::vector<DataItem>& items, const std::vector<LPARAM>& cards,
                                    const std::vector<std::string>& names) {
    std::vector<TreeItemText> named;
    for (const DataItem& item : items) {
        const auto card =
            static_cast<size_t>(std::lower_bound(cards.begin(), cards.end(), item.Data) - cards.begin());
        std::string text = item.Text;
        if (item.Data != 0 && card < names.size()) {
            // A name that is shared ends with its card's number.
            const std::string number = Numbered("", card);
            const std::string plain = names[card].substr(0, names[card].rfind(number));
            if (plain != names[card] && text.starts_with(plain)) {
                text = names[card] + text.substr(plain.size());
            }
        }
        named.push_back({text, NameItems(item.Items, cards, names)});
    }
    return named;
}

void ReadTree(HWND tree, ControlText& control, const std::vector<std::string>& names) {
    control.Kind = "tree";
    std::vector<LPARAM> cards;
    const std::vector<DataItem> items = ReadItems(tree, TVGN_ROOT, nullptr, cards);
    std::sort(cards.begin(), cards.end());
    control.Items = NameItems(items, cards, names);
}

struct ControlKind {
    const WCHAR* Class;
    void (*Read)(HWND window, ControlText& control);
};
constexpr ControlKind Kinds[] = {
    {TEXT("Button"), ReadButton}, {TEXT("Static"), ReadStatic},  {TEXT("Edit"), ReadEdit},
    {TEXT("ComboBox"), ReadList}, {TRACKBAR_CLASSW, ReadSlider},
};

bool IsOfClass(HWND window, const WCHAR* name) {
    return lstrcmpiW(WindowClass(window).c_str(), name) == 0;
}

ControlText ReadControl(HWND window, const std::vector<std::string>& names) {
    ControlText control;
    const int number = GetDlgCtrlID(window);
    control.Number = number > 0 && number < 0xFFFF ? number : 0;
    control.Enabled = IsWindowEnabled(window) != FALSE;
    if (IsOfClass(window, WC_TREEVIEWW)) {
        ReadTree(window, control, names);
        return control;
    }
    for (const ControlKind& kind : Kinds) {
        if (IsOfClass(window, kind.Class)) {
            kind.Read(window, control);
            return control;
        }
    }
    control.Kind = Narrow(WindowClass(window));
    control.Text = OneLine(window);
    return control;
}

std::string LinesOfItems(const std::vector<TreeItemText>& items, size_t depth) {
    std::string lines;
    for (const TreeItemText& item : items) {
        lines += "\n               " + std::string(2 * depth, ' ') + item.Text +
                 LinesOfItems(item.Items, depth + 1);
    }
    return lines;
}

std::string LineOf(const ControlText& control) {
    std::string line = control.Kind;
    const auto add = [&line](const std::string& text) {
        line += std::string(line.size() < 9 ? 9 - line.size() : 1, ' ') + text;
    };
    if (control.Checked) {
        const bool radio = control.Kind == "radio";
        const std::string mark = *control.Checked ? (radio ? "(*) " : "[x] ") : (radio ? "( ) " : "[ ] ");
        add(mark + "'" + *control.Text + "'");
    } else if (control.Text) {
        add("'" + *control.Text + "'");
    }
    if (control.Scale) {
        add(std::to_string(control.Scale->Position) + " of " + std::to_string(control.Scale->Lowest) +
            " to " + std::to_string(control.Scale->Highest));
    }
    if (control.Entries) {
        std::string entries;
        for (size_t entry = 0; entry < control.Entries->size(); ++entry) {
            entries += entry == 0 ? "" : " | ";
            entries += (static_cast<int>(entry) == control.Chosen ? "*" : "") + (*control.Entries)[entry];
        }
        add(entries);
    }
    return line + LinesOfItems(control.Items, 0) + (control.Enabled ? "" : "  (disabled)");
}

std::string JsonOfItem(const TreeItemText& item) {
    return "{\"text\": " + QuotedJson(item.Text) + ", \"items\": " + JsonList(item.Items, JsonOfItem) + "}";
}

std::string JsonOfControl(const ControlText& control) {
    std::string json = "{\"kind\": " + QuotedJson(control.Kind);
    const auto add = [&json](const char* name, const std::string& value) {
        json += std::string(", \"") + name + "\": " + value;
    };
    if (control.Number != 0) {
        add("number", std::to_string(control.Number));
    }
    if (control.Text) {
        add("text", QuotedJson(*control.Text));
    }
    if (control.Checked) {
        add("checked", *control.Checked ? "true" : "false");
    }
    if (control.Scale) {
        add("position", std::to_string(control.Scale->Position));
        add("lowest", std::to_string(control.Scale->Lowest));
        add("highest", std::to_string(control.Scale->Highest));
    }
    if (control.Entries) {
        add("entries", JsonList(*control.Entries, QuotedJson));
        add("chosen", control.Chosen < 0 ? "null" : std::to_string(control.Chosen));
    }
    if (!control.Items.empty()) {
        add("items", JsonList(control.Items, JsonOfItem));
    }
    add("enabled", control.Enabled ? "true" : "false");
    return json + "}";
}

}  // namespace

std::vector<std::string> TellApart(const std::vector<WideText>& titles) {
    std::vector<std::string> told;
    std::transform(titles.begin(), titles.end(), std::back_inserter(told),
                   [](const WideText& title) { return Narrow(title); });
    const std::vector<std::string> names = CardNames(told);
    size_t cards = 0;
    for (std::string& title : told) {
        cards += title.starts_with(FirstPageOfACard) ? 1 : 0;
        const std::string name = NameIn(title);
        if (std::count(names.begin(), names.end(), name) > 1) {
            title.replace(title.find('\'') + 1, name.size(), Numbered(name, cards - 1));
        }
    }
    return told;
}

PageText ReadPage(HWND page, const std::string& title, const std::vector<std::string>& titles) {
    PageText text = {title, {}};
    const std::vector<std::string> names = CardNames(titles);
    for (HWND control = GetWindow(page, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        text.Controls.push_back(ReadControl(control, names));
    }
    return text;
}

std::string LinesOf(const PageText& page) {
    std::string lines = page.Title + "\n";
    for (const ControlText& control : page.Controls) {
        const std::string number = control.Number != 0 ? std::to_string(control.Number) : "";
        lines += "  " + std::string(4 - std::min<size_t>(4, number.size()), ' ') + number + "  " +
                 LineOf(control) + "\n";
    }
    return lines;
}

std::string JsonOf(const PageText& page) {
    return "{\"title\": " + QuotedJson(page.Title) +
           ", \"controls\": " + JsonList(page.Controls, JsonOfControl) + "}";
}

HWND FindControl(HWND page, const WCHAR* className) {
    HWND control = GetWindow(page, GW_CHILD);
    while (control != nullptr && !IsOfClass(control, className)) {
        control = GetWindow(control, GW_HWNDNEXT);
    }
    return control;
}

}  // namespace kestvox
