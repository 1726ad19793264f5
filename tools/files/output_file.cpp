#include "tools/files/output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "tools/command_error.h"
#include "tools/files/host.h"

namespace kestvox {
namespace {

namespace fs = std::filesystem;

constexpr int StandardOutput = 1;
constexpr size_t GatheredBytes = 65536;
constexpr int MostLinks = 40;

// Where a chain of symbolic links ends, even if there is nothing.
std::string FollowLinks(const std::string& path) {
    std::error_code error;
    fs::path at = path;
    for (int links = 0; links < MostLinks && fs::is_symlink(at, error); ++links) {
        const fs::path next = fs::read_symlink(at, error);
        if (error) {
            break;
        }
        at = next.is_absolute() ? next : at.parent_path() / next;
    }
    return at.string();
}

std::optional<int> OpenAlready(const std::string& path) {
    return path == "-" ? std::optional(StandardOutput) : host::InheritedHandle(path);
}

}  // namespace

std::string UnfinishedName(const std::string& path) {
    return FollowLinks(path) + ".part";
}

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
    std::error_code error;
    const fs::file_status there = fs::status(path_, error);
    if (const std::optional<int> open = OpenAlready(path_)) {
        handle_ = host::CopyHandle(*open);
    } else if (fs::is_directory(there)) {
        Refuse("it is a directory");
    } else if (fs::exists(there) && !fs::is_regular_file(there)) {
        handle_ = host::OpenWhatIsThere(path_);
    } else {
        OpenBeside();
    }
    if (handle_ < 0) {
        Refuse(std::strerror(errno));
    }
}

void OutputFile::OpenBeside() {
    target_ = FollowLinks(path_);
    std::string name = UnfinishedName(target_);
    handle_ = host::CreateNew(name);
    for (unsigned n = 2; handle_ < 0 && errno == EEXIST; ++n) {
        name = UnfinishedName(target_) + std::to_string(n);
        handle_ = host::CreateNew(name);
    }
    if (handle_ >= 0) {
        temporary_ = name;
        host::TakeAfter(handle_, target_);
    }
}

OutputFile::~OutputFile() {
    if (handle_ >= 0) {
        host::Close(handle_);
    }
    if (!temporary_.empty()) {
        std::error_code ignored;
        fs::remove(temporary_, ignored);
    }
}

void OutputFile::Refuse(const std::string& why) const {
    throw CommandError(path_ + ": cannot write: " + why);
}

void OutputFile::Fail(const std::string& why) {
    failed_ = true;
    if (problem_.empty()) {
        problem_ = path_ + ": cannot write: " + why;
    }
}

void OutputFile::Write(std::span<const char> bytes) {
    gathered_.insert(gathered_.end(), bytes.begin(), bytes.end());
    if (gathered_.size() >= GatheredBytes) {
        Flush();
    }
}

uint64_t OutputFile::Flush() {
    std::span<const char> rest = gathered_;
    while (!rest.empty() && !failed_) {
        const int64_t count = host::WriteSome(handle_, rest);
        if (count < 0) {
            Fail(std::strerror(errno));
        } else {
            written_ += static_cast<uint64_t>(count);
            rest = rest.subspan(static_cast<size_t>(count));
        }
    }
    gathered_.clear();
    return written_;
}

void OutputFile::WriteAt(uint64_t offset, std::span<const char> bytes) {
    if (!host::WriteAt(handle_, offset, bytes)) {
        Fail(std::strerror(errno));
    }
}

std::vector<char> OutputFile::ReadAt(uint64_t offset, size_t count) {
    std::vector<char> bytes(count);
    const int64_t read = host::ReadAt(handle_, offset, bytes);
    bytes.resize(static_cast<size_t>(std::max<int64_t>(read, 0)));
    return bytes;
}

void OutputFile::CutTo(uint64_t length) {
    failed_ = false;
    gathered_.clear();
    if (host::CutTo(handle_, length)) {
        written_ = length;
    } else {
        Fail(std::strerror(errno));
    }
}

void OutputFile::Commit() {
    Flush();
    if (!host::Close(std::exchange(handle_, -1))) {
        Fail(std::strerror(errno));
    }
    if (IsRegular() && !failed_) {
        std::error_code error;
        fs::rename(temporary_, target_, error);
        if (error) {
            Fail(error.message());
        } else {
            temporary_.clear();
        }
    }
}

bool SameFile(const std::string& one, const std::string& other) {
    const std::optional<int> first = OpenAlready(one);
    const std::optional<int> second = OpenAlready(other);
    if (first || second) {
        return first == second;
    }
    std::error_code error;
    if (fs::equivalent(one, other, error)) {
        return !fs::is_character_file(one, error);
    }
    const auto whole = [&](const std::string& path) {
        return fs::weakly_canonical(fs::absolute(FollowLinks(path), error), error);
    };
    return !fs::exists(one, error) && !fs::exists(other, error) && whole(one) == whole(other);
}

}  // namespace kestvox
