// Any bytes as a WAV file: it is read to its end, or refused in one line.
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <string>

#include "fuzz/fresh_machine.h"
#include "tools/command_error.h"
#include "tools/files/wav_reader.h"
#include "tools/streams/input_feed.h"

namespace {

class FileInMemory {
public:
    FileInMemory(const uint8_t* data, size_t size) : descriptor_(memfd_create("wav", 0)) {
        Require(descriptor_ >= 0 && write(descriptor_, data, size) == static_cast<ssize_t>(size),
                "no memory for the file");
    }
    ~FileInMemory() { close(descriptor_); }
    FileInMemory(const FileInMemory&) = delete;
    FileInMemory& operator=(const FileInMemory&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

void ReadBytes(const std::string& path) {
    kestvox::WavReader reader(path);
    std::array<char, 100> bytes;
    uint64_t count = 0;
    while (const size_t read = reader.Read(bytes)) {
        count += read;
    }
    Require(reader.AtEnd() && count == reader.ByteCount(), "not as many bytes as the file says");
    Require(count == reader.FrameCount().value_or(0) * reader.Format().nBlockAlign, "a part of a frame");
}

void ReadAsFrames(const std::string& path) {
    kestvox::InputFeed feed(path);
    const simulator::InputSignal signal = feed.Signal();
    std::array<simulator::Frame, 100> frames;
    uint64_t count = 0;
    while (const size_t read = signal.Frames(frames)) {
        count += read;
    }
    Require(count == feed.FrameCount() && feed.Problem().empty(), "not every frame");
}

template <typename Work>
void OrOneLine(Work work) {
    try {
        work();
    } catch (const kestvox::CommandError& error) {
        const std::string text = error.what();
        Require(!text.empty() && text.find('\n') == std::string::npos, "a refusal of more than a line");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const FileInMemory file(data, size);
    OrOneLine([&file] { ReadBytes(file.Path()); });
    OrOneLine([&file] { ReadAsFrames(file.Path()); });
    return 0;
}
