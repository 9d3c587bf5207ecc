#pragma once

#include <Zendro/Export.h>

#include <string>

namespace Zendro {

/// What identifies this machine and its system. Fixed at first use; any thread may read it.
class ZENDRO_API SysInfo {
public:
    /// The one object of the process.
    static const SysInfo& the();

    /// The processor architecture, such as "x86_64".
    const std::string& getMachine() const { return machine_; }
    /// The operating system and its release, such as "Linux 6.1.0".
    const std::string& getSystem() const { return system_; }
    /// The host name.
    const std::string& getHostName() const { return hostName_; }

private:
    SysInfo();

    std::string machine_;
    std::string system_;
    std::string hostName_;
};

}  // namespace Zendro
