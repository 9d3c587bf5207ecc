#pragma once

#include <Varnex/transport/Communicator.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

/// Two connected communicators.
struct Channel {
    std::unique_ptr<Varnex::Communicator> here, there;
};

struct ChannelKind {
    const char* name;
    bool isStream;  ///< tells the end of the stream
    std::function<Channel()> make;
};

/// What every communicator does; instantiate it for a new kind with INSTANTIATE_TEST_SUITE_P.
class CommunicatorContract : public testing::TestWithParam<ChannelKind> {
protected:
    Channel channel = GetParam().make();
    Varnex::Communicator& here = *channel.here;
    Varnex::Communicator& there = *channel.there;
};

inline std::string nameOfKind(const testing::TestParamInfo<ChannelKind>& info) {
    return info.param.name;
}
