// docs/registers.md is written from the register table, and from what the driver does. To write it anew:
// KESTVOX_WRITE_PAGES=1 build/host/bin/kestvox_tests --gtest_filter=RegisterPageTest.*
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>

#include "simulator/card/register_file.h"
#include "tests/support/input_test.h"
#include "tests/support/output_test.h"

namespace {

using simulator::RegisterDefinition;
using simulator::RegisterFile;

constexpr char Begin[] = "<!-- written by RegisterPageTest -->\n";
constexpr char End[] = "<!-- end -->\n";

std::string Hex(unsigned value) {
    char text[8];
    std::snprintf(text, sizeof text, "%02X", value);
    return text;
}

std::string BitsOf(const RegisterDefinition& row) {
    std::string bits;
    for (const simulator::FieldDefinition& field : row.Fields) {
        if (field.Name) {
            bits += (bits.empty() ? "" : ", ") + std::string(field.Name) + " " + Hex(field.Mask);
        }
    }
    return bits.empty() ? Hex(row.Writable ? row.Writable : 0xFF) : bits;
}

class RegisterPageTest : public OutputTest {
protected:
    // "card 17" to the words for what the driver was asked when it wrote the register.
    std::map<std::string, std::string> Writes() {
        std::map<std::string, std::string> writes;
        const auto note = [&](const std::string& word) {
            for (const std::string& line : TraceText()) {
                if (line.starts_with("write ")) {
                    std::string& words = writes[line.substr(6, line.find(" =") - 6)];
                    words += words.ends_with(word) ? "" : (words.empty() ? "" : ", ") + word;
                }
            }
            Cards().ClearTrace();
        };
        waveOutGetNumDevs();
        note("load");
        WavePlayer digital;
        WaveRecorder recorder;
        const WaveFormat format = PcmFormat(48000, 2, 16);
        player_.Open(AnalogOut, format);
        digital.Open(DigitalOut, format);
        recorder.Open(DigitalOut, format);  // of the inputs it is the digital one
        note("open");
        player_.Write(Pattern(4000));
        recorder.Add(4000);
        recorder.Start();
        Cards().Advance(Second / 100);
        note("start");
        player_.Reset();
        recorder.Reset();
        Cards().Advance(Second / 100);
        note("stop");
        player_.Shut();
        digital.Shut();
        recorder.Shut();
        note("close");
        return writes;
    }
};

TEST_F(RegisterPageTest, IsWhatTheTableSays) {
    Cards().SetDigitalInputRate(0, 48000);
    std::map<std::string, std::string> writes = Writes();
    std::string table =
        "| Register | Name | Power-up | Bits | Written at | Meaning |\n|---|---|---|---|---|---|\n";
    for (const RegisterDefinition& row : simulator::RegisterTable()) {
        constexpr const char* Files[] = {"card", "port", "indirect", "mixer"};
        const std::string number = Files[static_cast<int>(row.File)] + (" " + std::to_string(row.Index));
        const bool window = row.File == RegisterFile::Indirect || row.File == RegisterFile::Mixer;
        const std::string when = row.Writable == 0 ? "read only" : window ? "" : writes[number];
        for (const std::string& cell : {number, std::string(row.Name), Hex(row.Reset), BitsOf(row), when}) {
            table.append("| ").append(cell).append(" ");
        }
        table.append("| ").append(row.Meaning).append(" |\n");
    }
    std::ifstream file(KESTVOX_REGISTERS_PAGE);
    std::string page{std::istreambuf_iterator<char>(file), {}};
    const size_t begin = page.find(Begin);
    const size_t end = page.find(End);
    ASSERT_LT(begin, end);
    ASSERT_NE(end, std::string::npos);
    const size_t first = begin + sizeof Begin - 1;
    if (std::getenv("KESTVOX_WRITE_PAGES")) {
        std::ofstream(KESTVOX_REGISTERS_PAGE) << page.replace(first, end - first, table);
        return;
    }
    EXPECT_EQ(page.substr(first, end - first), table);
}

}  // namespace
