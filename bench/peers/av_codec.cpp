// libavcodec's PCM codecs and libswresample's dither.
#include <cstring>
#include <memory>

#include "bench/peers/peer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int Rate = 44100;
constexpr int Channels = 2;
constexpr int Frames = static_cast<int>(PeerSamples) / Channels;

// A codec with the packet and the frame that go through it; each as long as the process.
struct Codec {
    AVCodecContext* Context;
    AVPacket* Packet = av_packet_alloc();
    AVFrame* Frame = av_frame_alloc();

    Codec(const AVCodec* codec, AVSampleFormat format) : Context(avcodec_alloc_context3(codec)) {
        Context->sample_rate = Rate;
        Context->sample_fmt = format;
        av_channel_layout_default(&Context->ch_layout, Channels);
        avcodec_open2(Context, codec, nullptr);
    }
};

Peer Decoder(Work work, AVCodecID id, size_t sourceSize, size_t sampleSize) {
    auto codec = std::make_shared<Codec>(avcodec_find_decoder(id), AV_SAMPLE_FMT_NONE);
    return {"libavcodec", work, [codec, sourceSize, sampleSize](uint8_t* to, const uint8_t* from) {
                codec->Packet->data = const_cast<uint8_t*>(from);
                codec->Packet->size = static_cast<int>(PeerSamples * sourceSize);
                avcodec_send_packet(codec->Context, codec->Packet);
                avcodec_receive_frame(codec->Context, codec->Frame);
                memcpy(to, codec->Frame->data[0], PeerSamples * sampleSize);
            }};
}

Peer Encoder(Work work, AVCodecID id, size_t resultSize) {
    auto codec = std::make_shared<Codec>(avcodec_find_encoder(id), AV_SAMPLE_FMT_S32);
    return {"libavcodec", work, [codec, resultSize](uint8_t* to, const uint8_t* from) {
                AVFrame* const frame = codec->Frame;
                av_frame_unref(frame);
                frame->format = AV_SAMPLE_FMT_S32;
                frame->sample_rate = Rate;
                frame->nb_samples = Frames;
                av_channel_layout_default(&frame->ch_layout, Channels);
                frame->data[0] = const_cast<uint8_t*>(from);
                frame->linesize[0] = static_cast<int>(PeerSamples * sizeof(int32_t));
                avcodec_send_frame(codec->Context, frame);
                avcodec_receive_packet(codec->Context, codec->Packet);
                memcpy(to, codec->Packet->data, PeerSamples * resultSize);
            }};
}

Peer Resampler() {
    SwrContext* swr = nullptr;
    AVChannelLayout stereo;
    av_channel_layout_default(&stereo, Channels);
    swr_alloc_set_opts2(&swr, &stereo, AV_SAMPLE_FMT_S16, Rate, &stereo, AV_SAMPLE_FMT_S32, Rate, 0, nullptr);
    av_opt_set_int(swr, "dither_method", SWR_DITHER_TRIANGULAR, 0);
    swr_init(swr);
    return {"libswresample", Work::Dither16,
            [swr](uint8_t* to, const uint8_t* from) { swr_convert(swr, &to, Frames, &from, Frames); }};
}

}  // namespace

void AddAvCodec(PeerList& peers) {
    peers.push_back(Decoder(Work::Expand24, AV_CODEC_ID_PCM_S24LE, 3, sizeof(int32_t)));
    peers.push_back(Encoder(Work::Pack24, AV_CODEC_ID_PCM_S24LE, 3));
    peers.push_back(Decoder(Work::ExpandALaw, AV_CODEC_ID_PCM_ALAW, 1, sizeof(int16_t)));
    peers.push_back(Resampler());
}
