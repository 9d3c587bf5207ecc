#pragma once

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

/// That `statement` throws exactly a `Type` (no subclass) whose what() is `text`.
#define EXPECT_THROWS_TEXT(statement, Type, text)             \
    try {                                                     \
        static_cast<void>(statement);                         \
        ADD_FAILURE() << #statement << " threw nothing";      \
    } catch (const Type& e) {                                 \
        EXPECT_EQ(typeid(e), typeid(Type)) << #statement;     \
        EXPECT_EQ(std::string(e.what()), text) << #statement; \
    }
