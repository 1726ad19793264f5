#include "tests/tools/scratch_folder.h"

#include <fstream>
#include <iterator>
#include <random>

ScratchFolder::ScratchFolder() {
    std::random_device random;
    do {
        folder_ = std::filesystem::temp_directory_path() / ("kestvox-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(folder_));
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

size_t ScratchFolder::FileCount() const {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}
