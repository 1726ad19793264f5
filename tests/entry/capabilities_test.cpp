// The capabilities that the driver itself fills in, byte for byte.
#include <cstring>

#include "tests/support/driver_test.h"

namespace {

using CapabilitiesTest = WithCards<DriverTest, 2>;
using Bytes = std::vector<BYTE>;

// What comes after the structure is not written, and nothing at all of a device that is not there.
TEST_F(CapabilitiesTest, AreFilledWholeAndAlikeForEveryCardAndDirection) {
    static_assert(sizeof(WAVEOUTCAPSW) == 84 && sizeof(WAVEINCAPSW) == 80);
    const DriverLibrary library;
    WAVEOUTCAPSW first = {};
    library.WaveOut(0, WODM_GETDEVCAPS, 0, reinterpret_cast<DWORD_PTR>(&first));
    for (const bool output : {true, false}) {
        const size_t size = output ? sizeof(WAVEOUTCAPSW) : sizeof(WAVEINCAPSW);
        const auto ask = [&](UINT device, void* place, DWORD_PTR given) {
            const auto told = reinterpret_cast<DWORD_PTR>(place);
            return output ? library.WaveOut(device, WODM_GETDEVCAPS, 0, told, given)
                          : library.WaveIn(device, WIDM_GETDEVCAPS, 0, told, given);
        };
        for (const UINT device : {0u, 1u, 2u, 3u}) {
            SCOPED_TRACE(testing::Message() << (output ? "output " : "input ") << device);
            WAVEOUTCAPSW expected = {};  // an input's end before the last member
            expected.wMid = first.wMid;  // whatever they are, all devices have the same
            expected.wPid = first.wPid;
            expected.vDriverVersion = 0x0405;
            lstrcpynW(expected.szPname,
                      device % 2 == 0 ? TEXT("Kestrelvox Analog") : TEXT("Kestrelvox Digital"), MAXPNAMELEN);
            expected.dwFormats = 0x00000FFF;
            expected.wChannels = 2;
            expected.dwSupport = 0x00000024;

            const Bytes untouched(size + 4, 0xEE);
            Bytes place = untouched;
            EXPECT_EQ(ask(4, nullptr, 0), MMSYSERR_INVALPARAM) << "the place comes first";
            EXPECT_EQ(ask(4, place.data(), 0), MMSYSERR_BADDEVICEID);
            EXPECT_EQ(place, untouched);
            EXPECT_EQ(ask(device, place.data(), 1), MMSYSERR_NOERROR) << "whatever the size";
            Bytes whole = untouched;
            memcpy(whole.data(), &expected, size);
            EXPECT_EQ(place, whole);
        }
    }
}

}  // namespace
