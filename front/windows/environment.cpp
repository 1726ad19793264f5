#include "front/windows/environment.h"

#include <windows.h>

#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

#include "front/windows/sound_frames.h"
#include "front/windows/text.h"

namespace front {

namespace {

using Reader = bool (*)(const std::string& value, Environment* environment);

// The whole text as a number.
template <typename Number>
bool ReadNumber(const std::string& text, Number* number) {
    const char* const end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, *number);
    return error == std::errc{} && parsed == end;
}

bool ReadCards(const std::string& value, Environment* environment) {
    return ReadNumber(value, &environment->Cards) && environment->Cards >= 1 &&
           environment->Cards <= simulator::MaxCards;
}

bool ReadTime(const std::string& value, Environment* environment) {
    const bool stepped = lstrcmpiA(value.c_str(), "stepped") == 0;
    environment->Time = stepped ? simulator::TimeKind::Stepped : simulator::TimeKind::Real;
    return stepped || lstrcmpiA(value.c_str(), "real") == 0;
}

// Without a connector before an equals sign it is for every input.
bool ReadInput(std::string_view text, PluggedInput* input) {
    const size_t equals = text.find('=');
    if (equals != std::string_view::npos) {
        input->Where = simulator::ParseConnector(text.substr(0, equals));
    }
    const std::string_view what = input->Where ? text.substr(equals + 1) : text;
    if (std::optional<simulator::InputSignal> signal = simulator::ParseSignal(what)) {
        input->Signal = std::move(*signal);
        return true;
    }
    std::optional<SoundFrames> sound = ReadSoundFrames(Wide(what).c_str());
    if (!sound) {
        return false;
    }
    input->Signal = simulator::InputSignal::Run(std::move(sound->Frames));
    input->FileRate = sound->Rate;
    return true;
}

bool ReadInputs(const std::string& value, Environment* environment) {
    for (const std::string_view text : simulator::SplitList(value, ";")) {
        if (!ReadInput(text, &environment->Inputs.emplace_back())) {
            return false;
        }
    }
    return !environment->Inputs.empty();
}

// A list of what `parse` understands.
template <typename Value, typename Parse>
bool ReadList(const std::string& value, std::vector<Value>* values, const Parse& parse) {
    for (const std::string_view text : simulator::SplitList(value, ",;")) {
        const std::optional<Value> parsed = parse(text);
        if (!parsed) {
            return false;
        }
        values->push_back(*parsed);
    }
    return !values->empty();
}

bool ReadCables(const std::string& value, Environment* environment) {
    return ReadList(value, &environment->Cables, simulator::ParseCable);
}

bool ReadFaults(const std::string& value, Environment* environment) {
    return ReadList(value, &environment->Faults, simulator::ParseFault);
}

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::wstring FolderOf(const std::wstring& path) {
    const size_t separator = path.find_last_of(L"\\/");
    return separator == std::wstring::npos ? L"." : path.substr(0, separator + 1);
}

bool ReadCapture(const std::string& value, Environment* environment) {
    environment->Capture = Wide(value);
    if (IsFolder(environment->Capture)) {
        environment->Capture += L"\\*.wav";
    }
    const size_t star = environment->Capture.find(L'*');
    return star != std::wstring::npos && star == environment->Capture.rfind(L'*') &&
           IsFolder(FolderOf(environment->Capture));
}

template <std::wstring Environment::*Path>
bool ReadFilePath(const std::string& value, Environment* environment) {
    std::wstring& path = environment->*Path;
    path = Wide(value);
    return IsFolder(FolderOf(path)) && !IsFolder(path);
}

bool ReadSuspendAt(const std::string& value, Environment* environment) {
    double seconds = 0;
    const bool good = ReadNumber(value, &seconds) && std::isfinite(seconds) && seconds >= 0;
    environment->SuspendAt = seconds;
    return good;
}

struct Variable {
    const WCHAR* Name;
    Reader Read;
    const char* Must;
};
constexpr Variable Variables[] = {
    {L"KESTVOX_CARDS", ReadCards, "KESTVOX_CARDS must be a number from 1 to 16"},
    {L"KESTVOX_TIME", ReadTime, "KESTVOX_TIME must be real or stepped"},
    {L"KESTVOX_INPUT", ReadInputs,
     "KESTVOX_INPUT must be silence, tone:HZ or a WAV file with PCM of one or two channels, for one input as "
     "0a=..., for several with ';' between"},
    {L"KESTVOX_CABLE", ReadCables, "KESTVOX_CABLE must be OUTPUT>INPUT,... as in 0a>0a,0d>1d"},
    {L"KESTVOX_FAULT", ReadFaults,
     "KESTVOX_FAULT must be faults as kestvox play --help tells, with ',' between"},
    {L"KESTVOX_CAPTURE", ReadCapture,
     "KESTVOX_CAPTURE must be a folder that is there, or a file in one with one '*' in its name"},
    {L"KESTVOX_TRACE", ReadFilePath<&Environment::Trace>,
     "KESTVOX_TRACE must be a file in a folder that is there"},
    {L"KESTVOX_REPORT", ReadFilePath<&Environment::Report>,
     "KESTVOX_REPORT must be a file in a folder that is there"},
    {L"KESTVOX_SUSPEND_AT", ReadSuspendAt, "KESTVOX_SUSPEND_AT must be a number of seconds"},
};

// Empty when it is not set.
std::string ValueOf(const WCHAR* name) {
    std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(
        value.empty() ? 0 : GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return Utf8(value);
}

}  // namespace

bool ReadEnvironment(Environment* environment, std::string* why) {
    for (const Variable& variable : Variables) {
        const std::string value = ValueOf(variable.Name);
        if (!value.empty() && !variable.Read(value, environment)) {
            *why = std::string(variable.Must) + ": " + value;
            return false;
        }
    }
    return true;
}

}  // namespace front
