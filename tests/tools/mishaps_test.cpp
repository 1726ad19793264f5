// What the command makes of a shell that has little to give: no memory, no standard streams, pipes in the
// wrong place, files that change under it.
#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"

namespace {

class MishapTest : public CommandTest {
protected:
    MishapTest() { Write("in.wav", NoiseFile(40000)); }
};

#if !defined(KESTVOX_SANITIZE_ADDRESS) && !defined(KESTVOX_SANITIZE_THREAD)
// A sanitizer takes more than that for itself.
TEST_F(MishapTest, WithoutMemoryNothingIsBegun) {
    ExpectOneLine(Shell("ulimit -v 300000; $K record o --buffers 1000 --buffer-ms 10000 --time stepped"), 2,
                  "not enough memory");
    EXPECT_EQ(Shell("ls").Output, "in.wav\n");
}
#endif

// Its note goes nowhere, and least of all into the file that it opens.
TEST_F(MishapTest, AClosedStandardErrorIsNoFile) {
    const CommandResult heard = Shell(
        "M=kestvox-test-$$; (timeout -k 1 120 $K listen heard --machine $M --seconds 0.1 2>&- >r) & for i in "
        "$(seq 60); do "
        "$K play in.wav --machine $M --quiet >r; test -e heard && break; done; wait $!; head -c 4 heard; "
        "$K machine remove $M >r");
    EXPECT_EQ(heard.Output, "RIFF") << heard.Errors;
}

TEST_F(MishapTest, PipesAndUnfinishedFilesAreRefusedWhereTheyCannotBe) {
    Write("scene", "input = 0a=-\n");
    Write("other", "input = 0a=p\n");
    Shell("mkfifo p; ln -s o l");
    const std::pair<const char*, const char*> cases[] = {
        {"record o --setup scene <in.wav", "scene:1: -: is read more than once, so that it must be a file"},
        {"play in.wav --setup other", "other:1: p: is read more than once, so that it must be a file"},
        {"record l --trace o.part", "--trace: o.part is where FILE is written at first"},
        {"record o.part --trace o", "FILE: o.part is where --trace is written at first"},
        {"record o --trace o.part", "--trace: o.part is where FILE is written at first"},
    };
    for (const auto& [arguments, why] : cases) {
        SCOPED_TRACE(arguments);
        ExpectOneLine(Shell(std::string("timeout -k 1 60 $K ") + arguments), 2, why);
    }
    EXPECT_EQ(Shell("ls").Output, "in.wav\nl\nother\np\nscene\n");
}

TEST_F(MishapTest, ASignalThatMeetsAWaitingCallEndsTheRun) {
    const CommandResult result = Shell(
        "mkfifo p; env --default-signal timeout -k 60 -s INT --preserve-status 0.3 $K play in.wav --trace p");
    EXPECT_EQ(result.Status, 130);
    EXPECT_EQ(result.Errors, "");
}

TEST_F(MishapTest, ALoopbackWhoseFileIsCutKeepsWhatCame) {
    Shell("$K record long --input tone:100 --seconds 100 --time stepped >r");
    const CommandResult cut = Shell(
        "$K loopback long --out o >r & for i in $(seq 6000); do test -s o.part && break; sleep 0.01; done; "
        "truncate -s 1000 long; wait $!");
    EXPECT_EQ(cut.Status, 1);
    EXPECT_NE(cut.Errors.find("long: "), std::string::npos) << cut.Errors;
    EXPECT_EQ(Shell("head -c 4 o; ls").Output, "RIFFin.wav\nlong\no\nr\n");
}

// A length of more microseconds than can be counted.
TEST_F(MishapTest, ALoopOfManyYearsIsNotTakenForOneThatStands) {
    Write("second", NoiseFile(44100));
    EXPECT_EQ(Shell("env --default-signal timeout -k 60 -s INT --preserve-status 1 $K play second --loops "
                    "418293517 --time "
                    "stepped --quiet >r")
                  .Status,
              130);
}

}  // namespace
