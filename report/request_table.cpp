#include "report/request_table.h"

#include <algorithm>

#include "report/json_text.h"
#include "simulator/requests/request_names.h"

namespace kestvox {

void RequestTable::Take(const simulator::TraceEntry& entry) {
    if (!entry.IsRequest()) {
        return;
    }
    Row& row = rows_[entry.Code];
    ++row.Count;
    row.Failed += entry.Result != 0 ? 1 : 0;
    row.Total += entry.Duration;
    row.Longest = std::max(row.Longest, entry.Duration);
}

std::string RequestTable::Json() const {
    return JsonList(rows_, [](const auto& row) {
        const auto& [code, sums] = row;
        return "{\"name\": " + QuotedJson(simulator::RequestName(code)) +
               ", \"count\": " + std::to_string(sums.Count) + ", \"failed\": " + std::to_string(sums.Failed) +
               ", \"total\": " + std::to_string(sums.Total) +
               ", \"longest\": " + std::to_string(sums.Longest) + "}";
    });
}

}  // namespace kestvox
