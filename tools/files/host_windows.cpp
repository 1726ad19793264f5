#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "tools/files/host.h"

namespace kestvox::host {
namespace {

constexpr size_t MostAtOnce = 1 << 20;

bool GoTo(int handle, uint64_t offset) {
    return _lseeki64(handle, static_cast<int64_t>(offset), SEEK_SET) >= 0;
}

}  // namespace

std::optional<int> InheritedHandle(const std::string&) {
    return std::nullopt;
}

int CopyHandle(int handle) {
    const int copy = _dup(handle);
    if (copy >= 0) {
        _setmode(copy, _O_BINARY);
    }
    return copy;
}

int CreateNew(const std::string& path) {
    return _open(path.c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
}

int OpenWhatIsThere(const std::string& path) {
    return _open(path.c_str(), _O_WRONLY | _O_BINARY | _O_NOINHERIT);
}

int OpenForReading(const std::string& path) {
    return _open(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}

int64_t ReadSome(int handle, std::span<char> bytes) {
    return _read(handle, bytes.data(), static_cast<unsigned>(std::min(bytes.size(), MostAtOnce)));
}

std::optional<uint64_t> LengthOf(int handle) {
    const auto file = reinterpret_cast<HANDLE>(_get_osfhandle(handle));
    return GetFileType(file) == FILE_TYPE_DISK ? std::optional(static_cast<uint64_t>(_filelengthi64(handle)))
                                               : std::nullopt;
}

bool SkipBytes(int handle, uint64_t count) {
    return _lseeki64(handle, static_cast<int64_t>(count), SEEK_CUR) >= 0;
}

int64_t WriteSome(int handle, std::span<const char> bytes) {
    const int count = _write(handle, bytes.data(), static_cast<unsigned>(std::min(bytes.size(), MostAtOnce)));
    if (count == 0 && !bytes.empty()) {
        errno = ENOSPC;
        return -1;
    }
    return count;
}

bool WriteAt(int handle, uint64_t offset, std::span<const char> bytes) {
    return GoTo(handle, offset) && _write(handle, bytes.data(), static_cast<unsigned>(bytes.size())) ==
                                       static_cast<int>(bytes.size());
}

int64_t ReadAt(int handle, uint64_t offset, std::span<char> bytes) {
    return GoTo(handle, offset) ? _read(handle, bytes.data(), static_cast<unsigned>(bytes.size())) : -1;
}

bool CutTo(int handle, uint64_t length) {
    return ftruncate64(handle, static_cast<int64_t>(length)) == 0 && GoTo(handle, length);
}

bool Close(int handle) {
    return _close(handle) == 0;
}

// A new file has its folder's rights.
void TakeAfter(int, const std::string&) {}

}  // namespace kestvox::host
