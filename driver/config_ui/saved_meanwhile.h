// Two sheets or programs that change the same setting.
#pragma once

namespace kestvox {

// Whether a setting stays as it is `saved` now when a page is applied: the user left it as the page had
// `shown` it, and it has been saved otherwise since the page `loaded` it.
template <typename Value>
bool IsSavedElsewhere(const Value& chosen, const Value& shown, const Value& loaded, const Value& saved) {
    return chosen == shown && saved != loaded;
}

}  // namespace kestvox
