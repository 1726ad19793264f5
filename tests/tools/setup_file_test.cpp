// The file of --setup: what it says is done, options win over it, and what makes no sense is refused by its
// line.
#include "platform/machine.h"
#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"
#include "tools/files/wav_reader.h"

namespace {

class SetupFile : public CommandTest {
protected:
    SetupFile() { Write("in.wav", NoiseFile(6016, PcmFormat(44100, 1, 16))); }
    // With the text as the file "scene".
    CommandResult Shell(const std::string& setup, const std::string& line) {
        Write("scene", setup);
        return CommandTest::Shell(line);
    }
};

TEST_F(SetupFile, SetsTheSceneOfEveryCommandThatRunsStreams) {
    const std::string scene =
        "# two cards on a desk\r\n\r\n  cards = 2   # as on the desk\r\ntime=stepped\r\n"
        "input = 0a=in.wav; 1a=tone:1000\r\ninput = 1d=silence\ncable = 1a>0d\n"
        "capture = heard-*.wav\ntrace = t.json\nreport = p.html\n";
    CommandResult result = Shell(scene, "$K play in.wav --setup scene --device 0,2");
    EXPECT_EQ(result.Status, 0) << result.Errors;
    EXPECT_EQ(kestvox::WavReader(Path("heard-0a-1.wav")).FrameCount(), 6016u);
    EXPECT_EQ(kestvox::WavReader(Path("heard-1a-1.wav")).FrameCount(), 6016u);
    EXPECT_NE(Read("t.json").find("card 1"), std::string::npos);
    EXPECT_NE(Read("p.html").find("<html"), std::string::npos);

    // A recording takes what is plugged into its device, with its form, as it does from --input.
    result = Shell(scene, "$K record out.wav --setup scene && cmp in.wav out.wav && echo same");
    EXPECT_NE(result.Output.find("same\n"), std::string::npos) << result.Output << result.Errors;
    result = Shell(scene, "$K record out.wav --setup scene --device 2 --seconds 0.1 --report -");
    EXPECT_EQ(result.Status, 0) << result.Errors;
    EXPECT_EQ(result.Output.find("\"came\": [[[0,0]"), std::string::npos) << "it hears no tone";
    EXPECT_EQ(Shell(scene, "$K loopback in.wav --setup scene && ls heard-0a-1.wav").Status, 0);
}

TEST_F(SetupFile, GivesWayToOptions) {
    const std::string scene =
        "cards = 2\ntime = stepped\ninput = tone:1000\nsuspend-at = 0.05\nfault = any:1\n";
    CommandResult result =
        Shell(scene,
              "$K record out.wav --setup scene --cards 1 --input silence --fault completion:90:late "
              "--tolerate --suspend-at 0.1 --seconds 0.2 --device 2");
    EXPECT_EQ(result.Status, 2);
    EXPECT_NE(result.Errors.find("device 2"), std::string::npos) << result.Errors;
    result = Shell(scene,
                   "$K record out.wav --setup scene --input silence --fault completion:90:late "
                   "--tolerate --seconds 0.2 && tail -c 800 out.wav | tr -d '\\0' | wc -c");
    EXPECT_EQ(result.Status, 0) << result.Errors;
    EXPECT_EQ(result.Output.substr(result.Output.size() - 2), "0\n") << "the tone was recorded";
    const std::string fromFile = "from-file-" + std::to_string(platform::CurrentProcess().Id);
    result = Shell("machine = " + fromFile + "\n",
                   "M=from-environment-$$; KESTVOX_MACHINE=$M $K play in.wav --setup scene --quiet >r; "
                   "$K machine list | grep -c " +
                       fromFile + "; $K machine remove $M; $K machine remove " + fromFile + " 2>r");
    EXPECT_EQ(result.Output, "0\n") << "the environment's machine wins";
}

// One line that names the file's, and status 2.
TEST_F(SetupFile, IsRefusedByTheLineThatMakesNoSense) {
    const std::pair<const char*, const char*> cases[] = {
        {"cards\n", "scene:1: a line must be KEY = VALUE"},
        {"\n# x\ncard = 1\n",
         "scene:3: there is no key 'card', only cards, machine, time, input, cable, fault, "
         "capture, trace, report, suspend-at"},
        {"cards =  # none\n", "scene:1: cards has no value"},
        {"cards = 1\ncards = 1\n", "scene:2: cards stands on another line already"},
        {"cards = 17\n", "scene:1: --cards: 17 is not a number from 1 to 16"},
        {"time = slow\n", "scene:1: --time: slow not in {real,stepped}"},
        {"input = tone:x\n",
         "scene:1: input must be silence, tone:HZ or a WAV file, for one input as 0a=..., for "
         "several with ';' between: tone:x"},
        {"input = 0a=none.wav\n", "scene:1: none.wav: No such file or directory"},
        {"input = 5a=silence\n", "scene:1: there is no card 5 (cards: 1)"},
        {"cable = 0a>0x\n", "scene:1: cable must be OUTPUT>INPUT,... as in 0a>0a,0d>1d: 0a>0x"},
        {"cable = 0a>7a\n", "scene:1: there is no card 7 (cards: 1)"},
        {"fault = BANG:1\n",
         "scene:1: fault must be faults as kestvox play --help tells, with ',' between: BANG:1"},
        {"capture = no/*.wav\n",
         "scene:1: capture must be a folder that is there, or a file in one with one '*' in "
         "its name: no/*.wav"},
        {"suspend-at = never\n", "scene:1: --suspend-at: never is not a number from 0 to 100000"},
    };
    for (const auto& [text, why] : cases) {
        SCOPED_TRACE(text);
        const CommandResult result = Shell(text, "$K play in.wav --setup scene; echo $?");
        EXPECT_EQ(result.Output, "2\n");
        EXPECT_EQ(result.Errors, std::string("kestvox: ") + why + "\n");
    }
    const char* const play = "$K play in.wav --setup scene";
    ExpectOneLine(Shell("trace = scene\n", play), 2, "name the same file");
    ExpectOneLine(Shell("input = in.wav\ntrace = in.wav\n", play), 2, "name the same file");
    ExpectOneLine(Shell("", "$K play in.wav --setup nothing"), 2, "nothing: cannot read");
    ExpectOneLine(Shell("suspend-at = 1\n", "$K loopback in.wav --setup scene"), 2,
                  "scene:1: loopback cannot do this: suspend-at");
}

}  // namespace
