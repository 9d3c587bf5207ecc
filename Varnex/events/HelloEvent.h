#pragma once

#include <Varnex/events/Event.h>

#include <string>

namespace Varnex {

/// A greeting that identifies the sending program and its machine. Type ID 8.
///
/// The application gives names and numbers their meaning, such as program and user, version and protocol. Each text may
/// have 32,767 bytes.
class VARNEX_API HelloEvent : public Event {
public:
    /// Takes the three system texts from this machine.
    HelloEvent(const std::string& name1, const std::string& name2, short number1, short number2);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    [[nodiscard]] const std::string& getName1() const { return name1_; }
    void setName1(const std::string& name) { name1_ = name; }
    [[nodiscard]] const std::string& getName2() const { return name2_; }
    void setName2(const std::string& name) { name2_ = name; }
    [[nodiscard]] short getNumber1() const { return number1_; }
    void setNumber1(short number) { number1_ = number; }
    [[nodiscard]] short getNumber2() const { return number2_; }
    void setNumber2(short number) { number2_ = number; }

    /// The sender's machine, its operating system with release, and its host name.
    [[nodiscard]] const std::string& getSysText1() const { return sysText1_; }
    void setSysText1(const std::string& text) { sysText1_ = text; }
    [[nodiscard]] const std::string& getSysText2() const { return sysText2_; }
    void setSysText2(const std::string& text) { sysText2_ = text; }
    [[nodiscard]] const std::string& getSysText3() const { return sysText3_; }
    void setSysText3(const std::string& text) { sysText3_ = text; }

protected:
    void addFields() override;
    void getFields() override;

private:
    HelloEvent() = default;  // what is received: asks nothing of this machine

    std::string name1_;
    std::string name2_;
    short number1_ = 0;
    short number2_ = 0;
    std::string sysText1_;
    std::string sysText2_;
    std::string sysText3_;
};

}  // namespace Varnex
