#include "Command.h"
#include "Failure.h"
#include "LoadArguments.h"
#include "Output.h"
#include "ProgressBar.h"
#include "Quote.h"
#include "UrlSource.h"

#include <filesystem>
#include <iostream>
#include <optional>

#include <unistd.h>

namespace VarnexTool {

namespace {

class GetCommand : public Command {
public:
    explicit GetCommand(CLI::App& parent);
    void run() override;

private:
    void addReplyOptions();
    void checkUsage(const UrlSource& source) const;
    [[nodiscard]] Varnex::LoadOptions loadOptions() const;
    void refuseItself(const UrlSource& source) const;
    void write(UrlSource& source) const;
    void writeTo(Output& output, UrlSource& source) const;
    void carry(UrlSource& source, Output& output) const;

    std::string text_;
    std::string file_;
    LoadArguments load_;
    bool include_ = false;
    bool continue_ = false;
    bool head_ = false;
    bool quiet_ = false;
};

std::string summaryOf(const UrlSource& source) {
    return "mime-type: " + (source.mimeType().empty() ? "unknown" : escaped(source.mimeType())) +
           "\nlength: " + (source.length() < 0 ? "unknown" : std::to_string(source.length())) + "\n";
}

/// Bytes that there are to go on behind.
long long sizeOf(const std::string& file) {
    std::error_code none;
    const bool isThere = std::filesystem::is_regular_file(file, none);
    const auto size = isThere ? std::filesystem::file_size(file, none) : 0;
    return none ? 0 : static_cast<long long>(size);
}

GetCommand::GetCommand(CLI::App& parent) : Command(parent, "get", "Open a URL and print what is there") {
    app()
        .add_option("URL", text_,
                    "The URL, such as https://example.org/a.zip, 'zip:models.zip!/car.wrl' or data:,text, or a file "
                    "name: with ./ before one that has a \":\", and %23, %25 and %3f for \"#\", \"%\" and \"?\"")
        ->required();
    CLI::Option* const output =
        app()
            .add_option("-o,--output", file_, "Write to this file, in place of the standard output")
            ->type_name("FILE");
    app()
        .add_flag("-c,--continue", continue_, "Go on behind what the file has already, where the server allows it")
        ->needs(output);
    addReplyOptions();
    load_.addTo(app());
    app().add_flag("--quiet", quiet_, "Show no progress on the terminal");
}

void GetCommand::addReplyOptions() {
    for (CLI::Option* const option :
         {app().add_flag("--head", head_, "Print the MIME type and the length in bytes, not the content"),
          app().add_flag("--include", include_,
                         "Print the status line and the header of an HTTP server before the content, with --head in "
                         "its place; also of a reply that is a failure")})
        option->excludes("--continue");
}

void GetCommand::run() {
    if (file_.empty() && app().count("--output") > 0) throw Failure("the name of the output file is empty");
    UrlSource source(text_);
    checkUsage(source);
    source.open(loadOptions());
    refuseItself(source);
    if (source.isComplete()) {
        std::cerr << "varnex: " + inQuotes(file_) + " is complete already\n" << std::flush;
        return;
    }
    const std::string refusal = source.refusal();
    if (refusal.empty() || include_) write(source);
    if (!refusal.empty()) source.fail(refusal);
}

void GetCommand::checkUsage(const UrlSource& source) const {
    if (source.isHttp()) return;
    if (include_) throw UsageError("--include: only http and https URLs have a header");
    if (!load_.header.empty()) throw UsageError("--header: only http and https URLs take one");
}

Varnex::LoadOptions GetCommand::loadOptions() const {
    Varnex::LoadOptions options = load_.options();
    if (continue_) options.offset = sizeOf(file_);
    return options;
}

/// Writing to what is read would empty it, or never end.
void GetCommand::refuseItself(const UrlSource& source) const {
    std::error_code none;
    if (!std::filesystem::equivalent(source.file(), file_.empty() ? "/dev/stdout" : file_, none)) return;
    throw Failure("cannot write to " + inQuotes(source.file()) + " while reading it");
}

void GetCommand::write(UrlSource& source) const {
    Output output(file_, source.position());
    try {
        writeTo(output, source);
        output.close();
    } catch (const Failure& failure) {
        if (file_.empty()) throw;
        throw Failure(failure.what() + ("; " + inQuotes(file_) + " is incomplete"));
    }
}

void GetCommand::writeTo(Output& output, UrlSource& source) const {
    if (include_) output.write(source.head());
    if (!head_) return carry(source, output);
    if (!include_) output.write(summaryOf(source));
}

void GetCommand::carry(UrlSource& source, Output& output) const {
    std::optional<ProgressBar> progress;
    if (!quiet_ && ::isatty(STDERR_FILENO) == 1 && !output.isTerminal())
        progress.emplace(source.position(), source.length());
    for (std::string_view block; !(block = source.next()).empty();) {
        output.write(block);
        if (progress) progress->add(block.size());
    }
}

}  // namespace

std::unique_ptr<Command> makeGetCommand(CLI::App& parent) {
    return std::make_unique<GetCommand>(parent);
}

}  // namespace VarnexTool
