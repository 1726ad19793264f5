// The files that a command reads and those that it writes.
#pragma once

#include <string>
#include <vector>

namespace kestvox {

struct NamedFile {
    std::string Option;  // as on the command line: "--trace", or "FILE"
    std::string
        Path;  // "-" is the standard input of what is read, and the standard output of what is written
};

struct FileRoles {
    std::vector<NamedFile> Read;
    std::vector<NamedFile> Written;
};

// CommandError when two options name one file, and one of them writes it; or one the place where another
// one's file is until it is whole. What forgets all that is written may be named again and again.
void RequireDifferentFiles(const FileRoles& roles);

// Whether one of the files is written to the standard output, which then has no room for anything else.
bool UsesStandardOutput(const FileRoles& roles);

}  // namespace kestvox
