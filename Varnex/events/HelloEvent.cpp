#include <Varnex/events/HelloEvent.h>

#include <Zendro/SysInfo.h>

namespace Varnex {

HelloEvent::HelloEvent(const std::string& name1, const std::string& name2, short number1, short number2)
    : name1_(name1),
      name2_(name2),
      number1_(number1),
      number2_(number2),
      sysText1_(Zendro::SysInfo::the().getMachine()),
      sysText2_(Zendro::SysInfo::the().getSystem()),
      sysText3_(Zendro::SysInfo::the().getHostName()) {}

Event* HelloEvent::create() {
    return new HelloEvent;
}

EventType* HelloEvent::type() const {
    return &_type;
}

void HelloEvent::addFields() {
    Event::addFields();
    addField(name1_);
    addField(name2_);
    addField(number1_);
    addField(number2_);
    addField(sysText1_);
    addField(sysText2_);
    addField(sysText3_);
}

void HelloEvent::getFields() {
    Event::getFields();
    getField(name1_);
    getField(name2_);
    getField(number1_);
    getField(number2_);
    getField(sysText1_);
    getField(sysText2_);
    getField(sysText3_);
}

}  // namespace Varnex
