// A file that a command writes. A regular file appears whole at its end, in place of what was there; what is
// no regular file is written through, as the bytes come.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kestvox {

// The first write that fails is kept in Problem, and nothing is written after it; what had fitted is still
// there to be made whole and moved to its place.
class OutputFile {
public:
    // "-" is the standard output. A regular file is written under a name of its own beside the wanted one;
    // where that is a symbolic link, beside what it leads to. CommandError when the file cannot be made, or
    // when it is a folder.
    explicit OutputFile(std::string path);
    // Without a Commit the bytes are removed, and a file that was there before stays as it was.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Whether one can go back in it.
    bool IsRegular() const { return !temporary_.empty(); }

    void Write(std::span<const char> bytes);
    // Hands over what has been gathered. Answers how many bytes the system has taken in all.
    uint64_t Flush();

    // Regular files only, after Flush. CutTo also ends the state of failure: there is room again.
    void WriteAt(uint64_t offset, std::span<const char> bytes);
    std::vector<char> ReadAt(uint64_t offset, size_t count);
    void CutTo(uint64_t length);

    // Closes the file and moves it to its place, with the mode and the owner of the file that was there.
    void Commit();

    // What went wrong first: one line that names the file and has the system's reason; or empty.
    const std::string& Problem() const { return problem_; }

private:
    [[noreturn]] void Refuse(const std::string& why) const;
    void OpenBeside();
    void Fail(const std::string& why);

    std::string path_;       // as the user gave it
    std::string target_;     // where a regular file is to be
    std::string temporary_;  // where it is until then
    int handle_ = -1;
    std::vector<char> gathered_;
    uint64_t written_ = 0;
    bool failed_ = false;
    std::string problem_;
};

// Where a regular file is until it is whole; with a number behind it when there is one of that name.
std::string UnfinishedName(const std::string& path);

// Whether both paths lead to one file, one pipe or one stream. Two that lead nowhere yet are compared by
// name. What forgets all that is written is nobody's file.
bool SameFile(const std::string& one, const std::string& other);

}  // namespace kestvox
