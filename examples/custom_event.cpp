// An event class of an application's own, sent and received over a loopback connection in one process.
#include <Varnex/events/HandleEvent.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/Server.h>

#include <iostream>
#include <memory>
#include <string>

/// The pressure and the pen buttons of a tablet; the handle names the pen.
class PenEvent : public Varnex::HandleEvent {
public:
    explicit PenEvent(const char* handle = nullptr) : HandleEvent(handle) {}

    static Event* create() { return new PenEvent; }
    static Varnex::EventType _type;
    [[nodiscard]] Varnex::EventType* type() const override { return &_type; }

    [[nodiscard]] float getPressure() const { return pressure_; }
    void setPressure(float pressure) { pressure_ = pressure; }
    [[nodiscard]] const std::string& getButtons() const { return buttons_; }
    void setButtons(const std::string& buttons) { buttons_ = buttons; }

protected:
    // The parent's fields first, and both times the same fields in the same order.
    void addFields() override {
        HandleEvent::addFields();
        addField(pressure_);
        addField(buttons_);
    }
    void getFields() override {
        HandleEvent::getFields();
        getField(pressure_);
        getField(buttons_);
    }

private:
    float pressure_ = 0;
    std::string buttons_;
};

// Registers the class before main begins. The sender and the receiver agree on the ID.
Varnex::EventType PenEvent::_type("PenEvent", 1000, &PenEvent::create);

int main() try {
    Varnex::Server server;
    server.open("127.0.0.1", 0);
    Varnex::Client sender;
    sender.open("127.0.0.1", server.getLocalPort());
    const std::unique_ptr<Varnex::Client> receiver(server.getClient());

    PenEvent sent("pen");
    sent.setPressure(0.5F);
    sent.setButtons("upper");
    if (!sent.send(&sender)) return 1;

    Varnex::Event* event = nullptr;
    if (!Varnex::Event::receive(receiver.get(), event)) return 1;
    const std::unique_ptr<Varnex::Event> owner(event);
    const auto* const pen = dynamic_cast<const PenEvent*>(event);
    if (pen == nullptr) return 1;
    std::cout << pen->getHandle() << ": pressure " << pen->getPressure() << ", button " << pen->getButtons() << '\n';
    return pen->getHandle() == "pen" && pen->getPressure() == 0.5F && pen->getButtons() == "upper" ? 0 : 1;
} catch (const Varnex::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
