// libsndfile on a headerless file in memory.
#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "bench/peers/peer.h"

namespace {

struct MemoryFile {
    uint8_t* Data;
    sf_count_t Size;
    sf_count_t At;
    SNDFILE* File;
};

MemoryFile& Self(void* file) {
    return *static_cast<MemoryFile*>(file);
}

sf_count_t Length(void* file) {
    return Self(file).Size;
}

sf_count_t Seek(sf_count_t offset, int whence, void* file) {
    const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? Self(file).At : Self(file).Size;
    return Self(file).At = base + offset;
}

sf_count_t Tell(void* file) {
    return Self(file).At;
}

sf_count_t Read(void* to, sf_count_t count, void* file) {
    MemoryFile& self = Self(file);
    count = std::min(count, self.Size - self.At);
    memcpy(to, self.Data + self.At, static_cast<size_t>(count));
    self.At += count;
    return count;
}

sf_count_t Write(const void* from, sf_count_t count, void* file) {
    MemoryFile& self = Self(file);
    count = std::min(count, self.Size - self.At);
    memcpy(self.Data + self.At, from, static_cast<size_t>(count));
    self.At += count;
    return count;
}

// The file's bytes are `data` from the first conversion on.
std::shared_ptr<MemoryFile> Open(int mode, int encoding, size_t sampleSize) {
    auto file = std::make_shared<MemoryFile>();
    file->Size = static_cast<sf_count_t>(PeerSamples * sampleSize);
    static SF_VIRTUAL_IO calls = {Length, Seek, Read, Write, Tell};
    SF_INFO info = {};
    info.samplerate = 44100;
    info.channels = 2;
    info.format = SF_FORMAT_RAW | SF_ENDIAN_LITTLE | encoding;
    file->File = sf_open_virtual(&calls, mode, &info, file.get());
    return file;
}

}  // namespace

void AddSndFile(PeerList& peers) {
    auto read = Open(SFM_READ, SF_FORMAT_PCM_24, 3);
    peers.push_back({"libsndfile", Work::Expand24, [read](uint8_t* to, const uint8_t* from) {
                         read->Data = const_cast<uint8_t*>(from);
                         sf_seek(read->File, 0, SEEK_SET);
                         sf_read_int(read->File, reinterpret_cast<int*>(to), PeerSamples);
                     }});
    auto written = Open(SFM_WRITE, SF_FORMAT_PCM_24, 3);
    peers.push_back({"libsndfile", Work::Pack24, [written](uint8_t* to, const uint8_t* from) {
                         written->Data = to;
                         sf_seek(written->File, 0, SEEK_SET);
                         sf_write_int(written->File, reinterpret_cast<const int*>(from), PeerSamples);
                     }});
    auto law = Open(SFM_READ, SF_FORMAT_ALAW, 1);
    peers.push_back({"libsndfile", Work::ExpandALaw, [law](uint8_t* to, const uint8_t* from) {
                         law->Data = const_cast<uint8_t*>(from);
                         sf_seek(law->File, 0, SEEK_SET);
                         sf_read_short(law->File, reinterpret_cast<short*>(to), PeerSamples);
                     }});
}
