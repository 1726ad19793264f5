// GStreamer's audio converter, without its pipeline.
#include <gst/audio/audio.h>

#include "bench/peers/peer.h"

namespace {

constexpr gsize Frames = PeerSamples / 2;

Peer Converter(Work work, GstAudioFormat from, GstAudioFormat to, GstAudioDitherMethod dither) {
    GstAudioInfo in;
    GstAudioInfo out;
    gst_audio_info_set_format(&in, from, 44100, 2, nullptr);
    gst_audio_info_set_format(&out, to, 44100, 2, nullptr);
    GstStructure* config = gst_structure_new("config", GST_AUDIO_CONVERTER_OPT_DITHER_METHOD,
                                             GST_TYPE_AUDIO_DITHER_METHOD, dither, nullptr);
    GstAudioConverter* converter = gst_audio_converter_new(GST_AUDIO_CONVERTER_FLAG_NONE, &in, &out, config);
    return {"GStreamer", work, [converter](uint8_t* target, const uint8_t* source) {
                gpointer input = const_cast<uint8_t*>(source);
                gpointer output = target;
                gst_audio_converter_samples(converter, GST_AUDIO_CONVERTER_FLAG_NONE, &input, Frames, &output,
                                            Frames);
            }};
}

}  // namespace

void AddGStreamer(PeerList& peers) {
    gst_init(nullptr, nullptr);
    peers.push_back(
        Converter(Work::Expand24, GST_AUDIO_FORMAT_S24LE, GST_AUDIO_FORMAT_S32LE, GST_AUDIO_DITHER_NONE));
    peers.push_back(
        Converter(Work::Pack24, GST_AUDIO_FORMAT_S32LE, GST_AUDIO_FORMAT_S24LE, GST_AUDIO_DITHER_NONE));
    peers.push_back(
        Converter(Work::Dither16, GST_AUDIO_FORMAT_S32LE, GST_AUDIO_FORMAT_S16LE, GST_AUDIO_DITHER_TPDF));
}
