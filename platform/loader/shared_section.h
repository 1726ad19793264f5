// A module's data that all processes of the machine share.
//
// A module puts such data into its section "shared", which begins and ends on a page boundary. The
// loader maps one machine region over the section in every process that loads the module: the first
// one finds the contents that the module's file has, and they live until the last living process
// has unloaded it.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

namespace platform {

class SharedSection {
public:
    // `image` is the section as the dynamic linker has loaded it, `size` bytes. Null when too many
    // processes hold the module already or the section is not made of whole pages.
    static std::unique_ptr<SharedSection> Map(const std::string& modulePath, void* image, size_t size);

    // Takes this process off the list of holders. The mapping itself goes with the module's image.
    ~SharedSection();

    SharedSection(const SharedSection&) = delete;
    SharedSection& operator=(const SharedSection&) = delete;

private:
    struct Holders;
    explicit SharedSection(Holders* holders) : holders_(holders) {}

    Holders* holders_;
};

}  // namespace platform
