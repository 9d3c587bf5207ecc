#pragma once

#include <Zendro/Thread.h>

namespace Zendro {

/// A thread that runs a member function of an object. The object outlives the thread and is not owned.
///
/// Its destructor joins, so the owner ends the function's loop first: a flag, then a wake-up of what it blocks on.
template <class T>
class ObjectThread final : public Thread {
public:
    using Function = int (T::*)();

    ObjectThread(T* object, Function function) : object_(object), function_(function) {}
    ~ObjectThread() override { join(); }

private:
    int main() override { return (object_->*function_)(); }

    T* object_;
    Function function_;
};

}  // namespace Zendro
