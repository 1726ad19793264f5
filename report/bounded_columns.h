// A summary of something that goes on for as long as it likes, in a bounded number of columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kestvox {

// Every column stands for the same number of positions. When the last one is full, each two become one. A
// Column is made empty, and Merge takes in the one after it.
template <typename Column>
class BoundedColumns {
public:
    // At least two.
    explicit BoundedColumns(size_t most) : most_(most - most % 2) {}

    // The column that the position belongs in.
    Column& At(uint64_t position) {
        while (position / width_ >= most_) {
            Halve();
        }
        const auto index = static_cast<size_t>(position / width_);
        if (index >= columns_.size()) {
            columns_.resize(index + 1);
        }
        return columns_[index];
    }

    // How many positions, from this one on, belong in the same column; to be asked after At.
    uint64_t RoomAt(uint64_t position) const { return width_ - position % width_; }

    // Makes fewer columns of what there is.
    void ReduceTo(size_t most) {
        while (columns_.size() > most) {
            Halve();
        }
    }

    uint64_t Width() const { return width_; }
    const std::vector<Column>& All() const { return columns_; }

private:
    void Halve() {
        for (size_t i = 0; 2 * i < columns_.size(); ++i) {
            Column column = std::move(columns_[2 * i]);
            if (2 * i + 1 < columns_.size()) {
                column.Merge(columns_[2 * i + 1]);
            }
            columns_[i] = std::move(column);
        }
        columns_.resize((columns_.size() + 1) / 2);
        width_ *= 2;
    }

    const size_t most_;
    uint64_t width_ = 1;
    std::vector<Column> columns_;
};

}  // namespace kestvox
