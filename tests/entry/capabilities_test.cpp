// The capabilities that the driver itself fills in, byte for byte.
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/driver_library.h"
#include "tests/support/driver_test.h"

namespace {

class CapabilitiesTest : public DriverTest {
protected:
    static constexpr BYTE Untouched = 0xEE;

    CapabilitiesTest() : DriverTest(2) {}

    using Call = MMRESULT (DriverLibrary::*)(UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR) const;

    // The bytes after the structure are proof that no more than it was written.
    static std::vector<BYTE> Bytes(const DriverLibrary& library, Call call, UINT device, UINT message,
                                   size_t size) {
        std::vector<BYTE> bytes(size + 8, Untouched);
        EXPECT_EQ((library.*call)(device, message, 0, reinterpret_cast<DWORD_PTR>(bytes.data()), 0),
                  MMSYSERR_NOERROR);
        return bytes;
    }

    template <typename Capabilities>
    static std::vector<BYTE> Expected(Capabilities capabilities, const std::u16string& name) {
        memcpy(capabilities.szPname, name.data(), name.size() * sizeof(char16_t));
        std::vector<BYTE> bytes(sizeof capabilities + 8, Untouched);
        memcpy(bytes.data(), &capabilities, sizeof capabilities);
        return bytes;
    }
};

TEST_F(CapabilitiesTest, AreFilledWholeAndAlikeForEveryCardAndDirection) {
    static_assert(sizeof(WAVEOUTCAPSW) == 84 && sizeof(WAVEINCAPSW) == 80);
    const DriverLibrary library;
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
        const std::u16string name = device % 2 == 0 ? u"Kestrelvox Analog" : u"Kestrelvox Digital";
        EXPECT_EQ(Bytes(library, &DriverLibrary::WaveOut, device, WODM_GETDEVCAPS, sizeof output),
                  Expected(output, name));
        EXPECT_EQ(Bytes(library, &DriverLibrary::WaveIn, device, WIDM_GETDEVCAPS, sizeof input),
                  Expected(input, name));
    }
}

TEST_F(CapabilitiesTest, NeedAPlaceAndACard) {
    const DriverLibrary library;
    WAVEOUTCAPSW output = {};
    const auto place = reinterpret_cast<DWORD_PTR>(&output);
    EXPECT_EQ(library.WaveOut(0, WODM_GETDEVCAPS, 0, 0), MMSYSERR_INVALPARAM);
    EXPECT_EQ(library.WaveIn(1, WIDM_GETDEVCAPS, 0, 0), MMSYSERR_INVALPARAM);
    EXPECT_EQ(library.WaveOut(4, WODM_GETDEVCAPS, 0, 0), MMSYSERR_INVALPARAM) << "the place comes first";
    EXPECT_EQ(library.WaveOut(4, WODM_GETDEVCAPS, 0, place), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(library.WaveIn(0xFFFFFFFF, WIDM_GETDEVCAPS, 0, place), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(output.dwFormats, 0u) << "a refusal writes nothing";
    // The size in the second parameter and the device number of a count mean nothing.
    EXPECT_EQ(library.WaveOut(3, WODM_GETDEVCAPS, 0, place, 1), MMSYSERR_NOERROR);
    EXPECT_EQ(output.wChannels, 2);
    EXPECT_EQ(library.WaveOut(77, WODM_GETNUMDEVS, 0), 4u);
    EXPECT_EQ(library.WaveIn(77, WIDM_GETNUMDEVS, 0), 4u);
}

}  // namespace
