// The private messages that save and restore a card's PCI configuration.
#include "tests/support/output_test.h"

namespace {

const Lines SaveRequests = {"READ_PCI_CONFIG 00 4", "READ_PCI_CONFIG 2C 4", "READ_PCI_CONFIG 08 4",
                            "READ_PCI_CONFIG 04 2", "READ_PCI_CONFIG 0D 1", "READ_PCI_CONFIG 10 4",
                            "READ_PCI_CONFIG 3C 1", "RELEASE_CHANNEL"};
const Lines RestoreRequests = {"READ_PCI_CONFIG 00 4",  "READ_PCI_CONFIG 2C 4",  "READ_PCI_CONFIG 08 4",
                               "WRITE_PCI_CONFIG 0D 1", "WRITE_PCI_CONFIG 10 4", "WRITE_PCI_CONFIG 3C 1",
                               "READ_PCI_CONFIG 0D 1",  "READ_PCI_CONFIG 10 4",  "READ_PCI_CONFIG 3C 1",
                               "WRITE_PCI_CONFIG 04 2", "READ_PCI_CONFIG 04 2"};

class PciConfigurationTest : public OutputTest {
protected:
    void SetUp() override { Open(); }
    // Result and requests of a message.
    void Expect(UINT message, MMRESULT result, const Lines& requests) {
        Cards().ClearTrace();
        EXPECT_EQ(Send(message), result);
        EXPECT_EQ(TraceText(), requests);
    }
    void SetPci(unsigned offset, std::vector<uint8_t> bytes) { Cards().SetPciRegister(0, offset, bytes); }
    // What the last request on that offset returned.
    std::vector<uint8_t> Answer(const std::string& request) {
        std::vector<uint8_t> answer;
        for (const simulator::TraceEntry& entry : Cards().Trace()) {
            if (entry.Text() == request) {
                answer = entry.Output;
            }
        }
        return answer;
    }
};

TEST_F(PciConfigurationTest, WhatWasSavedIsWrittenBack) {
    SetPci(0x0D, {0x40});
    SetPci(0x3C, {0x0B});
    Expect(SavePci, MMSYSERR_NOERROR, SaveRequests);
    const std::vector<uint8_t> address = Answer("READ_PCI_CONFIG 10 4");
    const std::vector<uint8_t> command = Answer("READ_PCI_CONFIG 04 2");
    SetPci(0x0D, {0});
    SetPci(0x10, {0, 0, 0, 0});
    SetPci(0x3C, {0});
    SetPci(0x04, {0, 0});
    Cards().ClearTrace();
    EXPECT_EQ(Send(RestorePci), MMSYSERR_NOERROR);
    Lines requests = TraceText();
    ASSERT_GT(requests.size(), RestoreRequests.size());
    EXPECT_EQ(requests.back(), "ACQUIRE_CHANNEL");
    EXPECT_EQ(requests[RestoreRequests.size()], "READ_NVRAM_PAGE FF80") << "then it is initialised";
    requests.resize(RestoreRequests.size());
    EXPECT_EQ(requests, RestoreRequests);
    EXPECT_EQ(Answer("READ_PCI_CONFIG 0D 1"), std::vector<uint8_t>{0x40});
    EXPECT_EQ(Answer("READ_PCI_CONFIG 3C 1"), std::vector<uint8_t>{0x0B});
    EXPECT_EQ(Answer("READ_PCI_CONFIG 10 4"), address);
    EXPECT_EQ(Answer("READ_PCI_CONFIG 04 2"), command);
    ASSERT_EQ(player_.Write(Pattern(4000)), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_EQ(player_.Position(), 1000u);
}

TEST_F(PciConfigurationTest, AnotherCardInItsPlaceIsNotTouched) {
    for (const auto& [offset, requests] : {std::pair{0x02u, 1}, {0x2Eu, 2}, {0x08u, 3}}) {
        SCOPED_TRACE(offset);
        Expect(SavePci, MMSYSERR_NOERROR, SaveRequests);
        SetPci(offset, {static_cast<uint8_t>(0xE0 + offset)});
        Expect(RestorePci, MMSYSERR_ERROR, {RestoreRequests.begin(), RestoreRequests.begin() + requests});
    }
}

TEST_F(PciConfigurationTest, TheFirstStepThatFailsIsTheLast) {
    const auto expectStops = [this](UINT message, const Lines& requests) {
        for (size_t count = 1; count <= requests.size(); ++count) {
            SCOPED_TRACE(testing::Message() << message << ": " << requests[count - 1]);
            Fail(simulator::Fault::AnyCode, static_cast<unsigned>(count));
            Expect(message, MMSYSERR_ERROR, {requests.begin(), requests.begin() + static_cast<long>(count)});
        }
    };
    expectStops(SavePci, SaveRequests);
    Expect(SavePci, MMSYSERR_NOERROR, SaveRequests);
    expectStops(RestorePci, RestoreRequests);
    Fail("ACQUIRE_CHANNEL");
    EXPECT_EQ(Send(RestorePci), unsigned{MMSYSERR_ERROR});
    Fail("READ_PCI_CONFIG", 1, simulator::Fault::Kind::Short);
    Expect(SavePci, MMSYSERR_ERROR, {SaveRequests.front()});
}

}  // namespace
