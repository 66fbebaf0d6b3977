// Fuzzes a disk's "Tarvex.xml". Any content must be read as a whole, or be rejected with one of the known texts.
#include "OrvaUtils/Xml/XmlException.h"
#include "fuzz/FuzzPanel.h"
#include "modules/usbconfig/Configuration.h"
#include "modules/usbconfig/ConfigurationException.h"

#include <set>

namespace {

const std::set<std::wstring> REFUSALS = {L"Invalid root element", L"Expected command", L"Invalid command type",
                                         L"Invalid WaitCompletion attribute"};
const std::set<std::wstring> SECTIONS = {L"Login", L"Users", L"Commands"};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::putFile("\\Hard Disk\\Tarvex.xml", data, size);
    try {
        const Configuration configuration(L"\\Hard Disk\\Tarvex.xml");
        for (const std::wstring& section : configuration.sections) {
            fuzz::require(SECTIONS.count(section) == 1, "a section that is none");
        }
        fuzz::require(configuration.commands.empty() || configuration.sections.count(L"Commands") == 1,
                      "commands without a section");
        fuzz::require(configuration.users.empty() || configuration.sections.count(L"Users") == 1,
                      "users without a section");
        fuzz::require(2 * configuration.loginPassword.size() <= size, "a password longer than the file");
        for (const auto& command : configuration.commands) {
            fuzz::require(command->getType() == 0, "a command of no kind");
        }
    } catch (const ConfigurationException& refusal) {
        fuzz::require(REFUSALS.count(refusal.message()) == 1, "refused with an unknown text");
    } catch (const OrvaUtils::Xml::XmlException& refusal) {
        fuzz::require(refusal.message() == L"Generic Exception", "refused with an unknown text");
    }
    return 0;
}
