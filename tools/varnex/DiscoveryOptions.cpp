#include "DiscoveryOptions.h"

#include "Command.h"
#include "FieldText.h"
#include "LibraryMessages.h"

namespace VarnexTool {

void DiscoveryOptions::addTo(CLI::App& app, const std::string& flagHelp) {
    CLI::Option* const flag = flagHelp.empty() ? nullptr : app.add_flag("--discover", isWanted, flagHelp);
    CLI::Option* const all[] = {
        app.add_option("--interface", interfaces,
                       "The network interface to discover on, by name or address, such as eth0; may be repeated; "
                       "without it the one with the address that this host's name has")
            ->allow_extra_args(false),
        app.add_option("--mask", mask, "Find and be found by those with a common bit, such as 3 or 0xff00")
            ->capture_default_str(),
        app.add_option("--id", id, "Find and be found by those with the same number")
            ->transform(wholeNumberFrom(0, 65535))
            ->capture_default_str(),
    };
    if (flag == nullptr) return;
    for (CLI::Option* const option : all) option->needs(flag);
}

long DiscoveryOptions::maskBits() const {
    return std::get<std::int64_t>(parseField({"mask", Kind::Bits32, 1, nullptr, nullptr}, {mask}));
}

void DiscoveryOptions::checkWith(const std::string& hostAndPort) const {
    if (hostAndPort.empty() && !isWanted) throw UsageError("HOST:PORT or --discover is required");
    if (!hostAndPort.empty() && isWanted) throw UsageError("either HOST:PORT or --discover, not both");
}

std::string whyNotDiscovering() {
    return withLibraryMessage("cannot use multicast") + "; varnex doctor looks for the cause";
}

}  // namespace VarnexTool
