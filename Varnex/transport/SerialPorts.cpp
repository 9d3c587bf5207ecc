#include <Varnex/transport/SerialPorts.h>

#include <Varnex/transport/PrintLine.h>

#include <libserialport.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace Varnex {

namespace {

struct FreePortList {
    void operator()(sp_port** list) const { sp_free_port_list(list); }
};

}  // namespace

std::vector<std::string> serialPorts() {
    sp_port** list = nullptr;
    if (sp_list_ports(&list) != SP_OK || list == nullptr) return {};
    const std::unique_ptr<sp_port*, FreePortList> owner(list);
    std::vector<std::string> paths;
    for (; *list != nullptr; ++list)
        if (const char* path = sp_get_port_name(*list)) paths.emplace_back(path);
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string serialPortPath(long number) {
    auto paths = serialPorts();
    if (number >= 0 && static_cast<unsigned long>(number) < paths.size())
        return std::move(paths[static_cast<std::size_t>(number)]);
    printError("ERROR: Serial: Port " + std::to_string(number) + " does not exist");
    return "";
}

}  // namespace Varnex
