// The trace as tests compare it and viewers open it, and faults as users write them.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

TEST(SimulatorTrace, OneReadableLineForEachRequest) {
    Simulator sim({.Cards = 2});
    {
        const CardFile control(1, ControlChannel);
        const CardFile file(1, 2);
        file.WriteCard(17, 1, 1);
        file.WritePort(0, 0xC0, 0xC0);
        uint32_t value = 0;
        EXPECT_EQ(file.ReadRegister(0, 32, &value), ERROR_SUCCESS);
        file.Send(Stall, 227);
        uint8_t data[48];
        EXPECT_EQ(file.Queue(data, sizeof data, 1), ERROR_SUCCESS);
        const uint8_t address[sizeof(ULONG_PTR)] = {};
        EXPECT_EQ(file.Request(SetCompletionRoutine, address), ERROR_SUCCESS);
        const uint8_t offset[4] = {0x10};
        EXPECT_EQ(file.Request(ReadPciConfig, offset, {data, 4}), ERROR_SUCCESS);
        EXPECT_EQ(file.Request(0x80000001), ERROR_INVALID_FUNCTION);
    }
    const std::vector<TraceEntry> trace = sim.Trace();
    std::vector<std::string> lines;
    for (const TraceEntry& entry : trace) {
        lines.push_back(entry.Text());
    }
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "BIND_HANDLE 1 control", "BIND_HANDLE 1 2", "ACQUIRE_CHANNEL",
                         "write card 17 = 01 / 01", "write port 0 = C0 / C0", "read card 32", "stall 227",
                         "BEGIN_BUFFER", "MAP_BUFFER 48", "SET_BUFFER_COOKIE", "QUEUE_BUFFER 0",
                         "SET_COMPLETION_ROUTINE 0", "READ_PCI_CONFIG 10 4", "80000001"}));
    EXPECT_EQ(trace[0].File, 1u);
    EXPECT_EQ(trace[0].Channel, ControlChannel);
    EXPECT_EQ(trace[5].File, 2u);
    EXPECT_EQ(trace[5].Channel, 2u);
    EXPECT_EQ(trace[5].Output, (std::vector<uint8_t>{0x02, 0, 0, 0}));
    EXPECT_EQ(trace[7].Microseconds - trace[6].Microseconds, 227);
    EXPECT_EQ(trace.back().Result, static_cast<uint32_t>(ERROR_INVALID_FUNCTION));

    sim.ClearTrace();
    EXPECT_TRUE(sim.Trace().empty());
}

TEST(SimulatorTrace, ChromeFormatHasOneTrackForEachCardAndChannel) {
    Simulator sim({.Cards = 2});
    {
        const CardFile file(1, 3);
        file.Send(Stall, 500);
    }
    std::ostringstream out;
    WriteChromeTrace(out, sim.Trace());
    const std::string text = out.str();
    const auto count = [&](const std::string& part) {
        size_t found = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++found;
        }
        return found;
    };
    EXPECT_EQ(count("\"name\":\"card 1\""), 1u);
    EXPECT_EQ(count("\"name\":\"digital out\""), 1u);
    EXPECT_EQ(count("\"name\":\"control\""), 1u) << "the bind itself comes before the channel";
    EXPECT_EQ(count("\"ph\":\"X\""), 3u);
    EXPECT_EQ(count("\"name\":\"stall 500\",\"cat\":\"request\",\"pid\":1,\"tid\":3"), 1u);
    EXPECT_EQ(count("\"dur\":500"), 1u);
    EXPECT_EQ(count("{"), count("}"));
    EXPECT_EQ(count(",\n]"), 0u);
}

TEST(SimulatorFault, TextSaysWhatGoesWrongAndWhen) {
    struct Case {
        const char* Text;
        Fault Meaning;
    };
    const Case good[] = {
        {"START_TRANSFER:3", {.What = Fault::Kind::Fail, .Code = StartTransfer, .Nth = 3}},
        {"get_position:all:short", {.What = Fault::Kind::Short, .Code = GetPosition, .Nth = 0}},
        {"any:1:Pending", {.What = Fault::Kind::Pend, .Code = Fault::AnyCode, .Nth = 1}},
        {"completion:2:twice", {.What = Fault::Kind::Twice, .Code = Fault::Completion, .Nth = 2}},
        {"completion:all:lost", {.What = Fault::Kind::Lost, .Code = Fault::Completion, .Nth = 0}},
        {"completion:1:late=250", {.What = Fault::Kind::Late, .Code = Fault::Completion, .Delay = 250}},
        {"completion:1:late", {.What = Fault::Kind::Late, .Code = Fault::Completion}},
    };
    for (const Case& test : good) {
        const std::optional<Fault> fault = ParseFault(test.Text);
        ASSERT_TRUE(fault) << test.Text;
        EXPECT_EQ(fault->What, test.Meaning.What) << test.Text;
        EXPECT_EQ(fault->Code, test.Meaning.Code) << test.Text;
        EXPECT_EQ(fault->Nth, test.Meaning.Nth) << test.Text;
        EXPECT_EQ(fault->Delay, test.Meaning.Delay) << test.Text;
    }
    for (const char* bad :
         {"", "START_TRANSFER", "START_TRANSFER:0", "START_TRANSFER:-1", "START_TRANSFER:1x", "START:1",
          "GET_POSITION:1:late", "completion:1", "completion:1:fail",
          "completion:1:late=", "completion:1:lost=5", "any:1:fail:1"}) {
        EXPECT_FALSE(ParseFault(bad)) << bad;
    }
}

}  // namespace
}  // namespace simulator_tests
