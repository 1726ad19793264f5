#include "simulator/trace/fault.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <vector>

#include "simulator/trace/fault_list.h"
#include "simulator/trace/trace.h"

namespace simulator {
namespace {

struct KindName {
    const char* Name;
    Fault::Kind Kind;
};
constexpr KindName RequestKinds[] = {{"fail", Fault::Kind::Fail},
                                     {"pending", Fault::Kind::Pend},
                                     {"short", Fault::Kind::Short},
                                     {"die", Fault::Kind::Die}};
constexpr KindName CompletionKinds[] = {{"late", Fault::Kind::Late},
                                        {"twice", Fault::Kind::Twice},
                                        {"again", Fault::Kind::Again},
                                        {"lost", Fault::Kind::Lost}};

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == ':') {
            parts.emplace_back();
        } else {
            parts.back().push_back(c);
        }
    }
    return parts;
}

template <typename Number>
std::optional<Number> ParseNumber(const std::string& text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && parsed == end && number >= 1 ? std::optional(number) : std::nullopt;
}

std::optional<uint32_t> ParseTarget(const std::string& name) {
    if (name == "any") {
        return Fault::AnyCode;
    }
    return name == "completion" ? Fault::Completion : RequestCode(name);
}

}  // namespace

std::optional<Fault> ParseFault(std::string_view text) {
    std::vector<std::string> parts = Split(Lower(text));
    if (parts.size() < 2 || parts.size() > 3) {
        return std::nullopt;
    }
    const std::optional<uint32_t> code = ParseTarget(parts[0]);
    const std::optional<unsigned> nth = parts[1] == "all" ? 0u : ParseNumber<unsigned>(parts[1]);
    const bool completion = code == Fault::Completion;
    if (!code || !nth || (completion && parts.size() < 3)) {
        return std::nullopt;
    }
    Fault fault{.Code = *code, .Nth = *nth};
    std::string kind = parts.size() == 3 ? parts[2] : "fail";
    if (const size_t equals = kind.find('='); completion && equals != std::string::npos) {
        const std::optional<int64_t> delay = ParseNumber<int64_t>(kind.substr(equals + 1));
        kind.erase(equals);
        if (!delay || (kind != "late" && kind != "again")) {
            return std::nullopt;
        }
        fault.Delay = *delay;
    }
    for (const KindName& known : completion ? CompletionKinds : RequestKinds) {
        if (kind == known.Name) {
            fault.What = known.Kind;
            return fault;
        }
    }
    return std::nullopt;
}

std::optional<Fault> FaultList::Next(uint32_t code, bool completion) {
    std::optional<Fault> strikes;
    for (auto waiting = faults_.begin(); waiting != faults_.end();) {
        const Fault& fault = waiting->What;
        const bool matches =
            completion ? fault.Code == Fault::Completion : fault.Code == code || fault.Code == Fault::AnyCode;
        const bool due = matches && (fault.Nth == 0 || ++waiting->Seen == fault.Nth);
        if (due && !strikes) {
            strikes = fault;
        }
        waiting = due && fault.Nth != 0 ? faults_.erase(waiting) : std::next(waiting);
    }
    return strikes;
}

}  // namespace simulator
