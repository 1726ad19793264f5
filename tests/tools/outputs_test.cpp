// What the command does for a line of the shell: where it writes to, and what comes of it when it cannot;
// real pipes, devices, limits and signals.
#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"
#include "tools/files/wav_reader.h"

namespace {

class Outputs : public CommandTest {
protected:
    Outputs() {
        Write("in.wav", NoiseFile(40000));
        Write("steady.wav", WavFile(Usual, std::string(4000, '\x40')));
        Write("odd.wav", NoiseFile(100, PcmFormat(12000, 2, 16)));
        EXPECT_EQ(Shell("$K play in.wav --time stepped --capture direct.wav").Status, 0);
    }
    uint64_t FramesOf(const std::string& name) { return kestvox::WavReader(Path(name)).FrameCount().value(); }
    // A line prints what it is to find, and ends well.
    void ExpectFound(std::initializer_list<std::pair<const char*, const char*>> cases) {
        for (const auto& [line, found] : cases) {
            SCOPED_TRACE(line);
            const CommandResult result = Shell(line);
            EXPECT_EQ(result.Status, 0);
            EXPECT_EQ(result.Errors, "");
            EXPECT_EQ(result.Output, found);
        }
    }
    void ExpectNothingUnfinished() { EXPECT_EQ(Shell("ls -a | grep part").Output, ""); }
};

TEST_F(Outputs, GoWhereTheyAreToldAndReplaceOnlyFiles) {
    ExpectFound({
        {"echo old >o; chmod 640 o; $K play in.wav --time stepped --capture o >r; stat -c %a o; cmp o "
         "direct.wav",
         "640\n"},
        {"echo old >o; $K play odd.wav --time stepped --capture o 2>r; cat o", "old\n"},
        {"mkdir d; echo old >d/t; ln -s d/t l; $K play in.wav --time stepped --capture l >r; readlink l; cmp "
         "l direct.wav",
         "d/t\n"},
        {"ln -s new m; $K play in.wav --time stepped --capture m >r; readlink m; cmp new direct.wav",
         "new\n"},
        {"mkfifo p; cat p >got & $K play in.wav --time stepped --capture p >r; wait; stat -c %F p; "
         "tail -c 320000 got | cmp - direct.wav -i 0:44",
         "fifo\n"},
        {"$K play in.wav --time stepped --capture /dev/null >r; stat -c %F /dev/null",
         "character special file\n"},
        {"$K play in.wav --time stepped --capture - 2>r | tail -c 320000 | cmp - direct.wav -i 0:44; "
         "grep frames-played r",
         "frames-played: 40000\n"},
        {"$K play in.wav --time stepped --capture /dev/stdout 2>r >o; head -c 4 o", "RIFF"},
        {"$K play in.wav --time stepped --trace - 2>r | python3 -m json.tool >/dev/null && echo json",
         "json\n"},
        {"$K play in.wav --time stepped --report - 2>r | sed -n 1p; grep frames-played r",
         "<!DOCTYPE html>\nframes-played: 40000\n"},
        {"cat in.wav | $K play - --time stepped --capture o >r; cmp o direct.wav", ""},
        {"$K record a --input in.wav --time stepped >r; cat in.wav | $K record b --input - --time stepped "
         ">r; cmp a b",
         ""},
        {"$K record - --input in.wav --time stepped 2>r | $K play - --time stepped | grep frames-played",
         "frames-played: 40000\n"},
        {"$K play in.wav --time stepped --json | python3 -c 'import json, sys; "
         "print(json.load(sys.stdin)[\"streams\"][0][\"frames-played\"])'",
         "40000\n"},
    });
    ExpectNothingUnfinished();
}

TEST_F(Outputs, AreWhatTheOptionsSay) {
    ExpectFound({
        // Both files through two devices each, of one clock group.
        {"$K play in.wav --cards 2 --follow 1=0 --device 0,1 --device 2,3 --time stepped --capture g.wav | "
         "grep start-frame | sort -u | wc -l; for n in 0 1 2 3; do cmp g-$n.wav direct.wav; done",
         "1\n"},
        {"for n in 1 2 3; do tail -c 320000 direct.wav; done >thrice; for length in 50 1000; do "
         "$K play in.wav --loops 3 --buffer-ms $length --time stepped --capture l | grep headers-returned; "
         "cmp thrice l -i 0:44; done",
         "headers-returned: 19\nheaders-returned: 1\n"},
        {"for volume in 32768 50%; do $K play steady.wav --volume $volume --time stepped --capture v >r; "
         "od -An -tx4 -j44 -N4 v; done",
         " 20200000\n 20200000\n"},
        {"for dither in '0 --set DitherADC=1' '1 --device 1' 1 2 3 4; do $K record d --format u8 --rate 8000 "
         "--dither $dither --time stepped >r; tail -c 80000 d | tr -d '\\200' >e; "
         "test -s e && echo dithered; done; stat -c %s d",
         "dithered\ndithered\ndithered\ndithered\n80044\n"},
        {"for run in 1 2; do $K play in.wav --device 0,1 --time stepped --trace t >r$run; done; cmp r1 r2; "
         "python3 -m json.tool t >/dev/null; for event in card.0 digital.out QUEUE_BUFFER.0 "
         "stall.227.*dur.:227; do grep -q name.:.$event t && echo found; done",
         "found\nfound\nfound\nfound\n"},
        {"for fault in 3:late=2000000 10:late=2000000 3:twice 10:twice; do $K play in.wav --buffers 19 "
         "--fault completion:$fault --time stepped | grep headers-returned; done | sort -u",
         "headers-returned: 19\n"},
        {"$K settings Name=$(printf x%049d 0) 2>r | wc -c", "57\n"},
        {"$K play in.wav --fault QUEUE_BUFFER:3:pending --time stepped | grep unplayed; "
         "($K play in.wav --fault any:30:die --time stepped >r; echo $?) 2>e",
         "frames-unplayed: 0\nheaders-unplayed: 0\n137\n"},
    });
}

// A locked recording begins with the playback; another one begins when it is started, a hundredth of a second
// before.
TEST_F(Outputs, OfALoopbackAreWhatIsPlayed) {
    ExpectFound({
        {"for device in 0 1 3; do for lock in '' --lock; do "
         "$K loopback in.wav --device $device --cards 2 --follow 1=0 --out o $lock --time stepped | "
         "grep 'offset\\|lost'; cmp in.wav o -i 44:$(test \"$lock\" && echo 44 || echo 1808) -n 160000; "
         "done; done | sort -u",
         "offset-frames: 0\noffset-frames: 441\nsamples-lost: 0\n"},
        {"$K record byte.wav --format u8 --channels 1 --rate 8000 --input tone:100 --seconds 1 "
         "--time stepped >r; $K loopback byte.wav --out o --time stepped | grep 'offset\\|lost'; "
         "cmp byte.wav o -i 44:124 -n 8000",
         "offset-frames: 80\nsamples-lost: 0\n"},
        {"$K record wide.wav --format s32 --rate 48000 --input tone:100 --seconds 1 --time stepped >r; "
         "$K loopback wide.wav --out o --time stepped | grep 'offset\\|lost'; "
         "cmp wide.wav o -i 44:3884 -n 384000",
         "offset-frames: 480\nsamples-lost: 0\n"},
    });
}

// A sleep of a tenth of a second: nothing is lost that is played, and only what passed of a recording.
TEST_F(Outputs, OutlastASleep) {
    ExpectFound({
        {"$K play in.wav --suspend-at 0.2 --time stepped --capture s | grep headers-returned; "
         "slept=$(($(stat -c %s s) - $(stat -c %s direct.wav))); test $slept -ge 35280 && echo slept; "
         "cmp direct.wav s -i 44 -n 70560; head -c $((70604 + slept)) s | tail -c $slept | tr -d '\\0'; "
         "cmp direct.wav s -i 70604:$((70604 + slept))",
         "headers-returned: 19\nslept\n"},
        {"$K record o --input tone:100 --seconds 0.5 --suspend-at 0.2 --time stepped >r; "
         "test $(sed -n 's/dropped-frames: //p' r) -ge 4410 && echo slept; "
         "test $(stat -c %s o) -ge 88116 && echo kept",
         "slept\nkept\n"},
    });
}

// The system's reason on one line, status 1; what had fitted is whole.
TEST_F(Outputs, EndTheRunWithTheFirstWriteThatFails) {
    constexpr const char* Full = "/dev/full: cannot write: No space left on device";
    const std::pair<const char*, const char*> cases[] = {
        {"$K play in.wav --time stepped --capture /dev/full", Full},
        {"$K play in.wav --time stepped --trace /dev/full", Full},
        {"$K play in.wav --time stepped --report /dev/full", Full},
        {"$K record - --seconds 3600 --time stepped 2>e | true; grep kestvox e >&2; false",
         "-: cannot write: Broken pipe"},
        {"ulimit -f 200; $K record o --seconds 3600 --time stepped", "o: cannot write: File too large"},
        {"ulimit -f 200; $K play in.wav --time stepped --capture c", "c: cannot write: File too large"},
        {"$K devices >/dev/full", "cannot write: No space left on device"},
    };
    for (const auto& [line, reason] : cases) {
        SCOPED_TRACE(line);
        ExpectOneLine(Shell(line), 1, reason);
    }
    EXPECT_GT(FramesOf("o"), 10000u);
    EXPECT_GT(FramesOf("c"), 10000u);
    EXPECT_EQ(Shell("ulimit -f 100; $K play in.wav --buffer-ms 1 --time stepped --trace t >/dev/null 2>&1; "
                    "python3 -m json.tool t >/dev/null")
                  .Status,
              0);
    ExpectNothingUnfinished();
}

// The command takes the place of the shell that knows its number.
TEST_F(Outputs, AreKeptWhenASignalEndsTheRun) {
    const std::pair<const char*, int> signals[] = {{"INT", 130}, {"TERM", 143}, {"HUP", 129}};
    for (const auto& [signal, status] : signals) {
        SCOPED_TRACE(signal);
        const std::string line =
            std::string("(for i in $(seq 6000); do test -s o.part && break; sleep 0.01; done; kill -s ") +
            signal + " $$) & exec env --default-signal $K record o --input tone:100 --seconds 100000";
        EXPECT_EQ(Shell(line).Status, status);
        EXPECT_GT(FramesOf("o"), 0u);
    }
    ExpectNothingUnfinished();
}

// What was lost, one line for each, and status 1; none of it when it is tolerated.
TEST_F(Outputs, SayWhatWasLost) {
    const std::pair<const char*, const char*> cases[] = {
        {"play in.wav --fault QUEUE_BUFFER:3",
         "kestvox: device 0: 2205 frames were not played\nkestvox: device 0: 1 header came back unplayed\n"},
        {"play in.wav --fault QUEUE_BUFFER:99",
         "kestvox: fault QUEUE_BUFFER:99 did not come: there were 19 of the kind\n"},
        {"play in.wav --buffers 2 --fault completion:2:late=200000",
         "kestvox: device 0: 1 underrun (6616 silent frames in all), the longest 6616 frames, "
         "the first at frame 6615\n"},
        {"record out.wav --seconds 0.5 --fault QUEUE_BUFFER:3",
         "kestvox: device 0: 1 header came back unfilled\n"},
        {"record out.wav --buffers 2 --seconds 1 --fault completion:2:late=200000",
         "kestvox: device 0: 1 overrun (6613 dropped frames in all), the longest 6613 frames, "
         "the first at frame 6624\n"},
        {"loopback steady.wav --set Monitor=0,0,0,0,0,0,0,0",
         "kestvox: 2000 samples did not come back as they were played\n"},
    };
    for (const auto& [arguments, errors] : cases) {
        SCOPED_TRACE(arguments);
        const std::string line = std::string("$K ") + arguments + " --time stepped";
        const CommandResult result = Shell(line);
        EXPECT_EQ(result.Status, 1);
        EXPECT_EQ(result.Errors, errors);
        const CommandResult tolerated = Shell(line + " --tolerate");
        EXPECT_EQ(tolerated.Status, 0);
        EXPECT_EQ(tolerated.Errors, "");
        // How often a stop and a reset ask for the position is the threads' affair.
        const auto streams = [](const std::string& report) {
            return report.substr(0, report.find("requests-sent"));
        };
        EXPECT_EQ(streams(tolerated.Output), streams(result.Output));
    }
}

// Nobody waits for what does not come; what was recorded until then is kept.
TEST_F(Outputs, OfARunThatStandsStillAreKept) {
    const std::pair<const char*, const char*> cases[] = {
        {"loopback in.wav --out out.wav --fault completion:20:lost", "while it waited for "},
        {"loopback in.wav --out out.wav --fault completion:all:lost", "while it waited for "},
        {"record out.wav --fault completion:3:lost",
         "kestvox: device 0: nothing moved for 9.0 s, at frame 22080 of 220512, while it waited for a header "
         "to come back\n"},
        {"play in.wav --fault completion:3:lost --capture out.wav",
         "kestvox: device 0: nothing moved for 5.1 s, at frame 22050 of 40000, while it waited for a header "
         "to come back\n"},
    };
    for (const auto& [arguments, why] : cases) {
        SCOPED_TRACE(arguments);
        ExpectOneLine(Shell(std::string("$K ") + arguments + " --time stepped"), 1, why);
        EXPECT_EQ(Shell("head -c 4 out.wav; rm out.wav").Output, "RIFF");
    }
}

// Another program plays, in real time, on a machine that the listener has put up.
TEST_F(Outputs, AreHeardByAListener) {
    const CommandResult heard = Shell(
        "M=kestvox-test-$$; $K listen /dev/stdout --machine $M >heard.wav 2>notes & "
        "for i in $(seq 6000); do grep -q listening notes && break; sleep 0.01; done; "
        "$K play in.wav --machine $M --buffer-ms 1000 --capture played.wav >r; wait $!; echo $?; "
        "tail -c 320000 heard.wav | cmp - played.wav -i 0:44; grep frames notes; $K machine remove $M");
    EXPECT_EQ(heard.Output, "0\nframes-heard: 40000\nframes-lost: 0\n") << heard.Errors;
}

// A recording amid silence, which ends with the other program's stream; on the card that plays, and on one
// with a clock of its own.
TEST_F(Outputs, AreRecordedThroughACable) {
    for (const auto& [device, output] : {std::pair("0", "1d"), {"1", "0a"}}) {
        SCOPED_TRACE(device);
        const std::string playing = output == std::string("1d") ? "3" : "0";
        const CommandResult recorded = Shell(
            "M=kestvox-test-$$; $K record o --machine $M --cards 2 --format s32 --buffer-ms 1000 --device " +
            std::string(device) + " --input cable:" + output +
            " >report & for i in $(seq 6000); do test -s o.part && break; sleep 0.01; done; $K play in.wav "
            "--machine $M --buffer-ms 1000 --device " +
            playing + " --capture played.wav >r; wait $!; echo $?; $K machine remove $M");
        EXPECT_EQ(recorded.Output, "0\n") << recorded.Errors;
        const std::string all = Read("o").substr(44);
        const std::string sound = Read("played.wav").substr(44);
        const size_t begin = all.find_first_not_of('\0') - sound.find_first_not_of('\0');
        EXPECT_EQ(begin % 8, 0u);
        EXPECT_EQ(all.find_last_not_of('\0') / 8, (begin + sound.size() - 1) / 8);
        ASSERT_LE(begin, all.size());
        EXPECT_TRUE(all.substr(begin, sound.size()) == sound);
    }
}

}  // namespace
