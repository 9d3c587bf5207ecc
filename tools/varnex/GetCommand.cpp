#include "Command.h"
#include "Failure.h"
#include "Output.h"
#include "ProgressBar.h"
#include "Quote.h"
#include "UrlSource.h"

#include <filesystem>
#include <optional>

#include <unistd.h>

namespace VarnexTool {

namespace {

class GetCommand : public Command {
public:
    explicit GetCommand(CLI::App& parent);
    void run() override;

private:
    void refuseItself(const UrlSource& source) const;
    void carry(UrlSource& source, Output& output) const;

    std::string text_;
    std::string file_;
    bool head_ = false;
    bool quiet_ = false;
};

std::string headOf(const UrlSource& source) {
    return "mime-type: " + (source.mimeType().empty() ? "unknown" : escaped(source.mimeType())) +
           "\nlength: " + (source.length() < 0 ? "unknown" : std::to_string(source.length())) + "\n";
}

GetCommand::GetCommand(CLI::App& parent) : Command(parent, "get", "Open a URL and print what is there") {
    app()
        .add_option("URL", text_,
                    "The URL, such as 'zip:models.zip!/car.wrl' or data:,text, or a file name: with ./ before one that "
                    "has a \":\", and %23, %25 and %3f for \"#\", \"%\" and \"?\"")
        ->required();
    app().add_option("-o,--output", file_, "Write to this file, in place of the standard output")->type_name("FILE");
    app().add_flag("--head", head_, "Print the MIME type and the length in bytes, not the content");
    app().add_flag("--quiet", quiet_, "Show no progress on the terminal");
}

void GetCommand::run() {
    if (file_.empty() && app().count("--output") > 0) throw Failure("the name of the output file is empty");
    UrlSource source(text_);
    refuseItself(source);
    Output output(file_);
    try {
        head_ ? output.write(headOf(source)) : carry(source, output);
        output.close();
    } catch (const Failure& failure) {
        if (file_.empty()) throw;
        throw Failure(failure.what() + ("; " + inQuotes(file_) + " is incomplete"));
    }
}

/// Writing to what is read would empty it, or never end.
void GetCommand::refuseItself(const UrlSource& source) const {
    std::error_code none;
    if (!std::filesystem::equivalent(source.file(), file_.empty() ? "/dev/stdout" : file_, none)) return;
    throw Failure("cannot write to " + inQuotes(source.file()) + " while reading it");
}

void GetCommand::carry(UrlSource& source, Output& output) const {
    std::optional<ProgressBar> progress;
    if (!quiet_ && ::isatty(STDERR_FILENO) == 1 && !output.isTerminal()) progress.emplace(source.length());
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
