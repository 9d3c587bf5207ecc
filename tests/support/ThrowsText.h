#pragma once

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

/// Whether `statement` throws exactly a `Type` (no subclass) whose what() is `text`.
template <class Type, class Statement>
testing::AssertionResult throwsText(Statement statement, const std::string& text) {
    try {
        statement();
        return testing::AssertionFailure() << "threw nothing";
    } catch (const Type& e) {
        if (typeid(e) == typeid(Type) && text == e.what()) return testing::AssertionSuccess();
        return testing::AssertionFailure() << "threw " << typeid(e).name() << " \"" << e.what() << "\"";
    }
}

#define EXPECT_THROWS_TEXT(statement, Type, text) \
    EXPECT_TRUE((throwsText<Type>([&] { static_cast<void>(statement); }, text))) << #statement
