// Fuzzes registry files (".reg"). Any content must be merged or refused, and a registry must go out and in unchanged.
#include "platform/tool/RegistryFile.h"
#include "fuzz/FuzzPanel.h"

#include <stdexcept>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    panel::registry::Tree tree;
    try {
        tool::merge(tree, tool::parseRegistryFile({reinterpret_cast<const char*>(data), size}));
    } catch (const std::runtime_error&) {
        return 0;
    }
    for (const bool ansi : {false, true}) {
        std::string file;
        try {
            file = tool::formatRegistryFile(tree, "", ansi);
        } catch (const std::runtime_error&) { // a line end in a name; a character that ANSI lacks
            continue;
        }
        panel::registry::Tree copy;
        tool::merge(copy, tool::parseRegistryFile(file));
        fuzz::require(tool::formatRegistryFile(copy, "", ansi) == file, "a registry that changes on its way");
    }
    return 0;
}
