#include "Command.h"
#include "Dial.h"
#include "EventTable.h"
#include "Failure.h"
#include "FieldText.h"
#include "LibraryMessages.h"
#include "Pacer.h"
#include "Quote.h"
#include "ServerFinder.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace VarnexTool {

namespace {

const CLI::callback_t kAcceptAll = [](const CLI::results_t&) { return true; };  // they are read later

constexpr long long kMaxCount = 1000'000'000'000'000'000;

class SendCommand : public Command {
public:
    explicit SendCommand(CLI::App& parent);
    void run() override;

private:
    struct GivenField {
        const Field* field;
        CLI::Option* option;
    };
    struct TypeChoice {
        CLI::App* app;
        const Description* description;
        std::vector<GivenField> fields;
    };

    void addType(const Description& description);
    static CLI::Option* addField(CLI::App& type, const Field& field);
    [[nodiscard]] const TypeChoice& chosenType();
    [[nodiscard]] std::unique_ptr<Varnex::Event> makeEvent();
    void sendAll(Varnex::Client& client, const Endpoint& to, Varnex::Event& event, const StopWatcher& stop) const;

    std::string where_;
    DiscoveryOptions discovery_;
    std::string unknownType_;
    std::vector<TypeChoice> types_;
    unsigned short tag_ = 0;
    unsigned long long count_ = 1;
    double rate_ = 0;
    double connectSeconds_ = kDefaultConnectSeconds;
};

std::string fieldList(const Description& description) {
    std::string list;
    for (const Field& field : description.fields)
        if (field.set != nullptr) list += (list.empty() ? "" : " ") + field.optionName();
    return list.empty() ? "(no fields)" : list;
}

SendCommand::SendCommand(CLI::App& parent) : Command(parent, "send", "Send an event") {
    app().add_option("HOST:PORT", where_, "The listener, such as 127.0.0.1:4711 or [::1]:4711");
    discovery_.addTo(app(), "Send to the first server that the network finds, in place of HOST:PORT");
    // What names a type becomes a subcommand of its own, so that it has its own options; only the rest arrives here.
    app().add_option("TYPE", unknownType_,
                     "The event type: MessageEvent, Message or its ID; its fields follow as options, which "
                     "varnex send HOST:PORT TYPE --help explains");
    app()
        .add_option("--tag", tag_, "The tag of the event")
        ->transform(wholeNumberFrom(0, 65535))
        ->capture_default_str();
    app()
        .add_option("--count", count_, "Send it this often; 0: until stopped")
        ->transform(wholeNumberFrom(0, kMaxCount))
        ->capture_default_str();
    app().add_option("--rate", rate_, "Events a second; without it as fast as they go")->check(numberFrom(0.001, 1e6));
    app()
        .add_option("--connect-timeout", connectSeconds_,
                    "Seconds to wait for the connection, and for a server to be found")
        ->check(numberFrom(0.001, 1e6))
        ->capture_default_str();
    app().allow_extras();  // they are refused later, so that an unknown type is told before its unknown fields
    setHelpHead(app(), "varnex send [OPTIONS] HOST:PORT TYPE [FIELDS]");
    types_.reserve(eventTable().size());
    for (const Description& description : eventTable()) addType(description);
}

void SendCommand::addType(const Description& description) {
    CLI::App* const type = app().add_subcommand(description.name, fieldList(description));
    setHelpHead(*type, "varnex send [OPTIONS] HOST:PORT " + description.name + " [FIELDS]",
                "Send an event of type " + description.name + " (" + std::to_string(description.type->id) + ")");
    type->ignore_case()->fallthrough()->group("Event types");
    for (const std::string& spelling : spellings(description))
        if (spelling != description.name) type->alias(spelling);
    TypeChoice choice{type, &description, {}};
    for (const Field& field : description.fields)
        if (field.set != nullptr) choice.fields.push_back({&field, addField(*type, field)});
    types_.push_back(std::move(choice));
}

CLI::Option* SendCommand::addField(CLI::App& type, const Field& field) {
    const bool repeats = field.kind == Kind::Points;
    std::string form = expectedForm(field);
    if (field.kind == Kind::Flag) form += "; alone it means true";
    if (repeats) form += "; once for each point";
    CLI::Option* const option = type.add_option(field.optionName(), kAcceptAll, form)->type_name(field.typeName());
    if (field.kind == Kind::Flag) option->expected(0, 1);
    if (repeats) option->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args(false);
    return option;
}

const SendCommand::TypeChoice& SendCommand::chosenType() {
    const auto choice = std::find_if(types_.begin(), types_.end(), [](const auto& type) { return type.app->parsed(); });
    if (choice == types_.end() && unknownType_.empty()) throw UsageError("TYPE is required");
    if (choice == types_.end()) throw UsageError("unknown event type " + inQuotes(unknownType_), "varnex types");
    const auto extras = app().remaining(true);
    if (extras.empty() && unknownType_.empty()) return *choice;
    // The first word too many has become the TYPE, unless it is an option.
    const bool isOption = !extras.empty() && extras.front().starts_with('-');
    throw UsageError(
        "unexpected argument " + inQuotes(isOption || unknownType_.empty() ? extras.front() : unknownType_),
        "varnex send HOST:PORT " + choice->description->name + " --help");
}

std::unique_ptr<Varnex::Event> SendCommand::makeEvent() {
    const TypeChoice& choice = chosenType();
    auto event = choice.description->makeEvent();
    for (const auto& [field, option] : choice.fields)
        if (option->count() > 0) field->set(*event, parseField(*field, option->results()));
    event->setTag(tag_);
    return event;
}

void SendCommand::run() {
    if (discovery_.isWanted && unknownType_.empty()) unknownType_.swap(where_);  // the only argument is the type
    discovery_.checkWith(where_);
    if (!discovery_.isWanted) static_cast<void>(Endpoint::toConnect(where_));
    const auto event = makeEvent();
    std::optional<ServerFinder> finder;
    if (discovery_.isWanted) finder.emplace(discovery_);
    const StopWatcher stop(std::chrono::seconds(0), [&finder] {
        if (finder) finder->stop();
    });
    const std::chrono::duration<double> timeout(connectSeconds_);
    const Endpoint to = finder ? finder->first(timeout) : Endpoint::toConnect(where_);
    if (stop.isStopped()) return;
    Varnex::Client client;
    dial(client, to, timeout);
    sendAll(client, to, *event, stop);
    if (!stop.isStopped()) hangUp(client);
}

void SendCommand::sendAll(Varnex::Client& client, const Endpoint& to, Varnex::Event& event,
                          const StopWatcher& stop) const {
    Pacer pacer(rate_, stop);
    Discarder unwanted(client);
    for (unsigned long long i = 0; (count_ == 0 || i < count_) && pacer.wait(); ++i) {
        unwanted.turn();
        if (event.send(&client)) continue;
        if (stop.isStopped()) return;
        throw Failure(withLibraryMessage(to.text() + " stopped taking events after " + std::to_string(i)));
    }
}

}  // namespace

std::unique_ptr<Command> makeSendCommand(CLI::App& parent) {
    return std::make_unique<SendCommand>(parent);
}

}  // namespace VarnexTool
