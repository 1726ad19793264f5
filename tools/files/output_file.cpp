#include "tools/files/output_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "tools/command_error.h"

namespace kestvox {
namespace {

std::string FreeName(const std::string& path) {
    std::string name = path + ".part";
    std::error_code ignored;
    for (unsigned n = 2; std::filesystem::exists(name, ignored); ++n) {
        name = path + ".part" + std::to_string(n);
    }
    return name;
}

}  // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)), temporary_(FreeName(path_)) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path_, ignored)) {
        throw CommandError(path_ + ": cannot write: it is a directory");
    }
    stream_.open(temporary_, std::ios::binary | std::ios::trunc);
    if (!stream_) {
        throw CommandError(path_ + ": cannot write: " + std::strerror(errno));
    }
}

OutputFile::~OutputFile() {
    if (!temporary_.empty()) {
        stream_.close();
        std::error_code ignored;
        std::filesystem::remove(temporary_, ignored);
    }
}

void OutputFile::Commit() {
    stream_.close();
    if (!stream_) {
        throw CommandError(path_ + ": cannot write: " + std::strerror(errno));
    }
    std::error_code error;
    std::filesystem::rename(temporary_, path_, error);
    if (error) {
        throw CommandError(path_ + ": cannot write: " + error.message());
    }
    temporary_.clear();
}

}  // namespace kestvox
