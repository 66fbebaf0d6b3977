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

// What a configuration file, "Tarvex.xml" on a disk, says.
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
// A section may come several times, each is read; others are skipped. All attributes are required. Passwords are pairs
// of hexadecimal digits. Names and the words "RunProcess", "0" and "1" count with their case.
class Configuration {
public:
    // Reads the file and runs nothing. Throws OrvaUtils::Xml::XmlException for a file that cannot be read, is no XML or
    // lacks an attribute, ConfigurationException for anything else that it does not say as above.
    explicit Configuration(const std::wstring& path);
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

    std::wstring filePath;
    std::wstring loginUsername; // of the last "Login"
    std::vector<std::uint8_t> loginPassword;
    std::vector<std::unique_ptr<ICommand>> commands; // in the order of the file
    std::map<std::wstring, std::vector<std::uint8_t>> users; // name to password; the last one of a name
    std::set<std::wstring> sections; // the names of those that were there: "Login", "Users", "Commands"

private:
    void readSection(const tinyxml2::XMLElement& section);
    void readLogin(const tinyxml2::XMLElement& login);
    void readUsers(const tinyxml2::XMLElement& section);
    void readCommands(const tinyxml2::XMLElement& section);
};
