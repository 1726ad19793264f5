#include "report/card_watch.h"

#include <algorithm>

#include "report/json_text.h"

namespace kestvox {
namespace {

using simulator::RegisterField;
using simulator::RegisterView;

constexpr size_t MostClockChanges = 100;

std::string JsonOfField(const RegisterField& field) {
    return "{\"name\": " + QuotedJson(field.Name) + ", \"value\": " + std::to_string(field.Value) + "}";
}

std::string JsonOfValue(const RegisterView& view) {
    return "{\"value\": " + std::to_string(view.Value) +
           ", \"fields\": " + JsonList(view.Fields, JsonOfField) + "}";
}

// Of the register that tells where the clock comes from.
unsigned ClockField(const std::vector<RegisterView>& registers, const std::string& field) {
    for (const RegisterView& view : registers) {
        if (view.Name == "clock select") {
            const auto found = std::ranges::find(view.Fields, field, &RegisterField::Name);
            return found == view.Fields.end() ? 0 : found->Value;
        }
    }
    return 0;
}

}  // namespace

CardWatch::CardWatch(const simulator::Simulator& cards)
    : simulator_(cards), begun_(cards.NowMicroseconds()), cards_(cards.CardCount()) {
    for (unsigned card = 0; card < cards_.size(); ++card) {
        cards_[card].Before = simulator_.Registers(card);
    }
}

void CardWatch::Look() {
    for (unsigned number = 0; number < cards_.size(); ++number) {
        Card& card = cards_[number];
        if (card.Running.empty()) {
            card.Running = simulator_.Registers(number);
        }
        const unsigned rate = simulator_.SampleRate(number);
        if (!card.Changes.empty() && card.Changes.back().Rate == rate) {
            continue;
        }
        if (card.Changes.size() < MostClockChanges) {
            card.Changes.push_back({(simulator_.NowMicroseconds() - begun_) / 1000, rate});
        } else {
            ++card.ChangesLeftOut;
        }
    }
}

void CardWatch::End() {
    for (unsigned card = 0; card < cards_.size(); ++card) {
        cards_[card].After = simulator_.Registers(card);
    }
}

std::string CardWatch::Json() const {
    size_t number = 0;
    return JsonList(cards_, [&](const Card& card) { return JsonOfCard(card, number++); });
}

std::string CardWatch::JsonOfCard(const Card& card, size_t number) {
    const auto change = [](const ClockChange& clock) {
        return "{\"ms\": " + std::to_string(clock.Milliseconds) +
               ", \"rate\": " + std::to_string(clock.Rate) + "}";
    };
    return "{\"card\": " + std::to_string(number) + ", \"clock\": " + JsonOfClock(card) +
           ",\n\"clock-changes\": " + JsonList(card.Changes, change) +
           ", \"clock-changes-left-out\": " + std::to_string(card.ChangesLeftOut) +
           ",\n\"registers\": " + JsonOfRegisters(card) + "}";
}

std::string CardWatch::JsonOfClock(const Card& card) {
    constexpr const char* Sources[] = {"own oscillator", "link", "digital input", "PLL"};
    if (card.Running.empty()) {
        return "null";
    }
    const unsigned source = std::min(ClockField(card.Running, "source"), 3u);
    return "{\"source\": " + QuotedJson(Sources[source]) +
           ", \"drives-link\": " + (ClockField(card.Running, "drive link") != 0 ? "true" : "false") + "}";
}

// The same registers in the same order, each time.
std::string CardWatch::JsonOfRegisters(const Card& card) {
    std::string list;
    for (size_t i = 0; i < card.After.size(); ++i) {
        const RegisterView& before = card.Before[i];
        const RegisterView& running = card.Running.empty() ? before : card.Running[i];
        const RegisterView& after = card.After[i];
        if (before.Value != running.Value || before.Value != after.Value) {
            list += (list.empty() ? "" : ",\n");
            list += "{\"file\": " + QuotedJson(before.File) + ", \"index\": " + std::to_string(before.Index) +
                    ", \"name\": " + QuotedJson(before.Name) + ", \"before\": " + JsonOfValue(before) +
                    ", \"running\": " + JsonOfValue(running) + ", \"after\": " + JsonOfValue(after) + "}";
        }
    }
    return "[" + list + "]";
}

}  // namespace kestvox
