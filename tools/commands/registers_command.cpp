#include <cstdio>

#include "tools/commands/commands.h"

namespace kestvox {

int ShowRegisters(const SceneOptions& options, unsigned card) {
    Scene scene(options);
    scene.RequireCard(card, "registers");
    for (const simulator::RegisterView& view : scene.Cards().Registers(card)) {
        std::string fields = view.Name;
        for (const simulator::RegisterField& field : view.Fields) {
            fields += "  " + field.Name + "=" + std::to_string(field.Value);
        }
        const std::string name = view.File + " " + std::to_string(view.Index);
        std::printf("%-14s %02X  %s\n", name.c_str(), view.Value, fields.c_str());
    }
    return ExitSuccess;
}

}  // namespace kestvox
