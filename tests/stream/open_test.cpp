// Opens that are refused, and what they leave; in both directions. Which formats a device takes is told in
// format_model_test.cpp.
#include "tests/support/driver_test.h"

namespace {

using simulator::Port;

constexpr UINT Analog = 0;  // devices of card 0
constexpr UINT Digital = 1;

template <typename Client>
class OpenTest : public DriverTest {
protected:
    void SetUp() override { Cards().PlugIn(0, Port::Digital, simulator::InputSignal::Run({})); }

    Client client_;
};

using Clients = testing::Types<WavePlayer, WaveRecorder>;
TYPED_TEST_SUITE(OpenTest, Clients);

TYPED_TEST(OpenTest, OneClockHasOneRateAndADeviceOneClient) {
    const WaveFormat format = PcmFormat(48000, 2, 16);
    const WaveFormat slower = PcmFormat(44100, 2, 16);
    ASSERT_EQ(this->client_.Open(Analog, format), MMSYSERR_NOERROR);
    for (const MMRESULT query : {waveOutOpen(nullptr, Digital, slower.Get(), 0, 0, WAVE_FORMAT_QUERY),
                                 waveInOpen(nullptr, Digital, slower.Get(), 0, 0, WAVE_FORMAT_QUERY)}) {
        EXPECT_EQ(query, MMSYSERR_NOERROR) << "a question is about the format alone";
    }
    TypeParam other;
    EXPECT_EQ(other.Open(Digital, slower), unsigned{WAVERR_BADFORMAT});
    EXPECT_EQ(other.Open(Analog, slower), unsigned{WAVERR_BADFORMAT});  // rather than: in use
    EXPECT_EQ(other.Open(Analog, format), unsigned{MMSYSERR_ALLOCATED});
    EXPECT_EQ(other.Messages(), std::vector<UINT>());
    ASSERT_EQ(other.Open(Digital, PcmFormat(48000, 2, 24)), MMSYSERR_NOERROR);
    EXPECT_EQ(this->client_.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(this->client_.Open(Analog, slower), unsigned{WAVERR_BADFORMAT});
    EXPECT_EQ(other.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(this->client_.Open(Analog, slower), MMSYSERR_NOERROR);
}

TYPED_TEST(OpenTest, AnOpenThatFailsIsUndone) {
    const struct {
        const char* Failing;  // a request, or a call
        MMRESULT Result;
    } cases[] = {{"HeapAlloc", MMSYSERR_NOMEM},
                 {"CreateFileW", MMSYSERR_NODRIVER},
                 {"CreateEventW", MMSYSERR_ERROR},
                 {"BIND_HANDLE", MMSYSERR_ALLOCATED},
                 {"ACQUIRE_CHANNEL", MMSYSERR_ERROR}};
    waveOutGetNumDevs();
    for (const auto& test : cases) {
        SCOPED_TRACE(test.Failing);
        if (simulator::RequestCode(test.Failing)) {
            this->Fail(test.Failing);
        } else {
            test_system::FailCall(test.Failing, 1);
        }
        EXPECT_EQ(this->client_.Open(Analog, PcmFormat(44100, 2, 16)), test.Result);
        EXPECT_EQ(this->client_.Messages(), std::vector<UINT>());
        EXPECT_FALSE(this->Cards().ChannelClaimed(0, std::is_same_v<TypeParam, WavePlayer> ? 2 : 0));
        EXPECT_EQ(this->Cards().OpenFiles(), 0u);
    }
    EXPECT_EQ(this->client_.Open(Analog, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
}

// --- outputs only ------------------------------------------------------------------------------

using OutputOpenTest = OpenTest<WavePlayer>;

// What is wrong is told in this order: the pointers, the device, the format.
TEST_F(OutputOpenTest, TheFirstThingThatIsWrongIsAnswered) {
    const DriverLibrary driver;
    WaveFormat bad = PcmFormat(44100, 2, 12);
    WAVEOPENDESC description = {};
    DWORD_PTR instance = 0;
    const auto open = [&](UINT device, DWORD_PTR* user, WAVEOPENDESC* described) {
        return driver.WaveOut(device, WODM_OPEN, reinterpret_cast<DWORD_PTR>(user),
                              reinterpret_cast<DWORD_PTR>(described));
    };
    EXPECT_EQ(open(9, &instance, nullptr), MMSYSERR_INVALPARAM);
    EXPECT_EQ(open(9, &instance, &description), MMSYSERR_INVALPARAM) << "no format";
    description.lpFormat = reinterpret_cast<LPWAVEFORMAT>(&bad.Basic());
    EXPECT_EQ(open(9, nullptr, &description), MMSYSERR_INVALPARAM);
    EXPECT_EQ(open(2, &instance, &description), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(open(1, &instance, &description), WAVERR_BADFORMAT);
    EXPECT_EQ(instance, 0u);
}

}  // namespace
