#include "simulator/trace/fault.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <span>
#include <vector>

#include "simulator/requests/request_names.h"
#include "simulator/trace/fault_list.h"

namespace simulator {
namespace {

// What may go wrong, as a user writes it. Everything that is read, and everything that is said about the
// syntax, comes from these two tables.
struct KindRow {
    const char* Name;
    Fault::Kind Kind;
    bool TakesDelay = false;
};
constexpr KindRow RequestKinds[] = {
    {"fail", Fault::Kind::Fail},  // the one that is meant when none is given
    {"pending", Fault::Kind::Pend},
    {"short", Fault::Kind::Short},
    {"die", Fault::Kind::Die},
};
constexpr KindRow CompletionKinds[] = {
    {"late", Fault::Kind::Late, true},
    {"twice", Fault::Kind::Twice},
    {"again", Fault::Kind::Again, true},
    {"lost", Fault::Kind::Lost},
};

constexpr const char* AnyRequest = "any";
constexpr const char* ACompletion = "completion";
constexpr const char* EveryTime = "all";

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
    if (name == AnyRequest) {
        return Fault::AnyCode;
    }
    return name == ACompletion ? Fault::Completion : RequestCode(name);
}

std::optional<unsigned> ParseNth(const std::string& text) {
    return text == EveryTime ? 0u : ParseNumber<unsigned>(text);
}

std::span<const KindRow> KindsFor(const Fault& fault) {
    return fault.Code == Fault::Completion ? std::span<const KindRow>(CompletionKinds) : RequestKinds;
}

// "lost", "late", "late=250". False when the fault's target has no such kind.
bool ParseKind(const std::string& text, Fault& fault) {
    const size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    for (const KindRow& row : KindsFor(fault)) {
        if (name != row.Name) {
            continue;
        }
        fault.What = row.Kind;
        if (equals == std::string::npos) {
            return true;
        }
        const std::optional<int64_t> delay = ParseNumber<int64_t>(text.substr(equals + 1));
        fault.Delay = delay.value_or(fault.Delay);
        return row.TakesDelay && delay.has_value();
    }
    return false;
}

std::string Alternatives(std::span<const KindRow> kinds) {
    std::string text;
    for (const KindRow& row : kinds) {
        text += text.empty() ? "" : "|";
        text += row.Name;
        text += row.TakesDelay ? "[=MICROSECONDS]" : "";
    }
    return text;
}

}  // namespace

const char* FaultName(Fault::Kind kind) {
    for (const std::span<const KindRow> kinds : {std::span<const KindRow>(RequestKinds), {CompletionKinds}}) {
        const auto row = std::ranges::find(kinds, kind, &KindRow::Kind);
        if (row != kinds.end()) {
            return row->Name;
        }
    }
    return "";
}

std::string FaultSyntax() {
    const std::string any = AnyRequest;
    const std::string all = EveryTime;
    return "REQUEST:N[:" + Alternatives(RequestKinds) + "], with REQUEST as the trace names it or '" + any +
           "',\nor " + ACompletion + ":N:" + Alternatives(CompletionKinds) + "; N counts from 1, or is '" +
           all + "'";
}

std::optional<Fault> ParseFault(std::string_view text) {
    const std::vector<std::string> parts = Split(Lower(text));
    if (parts.size() < 2 || parts.size() > 3) {
        return std::nullopt;
    }
    const std::optional<uint32_t> code = ParseTarget(parts[0]);
    const std::optional<unsigned> nth = ParseNth(parts[1]);
    if (!code || !nth) {
        return std::nullopt;
    }
    Fault fault{.Code = *code, .Nth = *nth};
    const std::string kind = parts.size() == 3 ? parts[2] : RequestKinds[0].Name;
    return ParseKind(kind, fault) ? std::optional(fault) : std::nullopt;
}

unsigned FaultList::Add(const Fault& fault) {
    faults_.push_back({fault, {}});
    return static_cast<unsigned>(faults_.size() - 1);
}

FaultStatus FaultList::StatusOf(unsigned fault) const {
    return fault < faults_.size() ? faults_[fault].Status : FaultStatus{};
}

std::optional<Fault> FaultList::Next(uint32_t code, bool completion) {
    std::optional<Fault> strikes;
    for (auto& [fault, status] : faults_) {
        const bool matches =
            completion ? fault.Code == Fault::Completion : fault.Code == code || fault.Code == Fault::AnyCode;
        status.Seen += matches ? 1 : 0;
        const bool due = matches && (fault.Nth == 0 || status.Seen == fault.Nth);
        status.Struck = status.Struck || due;
        if (due && !strikes) {
            strikes = fault;
        }
    }
    return strikes;
}

}  // namespace simulator
