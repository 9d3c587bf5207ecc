#pragma once

#include <Varnex/transport/Serial.h>

#include <gtest/gtest.h>

#include <memory>

#include <stdlib.h>

/// A serial line on a pseudo-terminal, and the terminal's master as the other end, opened as a serial line too.
struct SerialPair {
    std::unique_ptr<Varnex::Serial> line = std::make_unique<Varnex::Serial>();
    std::unique_ptr<Varnex::Serial> master = std::make_unique<Varnex::Serial>("/dev/ptmx");

    SerialPair() {
        char path[64];
        EXPECT_TRUE(master->open());
        EXPECT_EQ(::unlockpt(master->getDescriptor()) + ::ptsname_r(master->getDescriptor(), path, sizeof path), 0);
        EXPECT_TRUE(line->setPort(path) && line->open());
    }
};
