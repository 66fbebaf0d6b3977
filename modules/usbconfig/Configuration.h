#pragma once

#include "modules/usbconfig/ICommand.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tinyxml2 {
class XMLElement;
}

// The content of a configuration file, "Tarvex.xml" in the root of a disk.
//
//     <Tarvex>
//         <Login Username="admin" Password="6f70656e"/>
//         <Users>
//             <User Username="guest" Password="00ff"/>
//         </Users>
//         <Commands>
//             <Command Type="RunProcess" FilePath="\Hard Disk\Setup.exe" Arguments="-quiet" WaitCompletion="1"/>
//         </Commands>
//     </Tarvex>
//
// All attributes are required. A section may occur several times; sections of other names are skipped. A password
// consists of pairs of hexadecimal digits. Names and the words "RunProcess", "0" and "1" are case-sensitive. Only one
// thread may use an object.
class Configuration {
public:
    // Reads the file and runs nothing. Throws OrvaUtils::Xml::XmlException if the file cannot be read, is not XML or
    // lacks an attribute. Throws ConfigurationException for any other mistake in the file: "Invalid root element",
    // "Expected command", "Invalid command type" or "Invalid WaitCompletion attribute".
    explicit Configuration(const std::wstring& path);
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

    std::wstring filePath;
    std::wstring loginUsername; // of the last "Login"
    std::vector<std::uint8_t> loginPassword;
    std::vector<std::unique_ptr<ICommand>> commands; // in the order of the file
    // The password of each user. A later user of the same name replaces the earlier one.
    std::map<std::wstring, std::vector<std::uint8_t>> users;
    // The names of the sections that the file has: "Login", "Users", "Commands".
    std::set<std::wstring> sections;

private:
    void readSection(const tinyxml2::XMLElement& section);
    void readLogin(const tinyxml2::XMLElement& login);
    void readUsers(const tinyxml2::XMLElement& section);
    void readCommands(const tinyxml2::XMLElement& section);
};
