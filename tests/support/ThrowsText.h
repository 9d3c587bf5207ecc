#pragma once

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

/// Whether `statement` throws exactly a `Type` (no subclass) whose what() is `text`.
template <class Type, class Statement>
testing::AssertionResult throwsText(Statement statement, const std::string& text) {
    try {
        statement();
    } catch (const Type& e) {
        if (typeid(e) != typeid(Type)) return testing::AssertionFailure() << "threw a subclass: " << e.what();
        if (text != e.what())
            return testing::AssertionFailure() << "threw \"" << e.what() << "\", not \"" << text << "\"";
        return testing::AssertionSuccess();
    } catch (...) {
        return testing::AssertionFailure() << "threw another type";
    }
    return testing::AssertionFailure() << "threw nothing";
}

#define EXPECT_THROWS_TEXT(statement, Type, text) \
    EXPECT_TRUE((throwsText<Type>([&] { static_cast<void>(statement); }, text))) << #statement
