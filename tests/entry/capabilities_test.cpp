// The capabilities that the driver itself fills in, byte for byte.
#include <cstring>

#include "tests/support/driver_test.h"

namespace {

class CapabilitiesTest : public DriverTest {
protected:
    CapabilitiesTest() : DriverTest(2) {}

    using Call = MMRESULT (DriverLibrary::*)(UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR) const;

    // What comes after the structure is not written, and nothing at all of a device that is not there.
    template <typename Capabilities>
    static void Expect(const DriverLibrary& library, Call call, UINT device, UINT message,
                       Capabilities expected) {
        memcpy(expected.szPname, device % 2 == 0 ? TEXT("Kestrelvox Analog") : TEXT("Kestrelvox Digital"),
               (device % 2 == 0 ? 17 : 18) * sizeof(WCHAR));
        struct {
            Capabilities Told;
            DWORD After;
        } place = {};
        memset(&place, 0xEE, sizeof place);
        const auto written = reinterpret_cast<DWORD_PTR>(&place);
        EXPECT_EQ((library.*call)(4, message, 0, 0, 0), MMSYSERR_INVALPARAM) << "the place comes first";
        EXPECT_EQ((library.*call)(4, message, 0, written, 0), MMSYSERR_BADDEVICEID);
        EXPECT_EQ(place.Told.wChannels, 0xEEEE);
        EXPECT_EQ((library.*call)(device, message, 0, written, 1), MMSYSERR_NOERROR) << "whatever the size";
        EXPECT_EQ(memcmp(&place.Told, &expected, sizeof expected), 0) << "device " << device;
        EXPECT_EQ(place.After, 0xEEEEEEEE);
    }
};

TEST_F(CapabilitiesTest, AreFilledWholeAndAlikeForEveryCardAndDirection) {
    const DriverLibrary library;
    static_assert(sizeof(WAVEOUTCAPSW) == 84 && sizeof(WAVEINCAPSW) == 80);
    WAVEOUTCAPSW first = {};
    library.WaveOut(0, WODM_GETDEVCAPS, 0, reinterpret_cast<DWORD_PTR>(&first));

    WAVEOUTCAPSW output = {};
    output.wMid = first.wMid;  // whatever they are, all devices have the same
    output.wPid = first.wPid;
    output.vDriverVersion = 0x0405;
    output.dwFormats = 0x00000FFF;
    output.wChannels = 2;
    output.dwSupport = 0x00000024;
    WAVEINCAPSW input = {};
    memcpy(&input, &output, sizeof input);
    for (const UINT device : {0u, 1u, 2u, 3u}) {
        Expect(library, &DriverLibrary::WaveOut, device, WODM_GETDEVCAPS, output);
        Expect(library, &DriverLibrary::WaveIn, device, WIDM_GETDEVCAPS, input);
    }
}

}  // namespace
