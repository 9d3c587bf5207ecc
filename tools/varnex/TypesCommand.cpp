#include "Command.h"
#include "EventTable.h"

#include <nlohmann/json.hpp>

#include <iomanip>
#include <iostream>

namespace VarnexTool {

namespace {

class TypesCommand : public Command {
public:
    explicit TypesCommand(CLI::App& parent)
        : Command(parent, "types", "List the registered event types with their IDs and fields") {
        app().add_flag("--json", json_, "Print one JSON object a line");
    }

    void run() override {
        if (!json_)
            std::cout << std::setw(6) << "ID"
                      << "  " << std::left << std::setw(kNameWidth) << "TYPE"
                      << " FIELDS\n";
        for (const Description& description : eventTable()) json_ ? printJson(description) : print(description);
    }

private:
    static constexpr int kNameWidth = 24;

    static void print(const Description& description) {
        std::cout << std::right << std::setw(6) << description.type->id << "  " << std::left << std::setw(kNameWidth)
                  << description.name;
        for (const Field& field : description.fields) std::cout << ' ' << field.name << ':' << field.typeName();
        std::cout << '\n';
    }

    static void printJson(const Description& description) {
        using Json = nlohmann::ordered_json;
        Json fields = Json::array();
        for (const Field& field : description.fields)
            fields.push_back({{"name", field.name}, {"type", field.typeName()}});
        const Json object{{"id", description.type->id}, {"type", description.name}, {"fields", fields}};
        std::cout << object.dump() << '\n';
    }

    bool json_ = false;
};

}  // namespace

std::unique_ptr<Command> makeTypesCommand(CLI::App& parent) {
    return std::make_unique<TypesCommand>(parent);
}

}  // namespace VarnexTool
