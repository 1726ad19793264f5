// Which formats a device accepts, found by asking it for each.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <functional>
#include <string>
#include <vector>

namespace kestvox {

// Whether a device accepts a format now.
using FormatQuery = std::function<bool(const WAVEFORMATEX&)>;

struct FormatQueries {
    FormatQuery Accepts;  // asked without being opened
    FormatQuery Opens;    // opened in it, and closed again
};

// Encodings that are accepted at the same rates and channels share an entry.
struct AcceptedFormats {
    std::string Limits;  // "1 or 2 channels at 44100, 48000 Hz"
    std::vector<std::string> Encodings;
};
std::vector<AcceptedFormats> FindAcceptedFormats(const FormatQuery& accepts);

// Why a device did not open in the format `asked`, and what it would take: "at 44100 Hz it accepts 16-bit
// PCM, ...". A format that it accepts when asked and does not open in has a rate at which its clock cannot
// run, as another stream holds it at another one: Opens then finds that rate.
std::string SayWhatIsAccepted(const FormatQueries& queries, const WAVEFORMATEX& asked);

}  // namespace kestvox
