#include "tests/tools/command_test.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

std::vector<std::string> CommandResult::Values(const std::string& key) const {
    std::vector<std::string> values;
    std::istringstream lines(Output);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key + ": ")) {
            values.push_back(line.substr(key.size() + 2));
        }
    }
    return values;
}

void ExpectOneLine(const CommandResult& result, int status, const std::string& why) {
    EXPECT_EQ(result.Status, status);
    EXPECT_TRUE(result.Errors.starts_with("kestvox: ")) << result.Errors;
    EXPECT_NE(result.Errors.find(why), std::string::npos) << result.Errors;
    EXPECT_EQ(std::ranges::count(result.Errors, '\n'), 1) << result.Errors;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

CommandTest::CommandTest() {
    std::string name = std::filesystem::temp_directory_path() / "kestvox-test-XXXXXX";
    folder_ = mkdtemp(name.data());
    std::filesystem::create_directory(folder_ / "files");
}

CommandTest::~CommandTest() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

CommandResult CommandTest::Shell(const std::string& line) const {
    const std::string out = folder_ / "out";
    const std::string err = folder_ / "err";
    const std::string whole =
        "K=" KESTVOX_COMMAND "; cd " + Path("") + " && { " + line + "\n} >" + out + " 2>" + err;
    const int result = std::system(whole.c_str());
    return {.Status = WIFEXITED(result) ? WEXITSTATUS(result) : -1,
            .Output = ReadFile(out),
            .Errors = ReadFile(err)};
}

void CommandTest::Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
}
