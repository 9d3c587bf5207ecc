#include <Zendro/SysInfo.h>

#include <sys/utsname.h>

namespace Zendro {

const SysInfo& SysInfo::the() {
    static const SysInfo info;
    return info;
}

SysInfo::SysInfo() {
    utsname names{};
    if (::uname(&names) != 0) return;
    machine_ = names.machine;
    system_ = std::string(names.sysname) + " " + names.release;
    hostName_ = names.nodename;
}

}  // namespace Zendro
