#pragma once

#include <Varnex/url/LoadOptions.h>

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace VarnexTool {

/// How "http:", "https:" and "ftp:" URLs are loaded, as options of the command line. A value.
struct LoadArguments {
    std::vector<std::string> header;  ///< lines, checked when the command line is read
    std::string authorities;
    double connectSeconds = 60;
    double stallSeconds = 60;

    void addTo(CLI::App& app);

    /// Throws `UsageError`.
    [[nodiscard]] Varnex::LoadOptions options() const;
};

}  // namespace VarnexTool
