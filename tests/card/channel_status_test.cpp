// The channel status of the S/PDIF output, as the settings and the stream want it.
#include <array>

#include "tests/support/driver_test.h"
#include "tests/support/wave_player.h"

namespace {

constexpr WORD NonAudioTag = 0x0092;
constexpr UINT DigitalOutput = 1;

using Status = std::array<int, 5>;

class ChannelStatusTest : public DriverTest {
protected:
    Status SentStatus() {
        Status status = {};
        for (unsigned byte = 0; byte < status.size(); ++byte) {
            status[byte] = Cards().IndirectRegister(0, byte);
        }
        return status;
    }
    bool IsProfessional() { return (Cards().CardRegister(0, 25) & 0x02) != 0; }

    static void Store(DWORD professional, DWORD nonAudio, DWORD copyProtect, DWORD preemphasis) {
        StoreSetting(0, TEXT("Professional"), professional);
        StoreSetting(0, TEXT("NonAudio"), nonAudio);
        StoreSetting(0, TEXT("CopyProtect"), copyProtect);
        StoreSetting(0, TEXT("Preemphasis"), preemphasis);
    }

    void OpenAndClose(UINT device, const WaveFormat& format) {
        WavePlayer player;
        ASSERT_EQ(player.Open(device, format), MMSYSERR_NOERROR);
        EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
    }
};

TEST_F(ChannelStatusTest, FollowsTheSettings) {
    const struct {
        DWORD Professional, NonAudio, CopyProtect, Preemphasis;
        Status Sent;
    } cases[] = {
        {1, 0, 0, 0, {0x41, 0x00, 0x2C, 0, 0}}, {1, 1, 0, 0, {0x43, 0x00, 0x2C, 0, 0}},
        {1, 0, 0, 1, {0x4D, 0x00, 0x2C, 0, 0}}, {1, 1, 0, 1, {0x4F, 0x00, 0x2C, 0, 0}},
        {1, 0, 1, 0, {0x41, 0x00, 0x2C, 0, 0}},  // copy protection is the consumer format's
        {7, 4, 0, 2, {0x4F, 0x00, 0x2C, 0, 0}},  // any value but 0 is a yes
        {0, 0, 0, 0, {0x04, 0x81, 0, 0, 0}},    {0, 0, 1, 0, {0x00, 0x01, 0, 0, 0}},
        {0, 1, 0, 0, {0x06, 0x81, 0, 0, 0}},    {0, 1, 1, 0, {0x02, 0x01, 0, 0, 0}},
        {0, 0, 0, 1, {0x0C, 0x81, 0, 0, 0}},    {0, 0, 1, 1, {0x08, 0x01, 0, 0, 0}},
        {0, 1, 0, 1, {0x06, 0x81, 0, 0, 0}},  // pre-emphasis is the business of audio
        {0, 1, 1, 1, {0x02, 0x01, 0, 0, 0}},
    };
    for (const auto& expected : cases) {
        UnloadDriver();
        Store(expected.Professional, expected.NonAudio, expected.CopyProtect, expected.Preemphasis);
        waveOutGetNumDevs();
        EXPECT_EQ(SentStatus(), expected.Sent) << &expected - cases;
        EXPECT_EQ(IsProfessional(), expected.Professional != 0) << &expected - cases;
    }
}

TEST_F(ChannelStatusTest, FollowsTheStreamsRate) {
    const struct {
        DWORD Rate;
        Status Professional, Consumer;
    } cases[] = {
        {96000, {0x01, 0, 0x2C, 0, 0x10}, {0x04, 0x81, 0, 0x00, 0}},
        {88200, {0x01, 0, 0x2C, 0, 0x50}, {0x04, 0x81, 0, 0x00, 0}},
        {48000, {0x81, 0, 0x2C, 0, 0x00}, {0x04, 0x81, 0, 0x02, 0}},
        {44100, {0x41, 0, 0x2C, 0, 0x00}, {0x04, 0x81, 0, 0x00, 0}},
        {32000, {0xC1, 0, 0x2C, 0, 0x00}, {0x04, 0x81, 0, 0x03, 0}},
        {22050, {0x01, 0, 0x2C, 0, 0x48}, {0x04, 0x81, 0, 0x00, 0}},
        {11025, {0x01, 0, 0x2C, 0, 0x00}, {0x04, 0x81, 0, 0x00, 0}},
        {8000, {0x01, 0, 0x2C, 0, 0x00}, {0x04, 0x81, 0, 0x00, 0}},
    };
    for (const DWORD professional : {1u, 0u}) {
        UnloadDriver();
        Store(professional, 0, 0, 0);
        for (const auto& expected : cases) {
            OpenAndClose(DigitalOutput, PcmFormat(expected.Rate, 2, 16));
            EXPECT_EQ(SentStatus(), professional ? expected.Professional : expected.Consumer)
                << expected.Rate << ", professional " << professional;
        }
    }
}

TEST_F(ChannelStatusTest, DataThatIsNotAudioIsMarkedWhileItsStreamIsOpen) {
    const struct {
        DWORD Professional;
        int NonAudio, Audio;  // byte 0
    } cases[] = {{1, 0x4F, 0x4D}, {0, 0x02, 0x08}};
    for (const auto& expected : cases) {
        UnloadDriver();
        Store(expected.Professional, 0, 1, 1);
        OpenAndClose(DigitalOutput, TaggedFormat(NonAudioTag, 44100, 2, 16));
        EXPECT_EQ(SentStatus()[0], expected.NonAudio);
        OpenAndClose(DigitalOutput, PcmFormat(44100, 2, 16));
        EXPECT_EQ(SentStatus()[0], expected.Audio);
    }
}

}  // namespace
