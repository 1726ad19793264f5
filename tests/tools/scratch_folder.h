// A folder for the files of one test, gone with its object.
#pragma once

#include <filesystem>
#include <string>

class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }
    size_t FileCount() const;

private:
    std::filesystem::path folder_;
};

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);
