#include "front/windows/environment.h"

#include <windows.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include "front/windows/sound_frames.h"
#include "front/windows/text.h"
#include "simulator/attach.h"
#include "simulator/connectors/scene_setup.h"

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

bool ReadMachine(const std::string& value, Environment* environment) {
    environment->Machine = value;
    return simulator::UseMachine(value);
}

bool ReadInput(std::string_view text, PluggedInput* input) {
    const auto [where, what] = simulator::ParsePlugged(text);
    input->Where = where;
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
    return ReadList(value, &environment->Cables, [](std::string_view text) {
        const std::optional<simulator::CableEnds> ends = simulator::ParseCable(text);
        return ends ? std::optional(PluggedCable{*ends, {}}) : std::nullopt;
    });
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

// A variable of the environment, "KESTVOX_" and the name, or a key of the setup file.
struct Variable {
    const WCHAR* Name;
    const char* Key;
    Reader Read;
    const char* Must;  // be
};
constexpr Variable Variables[] = {
    {L"KESTVOX_MACHINE", "machine", ReadMachine, "at most 64 letters, digits, '-' and '_'"},
    {L"KESTVOX_CARDS", "cards", ReadCards, "a number from 1 to 16"},
    {L"KESTVOX_TIME", "time", ReadTime, "real or stepped"},
    {L"KESTVOX_INPUT", "input", ReadInputs,
     "silence, tone:HZ or a WAV file with PCM of one or two channels, for one input as 0a=..., for several "
     "with ';' between"},
    {L"KESTVOX_CABLE", "cable", ReadCables, "OUTPUT>INPUT,... as in 0a>0a,0d>1d"},
    {L"KESTVOX_FAULT", "fault", ReadFaults, "faults as kestvox play --help tells, with ',' between"},
    {L"KESTVOX_CAPTURE", "capture", ReadCapture,
     "a folder that is there, or a file in one with one '*' in its name"},
    {L"KESTVOX_TRACE", "trace", ReadFilePath<&Environment::Trace>, "a file in a folder that is there"},
    {L"KESTVOX_REPORT", "report", ReadFilePath<&Environment::Report>, "a file in a folder that is there"},
    {L"KESTVOX_SUSPEND_AT", "suspend-at", ReadSuspendAt, "a number of seconds"},
};

// Empty when it is not set.
std::string ValueOf(const WCHAR* name) {
    std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(
        value.empty() ? 0 : GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return Utf8(value);
}

// Nothing, and one line in `why`, when the file cannot be read or has a line that makes no sense.
std::optional<std::vector<simulator::SetupLine>> ReadSetup(const std::string& path, std::string* why) {
    std::ifstream file(Wide(path).c_str(), std::ios::binary);
    if (!file) {
        *why = "KESTVOX_SETUP must be a file that can be read: " + path;
        return std::nullopt;
    }
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return simulator::ParseSetup(text, path, why);
}

// Of those that have just been read.
template <typename Plugged>
void SetSource(std::vector<Plugged>& list, const std::string& source) {
    for (Plugged& plugged : list) {
        plugged.Source = plugged.Source.empty() ? source : plugged.Source;
    }
}

bool ReadValue(const Variable& variable, const std::string& name, const std::string& value,
               Environment* environment, std::string* why) {
    *why = name + " must be " + variable.Must + ": " + value;
    if (!variable.Read(value, environment)) {
        return false;
    }
    SetSource(environment->Inputs, name);
    SetSource(environment->Cables, name);
    return true;
}

}  // namespace

// What the environment says wins over the setup file.
bool ReadEnvironment(Environment* environment, std::string* why) {
    const std::string path = ValueOf(L"KESTVOX_SETUP");
    std::optional<std::vector<simulator::SetupLine>> setup;
    setup = path.empty() ? std::vector<simulator::SetupLine>{} : ReadSetup(path, why);
    if (!setup) {
        return false;
    }
    for (const Variable& variable : Variables) {
        if (const std::string value = ValueOf(variable.Name); !value.empty()) {
            if (!ReadValue(variable, Utf8(variable.Name), value, environment, why)) {
                return false;
            }
            continue;
        }
        for (const simulator::SetupLine& line : *setup) {
            if (line.Key == variable.Key &&
                !ReadValue(variable, line.Place + ": " + line.Key, line.Value, environment, why)) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace front
