#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>

#include "tools/files/host.h"
#include "tools/system/interrupt.h"

namespace kestvox::host {
namespace {

constexpr int PatienceMilliseconds = 100;

}  // namespace

std::optional<int> InheritedHandle(const std::string& path) {
    if (path == "/dev/stdin" || path == "/dev/stdout" || path == "/dev/stderr") {
        return path.back() == 'n' ? STDIN_FILENO : path.back() == 't' ? STDOUT_FILENO : STDERR_FILENO;
    }
    for (const std::string folder : {"/dev/fd/", "/proc/self/fd/"}) {
        if (path.starts_with(folder)) {
            int handle = -1;
            const char* end = path.data() + path.size();
            const auto [parsed, error] = std::from_chars(path.data() + folder.size(), end, handle);
            return error == std::errc{} && parsed == end ? std::optional(handle) : std::nullopt;
        }
    }
    return std::nullopt;
}

int CopyHandle(int handle) {
    return fcntl(handle, F_DUPFD_CLOEXEC, 3);
}

int CreateNew(const std::string& path) {
    return open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

int OpenWhatIsThere(const std::string& path) {
    return open(path.c_str(), O_WRONLY | O_CLOEXEC);
}

int OpenForReading(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

// The thread that waits may not be the one that gets the signal.
int64_t ReadSome(int handle, std::span<char> bytes) {
    for (;;) {
        pollfd input{.fd = handle, .events = POLLIN, .revents = 0};
        if (poll(&input, 1, PatienceMilliseconds) > 0) {
            const ssize_t count = read(handle, bytes.data(), bytes.size());
            if (count >= 0 || (errno != EINTR && errno != EAGAIN)) {
                return count;
            }
        }
        if (IsInterrupted()) {
            errno = EINTR;
            return -1;
        }
    }
}

std::optional<uint64_t> LengthOf(int handle) {
    struct stat is {};
    return fstat(handle, &is) == 0 && S_ISREG(is.st_mode) ? std::optional(static_cast<uint64_t>(is.st_size))
                                                          : std::nullopt;
}

bool SkipBytes(int handle, uint64_t count) {
    return lseek(handle, static_cast<off_t>(count), SEEK_CUR) >= 0;
}

int64_t WriteSome(int handle, std::span<const char> bytes) {
    for (;;) {
        const ssize_t count = write(handle, bytes.data(), bytes.size());
        if (count >= 0) {
            return count;
        }
        if (errno == EAGAIN) {
            pollfd room{.fd = handle, .events = POLLOUT, .revents = 0};
            poll(&room, 1, -1);
        } else if (errno != EINTR) {
            return -1;
        }
        if (IsInterrupted()) {
            errno = EINTR;
            return -1;
        }
    }
}

bool WriteAt(int handle, uint64_t offset, std::span<const char> bytes) {
    return pwrite(handle, bytes.data(), bytes.size(), static_cast<off_t>(offset)) ==
           static_cast<ssize_t>(bytes.size());
}

int64_t ReadAt(int handle, uint64_t offset, std::span<char> bytes) {
    return pread(handle, bytes.data(), bytes.size(), static_cast<off_t>(offset));
}

bool CutTo(int handle, uint64_t length) {
    return ftruncate(handle, static_cast<off_t>(length)) == 0 &&
           lseek(handle, static_cast<off_t>(length), SEEK_SET) >= 0;
}

bool Close(int handle) {
    return close(handle) == 0;
}

// The owner first: changing it takes some of the mode away.
void TakeAfter(int handle, const std::string& old) {
    struct stat was {};
    if (stat(old.c_str(), &was) == 0) {
        if (fchown(handle, was.st_uid, was.st_gid) != 0) {
            // Only the system's administrator may give files away.
        }
        fchmod(handle, was.st_mode & 07777);
    }
}

}  // namespace kestvox::host
