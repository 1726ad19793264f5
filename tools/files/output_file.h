// A result file that appears whole or not at all.
#pragma once

#include <fstream>
#include <string>

namespace kestvox {

// Written under a name of its own next to the wanted one, and moved there by Commit. Without a Commit
// the destructor removes it, and a file that was there before stays as it was.
class OutputFile {
public:
    // CommandError when the file cannot be made.
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::ostream& Stream() { return stream_; }

    // CommandError when something could not be written or the file cannot be moved.
    void Commit();

private:
    std::string path_;
    std::string temporary_;
    std::ofstream stream_;
};

}  // namespace kestvox
