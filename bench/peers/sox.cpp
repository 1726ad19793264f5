// libsox's raw format in memory. Its own samples are 32-bit slots.
#include <sox.h>

#include <vector>

#include "bench/peers/peer.h"

namespace {

constexpr sox_signalinfo_t Stereo = {44100, 2, 0, PeerSamples, nullptr};

sox_encodinginfo_t Encoding(sox_encoding_t encoding, unsigned bits) {
    sox_encodinginfo_t info;
    sox_init_encodinginfo(&info);
    info.encoding = encoding;
    info.bits_per_sample = bits;
    info.reverse_bytes = sox_option_no;
    return info;
}

void Read(sox_encoding_t encoding, unsigned bits, const uint8_t* from, sox_sample_t* to) {
    const sox_encodinginfo_t info = Encoding(encoding, bits);
    sox_format_t* file =
        sox_open_mem_read(const_cast<uint8_t*>(from), PeerSamples * bits / 8, &Stereo, &info, "raw");
    sox_read(file, to, PeerSamples);
    sox_close(file);
}

}  // namespace

void AddSox(PeerList& peers) {
    sox_init();
    peers.push_back({"libsox", Work::Expand24, [](uint8_t* to, const uint8_t* from) {
                         Read(SOX_ENCODING_SIGN2, 24, from, reinterpret_cast<sox_sample_t*>(to));
                     }});
    peers.push_back({"libsox", Work::Pack24, [](uint8_t* to, const uint8_t* from) {
                         const sox_encodinginfo_t info = Encoding(SOX_ENCODING_SIGN2, 24);
                         sox_format_t* file =
                             sox_open_mem_write(to, PeerSamples * 3, &Stereo, &info, "raw", nullptr);
                         sox_write(file, reinterpret_cast<const sox_sample_t*>(from), PeerSamples);
                         sox_close(file);
                     }});
    peers.push_back({"libsox", Work::ExpandALaw, [](uint8_t* to, const uint8_t* from) {
                         static std::vector<sox_sample_t> slots(PeerSamples);
                         Read(SOX_ENCODING_ALAW, 8, from, slots.data());
                         auto* const samples = reinterpret_cast<int16_t*>(to);
                         for (size_t i = 0; i < PeerSamples; ++i) {
                             samples[i] = static_cast<int16_t>(slots[i] >> 16);
                         }
                     }});
}
