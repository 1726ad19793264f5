// Files as the system has them: numbered handles that take bytes until they cannot.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace kestvox::host {

// A handle that the process was started with, by its name: "/dev/stdout", "/dev/fd/3", ... Nothing for any
// other path.
std::optional<int> InheritedHandle(const std::string& path);

// All answer a handle for bytes as they are; -1, and the reason in errno.
int CopyHandle(int handle);
int CreateNew(const std::string& path);        // for writing and reading; there must be nothing
int OpenWhatIsThere(const std::string& path);  // for writing; a pipe or a device
int OpenForReading(const std::string& path);

// Reads some bytes and answers how many, 0 at the end; waits for them unless the user interrupts. -1, and the
// reason in errno.
int64_t ReadSome(int handle, std::span<char> bytes);

// The length of what one can go back and forth in; nothing for a pipe or the like.
std::optional<uint64_t> LengthOf(int handle);
bool SkipBytes(int handle, uint64_t count);

// Writes some of the bytes and answers how many. Waits as long as it must, unless the user interrupts. -1,
// and the reason in errno.
int64_t WriteSome(int handle, std::span<const char> bytes);

// Of a regular file. False, and the reason in errno.
bool WriteAt(int handle, uint64_t offset, std::span<const char> bytes);
int64_t ReadAt(int handle, uint64_t offset, std::span<char> bytes);
bool CutTo(int handle, uint64_t length);

bool Close(int handle);

// The new file becomes the old one's like in mode and owner, as far as the system lets it.
void TakeAfter(int handle, const std::string& old);

}  // namespace kestvox::host
