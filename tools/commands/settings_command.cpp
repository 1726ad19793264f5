#include <cstdio>

#include "tools/commands/commands.h"
#include "tools/machine/host.h"
#include "tools/settings/settings_store.h"
#include "tools/system/message.h"

namespace kestvox {
namespace {

void PrintSetting(unsigned card, const Setting& setting) {
    const std::optional<RegistryValue> stored = ReadStoredSetting(card, setting);
    const std::optional<std::string> shown = stored ? ShowSetting(setting, *stored) : std::nullopt;
    if (shown) {
        std::printf("%s: %s\n", setting.Name, shown->c_str());
        return;
    }
    const std::string standard = *ShowSetting(setting, ParseSetting(setting, setting.Default));
    std::printf("%s: %s, %s\n", setting.Name, standard.c_str(),
                stored ? "default, as the stored value is not readable" : "default");
}

}  // namespace

int StoreAndShowSettings(const SceneOptions& options, unsigned card,
                         const std::vector<std::string>& assignments) {
    SceneOptions changed = options;
    for (const std::string& text : assignments) {
        changed.Settings.push_back(std::to_string(card) + ":" + text);
    }
    const Scene scene(changed);
    scene.RequireCard(card, "settings");
    if (assignments.empty()) {
        for (const Setting& setting : AllSettings()) {
            PrintSetting(card, setting);
        }
    }
    for (const std::string& text : assignments) {
        PrintSetting(card, FindSetting(ParseAssignment(text).Name));
    }
    if (!assignments.empty() && !MachineOutlivesProcess()) {
        PrintNote("no machine is named, so the change ends with this command");
    } else if (!assignments.empty() && scene.OthersAreOnTheMachine()) {
        PrintNote("programs that use the machine now see the change when they are started again");
    }
    return ExitSuccess;
}

}  // namespace kestvox
