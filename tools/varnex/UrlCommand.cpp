#include "Command.h"
#include "Failure.h"
#include "Quote.h"
#include "UrlArgument.h"

#include <Varnex/streams/Trim.h>
#include <Varnex/url/URLFile.h>

#include <nlohmann/json.hpp>

#include <iostream>

namespace VarnexTool {

namespace {

using Json = nlohmann::ordered_json;
using Varnex::URLImpl;

/// Those that are there, by their names.
Json componentsOf(std::string text) {
    Varnex::trim(text);
    URLImpl::Components parts;
    URLImpl::parseURL(text, parts);
    const auto has = [&parts](unsigned flag) { return (parts.flags & flag) != 0; };
    Json object = Json::object();
    if (has(URLImpl::Components::Scheme)) object["scheme"] = parts.scheme;
    if (!parts.user.empty()) object["user"] = parts.user;
    if (!parts.password.empty()) object["password"] = parts.password;
    if (has(URLImpl::Components::Authority)) object["host"] = parts.host;
    if (parts.port != -1) object["port"] = parts.port;
    if (has(URLImpl::Components::Path)) object["path"] = parts.path;
    if (has(URLImpl::Components::Query)) object["query"] = parts.query;
    if (has(URLImpl::Components::Fragment)) object["fragment"] = parts.fragment;
    return object;
}

std::string textOf(const Json& value) {
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    return value.is_string() ? escaped(value.get_ref<const std::string&>()) : value.dump();
}

class UrlCommand : public Command {
public:
    explicit UrlCommand(CLI::App& parent);
    void run() override;

private:
    void resolve(Json& object);
    void print(const Json& object) const;

    std::string text_;
    std::string base_;
    bool json_ = false;
};

UrlCommand::UrlCommand(CLI::App& parent)
    : Command(parent, "url", "Take a URL apart and resolve it, without opening it") {
    app().add_option("URL", text_, "The URL, a file name, or another relative reference")->required();
    app().add_option("BASE", base_, "The URL that it is relative to, in place of the working directory");
    app().add_flag("--json", json_, "Print one JSON object");
}

void UrlCommand::run() {
    Json object = componentsOf(text_);
    object["wellFormed"] = Varnex::URL::isWellFormed(text_);
    try {
        resolve(object);
    } catch (const Failure&) {
        print(object);
        throw;
    }
    print(object);
}

void UrlCommand::resolve(Json& object) {
    const bool hasBase = app().get_option("BASE")->count() > 0;
    const Varnex::URL base = hasBase ? resolveUrl({}, base_) : Varnex::URL::share(Varnex::URLFile::_cwd);
    const Varnex::URL url = resolveUrl(base, text_);
    try {
        object["resolved"] = url->toString();
        object["relative"] = url->toRelativeString(*base);
    } catch (const URLImpl::Exception& error) {
        throw Failure(urlInQuotes(text_) + ": " + wordsOf(error, "cannot be printed"));
    }
}

void UrlCommand::print(const Json& object) const {
    if (json_) {
        std::cout << object.dump(-1, ' ', true, Json::error_handler_t::replace) << '\n';
        return;
    }
    for (const auto& [name, value] : object.items())
        std::cout << (name == "wellFormed" ? "well-formed" : name) << ": " << textOf(value) << '\n';
}

}  // namespace

std::unique_ptr<Command> makeUrlCommand(CLI::App& parent) {
    return std::make_unique<UrlCommand>(parent);
}

}  // namespace VarnexTool
