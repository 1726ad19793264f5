#include "tools/files/file_roles.h"

#include <algorithm>

#include "tools/command_error.h"
#include "tools/files/output_file.h"

namespace kestvox {
namespace {

void RequireDifferent(const NamedFile& one, const NamedFile& other) {
    if (one.Option != other.Option && SameFile(one.Path, other.Path)) {
        throw CommandError(one.Option + " and " + other.Option + " name the same file, " + other.Path);
    }
}

// Until it is whole, what is written to a file stands beside it.
void RequireApart(const NamedFile& one, const NamedFile& other) {
    if (SameFile(UnfinishedName(one.Path), other.Path)) {
        throw CommandError(other.Option + ": " + other.Path + " is where " + one.Option +
                           " is written at first");
    }
}

}  // namespace

void RequireDifferentFiles(const FileRoles& roles) {
    for (auto written = roles.Written.begin(); written != roles.Written.end(); ++written) {
        std::for_each(std::next(written), roles.Written.end(), [&](const NamedFile& other) {
            RequireDifferent(*written, other);
            RequireApart(*written, other);
            RequireApart(other, *written);
        });
        for (const NamedFile& read : roles.Read) {
            if (read.Path != "-") {
                RequireDifferent(read, *written);
            }
        }
    }
}

bool UsesStandardOutput(const FileRoles& roles) {
    return std::ranges::any_of(roles.Written, [](const NamedFile& file) { return SameFile(file.Path, "-"); });
}

}  // namespace kestvox
